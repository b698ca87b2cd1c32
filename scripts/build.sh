#!/usr/bin/env bash
# Configures and builds Kelvo (tool, library and tests) into build/ with CMake and Ninja.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KELVO_BUILD_DIR:-$root/build}
launcher=()
# Several checkouts of the tree share compiled objects through ccache when it is there.
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
cmake --build "$build"
