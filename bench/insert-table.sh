#!/bin/sh
# Usage: insert-table.sh NAME FILE
# Puts a table into docs/performance.md between the markers "NAME begin" and "NAME end"; the rest stays as it is.
set -eu
document=$(dirname "$0")/../docs/performance.md
for marker in begin end; do
    grep -qxF "<!-- $1 $marker -->" "$document"
done
awk -v name="$1" -v table="$2" '
    $0 == "<!-- " name " begin -->" { print; while ((getline line < table) > 0) print line; skipping = 1; next }
    $0 == "<!-- " name " end -->" { skipping = 0 }
    !skipping { print }
' "$document" >"$document.new"
mv "$document.new" "$document"
