#!/usr/bin/env bash
# Compares, in one run, `kelvo scan` of the fake home (HOME pointing at it, an empty
# temporary folder) with `du -sl` of the same home: warm cache (median of alternating runs)
# and, where the page cache can be dropped, cold. Prints the ratio and kelvo's peak memory.
# LAYOUT=macos (default) scans the macOS-layout home with the macOS catalog, LAYOUT=linux
# the Linux-layout home with the Linux catalog; kelvo runs with no other variable than
# HOME, TMPDIR and PATH, so the machine's XDG or tool variables cannot move the catalog.
# Targets on 2 cores, warm: the scan at most 0.6 x du's wall time, peak memory under 64 MiB.
# The same warm run also times what finding the project folders costs (the Linux catalog
# only; target at most 10 % of the scan).
# Exits 1 when a target is missed. RUNS (default 5) and COLD_RUNS (default 3) set the rounds.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/lib.sh"

if [ ! -x /usr/bin/time ]; then "$repo_dir/scripts/install-deps.sh"; fi

layout=${LAYOUT:-macos}
home=$(fake_home "$layout")
kelvo=$(kelvo_binary)
runs=${RUNS:-5}
cold_runs=${COLD_RUNS:-3}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

kelvo_run() { env -i HOME="$home" TMPDIR="$scratch" PATH="$PATH" "$kelvo" --catalog "$layout" scan --json; }
kelvo_scan() { kelvo_run >/dev/null; }
du_home() { du -sl "$home" >/dev/null 2>&1 || true; }
# `config show` searches the project folders when no configuration file names any; with a
# file naming one (written only while it runs) it searches nothing: the difference between
# the two is what the search costs.
config_file="$home/.config/kelvo/config.json"
if [ -e "$config_file" ]; then echo "the fake home already has $config_file" >&2; exit 1; fi
config_show() { env -i HOME="$home" PATH="$PATH" "$kelvo" --catalog "$layout" config show; }
show_searching() { config_show >/dev/null; }
show_configured() {
  mkdir -p "$(dirname "$config_file")"
  printf '%s\n' '{"projectRoots": ["~/workspace/x"], "extraExclusions": [], "defaultLevel": "moderate", "keepRecentDays": 3}' >"$config_file"
  config_show >/dev/null
  rm -f "$config_file"
}

echo "project folders found: $(config_show | grep -c '  (found)$' || true)"
read -r kelvo_ms du_ms searching_ms configured_ms < <(alternating_medians warm "$runs" kelvo_scan du_home show_searching show_configured)
echo "warm cache: kelvo scan $kelvo_ms ms, du -sl $du_ms ms; kelvo/du $(ratio "$kelvo_ms" "$du_ms") (target <= 0.6)"
verdict "warm kelvo/du" "$(ratio "$kelvo_ms" "$du_ms")" 0.6
finding_ms=$(awk -v a="$searching_ms" -v b="$configured_ms" 'BEGIN { d = a - b; printf "%d", (d > 0 ? d : 0) }')
echo "finding the project folders: $finding_ms ms (config show $searching_ms ms, configured $configured_ms ms);" \
  "share of the scan $(ratio "$finding_ms" "$kelvo_ms") (target <= 0.10)"
verdict "finding the project folders" "$(ratio "$finding_ms" "$kelvo_ms")" 0.10

if can_drop_caches; then
  read -r kelvo_ms du_ms < <(alternating_medians cold "$cold_runs" kelvo_scan du_home)
  echo "cold cache: kelvo scan $kelvo_ms ms, du -sl $du_ms ms; kelvo/du $(ratio "$kelvo_ms" "$du_ms")"
else
  echo "cold cache: skipped (cannot drop the page cache on this machine)"
fi

peak_kib=$(peak_memory_kib env -i HOME="$home" TMPDIR="$scratch" PATH="$PATH" "$kelvo" --catalog "$layout" scan --json)
echo "kelvo scan peak memory: $((peak_kib / 1024)) MiB ($peak_kib KiB; target < 64 MiB)"
verdict "peak memory" "$peak_kib" $((64 * 1024 - 1))

exit "$failed"
