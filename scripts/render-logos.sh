#!/usr/bin/env bash
# Renders resources/logos/source/*.svg into the PNG provider logos under resources/logos/.
# Run when a mark changes; the PNGs are committed, so a fresh machine needs no npm.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
QT_QPA_PLATFORM=offscreen "$build_dir/tests/views/render_logos" "$root/resources/logos/source" "$root/resources/logos"
