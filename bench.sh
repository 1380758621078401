#!/bin/sh
# Builds the benchmark programs, makes the databases they need, measures every row and writes the table into
# docs/performance.md. With arguments (options of Google Benchmark, such as --benchmark_filter=tree) it measures what
# they select and leaves the document alone.
set -eu
cd "$(dirname "$0")"
preset=bench
build=build/$preset
corpora=build/corpus
document=docs/performance.md

packaging/install-packages.sh build test bench
cmake --preset "$preset" >/dev/null
cmake --build "$build" --target quillon-bench

if [ $# -gt 0 ]; then
    exec "$build/quillon-bench" --corpora="$corpora" "$@"
fi

table=$build/table.md
"$build/quillon-bench" --corpora="$corpora" --table="$table"

# The table goes between the two markers; everything else in the document stays.
awk -v table="$table" '
    /<!-- results begin -->/ { print; while ((getline line < table) > 0) print line; skipping = 1; next }
    /<!-- results end -->/ { skipping = 0 }
    !skipping { print }
' "$document" >"$document.new"
mv "$document.new" "$document"
