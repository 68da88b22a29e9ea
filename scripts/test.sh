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

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$jobs"
(cd build && ctest --output-on-failure -j"$jobs")

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DQV_SANITIZE=ON
cmake --build build-asan -j"$jobs"
(cd build-asan && ctest --output-on-failure -j"$jobs")

# Fuzzing: the library's interface for a fixed budget under libFuzzer with
# AddressSanitizer and UndefinedBehaviorSanitizer (its own build, build-fuzz).
bash scripts/fuzz.sh 60
