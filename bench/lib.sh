# Shared pieces of the benchmark scripts: the fake home, the binary, timing and memory.
# Sourced, not run. Timings are wall-clock medians of alternating runs, reported as
# ratios measured in the same run, since the machines are shared and noisy.

bench_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
repo_dir=$(cd "$bench_dir/.." && pwd)
out_dir=${BENCH_OUT:-$bench_dir/out}

# The shared folder beside the project's checkout; a linked work tree finds it beside the
# main checkout instead. KELVO_SHARED_DIR overrides both.
shared_dir() {
  if [ -n "${KELVO_SHARED_DIR:-}" ]; then echo "$KELVO_SHARED_DIR"; return; fi
  if [ -d "$repo_dir/../shared" ]; then (cd "$repo_dir/../shared" && pwd); return; fi
  local common
  common=$(git -C "$repo_dir" rev-parse --path-format=absolute --git-common-dir 2>/dev/null) || true
  if [ -n "$common" ] && [ -d "$common/../../shared" ]; then (cd "$common/../../shared" && pwd); return; fi
  echo "cannot find the shared folder (with bench/make_fake_home.py); set KELVO_SHARED_DIR" >&2
  return 1
}

# fake_home [macos|linux]: builds the fake home of that layout (macOS by default) at SCALE
# (1.0) and prints its path. Its ages are relative to the day it was made (caches 40 days
# old, one node_modules a day old), so a home older than a day is made again rather than
# reused.
fake_home() {
  local layout=${1:-macos} name=fake-home
  [ "$layout" = linux ] && name=fake-linux-home
  local home=$out_dir/$name manifest=$out_dir/$name.manifest.json
  if [ -d "$home" ] && [ -z "$(find "$manifest" -mmin -1440 2>/dev/null)" ]; then
    chmod -R u+rwx "$home" && rm -rf "$home" "$manifest"
  fi
  if [ ! -d "$home" ]; then
    mkdir -p "$out_dir"
    if [ "$layout" = linux ]; then
      python3 "$bench_dir/make_linux_home.py" "$home" --shared "$(shared_dir)" --scale "${SCALE:-1.0}" >&2
    else
      python3 "$(shared_dir)/bench/make_fake_home.py" "$home" --scale "${SCALE:-1.0}" >&2
    fi
  fi
  echo "$home"
}

# Builds kelvo (optimised, with debug info) if needed and prints the binary's path.
kelvo_binary() {
  local build=${KELVO_BUILD_DIR:-$repo_dir/build}
  cmake -S "$repo_dir" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build "$build" --target kelvo >&2
  echo "$build/kelvo/kelvo"
}

now_ns() { date +%s%N; }

# Runs a shell function once and prints its wall time in milliseconds.
time_ms() {
  local start end
  start=$(now_ns)
  "$@"
  end=$(now_ns)
  echo $(((end - start) / 1000000))
}

median() { sort -n | awk '{v[NR]=$1} END {print (NR % 2) ? v[(NR+1)/2] : (v[NR/2] + v[NR/2+1]) / 2}'; }

can_drop_caches() { [ -w /proc/sys/vm/drop_caches ] && sync && echo 3 >/proc/sys/vm/drop_caches 2>/dev/null; }

drop_caches() { sync; echo 3 >/proc/sys/vm/drop_caches; }

# alternating_medians warm|cold RUNS FUNCTION...: runs the functions in turn, RUNS rounds
# (warm: after one round to fill the cache; cold: the page cache dropped before each run),
# and prints each one's median wall time in milliseconds, in the order given.
alternating_medians() {
  local mode=$1 runs=$2
  shift 2
  local functions=("$@") index round name
  local -a times
  if [ "$mode" = warm ]; then for name in "${functions[@]}"; do "$name" >/dev/null; done; fi
  for round in $(seq "$runs"); do
    for index in "${!functions[@]}"; do
      [ "$mode" = cold ] && drop_caches
      times[index]+="$(time_ms "${functions[index]}") "
    done
  done
  local medians=()
  for index in "${!functions[@]}"; do
    medians+=("$(printf '%s\n' ${times[index]} | median)")
  done
  echo "${medians[*]}"
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }

# verdict LABEL VALUE LIMIT: prints "met" when VALUE <= LIMIT, else "MISSED" and sets failed=1.
failed=0
verdict() {
  if awk -v v="$2" -v l="$3" 'BEGIN { exit !(v <= l) }'; then
    echo "  $1: met"
  else
    echo "  $1: MISSED"
    failed=1
  fi
}

# Prints the peak resident memory of a command in KiB.
peak_memory_kib() {
  /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F': ' '/Maximum resident set size/ { print $2 }'
}
