#!/usr/bin/env bash
# Compares, in one run, `kelvo scan` of the fake home (HOME pointing at it, an empty
# temporary folder) with `du -sl` of the same home: warm cache (median of alternating runs)
# and, where the page cache can be dropped, cold. Prints the ratio and kelvo's peak memory.
# LAYOUT=macos (default) scans the macOS-layout home with the macOS catalog, LAYOUT=linux
# the Linux-layout home with the Linux catalog; kelvo runs with no other variable than
# HOME, TMPDIR and PATH, so the machine's XDG or tool variables cannot move the catalog.
# Targets on 2 cores, warm: the scan at most 0.6 x du's wall time, peak memory under 64 MiB.
# The same warm run also times the scan with the found project folders written into a
# configuration file, so that nothing is searched: the difference is what finding the
# project folders costs (the Linux catalog only; target at most 10 % of the scan).
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
# The found folders as a configuration's project folders, written only while its scan runs.
config_file="$home/.config/kelvo/config.json"
if [ -e "$config_file" ]; then echo "the fake home already has $config_file" >&2; exit 1; fi
found_roots=$(env -i HOME="$home" PATH="$PATH" "$kelvo" --catalog "$layout" config show |
  awk '/  \(found\)$/ { sub(/^  /, ""); sub(/  \(found\)$/, ""); printf "%s\"%s\"", sep, $0; sep = ", " }')
configured_json="{\"projectRoots\": [\"~/workspace\"${found_roots:+, $found_roots}], \"extraExclusions\": [], \"defaultLevel\": \"moderate\", \"keepRecentDays\": 3}"
kelvo_scan_configured() {
  mkdir -p "$(dirname "$config_file")" && printf '%s\n' "$configured_json" >"$config_file"
  kelvo_scan
  rm -f "$config_file"
}

echo "fake $layout home: $home ($(kelvo_run | grep -c '"id"') targets offered)"

echo "project folders found: ${found_roots:-none}"
read -r kelvo_ms du_ms configured_ms < <(alternating_medians warm "$runs" kelvo_scan du_home kelvo_scan_configured)
echo "warm cache: kelvo scan $kelvo_ms ms, du -sl $du_ms ms; kelvo/du $(ratio "$kelvo_ms" "$du_ms") (target <= 0.6)"
verdict "warm kelvo/du" "$(ratio "$kelvo_ms" "$du_ms")" 0.6
finding_ms=$((kelvo_ms > configured_ms ? kelvo_ms - configured_ms : 0))
echo "finding the project folders: $finding_ms ms (scan $kelvo_ms ms, with them configured $configured_ms ms);" \
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
