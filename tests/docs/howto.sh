#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# howto.sh SOURCE KEPCTL COMPILER OBJECTS CFLAGS LIBS: replays the recipes of docs/how-to-add.md that have rows to insert,
# all on one copy of the sources. The script of each has to be red before the rows are there, and green with them. OBJECTS
# lists what the libraries are made of, a line "LIBRARY OBJECT" each. Only the files below are compiled anew: a recipe
# must not need more of them.
set -eu
. "$(dirname "$0")/check.sh"
source=$1 kepctl=$2 compiler=$3 objects=$4 cflags=$5 libs=$6
compiled='src/tv/soundoutputs.cpp src/tv/keptvaudiosettings.cpp src/tv/keptvaudio.headphone.cpp
    src/middleware/keptvsoundengine.cpp virtualtv/device/soundengine.cpp virtualtv/cards.cpp'
copy=$work/tree
built=$(dirname "$kepctl")/../lib
mkdir "$copy" "$work/lib"
cp -r "$source/include" "$source/platform" "$source/src" "$source/virtualtv" "$copy/"
chmod -R u+w "$copy"

# --- The blocks that the page marks: files are written, insertions kept in order. A file may be said to hold the
# lines of a trace in which a text stands.
awk -v folder="$work" '
/^<!-- test: file / {
    target = folder "/" $4
    if (sub(/^.* of /, "") && sub(/ -->$/, "")) {
        print >(target ".of")
        close(target ".of")
    }
    next
}
/^<!-- test: insert / {
    target = folder "/insertion" sprintf("%02d", ++insertions)
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

# Whether the script of a recipe causes what the page says.
causes() {
    LD_LIBRARY_PATH="$work/lib:$built" "$kepctl" run --format jsonl "$work/$1.jsonl" |
        grep -F -f "$work/$1.expected.of" >"$work/$1.actual" || return 1
    cmp "$work/$1.expected" "$work/$1.actual"
}
recipes=$(sed -n 's/^<!-- test: file \([a-z]*\)\.expected of .*/\1/p' "$source/docs/how-to-add.md")
[ "$(echo "$recipes" | wc -l)" -ge 4 ] || fail "the page has lost recipes: $recipes"
for recipe in $recipes; do
    ! causes "$recipe" >/dev/null || fail "$recipe: green before the rows are there"
done

for where in "$work"/insertion*.where; do
    read -r file _ text <"$where"
    awk -v text="$text" -v rows="${where%.where}" '
    { print }
    !done && index($0, text) {
        while ((getline row <rows) > 0)
            print row
        done = 1
    }
    END { exit !done }
    ' "$copy/$file" >"$work/changed" || fail "$file: nothing like this: $text"
    cp "$work/changed" "$copy/$file"
done

# --- The libraries that hold one of the files, linked anew
for folder in include platform/include src/common src/client src/tv src/middleware src/alsa virtualtv; do
    cflags="-I$copy/$folder $cflags"
done
for file in $compiled; do
    # shellcheck disable=SC2086 # lists of words, here and below
    "$compiler" -std=c++20 -fPIC -Wall -Wextra -Werror $cflags -c "$copy/$file" -o "$work/$(basename "$file").o"
done
awk -v compiled="$compiled" -v folder="$work" '
BEGIN {
    count = split(compiled, files)
    for (i = 1; i <= count; ++i) {
        sub(/.*\//, "", files[i])
        anew[files[i] ".o"] = folder "/" files[i] ".o"
    }
}
{
    name = $2
    sub(/.*\//, "", name)
    if (name in anew)
        --count
    print $1, (name in anew ? anew[name] : $2)
}
END { exit count != 0 }
' "$objects" >"$work/objects" || fail "some of these are in no library: $compiled"
for library in $(cut -d ' ' -f 1 "$work/objects" | uniq); do
    soname=$(basename "$built/$library".so.[0-9])
    map=$source/cmake/${library#lib}.map
    # shellcheck disable=SC2046,SC2086
    "$compiler" -shared $(sed -n "s/^$library //p" "$work/objects") $libs -Wl,-soname,"$soname" \
        $([ ! -e "$map" ] || echo "-Wl,--version-script=$map") -o "$work/lib/$soname"
done
ln -s "$(cd "$built" && pwd)/kep" "$work/lib/kep" # the card plugin is looked for beside the virtual television
for recipe in $recipes; do
    causes "$recipe" || fail "$recipe: not green with the rows of the page"
done
