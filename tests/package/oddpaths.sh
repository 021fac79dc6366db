#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# oddpaths.sh CMAKE BUILD SOURCE: built and installed trees work under any path: the evening makes the
# same driver writes as everywhere, and a shell finds the cards.
set -eu
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
export KEP_VIRTUALTV_STATE="$top/state" XDG_RUNTIME_DIR="$top"

# played PROGRAM: the driver writes of the evening, failures included.
played() {
    rm -f "$KEP_VIRTUALTV_STATE"
    "$1" run --format jsonl --only control "$evening" | grep -c '"status":0}'
}

evening="$3/demo/evening.jsonl"
wanted=$(played "$2/bin/kepctl")
[ "$wanted" -gt 20 ] || { echo "the evening makes only $wanted driver writes"; exit 1; }

# works TREE: a tree with bin/kepctl.
works() {
    writes=$(played "$1/bin/kepctl") || true
    [ "$writes" = "$wanted" ] || { echo "$1: $writes driver writes instead of $wanted"; exit 1; }
    exports=$("$1/bin/kepctl" env)
    seen=$(eval "$exports" && "$1/bin/kepctl" card dump hw:0 | grep -c '"Sndout Open"') || true
    [ "$seen" = 1 ] || { echo "$1: a shell does not find the cards"; exit 1; }
    ! command -v amixer >/dev/null || [ -n "$SANITIZED" ] ||
        (eval "$exports" && amixer -D hw:0 cget "name='Sndout Open'" >/dev/null) ||
        { echo "$1: amixer does not find the cards"; exit 1; }
}

"$1" --install "$2" --prefix "$top/plain" >/dev/null
for name in "two words" "it's" 'a "quote"' "(round) [square] {curly}" "Wohnzimmer, größer" "-dash" \
    'a$HOME`b`\c' "a:b" "~" "a*b?" "a;b&c|d#e!f%g" "$(printf 'tab\tline\nend')"; do
    mkdir -p "$top/$name/built"
    cp -R "$top/plain" "$top/$name/installed"
    cp -RL "$2/bin" "$2/lib" "$2/share" "$top/$name/built"
    evening="$top/$name/installed/share/kep/demo/evening.jsonl"
    works "$top/$name/built"
    works "$top/$name/installed"
    rm -rf "${top:?}/$name"
done

# The folders of links and of values may have such names, too; a relative path with a dash is a path.
mkdir -p "$top/two words/-run"
mv "$top/plain" "$top/two words/-installed"
evening="$3/demo/evening.jsonl"
export XDG_RUNTIME_DIR="$top/two words/-run" TMPDIR="$top/two words"
export KEP_VIRTUALTV_STATE="$top/two words/-run/it's (the) state"
cd "$top/two words"
works ./-installed
cp "$evening" ./-evening.jsonl
./-installed/bin/kepctl run -- -evening.jsonl >/dev/null

# Early boot and some containers have no /proc, which the loader needs for paths relative to the program, and a
# sanitizer for itself.
covered() {
    LD_LIBRARY_PATH="$PWD/-installed/lib" unshare -rm sh -c 'mount -t tmpfs none /proc && exec "$@"' covered "$@"
}
if [ -z "$SANITIZED" ] && covered true 2>/dev/null; then
    writes=$(covered ./-installed/bin/kepctl run --format jsonl --only control "$evening" | grep -c '"status":0}') || true
    [ "$writes" = "$wanted" ] || { echo "without /proc: $writes driver writes instead of $wanted"; exit 1; }
    covered ./-installed/bin/kep-conformance --version >/dev/null || { echo "without /proc: no conformance"; exit 1; }
fi
