#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# debian.sh SOURCE FOLDER: builds the Debian packages into the folder, from a copy of the sources and without
# network, asks lintian, compares the interface with what is recorded, and works with the packages unpacked.
# debian.sh SOURCE FOLDER --record: records the interface anew.
set -eu
source=$1 folder=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
    echo "$*" >&2
    exit 1
}
quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log"
        fail "failed: $*"
    }
}

# --- Build
mkdir -p "$work/kep" "$folder"
(cd "$source" && tar -c --exclude=./build --exclude=./.git .) | tar -xC "$work/kep"
alone=""
! unshare -n true 2>/dev/null || alone="unshare -n"
cd "$work/kep"
DEB_BUILD_OPTIONS="parallel=$(nproc) noautodbgsym" quietly $alone dpkg-buildpackage -b -us -uc

# --- The interface. A program that was linked before has to run on.
abi=$source/packaging/abi
library=$(echo "$work"/kep/obj-*/lib/libkep.so)
set -- "${3:-}"
if [ "$1" = --record ]; then
    abidw --headers-dir include --drop-private-types --no-show-locs --no-corpus-path --no-comp-dir-path \
        --exported-interfaces-only --out-file "$abi/libkep.abi" "$library"
fi
if [ "$(dpkg --print-architecture)" = amd64 ]; then
    abidiff --headers-dir2 include --drop-private-types "$abi/libkep.abi" "$library" ||
        fail "the interface is not what packaging/abi/libkep.abi says; if it is meant: ./kep package --record, and a" \
            "line in CHANGELOG.md"
fi

# --- What the packages look like
lintian --fail-on error,warning "$work"/*.changes || fail "lintian finds something"
rm -f "$folder"/*.deb
cp "$work"/*.deb "$folder/"

# --- Unpacked, they work where they are
root="$work/an other machine"
for package in "$folder"/*.deb; do
    dpkg-deb -x "$package" "$root"
done
[ ! -e "$root/etc" ] || fail "the packages hold configuration"
lib=$(dirname "$(find "$root/usr/lib" -name libkep.so.0)")
(
    export LD_LIBRARY_PATH="$lib" KEP_VIRTUALTV_STATE="$work/cards.state"
    quietly "$root/usr/share/kep/demo/play" "$root/usr/bin/kepctl"
)
sh "$source/tests/package/outside.sh" cmake --installed "$root/usr"

# --- The sources of the package are enough for a port.
tar -xf "$root"/usr/src/kep-*.tar.gz -C "$work"
(cd "$work"/kep-*/ && quietly cmake -S . -B "$work/port" -DKEP_PLATFORM=examples/port/veltora.cmake)
echo "packages in $folder"
