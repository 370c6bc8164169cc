#!/usr/bin/env bash
# Builds and runs all tests: those in which two threads meet under the thread sanitizer, then the engine under the
# address and undefined-behaviour sanitizers, then everything with the desktop program in release.
set -eu

cd "$(dirname "$0")"
tools/install-packages.sh g++ cmake ninja-build libcli11-dev pkg-config libcairo2-dev libgtest-dev libgmock-dev \
    qt6-base-dev libqt6svg6 fonts-dejavu-core xvfb xauth xdotool dbus imagemagick

# The windows need a place of their own and a text encoding, which a bare machine does not set.
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR LC_ALL=C.UTF-8
trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT

run_tests() {  # PRESET TARGET [CTEST-OPTION]...
    local preset=$1 target=$2 desktop=OFF
    shift 2
    [ "$preset" = release ] && desktop=ON
    tools/build.sh "$preset" "$target" -DKALDRA_TESTS=ON -DKALDRA_DESKTOP=$desktop
    echo "== $preset"
    ctest --preset "$preset" --parallel 2 "$@"
}

run_tests tsan kaldra_thread_tests --label-regex threads
run_tests asan all
run_tests release all
