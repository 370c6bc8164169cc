#!/usr/bin/env bash
# Runs kaldra-run as a user does and looks at exit status, output and files.
#
#     console_test.sh PROGRAM CASE
program=$1
source "$(dirname "$0")/../script_support.sh"

# record EXPRESSION...: each is true of a.run.json, as r.
record() {
    local expression
    for expression in "$@"; do
        python3 -c 'import json, sys; r = json.load(open("a.run.json")); sys.exit(not eval(sys.argv[1]))' "$expression" ||
            fail "a.run.json: not $expression: $(head -c 2000 a.run.json)"
    done
}

readonly good=$'Solving...\n    0\t1\t1.500000E+001\n    0\t2\t1.500000E+001\t0.0000E+000\nDone.'

finishes() {
    problem 9 0.01 >a.kdr
    run 0 a.kdr
    closing=$(tail -n 1 out)
    sed -i '$d' out
    is out "$good"
    [[ $closing =~ ^Solved\ by\ the\ skyline\ solver\ on\ .*\ in\ .*\ s\.$ ]] || fail "closing line: $closing"
    is err ""
    there a.cnp a.t00
    gone a.lkp
    run 0 --quiet "$PWD/a.kdr"
    is out ""
    cp a.t00 skyline.t00
    run 0 --solver sparse --threads 1 a.kdr
    [[ $(tail -n 1 out) == "Solved by the sparse solver on 1 thread in "* ]] || fail "closing line: $(tail -n 1 out)"
    cmp a.t00 skyline.t00 || fail "the solvers differ"
}

fails() {
    run 1 none.kdr
    is err "error 1020: Cannot open Data file."
    is out ""
    mkdir folder.kdr plain.d
    run 1 folder.kdr
    is err "error 1020: Cannot open Data file."
    problem 9 0.01 >plain.d/plain
    run 1 plain.d/plain
    is err "error 1074: Invalid Data File Name."
    [ "$(ls plain.d)" = plain ] || fail "files beside plain"
    kind=7 problem 9 0.01 >kind.kdr
    run 1 kind.kdr
    is err "kaldra-run: analysis type 7 is neither 1 (steady state) nor 2 (transient)"
}

knows_its_options() {
    run 0 --help
    for option in FILE.kdr --quiet --strict --version; do has out "$option"; done
    run 0 --version
    has out "kaldra-run "
    is err ""
    problem 9 0.01 >a.kdr
    for arguments in "" "--nonsense a.kdr" "a.kdr b.kdr" "--solver best a.kdr" "--threads 0 a.kdr" "--export xlsx a.kdr" \
        "--check --start-step 2 a.kdr" "--check --balance a.kdr"; do
        tells 2 "kaldra-run: " $arguments
        is out ""
    done
    gone a.cnp
}

takes_any_path() {
    local name
    for name in 'with blank.kdr' 'é.x/ü.y.kdr' 'a*b?[c].kdr' '-dash.kdr' 'back\slash.kdr'; do
        mkdir -p -- "$(dirname -- "$name")"
        problem 9 0.01 >"./$name"
        run 0 -- "$name"
        there "./${name%.kdr}.t00" "./${name%.kdr}.cnp"
        gone "./${name%.kdr}.lkp"
    done
    : >axbyc.cnp # would fit the pattern
    there 'a*b?[c].cnp'
}

refuses_a_long_path() {
    local folder name
    folder=$PWD/$(printf 'd%.0s' {1..150})
    mkdir "$folder"
    name=$(printf 'n%.0s' $(seq $((260 - ${#folder} - 5))))
    problem 9 0.01 | tee "$folder/$name.kdr" >"$folder/${name}x.kdr"
    run 0 "$folder/$name.kdr" # 260 characters
    tells 1 "kaldra-run: the path has 261 characters, 260 is the most" "$folder/${name}x.kdr"
    gone "$folder/${name}x.cnp" "$folder/$name.cnx"
}

warns_and_is_strict() {
    problem 1 0.01 >a.kdr
    tells 0 "warning: $PWD/a.kdr:11: the iteration ended at maxIterations (1) without converging: raise maxIterations" a.kdr
    there a.t00
    run 4 --strict a.kdr
    record "r['exit']['status'] == 4" "r['steps'][0]['converged'] is False" "'without converging' in r['warnings'][0]"
    problem 9 0.01 >b.kdr
    run 0 --strict b.kdr
    smoothing=-1 problem 9 0.01 >c.kdr
    tells 0 "error 1117: " c.kdr # a smoothing that failed is a message, and no failure
    run 4 --strict c.kdr
}

checks_without_a_run() {
    problem 9 0.01 >a.kdr
    run 0 --check a.kdr
    is out "a.kdr: an analysis can start: 0 errors, 0 warnings"
    is err ""
    problem 1 0.01 | sed 's/^2 1 0 -1 1/2 1 0 -1 2/; s/^2 6 5.*/2 6 5 3/; s/^POLE.*/POLES/' >bad.kdr
    run 3 --check -q bad.kdr
    is out "bad.kdr:11: warning: maxIterations is 1, and 2 is the least in which anything can converge
bad.kdr:34: error: field 5 of this row of ELEMENT is missing, or no number that can be taken: 2 6 5 3
bad.kdr:35: error: field 1 of this row of POLE is missing, or no number that can be taken: POLES"
    run 3 --check none.kdr
    [ "$(ls)" = "$(printf '%s\n' a.kdr bad.kdr err out)" ] || fail "a check leaves files: $(ls)"
}

skip() { echo "SKIPPED: $*"; }

# The problem with COUNT flux sections: 20 are more than one block of the flux file.
many_sections() {
    for ((n = 1; n <= $1; ++n)); do printf '%s\n' "$n 1" "1 -1 0.5 2 0.5"; done >sections
    problem 9 0.01 | sed "s/^FLUX 0/FLUX $1/; /^FLUX/r sections"
}

# A run whose files are not whole says so by its exit status, whichever file it is and whatever the engine makes of it.
tells_of_broken_files() {
    local file
    many_sections 20 >a.kdr
    for file in j00 cnp t00 g00 r00; do
        ln -sf /dev/full "a.$file"
        tells 1 "error 1192: Cannot write to disk." a.kdr
        has err "warning: $PWD/a.$file was not written whole and must not be used"
        rm "a.$file"
    done
    run 0 --strict a.kdr
    rm a.t00
    mkdir a.t00
    tells 1 "error 1021: " a.kdr
    rmdir a.t00
    "$program" a.kdr >/dev/full 2>err || fail "status lines that nobody takes fail the run"
    is err "warning: some status lines are lost: standard output could not be written"
}

# No file can grow beyond a limit, and as on a full disk some of a text comes out. A run that ends well has left what it
# leaves undisturbed; any other has said why.
# whole_run: the files of one run that nothing disturbs, in whole.
whole_run() {
    many_sections 200 >a.kdr
    run 0 -q a.kdr
    mkdir whole
    mv a.[tgrjc]* whole
    rm whole/a.run.json # tells of each run alone
}

# ended WHAT STATUS FOLDER: a run that ended with STATUS left whole files in FOLDER, or told that it did not.
ended() {
    local file
    if [ "$2" = 0 ]; then
        for file in whole/*; do cmp "$file" "$3/${file#*/}" || fail "$1: ${file#*/} is not whole"; done
        python3 -m json.tool "$3/a.run.json" >/dev/null || fail "$1: a.run.json is not whole"
    else
        grep -Eq "error 1192: |error 10[0-9]{2}: " both || fail "$1: $(cat both)"
    fi
    gone "$3/a.lkp"
}

meets_a_file_size_limit() {
    local ends="" blocks status
    whole_run
    for blocks in 0 1 2 4 8 16 64; do # of 1024 bytes
        (ulimit -f "$blocks" && exec "$program" -q a.kdr 2>&1 </dev/null) | cat >both
        status=${PIPESTATUS[0]}
        ended "files of $blocks KiB" "$status" .
        ends+=$status
        rm -f a.[tgrjc]*
    done
    [[ $ends =~ ^1+0+$ ]] || fail "exits $ends"
}

# on_full_disk FREE: in a name space of its own, where any user may mount a file system; leaves its files in left.
on_full_disk() {
    mount -t tmpfs -o size=512k tmpfs disk || exit 99
    cp a.kdr disk
    head -c $(($(stat -f -c '%a * %S' disk) - $1)) /dev/zero >disk/filler
    "$program" -q disk/a.kdr >both 2>&1 </dev/null
    local status=$?
    rm disk/filler
    cp disk/* left
    exit $status
}

meets_a_full_disk() {
    local ends="" free status
    whole_run
    mkdir disk
    export program
    for free in 0 4096 8192 16384 32768 65536 131072; do
        rm -rf left
        mkdir left
        status=0
        unshare --user --map-root-user --mount bash -c "$(declare -f on_full_disk); on_full_disk $free" 2>err || status=$?
        if [ "$status" = 99 ] || [ ! -e left/a.kdr ]; then
            skip "no file system of one's own can be mounted: $(cat err)"
            return
        fi
        ended "$free bytes left" "$status" left
        ends+=$status
    done
    [[ $ends == 1*0 ]] || fail "exits $ends"
}

# as_somebody NAME TEXT UNTOUCHED: a run by a user whom permissions bind fails with the text.
as_somebody() {
    local status=0 before after
    before=$(cksum "$3")
    "${user[@]}" ./program -q "$1" >both 2>&1 </dev/null || status=$?
    [ "$status" = 1 ] || fail "$1: exit $status: $(cat both)"
    has both "$2"
    after=$(cksum "$3")
    [ "$before" = "$after" ] || fail "$3 was changed"
    gone "${1%.kdr}.lkp"
}

meets_missing_permissions() {
    local user=() pair
    cp "$program" program
    if [ "$(id -u)" = 0 ]; then
        user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
        chmod 777 .
        if ! "${user[@]}" ./program --version >out 2>&1; then
            skip "the superuser is bound by no permission, and cannot become another user: $(cat out)"
            return
        fi
    fi
    many_sections 20 >a.kdr
    mkdir locked
    cp a.kdr locked
    chmod 555 locked
    as_somebody locked/a.kdr "error 1025: Cannot open Convergence file." locked/a.kdr
    has both "a.lkp could not be made"
    ! grep -q "could not be deleted" both || fail "a marker that was never made is missed: $(cat both)"
    chmod 755 locked
    for pair in cnp:1025 t00:1021 g00:1022 j00:1026 r00:1023; do
        echo older >"a.${pair%:*}"
        chmod 444 "a.${pair%:*}"
        as_somebody a.kdr "error ${pair#*:}: " "a.${pair%:*}"
        rm -f a.[tgrjc]*
    done
    chmod 000 a.kdr
    as_somebody a.kdr "error 1020: Cannot open Data file." a.kdr
}

# starts PROBLEM-ARGUMENTS: an endless run in the background, past its first iteration; its id is in $pid.
starts() {
    problem 1000000 0 >a.kdr
    rm -f out err # of the run before
    "$program" a.kdr >out 2>err </dev/null &
    pid=$!
    until grep -qs $'^    0\t2\t' out; do sleep 0.02; done
    there a.lkp
}

# ends_by SIGNAL STATUS: the run in the background ends with the status after the signal.
ends_by() {
    local status=0
    kill "-$1" "$pid"
    wait "$pid" 2>/dev/null || status=$?
    [ "$status" = "$2" ] || fail "exit $status after $1"
}

stops_by_signal() {
    local signal status
    for signal in INT:130 TERM:143; do
        status=${signal#*:}
        starts
        ends_by "${signal%:*}" "$status"
        [ "$(tail -n 1 out)" = "Done." ] || fail "no Done. after $signal"
        has out "Stopping..."
        is err ""
        gone a.lkp a.t00
        record "r['exit']['status'] == $status" "r['exit']['reason'] == 'stopped by signal $((status - 128))'"
    done
}

# Nobody reads what it writes, so it cannot get to its end after the first signal.
ends_by_the_second_signal() {
    local signal before status
    problem 1000000 0 >a.kdr
    mkfifo pipe
    for signal in INT:130 TERM:143; do
        before=-1
        status=0
        exec 3<>pipe
        "$program" a.kdr >pipe 2>err </dev/null &
        pid=$!
        until [ -s a.cnp ] && [ "$(stat -c %s a.cnp)" = "$before" ]; do
            before=$(stat -c %s a.cnp 2>/dev/null)
            sleep 0.5
        done
        kill "-${signal%:*}" "$pid"
        sleep 0.5
        kill -0 "$pid" || fail "the first $signal ended it"
        kill "-${signal%:*}" "$pid"
        for _ in {1..100}; do kill -0 "$pid" 2>/dev/null && sleep 0.1; done
        kill -KILL "$pid" 2>/dev/null && fail "$signal twice does not end it"
        wait "$pid" || status=$?
        exec 3>&-
        [ "$status" = "${signal#*:}" ] || fail "exit $status after $signal twice"
        rm -f a.cnp
    done
}

# kill_and_resume EXAMPLE: kills a run and what resumes it at random moments until one comes through, and compares.
kill_and_resume() {
    local name=$1 begin length round delay status
    mkdir whole work
    cp "$examples/$name/$name.kdr" whole
    cp -p "whole/$name.kdr" work
    begin=$(date +%s%N)
    run 0 --quiet "whole/$name.kdr"
    length=$((($(date +%s%N) - begin) / 1000))
    run 0 --resume "whole/$name.kdr"
    is out "whole/$name.kdr: the results are whole: nothing is left to do"
    for round in 1 2 3 4 5; do
        delay=$((length * (RANDOM % 45 + 5) / 100))
        "$program" --resume --quiet "work/$name.kdr" >out 2>err </dev/null &
        pid=$!
        sleep "$((delay / 1000000)).$(printf %06d $((delay % 1000000)))"
        kill -KILL "$pid" 2>/dev/null
        status=0
        wait "$pid" 2>/dev/null || status=$?
        [ "$status" = 137 ] || [ "$status" = 0 ] || fail "exit $status of a killed run: $(cat err)"
        rm -rf again
        cp -rp work again
    done
    run 0 --resume "work/$name.kdr"
    run 0 --resume "again/$name.kdr"
    rm again/*.run.json # tells of each run alone
    for file in again/*; do cmp "$file" "work/${file#*/}" || fail "two resumed runs differ, killed after $delay us"; done
    for file in "whole/$name".[tgrj][0-9i]*; do
        [ "$(wc -l <"$file")" = "$(wc -l <"work/${file#*/}")" ] || fail "work/${file#*/} is not whole"
    done
    for file in "whole/$name".t[0-9]*; do close_to "$file" "work/${file#*/}"; done
    gone "work/$name.lkp"
}

# The criterion of convergence, 0.1 per cent in these examples, for the difference of two temperature files.
close_to() {
    awk 'FNR > 8 { if (NR == FNR) { t[FNR] = $2; sum += $2 * $2 } else { d = $2 - t[FNR]; error += d * d } }
         END { exit !(sum > 0 && sqrt(error) < 0.001 * (sqrt(sum) + 1)) }' "$1" "$2" || fail "$2 is not close to $1"
}

resumes_a_killed_transient_run() { kill_and_resume road-embankment; }
resumes_a_killed_steady_run() { kill_and_resume heated-slab; }

# The lock of a killed run goes with its process; the marker that it leaves is nobody's business.
runs_once_at_a_time() {
    starts
    tells 1 "error 5001: Another run on this data file is under way." --quiet a.kdr
    kill -0 "$pid" || fail "the first run ended"
    there a.lkp
    ends_by KILL 137
    there a.lkp
    problem 9 0.01 >a.kdr
    run 0 --quiet a.kdr
    gone a.lkp
    starts
    run 1 --quiet --resume a.kdr
    ends_by KILL 137
}

halts_by_signal() {
    starts
    ends_by USR1 0
    has out "Halting iteration and writing files to complete time step..."
    there a.t00
    gone a.lkp
    record "r['steps'][0]['halted'] and not r['steps'][0]['converged']" "r['steps'][0]['iterations'] > 1"
}

leaves_a_record() {
    problem 9 0.01 >a.kdr
    run 0 --threads 1 --solver sparse a.kdr
    record "r['exit'] == {'reason': 'finished', 'status': 0, 'step_under_way': None}" "r['threads'] == 1" \
        "r['solver'] == 'sparse'" "r['data_file']['sha256'] == '$(sha256sum a.kdr | cut -d ' ' -f 1)'" \
        "r['data_file']['path'] == '$PWD/a.kdr'" "r['command_line'][1:] == ['--threads', '1', '--solver', 'sparse', 'a.kdr']" \
        "r['steps'] == [{'step': 0, 'elapsed': 0, 'iterations': 2, 'converged': True, 'halted': False, 'saved': True}]" \
        "r['messages'] == r['warnings'] == []" "'$("$program" --version)' == 'kaldra-run ' + r['version']" \
        "len(r['commit'].rstrip('+')) == 40 or r['commit'] == 'unknown'" "r['begin'] <= r['end']" \
        "r['initial_temperatures'] is None"
    problem 9 0.01 | sed 's/^2 6 5 3 4/2 4 3 5 6/' >a.kdr # fails under way
    run 1 a.kdr
    is err 'error 1194: Area of finite element #2 is zero or negative.\nVerify data in KALDRA DEFINE.'
    is out $'Solving...\nDone.'
    gone a.lkp
    record "r['exit'] == {'reason': 'failed', 'status': 1, 'step_under_way': 0}" "r['steps'] == []" \
        "r['messages'][0].startswith('error 1194: Area of finite element #2')"
    problem 9 0.01 | sed 's/^2 6 5.*/2 6 5 3/' >a.kdr # a start that fails leaves the record of what is there,
    run 1 a.kdr
    record "r['exit']['reason'] == 'failed'"
    rm a.run.json # or makes one
    run 1 a.kdr
    is err 'error 1150: Cannot read Data file, check line:\n2 6 5 3'
    record "r['exit'] == {'reason': 'the start failed', 'status': 1, 'step_under_way': None}" \
        "r['messages'][0].startswith('error 1150: ')"
    starts
    until [ -e a.run.json ] && grep -q 'under way' a.run.json; do sleep 0.02; done
    record "r['exit'] == {'reason': 'under way', 'status': None, 'step_under_way': None}" "r['end'] is None"
    ends_by KILL 137
    mkdir b.run.json # a record that cannot be written
    problem 9 0.01 >b.kdr
    tells 1 "error 5003: This file cannot be written:\\n$PWD/b.run.json" b.kdr
    there b.t00
    for name in c.run.json c.balance.csv c.00.vtu; do
        problem 9 0.01 >$name
        tells 1 "a run writes and deletes files of this name" $name
    done
}

# What is made as the steps are saved is what kaldra-export makes of them, also over a restart.
exports_and_balances() {
    local name=thermosyphon-pile export
    export=$(dirname "$program")/kaldra-export
    mkdir at-once after
    cp "$examples/$name/$name.kdr" at-once
    run 0 --export vtu,csv --balance "at-once/$name.kdr"
    has out "Heat balance: "
    has out "$PWD/at-once/$name.balance.csv"
    has err "the heat balance misses by"
    [ "$(grep -c '^[0-9]' "at-once/$name.balance.csv")" = 104 ] || fail "not every step has its balance"
    cp at-once/*.kdr at-once/*.[tgrj][0-9]* after
    "$export" "after/$name.kdr" --to vtu,csv >out 2>err || fail "kaldra-export: $(cat err)"
    [ "$(wc -l <out)" -gt 26 ] || fail "listed: $(cat out)"
    while read -r file; do cmp "$file" "at-once/${file##*/}" || fail "$file"; done <out
    run 0 -q --start-step 101 --export csv "after/$name.kdr"
    cut -d, -f1 "after/$name.histories.csv" | cmp - <(cut -d, -f1 "at-once/$name.histories.csv") || fail "steps are lost"
    problem 9 0.01 >a.kdr
    mkdir a.nodes.csv
    tells 1 "not every file that was asked for could be made" --export csv a.kdr
    there a.t00
    ls -- *.part 2>/dev/null && fail "parts are left"
}

"$2"
verdict
