#!/bin/sh
# Reads sources with clang-tidy; every finding is an error.
# Usage: tools/tidy.sh PATH...
# A folder is read in one piece, which spares reading the toolkit's headers again for each of its files. A file is read
# by itself, and so are the files of a folder that cannot be put together because they define the same names.
# How a file is compiled is what the preset "gcc" says, without its precompiled headers.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
cd "$root"
pieces=build/tidy
commands=$pieces/files/compile_commands.json

# One piece: a file, or several put together in $pieces. The findings stay beside it in NAME.found.
if [ "${1-}" = --piece ]; then
    name=$2
    file=$3
    case $file in
        "$root/$pieces"/*) set -- --checks=-bugprone-suspicious-include -p "$pieces" ;; # it includes sources by design
        *) set -- -p "$(dirname "$commands")" ;;
    esac
    clang-tidy --quiet "$@" "$file" >"$pieces/$name.found" 2>"$pieces/$name.said" || {
        # It may fail without a finding, too.
        [ -s "$pieces/$name.found" ] || cat "$pieces/$name.said" >>"$pieces/$name.found"
    }
    exit 0
fi

if [ $# = 0 ]; then
    sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$0" >&2
    exit 2
fi

# Says what a command said only when it failed.
quietly()
{
    "$@" >"$pieces.said" 2>&1 || {
        cat "$pieces.said" >&2
        exit 1
    }
}

mkdir -p "$(dirname "$pieces")"
quietly cmake --preset gcc
# One header is made by the build.
quietly cmake --build build/gcc --target quillon_commit
rm -rf "$pieces"
mkdir -p "$(dirname "$commands")"
sed 's/ -include [^ ]*cmake_pch\.hxx//' build/gcc/compile_commands.json >"$commands"

# "FILE TAB COMMAND" of everything that is compiled, FILE as it is named from the root.
awk -v root="$root/" '
    /^  "command": / { command = $0 }
    /^  "file": / {
        file = $0
        sub(/^  "file": "/, "", file)
        sub(/",?$/, "", file)
        if (index(file, root) == 1)
            print substr(file, length(root) + 1) "\t" command
    }' "$commands" >"$pieces/compiled"

# The name of a piece of this path.
name_of()
{
    echo "$1" | tr / _
}

# What is compiled of a folder, without its folders.
sources_in()
{
    awk -F '\t' -v folder="$1/" \
        'index($1, folder) == 1 && !index(substr($1, length(folder) + 1), "/") { print $1 }' "$pieces/compiled" | sort -u
}

single()
{
    printf '%s\t%s\n' "$(name_of "$1")" "$root/$1" >>"$pieces/list"
}

# Runs all pieces of the list.
read_pieces()
{
    [ -s "$pieces/list" ] || return 0
    tr '\t' '\n' <"$pieces/list" | tr '\n' '\0' | xargs -0 -n 2 -P "$(nproc)" "$root/tools/tidy.sh" --piece
}

: >"$pieces/list"
: >"$pieces/folders"
moc=
echo '[' >"$pieces/compile_commands.json"
for path in "$@"; do
    path=${path%/}
    if [ ! -e "$path" ]; then
        echo "tidy.sh: there is no $path" >&2
        exit 2
    fi
    if [ -f "$path" ]; then
        if ! grep -q "^$path	" "$pieces/compiled"; then
            echo "tidy.sh: $path is not compiled here" >&2
            exit 2
        fi
        # A test includes what moc makes of it.
        case $path in
            tests/*/test_*.cpp) moc="$moc ${path%.cpp}.moc" ;;
        esac
        single "$path"
        continue
    fi
    sources=
    for source in $(sources_in "$path"); do
        # Two programs cannot be put together.
        if grep -q '^int main(' "$source"; then
            single "$source"
        else
            sources="$sources $source"
        fi
    done
    [ -n "$sources" ] || continue
    piece=$pieces/$(name_of "$path").cpp
    for source in $sources; do
        echo "#include \"$source\""
    done >"$piece"
    # It is compiled as that of its files is which sees most folders.
    most=$(for source in $sources; do
        grep "^$source	" "$pieces/compiled" | head -n 1
    done | awk -F '\t' '{ print length($2) - 4 * length($1) "\t" $1 }' | sort -rn | head -n 1 | cut -f 2)
    {
        printf '{\n  "directory": "%s",\n' "$root/build/gcc"
        grep "^$most	" "$pieces/compiled" | head -n 1 | cut -f 2- | sed "s|$root/$most|$root/$piece|g"
        printf '  "file": "%s"\n},\n' "$root/$piece"
    } >>"$pieces/compile_commands.json"
    printf '%s\t%s\n' "$(name_of "$path")" "$root/$piece" >>"$pieces/list"
    echo "$path$sources" >>"$pieces/folders"
done
# The last entry may have no comma.
sed '$s/,$//' "$pieces/compile_commands.json" >"$pieces/closed"
echo ']' >>"$pieces/closed"
mv "$pieces/closed" "$pieces/compile_commands.json"

# Nothing else of the test's program has to be built for it.
for file in $moc; do
    mkdir -p "build/gcc/$(dirname "$file")"
    ninja -C build/gcc -t commands -s "$file" | quietly sh
done
read_pieces

# What cannot be compiled in one piece is read file by file.
: >"$pieces/list"
while read -r folder sources; do
    name=$(name_of "$folder")
    grep -q '\[clang-diagnostic-error' "$pieces/$name.found" || continue
    echo "$folder cannot be put together and is read file by file:"
    grep '\[clang-diagnostic-error' "$pieces/$name.found" | head -n 3
    rm "$pieces/$name.found"
    for source in $sources; do
        single "$source"
    done
done <"$pieces/folders"
read_pieces

cat "$pieces"/*.found >"$pieces/all"
cat "$pieces/all"
[ ! -s "$pieces/all" ]
