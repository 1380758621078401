#!/bin/sh
# Tries under wine what build.sh has made: the zip from a folder of any name, then the installer. Installs for one person,
# starts the program on a virtual display, registers, searches, opens a database as a double click does, sees that it is
# dark on a dark system, uninstalls, and sees that nothing but the person's own data is left.
# Usage: packaging/windows/test.sh [FOLDER]    else build/windows; what is tried lies in build/windows/trial
# Pictures of the started program stay there: main.png, opened.png, dark.png.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
root=$(CDPATH='' cd -- "$here/../.." && pwd)
folder=${1:-$root/build/windows}
version=$(sed -n 's/^project(Quillon VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
archive=$folder/quillon-$version-windows-x64.zip
setup=$folder/quillon-$version-windows-x64-setup.exe
if [ ! -f "$archive" ] || [ ! -f "$setup" ]; then
    echo "test.sh: there is nothing to try in $folder; packaging/windows/build.sh makes it" >&2
    exit 2
fi
sh "$root/packaging/install-packages.sh" wine

# Everything is new: the computer, the person, and his folders.
trial=$root/build/windows/trial
rm -rf "$trial"
mkdir -p "$trial/home" "$trial/箱 1"
export QUILLON_WINE="$trial/computer" HOME="$trial/home"
unset QT_QPA_PLATFORM QUILLON_HOME QUILLON_DATABASE 2>/dev/null || :

wine()
{
    "$here/wine.sh" "$@"
}

# Ends when the last program of that computer has ended.
settled()
{
    WINEPREFIX="$QUILLON_WINE/prefix" timeout 60 /usr/lib/wine/wineserver64 --wait
}

fail()
{
    echo "test.sh: $1" >&2
    exit 1
}

# What the command writes has a line of that pattern; that system ends its lines in its own way.
says()
{
    wanted=$1
    shift
    "$@" >"$trial/said" 2>"$trial/complained" || {
        cat "$trial/said" "$trial/complained" >&2
        fail "$* has failed"
    }
    tr -d '\r' <"$trial/said" | grep -q -- "$wanted" || {
        cat "$trial/said" >&2
        fail "$* does not say '$wanted'"
    }
}

if [ -z "${DISPLAY:-}" ] || [ -z "${QUILLON_OWN_DISPLAY:-}" ]; then
    QUILLON_OWN_DISPLAY=yes exec xvfb-run -a -s "-screen 0 1280x900x24" sh "$0" "$folder"
fi
openbox >"$trial/openbox.log" 2>&1 &
manager=$!
trap 'kill "$manager" 2>/dev/null || :; WINEPREFIX="$QUILLON_WINE/prefix" /usr/lib/wine/wineserver64 --kill 2>/dev/null || :' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

echo "== the zip"
python3 -X utf8 -c '
import sys, zipfile
sys.exit(not any(name.endswith("/Quillon 機能仕様.txt") for name in zipfile.ZipFile(sys.argv[1]).namelist()))' "$archive" ||
    fail "the zip does not say what its names are written in"
unzip -q "$archive" -d "$trial/箱 1"
box="$trial/箱 1/quillon-$version-windows-x64"
for program in quillon quillon-cli; do
    for line in "^[Qq]uillon.* System Ver\.$version " '^コミット: [0-9a-f]\{12\}$' '^Qt: [0-9]' '^SQLite: [0-9]'; do
        says "$line" wine "$box/$program.exe" --version
    done
done
cd "$trial/箱 1"
wine "$box/quillon-cli.exe" --database 知識.mdb create
says '^M-' wine "$box/quillon-cli.exe" --database 知識.mdb add definition 水 --text 無色透明の液体
says "水" wine "$box/quillon-cli.exe" --database 知識.mdb search 液体
wine "$box/quillon-cli.exe" --database 知識.mdb check >/dev/null || fail "the database is damaged"
settled

echo "== the installation"
wine "$setup" /S /CurrentUser
settled
person=$QUILLON_WINE/prefix/drive_c/users/$(id -un)
# Wine takes for these a folder outside of its computer.
rm -f "$person/Documents"
mkdir -p "$person/Documents"
place=$person/AppData/Local/Programs/Quillon
menu="$person/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Quillon"
for file in "$place/quillon.exe" "$place/quillon-cli.exe" "$place/Readme.txt" "$place/manual/manual.html" \
    "$place/manual/manual.css" "$place/manual/images/main.png" "$place/uninstall.exe" "$menu/Quillon.lnk"; do
    [ -f "$file" ] || fail "$file is missing"
done
[ "$(find "$menu" -name '*.lnk' | wc -l)" = 2 ] || fail "the menu lacks an entry"
says "--home" wine reg query 'HKCU\Software\Classes\Quillon.Database\shell\open\command'
says "Quillon.Database" wine reg query 'HKCU\Software\Classes\.mdb\OpenWithProgids'
says "DisplayName" wine reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon'

# Waits for the window whose title begins so.
window()
{
    waited=0
    until for number in $(xdotool search --onlyvisible --name '' 2>/dev/null); do
        xdotool getwindowname "$number" 2>/dev/null || :
    done | grep -q "^$1"; do
        waited=$((waited + 1))
        [ $waited -lt 60 ] || return 1
        sleep 1
    done
}

echo "== the start from the menu"
wine start /unix "$menu/Quillon.lnk"
window 'Quillon メイン画面' || fail "no window comes"
import -window root "$trial/main.png"
home=$person/Documents/Quillon
[ -d "$home" ] || fail "the program has made no folder for its work"
for name in RefFile Readme.txt "Quillon 機能仕様.txt"; do
    [ -e "$home/$name" ] || fail "$name is missing in $home"
done
WINEPREFIX="$QUILLON_WINE/prefix" /usr/lib/wine/wineserver64 --kill
settled

echo "== registering and searching"
cd "$home"
printf 'of the person\r\n' >水の本.txt
wine "$place/quillon-cli.exe" --database 知識.mdb create
says '^M-' wine "$place/quillon-cli.exe" --database 知識.mdb add definition 氷 --text 固体の水
says '^F-' wine "$place/quillon-cli.exe" --database 知識.mdb attach 水の本.txt
says "氷" wine "$place/quillon-cli.exe" --database 知識.mdb search 固体
[ -n "$(find RefFile -type f)" ] || fail "the registered file was not copied"

echo "== a double click"
# Wine does not look among the classes of one person; so the registered command is taken apart here.
registered=$(wine reg query 'HKCU\Software\Classes\Quillon.Database\shell\open\command' | tr -d '\r' |
    LC_ALL=C sed -n 's/^.*REG_SZ  *//p')
eval "set -- $(printf '%s' "$registered" | sed 's/\\/\\\\/g')"
if [ $# != 4 ] || [ "$4" != %1 ]; then
    fail "what is registered is $registered"
fi
wine "$1" "$2" "$3" "$(printf 'Z:%s' "$home/知識.mdb" | tr / '\134')" &
window 'Quillon メイン画面' || fail "no window comes"
waited=0
until find /proc/[0-9]*/fd -lname "$home/知識.mdb" 2>/dev/null | grep -q .; do
    waited=$((waited + 1))
    [ $waited -lt 30 ] || fail "the database is not opened"
    sleep 1
done
import -window root "$trial/opened.png"
WINEPREFIX="$QUILLON_WINE/prefix" /usr/lib/wine/wineserver64 --kill
settled

echo "== a dark system"
wine reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize' \
    /v AppsUseLightTheme /t REG_DWORD /d 0 /f >/dev/null
settled
wine start /unix "$menu/Quillon.lnk"
window 'Quillon メイン画面' || fail "no window comes"
sleep 2 # for it to be drawn
import -window root "$trial/dark.png"
# Title bars are drawn by the display here; the system's own follow the window, which is most of the picture.
light=$(convert "$trial/dark.png" -colorspace Gray -format '%[fx:int(100*mean)]' info:)
[ "$light" -lt 40 ] || fail "the window is light on a dark system: $light of 100"

echo "== the end of the session"
pgrep -f 'quillon\.exe.* --home' >/dev/null || fail "the program is not among what runs"
timeout 60 "$here/wine.sh" wineboot --end-session >/dev/null 2>&1 || :
waited=0
while pgrep -f 'quillon\.exe.* --home' >/dev/null; do
    waited=$((waited + 1))
    [ $waited -lt 15 ] || fail "the program keeps the session from ending"
    sleep 1
done
WINEPREFIX="$QUILLON_WINE/prefix" /usr/lib/wine/wineserver64 --kill
settled

echo "== the end"
find "$home" -type f -exec md5sum {} + | LC_ALL=C sort >"$trial/before"
wine "$place/uninstall.exe" /CurrentUser /S
settled
[ ! -e "$place" ] || fail "left in $place: $(ls "$place")"
[ ! -e "$menu" ] || fail "the menu has kept its entries"
for key in 'HKCU\Software\Quillon' 'HKCU\Software\Classes\Quillon.Database' \
    'HKCU\Software\Classes\Applications\quillon.exe' 'HKCU\Software\Classes\.mdb\OpenWithProgids' \
    'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon'; do
    ! wine reg query "$key" >/dev/null 2>&1 || fail "$key is left"
done
find "$home" -type f -exec md5sum {} + | LC_ALL=C sort | cmp "$trial/before" - || fail "the person's files have changed"

echo "== where it is told to"
wine "$setup" /S /CurrentUser '/D=C:\別の場所'
settled
place=$QUILLON_WINE/prefix/drive_c/別の場所
[ -f "$place/quillon.exe" ] || fail "it was not installed in the folder of /D"
wine "$place/uninstall.exe" /CurrentUser /S
settled
[ ! -e "$place" ] || fail "left in $place: $(ls "$place")"

echo "== for everybody"
wine "$setup" /S /AllUsers
settled
place="$QUILLON_WINE/prefix/drive_c/Program Files/Quillon"
events='HKLM\System\CurrentControlSet\Services\EventLog\Application\Quillon'
says '^コミット' wine "$place/quillon.exe" --version
says "DisplayName" wine reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon'
says 'quillon.exe' wine reg query "$events"
wine "$place/uninstall.exe" /AllUsers /S
settled
[ ! -e "$place" ] || fail "left in $place: $(ls "$place")"
for key in "$events" 'HKLM\Software\Quillon' 'HKLM\Software\Classes\Quillon.Database' \
    'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon'; do
    ! wine reg query "$key" >/dev/null 2>&1 || fail "$key is left"
done
find "$home" -type f -exec md5sum {} + | LC_ALL=C sort | cmp "$trial/before" - || fail "the person's files have changed"
echo "test.sh: everything has been tried"
