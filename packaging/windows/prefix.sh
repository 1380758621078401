#!/bin/sh
# Makes what the programs for Windows are linked with: SQLite and a small static Qt, from Debian's own sources.
# Usage: packaging/windows/prefix.sh    needed once; it takes half an hour of two processors and 4 GB while it runs
#        packaging/windows/prefix.sh --is-there    ends with an error when there is none, or one of an earlier edition
# The result goes to the folder QUILLON_WINDOWS_PREFIX, else to build/windows/prefix. What is there is not made again.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
prefix=${QUILLON_WINDOWS_PREFIX:-$root/build/windows/prefix}
work=$root/build/windows/sources
jobs=${QUILLON_JOBS:-$(nproc)}
edition=2 # of what is made here: a greater one is made anew
made=$(cat "$prefix/complete" 2>/dev/null || :)

if [ "${1:-}" = --is-there ]; then
    [ "$made" = "$edition" ]
    exit
fi

# What has to be given along with the programs, as far as it comes from installed packages. Debian's own papers do not
# repeat the usual licences but name them where a Windows computer has nothing: these lie beside, under the same names
# in small letters.
installed_licences()
{
    cp /usr/share/doc/gcc-mingw-w64-base/copyright "$prefix/licences/gcc.txt"
    cp /usr/share/doc/mingw-w64-x86-64-dev/copyright "$prefix/licences/mingw-w64.txt"
    cp /usr/share/doc/qt6-translations-l10n/copyright "$prefix/licences/qt6-translations.txt"
    cp /usr/share/doc/nsis/copyright "$prefix/licences/nsis.txt"
    cp /usr/share/common-licenses/LGPL-3 "$prefix/licences/lgpl-3.txt"
    cp /usr/share/common-licenses/GPL-3 "$prefix/licences/gpl-3.txt"
    grep -oh '/usr/share/common-licenses/[A-Za-z0-9.-]*[A-Za-z0-9]' "$prefix"/licences/*.txt | sort -u |
        while read -r licence; do
            cp "$licence" "$prefix/licences/$(basename "$licence" | tr '[:upper:]' '[:lower:]').txt"
        done
}

[ "$made" != "$edition" ] || exit 0
sh "$root/packaging/install-packages.sh" windows
mkdir -p "$prefix/include" "$prefix/lib" "$work"
prefix=$(CDPATH='' cd -- "$prefix" && pwd)
export QUILLON_WINDOWS_PREFIX="$prefix"

# Most computers know where to find packages and not their sources. The question is put with lists of our own, so that
# those of the computer stay as they are.
source_packages()
{
    asked=$work/apt
    mkdir -p "$asked/parts" "$asked/lists/partial"
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ ! -f "$list" ] || sed -n 's/^deb /deb-src /p' "$list" >"$asked/parts/$(basename "$list" .list).list"
    done
    for list in /etc/apt/sources.list.d/*.sources; do
        [ ! -f "$list" ] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$asked/parts/$(basename "$list")"
    done
    set -- -o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$asked/parts" -o "Dir::State::Lists=$asked/lists" \
        -o "APT::Sandbox::User=root"
    apt-get "$@" -q update
    cd "$work"
    [ -n "$(find . -maxdepth 1 -type d -name "qt6-base-*")" ] || apt-get "$@" -q source qt6-base
    [ -n "$(find . -maxdepth 1 -type d -name "sqlite3-*")" ] || apt-get "$@" -q source sqlite3
}

# One source out of many, with what Debian's own library is compiled with and the stores of the program rely on.
sqlite()
{
    mkdir -p "$work/sqlite"
    cd "$work/sqlite"
    "$(echo "$work"/sqlite3-*/configure)" --disable-tcl --disable-readline
    make sqlite3.c
    x86_64-w64-mingw32-gcc-posix -O2 -c sqlite3.c -o sqlite3.o \
        -DSQLITE_THREADSAFE=1 -DSQLITE_SECURE_DELETE -DSQLITE_USE_URI -DSQLITE_MAX_VARIABLE_NUMBER=250000 \
        -DSQLITE_MAX_SCHEMA_RETRY=25 -DSQLITE_LIKE_DOESNT_MATCH_BLOBS -DSQLITE_SOUNDEX \
        -DSQLITE_ENABLE_PREUPDATE_HOOK -DSQLITE_ENABLE_SESSION -DSQLITE_ENABLE_COLUMN_METADATA \
        -DSQLITE_ENABLE_UNLOCK_NOTIFY -DSQLITE_ENABLE_DBSTAT_VTAB \
        -DSQLITE_ENABLE_STMTVTAB -DSQLITE_ENABLE_FTS3 -DSQLITE_ENABLE_FTS3_PARENTHESIS \
        -DSQLITE_ENABLE_FTS3_TOKENIZER -DSQLITE_ENABLE_FTS4 -DSQLITE_ENABLE_FTS5 -DSQLITE_ENABLE_JSON1 \
        -DSQLITE_ENABLE_RTREE -DSQLITE_ENABLE_MATH_FUNCTIONS
    x86_64-w64-mingw32-gcc-ar-posix rcs "$prefix/lib/libsqlite3.a" sqlite3.o
    cp sqlite3.h sqlite3ext.h "$prefix/include"
}

# Debian's source with what is mended here.
qt_source()
{
    source=$(echo "$work"/qt6-base-*[0-9a-z])
    if ! grep -q 'HIGHCONTRAST highContrast' "$source/src/plugins/platforms/windows/qwindowstheme.cpp"; then
        patch -d "$source" -p1 <"$root/packaging/windows/qt-high-contrast.patch" >&2
    fi
    echo "$source"
}

# Only what has a window needs. Without direct2d the whole DirectWrite font engine would be left out; without
# direct2d1_1 only a second way to the screen is. Debian's source lacks what tabletevent compiles. Regular expressions
# without their compiler: it keeps a stack for each thread, which this runtime frees before the thread lets go of it.
qt()
{
    mkdir -p "$work/qt"
    source=$(qt_source)
    cmake -G Ninja -S "$source" -B "$work/qt" \
        -DCMAKE_TOOLCHAIN_FILE="$root/packaging/windows/mingw64-posix.cmake" -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DCMAKE_C_FLAGS=-DPCRE2_DISABLE_JIT -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DQT_QMAKE_TARGET_MKSPEC=win32-g++ \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DFEATURE_pkg_config=OFF \
        -DFEATURE_testlib=ON -DFEATURE_concurrent=OFF -DFEATURE_dbus=OFF -DFEATURE_network=OFF -DFEATURE_sql=OFF \
        -DFEATURE_printsupport=OFF -DFEATURE_xml=OFF \
        -DINPUT_opengl=no -DFEATURE_vulkan=OFF -DFEATURE_tabletevent=OFF -DFEATURE_direct2d1_1=OFF \
        -DFEATURE_icu=OFF -DFEATURE_zstd=OFF -DFEATURE_glib=OFF \
        -DFEATURE_system_zlib=OFF -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF -DFEATURE_system_freetype=OFF \
        -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_pcre2=OFF -DFEATURE_system_doubleconversion=OFF
    nice -n 10 ninja -C "$work/qt" -j "$jobs"
    ninja -C "$work/qt" install
    # The precompiled headers alone are 2 GB.
    rm -rf "$work/qt"
}

# What has to be given along with the programs: that of the sources, and the rest.
licences()
{
    mkdir -p "$prefix/licences"
    cp "$(echo "$work"/qt6-base-*/debian/copyright)" "$prefix/licences/qt6-base.txt"
    cp "$(echo "$work"/sqlite3-*/debian/copyright)" "$prefix/licences/sqlite3.txt"
    installed_licences
}

(source_packages)
[ -f "$prefix/lib/libsqlite3.a" ] || (sqlite)
(qt)
(licences)
echo "$edition" >"$prefix/complete"
