#!/bin/sh
# Types Japanese with a real input method (ibus with anthy) into the windows: starts a display in memory with a window
# manager, a session bus and the input method, and runs the test beside this script there.
# Usage: run.sh [ARGUMENT...]    arguments of the test program, such as the names of single tests
# What is missing is named: packaging/install-packages.sh display input-method installs it.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
test=${QUILLON_INPUT_METHOD_TEST:-$root/build/dev/test_input_method}

if [ "${1-}" != --inside ]; then
    missing=
    for program in Xvfb openbox xdotool dbus-run-session ibus-daemon /usr/libexec/ibus-engine-anthy; do
        command -v "$program" >/dev/null || missing="$missing $program"
    done
    if [ -n "$missing" ]; then
        echo "run.sh: these are missing:$missing" >&2
        echo "        packaging/install-packages.sh display input-method installs them" >&2
        exit 1
    fi
    [ -x "$test" ] || { echo "run.sh: $test is not built" >&2; exit 1; }

    folder=$(mktemp -d)
    server=
    trap '[ -z "$server" ] || kill "$server" 2>/dev/null || :; rm -rf "$folder"' EXIT
    trap 'exit 1' HUP INT TERM

    # The settings are read from a file, so that neither those of the person nor a service for them matter: the input
    # method begins with hiragana.
    mkdir -p "$folder/config/glib-2.0/settings"
    cat >"$folder/config/glib-2.0/settings/keyfile" <<END
[org/freedesktop/ibus/engine/anthy/common]
input-mode=0
END
    mkdir -m 700 "$folder/run"
    export HOME="$folder" XDG_CONFIG_HOME="$folder/config" XDG_CACHE_HOME="$folder/cache" XDG_DATA_HOME="$folder/data" \
        XDG_RUNTIME_DIR="$folder/run" GSETTINGS_BACKEND=keyfile
    # The engine is a script of the system's own interpreter.
    export PATH="/usr/bin:/bin"
    unset IBUS_ADDRESS WAYLAND_DISPLAY XAUTHORITY

    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$folder/display" >"$folder/server.log" 2>&1 &
    server=$!
    for _ in $(seq 1 100); do
        [ ! -s "$folder/display" ] || break
        sleep 0.1
    done
    [ -s "$folder/display" ] || { cat "$folder/server.log" >&2; exit 1; }
    DISPLAY=:$(cat "$folder/display")
    export DISPLAY
    status=0
    dbus-run-session -- "$0" --inside "$folder" "$@" 2>"$folder/bus.log" || status=$?
    [ $status = 0 ] || grep -v '^dbus-daemon' "$folder/bus.log" >&2 || :
    exit $status
fi

folder=$2
shift 2
openbox >"$folder/openbox.log" 2>&1 &
ibus-daemon --panel=disable --daemonize >"$folder/ibus.log" 2>&1
for _ in $(seq 1 100); do
    if ibus engine anthy 2>/dev/null && [ "$(ibus engine 2>/dev/null)" = anthy ]; then
        break
    fi
    sleep 0.1
done
[ "$(ibus engine)" = anthy ] || { echo "run.sh: anthy does not come" >&2; exit 1; }

result=0
QT_QPA_PLATFORM=xcb QT_IM_MODULE=ibus QT_LINUX_ACCESSIBILITY_ALWAYS_ON=0 QUILLON_COPIES=off \
    timeout -s KILL 600 "$test" "$@" || result=$?
ibus exit || :
exit $result
