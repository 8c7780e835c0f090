#!/usr/bin/env bash
# Builds and runs every benchmark (release build with debug info), headless.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
export QT_QPA_PLATFORM=offscreen LANG=en_US.UTF-8 TZ="${TZ:-Europe/Berlin}"
for bench in "$build_dir"/bench/bench_usagejson "$build_dir"/bench/bench_provideraccount "$build_dir"/bench/bench_openai \
    "$build_dir"/bench/bench_sidebarmodel "$build_dir"/bench/bench_blocks "$build_dir"/bench/bench_overview \
    "$build_dir"/bench/bench_export "$build_dir"/bench/bench_storeopen; do
    "$bench" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
done
"$build_dir/bench/bench_startup" 21 2>/dev/null
"$build_dir/bench/bench_refreshstorm" --idle
"$build_dir/bench/bench_parsermemory"
"$build_dir/bench/bench_bigbody"
