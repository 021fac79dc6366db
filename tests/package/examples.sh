#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# examples.sh CMAKE BUILD SOURCE: the installed examples build by themselves against what is installed, and pass the
# tests of the examples there.
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$1" --install "$2" --prefix "$prefix" >"$work/log"

"$1" -S "$prefix/share/doc/kep/examples" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS='-Wall -Wextra -Wpedantic -Werror' >"$work/log" 2>&1 &&
    "$1" --build "$work/build" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }

LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name libkep.so)")
export LD_LIBRARY_PATH
for name in route volume earc settings backend; do
    sh "$3/tests/examples/examples.sh" "$prefix/bin/kepctl" "$work/build" "$3" "$name"
done
