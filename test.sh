#!/bin/sh
# Installs what is missing, builds the program with its tests and runs them all.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

sh "$root/packaging/install-packages.sh" build test
cd "$root"
cmake --preset dev
cmake --build --preset dev
exec ctest --preset dev
