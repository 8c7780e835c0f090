#!/usr/bin/env bash
# Runs inside the private D-Bus session that scripts/test.sh opens. Everything the
# tests could write goes to a temporary home that is removed afterwards.
set -euo pipefail
build_dir="$1"
shift

sandbox="$(mktemp -d -t tallyfen-tests.XXXXXX)"
cleanup() {
    rm -rf "$sandbox"
}
trap cleanup EXIT

export HOME="$sandbox/home"
export XDG_CONFIG_HOME="$sandbox/config"
export XDG_DATA_HOME="$sandbox/data"
export XDG_CACHE_HOME="$sandbox/cache"
export XDG_RUNTIME_DIR="$sandbox/runtime"
export TMPDIR="$sandbox/tmp"
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR" "$TMPDIR"
chmod 700 "$XDG_RUNTIME_DIR"

export QT_QPA_PLATFORM=offscreen
export LANG=en_US.UTF-8
export LC_ALL=en_US.UTF-8
export TZ=Europe/Berlin
unset TALLYFEN_STORE_PATH

# A throw-away keyring serving the Secret Service. Given a password on standard input the
# daemon creates the "login" collection, unlocked, and makes it the default one; it quits
# by itself when this private bus goes away.
if command -v gnome-keyring-daemon >/dev/null 2>&1; then
    eval "$(printf 'tallyfen-tests' | gnome-keyring-daemon --unlock --components=secrets --daemonize)"
    export GNOME_KEYRING_CONTROL
fi

cd "$build_dir"
ctest --output-on-failure --timeout 300 "$@"
