#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# manpages.sh KEPCTL FOLDER: each page of the folder is clean for mandoc, refers to pages that are there, and names
# all that the built-in help names.
set -eu
. "$(dirname "$0")/check.sh"
kepctl=$1 folder=$2

# --- Those that kepctl knows, each command's among them, and three more
find "$folder" -name '*.[0-9]' -exec basename {} ';' | sort >"$work/there"
{
    "$kepctl" help man-pages
    printf '%s\n' kep-conformance.1 kep-porting.7
} | sort >"$work/wanted"
diff "$work/wanted" "$work/there" || fail "the manual pages that are built are not those that there should be"
"$kepctl" help | sed -n 's/^  kepctl \([a-z]*\) .*/kepctl-\1.1/p' >"$work/commands"
expect commands '^kepctl-run.1$'
while read -r page; do
    grep -qxF "$page" "$work/there" || fail "no page $page"
done <"$work/commands"

# --- mandoc. References it looks up in the system's folder only.
mandoc -T lint "$folder"/man*/* >"$work/lint" || true
sed -n 's/.*referenced manual not found: Xr \(.*\) \([0-9]\)$/\1.\2/p' "$work/lint" | sort -u >"$work/references"
while read -r page; do
    grep -qxF "$page" "$work/there" || fail "a page refers to $page"
done <"$work/references"
! grep -v 'referenced manual not found' "$work/lint" || fail "mandoc has something to say"

# --- What can be read there is what the help says
shown() {
    mandoc -T ascii "$folder/man${1##*.}/$1" | perl -pe 's/.\x08//g' | tr -s '[:space:]' ' ' >"$work/text"
}
for command in run shell env card list help; do
    shown "kepctl-$command.1"
    "$kepctl" help "$command" | sed -n 's/^  \(--[a-z-]*\).*/\1/p' >"$work/options"
    while read -r option; do
        grep -qF -e "$option" "$work/text" || fail "kepctl-$command.1 lacks $option"
    done <"$work/options"
done
shown kep-conformance.1
expect text '^KEP-CONFORMANCE(1).*--audible.*--register.*requests.*Nothing failed.*Bail out.*KEP_VIRTUALTV_FAULTS.*kepctl(1)'
shown kepctl-script.5
for word in wait inject amplifierState delayMs 'until cleared'; do
    grep -qF -e "$word" "$work/text" || fail "kepctl-script.5 lacks $word"
done
shown kepctl-trace.5
for word in request middleware subcpu worker; do
    grep -qF -e "$word" "$work/text" || fail "kepctl-trace.5 lacks $word"
done
shown kep-config.json.5
expect text 'Q27R5.*kepDefaultVolume.*from 0 to 255.*/etc/orva/kep'
shown device-cap.json.5
expect text "audioMasterDefault.*card.*muteControlName.*Master Playback Volume"
shown libkep.3
expect text 'kepclient.h.*setSoundOutput.*RETURN VALUES.*invalid output.*KEP_CONFIG_DIR'
