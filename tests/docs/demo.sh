#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# demo.sh KEPCTL SOURCE: the evening opens, is short, closes with a summary, and fails when it does not go
# as written.
set -eu
. "$(dirname "$0")/check.sh"
kepctl=$1
play=$2/demo/play

# --- A short evening: three lines, two screens, a summary
expect_status 0 "$play" "$kepctl"
expect_lines errors 0
[ -z "$(sed -n 4p "$work/out")" ] || fail "the opening has more than three lines"
[ "$(wc -l <"$work/out")" -le 100 ] || fail "longer than two screens of 50 lines"
expect out '^9 requests, 1 of them refused; 30 driver writes, 1 of them refused; 8 middleware calls'
expect out '^The television is left with output headphone'
expect out '^Next: ./kep run --full'
! grep -q ' info ' "$work/out" || fail "log lines without --verbose"

expect_status 0 "$play" "$kepctl" --verbose
expect out ' info .*keptvaudio:setSoundOutput'

# --- The full one, every script by itself
expect_status 0 "$play" "$kepctl" --full
expect out '^# An evening with a plain mixer board'
expect out '^# Standby'

expect_status 2 "$play" "$kepctl" --ful
expect errors 'no option "--ful"'

# --- Nobody reads on
"$play" "$kepctl" 2>"$work/errors" | head -n 1 >"$work/out"
expect_lines out 1
expect_lines errors 0

# --- It does not go as written: one line says where
cp -r "$2/demo" "$work/demo"
chmod -R u+w "$work/demo"
sed -i 's/"tv_speaker", 12/"tv_speaker", 13/' "$work/demo/evening.jsonl"
expect_status 1 "$work/demo/play" "$kepctl"
expect_lines errors 1
expect errors 'did not go as written: evening.jsonl, event 1[0-9]: expected .*12.*, came .*13'

sed -i '$d' "$work/demo/evening.jsonl" # the last request
sed 's/"tv_speaker",13/"tv_speaker",12/' "$2/demo/evening.jsonl" >"$work/demo/evening.jsonl"
sed -i '$d' "$work/demo/evening.jsonl"
expect_status 1 "$work/demo/play" "$kepctl"
expect errors 'expected .*deinitialize.*, came the end'
