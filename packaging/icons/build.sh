#!/bin/sh
# Makes the sizes of the icon out of the drawing: quillon-SIZE.png for programs and desktops, quillon.ico for Windows.
# Usage: packaging/icons/build.sh [FOLDER]    beside the drawing, or in FOLDER
#        packaging/icons/build.sh --check     makes them elsewhere, and ends with 1 when those beside the drawing differ
# The bytes are those of Debian 12's rsvg-convert and icotool; other versions may draw another shade.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
check=no
case ${1-} in
    --check)
        check=yes
        folder=$(mktemp -d)
        trap 'rm -rf "$folder"' EXIT
        trap 'exit 130' INT
        trap 'exit 143' TERM HUP ;;
    -*)
        sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$0" | sed '$d' >&2
        exit 2 ;;
    *) folder=${1:-$here} ;;
esac
sh "$here/../install-packages.sh" icons

pictures=
for size in 16 24 32 48 64 128 256; do
    rsvg-convert -w $size -h $size "$here/quillon.svg" -o "$folder/quillon-$size.png"
    [ $size = 256 ] || pictures="$pictures $folder/quillon-$size.png"
done
# The largest one stays compressed inside, as Windows has it since Vista.
# shellcheck disable=SC2086  # a list of words
icotool --create --output="$folder/quillon.ico" $pictures --raw="$folder/quillon-256.png"

if [ $check = yes ]; then
    different=
    for file in "$folder"/*; do
        name=$(basename "$file")
        cmp -s "$file" "$here/$name" || different="$different $name"
    done
    if [ -n "$different" ]; then
        echo "build.sh: not made of the drawing as it is now:$different; packaging/icons/build.sh makes them anew" >&2
        exit 1
    fi
fi
