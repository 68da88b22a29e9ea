#!/usr/bin/env bash
# Builds the fuzzers with clang (libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz and runs each for a fixed budget
# from its committed seed corpus, copied into a scratch directory. Exits
# non-zero on a finding; the input that showed it is left in
# build-fuzz/findings/.
#   scripts/fuzz.sh [seconds for the API fuzzer, default 60]
set -euo pipefail
cd "$(dirname "$0")/.."

budget=${1:-60}
jobs=$(nproc)
build=build-fuzz

cmake -S fuzz -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build "$build" -j"$jobs"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# run NAME SECONDS MAX_LEN RSS_MB MALLOC_MB: fuzzes from fuzz/corpus/NAME; a
# run that needs more than RSS_MB resident, or one allocation above
# MALLOC_MB, is a finding.
run() {
  local name=$1 seconds=$2 max_len=$3 rss_mb=$4 malloc_mb=$5
  local corpus="$build/corpus-$name"
  rm -rf "$corpus"
  mkdir -p "$corpus"
  cp fuzz/corpus/"$name"/* "$corpus"/
  echo "Fuzzing $name for ${seconds}s"
  local log="$build/findings/$name.log"
  if ! "$build/qvmovie_${name}_fuzzer" -max_total_time="$seconds" -max_len="$max_len" \
      -timeout=60 -rss_limit_mb="$rss_mb" -malloc_limit_mb="$malloc_mb" -print_final_stats=1 \
      -artifact_prefix="$build/findings/$name-" "$corpus" > "$log" 2>&1; then
    tail -n 80 "$log" >&2
    echo "Fuzzer $name found a fault; reproduce with:" \
      "$build/qvmovie_${name}_fuzzer $build/findings/$name-*" >&2
    return 1
  fi
  grep -E '^(#[0-9]+ +DONE|stat::number_of_executed_units)' "$log" || true
}

rm -rf "$build/findings"
mkdir -p "$build/findings"
run api "$budget" 600 2048 2048
if [ -x "$build/qvmovie_scene_fuzzer" ]; then
  # The reader refuses scenes over its memory limit (64 MB in the fuzzer).
  run scene 20 16384 1024 256
fi
if [ -x "$build/qvmovie_import_fuzzer" ]; then
  # The readers refuse pictures of more pixels than their limit.
  run import 20 16384 2048 512
fi
