# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# The steps that only ./check --all takes. Sourced by check, after steps.sh.

TIDY_SECONDS=${SKINDESK_TIDY_SECONDS:-600}
FUZZ_SECONDS=${SKINDESK_FUZZ_SECONDS:-20}

step_install_all() { install_packages "${CHECK_ALL_PACKAGES[@]}"; }

# Static analysis, file by file, as far as its time reaches: what changed last is looked at first.
step_tidy() {
    configure_preset release build || return 1
    local files=() status
    mapfile -t files < <(own_files '*.cpp' | xargs -0 ls -t -- | grep -v -E '^(tests|fuzz|benchmarks|examples)/')
    rm -rf build/tidy && mkdir -p build/tidy
    printf '%s\0' "${files[@]}" |
        timeout "$TIDY_SECONDS" xargs -0 -n 1 -P "$(nproc)" bash -c '
            log="build/tidy/$(printf %s "$1" | tr / _)"
            clang-tidy-14 --quiet -p build "$1" >"$log.part" 2>&1
            status=$?
            mv "$log.part" "$log"
            [ $status -eq 0 ] || { cat "$log"; exit 1; }' tidy
    status=$?
    local seen
    seen=$(find build/tidy -type f ! -name '*.part' | wc -l)
    say "clang-tidy looked at $seen of ${#files[@]} files"
    # 124: the time was up; what had been looked at until then was clean unless xargs said so.
    [ $status -eq 0 ] || { [ $status -eq 124 ] && ! grep -rqE '(warning|error):' build/tidy; }
}

# The rooms in which threads run, and the tests that play while things change.
THREADED_TESTS=(zmodel_tests zconstraints_tests bcore_tests viewport_tests tool_tests)

step_thread() { configure_preset thread build-thread && build_targets build-thread "${THREADED_TESTS[@]}"; }

step_thread_tests() {
    local names
    names=$(IFS='|' && echo "${THREADED_TESTS[*]}")
    step_thread && run_ctest thread build-thread --tests-regex "^($names)\$"
}

# Each fuzzer runs shortly from its seeds; what it finds stays beside it.
step_fuzz() {
    if ! compgen -G 'fuzz/*_fuzz.cpp' >/dev/null; then
        say "there is no fuzzer to run"
        return 0
    fi
    configure_preset fuzz build-fuzz && build_targets build-fuzz fuzz/all || return 1
    local fuzzer status=0 name corpus
    for fuzzer in build-fuzz/bin/*_fuzz; do
        name=$(basename "$fuzzer")
        corpus=build-fuzz/corpus/$name
        mkdir -p "$corpus"
        local seeds=("fuzz/corpus/${name%%_*}") # those of the door's format
        [ -d "${seeds[0]}" ] || seeds=(samples)
        echo "-- $name"
        "$fuzzer" -max_total_time="$FUZZ_SECONDS" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
            -artifact_prefix="build-fuzz/$name-" "$corpus" "${seeds[@]}" || status=1
    done
    say "fuzzers ran $FUZZ_SECONDS s each"
    return $status
}

# Installs into a folder of its own and plays the first edit from there. Nothing may lean on the build: every library of
# ours that is loaded on the way must come from the installation.
step_package() {
    step_build && build_targets build packaging/all || return 1
    local stage=$top/build/stage strangers
    rm -rf "$stage"
    cmake --install build --prefix "$stage" || return 1
    [ -e "$stage/lib/skindesk/plugins/libtoolweighting.so" ] || { echo "no plug-in was installed"; return 1; }
    LD_DEBUG=files LD_DEBUG_OUTPUT="$stage/loaded" timeout 120 \
        "$stage/bin/skindesk" --batch examples/first_edit.py "$stage/first_edit.glb" || return 1
    strangers=$(grep -h 'calling init:' "$stage"/loaded.* | grep -F "$top/" | grep -vF "$stage/")
    [ -z "$strangers" ] || { printf 'loaded from the build:\n%s\n' "$strangers"; return 1; }
    rm -f "$stage"/loaded.* "$stage/first_edit.glb"
    use_sdk "$stage" && make_debian_package || return 1
    tar -C "$stage" -czf build/skindesk.tar.gz . && say "build/skindesk.tar.gz: $(du -h build/skindesk.tar.gz | cut -f1)"
}

# A plug-in that knows the installation only: built as a project of its own, loaded and used.
use_sdk() {
    local stage=$1 made=build/smallest-plugin
    rm -rf "$made"
    cmake -S examples/smallest_plugin -B "$made" -G Ninja -DCMAKE_PREFIX_PATH="$stage" && cmake --build "$made" &&
        timeout 60 "$stage/bin/skindesk" --batch examples/smallest_plugin/use.py "$made" samples/figure.glb
}

# The .deb of the same build, and what Debian's own judge says of it.
make_debian_package() {
    local stage=$top/build/deb-stage package
    rm -rf "$stage" build/packages
    cmake --install build --prefix "$stage/usr" --strip >/dev/null || return 1
    # From the build folder: what it unpacks on the way stays where it is started.
    (cd build && cpack --config CPackConfig.cmake -D CPACK_INSTALL_CMAKE_PROJECTS= \
        -D "CPACK_INSTALLED_DIRECTORIES=$stage;/") || return 1
    package=$(compgen -G 'build/packages/*.deb') || { echo "no package was made"; return 1; }
    lintian --fail-on error "$package" || return 1
    desktop-file-validate packaging/skindesk.desktop || return 1
    appstreamcli validate --no-net packaging/org.skindesk.Skindesk.metainfo.xml || return 1
    say "$package: $(du -h "$package" | cut -f1)"
}

# Our files before other people's eyes. Where a judge is not installed, that is said and nothing is judged.
judged_files() {
    local made=build/judged
    rm -rf "$made" && mkdir -p "$made"
    cp samples/figure.glb "$made/opened.glb"
    PYTHONPATH=build/python timeout 120 /usr/bin/python3 examples/first_edit.py "$made/saved.glb"
}

step_judge_validator() {
    if ! command -v node >/dev/null || [ ! -d build-judges/node_modules/gltf-validator ]; then
        say "the format's validator is not here (.ci/run installs it): nothing was judged by it"
        return 0
    fi
    step_build && judged_files || return 1
    local status=0 file made=build/judged/edited
    export NODE_PATH=build-judges/node_modules
    node tools/judge_validator.cjs --clean build/judged/opened.glb build/judged/saved.glb || status=1
    # Other people's characters with an edit of ours: nothing may be wrong that was not wrong before.
    for file in tests/data/skinned/{Fox,fox_compressed,CesiumMan,KayKit_Knight,greenman}.glb tests/data/skinned/RiggedSimple.gltf \
        tests/data/skinned/AG_SkinType_0*/*.gltf; do
        echo "-- $file"
        PYTHONPATH=build/python timeout 120 /usr/bin/python3 examples/play_first_edit.py --out "$made" "$file" &&
            node tools/judge_validator.cjs "$file" "$made/$(basename "$file")" || status=1
    done
    return $status
}

step_judge_blender() {
    if ! command -v blender >/dev/null; then
        say "Blender is not here (.ci/run installs it): nothing was judged by it"
        return 0
    fi
    step_build && judged_files || return 1
    timeout 600 blender --background --factory-startup --python-exit-code 1 --python tools/judge_blender.py -- \
        build/judged/saved.glb samples/figure.json || return 1
    # Other people's characters with an edit of ours: Blender's weights are those that the desk shows.
    local file made=build/judged/for_blender
    for file in tests/data/skinned/{Fox,KayKit_Knight,greenman}.glb; do
        PYTHONPATH=build/python timeout 120 /usr/bin/python3 examples/play_first_edit.py --out "$made" "$file" || return 1
    done
    PYTHONPATH=build/python:tests/support timeout 120 /usr/bin/python3 tools/weights_for_blender.py \
        build/judged/saved.glb "$made"/*.glb >"$made/weights.json" || return 1
    timeout 600 blender --background --factory-startup --python-exit-code 1 --python tools/judge_blender.py -- \
        --weights "$made/weights.json"
}

# The Python tests once more, inside the address sanitizer. The interpreter itself is not built for it and keeps what it
# allocated, so leaks are left to the other tests.
step_python_sanitized() {
    configure_preset sanitize build-sanitize && build_targets build-sanitize plugin/all python/all || return 1
    local library result=build-sanitize/test-results/pytest-sanitized.xml status
    library=$(g++ -print-file-name=libasan.so) || return 1
    compgen -G 'tests/python/test_*.py' >/dev/null || { say "there are no Python tests of the module"; return 0; }
    mkdir -p build-sanitize/test-results
    rm -f "$result"
    LD_PRELOAD="$library $(g++ -print-file-name=libstdc++.so.6)" ASAN_OPTIONS=detect_leaks=0 \
        PYTHONPATH="$top/build-sanitize/python" \
        /usr/bin/python3 -m pytest -q -p no:cacheprovider --junitxml="$result" tests/python
    status=$?
    step_results=("$result")
    return $status
}
