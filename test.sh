#!/usr/bin/env bash
# Builds and runs all tests: those in which two threads meet under the thread sanitizer; the engine's under the address
# and undefined-behaviour sanitizers; seconds of fuzzing; the analysis of the source text; then in release the engine's in
# an order of chance, and at last everything, with the desktop programs.
set -eu

cd "$(dirname "$0")"
tools/install-packages.sh engine desktop libgtest-dev libgmock-dev python3-meshio xvfb xauth xdotool dbus imagemagick \
    clang libclang-rt-14-dev clang-tidy cppcheck

# The windows need a place of their own and a text encoding, which a bare machine does not set.
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR LC_ALL=C.UTF-8
trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT

build() {  # PRESET TARGET
    local desktop=OFF
    [ "$1" = release ] && desktop=ON
    tools/build.sh "$1" "$2" -DKALDRA_TESTS=ON -DKALDRA_DESKTOP=$desktop
}

run_tests() {  # PRESET [CTEST-OPTION]...
    local preset=$1
    shift
    echo "== $preset"
    ctest --preset "$preset" --parallel 2 "$@"
}

# ctest gives every test a process of its own; here they share one, so that what one leaves behind meets another.
run_shuffled() {  # PROGRAM...
    local program seed=${KALDRA_TEST_SEED:-$((RANDOM % 99999 + 1))}
    for program in "$@"; do
        echo "== $program in the order of KALDRA_TEST_SEED=$seed"
        timeout 600 "build/release/bin/$program" --gtest_shuffle --gtest_random_seed="$seed" --gtest_brief=1
    done
}

build tsan kaldra_thread_tests
run_tests tsan --label-regex threads
build asan all
run_tests asan
echo "== fuzzing"
timeout 900 fuzz/run.sh 2
echo "== analysis"
timeout 900 tools/analyse.sh
build release all
run_shuffled kaldra_tests kaldra_thread_tests
run_tests release
