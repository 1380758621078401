#!/bin/sh
# Makes what runs on Windows, by Debian's own cross compiler: a zip that works in any folder, and an installer.
# Usage: packaging/windows/build.sh [FOLDER]    the files go to FOLDER, else to build/windows
#        packaging/windows/build.sh --draft [FOLDER]    the same not optimised, to be tried only; else to build/windows/draft
#        packaging/windows/build.sh --check     compiles everything, the tests as well, and makes nothing of it
#        packaging/windows/build.sh --test      the same, and runs the tests under wine
# The first time Qt and SQLite are made before, which takes half an hour (see prefix.sh). --check and --test do not do
# that: they want them in QUILLON_WINDOWS_PREFIX or build/windows/prefix.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
here=$root/packaging/windows
QUILLON_WINDOWS_PREFIX=${QUILLON_WINDOWS_PREFIX:-$root/build/windows/prefix}
export QUILLON_WINDOWS_PREFIX
jobs=${QUILLON_JOBS:-$(nproc)}

purpose=packing
case ${1:-} in
    --check | --test)
        purpose=${1#--}
        shift
        if ! "$here/prefix.sh" --is-there; then
            echo "build.sh: nothing is checked, for there is no Qt of this edition in $QUILLON_WINDOWS_PREFIX;" \
                "prefix.sh makes it" >&2
            exit 1
        fi ;;
    --draft)
        purpose=draft
        shift ;;
    -*)
        sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$0" | sed '$d' >&2
        exit 2 ;;
esac
place=$root/build/windows
[ "$purpose" != draft ] || place=$place/draft
folder=${1:-$place}
mkdir -p "$folder"
folder=$(CDPATH='' cd -- "$folder" && pwd)
sh "$root/packaging/install-packages.sh" windows
[ "$purpose" != test ] || sh "$root/packaging/install-packages.sh" wine
"$here/prefix.sh"

history()
{
    git -c safe.directory='*' -C "$root" "$@"
}

SOURCE_DATE_EPOCH=$(history log -1 --format=%ct)
export SOURCE_DATE_EPOCH

# What is only tried is not optimised: it is there sooner.
if [ "$purpose" = packing ]; then
    programs=$root/build/windows/release
    set -- -DQUILLON_TESTS=OFF -DQUILLON_TOUR=OFF
else
    programs=$root/build/windows/programs
    set -- -DCMAKE_CXX_FLAGS_RELEASE=-O0
fi
cmake -G Ninja -S "$root" -B "$programs" --log-level=WARNING -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$here/mingw64-posix.cmake" "$@"

if [ "$purpose" = check ] || [ "$purpose" = test ]; then
    cmake --build "$programs" --parallel "$jobs"
    [ "$purpose" != test ] ||
        QUILLON_WINE_ASIDE=yes ctest --test-dir "$programs" --parallel "$jobs" --timeout 300 --output-on-failure
    exit
fi
cmake --build "$programs" --parallel "$jobs" --target quillon quillon-cli

version=$(sed -n 's/^project(Quillon VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
name=quillon-$version-windows-x64
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# The names of this folder are what a person sees; its texts have the line ends of that system.
content=$scratch/$name
mkdir -p "$content/licences"
for program in quillon quillon-cli; do
    x86_64-w64-mingw32-strip -o "$content/$program.exe" "$programs/$program.exe"
done
# What the system asks the program for before it starts it, and that it needs nothing which is not the system's own.
for program in "$content"/*.exe; do
    for word in longPathAware PerMonitorV2 '>UTF-8</activeCodePage>'; do
        grep -aqF -e "$word" "$program" || { echo "build.sh: $program does not say $word" >&2; exit 1; }
    done
    x86_64-w64-mingw32-objdump -p "$program" | sed -n 's/^.*DLL Name: //p' | while read -r library; do
        # Of the system's own the compiler has a library to link with, and gives back its whole path.
        known=$(x86_64-w64-mingw32-gcc-posix \
            -print-file-name="lib$(echo "${library%.*}" | tr '[:upper:]' '[:lower:]').a")
        case $library:$known in
            api-ms-win-*:*) ;;
            Qt6*:* | lib*:* | *:lib*)
                echo "build.sh: $program needs $library" >&2
                exit 1 ;;
        esac
    done
done
cp -R "$programs/manual" "$content"
cp "$root/packaging/texts/Readme.txt" "$root/packaging/texts/Quillon 機能仕様.txt" "$content"
sed 's/$/\r/' "$root/LICENSE" >"$content/licences/quillon.txt"
for licence in "$QUILLON_WINDOWS_PREFIX"/licences/*; do
    sed 's/$/\r/' "$licence" >"$content/licences/$(basename "$licence")"
done
sed 's/$/\r/' "$here/licences.txt" >"$content/licences/Readme.txt"
find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +

rm -f "$folder/$name.zip" "$folder/$name-setup.exe"
# The time in a zip is that of no place.
(cd "$scratch" && find "$name" | LC_ALL=C sort | TZ=UTC python3 -X utf8 "$here/make_zip.py" "$folder/$name.zip")
LC_ALL=C.UTF-8 makensis -V2 -WX -INPUTCHARSET UTF8 "-DVersion=$version" "-DContent=$content" \
    "-DIcon=$root/packaging/icons/quillon.ico" "-DResult=$folder/$name-setup.exe" "$here/installer.nsi"
touch --date="@$SOURCE_DATE_EPOCH" "$folder/$name.zip" "$folder/$name-setup.exe"
echo "$folder/$name.zip"
echo "$folder/$name-setup.exe"
