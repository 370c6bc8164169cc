#!/usr/bin/env bash
# Builds kaldra-run with g++ and clang++ at -O0 and -O3, runs all examples with either solver, and compares all files
# that the runs leave byte by byte with those of g++ -O3: tools/same_bytes.sh [FOLDER]. Builds and results stay in
# FOLDER, build/same-bytes if none is given. It takes some minutes, so it is no part of test.sh.
set -eu

cd "$(dirname "$0")/.."
tools/install-packages.sh engine clang
folder=${1:-build/same-bytes}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)

build() {  # NAME COMPILER LEVEL
    local log=$folder/$1.log
    if ! { cmake -S . -B "$folder/$1" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$2" \
               -DCMAKE_CXX_FLAGS_RELEASE="$3 -DNDEBUG" -DKALDRA_TESTS=OFF -DKALDRA_BENCH=OFF -DKALDRA_DESKTOP=OFF &&
           cmake --build "$folder/$1" --target kaldra-run; } >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
    fi
}

run_examples() {  # NAME
    local data solver results
    for solver in skyline sparse; do
        results=$folder/$1-results/$solver
        rm -rf "$results"
        mkdir -p "$results"
        cp examples/*/*.kdr "$results"
        for data in "$results"/*.kdr; do
            if ! "$folder/$1/bin/kaldra-run" --quiet --solver $solver "$data" >"$folder/$1.log" 2>&1; then
                cat "$folder/$1.log" >&2
                echo "kaldra-run of $1 fails on $data" >&2
                exit 1
            fi
        done
        rm -f "$results"/*.run.json  # they tell when and how the run was made
    done
}

reference=g++-O3
different=0
for name in g++-O3 g++-O0 clang++-O3 clang++-O0; do
    build "$name" "${name%-*}" "-${name##*-}"
    begin=$SECONDS
    run_examples "$name"
    files=$(find "$folder/$name-results" -type f | wc -l)
    differing=$(diff -rq "$folder/$reference-results" "$folder/$name-results" | tee "$folder/$name.differences" | wc -l)
    echo "$name: $files files in $((SECONDS - begin)) s, $differing of them differ from $reference"
    if [ "$differing" -gt 0 ]; then
        head -n 10 "$folder/$name.differences"
        different=1
    fi
done
exit $different
