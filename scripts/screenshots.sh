#!/usr/bin/env bash
# Renders the screens offscreen into screenshots/ (or the folder given) to look at: the
# usual window in light and dark; in large/ the same at 1.5x scale and the window's
# minimum width; in high-contrast/ the high-contrast palettes (and high-contrast-large/).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/bootstrap.sh"
"$root/scripts/build.sh"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
output="${1:-$root/screenshots}"
render() {
    QT_QPA_PLATFORM=offscreen LANG=en_US.UTF-8 "$build_dir/tests/views/render_screens" "$@"
}
render "$output"
QT_SCALE_FACTOR=1.5 render "$output/large" --minimum-width
render "$output/high-contrast" --high-contrast
QT_SCALE_FACTOR=1.5 render "$output/high-contrast-large" --minimum-width --high-contrast
