#!/usr/bin/env bash
# Builds the fuzz targets and runs each for so many seconds: fuzz/run.sh SECONDS [TARGET...]
#
# Each target first replays its corpus, fuzz/corpus/TARGET, and what earlier runs have added in build/fuzz/corpus/TARGET;
# what it finds anew goes there. With 0 seconds it replays only. An input that breaks something is left as
# build/fuzz/findings/TARGET-*; run build/fuzz/bin/fuzz_TARGET on it, and mend the cause with a test.
#
#     KALDRA_FUZZ_SEED=n fuzz/run.sh ...      chooses the random numbers (0, the default: each time others)
set -eu

cd "$(dirname "$0")/.."
seconds=${1:?usage: fuzz/run.sh SECONDS [TARGET...]}
shift
[ $# -gt 0 ] || set -- data_file check initial_conditions material_properties convergence_file time_sequence

tools/install-packages.sh engine clang libclang-rt-14-dev
tools/build.sh fuzz fuzz_targets

findings=$PWD/build/fuzz/findings
mkdir -p "$findings"
TMPDIR=$(mktemp -d --tmpdir="$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# Sums up what the end of a run tells; all of it is shown when the run broke.
fuzz() {  # TARGET
    local target=$1 corpus=fuzz/corpus/$1 status=0
    [ "$target" = check ] && corpus=fuzz/corpus/data_file
    local found=build/fuzz/corpus/$target log=build/fuzz/$target.log
    mkdir -p "$found"
    local time=(-max_total_time="$seconds")
    [ "$seconds" -eq 0 ] && time=(-runs=0)
    "build/fuzz/bin/fuzz_$target" -dict=fuzz/keywords.dict -seed="${KALDRA_FUZZ_SEED:-0}" -max_len=8192 \
        -timeout=60 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$findings/$target-" "${time[@]}" \
        "$found" "$corpus" >"$log" 2>&1 || status=$?
    if [ $status -ne 0 ]; then
        grep -v '^#' "$log" | tail -n 60
        echo "fuzz $target: a finding, see $log" >&2
        return 1
    fi
    awk -v target="$target" '
        /^#/ { for (i = 1; i < NF; i++) { if ($i == "cov:") edges = $(i + 1); if ($i == "ft:") features = $(i + 1) } }
        /number_of_executed_units/ { runs = $2 }
        /peak_rss/ { memory = $2 }
        END { printf "fuzz %s: %d executions, %d edges, %d features, %d MB\n", target, runs, edges, features, memory }' "$log"
}

failed=0
for target in "$@"; do fuzz "$target" || failed=1; done
exit $failed
