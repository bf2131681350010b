# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# The steps of ./check that every change passes, and how a step is run and counted. Sourced by check.
#
# A step is a function step_NAME. Its status says whether it passed. It may name result files of tests in step_results;
# their cases are counted one by one. What it prints goes into its log; `say` shows a line although the step passed.

passed=0 failed=0 failed_steps=()

# run_step NAME: runs a step into its log, prints its outcome and seconds, and counts it.
run_step() {
    local name=$1 log=build/logs/$1.log start=$SECONDS status line
    mkdir -p build/logs
    printf '%-18s ' "$name"
    step_results=()
    : >"$log.said"
    # Not in a subshell: a step names its results in step_results.
    "step_$name" >"$log" 2>&1 3>"$log.said"
    status=$?
    if [ $status -eq 0 ]; then
        passed=$((passed + 1))
        printf 'passed'
    else
        failed=$((failed + 1))
        failed_steps+=("$name")
        printf 'FAILED'
    fi
    if [ ${#step_results[@]} -gt 0 ]; then
        local more
        read -ra more < <(/usr/bin/python3 tools/count_results.py "${step_results[@]}")
        passed=$((passed + more[0])) failed=$((failed + more[1]))
        printf ', %s tests passed, %s failed' "${more[0]}" "${more[1]}"
    fi
    printf ' (%d s)\n' $((SECONDS - start))
    while IFS= read -r line; do printf '    %s\n' "$line"; done <"$log.said"
    rm -f "$log.said"
    if [ $status -ne 0 ]; then
        printf '    the end of %s:\n' "$log"
        tail -n 40 "$log" | sed 's/^/    | /'
    fi
}

# finish: the last line, and the status of the whole.
finish() {
    [ ${#failed_steps[@]} -eq 0 ] || printf 'failed: %s\n' "${failed_steps[*]}"
    printf '%d passed, %d failed\n' "$passed" "$failed"
    [ "$failed" -eq 0 ]
    exit
}

# say LINE: a line that is shown although the step passed.
say() { printf '%s\n' "$*" >&3; }

# run_ctest PRESET FOLDER [OPTION...]: runs the tests of a build and hands on their results.
run_ctest() {
    local preset=$1 folder=$2 status wrapper=()
    shift 2
    rm -rf "$folder/test-results"
    mkdir -p "$folder/test-results"
    # The thread sanitizer of this compiler cannot place its memory where the kernel scatters addresses widely.
    [ "$preset" = thread ] && setarch -R true 2>/dev/null && wrapper=(setarch -R)
    ${wrapper[@]+"${wrapper[@]}"} ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error "$@"
    status=$?
    mapfile -t step_results < <(compgen -G "$folder/test-results/*.json" | sort)
    return $status
}

# run_pytest NAME FOLDER...: runs Python tests on the release build and hands on their results.
run_pytest() {
    local result=build/test-results/pytest-$1.xml status
    shift
    mkdir -p build/test-results
    rm -f "$result"
    PYTHONPATH="$top/build/python" /usr/bin/python3 -m pytest -q -p no:cacheprovider --junitxml="$result" "$@"
    status=$?
    step_results=("$result")
    return $status
}

step_install() { install_packages "${BUILD_PACKAGES[@]}" "${RUN_PACKAGES[@]}" "${CHECK_PACKAGES[@]}"; }

# What ./run starts, and the test that reads its include arrows and exported symbols.
step_build() { configure_preset release build && build_targets build plugin/all python/all desk/all boundary_tests; }

step_boundary() { step_build && run_ctest release build --tests-regex '^boundary_tests$'; }

# All tests once more as a user's machine runs them: every day they run with the sanitizers only, since compiling them
# twice is most of the check's time.
step_tests() { configure_preset release build && build_targets build && run_ctest release build; }

step_python() {
    local folders=() folder
    for folder in tests/*/; do
        compgen -G "${folder}test_*.py" >/dev/null && folders+=("$folder")
    done
    step_build && run_pytest all "${folders[@]}"
}

# Every example is run: programs as the build made them, scripts with the module.
step_examples() {
    step_build || return 1
    local example status=0 made=build/examples-out
    rm -rf "$made" && mkdir -p "$made"
    for example in build/bin/example_*; do
        [ -x "$example" ] || continue
        echo "-- $example"
        timeout 120 "$example" || status=1
    done
    echo "-- examples/first_edit.py"
    PYTHONPATH=build/python timeout 120 /usr/bin/python3 examples/first_edit.py "$made/first_edit.glb" || status=1
    [ -s "$made/first_edit.glb" ] || { echo "first_edit.py left no file"; status=1; }
    return $status
}

# What a user does first, and what is to be there afterwards.
step_first_edit() {
    local made=build/first-edit-out
    rm -rf "$made"
    timeout 1200 ./run --first-edit --out "$made" || return 1
    [ -s "$made/figure.glb" ] && [ -s "$made/figure.png" ] || { ls -l "$made"; return 1; }
    ! cmp -s "$made/figure.glb" samples/figure.glb || { echo "the saved character is unchanged"; return 1; }
    local start
    start=$(date +%s%N)
    timeout 60 ./run --build-only || return 1
    say "a second ./run is ready to start after $((($(date +%s%N) - start) / 1000000)) ms"
}

# Without the Python module: its tests run inside the sanitizers only when there is time.
step_sanitize() {
    configure_preset sanitize build-sanitize && build_targets build-sanitize plugin/all desk/all tests/all
}

step_sanitize_tests() { step_sanitize && run_ctest sanitize build-sanitize; }

step_formatting() {
    local files=()
    mapfile -d '' -t files < <(own_files '*.cpp' '*.h')
    [ ${#files[@]} -gt 0 ] || return 0
    clang-format-14 --dry-run -Werror "${files[@]}" && return 0
    # Which files, once more and short, at the end of the log.
    local file
    for file in "${files[@]}"; do
        clang-format-14 --dry-run -Werror "$file" 2>/dev/null || echo "clang-format-14 -i $file"
    done
    return 1
}

step_scripts() {
    local script status=0
    for script in run check .ci/run tools/*.sh; do
        bash -n "$script" || status=1
    done
    for script in run check .ci/run; do
        [ -x "$script" ] || { echo "$script: no run bit"; status=1; }
    done
    return $status
}

# own_files PATTERN...: the files of the tree by name, without what is built; each ends with a zero byte.
own_files() {
    local names=() pattern
    for pattern in "$@"; do names+=(-o -name "$pattern"); done
    find . \( -name '.*' ! -name . -o -name 'build' -o -name 'build-*' -o -name out \) -prune -o \
        -type f \( "${names[@]:1}" \) -printf '%P\0' | sort -z
}
