#!/usr/bin/env bash
# Sets up what is missing, builds, and runs every test through CTest, headless, in a
# private D-Bus session with a throw-away keyring, settings and data folders.
# Extra arguments go to ctest (for example: scripts/test.sh -R UsageJson).
#   --sanitize   build into build-sanitize/ with AddressSanitizer and UndefinedBehaviorSanitizer
#                and run the suite there; any finding fails the test that made it.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
configure=()
if [[ "${1:-}" == "--sanitize" ]]; then
    shift
    export TALLYFEN_BUILD_DIR="${TALLYFEN_BUILD_DIR:-$root/build-sanitize}"
    configure=(-DTALLYFEN_SANITIZE=ON -DTALLYFEN_BUILD_BENCHMARKS=OFF)
    # Qt, GLib and fontconfig keep caches until exit that LeakSanitizer would call leaks.
    export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1:strict_string_checks=1"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi
"$root/scripts/build.sh" "${configure[@]}"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
exec dbus-run-session -- "$root/scripts/test-session.sh" "$build_dir" "$@"
