#!/bin/sh
# Makes everything that is given away of the commit that is checked out: its sources, the Debian packages, the programs
# for Windows, a list of the components in them and their licences, and the checksums of all.
# Usage: packaging/release.sh [OPTION...] [FOLDER]    into FOLDER, else into build/release-VERSION, which is emptied
#   --twice         the Debian packages are built twice, and a difference is an error
#   --no-windows    without the programs for Windows, whose tools are large and take half an hour to be made
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)

history()
{
    git -c safe.directory='*' -C "$root" "$@"
}

twice=
windows=yes
while [ $# -gt 0 ]; do
    case $1 in
        --twice) twice=--twice ;;
        --no-windows) windows=no ;;
        -*)
            sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$0" | sed '$d' >&2
            exit 2 ;;
        *) break ;;
    esac
    shift
done
version=$(sed -n 's/^project(Quillon VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
folder=${1:-$root/build/release-$version}

# Whoever reads the commit in the program has to find there what it was made of.
if [ -n "$(history status --porcelain)" ]; then
    echo "release.sh: there are changes that are not committed" >&2
    exit 1
fi
sh "$root/packaging/install-packages.sh" build package
mkdir -p "$folder"
folder=$(CDPATH='' cd -- "$folder" && pwd)
# Only what an earlier run has made goes.
rm -f "$folder"/quillon*"$version"* "$folder/SHA256SUMS"
if [ -n "$(ls -A "$folder")" ]; then
    echo "release.sh: there are other files in $folder" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

echo "== sources"
# Its times and its order are those of the commit; gzip would add a name and a time of its own.
history archive --format=tar --prefix="quillon-$version/" HEAD | gzip -n -9 >"$folder/quillon-$version.tar.gz"

echo "== Debian packages"
"$root/packaging/debian/build.sh" $twice "$scratch/debian"
mv "$scratch/debian"/*.deb "$folder"

if [ $windows = yes ]; then
    echo "== Windows"
    if [ ! -x "$root/packaging/windows/build.sh" ]; then
        echo "release.sh: packaging/windows/build.sh is missing; --no-windows goes without" >&2
        exit 1
    fi
    "$root/packaging/windows/build.sh" "$scratch/windows"
    find "$scratch/windows" -maxdepth 1 -type f \( -name '*.zip' -o -name '*-setup.exe' \) -exec mv {} "$folder" \;
fi

echo "== components and checksums"
list=$folder/quillon-$version.spdx.json
"$root/packaging/sbom/make.sh" "$folder"/* >"$scratch/list"
mv "$scratch/list" "$list"
"$root/packaging/sbom/check.sh" "$list"
(
    cd "$folder"
    find . -maxdepth 1 -type f ! -name SHA256SUMS -printf '%P\n' | LC_ALL=C sort | xargs sha256sum >"$scratch/sums"
)
mv "$scratch/sums" "$folder/SHA256SUMS"
(cd "$folder" && sha256sum --quiet --check SHA256SUMS)
ls -l "$folder"
