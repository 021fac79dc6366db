#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# compare.sh KEPCTL SCRIPT: plays SCRIPT.jsonl and compares its trace with SCRIPT.expected beside it.
#
# The first line of a script names its configuration: "# backend: ALSA" the one that is shipped for that
# backend, "# config: FOLDER" a folder of config/ here, which may be missing. Log texts stand in the
# expected trace with (N) for the line number in their prefix and CONFIG for the configuration directory.
set -eu
kepctl=$1
script=$2
folder=$(cd "$(dirname "$script")" && pwd -P)
setting=$(sed -n '1s/^# //p' "$script")
case $setting in
"backend: "*)
    option=--backend value=${setting#*: }
    config=$(cd "$(dirname "$kepctl")/.." && pwd -P)/share/kep/$value
    ;;
"config: "*)
    option=--config value=$folder/config/${setting#*: }
    config=$value
    ;;
*)
    echo "$script: the first line names neither a backend nor a config" >&2
    exit 1
    ;;
esac

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
KEP_VIRTUALTV_STATE=$work/cards.state "$kepctl" run "$option" "$value" --format jsonl --log-level 7 \
    "$script" >"$work/trace"

pattern=$(printf '%s\n' "$config" | sed 's/[][\.*^$|]/\\&/g')
sed -e '/^{"event":"log",/s/\("text":"[a-z]*:[A-Za-z_~]*\)([0-9]*) /\1(N) /' \
    -e "/^{\"event\":\"log\",/s|$pattern|CONFIG|g" "$work/trace" >"$work/actual"
diff -u "${script%.jsonl}.expected" "$work/actual"
