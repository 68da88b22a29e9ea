#!/usr/bin/env bash
# Builds the library, the tools and the tests, and runs every test twice:
# in a normal build and in an AddressSanitizer + UndefinedBehaviorSanitizer
# build (LeakSanitizer included).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

jobs=$(nproc)
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# run_ctest DIR: runs the build's tests, keeping CTest's output in DIR/ctest.log.
run_ctest() {
  (cd "$1" && ctest --output-on-failure -j"$jobs") 2>&1 | tee "$1/ctest.log"
}
# count DIR: the number of tests CTest ran in DIR.
count() {
  sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$1/ctest.log" | tail -n 1
}

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$jobs"
# The engine in WebAssembly beside the build (build/web), for the tests of
# the pages of qvmovie-render --html in headless Chromium.
bash scripts/web.sh build
run_ctest build

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DQV_SANITIZE=ON
cmake --build build-asan -j"$jobs"
run_ctest build-asan

# Fuzzing: the library's interface for a fixed budget under libFuzzer with
# AddressSanitizer and UndefinedBehaviorSanitizer (its own build, build-fuzz).
bash scripts/fuzz.sh 60

# Every step above stops the script on a failure, so reaching this line means
# every test of both builds passed.
echo "tests: $(( $(count build) + $(count build-asan) )) passed, 0 failed"
