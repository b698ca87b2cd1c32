#!/usr/bin/env bash
# Compares, in one run, `kelvo scan` of the fake home (HOME pointing at it) with `du -sl`
# of the same home: warm cache (median of alternating runs) and, where the page cache can
# be dropped, cold. Prints the ratio and kelvo's peak memory. Targets on 2 cores, warm:
# scan at most 0.6 x du's wall time, peak memory under 64 MiB.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/lib.sh"

home=$(fake_home)
kelvo=$(kelvo_binary)
runs=${RUNS:-5}
export HOME_UNDER_TEST=$home

scan() { HOME="$home" TMPDIR="$home/.tmp-none" "$kelvo" scan --json >/dev/null; }
du_home() { du -sl "$home" >/dev/null 2>&1 || true; }

warm_up() { scan; du_home; }

report_ratio "warm" "$runs" scan du_home "kelvo scan" "du -sl"
if can_drop_caches; then
  report_ratio_cold "$runs" scan du_home "kelvo scan" "du -sl"
else
  echo "cold cache: skipped (cannot drop the page cache on this machine)"
fi
peak=$(peak_memory_kib env HOME="$home" TMPDIR="$home/.tmp-none" "$kelvo" scan --json)
echo "kelvo scan peak memory: $((peak / 1024)) MiB (target < 64 MiB)"
