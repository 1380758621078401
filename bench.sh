#!/bin/sh
# Builds the benchmark programs, makes the databases they need, measures every row and writes the table into
# docs/performance.md. With --growth it measures instead how the operations grow with the number of items, and renews
# that table and docs/growth.svg. With other arguments (options of Google Benchmark, such as --benchmark_filter=tree)
# it measures what they select and leaves the document alone.
set -eu
cd "$(dirname "$0")"
preset=bench
build=build/$preset
corpora=build/corpus

packaging/install-packages.sh build test bench
cmake --preset "$preset" >/dev/null

table=$build/table.md
if [ "${1-}" = --growth ]; then
    cmake --build "$build" --target quillon-growth
    "$build/quillon-growth" --corpora="$corpora" --table="$table" --picture=docs/growth.svg
    exec bench/insert-table.sh growth "$table"
fi

cmake --build "$build" --target quillon-bench
if [ $# -gt 0 ]; then
    exec "$build/quillon-bench" --corpora="$corpora" "$@"
fi

"$build/quillon-bench" --corpora="$corpora" --table="$table"
bench/insert-table.sh results "$table"
