#!/bin/sh
# The trial of the package inside the fresh system; test.sh runs it there.
set -eu

say()
{
    echo "== $*"
}

fail()
{
    echo "FAILED: $*" >&2
    exit 1
}

# Everything that is there, less what the package system, caches and the person write.
inventory()
{
    find / -xdev \( -path /proc -o -path /dev -o -path /tmp -o -path /var/cache -o -path /var/lib/apt \
        -o -path /var/lib/dpkg -o -path /var/log -o -path /home -o -path /run \) -prune -o -print | sort
}

person()
{
    runuser -u person -- /usr/bin/env -i PATH=/usr/bin:/bin HOME=/home/person LANG=C.UTF-8 DISPLAY=$display \
        XDG_RUNTIME_DIR=/tmp/person DBUS_SESSION_BUS_ADDRESS="$bus" "$@"
}

# The numbers of the program's windows with this title, of which there have to be so many, else one, within half a
# minute. The older of a window's two titles is written as the program's locale wants it, the newer one always in UTF-8.
# Usage: window TITLE [HOW-MANY]
window()
{
    for _ in $(seq 1 150); do
        found=
        for candidate in $(person xdotool search --onlyvisible --class quillon 2>/dev/null); do
            if person xprop -id "$candidate" _NET_WM_NAME 2>/dev/null | sed -n 's/^[^"]*"\(.*\)"$/\1/p' |
                grep -q -e "$1"; then
                found="$found $candidate"
            fi
        done
        # shellcheck disable=SC2086  # a list of numbers
        set -- "$1" "${2:-1}" $found
        if [ $(($# - 2)) -ge "$2" ]; then
            echo "$3"
            return 0
        fi
        sleep 0.2
    done
    return 1
}

# Waits until the program has ended.
gone()
{
    for _ in $(seq 1 100); do
        pgrep -u person -x quillon >/dev/null || return 0
        sleep 0.1
    done
    return 1
}

say "what the package needs, and what a desktop has"
apt-get update -q >/dev/null
export DEBIAN_FRONTEND=noninteractive
apt-get install -q -y --no-install-recommends xvfb xdotool openbox dbus libglib2.0-bin shared-mime-info \
    desktop-file-utils procps man-db fonts-ipafont-gothic fonts-dejavu-core x11-utils locales weston qt6-wayland \
    >/dev/null
localedef -i ja_JP -f EUC-JP ja_JP.eucJP
# The package's needs stay behind; the package itself has never been here.
apt-get satisfy -q -y --no-install-recommends "$(dpkg-deb --field /tmp/quillon.deb Depends)" >/dev/null
inventory >/tmp/before

say "installing"
apt-get install -q -y --no-install-recommends /tmp/quillon.deb >/dev/null
useradd --create-home person
mkdir -m 700 /tmp/person
chown person /tmp/person
bus=
display=:7
# Whoever reports something has to be able to tell what it was built from.
for program in quillon quillon-cli; do
    person $program --version >/tmp/version
    cat /tmp/version
    grep -q '^コミット: [0-9a-f]\{12\}$' /tmp/version || fail "$program does not tell its commit"
done
[ -n "$(person man -w quillon)" ] || fail "no manual page of quillon"
[ -n "$(person man -w quillon-cli)" ] || fail "no manual page of quillon-cli"
[ -n "$(person man -L ja -w quillon)" ] || fail "no Japanese manual page"
[ -f /usr/share/quillon/manual/manual.html ] || fail "no page of the manual"
[ -s /usr/share/quillon/manual/images/main.png ] || fail "no pictures of the manual"

Xvfb :7 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
server=$!
trap 'kill $server 2>/dev/null || :' EXIT
bus=$(runuser -u person -- dbus-daemon --session --fork --print-address)
for _ in $(seq 1 50); do
    person xdotool getmouselocation >/dev/null 2>&1 && break
    sleep 0.1
done
person openbox >/dev/null 2>&1 &

say "starting from the menu's entry"
cd /home/person
person gio launch /usr/share/applications/quillon.desktop &
# The boxes that complain have titles of the program, too.
main=$(window '^Quillon メイン画面') || fail "no window came"
home=/home/person/Documents/Quillon
for name in RefFile Readme.txt "Quillon 機能仕様.txt"; do
    [ -e "$home/$name" ] || fail "$home/$name was not made"
done
person xdotool getwindowpid "$main" >/dev/null || fail "the window belongs to nobody"
# A second start brings a window of its own.
person gio launch /usr/share/applications/quillon.desktop &
window '^Quillon メイン画面' 2 >/dev/null || fail "the second start brings no window"
pkill -u person -x quillon
gone || fail "the program does not end"

say "opening a database"
person quillon-cli --database "/home/person/知識.mdb" create >/dev/null
person quillon-cli --database "/home/person/知識.mdb" add definition 水 --text 無色透明の液体 >/tmp/identifier
found=$(person quillon-cli --database "/home/person/知識.mdb" search 透明の --identifiers) ||
    fail "what was added is not found"
[ "$found" = "$(cat /tmp/identifier)" ] || fail "the search finds another datum: $found"
if person quillon-cli --database "/home/person/知識.mdb" search 不透明 >/dev/null 2>&1; then
    fail "the search finds what is not there"
fi
printf '覚え書き\n' >/home/person/覚え書き.txt
person quillon-cli --database "/home/person/知識.mdb" --home "$home" attach "/home/person/覚え書き.txt" >/dev/null
cmp -s /home/person/覚え書き.txt "$home/RefFile/覚え書き.txt" || fail "the registered file was not copied"
person quillon-cli --database "/home/person/知識.mdb" list --kind file | grep -q '^F-.*FILE *覚え書き\.txt$' ||
    fail "the registered file is not in the list"
type=$(person gio info -a standard::content-type "/home/person/知識.mdb" | sed -n 's/.*content-type: //p')
[ "$type" = application/x-quillon ] || fail "the database is taken for $type"
printf 'Standard Jet DB of somebody else' >/home/person/other.mdb
type=$(person gio info -a standard::content-type /home/person/other.mdb | sed -n 's/.*content-type: //p')
[ "$type" != application/x-quillon ] || fail "the file of another program is taken for ours"
person gio mime application/x-quillon | grep -q 'quillon.desktop' || fail "nothing opens our files"
person gio open "/home/person/知識.mdb" &
window '^Quillon メイン画面' >/dev/null || fail "opening a database showed no window"
opened=no
for _ in $(seq 1 150); do
    if find /proc/"$(pgrep -u person -x quillon)"/fd -lname '*知識.mdb' 2>/dev/null | grep -q .; then
        opened=yes
        break
    fi
    sleep 0.2
done
[ $opened = yes ] || fail "the database was not opened"
pkill -u person -x quillon
gone || fail "the program does not end"

# shellcheck source=packaging/debian/circumstances.sh
. /tmp/circumstances.sh

say "removing and purging"
dpkg --remove quillon >/dev/null
! command -v quillon || fail "the program is still there"
dpkg --purge quillon >/dev/null 2>&1
[ -f "/home/person/知識.mdb" ] || fail "the person's database is gone"
[ -d "$home/RefFile" ] || fail "the person's folder is gone"
pkill -KILL -u person || :
for _ in $(seq 1 50); do
    pgrep -u person >/dev/null || break
    sleep 0.1
done
userdel person
inventory >/tmp/after
# The person was added to these.
if ! diff /tmp/before /tmp/after >/tmp/left; then
    grep '^[<>]' /tmp/left | grep -v -e '/etc/.*-$' -e '/var/mail' -e '/var/spool/mail' -e '/etc/sub[ug]id' >/tmp/ours || :
    [ ! -s /tmp/ours ] || fail "this is left or missing: $(cat /tmp/ours)"
fi
say "all is well"
