#!/usr/bin/env bash
# Runs a command on a virtual screen of its own: on_virtual_screen.sh COMMAND [ARGUMENT]...
#
# A screen that cannot be reached says nothing about the command, so two more are tried then. Every other failure stands.
# -noreset: a server that starts afresh when its last window goes may refuse the program that comes next.
set -u

log=$(mktemp)
trap 'rm -f "$log"' EXIT
for _ in 1 2 3; do
    xvfb-run -a -s "-screen 0 1366x768x24 -noreset" "$@" 2>&1 | tee "$log"
    status=${PIPESTATUS[0]}
    [ "$status" -ne 0 ] && grep -q 'could not connect to display' "$log" || exit "$status"
done
exit "$status"
