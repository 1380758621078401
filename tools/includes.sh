#!/bin/sh
# Compiles sources without the precompiled headers and throws the result away: a missing include shows.
# Usage: tools/includes.sh [FILE...]     these, or everything but the tests; what is not compiled here is passed over
# The preset "gcc" must have been built.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
cd "$root"
list=build/gcc/includes

# One source: `awk` gives its command as a JSON text.
if [ "${1-}" = --one ]; then
    command=$(awk -v file="  \"file\": \"$root/$2\"" '
        /^  "command": / { command = $0 }
        index($0, file) == 1 { sub(/^  "command": "/, "", command); sub(/",?$/, "", command); print command; exit }
    ' build/gcc/compile_commands.json | sed -e 's/\\"/"/g' -e 's/\\\\/\\/g' \
        -e 's/ -include [^ ]*cmake_pch\.hxx//' -e 's/ -o [^ ]* / -fsyntax-only /')
    [ -n "$command" ] || exit 0
    cd build/gcc
    eval "$command"
    exit
fi

if [ $# != 0 ]; then
    printf '%s\n' "$@" >"$list"
else
    find app bench core exchange store tools ui -name '*.cpp' >"$list"
fi
xargs -P "$(nproc)" -n 1 "$root/tools/includes.sh" --one <"$list"
