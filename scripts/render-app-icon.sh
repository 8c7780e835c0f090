#!/usr/bin/env bash
# Renders resources/app/com.harrowmere.Tallyfen.svg into the PNG sizes under
# resources/app/icons/. Run when the icon changes; the PNGs are committed.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
QT_QPA_PLATFORM=offscreen "$build_dir/tests/views/render_app_icon" \
    "$root/resources/app/com.harrowmere.Tallyfen.svg" "$root/resources/app/icons"
