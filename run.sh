#!/usr/bin/env bash
# Builds KALDRA SOLVE and runs one problem: ./run.sh [OPTION]... [FILE.kdr]
# Without a file it runs the example of the road embankment. Options are those of kaldra-run.
#
#     ./run.sh --desktop [FILE.kdr]     builds and starts the desktop program
#     ./run.sh --view [FILE.kdr]        the same for the viewer of results
set -eu

here=$(cd "$(dirname "$0")" && pwd)

if [ "${1-}" = --desktop ] || [ "${1-}" = --view ]; then
    program=kaldra-solve
    [ "$1" = --desktop ] || program=kaldra-view
    shift
    "$here/tools/install-packages.sh" engine desktop
    "$here/tools/build.sh" release "$program" -DKALDRA_DESKTOP=ON
    exec "$here/build/release/bin/$program" "$@"
fi

"$here/tools/install-packages.sh" engine
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
