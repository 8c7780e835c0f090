#!/usr/bin/env bash
# Sets up what is missing, builds, and opens Tallyfen on its default local store.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
if [[ "$(uname -s)" == "Darwin" ]]; then
    exec open -W "$build_dir/bin/tallyfen.app"
fi
exec "$build_dir/bin/tallyfen"
