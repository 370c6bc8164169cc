#!/usr/bin/env bash
# Configures and builds one preset, quietly: build.sh PRESET TARGET [CMAKE-OPTION]...
# The compiler's output is shown only when the build fails.
set -eu

preset=$1
target=$2
shift 2
cd "$(dirname "$0")/.."
log=build/$preset.log
mkdir -p build
if { cmake --preset "$preset" "$@" && cmake --build --preset "$preset" --target "$target"; } >"$log" 2>&1; then
    exit 0
fi
cat "$log" >&2
exit 1
