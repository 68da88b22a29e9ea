#!/usr/bin/env bash
# Builds the library, the tools and the tests, and runs every test twice: in
# a normal build (build/) and in an AddressSanitizer + UndefinedBehaviorSanitizer
# build (build-asan/, LeakSanitizer included); then fuzzes for a fixed budget
# (scripts/fuzz.sh 60, in build-fuzz/).
#
#   scripts/test.sh
#
# Prints one line per stage with its counts, its time and its log; the full
# output only of what failed. The last line counts the tests (each fuzzer run
# is one) as "tests: N passed, N failed". Exit status 0 when nothing failed.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

passed=0
failed=0

# rel PATH: PATH relative to the repository, for shorter lines.
rel() { echo "${1#"$root"/}"; }

# stage NAME LOG COMMAND...: runs COMMAND with its output in LOG; on failure
# prints the log and counts one failure. Returns COMMAND's status.
stage() {
  local name=$1 log=$2 start=$SECONDS
  shift 2
  mkdir -p "$(dirname "$log")"
  if "$@" >"$log" 2>&1; then
    echo "$name: done in $((SECONDS - start)) s (log: $(rel "$log"))"
    return 0
  fi
  cat "$log"
  echo "$name: FAILED after $((SECONDS - start)) s (log: $(rel "$log"))"
  failed=$((failed + 1))
  return 1
}

# build_and_test NAME DIR CMAKE_OPTIONS...: configures and builds DIR, then
# runs its tests with CTest. Prints the failed tests' output only.
build_and_test() {
  local name=$1 dir=$root/$2
  shift 2
  stage "$name build" "$dir/build.log" \
    bash -c 'cmake -S "$1" -B "$2" "${@:4}" && cmake --build "$2" -j"$3"' _ \
    "$root" "$dir" "$jobs" "$@" || return
  local log=$dir/ctest.log start=$SECONDS
  (cd "$dir" && ctest --output-on-failure -j"$jobs") >"$log" 2>&1
  local status=$?
  local total failures skipped
  total=$(sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$log" | tail -n 1)
  failures=$(sed -n 's/.*, \([0-9]*\) tests\{0,1\} failed out of.*/\1/p' "$log" | tail -n 1)
  skipped=$(grep -c '(Skipped)$' "$log")
  if [ -z "$total" ]; then
    cat "$log"
    echo "$name tests: CTest did not finish (log: $(rel "$log"))"
    failed=$((failed + 1))
    return
  fi
  if [ "$status" -ne 0 ] || [ "${failures:-0}" -ne 0 ]; then
    # The failed tests' output and CTest's summary; not the passed ones.
    grep -vE '^ *Start +[0-9]+: |Test +#[0-9]+: .* +(Passed|\*\*\*Skipped) ' "$log"
  fi
  local ok=$((total - failures - skipped))
  passed=$((passed + ok))
  failed=$((failed + failures))
  echo "$name tests: $ok passed, $failures failed, $skipped skipped in" \
    "$((SECONDS - start)) s (log: $(rel "$log"))"
}

stage "setup" "$root/build/setup.log" bash "$root/scripts/setup.sh" || {
  echo "tests: $passed passed, $failed failed"
  exit 1
}
# The engine in WebAssembly beside the normal build (build/web), for the
# tests of the pages of qvmovie-render --html in headless Chromium.
stage "web" "$root/build/web.log" bash "$root/scripts/web.sh" "$root/build"
build_and_test "normal" build -DCMAKE_BUILD_TYPE=RelWithDebInfo
build_and_test "sanitizer" build-asan -DCMAKE_BUILD_TYPE=Debug -DQV_SANITIZE=ON

# Fuzzing: the library's interface and the scene reader under libFuzzer with
# AddressSanitizer and UndefinedBehaviorSanitizer (its own build, build-fuzz).
fuzz_log=$root/build-fuzz/fuzz.log
start=$SECONDS
mkdir -p "$root/build-fuzz"
if bash "$root/scripts/fuzz.sh" 60 >"$fuzz_log" 2>&1; then
  runs=$(sed -n 's/^Fuzzing \([a-z]*\) for.*/\1/p' "$fuzz_log" | tr '\n' ' ')
  units=0
  for n in $(sed -n 's/^stat::number_of_executed_units: *\([0-9]*\).*/\1/p' "$fuzz_log"); do
    units=$((units + n))
  done
  count=$(echo "$runs" | wc -w)
  passed=$((passed + count))
  echo "fuzz: ${runs}without a finding, $units inputs in $((SECONDS - start)) s" \
    "(log: $(rel "$fuzz_log"))"
else
  cat "$fuzz_log"
  failed=$((failed + 1))
  echo "fuzz: FAILED after $((SECONDS - start)) s (log: $(rel "$fuzz_log"); findings in build-fuzz/findings/)"
fi

echo "tests: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
