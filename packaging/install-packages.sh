#!/bin/sh
# Installs the Debian packages that a task needs, and only those that are missing.
# Usage: install-packages.sh GROUP...   with the groups build, test, check, asan, bench, run, display,
# input-method, wayland, package, icons, root, windows, wine
set -eu

packages=
for group in "$@"; do
    case $group in
        build) # what compiles the program: clang, because its precompiled headers make Qt sources cheap
            packages="$packages cmake clang lld ninja-build pkgconf qt6-base-dev qt6-translations-l10n
                libsqlite3-dev libicu-dev libglib2.0-dev python3" ;;
        test) # what the tests find on the computer: a small Japanese font, one with Chinese forms beside the Japanese
            # ones, the types of files, the shells of completions
            packages="$packages fonts-ipafont-gothic fonts-noto-cjk shared-mime-info zsh fish" ;;
        check) # what reads the sources: their format, the usual mistakes, the scripts, and a second compiler
            packages="$packages clang-format clang-tidy shellcheck g++ git" ;;
        asan) # what the sanitizers and the fuzzers link
            packages="$packages libclang-rt-14-dev" ;;
        bench) # what the benchmarks are built with, and what they are compared with
            packages="$packages libbenchmark-dev valgrind ripgrep" ;;
        run) # what the running program finds: a good Japanese font and the types of files
            packages="$packages fonts-noto-cjk shared-mime-info" ;;
        display) # a screen in memory with a window manager
            packages="$packages xvfb openbox" ;;
        input-method) # how Japanese is typed, and what presses the keys for a test of it
            packages="$packages ibus ibus-anthy xdotool dbus" ;;
        wayland) # the toolkit's way to a Wayland desktop without X
            packages="$packages qt6-wayland" ;;
        package) # what makes packages and reads them
            packages="$packages g++ git dpkg-dev debhelper lintian desktop-file-utils appstream jq" ;;
        icons) # what makes the sizes of the icon out of its drawing
            packages="$packages librsvg2-bin icoutils" ;;
        root) # a Debian system inside this one
            packages="$packages debootstrap" ;;
        windows) # what makes programs for Windows: the compiler, what Qt and SQLite are built with, the installer
            packages="$packages g++-mingw-w64-x86-64-posix mingw-w64-tools cmake ninja-build perl python3 dpkg-dev patch tcl
                git qt6-base-dev qt6-base-dev-tools qt6-translations-l10n nsis" ;;
        wine) # what runs them here, with Japanese texts and fonts
            packages="$packages wine wine64 xvfb xauth openbox xdotool imagemagick unzip locales
                fonts-noto-cjk fonts-ipafont-gothic" ;;
        *)
            echo "install-packages.sh: unknown group '$group'" >&2
            exit 2 ;;
    esac
done

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "This is no Debian system; going on without installing anything. Needed are the equivalents of:" >&2
    # shellcheck disable=SC2086  # a list of words
    echo "  "$packages >&2
    exit 0
fi

missing=
for package in $packages; do
    # shellcheck disable=SC2016  # the format is dpkg-query's, not the shell's
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) || status=
    [ "$status" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    as_root=
elif command -v sudo >/dev/null 2>&1; then
    as_root=sudo
else
    echo "These packages are missing and only an administrator can install them:$missing" >&2
    echo "As root, run:  apt-get install --no-install-recommends$missing" >&2
    exit 1
fi

echo "Installing the missing packages:$missing"
# shellcheck disable=SC2086  # an empty word must vanish, a list of words must stay one
{
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
}

# New packages may bring new versions of headers that are older by their date than what was compiled from them: the
# build would take its precompiled headers for up to date, and the compiler would refuse them.
build=$(dirname -- "$0")/../build
[ ! -d "$build" ] || find "$build" -name '*.pch' -delete
