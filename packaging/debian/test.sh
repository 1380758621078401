#!/bin/sh
# Tries the Debian package in a fresh system of its own: installs it, starts it from the menu's entry, by opening a
# database and under circumstances that nobody wishes for, removes and purges it, and sees that nothing but the
# person's own data is left.
# Usage: packaging/debian/test.sh [PACKAGE]    else the one in build/debian
# Needs root, for it makes the system with debootstrap, from where this machine has its own packages.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
root=$(CDPATH='' cd -- "$here/../.." && pwd)
package=${1:-$(find "$root/build/debian" -name 'quillon_*.deb' | head -n 1)}
if [ -z "$package" ] || [ ! -f "$package" ]; then
    echo "test.sh: there is no package; packaging/debian/build.sh makes it" >&2
    exit 2
fi
sh "$root/packaging/install-packages.sh" root

# Mounts and processes of its own: with this script they all end.
if [ -z "${QUILLON_OWN_MOUNTS:-}" ]; then
    QUILLON_OWN_MOUNTS=yes unshare --mount --pid --fork --kill-child sh "$0" "$package" || exit
    exit 0
fi

# The bare system is made once; every trial has a copy of it.
base=$root/build/debian-root
system=$base.trial
if [ ! -f "$base/made" ]; then
    rm -rf --one-file-system "$base"
    mkdir -p "$base"
    # shellcheck disable=SC2016  # apt's own format
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
    suite=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    debootstrap --variant=minbase "$suite" "$base" "$mirror" >"$base.log" || {
        tail -n 20 "$base.log" >&2
        exit 1
    }
    rm -f "$base/etc/apt/sources.list"
    cp -R /etc/apt/. "$base/etc/apt/"
    rm -f "$base"/etc/apt/sources.list.d/*.disabled* "$base"/etc/apt/apt.conf.d/*listchanges*
    touch "$base/made"
fi
rm -rf --one-file-system "$system"
cp -a "$base" "$system"
trap 'umount "$system/proc" "$system/dev/shm" 2>/dev/null || :; rm -rf --one-file-system "$system"' EXIT
# Nothing of this machine is mounted inside, so nothing of it can be removed with it; the bare system has devices.
mount -t proc proc "$system/proc"
mkdir -p "$system/dev/shm"
mount -t tmpfs -o mode=1777 tmpfs "$system/dev/shm"
cp /etc/resolv.conf "$system/etc/resolv.conf"
cp "$package" "$system/tmp/quillon.deb"
cp "$here/trial.sh" "$here/circumstances.sh" "$system/tmp/"
chroot "$system" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive sh /tmp/trial.sh
