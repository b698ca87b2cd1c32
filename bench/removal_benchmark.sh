#!/usr/bin/env bash
# Compares, in one run, kelvo's removal of a clean target (the executor's checks, measuring
# and removal, as `kelvo clean` runs them) with rm -rf on freshly built identical trees,
# alternating kelvo and the baselines, warm cache:
#   - a node_modules-like tree of FILES (300,000) files in many small packages, against
#     rm -rf and against xargs -P 8 rm -rf over its top-level folders.
#     Targets: at most 0.5 x rm -rf, and at most 1.0 x xargs.
#   - one folder of WIDE_FILES (1,000,000) empty files beside a narrow chain CHAIN (50)
#     folders deep, against rm -rf. Target: at most 1.0 x rm -rf.
#   - peak resident memory and open descriptors of kelvo during each removal.
#   - a race run: while kelvo removes a tree of RACE_FILES files, another process keeps
#     swapping its folders for links to a canary folder outside the home. Target: the
#     canary folder is exactly as before.
# Each kelvo run also checks its report: the target deleted, and the bytes freed equal to
# what du counts less the top folder's own blocks.
#
# Where the trees live matters more than anything: unlinking waits on the file system's
# journal and, on a file system mounted with "discard", on the device for every file.
# BENCH_DIR names a folder to work in; without it, as root, the runs happen on an ext4
# file system of their own (an image in bench/out, loop-mounted), so other users of the
# disk and its mount options do not decide the figures; otherwise in bench/out.
# RUNS (default 2) and WIDE_RUNS (default 1) set the rounds. Exits 1 when a target is missed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/lib.sh"

if [ ! -x /usr/bin/time ]; then "$repo_dir/scripts/install-deps.sh"; fi

files=${FILES:-300000}
wide_files=${WIDE_FILES:-1000000}
chain=${CHAIN:-50}
race_files=${RACE_FILES:-30000}
runs=${RUNS:-2}
wide_runs=${WIDE_RUNS:-1}

build=${KELVO_BUILD_DIR:-$repo_dir/build}
cmake -S "$repo_dir" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target kelvo-removal-bench >&2
bench=$build/bench/kelvo-removal-bench

mounted=""
image=""
cleanup() {
  if [ -n "$mounted" ]; then umount "$mounted" || true; fi
  if [ -n "$image" ]; then rm -f "$image"; fi
  if [ -n "${work:-}" ] && [ -z "$mounted" ]; then rm -rf "$work"; fi
}
trap cleanup EXIT

mkdir -p "$out_dir"
if [ -n "${BENCH_DIR:-}" ]; then
  work=$BENCH_DIR/kelvo-removal-bench.$$
  mkdir -p "$work"
elif [ "$(id -u)" = 0 ] && command -v losetup >/dev/null && losetup -f >/dev/null 2>&1; then
  image=$out_dir/removal-fs.img
  work=$out_dir/removal-fs
  rm -f "$image"
  truncate -s 16G "$image"
  mkfs.ext4 -q -F "$image"
  mkdir -p "$work"
  mount -o loop "$image" "$work"
  mounted=$work
else
  work=$out_dir/removal
  mkdir -p "$work"
fi

echo "file system: $(df -T "$work" | awk 'NR == 2 { print $1, $2 }'), mounted $(findmnt -no OPTIONS -T "$work")"
echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg), CPU shared by session: $(cat /proc/sys/kernel/sched_autogroup_enabled 2>/dev/null || echo unknown)"

home=$work/home
tree=$home/.cache/tree
mkdir -p "$home/.cache"

# Builds a fresh tree with the given bench command and writes it all out, so the timed run
# does not also wait for the build's writeback.
fresh() {
  rm -rf "$tree"
  "$bench" "$@" >/dev/null
  sync
}

kelvo_out=$work/kelvo.out
usage_out=$work/usage
# Each contender leaves its user and system CPU seconds (and kelvo its peak memory) in
# usage_out: with the wall time they tell whether a run waited on the disk or on a core.
timed() { /usr/bin/time -f '%U %S %M' -o "$usage_out" "$@"; }
kelvo_remove() { timed "$bench" remove "$home" "$tree" >"$kelvo_out" || true; }
rm_remove() { timed rm -rf "$tree"; }
xargs_remove() {
  timed sh -c 'find "$1" -mindepth 1 -maxdepth 1 -print0 | xargs -0 -P 8 -n 16 rm -rf && rmdir "$1"' sh "$tree"
}
cpu_seconds() { awk '{ printf "%.1f", $1 + $2 }' "$usage_out"; }

field() { sed -n "s/.*\b$1=\([0-9]*\).*/\1/p" "$kelvo_out"; }

peak_fds=0
peak_rss=0
# Checks kelvo's last report against what was there, and keeps its peaks.
check_kelvo() {
  local expected=$1
  if [ -e "$tree" ] || [ "$(field deleted)" != 1 ]; then
    echo "  kelvo did not remove the tree: $(head -c 300 "$kelvo_out")"
    failed=1
  fi
  if [ -n "$expected" ] && [ "$(field freed)" != "$expected" ]; then
    echo "  kelvo freed $(field freed) bytes; du counts $expected"
    failed=1
  fi
  local fds rss
  fds=$(field peak_fds)
  rss=$(awk '{ print $3 }' "$usage_out")
  if [ "$fds" -gt "$peak_fds" ]; then peak_fds=$fds; fi
  if [ "$rss" -gt "$peak_rss" ]; then peak_rss=$rss; fi
}

# What du counts below the tree, without the top folder's own blocks, as kelvo counts.
du_bytes() { echo $(($(du -sl --block-size=1 "$tree" | cut -f1) - $(stat -c '%b * %B' "$tree"))); }

# rounds RUNS BUILD-ARGS -- NAME...: per round, each contender on a tree just built; sets
# medians to each one's median wall time in milliseconds and cpu_medians to its median CPU
# seconds, in the order given.
medians=()
cpu_medians=()
rounds() {
  local count=$1 round index name
  shift
  local -a build_args=()
  while [ "$1" != -- ]; do build_args+=("$1"); shift; done
  shift
  local -a names=("$@") times=() cpus=()
  for round in $(seq "$count"); do
    for index in "${!names[@]}"; do
      name=${names[index]}
      fresh "${build_args[@]}"
      local expected=""
      if [ "$name" = kelvo_remove ]; then expected=$(du_bytes); fi
      times[index]+="$(time_ms "$name") "
      cpus[index]+="$(cpu_seconds) "
      if [ -e "$tree" ] && [ "$name" != kelvo_remove ]; then echo "  $name left the tree behind"; fi
      if [ "$name" = kelvo_remove ]; then check_kelvo "$expected"; fi
    done
  done
  medians=()
  cpu_medians=()
  for index in "${!names[@]}"; do
    medians+=("$(printf '%s\n' ${times[index]} | median)")
    cpu_medians+=("$(printf '%s\n' ${cpus[index]} | median)")
  done
}

echo "packages: $files files, $runs round(s)"
rounds "$runs" packages "$tree" "$files" -- kelvo_remove rm_remove xargs_remove
read -r kelvo_ms rm_ms xargs_ms <<<"${medians[*]}"
to_rm=$(ratio "$kelvo_ms" "$rm_ms")
to_xargs=$(ratio "$kelvo_ms" "$xargs_ms")
read -r kelvo_cpu rm_cpu xargs_cpu <<<"${cpu_medians[*]}"
echo "  kelvo $kelvo_ms ms, rm -rf $rm_ms ms, xargs -P 8 rm -rf $xargs_ms ms"
echo "  CPU: kelvo $kelvo_cpu s, rm -rf $rm_cpu s, xargs $xargs_cpu s"
echo "  kelvo/rm $to_rm (target <= 0.5), kelvo/xargs $to_xargs (target <= 1.0)"
echo "  kelvo peak: $peak_fds open descriptors, $((peak_rss / 1024)) MiB resident"
verdict "packages kelvo/rm" "$to_rm" 0.5
verdict "packages kelvo/xargs" "$to_xargs" 1.0

peak_fds=0
peak_rss=0
echo "one folder of $wide_files files and a chain $chain deep, $wide_runs round(s)"
rounds "$wide_runs" wide "$tree" "$wide_files" "$chain" -- kelvo_remove rm_remove
read -r kelvo_ms rm_ms <<<"${medians[*]}"
to_rm=$(ratio "$kelvo_ms" "$rm_ms")
read -r kelvo_cpu rm_cpu <<<"${cpu_medians[*]}"
echo "  kelvo $kelvo_ms ms, rm -rf $rm_ms ms; kelvo/rm $to_rm (target <= 1.0)"
echo "  CPU: kelvo $kelvo_cpu s, rm -rf $rm_cpu s"
echo "  kelvo peak: $peak_fds open descriptors, $((peak_rss / 1024)) MiB resident"
verdict "wide kelvo/rm" "$to_rm" 1.0

# The race: the canary folder has the names the tree has, so that a removal following a
# planted link would find something to remove there.
outside=$work/outside
rm -rf "$outside" "$home/holding" "$work/stop"
"$bench" packages "$outside" 200 >/dev/null
canary_before=$(cd "$outside" && find . -printf '%p %s %i\n' | sort | md5sum)
fresh packages "$tree" "$race_files"
"$bench" swap "$tree" "$outside" "$home/holding" "$work/stop" >"$work/swaps" &
adversary=$!
sleep 0.2
"$bench" remove "$home" "$tree" >"$kelvo_out" || true
touch "$work/stop"
wait "$adversary"
canary_after=$(cd "$outside" && find . -printf '%p %s %i\n' | sort | md5sum)
echo "race: $(cat "$work/swaps") links planted during the removal; kelvo: $(head -1 "$kelvo_out")"
if [ "$canary_before" = "$canary_after" ] && [ "$(cat "$work/swaps")" -gt 0 ]; then
  echo "  canary: intact"
else
  echo "  canary: CHANGED (or no link was planted)"
  failed=1
fi
rm -rf "$tree" "$home/holding" "$work/stop"

exit "$failed"
