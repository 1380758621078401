#!/bin/sh
# Counts the instructions that operations take, and prints them beside the counts kept in docs/performance.md with the
# change in per cent. With --keep the counts of today are written there. Unlike times they hardly depend on what else
# the computer does, only on its kind and on the libraries.
set -eu
cd "$(dirname "$0")/.."
build=build/bench
document=docs/performance.md

keep=
case ${1-} in
    '') ;;
    --keep) keep=yes ;;
    *)
        echo "usage: count-instructions.sh [--keep]" >&2
        exit 2 ;;
esac

packaging/install-packages.sh build test bench
cmake --preset bench >/dev/null
cmake --build "$build" --target quillon-counts

mkdir -p build/corpus
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
# One dump for each operation; what the program says is of interest only when it fails.
QT_QPA_PLATFORM=offscreen QT_HASH_SEED=0 valgrind --tool=callgrind --instr-atstart=no \
    --callgrind-out-file="$results/dump" "$build/quillon-counts" build/corpus >"$results/log" 2>&1 || {
    cat "$results/log" >&2
    exit 1
}

# "operation TAB instructions", in the order of the dumps.
number=1
while [ -e "$results/dump.$number" ]; do
    awk -F ': ' '
        /^desc: Trigger: Client Request: / { name = $4 }
        /^totals: / { print name "\t" $2 }' "$results/dump.$number"
    number=$((number + 1))
done >"$results/today"
[ -s "$results/today" ]

awk -F '\t' -v document="$document" -v keeping="$keep" -v table="$results/table" '
    function grouped(count) {
        count = sprintf("%.0f", count)
        while (match(count, /^[0-9]+[0-9][0-9][0-9](,|$)/)) {
            place = index(count, ",") ? index(count, ",") - 4 : length(count) - 3
            count = substr(count, 1, place) "," substr(count, place + 1)
        }
        return count
    }
    BEGIN {
        while ((getline line < document) > 0) {
            if (line ~ /<!-- counts begin -->/) inside = 1
            if (line ~ /<!-- counts end -->/) inside = 0
            if (inside && split(line, cell, / *\| */) > 3) {
                gsub(/,/, "", cell[3])
                kept[cell[2]] = cell[3]
            }
        }
        print "| Operation, 10,000 items | Instructions |\n|---|---:|" >table
    }
    {
        before = "-"
        change = "new"
        if ($1 in kept) {
            before = grouped(kept[$1])
            change = sprintf("%+.2f %%", ($2 / kept[$1] - 1) * 100)
        }
        printf "%-32s %14s   kept %14s   %s\n", $1, grouped($2), before, change
        print "| " $1 " | " grouped($2) " |" >table
    }
' "$results/today"

if [ -n "$keep" ]; then
    bench/insert-table.sh counts "$results/table"
fi
