#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# exports.sh LIST LIBRARY [--record]: the library shows what the list says, and nothing else. A change that is
# meant is recorded, and told in CHANGELOG.md.
set -eu
list=$1 library=$2
shown=$(nm -DC --defined-only "$library" | sed -n 's/@.*//; s/^[0-9a-f]* [B-Zu-w] //p' | LC_ALL=C sort -u)
if [ "${3:-}" = --record ]; then
    echo "$shown" >"$list"
elif ! echo "$shown" | diff "$list" -; then
    echo "exported is not what $list says (< the list, > the library); if it is meant: sh $0 $list $library --record" >&2
    exit 1
fi
