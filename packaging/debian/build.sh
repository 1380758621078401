#!/bin/sh
# Makes the Debian packages of the commit that is checked out: quillon and quillon-dbgsym.
# Usage: packaging/debian/build.sh [--twice] [FOLDER]    the packages go to FOLDER, else to build/debian
# The same commit gives the same bytes, wherever and whenever it is built with the same compiler and libraries; with
# --twice it is built a second time, in another folder, time zone, language and file mask, and a difference is an error.
# Then everything that Debian's own readers find wrong ends it with an error.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
twice=no
if [ "${1-}" = --twice ]; then
    twice=yes
    shift
fi
case ${1-} in
    -*)
        echo "build.sh: unknown option '$1'" >&2
        exit 2 ;;
esac
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
# That of now, whatever is committed meanwhile.
commit=$(history rev-parse HEAD)
SOURCE_DATE_EPOCH=$(history log -1 --format=%ct "$commit")
export SOURCE_DATE_EPOCH

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# The pictures that go into the package, before the long work.
mkdir "$scratch/drawing"
history archive "$commit" packaging/icons packaging/install-packages.sh | tar -x -C "$scratch/drawing"
sh "$scratch/drawing/packaging/icons/build.sh" --check

# Builds in FOLDER, which is made. What is said stays in LOG.
# Usage: build FOLDER LOG
build()
{
    source=$1/quillon-$version
    mkdir -p "$source"
    history archive "$commit" | tar -x -C "$source"
    cp -R "$source/packaging/debian/debian" "$source/debian"
    cat >"$source/debian/changelog" <<END
quillon ($version) unstable; urgency=medium

  * Built from commit $(history rev-parse --short=12 "$commit"). What changed stands in CHANGELOG.md.

 -- The Quillon authors <authors@quillon.example>  $(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")
END
    (
        cd "$source"
        dpkg-buildpackage --build=binary --no-sign --jobs=auto
    ) >"$2" 2>&1 || {
        tail -n 40 "$2" >&2
        echo "build.sh: the whole report is in $2" >&2
        exit 1
    }
    # What was compiled is large, and nobody needs it any more.
    rm -rf "$source"
}

build "$scratch/first" "$folder/build.log"
rm -f "$folder"/*.deb "$folder"/*.changes "$folder"/*.buildinfo
mv "$scratch/first"/*.deb "$scratch/first"/*.changes "$scratch/first"/*.buildinfo "$folder"

if [ $twice = yes ]; then
    (
        umask 027
        TZ=Asia/Tokyo
        LC_ALL=C.UTF-8
        export TZ LC_ALL
        build "$scratch/another/folder" "$folder/build-again.log"
    )
    different=
    for package in "$folder"/*.deb; do
        again="$scratch/another/folder/$(basename "$package")"
        if cmp -s "$package" "$again"; then
            echo "$(basename "$package"): the same bytes twice"
            continue
        fi
        different=yes
        echo "build.sh: $(basename "$package") is another one when it is built again; what differs in it:" >&2
        mkdir -p "$scratch/one" "$scratch/two"
        dpkg-deb --raw-extract "$package" "$scratch/one"
        dpkg-deb --raw-extract "$again" "$scratch/two"
        diff -rq --no-dereference "$scratch/one" "$scratch/two" >&2 || :
        rm -rf "$scratch/one" "$scratch/two"
    done
    [ -z "$different" ] || exit 1
fi

installed=$scratch/installed
dpkg-deb --extract "$(find "$folder" -name 'quillon_*.deb')" "$installed"
wrong=
# It ends well with mere warnings.
said=$(desktop-file-validate "$installed/usr/share/applications/quillon.desktop" 2>&1) || wrong=yes
if [ -n "$said" ]; then
    echo "$said" >&2
    wrong=yes
fi
# The addresses in it are looked at only where there is a network.
appstreamcli validate --strict --no-net "$installed"/usr/share/metainfo/*.metainfo.xml || wrong=yes
lintian --fail-on error,warning "$folder"/*.changes || wrong=yes

# What lintian takes for a matter of taste, or does not see.
complain()
{
    echo "build.sh: $*" >&2
    wrong=yes
}

for program in quillon quillon-cli; do
    file=$installed/usr/bin/$program
    LC_ALL=C readelf -W --file-header --program-headers --dynamic --dyn-syms "$file" >"$scratch/elf"
    grep -q '^ *Type: *DYN ' "$scratch/elf" || complain "$program always lies at the same address"
    grep -q '^ *GNU_RELRO ' "$scratch/elf" || complain "$program can be given other functions: no RELRO"
    grep -q -e '(BIND_NOW)' -e '(FLAGS).* BIND_NOW' -e '(FLAGS_1).* NOW' "$scratch/elf" ||
        complain "$program can be given other functions: not bound at its start"
    grep -q ' __stack_chk_fail' "$scratch/elf" || complain "$program does not guard its stack"
done
windows=$(objdump -p "$installed/usr/bin/quillon-cli" | sed -n 's/^ *NEEDED *\(libQt6.*\)/\1/p' |
    grep -v '^libQt6Core\.') || :
# shellcheck disable=SC2086  # a list of words
[ -z "$windows" ] || complain "quillon-cli has no use for" $windows
[ -n "$(find "$folder" -name 'quillon-dbgsym_*.deb')" ] || complain "there is no package with what a debugger reads"
[ -z "$wrong" ] || exit 1
find "$folder" -name '*.deb'
