#!/usr/bin/env bash
# Installs what Kelvo needs, builds it and runs its main job: a scan of this user's home.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
exec "${KELVO_BUILD_DIR:-$root/build}/kelvo/kelvo" scan "$@"
