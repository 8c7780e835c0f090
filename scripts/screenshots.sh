#!/usr/bin/env bash
# Renders the screens offscreen into screenshots/ (or the folder given) to look at.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
output="${1:-$root/screenshots}"
QT_QPA_PLATFORM=offscreen LANG=en_US.UTF-8 "$build_dir/tests/views/render_screens" "$output"
