#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# install.sh CMAKE BUILD SOURCE: what is installed works from where it is, and names no folder of the
# machine that built it.
set -eu
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$1" --install "$2" --prefix "$prefix" >/dev/null

named=$(grep -rlE "$2/|$3/" "$prefix") || true
[ -z "$named" ] || { echo "names a folder of this machine:"; echo "$named"; exit 1; }

export KEP_VIRTUALTV_STATE="$prefix/cards.state"
echo '{"call": "initialize"}' > "$prefix/script"
for backend in ALSA TV; do
    "$prefix/bin/kepctl" run --backend "$backend" --strict "$prefix/script"
done
