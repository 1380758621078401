#!/bin/sh
# Runs a program for Windows under wine as on a Japanese computer: code page 932, Japanese fonts, Windows 10.
# Usage: packaging/windows/wine.sh PROGRAM.exe [ARGUMENT...]
# QUILLON_WINE is the folder with what wine takes for its computer, else build/windows/wine; it is made at the first use.
# Without a display the program gets one in memory, unless QT_QPA_PLATFORM tells it to do without.
# With QUILLON_WINE_ASIDE what the program says comes when it has ended: else whoever waits for the end of what is said
# waits for programs of the system as well, which start with ours, get its output and stay.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
wine=/usr/lib/wine/wine64
computer=${QUILLON_WINE:-$here/../../build/windows/wine}
mkdir -p "$computer"
computer=$(CDPATH='' cd -- "$computer" && pwd)

export WINEPREFIX="$computer/prefix" WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}"
# Without this it offers to load what is not needed here.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
# The code page comes from the locale, which is made here, so that those of the computer stay as they are.
export LOCPATH="$computer/locales" LC_ALL=ja_JP.UTF-8 LANG=ja_JP.UTF-8 TZ="${TZ:-Asia/Tokyo}"

# Of these names wine lets only those through that are marked as meant for it.
export WINEQT_ASSUME_STDERR_HAS_CONSOLE=1
export WINEQT_QPA_FONTDIR="${QT_QPA_FONTDIR:-Z:/usr/share/fonts/opentype/ipafont-gothic}"
[ -z "${QT_QPA_PLATFORM:-}" ] || export WINEQT_QPA_PLATFORM="$QT_QPA_PLATFORM"
if [ -n "${TMPDIR:-}" ]; then
    WINETEMP=$(printf 'Z:%s' "$TMPDIR" | tr / '\134')
    export WINETEMP WINETMP="$WINETEMP"
fi

make_computer()
{
    # Whoever asks whether this went well takes from the shell to stop at the first failure.
    # No display yet: its first programs would only tell about themselves in windows.
    mkdir -p "$LOCPATH" "$WINEPREFIX" &&
        { [ -d "$LOCPATH/ja_JP.UTF-8" ] || localedef -i ja_JP -f UTF-8 "$LOCPATH/ja_JP.UTF-8"; } &&
        DISPLAY='' "$wine" wineboot --init &&
        DISPLAY='' "$wine" regedit /S "$(printf 'Z:%s/wine.reg' "$here" | tr / '\134')" &&
        DISPLAY='' "$wine" winecfg /v win10 &&
        /usr/lib/wine/wineserver64 --wait &&
        touch "$computer/made"
}

if [ ! -f "$computer/made" ]; then
    # Tests that start at the same time make it once.
    exec 9>"$computer/lock"
    flock 9
    [ -f "$computer/made" ] || make_computer >"$computer/made.log" 2>&1 9>&- </dev/null || {
        cat "$computer/made.log" >&2
        exit 1
    }
    exec 9>&-
fi

if [ -n "${QUILLON_WINE_ASIDE:-}" ]; then
    said=$(mktemp)
    code=0
    "$wine" "$@" >"$said" 2>&1 </dev/null || code=$?
    cat "$said"
    rm "$said"
    exit "$code"
fi
case ${WINEQT_QPA_PLATFORM:-} in
    offscreen | minimal) exec "$wine" "$@" ;;
esac
[ -z "${DISPLAY:-}" ] || exec "$wine" "$@"
exec xvfb-run -a -s "-screen 0 1024x768x24" "$wine" "$@"
