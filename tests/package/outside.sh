#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# outside.sh CMAKE BUILD: two programs that know nothing but what is installed, in a folder with a blank in its
# name: a service, built with g++ by what pkg-config says, and its test, built with clang++ and find_package.
# Both run on the installed virtual television.
# outside.sh CMAKE --installed PREFIX: the same with what is installed, or was unpacked, there.
set -eu
cmake=$1 build=$2
[ "$build" != --installed ] || prefix=$3
cd "$(dirname "$0")/outside"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
    echo "$1" >&2
    exit 1
}
if [ "$build" != --installed ]; then
    prefix="$work/a television"
    "$cmake" --install "$build" --prefix "$prefix" >"$work/log"
fi
kep_pc=$(find "$prefix"/lib* -name kep.pc)
lib=$(dirname "$(dirname "$kep_pc")")
[ "$prefix" = /usr ] || export LD_LIBRARY_PATH="$lib"
export KEP_VIRTUALTV_STATE="$work/cards.state"

# --- What kep.pc says
if [ "$build" = --installed ] && [ "$prefix" != /usr ]; then # unpacked elsewhere than where packages belong
    sed "s|^prefix=.*|prefix=$prefix|" "$kep_pc" >"$work/kep.pc"
    kep_pc=$work/kep.pc
fi
export PKG_CONFIG_PATH="${kep_pc%/*}"
[ "$(pkg-config --variable=prefix kep)" = "$prefix" ] || fail "kep.pc: the prefix is not $prefix"
[ "$(pkg-config --variable=libdir kep)" = "$lib" ] || fail "kep.pc: libdir is not $lib"
for name in $(pkg-config --libs-only-l kep); do
    case $name in
    -lkep*)
        [ -e "$lib/lib${name#-l}.so" ] || [ -e "$lib/lib${name#-l}.a" ] ||
            fail "kep.pc names $name, which is not installed"
        ;;
    esac
done

# --- A service
eval "$(command -v g++ || echo c++) -std=c++17 -Wall -Wextra -Wpedantic -Werror service.cpp \
    $(pkg-config --cflags --libs kep) -o '$work/service'"
(
    exports=$("$prefix/bin/kepctl" env)
    eval "$exports"
    KEP_CONFIG_DIR=$prefix/share/doc/kep/examples/TV timeout 60 "$work/service" >"$work/out" 2>"$work/log"
) || fail "the service ended with $?"
grep -qx 'the service is content' "$work/out" || fail "the service said: $(cat "$work/out")"

# --- Its test
"$cmake" -S . -B "$work/build of a test" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$(command -v clang++ || command -v c++)" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror" \
    >"$work/log" 2>&1 && "$cmake" --build "$work/build of a test" >>"$work/log" 2>&1 || {
    cat "$work/log"
    fail "the service's test cannot be built"
}
timeout 60 "$work/build of a test/servicetest" "$prefix/share/doc/kep/examples/ALSA" >"$work/out" 2>"$work/log" ||
    fail "the service's test ended with $?"
grep -q '^the test saw [1-9]' "$work/out" || fail "the service's test said: $(cat "$work/out")"

[ "$build" != --installed ] || exit 0
# --- Without the virtual television there is still the library
rm "$lib"/libkepvirtualtv.so
! "$cmake" -S . -B "$work/without" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 ||
    fail "find_package finds a virtual television that is not there"
grep -q virtualtv "$work/log" || fail "find_package does not say what is missing: $(cat "$work/log")"
