#!/usr/bin/env bash
# Runs kaldra-export as a user does, and has its files read back by other programs.
#
#     export_test.sh KALDRA-RUN KALDRA-EXPORT CASE
engine=$1
program=$2
here=$(cd "$(dirname "$0")" && pwd)
source "$here/../script_support.sh"

example() { cp "$examples/$1/$1.kdr" . && "$engine" -q "$1.kdr" >/dev/null 2>&1 || fail "the run of $1"; }
python=$(for p in python3 /usr/bin/python3; do "$p" -c 'import meshio, numpy' 2>/dev/null && echo "$p" && break; done)
read_back() { "$python" "$here/read_exports.py" "$@" >read 2>&1 || fail "$*: $(cat read)"; }
[ -n "$python" ] || fail "no Python with meshio: install python3-meshio"

grids_are_read_back() {
    for name in chilled-pipe thermosyphon-pile heated-slab; do # infinite, NULL, and all kinds of elements
        example $name
        run 0 $name.kdr --to vtu
        read_back grids $name.kdr
    done
    is out "$PWD/heated-slab.00.vtu"$'\n'"$PWD/heated-slab.pvd"
    for kind in quad quad8 triangle triangle6; do has read "$kind"; done
    ls | grep -F .part && fail "parts are left"
}

tables_and_workbook_are_read_back() {
    for name in chilled-pipe thermosyphon-pile; do
        example $name
        run 0 $name.kdr --to csv,xlsx
        read_back tables $name.kdr
        read_back workbook $name.kdr
    done
    example road-embankment
    run 0 road-embankment.kdr --to csv --to xlsx --step 100
    read_back workbook road-embankment.kdr
    has read Sections
    # The section's own line of the result file.
    total=$(sed -n 's/^Section     2 : *\([^ ]*\) .*/\1/p' road-embankment.j100)
    awk -F, -v total="$total" '$3 == 2 && $4 == "" && ($5 - total) ^ 2 < 1e-8 * total ^ 2 { found = 1 }
        END { exit !found }' road-embankment.sections.csv || fail "no total $total in $(head -5 road-embankment.sections.csv)"
}

thaw_tables_are_made() {
    example road-embankment
    run 0 road-embankment.kdr --thaw-depth 0,5.5
    is out "$(printf "$PWD/road-embankment.%s.csv\n" thaw thaw-deepest trumpet)"
    # Three years at two places; the crossings of the last row's step and place include the depth.
    [ "$(grep -c '^[123],' road-embankment.thaw-deepest.csv)" = 6 ] || fail "$(cat road-embankment.thaw-deepest.csv)"
    IFS=, read -r _ _ _ x step time depth _ < <(tail -n 1 road-embankment.thaw-deepest.csv)
    grep -q "^$step,$time,$x,.*,$depth,thawed$" road-embankment.thaw.csv || fail "no crossing at $depth"
    tells 1 "no active element lies on the vertical at x = -0.5" road-embankment.kdr --thaw-depth=-0.5
}

# A column 1 wide and 2 high, -1 at the bottom and 9 at the top, stands in the middle of the plot.
pictures_have_their_colours() {
    problem 10 0.01 >column.kdr
    "$engine" -q column.kdr || fail "the run of the column"
    run 0 column.kdr --picture temperature --to png,svg,pdf --size 600x500 --range=-1:9 --bands 10 --layers none
    is out "$(printf "$PWD/column.temperature.00.%s\n" png svg pdf)"
    for spot in 268,153,226,72,50 268,433,116,173,209 100,250,255,255,255; do  # at 6.5, at -0.5, beside the column
        IFS=, read -r x y red green blue <<<"$spot"
        got=$(convert column.temperature.00.png -format \
            "%[fx:round(255*p{$x,$y}.r)],%[fx:round(255*p{$x,$y}.g)],%[fx:round(255*p{$x,$y}.b)]" info:)
        [ "$got" = "$red,$green,$blue" ] || fail "$got instead of $red,$green,$blue at $x,$y"
    done
    has column.temperature.00.svg '<image'
    rm column.?00
    run 0 column.kdr --picture materials
    is out "$PWD/column.materials.png"
    tells 1 "no saved step" column.kdr --picture temperature
    example road-embankment # a step alone has the colours that it has among all
    run 0 road-embankment.kdr --picture temperature --size 300x200
    mv road-embankment.temperature.100.png among-all.png
    run 0 road-embankment.kdr --picture temperature --size 300x200 --step 100
    cmp among-all.png road-embankment.temperature.100.png || fail "another scale for a step alone"
    run 2 column.kdr --to svg
    run 2 column.kdr --picture none
    for wrong in --size=10x10 --size=500 --range=9:1 --range=x --bands=101 --layers=soil; do
        run 2 column.kdr --picture temperature $wrong
    done
}

refuses() {
    example heated-slab
    tells 2 "nothing to make" heated-slab.kdr
    run 2 heated-slab.kdr --to vtk
    run 2 heated-slab.kdr --to vtu --step x
    run 2 heated-slab.kdr --thaw-depth nan
    tells 1 "step 3 has no whole results; there are those of 0" heated-slab.kdr --to vtu --step 3
    tells 1 "error 1020: " none.kdr --to vtu
    chmod a-w . && [ "$(id -u)" != 0 ] && tells 1 "error 5003: " heated-slab.kdr --to vtu,csv,xlsx
    chmod u+w .
    mkdir heated-slab.xlsx heated-slab.nodes.csv
    tells 1 "error 5003: This file cannot be written:\\n$PWD/heated-slab.xlsx" heated-slab.kdr --to xlsx
    tells 1 "error 5003: This file cannot be written:\\n$PWD/heated-slab.nodes.csv" heated-slab.kdr --to csv
    truncate -s -1 heated-slab.g00
    tells 1 "no saved step" heated-slab.kdr --to vtu
    gone heated-slab.00.vtu
    ls | grep -F .part && fail "parts are left"
}

"$3"
verdict
