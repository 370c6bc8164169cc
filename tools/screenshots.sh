#!/usr/bin/env bash
# Takes pictures of the desktop programs' windows on a virtual screen: screenshots.sh [PROGRAM]
# All go to build/pictures, once plain and once as on a high-density screen; those that the README and the help show go
# to docs. PROGRAM is build/release/bin/kaldra-solve unless given, with the others beside it; nothing is built here.
set -eu

here=$(cd "$(dirname "$0")/.." && pwd)
program=$(realpath "${1:-$here/build/release/bin/kaldra-solve}")
"$here/tools/install-packages.sh" xvfb xdotool imagemagick fonts-dejavu-core

work=$(mktemp -d)
server='' solve=''
trap 'kill $solve $server 2>/dev/null; wait; rm -rf "$work"' EXIT
chmod 700 "$work"
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_SCALE_FACTOR
export DISPLAY='' QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work LC_ALL=C.UTF-8

start_screen() {  # WIDTHxHEIGHT
    [ -z "$server" ] || { kill "$server"; wait "$server" || true; }
    : >"$work/display"
    Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp -noreset 3>"$work/display" 2>/dev/null &
    server=$!
    for _ in $(seq 100); do
        DISPLAY=:$(cat "$work/display")
        xdotool getdisplaygeometry >/dev/null 2>&1 && return
        sleep 0.1
    done
    echo "No virtual screen" >&2
    exit 1
}

start_program() {  # [FILE]
    cd "$work"
    "$program" "$@" &
    solve=$!
    cd "$here"
    focus "KALDRA SOLVE - "
}

start_view() {  # [FILE]
    cd "$work"
    "$(dirname "$program")/kaldra-view" "$@" &
    solve=$!
    cd "$here"
    focus "KALDRA VIEW"
    sleep 3  # until all steps are read
}

drag() {  # X1 Y1 X2 Y2, of the window in focus
    xdotool mousemove --window "$window" "$1" "$2" mousedown 1
    xdotool mousemove --window "$window" $((($1 + $3) / 2)) $((($2 + $4) / 2))
    xdotool mousemove --window "$window" "$3" "$4" mouseup 1
    sleep 0.5
}

take_view_pictures() {  # behind the run of the road embankment
    local scale=${QT_SCALE_FACTOR:-1}
    start_view
    picture view-no-file
    end_program
    start_view "$work/road-embankment.kdr"
    for _ in $(seq 4); do keys Left; done  # the end of the third summer
    keys alt+v l
    xdotool mousemove --window "$window" $((300 * scale)) $((250 * scale))
    sleep 0.5
    picture view
    keys alt+t s
    drag $((400 * scale)) $((150 * scale)) $((400 * scale)) $((550 * scale))
    focus "From "
    picture view-section-line
    keys ctrl+w
    focus "KALDRA VIEW"
    keys alt+t t
    xdotool mousemove --window "$window" $((200 * scale)) $((300 * scale)) click 1
    focus "Depth of thaw"
    focus "Temperatures at"
    picture view-trumpet
    keys ctrl+w
    focus "Depth of thaw"
    picture view-depth-of-thaw
    keys ctrl+w
    focus "KALDRA VIEW"
    keys alt+v m
    picture view-materials
    end_program
}

end_program() {
    kill "$solve"
    wait "$solve" 2>/dev/null || true
    solve=''
}

# There is no window manager: a window has the keyboard only when it is given it. Sets `window`.
focus() {  # START-OF-TITLE
    for _ in $(seq 100); do
        window=$(xdotool search --onlyvisible --name "^$1" 2>/dev/null | tail -n 1)
        [ -n "$window" ] && xdotool windowfocus --sync "$window" && sleep 0.4 && return
        sleep 0.1
    done
    echo "No window named $1" >&2
    exit 1
}

keys() { for key in "$@"; do xdotool key "$key"; sleep 0.3; done; }

picture() {  # NAME: of the window in focus
    import -window "$window" "$pictures/$1.png"
}

screen_picture() {  # NAME: of everything on the screen, cut to what is there
    import -window root -trim "$pictures/$1.png"
}

example() {  # NAME: a copy of its data file
    cp "$here/examples/$1/$1.kdr" "$work/"
    echo "$work/$1.kdr"
}

wait_for_run() {
    for _ in $(seq 300); do [ -e "$1" ] || break; sleep 0.1; done
    sleep 0.6
}

take_pictures() {
    mkdir -p "$pictures"
    start_program
    picture main-no-file
    keys alt+h a
    focus "About"
    picture about
    keys alt+s
    focus "System Information"
    picture system-information
    end_program

    local road
    road=$(example road-embankment)
    start_program "$road"
    picture main-ready
    keys alt+f
    screen_picture menu-file
    keys Escape Escape alt+f o
    focus "Open"
    picture open-data-file
    keys Escape
    focus "KALDRA SOLVE - "
    xdotool key alt+t
    sleep 0.5
    kill -STOP "$solve"  # holds the run for its picture
    picture main-running
    kill -CONT "$solve"
    wait_for_run "$work/road-embankment.lkp"
    keys alt+g
    focus "Convergence - "
    picture graph
    keys alt+s o
    focus "Graph Options"
    picture graph-options
    keys alt+f
    focus "Select Font"
    picture font
    keys Escape
    focus "Graph Options"
    keys Escape
    focus "Convergence - "
    keys alt+f p
    focus "Print"
    picture print
    keys Escape
    focus "Convergence - "
    keys alt+f c
    focus "KALDRA SOLVE - "
    picture main-done
    keys alt+s s
    focus "Start Time"
    picture start-time
    keys Down space
    screen_picture start-time-list
    keys Escape Escape
    focus "KALDRA SOLVE - "
    keys alt+f i
    focus "Open Initial Conditions"
    picture initial-conditions
    keys Escape
    end_program

    # Its first element is turned inside out.
    sed -i '/^ELEMENT/,+1 s/ 23    24    55/ 55    24    23/' "$(example heated-slab)"
    start_program "$work/heated-slab.kdr"
    keys alt+t
    focus "Error"
    picture message
    screen_picture main-failed
    end_program

    start_program
    keys F1
    focus "KALDRA SOLVE Help"
    picture help
    end_program
}

shrink() {  # FROM TO
    convert "$1" -strip +dither -colors 128 -define png:compression-level=9 "$2"
}

pictures=$here/build/pictures/1366x768
start_screen 1366x768
take_pictures
take_view_pictures
mkdir -p "$here/docs/pictures"
for name in main-running graph view; do shrink "$pictures/$name.png" "$here/docs/pictures/$name.png"; done
step=140  # the end of the third summer
for target in pictures/ground:820x460 help/ground:620x380; do
    "$(dirname "$program")/kaldra-export" "$work/road-embankment.kdr" --picture temperature --step $step --scale step \
        --layers isotherm,mesh,sections,arrows --size "${target#*:}" >/dev/null
    shrink "$work/road-embankment.temperature.$step.png" "$here/docs/${target%:*}.png"
done

pictures=$here/build/pictures/high-density
export QT_SCALE_FACTOR=2
start_screen 2732x1536
take_pictures
take_view_pictures
