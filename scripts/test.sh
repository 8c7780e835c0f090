#!/usr/bin/env bash
# Sets up what is missing, builds, and runs every test through CTest, headless, in a
# private D-Bus session with a throw-away keyring, settings and data folders.
# Extra arguments go to ctest (for example: scripts/test.sh -R UsageJson).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
exec dbus-run-session -- "$root/scripts/test-session.sh" "$build_dir" "$@"
