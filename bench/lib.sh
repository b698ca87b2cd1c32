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

# Builds the fake home at scale 1.0 once and prints its path.
fake_home() {
  local home=$out_dir/fake-home
  if [ ! -d "$home" ]; then
    mkdir -p "$out_dir"
    python3 "$(shared_dir)/bench/make_fake_home.py" "$home" --scale "${SCALE:-1.0}" >&2
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

# report_ratio LABEL RUNS SUBJECT BASELINE SUBJECT_NAME BASELINE_NAME: warm runs, alternating.
report_ratio() {
  local label=$1 runs=$2 subject=$3 baseline=$4 subject_name=$5 baseline_name=$6
  "$subject" >/dev/null; "$baseline" >/dev/null  # warm the cache
  local subject_times=() baseline_times=()
  for _ in $(seq "$runs"); do
    subject_times+=("$(time_ms "$subject")")
    baseline_times+=("$(time_ms "$baseline")")
  done
  print_ratio "$label" "$subject_name" "$baseline_name" \
    "$(printf '%s\n' "${subject_times[@]}" | median)" "$(printf '%s\n' "${baseline_times[@]}" | median)"
}

# report_ratio_cold RUNS SUBJECT BASELINE SUBJECT_NAME BASELINE_NAME: page cache dropped before each run.
report_ratio_cold() {
  local runs=$1 subject=$2 baseline=$3 subject_name=$4 baseline_name=$5
  local subject_times=() baseline_times=()
  for _ in $(seq "$runs"); do
    drop_caches; subject_times+=("$(time_ms "$subject")")
    drop_caches; baseline_times+=("$(time_ms "$baseline")")
  done
  print_ratio "cold" "$subject_name" "$baseline_name" \
    "$(printf '%s\n' "${subject_times[@]}" | median)" "$(printf '%s\n' "${baseline_times[@]}" | median)"
}

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

print_ratio() {
  local label=$1 subject_name=$2 baseline_name=$3 subject_ms=$4 baseline_ms=$5
  awk -v l="$label" -v s="$subject_name" -v b="$baseline_name" -v st="$subject_ms" -v bt="$baseline_ms" \
    'BEGIN { printf "%s cache: %s %d ms, %s %d ms, ratio %.2f\n", l, s, st, b, bt, (bt > 0 ? st / bt : 0) }'
}

# Prints the peak resident memory of a command in KiB.
peak_memory_kib() {
  /usr/bin/time -f '%M' "$@" 2>&1 >/dev/null | tail -n 1
}
