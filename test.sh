#!/usr/bin/env bash
# Builds and runs all tests: the tests that two threads meet in under the thread sanitizer, then everything under the
# address and undefined-behaviour sanitizers, then everything in release.
set -eu

cd "$(dirname "$0")"
tools/install-packages.sh g++ cmake ninja-build libcli11-dev libgtest-dev libgmock-dev

run_tests() {  # PRESET [CTEST-OPTION]...
    local preset=$1
    shift
    tools/build.sh "$preset" all -DKALDRA_TESTS=ON
    echo "== $preset"
    ctest --preset "$preset" --parallel 2 --progress "$@"
}

run_tests tsan --label-regex threads
run_tests asan
run_tests release
