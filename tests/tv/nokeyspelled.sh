#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# nokeyspelled.sh SOURCE: whoever reads a payload's key names it by its constant, so that the catalogue
# lists it. ("category" is a key of what the backend itself stores.)
set -eu
spelled=$(grep -nE '\["[^"]+"\]\.(as|is)|hasKey\("' "$1"/tv/*.cpp "$1"/middleware/*.cpp |
    grep -v '"category"') || true
[ -z "$spelled" ] || { echo "keys that the catalogue cannot know:"; echo "$spelled"; exit 1; }
