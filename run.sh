#!/usr/bin/env bash
# Builds KALDRA SOLVE and runs one problem: ./run.sh [OPTION]... [FILE.kdr]
# Without a file it runs the example of the road embankment. Options are those of kaldra-run.
#
#     ./run.sh --desktop [FILE.kdr]     builds and starts the desktop program
set -eu

here=$(cd "$(dirname "$0")" && pwd)

if [ "${1-}" = --desktop ]; then
    shift
    "$here/tools/install-packages.sh" g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libxlsxwriter-dev \
        pkg-config libcairo2-dev qt6-base-dev libqt6svg6 fonts-dejavu-core
    "$here/tools/build.sh" release kaldra-solve -DKALDRA_DESKTOP=ON
    exec "$here/build/release/bin/kaldra-solve" "$@"
fi

"$here/tools/install-packages.sh" g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libxlsxwriter-dev \
    pkg-config libcairo2-dev
"$here/tools/build.sh" release kaldra-run

[ $# -gt 0 ] || set -- "$here/examples/road-embankment/road-embankment.kdr"
file=${!#}
stamp=$(mktemp)
trap 'rm -f "$stamp"' EXIT

status=0
"$here/build/release/bin/kaldra-run" "$@" || status=$?

if [ -f "$file" ]; then
    folder=$(cd "$(dirname -- "$file")" && pwd)
    stem=$(basename -- "$file")
    stem=${stem%.*}
    echo
    echo "Files written in $folder:"
    find "$folder" -maxdepth 1 -type f -newer "$stamp" -printf '%f\n' | sort |
        awk -v stem="$stem." '
            index($0, stem) != 1 { next }
            length(line) + length($0) > 100 { print line; line = "" }
            { line = line "  " $0 }
            END { if (line != "") print line }'
fi
exit $status
