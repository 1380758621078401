#!/bin/sh
# Makes the Debian packages of the commit that is checked out: quillon and quillon-dbgsym.
# Usage: packaging/debian/build.sh [FOLDER]    the packages go to FOLDER, else to build/debian
# The same commit gives the same bytes, wherever and whenever it is built with the same compiler and libraries.
# Then everything that Debian's own readers find wrong ends it with an error.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
folder=${1:-$root/build/debian}
mkdir -p "$folder"
folder=$(CDPATH='' cd -- "$folder" && pwd)

history()
{
    git -c safe.directory='*' -C "$root" "$@"
}

if [ -n "$(history status --porcelain)" ]; then
    echo "build.sh: what is not committed does not go into the package" >&2
fi
sh "$root/packaging/install-packages.sh" build package

version=$(sed -n 's/^project(Quillon VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
SOURCE_DATE_EPOCH=$(history log -1 --format=%ct)
export SOURCE_DATE_EPOCH

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

source=$scratch/quillon-$version
mkdir "$source"
history archive HEAD | tar -x -C "$source"
cp -R "$source/packaging/debian/debian" "$source/debian"
cat >"$source/debian/changelog" <<END
quillon ($version) unstable; urgency=medium

  * Built from commit $(history log -1 --format=%h). What changed stands in CHANGELOG.md.

 -- The Quillon authors <authors@quillon.example>  $(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")
END

(
    cd "$source"
    dpkg-buildpackage --build=binary --no-sign --jobs=auto
) >"$folder/build.log" 2>&1 || {
    tail -n 40 "$folder/build.log" >&2
    echo "build.sh: the whole report is in $folder/build.log" >&2
    exit 1
}
rm -f "$folder"/*.deb "$folder"/*.changes "$folder"/*.buildinfo
mv "$scratch"/*.deb "$scratch"/*.changes "$scratch"/*.buildinfo "$folder"

installed=$scratch/installed
dpkg-deb --extract "$(find "$folder" -name 'quillon_*.deb')" "$installed"
desktop-file-validate "$installed/usr/share/applications/quillon.desktop"
# The addresses in it are looked at only where there is a network.
appstreamcli validate --no-net "$installed"/usr/share/metainfo/*.metainfo.xml
lintian --fail-on error,warning "$folder"/*.changes
find "$folder" -name '*.deb'
