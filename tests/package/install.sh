#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# install.sh CMAKE BUILD SOURCE: what is installed works from where it is, names no folder of the machine that
# built it, is hardened, and touches no configuration.
set -eu
cmake=$1 build=$2 source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
    echo "$*" >&2
    exit 1
}
prefix=$work/prefix
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

named=$(grep -rlE "$build/|$source/" "$prefix") || true
[ -z "$named" ] || fail "names a folder of this machine: $named"

export KEP_VIRTUALTV_STATE="$work/cards.state"
echo '{"call": "initialize"}' >"$work/script"
for backend in ALSA TV; do
    "$prefix/bin/kepctl" run --backend "$backend" --strict "$work/script"
done

# --- Each component is of use by itself: the first lines of what it has
# has COMPONENT FILE...: installed alone, it has these files, and none of any other component.
: >"$work/all"
has() {
    component=$1
    shift
    "$cmake" --install "$build" --prefix "$work/$component" --component "$component" >/dev/null
    for file in "$@"; do
        [ -n "$(find "$work/$component" -path "$work/$component/$file")" ] || fail "$component: no $file"
    done
    (cd "$work/$component" && find . ! -type d) >>"$work/all"
}
has runtime 'lib*/libkep.so.0' 'lib*/libkepplatform.so.0'
has development 'lib*/libkep.so' 'lib*/pkgconfig/kep.pc' 'lib*/cmake/kep/kepConfig.cmake' include/kep/kepclient.h \
    include/kep/jvalue.h include/kep/virtualtv/journal.h share/doc/kep/examples/TV/kep-config.json
has tools bin/kepctl share/kep/TV/kep-config.json share/kep/demo/evening.jsonl
has virtualtv 'lib*/libkepdevice.so.0' 'lib*/kep/virtualtv.conf'
(cd "$prefix" && find . ! -type d) | sort >"$work/whole"
sort "$work/all" | diff - "$work/whole" || fail "the components are not the whole, each file once"

# --- The configuration is the machine's own
[ ! -e "$prefix/etc" ] || fail "installs into etc"

# --- A system prefix: libraries are found without being told where
DESTDIR=$work/system "$cmake" --install "$build" --prefix /usr >/dev/null
for file in "$work"/system/usr/bin/kepctl $(find "$work/system" -name '*.so.*.*.*' -o -name '*.so' -type f); do
    ! readelf -d "$file" | grep -E 'R(UN)?PATH' || fail "$file has a runpath"
done

# --- Hardened
for file in "$prefix/bin/kepctl" $(find "$prefix" -name '*.so.*.*.*' -o -name '*.so' -type f); do
    name=${file##*/}
    readelf -lW "$file" | grep -q GNU_RELRO || fail "$name: no relro"
    readelf -d "$file" | grep -q 'Flags:.* NOW\|Flags: NOW' || fail "$name: symbols are not bound at start"
    readelf -sW --dyn-syms "$file" | grep -q __stack_chk_fail || fail "$name: no stack protector"
    readelf -lW "$file" | grep 'GNU_STACK' | grep -q ' RW ' || fail "$name: the stack may be executed"
    case $name in
    kepctl) readelf -h "$file" | grep -q 'DYN.*Position-Independent' || fail "$name: no PIE" ;;
    esac
done
readelf -sW --dyn-syms "$prefix/bin/kepctl" | grep -q '__[a-z]*_chk@' || fail "kepctl is not fortified"
for definition in $(sed -n 's/.* \(-D_FORTIFY_SOURCE=[0-9]\) .*/\1/p' "$build/compile_commands.json" | sort -u); do
    [ "$definition" = -D_FORTIFY_SOURCE=3 ] || fail "fortified by $definition"
done

# --- Whoever sets the level keeps it
"$cmake" -S "$source" -B "$work/build" -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS="-Werror -D_FORTIFY_SOURCE=2" >/dev/null
! grep -q 'FORTIFY_SOURCE=3' "$work/build/compile_commands.json" || fail "redefines _FORTIFY_SOURCE"
"$cmake" -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS= >/dev/null
! grep -q 'FORTIFY_SOURCE' "$work/build/compile_commands.json" || fail "fortifies what is not optimized"
