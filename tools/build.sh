# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Configuring and building, as run and check do it. Sourced; the current folder is the top of the tree.

export NINJA_STATUS='[%f/%t, %es] '

# configure_preset PRESET FOLDER: configures once, and again when the presets have changed or the tree has been moved.
# Changed CMake files are seen by the build itself.
configure_preset() {
    local preset=$1 folder=$2 fresh=() report
    if [ -f "$folder/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        fresh=(--fresh)
    elif [ -f "$folder/build.ninja" ] && [ "$folder/.configured" -nt CMakePresets.json ]; then
        return 0
    fi
    echo "configuring $folder"
    report=$(cmake --preset "$preset" ${fresh[@]+"${fresh[@]}"} 2>&1) || {
        printf '%s\n' "$report" >&2
        return 1
    }
    touch "$folder/.configured"
}

# build_targets FOLDER [TARGET...]: builds, all without a target, and shows its progress.
build_targets() {
    local folder=$1
    shift
    cmake --build "$folder" ${1+--target "$@"}
}
