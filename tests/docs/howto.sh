#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# howto.sh SOURCE KEPCTL COMPILER OBJECTS FLAGS: replays "A sound output" of docs/how-to-add.md on a copy of the
# sources. Its script has to be red before the rows are there, and green with them. OBJECTS lists the library's
# objects, one a line: a new output must not need more than the file of the table compiled anew.
set -eu
. "$(dirname "$0")/check.sh"
source=$1 kepctl=$2 compiler=$3 objects=$4 flags=$5
copy=$work/tree
mkdir "$copy" "$work/lib"
cp -r "$source/include" "$source/platform" "$source/src" "$copy/"
chmod -R u+w "$copy"

# --- The blocks that the page marks: files are written, insertions kept in order
awk -v folder="$work" '
/^<!-- test: file / { target = folder "/" $4; next }
/^<!-- test: insert / {
    target = folder "/insertion" ++insertions
    where = $0
    sub(/^<!-- test: insert /, "", where)
    sub(/ -->$/, "", where)
    print where >(target ".where")
    close(target ".where")
    next
}
/^```/ && target != "" {
    if (inside) {
        close(target)
        target = ""
    }
    inside = !inside
    next
}
inside { print >target }
' "$source/docs/how-to-add.md"

# Whether the script causes what the page says.
writes() {
    LD_LIBRARY_PATH="$work/lib:$(dirname "$kepctl")/../lib" "$kepctl" run --format jsonl "$work/usb.jsonl" |
        grep '"values":\[256' >"$work/usb.actual" || return 1
    cmp "$work/usb.expected" "$work/usb.actual"
}
! writes >/dev/null || fail "green before the rows are there"

for where in "$work"/insertion*.where; do
    read -r file _ text <"$where"
    awk -v text="$text" -v rows="${where%.where}" '
    { print }
    index($0, text) {
        while ((getline row <rows) > 0)
            print row
        done = 1
    }
    END { exit !done }
    ' "$copy/$file" >"$work/changed" || fail "$file: nothing like this: $text"
    cp "$work/changed" "$copy/$file"
done

# shellcheck disable=SC2086 # lists of words
"$compiler" -std=c++20 -fPIC -Wall -Wextra -Werror -I"$copy/include" -I"$copy/platform/include" -I"$copy/src/common" \
    -I"$copy/src/client" -I"$copy/src/tv" -I"$copy/src/middleware" -I"$copy/src/alsa" \
    -c "$copy/src/tv/soundoutputs.cpp" -o "$work/soundoutputs.o"
rest=$(grep -v '/soundoutputs\.cpp\.o$' "$objects")
# shellcheck disable=SC2086
"$compiler" -shared $rest "$work/soundoutputs.o" $flags -Wl,-soname,libkep.so.0 -o "$work/lib/libkep.so.0"
writes || fail "not green with the rows of the page"
