#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang into build-fuzz/ and runs each for a while
# (default 120 seconds each) on its seed corpus, which it grows as it finds new paths.
# Usage: scripts/fuzz.sh [seconds per harness]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
seconds="${1:-120}"
build_dir="$root/build-fuzz"
if [[ ! -f "$build_dir/CMakeCache.txt" ]]; then
    cmake -S "$root" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTALLYFEN_WERROR=OFF \
        -DTALLYFEN_FUZZ=ON -DTALLYFEN_BUILD_TESTS=OFF -DTALLYFEN_BUILD_BENCHMARKS=OFF
fi
harnesses=(usagejson openairecords headervalues)
cmake --build "$build_dir" --target "${harnesses[@]/#/fuzz_}"
export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
for harness in "${harnesses[@]}"; do
    corpus="$build_dir/corpus/$harness"
    mkdir -p "$corpus" "$build_dir/findings/$harness"
    echo "fuzz_$harness: ${seconds}s"
    "$build_dir/fuzz/fuzz_$harness" -max_total_time="$seconds" -max_len=65536 -print_final_stats=1 \
        -artifact_prefix="$build_dir/findings/$harness/" "$corpus" "$root/fuzz/corpus/$harness" 2>&1 |
        grep -E "^(stat::|==|SUMMARY|Done|INFO: Seed)" || true
done
