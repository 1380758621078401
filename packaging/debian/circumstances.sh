#!/bin/sh
# The installed program under circumstances that nobody wishes for; trial.sh reads this in the fresh system, with its
# functions and its person on the display :7. Each time the program must start, and say what is missing, if anything.
# shellcheck disable=SC2034,SC2154  # what trial.sh and this tell each other

said=/tmp/said

# Starts the program as the person. What it says goes to $said.
# Usage: start [NAME=VALUE]... -- [WORD]...
start()
{
    : >"$said"
    settings=
    while [ "$1" != -- ]; do
        settings="$settings $1"
        shift
    done
    shift
    # shellcheck disable=SC2086  # a list of settings without blanks
    person env $settings quillon "$@" >/dev/null 2>"$said" &
}

# The program shows a box of its start and has said this; the box is answered.
told()
{
    box=$(window '^Quillon システム運用部$') || fail "$circumstance: no box tells it. $(cat "$said")"
    on_screen "$box" 1280 1024
    grep -qF -e "$1" "$said" || fail "$circumstance: this is not told: $1. Instead: $(cat "$said")"
    press "$box" Return
}

# Another box of the start is answered.
answered()
{
    box=$(window '^Quillon システム運用部$') || fail "$circumstance: there is no box. $(cat "$said")"
    press "$box" Return
}

# Presses a key in a window until that is gone: a window manager takes its time to give it the keyboard.
press()
{
    for _ in $(seq 1 50); do
        person xdotool windowactivate "$1" key --clearmodifiers "$2" >/dev/null 2>&1 || :
        for _ in $(seq 1 10); do
            person xdotool getwindowname "$1" >/dev/null 2>&1 || return 0
            sleep 0.1
        done
    done
    fail "$circumstance: the box does not go"
}

# The main window has come.
arrived()
{
    main=$(window '^Quillon メイン画面') || fail "$circumstance: the main window does not come. $(cat "$said")"
}

# Nothing was missing, so nothing was said.
silent()
{
    ! grep -q '^quillon: ' "$said" || fail "$circumstance: it complains: $(cat "$said")"
}

finish()
{
    pkill -u person -x quillon || fail "$circumstance: the program has gone by itself. $(cat "$said")"
    gone || fail "$circumstance: the program does not end"
}

# The program holds this file open.
holds()
{
    for _ in $(seq 1 150); do
        if find /proc/"$(pgrep -u person -x quillon)"/fd -lname "*$1" 2>/dev/null | grep -q .; then
            return 0
        fi
        sleep 0.2
    done
    fail "$circumstance: $1 was not opened. $(cat "$said")"
}

# A window shows the icon and lies on the screen with its frame.
# Usage: on_screen WINDOW WIDTH HEIGHT
on_screen()
{
    person xprop -id "$1" _NET_WM_ICON | grep -q 'Icon (16 x 16)' || fail "$circumstance: a window has no icon"
    # From left, right, top and bottom, as -geometry has it: a negative distance lies outside.
    person xwininfo -frame -id "$1" >/tmp/place
    left=$(sed -n 's/.*Absolute upper-left X: *//p' /tmp/place)
    top=$(sed -n 's/.*Absolute upper-left Y: *//p' /tmp/place)
    right=$((left + $(sed -n 's/.* Width: *//p' /tmp/place)))
    bottom=$((top + $(sed -n 's/.* Height: *//p' /tmp/place)))
    if [ "$left" -lt 0 ] || [ "$top" -lt 0 ] || [ $right -gt "$2" ] || [ $bottom -gt "$3" ]; then
        fail "$circumstance: $(person xdotool getwindowname "$1") reaches from $left,$top to $right,$bottom"
    fi
}

circumstance="as it should be"
say "$circumstance"
start -- --home
arrived
silent
finish

circumstance="no input method plugin"
say "$circumstance"
start QT_IM_MODULE=nonexistent -- --home
told "入力メソッド「nonexistent」の Qt 6 用の部品が見つからない"
arrived
finish
start QT_IM_MODULE=ibus -- --home
arrived
silent
finish

circumstance="no Japanese font"
say "$circumstance"
mkdir -p /tmp/fonts
cat >/tmp/fonts/fonts.conf <<END
<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>/tmp/fonts</cachedir></fontconfig>
END
chmod 1777 /tmp/fonts
[ -d /usr/share/fonts/truetype/dejavu ] || fail "there is no font without Japanese to try it with"
start FONTCONFIG_FILE=/tmp/fonts/fonts.conf -- --home
told "日本語のフォントが見つからない"
grep -q "No Japanese font was found" "$said" || fail "$circumstance: it is not told in English"
arrived
finish

circumstance="no accessibility bus"
say "$circumstance"
start DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 -- --home
arrived
silent
finish

circumstance="a home that cannot be written"
say "$circumstance"
mkdir -p /tmp/locked
chmod 555 /tmp/locked
start HOME=/tmp/locked -- --home "/home/person/知識.mdb"
told "作業フォルダ「/tmp/locked/Documents/Quillon」を用意できませんでした。"
told "控えを残すフォルダ「/tmp/locked/.local/share/quillon」に書き込めません。"
answered # where it was started instead, there is no folder of files
holds 知識.mdb
finish
# What cannot be kept is told by the other program, too, and the work itself is done.
person env HOME=/tmp/locked quillon-cli --database "/home/person/知識.mdb" add definition 火 --text 熱いもの \
    >/tmp/identifier 2>"$said"
person env HOME=/tmp/locked quillon-cli --database "/home/person/知識.mdb" delete --yes "$(cat /tmp/identifier)" \
    2>"$said"
grep -q '上書きまたは削除された内容を「/tmp/locked/.*」に残せませんでした' "$said" ||
    fail "$circumstance: nothing tells that nothing is kept. $(cat "$said")"
person quillon-cli --database "/home/person/知識.mdb" list | grep -q 水 || fail "$circumstance: something is lost"
# The folder itself is there, but belongs to somebody else.
mkdir -p /tmp/others/RefFile
start QUILLON_HOME=/tmp/others -- --home
told "作業フォルダ「/tmp/others」に書き込めません。"
arrived
finish

circumstance="a locale without UTF-8"
say "$circumstance"
# A locale of those days, and none at all.
for locale in ja_JP.eucJP C; do
    other="/home/person/$locale の知識"
    mkdir -p "$other"
    chown person "$other"
    person env LC_ALL=$locale quillon-cli --database "$other/庫.mdb" create >/dev/null
    person env LC_ALL=$locale quillon-cli --database "$other/庫.mdb" add definition 水 --text 液体 >/dev/null
    [ -f "$other/庫.mdb" ] || fail "$circumstance: the database has another name: $(ls "$other")"
    start LC_ALL=$locale "QUILLON_HOME=$home" -- --home "$other/庫.mdb"
    holds 庫.mdb
    arrived
    silent
    finish
    # The names that the first use makes are the same everywhere.
    start LC_ALL=$locale QUILLON_HOME=/home/person/家 -- --home
    arrived
    [ -f "/home/person/家/Quillon 機能仕様.txt" ] || fail "$circumstance: the text has another name"
    finish
    rm -r /home/person/家
done

circumstance="a screen of 1024x600"
say "$circumstance"
Xvfb :8 -screen 0 1024x600x24 -nolisten tcp >/dev/null 2>&1 &
small=$!
for _ in $(seq 1 50); do
    person env DISPLAY=:8 xdotool getmouselocation >/dev/null 2>&1 && break
    sleep 0.1
done
display=:8
person openbox >/dev/null 2>&1 &
start -- --home "/home/person/知識.mdb"
holds 知識.mdb
arrived
on_screen "$main" 1024 600
# The last entry is the one above the first; no key has the letter that is underlined in it.
for kind in m:定義データ画面 r:文献データ画面 Up,Return:ファイルデータ登録画面; do
    # shellcheck disable=SC2046  # a list of keys
    person xdotool windowactivate --sync "$main" key alt+d sleep 0.5 key e sleep 0.5 \
        key $(echo "${kind%:*}" | tr , ' ')
    shown=$(window "^${kind#*:}") || fail "$circumstance: ${kind#*:} does not come"
    on_screen "$shown" 1024 600
done
finish
start -- --restore "/home/person/知識.mdb"
shown=$(window '^Quillon 復元画面') || fail "$circumstance: the window to take things back does not come"
on_screen "$shown" 1024 600
finish
kill $small
display=:7

circumstance="Wayland"
say "$circumstance"
person weston --backend=headless-backend.so --socket=wayland-trial --idle-time=0 >/tmp/weston 2>&1 &
for _ in $(seq 1 100); do
    [ ! -S /tmp/person/wayland-trial ] || break
    sleep 0.1
done
[ -S /tmp/person/wayland-trial ] || fail "$circumstance: there is no desktop. $(cat /tmp/weston)"
start -u DISPLAY WAYLAND_DISPLAY=wayland-trial XDG_SESSION_TYPE=wayland WAYLAND_DEBUG=1 -- \
    --home "/home/person/知識.mdb"
holds 知識.mdb
# What the program and the desktop tell each other: its window has a title and a size, and a picture to show.
for word in 'xdg_toplevel@[0-9]*.set_title("Quillon メイン画面' 'xdg_toplevel@[0-9]*.set_app_id("quillon")' \
    'xdg_surface@[0-9]*.ack_configure' 'wl_surface@[0-9]*.attach(wl_buffer'; do
    grep -q -e "$word" "$said" || fail "$circumstance: the window is not shown: no $word"
done
silent
finish
# A desktop that has gone away is told, and is no crash.
pkill -u person -x weston
result=0
person env -u DISPLAY WAYLAND_DISPLAY=wayland-trial XDG_SESSION_TYPE=wayland quillon --home 2>"$said" || result=$?
[ $result = 1 ] || fail "$circumstance: without a desktop it ends with $result"
grep -q '画面に接続できないため、起動できませんでした。' "$said" || fail "$circumstance: $(cat "$said")"
