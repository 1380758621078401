#!/bin/sh
# Installs what is missing, builds the program and starts it.
# Usage: ./run.sh [--] [FILE]    opens FILE, a database, once the program stands
#        ./run.sh --tour         plays the tour and writes its pictures to docs/images: as they are, twice as large,
#                                and both in dark colours
#        ./run.sh --help
# QUILLON_HOME names the folder to work in, instead of "workspace" beside this script.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

usage()
{
    sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$root/run.sh"
}

tour=no
file=
case ${1-} in
    --help | -h)
        usage
        exit 0 ;;
    --tour)
        tour=yes
        shift ;;
    --) shift ;;
    -?*)
        echo "run.sh: unknown option '$1'" >&2
        usage >&2
        exit 2 ;;
esac
if [ $# -gt 1 ] || { [ $tour = yes ] && [ $# -gt 0 ]; }; then
    usage >&2
    exit 2
fi
# Made absolute before any change of the folder.
if [ $# -eq 1 ]; then
    case $1 in
        /*) file=$1 ;;
        *) file=$PWD/$1 ;;
    esac
fi
home=${QUILLON_HOME:-$root/workspace}
case $home in
    /*) ;;
    *) home=$PWD/$home ;;
esac

# Japanese file names need an UTF-8 locale; any language will do.
case ${LC_ALL:-${LC_CTYPE:-${LANG:-}}} in
    *[Uu][Tt][Ff]-8* | *[Uu][Tt][Ff]8*) ;;
    *)
        unset LC_ALL
        export LC_CTYPE=C.UTF-8 ;;
esac

groups="build run"
virtual=no
if [ $tour = no ]; then
    if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
        virtual=yes
        groups="$groups display"
    elif [ -z "${DISPLAY:-}" ]; then
        groups="$groups wayland"
    fi
fi
# shellcheck disable=SC2086  # a list of words
sh "$root/packaging/install-packages.sh" $groups

targets="quillon quillon-cli quillon_pages"
[ $tour = no ] || targets=quillon-tour
(
    cd "$root"
    [ -f build/release/build.ninja ] || cmake --preset release
    # shellcheck disable=SC2086  # a list of words
    cmake --build --preset release --target $targets
)

if [ $tour = yes ]; then
    echo "Playing the tour; its pictures go to docs/images."
    # The tour draws in memory, on a screen with room for the large ones, so that its pictures look the same everywhere.
    export QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen:configfile=$root/tools/screen.json}"
    for look in . dark large large-dark; do
        factor=1
        dark=
        case $look in large*) factor=2 ;; esac
        case $look in *dark) dark=--dark ;; esac
        mkdir -p "$root/docs/images/$look"
        QT_SCALE_FACTOR=$factor "$root/build/release/quillon-tour" $dark "$root/docs/images/$look"
    done
    exit
fi

export QUILLON_HOME="$home"
echo "Working in $home"

if [ $virtual = no ]; then
    exec "$root/build/release/quillon" --home -- ${file:+"$file"}
fi

scratch=$(mktemp -d)
server=
manager=
program=
# shellcheck disable=SC2317  # called by the trap
clean_up()
{
    trap '' INT TERM HUP
    for process in $program $manager $server; do
        kill "$process" 2>/dev/null || :
        wait "$process" 2>/dev/null || :
    done
    rm -rf "$scratch"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# The server chooses a free number itself and writes it down.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$scratch/number" 2>"$scratch/messages" &
server=$!
waited=0
until [ -s "$scratch/number" ]; do
    if [ $waited -ge 300 ] || ! kill -0 "$server" 2>/dev/null; then
        echo "The virtual display does not start:" >&2
        cat "$scratch/messages" >&2
        exit 1
    fi
    sleep 0.1
    waited=$((waited + 1))
done
DISPLAY=:$(cat "$scratch/number")
export DISPLAY
openbox >"$scratch/openbox" 2>&1 &
manager=$!

echo "There is no display here, so Quillon runs on the virtual display $DISPLAY until it is closed or Ctrl+C is pressed."
echo "To look at it, in another terminal:"
echo "  a picture:  DISPLAY=$DISPLAY import -window root quillon.png    (package imagemagick)"
echo "  live:       x11vnc -display $DISPLAY -localhost                 (package x11vnc; then a VNC viewer on localhost)"

# Beside the script and not in front of it, so that a signal to the script is answered at once.
"$root/build/release/quillon" --home -- ${file:+"$file"} &
program=$!
result=0
wait "$program" || result=$?
program=
exit $result
