#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# wrong.sh SOURCE BUILD: the commands of docs/porting.md that make the virtual television wrong, run in a folder
# with a blank in its name, cause the sentences that stand there.
set -eu
. "$1/tests/docs/check.sh"
source=$1 build=$2
unset KEP_CONFIG_DIR KEP_VIRTUALTV_CARD KEP_VIRTUALTV_FAULTS

# --- The blocks, one file of commands each, and the sentences of the text that follows it
awk -v folder="$work" '
/^<!-- test: wrong -->/ { marked = 1; next }
/^```/ {
    if (inside)
        inside = 0
    else if (marked && $0 == "```sh") {
        file = sprintf("%s/%02d.sh", folder, ++blocks)
        inside = 1
        marked = 0
    } else if ($0 == "```text" && after) {
        sub(/sh$/, "told", file)
        inside = 1
    }
    after = inside || after && $0 == "```"
    next
}
inside { print >file }
!inside && NF { after = 0 }
' "$source/docs/porting.md"
[ "$(find "$work" -name '*.told' | wc -l)" -ge 3 ] || fail "the page has lost its sentences"

# --- As installed: programs in the PATH, headers that pkg-config finds
mkdir "$work/a desk"
printf 'Name: kep\nDescription: as built\nVersion: 0\nCflags: -I"%s"\n' "$source/platform/include" >"$work/kep.pc"
# On a busy machine an answer takes longer than the usual limit, but not longer than this one.
mkdir "$work/bin"
printf '#!/bin/sh\nexec "%s/bin/kep-conformance" --limit 2500 "$@"\n' "$build" >"$work/bin/kep-conformance"
chmod +x "$work/bin/kep-conformance"
export PATH="$work/bin:$build/bin:$PATH" PKG_CONFIG_PATH="$work"
cd "$work/a desk"
for block in "$work"/*.sh; do
    echo "echo 'block ${block##*/}'" && cat "$block"
done >"$work/commands"
sh -u "$work/commands" >"$work/all" 2>"$work/errors" || :
grep -q ' passed, 0 failed, ' "$work/all" || { cat "$work/all" "$work/errors"; fail "it should pass first"; }
without_times() {
    sed 's/took [0-9]* ms, more than the [0-9]*/took N ms, more than the N/'
}
for told in "$work"/*.told; do
    name=$(basename "$told" .told)
    sed -n "/^block $name.sh/,/^block /p" "$work/all" | without_times >"$work/out"
    without_times <"$told" >"$work/sentences"
    while read -r sentence; do
        grep -qF -e "$sentence" "$work/out" || {
            cat "$work/out" "$work/errors"
            fail "nobody says: $sentence"
        }
    done <"$work/sentences"
done
