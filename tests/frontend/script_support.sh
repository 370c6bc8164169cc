# What the test scripts of the programs share: a folder of their own to work in, checks that count failures, and a problem.
# Each sets `program`, sources this file, defines one procedure per case, runs one of them and exits with `verdict`.
set -u
examples=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../examples" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

failures=0
fail() { echo "FAILED: $*"; failures=$((failures + 1)); }
verdict() { exit $((failures > 0)); }

# run STATUS [ARGUMENT]... of the program leaves its output in the files out and err.
run() {
    local wanted=$1 status=0
    shift
    "$program" "$@" >out 2>err </dev/null || status=$?
    [ "$status" = "$wanted" ] || fail "$*: exit $status instead of $wanted; $(cat err)"
}
is() { [ "$(cat "$1")" = "$2" ] || fail "$1 is: $(cat -A "$1")"; }
has() { grep -qF -- "$2" "$1" || fail "$1 lacks '$2': $(cat "$1")"; }
# tells STATUS TEXT [ARGUMENT]... is a run that has this among its errors and warnings.
tells() {
    run "$1" "${@:3}"
    has err "$2"
}
there() { local name; for name in "$@"; do [ -e "$name" ] || fail "no $name"; done; }
gone() { local name; for name in "$@"; do [ ! -e "$name" ] || fail "$name is there"; done; }

# A column of two squares with MAXITERATIONS TOLERANCE, -1 degree at its bottom and 9 at its top.
problem() {
    printf '%s\n' FILEINFO "KALDRA 4.0" TITLE one two three four ANALYSIS "${kind:-1} 1 0 1 0" CONVERGE "$1 $2 0" \
        "TIME 0" "MATERIAL 1" "1 1 0 1 1 0" "KFUNCTION 1" "1 4 ${smoothing:-0} 0" conductivity "0 2" "1 2" "2 2" "3 2" \
        "SFUNCTION 0" "MFUNCTION 0" "BFUNCTION 0" "NODE 6" "1 0 0 -1 1 0 0 0 0" "2 1 0 -1 1 0 0 0 0" \
        "3 0 1 0 0 0 0 0 0" "4 1 1 0 0 0 0 0 0" "5 0 2 9 1 0 0 0 0" "6 1 2 9 1 0 0 0 0" \
        "ELEMENT 2" "1 4 3 1 2 0 0 0 0 1 4 1" "2 6 5 3 4 0 0 0 0 1 4 1" "POLE 0" "FLUX 0" "qBOUNDARY 0"
}
