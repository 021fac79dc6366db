#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# pages.sh SOURCE BUILD WHAT: runs the fenced blocks of the pages as they stand there, from a folder that
# looks like the tree with that build in build/ (and in build/debug). WHAT is "all", or "debug" for those
# that need line numbers in the program.
#
#   sh      run by the shell; ./kep only prints what it would do
#   cpp     compiled as C++17, and run with the configuration of the television
#   jsonl   played by kepctl
#   others  are not looked at
#
# <!-- test: skip, WHY --> in front of a fence leaves it out, <!-- test: debug --> needs line numbers, what
# <!-- test: shown --> announces has been shown by the block before it.
set -eu
. "$(dirname "$0")/check.sh"
source=$1 build=$2 what=$3
if [ "$what" = debug ] && ! gdb -batch -ex run --args true >/dev/null 2>&1; then
    echo "programs cannot be traced here"
    exit 77
fi
cd "$source"
pages="README.md CONTRIBUTING.md examples/README.md virtualtv/README.md $(find docs -name '*.md' | sort)"

# --- The folder
stage=$work/kep
mkdir -p "$stage/build/debug"
for entry in *; do
    [ "$entry" = build ] || ln -s "$source/$entry" "$stage/$entry"
done
for folder in bin lib share tests examples; do
    ln -s "$build/$folder" "$stage/build/$folder"
    ln -s "$build/$folder" "$stage/build/debug/$folder"
done
export KEP_DRY_RUN=1

# --- The blocks: $work/blocks/NUMBER.LANGUAGE, with page and line in NUMBER.from
mkdir "$work/blocks"
# shellcheck disable=SC2086 # a list of words
awk -v folder="$work/blocks" '
/^<!-- test: / { marker = $3; sub(/,$/, "", marker) }
/^```/ {
    if (inside) {
        close(file)
        inside = 0
        marker = ""
        next
    }
    inside = 1
    language = substr($0, 4)
    if (language == "") {
        print FILENAME ":" FNR ": the fence names no language" >"/dev/stderr"
        exit 1
    }
    number = sprintf("%s/%03d", folder, ++blocks)
    file = number "." (marker == "" ? "all" : marker) "." language
    print FILENAME ":" FNR >(number ".from")
    printf "" >file
    next
}
inside { print >file }
!inside && /^    [^ ]/ && blank && !list { print FILENAME ":" FNR ": an indented block; fence it" >"/dev/stderr"; exit 1 }
{ blank = /^$/ }
!/^ / && !/^$/ { list = /^[-*0-9]/ }
' $pages

run_sh() {
    (cd "$stage" && timeout 60 sh -eu "$1")
}
run_cpp() {
    cp "$1" "$work/program.cpp"
    "${CXX:-c++}" -std=c++17 -Wall -Werror -Iinclude -Iplatform/include "$work/program.cpp" -o "$work/program" \
        -L"$build/lib" -lkep -lkepplatform -Wl,-rpath,"$build/lib" -Wl,-rpath-link,"$build/lib" &&
        (eval "$("$build/bin/kepctl" env)" && KEP_CONFIG_DIR=packaging/config/TV timeout 60 "$work/program")
}
run_jsonl() {
    timeout 60 "$build/bin/kepctl" run "$1"
}

# The block before it has shown this; line numbers in log prefixes may differ.
was_shown() {
    all=$(sed 's/([0-9]*) /(N) /' "$work/out")
    block_text=$(sed 's/([0-9]*) /(N) /' "$1")
    case $all in
    *"$block_text"*) ;;
    *)
        cat "$work/out"
        return 1
        ;;
    esac
}

count=0
for block in "$work/blocks"/*.*.*; do
    name=${block##*/}
    number=${name%%.*}
    language=${name##*.}
    marker=${name#*.}
    marker=${marker%.*}
    from=$(cat "$work/blocks/$number.from")
    case $what.$marker.$language in
    all.shown.*) was_shown "$block" || fail "$from: not shown by the block before it" ;;
    "$what.$what.sh" | "$what.$what.cpp" | "$what.$what.jsonl")
        "run_$language" "$block" >"$work/out" 2>&1 </dev/null || {
            cat "$block" "$work/out"
            fail "$from: fails"
        }
        count=$((count + 1))
        ;;
    esac
done
[ "$count" -gt 0 ] || fail "no blocks"
echo "$count blocks"

# --- Links lead somewhere
for page in $pages; do
    grep -o '](\([^)#]*\)' "$page" | sed 's/](//' | while read -r link; do
        case $link in
        http* | "") ;;
        *) [ -e "$(dirname "$page")/${link%%#*}" ] || fail "$page: $link does not exist" ;;
        esac
    done
done

# --- Files that are named exist
# shellcheck disable=SC2016,SC2086 # backquotes of the pages; a list of words
for named in $(grep -oh '`[a-z]*/[A-Za-z0-9_./-]*`' $pages | tr -d '`' | sort -u); do
    case $named in
    build/*) continue ;;
    esac
    [ ! -d "${named%%/*}" ] || [ -e "$named" ] || fail "a page names $named, which does not exist"
done
