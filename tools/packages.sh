# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Which Debian packages are needed for what, and how to install those that are missing. Sourced by run, check, .ci/run.
# A room that needs a further library adds its package here and its find_package() in the room's CMakeLists.txt.

# To build everything, tests included (they are configured with the rest, whether they are built or not).
BUILD_PACKAGES=(g++ cmake ninja-build ccache libgl-dev libegl-dev qt6-base-dev libqt6opengl6-dev nlohmann-json3-dev libdraco-dev
                libmeshoptimizer-dev libassimp-dev pybind11-dev python3-dev
                python3-numpy libgtest-dev libgmock-dev librapidcheck-dev libpng-dev)
# To run it without a screen: the software renderer.
RUN_PACKAGES=(libgl1-mesa-dri libegl1 libegl-mesa0 libdraco7 libmeshoptimizer2d libassimp5 python3 python3-numpy)
# To check it.
CHECK_PACKAGES=(xvfb xauth python3-pytest python3-jsonschema clang-format-14 binutils)
# To check it at length.
CHECK_ALL_PACKAGES=(clang-14 clang-tidy-14 libclang-rt-14-dev dpkg-dev lintian desktop-file-utils appstream)

# install_packages PACKAGE...: installs what is missing; asks no package source while nothing is.
install_packages() {
    local missing=() package installed
    installed=$(dpkg-query -W -f='|${Package}=${db:Status-Status}|\n' "$@" 2>/dev/null)
    for package in "$@"; do
        case "$installed" in *"|$package=installed|"*) ;; *) missing+=("$package") ;; esac
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "these packages are missing, and only root can install them: ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq || return 1
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
