#!/usr/bin/env bash
# Installs what Kelvo needs, builds it and runs every test but the large ones (ctest -L large).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
cd "${KELVO_BUILD_DIR:-$root/build}"
ctest --output-on-failure --timeout 600 -j "$(nproc)" -LE large
