#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what lands there, validates the
# launcher entry and the AppStream metainfo, and builds the Debian package and checks
# that it depends on runtime packages only.
# Usage: check-install.sh BUILD_DIR
set -euo pipefail
build="$1"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
actual="$(cd "$scratch/prefix" && find . -type f | sort)"
expected="$(printf '%s\n' \
    ./bin/tallyfen \
    ./share/applications/com.harrowmere.Tallyfen.desktop \
    ./share/icons/hicolor/128x128/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/16x16/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/24x24/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/256x256/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/32x32/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/48x48/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/512x512/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/64x64/apps/com.harrowmere.Tallyfen.png \
    ./share/icons/hicolor/scalable/apps/com.harrowmere.Tallyfen.svg \
    ./share/metainfo/com.harrowmere.Tallyfen.metainfo.xml | sort)"
if [[ "$actual" != "$expected" ]]; then
    echo "installed files differ:"
    diff <(echo "$expected") <(echo "$actual") || true
    exit 1
fi

desktop-file-validate "$scratch/prefix/share/applications/com.harrowmere.Tallyfen.desktop"
appstreamcli validate --no-net "$scratch/prefix/share/metainfo/com.harrowmere.Tallyfen.metainfo.xml"

(cd "$build" && cpack -G DEB -B "$scratch/package" >/dev/null)
deb="$(ls "$scratch"/package/*.deb)"
depends="$(dpkg-deb -f "$deb" Depends)"
echo "Depends: $depends"
if grep -q -- '-dev' <<<"$depends"; then
    echo "the package depends on a development package"
    exit 1
fi
for needed in libqt6widgets6 libqt6sql6-sqlite libsecret-1-0; do
    grep -q "$needed" <<<"$depends" || { echo "missing dependency $needed"; exit 1; }
done
contents="$(dpkg-deb -c "$deb")"
grep -q './usr/bin/tallyfen$' <<<"$contents" || { echo "the package has no binary"; exit 1; }
grep -q 'share/applications/com.harrowmere.Tallyfen.desktop' <<<"$contents" || { echo "no launcher entry"; exit 1; }
echo "install and package checked"
