#!/usr/bin/env bash
# Configures and builds the tree into build/ (or $TALLYFEN_BUILD_DIR).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
generator=()
if command -v ninja >/dev/null 2>&1; then
    generator=(-G Ninja)
fi
# Our own builds treat a warning as an error; the option is off for anyone else.
if [[ ! -f "$build_dir/CMakeCache.txt" ]]; then
    cmake -S "$root" -B "$build_dir" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTALLYFEN_WERROR=ON "$@"
elif ! grep -q '^TALLYFEN_WERROR:BOOL=ON$' "$build_dir/CMakeCache.txt"; then
    cmake -S "$root" -B "$build_dir" -DTALLYFEN_WERROR=ON "$@"
fi
jobs=$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)
cmake --build "$build_dir" --parallel "$jobs"
