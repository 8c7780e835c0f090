#!/usr/bin/env bash
# Installs what building, running and testing Tallyfen needs on Debian 12, and only
# what is missing: a second run checks and changes nothing.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config clang-format
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6sql6-sqlite qt6-httpserver-dev
    qcoro-qt6-dev libsecret-1-dev libsqlite3-dev libicu-dev libsimdjson-dev libbenchmark-dev libgl-dev
    dbus dbus-x11 gnome-keyring locales fonts-dejavu-core python3
    desktop-file-utils appstream dpkg-dev file
)

if [[ "$(uname -s)" == "Darwin" ]]; then
    echo "bootstrap: on macOS install Qt 6, QCoro, ICU, simdjson and google-benchmark with Homebrew (see README.md)." >&2
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "installed" ]] || missing+=("$package")
done

if ((${#missing[@]} > 0)); then
    echo "bootstrap: installing ${missing[*]}"
    sudo_cmd=()
    [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Tests and the app run with LANG=en_US.UTF-8; make sure the C library knows it.
if ! locale -a 2>/dev/null | grep -qi '^en_US\.utf-\?8$'; then
    echo "bootstrap: generating the en_US.UTF-8 locale"
    sudo_cmd=()
    [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" sed -i 's/^# *en_US.UTF-8 UTF-8/en_US.UTF-8 UTF-8/' /etc/locale.gen
    "${sudo_cmd[@]}" locale-gen >/dev/null
fi
