#!/usr/bin/env bash
# Builds the Debian package, installs it into a fresh minimal Debian 12 made with
# debootstrap, and starts Tallyfen there headless for a few seconds. Needs root and
# Debian's mirror; takes a few minutes, so it is not part of scripts/test.sh.
# Usage: scripts/check-deb-on-clean-debian.sh [work folder]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
work="${1:-$(mktemp -d)}"
build_dir="${TALLYFEN_BUILD_DIR:-$root/build}"
"$root/scripts/build.sh"
command -v debootstrap >/dev/null || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq debootstrap
(cd "$build_dir" && cpack -G DEB -B "$work/package" >/dev/null)
debootstrap --variant=minbase bookworm "$work/root" http://deb.debian.org/debian >/dev/null
cp "$work"/package/*.deb "$work/root/tmp/"
cp /etc/resolv.conf "$work/root/etc/resolv.conf"
mount -t proc proc "$work/root/proc"
mount --bind /dev "$work/root/dev"
trap 'umount "$work/root/proc" "$work/root/dev"' EXIT
chroot "$work/root" bash -c 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq /tmp/tallyfen_*.deb >/dev/null'
# Still running after four seconds (timeout's 124): the window came up on its store.
set +e
chroot "$work/root" bash -c 'mkdir -p -m 700 /tmp/h && HOME=/tmp/h XDG_RUNTIME_DIR=/tmp/h QT_QPA_PLATFORM=offscreen \
    TALLYFEN_STORE_PATH=/tmp/h/t.store timeout 4 tallyfen; status=$?; test $status -eq 124 && test -f /tmp/h/t.store'
status=$?
set -e
if [[ $status -ne 0 ]]; then
    echo "Tallyfen did not start from its package on a clean Debian 12"
    exit 1
fi
echo "the package installs and starts on a clean Debian 12"
