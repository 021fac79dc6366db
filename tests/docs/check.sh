# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh
# What the scripts of this folder share: a working folder, and checks that say what they expected.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export KEP_VIRTUALTV_STATE="$work/cards.state"

fail() {
    echo "$1" >&2
    exit 1
}

# expect_status N COMMAND...: what it prints is in $work/out and $work/errors.
expect_status() {
    wanted=$1
    shift
    status=0
    "$@" >"$work/out" 2>"$work/errors" || status=$?
    [ "$status" = "$wanted" ] || {
        cat "$work/out" "$work/errors"
        fail "status $status instead of $wanted: $*"
    }
}

# expect FILE PATTERN: a line of the file matches the basic regular expression.
expect() {
    grep -q -e "$2" "$work/$1" || {
        cat "$work/$1"
        fail "no line like this in $1: $2"
    }
}

expect_lines() {
    lines=$(wc -l <"$work/$1")
    [ "$lines" = "$2" ] || {
        cat "$work/$1"
        fail "$lines lines instead of $2 in $1"
    }
}
