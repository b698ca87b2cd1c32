#!/usr/bin/env bash
# Configures and builds Kelvo (tool, library and tests) into build/ with CMake and Ninja.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KELVO_BUILD_DIR:-$root/build}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build"
