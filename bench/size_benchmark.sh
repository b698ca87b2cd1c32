#!/usr/bin/env bash
# Compares, in one run, `kelvo size` of the fake home with `du -s` (without -l: kelvo too
# counts a hard-linked file once) and `gdu -n -p -s` of the same home: warm cache (median
# of alternating runs) and, where the page cache can be dropped, cold. Prints the ratios,
# kelvo's peak memory, and checks that kelvo counts what du counts less the top folder's
# own blocks. Targets on 2 cores: warm at most 0.55 x du's wall time, cold at most 0.4 x,
# peak memory under 32 MiB. Exits 1 when a check fails. LAYOUT=macos (default) or linux
# picks the fake home, as for scan_benchmark.sh. RUNS (default 5) and COLD_RUNS (default
# 3) set the number of rounds.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/lib.sh"

if ! command -v gdu >/dev/null || [ ! -x /usr/bin/time ]; then "$repo_dir/scripts/install-deps.sh"; fi

home=$(fake_home "${LAYOUT:-macos}")
kelvo=$(kelvo_binary)
runs=${RUNS:-5}
cold_runs=${COLD_RUNS:-3}

kelvo_size() { "$kelvo" size "$home" >/dev/null; }
du_size() { du -s "$home" >/dev/null 2>&1 || true; }
gdu_size() { gdu -n -p -s "$home" >/dev/null 2>&1 || true; }

# report LABEL KELVO_MS DU_MS GDU_MS TARGET
report() {
  local label=$1 kelvo_ms=$2 du_ms=$3 gdu_ms=$4 target=$5
  local to_du to_gdu
  to_du=$(ratio "$kelvo_ms" "$du_ms")
  to_gdu=$(ratio "$kelvo_ms" "$gdu_ms")
  echo "$label cache: kelvo $kelvo_ms ms, du $du_ms ms, gdu $gdu_ms ms; kelvo/du $to_du, kelvo/gdu $to_gdu (target kelvo/du <= $target)"
  verdict "$label kelvo/du" "$to_du" "$target"
}

echo "fake home: $home ($(find "$home" | wc -l) entries)"

# The same bytes as du: kelvo leaves out the top folder's own blocks, du counts them.
kelvo_bytes=$("$kelvo" size "$home" | awk '{ print $3 }')
du_bytes=$(du -s --block-size=1 "$home" | cut -f1)
top_bytes=$(($(stat -c %b "$home") * $(stat -c %B "$home")))
if [ "$kelvo_bytes" = "$((du_bytes - top_bytes))" ]; then
  echo "bytes: kelvo $kelvo_bytes = du $du_bytes - top folder $top_bytes"
else
  echo "bytes: MISMATCH: kelvo $kelvo_bytes, du $du_bytes - top folder $top_bytes = $((du_bytes - top_bytes))"
  failed=1
fi

read -r kelvo_ms du_ms gdu_ms < <(alternating_medians warm "$runs" kelvo_size du_size gdu_size)
report warm "$kelvo_ms" "$du_ms" "$gdu_ms" 0.55

if can_drop_caches; then
  read -r kelvo_ms du_ms gdu_ms < <(alternating_medians cold "$cold_runs" kelvo_size du_size gdu_size)
  report cold "$kelvo_ms" "$du_ms" "$gdu_ms" 0.40
else
  echo "cold cache: skipped (cannot drop the page cache on this machine)"
fi

peak_kib=$(peak_memory_kib "$kelvo" size "$home")
echo "kelvo size peak memory: $((peak_kib / 1024)) MiB ($peak_kib KiB; target < 32 MiB)"
verdict "peak memory" "$peak_kib" $((32 * 1024 - 1))

exit "$failed"
