#!/usr/bin/env bash
# The program itself on a virtual screen, by the keyboard alone: program_test.sh PROGRAM CASE
set -eu

program=$1
work=$(mktemp -d)
solve=''
trap 'kill $solve 2>/dev/null || true; rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work
unset DBUS_SESSION_BUS_ADDRESS

fail() { echo "$*" >&2; exit 1; }

start() {  # [ARGUMENT]...
    (cd "$work/given folder" && exec "$program" "$@") &
    solve=$!
}

# Waits for a window with exactly this title and gives it the keyboard.
focus() {  # TITLE
    local window
    for _ in $(seq 200); do
        for window in $(xdotool search --onlyvisible --name '.*' 2>/dev/null); do
            [ "$(xdotool getwindowname "$window")" = "$1" ] || continue
            xdotool windowfocus --sync "$window"
            return
        done
        sleep 0.05
    done
    fail "no window with the title $1"
}

leave() {  # by the menu; the program ends by itself
    xdotool key --delay 100 alt+f x
    for _ in $(seq 100); do kill -0 "$solve" 2>/dev/null || break; sleep 0.05; done
    kill -0 "$solve" 2>/dev/null && fail "the program goes on after Exit"
    wait "$solve" || fail "Exit ends with $?"
}

example=$(cd "$(dirname "$0")/../.." && pwd)/examples/heated-slab/heated-slab.kdr
mkdir "$work/given folder"

case $2 in
    takes_any_path)
        name='blanks  and "quotes" it'"'"'s.kdr'
        quoted='"at both ends".kdr"'
        cp "$example" "$work/given folder/$name"
        cp "$example" "$work/given folder/$quoted"
        cp "$example" "$work/given folder/plain name.kdr"
        for arguments in "$work/given folder/$name" "$name" "\"$name\"" "\"$work/given folder/$name\""; do
            start "$arguments"
            focus "KALDRA SOLVE - $name"
            leave
        done
        start "$quoted"
        focus "KALDRA SOLVE - $quoted"
        leave
        start plain name.kdr  # all behind the program's name is one name
        focus "KALDRA SOLVE - plain name.kdr"
        leave
        ;;
    forgets_a_missing_file)
        start "$work/no such file.kdr"
        focus "KALDRA SOLVE - (untitled)"
        sleep 0.5
        focus "KALDRA SOLVE - (untitled)"
        leave
        ;;
    runs_by_keyboard)
        cp "$example" "$work/given folder/slab.kdr"
        start slab.kdr
        focus "KALDRA SOLVE - slab.kdr"
        xdotool key alt+t
        for _ in $(seq 200); do [ -e "$work/given folder/slab.t00" ] && break; sleep 0.05; done
        sleep 0.5
        [ ! -e "$work/given folder/slab.lkp" ] || fail "the run has not ended"
        xdotool key alt+g
        focus "Convergence - slab.kdr"
        xdotool key F1
        focus "KALDRA SOLVE Help"
        focus "KALDRA SOLVE - slab.kdr"
        leave
        ;;
    *) fail "no case $2" ;;
esac
