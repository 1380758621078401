#!/bin/sh
# Makes the sizes of the icon out of the drawing: quillon-SIZE.png for programs and desktops, quillon.ico for Windows.
# Usage: packaging/icons/build.sh [FOLDER]    beside the drawing, or in FOLDER
# Needs rsvg-convert (Debian: librsvg2-bin) and icotool (Debian: icoutils).
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
folder=${1:-$here}
pictures=
for size in 16 24 32 48 64 128 256; do
    rsvg-convert -w $size -h $size "$here/quillon.svg" -o "$folder/quillon-$size.png"
    [ $size = 256 ] || pictures="$pictures $folder/quillon-$size.png"
done
# The largest one stays compressed inside, as Windows has it since Vista.
# shellcheck disable=SC2086  # a list of words
icotool --create --output="$folder/quillon.ico" $pictures --raw="$folder/quillon-256.png"
