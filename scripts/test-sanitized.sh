#!/usr/bin/env bash
# Builds the whole suite with AddressSanitizer and UndefinedBehaviorSanitizer and runs it,
# then builds it with ThreadSanitizer and runs the tests of the parallel paths (sizing,
# scan, cleaners, execution: the shared worker pool, the walk and the removal).
# Any report fails the run. Slow: two more builds, in build-asan/ and build-tsan/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
supp=$root/scripts/sanitizers
jobs=${KELVO_SANITIZE_JOBS:-$(nproc)}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

configure_and_build() {  # build dir, sanitizer flags, targets...
    local dir=$1 flags=$2
    shift 2
    cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" \
          -DCMAKE_CXX_FLAGS="$flags -fno-omit-frame-pointer" \
          -DCMAKE_EXE_LINKER_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$flags" >/dev/null
    if (($#)); then cmake --build "$dir" -j "$jobs" --target "$@"; else cmake --build "$dir" -j "$jobs"; fi
}

# Set before building too: the build lists each program's tests by running it.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$supp/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

asan=${KELVO_ASAN_BUILD_DIR:-$root/build-asan}
configure_and_build "$asan" "-fsanitize=address,undefined -fno-sanitize-recover=undefined"
(cd "$asan" && ctest --output-on-failure --timeout 900 -j "$jobs" -LE large)

tsan=${KELVO_TSAN_BUILD_DIR:-$root/build-tsan}
parallel=(test_sizing test_scan test_cleaners test_execution)
configure_and_build "$tsan" "-fsanitize=thread" kelvo "${parallel[@]}"
for program in "${parallel[@]}"; do
    echo "== $program (ThreadSanitizer)"
    (cd "$tsan/tests" && "./$program" --gtest_brief=1 --gtest_filter=-Large*)
done
echo "Sanitized suite: no report."
