#!/usr/bin/env bash
# Looks for mistakes in the engine and the console program without running them: tools/analyse.sh [--deep] [FILE...]
#
# clang-tidy takes its checks from .clang-tidy, cppcheck those below; a finding of either fails. --deep adds the
# analyzer of clang, which takes some minutes. With FILEs clang-tidy looks at these sources only.
set -eu

cd "$(dirname "$0")/.."
tools/install-packages.sh engine clang clang-tidy cppcheck

deep=()
if [ "${1-}" = --deep ]; then
    deep=(--checks=clang-analyzer-core.*,clang-analyzer-cplusplus.*,clang-analyzer-deadcode.*,clang-analyzer-unix.*)
    shift
fi
if [ $# -eq 0 ]; then
    mapfile -t sources < <(find src -name '*.cpp' -not -path '*/desktop/*' -printf '%s %p\n' | sort -rn | cut -d' ' -f2)
    set -- "${sources[@]}"
fi

mkdir -p build/analysis/cppcheck
{ cmake --preset analysis && cmake --build build/analysis --target build_commit; } >build/analysis.log || { cat build/analysis.log >&2; exit 1; }

failed=0
printf '%s\0' "$@" | xargs -0 -P "$(nproc)" -n 1 clang-tidy -p build/analysis --quiet "${deep[@]}" \
    >build/analysis/clang-tidy.log 2>&1 || failed=1
[ $failed -eq 0 ] || grep -v ' warnings\? generated' build/analysis/clang-tidy.log >&2

# Suppressed, where cppcheck misreads sound code:
#   missingIncludeSystem  it does not need the headers of the system
#   containerOutOfBounds  it takes an array of 2 * slotCount for one of two; the tests under the sanitizers would see it
#   uninitvar             in the bodies of the kernels, whose arrays are filled in loops as long as a template says
#   syntaxError           it does not parse a lambda that makes a constant
cppcheck --project=build/analysis/compile_commands.json --cppcheck-build-dir=build/analysis/cppcheck -j "$(nproc)" \
    --std=c++20 --enable=warning,performance,portability --inline-suppr --error-exitcode=1 --quiet \
    --suppress=missingIncludeSystem --suppress=containerOutOfBounds --suppress=uninitvar:*_body.h \
    --suppress=syntaxError:src/platform/decimal.cpp || failed=1
exit $failed
