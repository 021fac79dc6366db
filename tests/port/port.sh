#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# port.sh SOURCE [own-log]: the commands of docs/porting.md, as they stand there but for the folders that they make,
# bring the example to its television; the port works, installed too; the mistakes of a platform file are told in a
# line each. With own-log: the commands for a log of the maker's own, whose lines arrive there.
set -eu
source=$1 what=${2:-ported}
. "$source/tests/docs/check.sh"
unset KEP_CONFIG_DIR ALSA_CONFIG_PATH ALSA_PLUGIN_DIR
cd "$source"

seen() {
    expect_status "$@"
    cat "$work/errors" >>"$work/out"
}

# --- The page
marker=$(echo "$what" | tr - ' ')
awk -v marker="<!-- test: $marker -->" '$0 == marker { marked = 1; next }
    /^```/ { inside = marked && /^```sh/; marked = 0; next }
    inside { print }' docs/porting.md |
    sed "s#\$PWD/build/#$work/#g; s#build/#$work/#g; s#kep-conformance --config#kep-conformance --limit 10000 --config#" \
        >"$work/commands" # a busy machine takes longer than the usual limit
[ "$(grep -c . "$work/commands")" -gt 4 ] || fail "the page has lost its commands"
VELTORA_TRACE=1 sh -eux "$work/commands" >"$work/out" 2>"$work/errors" || {
    cat "$work/out" "$work/errors"
    fail "the commands of the page fail"
}

if [ "$what" = own-log ]; then
    expect out ' passed, 0 failed, '
    grep -q 'the platform.s log over the maker.s' -i "$work/installed-own-log/include/kep/platformlog.h" ||
        fail "the header that is installed is not the port's own"
    # A service that takes no lines itself.
    cat >"$work/service.cpp" <<'END'
#include <kepclient.h>
int main() { return kepClient::getInstance()->initialize() == KEP_STATUS_FAILED ? 0 : 1; }
END
    prefix=$work/installed-own-log
    # shellcheck disable=SC2046
    "${CXX:-c++}" -std=c++17 "$work/service.cpp" -o "$work/service" \
        $(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs kep) -Wl,-rpath,"$prefix/lib" \
        -Wl,-rpath-link,"$prefix/lib"
    seen 0 env KEP_CONFIG_DIR=/nowhere "$work/service"
    expect out '^vlog F/kep: .*kepconfig:loadKEPConfig.*/nowhere.* (CONFIG_FILE_READ_FAILED)$'
    exit
fi

# Three runs of the checks: silent, audible, and with the adapter that was built without the tree.
[ "$(grep -c ' passed, 0 failed, ' "$work/out")" = 3 ] || { cat "$work/out"; fail "three runs should pass"; }
expect out '^Elements of the card hw:V12$'
expect out '"Sndout Open" reads back what was written.*: the card does not let it be read'
# Volumes are the maker's: 5 of 255 is 2 of 100.
expect errors '^veltora: levels.input.0 2$'
expect errors '^kepctl: middleware, GPIO and sub-microcontroller are those of veltora: '
expect errors '^veltora: dsp.immersive atmos$'
expect out '^kep-conformance [0-9]'

# --- The settings of the build: its own section, folder and card
port=$work/port
seen 1 "$port/bin/kep-conformance" configuration
expect out '/etc/veltora/audio/kep-config.json'
seen 1 "$port/bin/kep-conformance" --config packaging/config/TV configuration
expect out 'lacks the section "VX12"'
seen 0 "$port/bin/kepctl" card dump --card examples/port/card.json hw:V12
expect out '"Fan Speed"'

# --- A card that was made wrong is told by name.
sed 's/"Gain Input", "type": "integer", "count": 3/"Gain Input", "type": "integer", "count": 2/' \
    examples/port/card.json >"$work/wrong.json"
exports=$("$port/bin/kepctl" env --card "$work/wrong.json")
status=0
(eval "$exports" && "$port/bin/kep-conformance" card >"$work/out" 2>&1) || status=$?
[ "$status" = 1 ] || fail "a wrong card passes"
expect out 'it takes 2 integers, not 3'

# --- What is installed works alone.
mv "$port" "$work/away"
(eval "$("$work/installed/bin/kepctl" env --card examples/port/card.json)" &&
    "$work/installed/bin/kep-conformance" --config examples/port/config >"$work/out") || {
    cat "$work/out"
    fail "the installed port fails"
}
seen 0 "$work/installed/bin/kepctl" run --strict demo/TV/5-a-film.jsonl
mv "$work/away" "$port"

# --- Mistakes, a line each
configured_with() {
    printf '%s\n' "$1" >"$work/platform.cmake"
    rm -rf "$work/mistake"
    seen 1 cmake -G Ninja -S . -B "$work/mistake" -DKEP_PLATFORM="$work/platform.cmake"
}
library() {
    printf 'add_library(%s SHARED IMPORTED)\nset_target_properties(%s PROPERTIES IMPORTED_LOCATION "%s")\n' \
        "$1" "$1" "$2"
}
folders() {
    printf 'target_include_directories(%s INTERFACE "%s")\n' "$1" "$source/platform/include"
}
json_and_log=$(library kepplatform "$port/lib/libkepplatform.so"; folders kepplatform)

seen 1 cmake -G Ninja -S . -B "$work/mistake" -DKEP_PLATFORM="$work/nowhere.cmake"
expect out "KEP_PLATFORM names a file that does not exist"
configured_with ''
expect out '^ *it defines no target kepplatform (JSON and log)$'
expect out '^ *it defines no target kepdevice (middleware, GPIO, sub-microcontroller)$'
configured_with "$json_and_log
$(library kepdevice /nowhere/libkepdevice.so)"
expect out '^ *the library of the target kepdevice does not exist: /nowhere/libkepdevice.so$'
configured_with "$(library kepplatform "$port/lib/libkepplatform.so")
$(library kepdevice "$port/lib/libkepdevice.so")"
expect out '^ *no target has the header [a-z]*.h in its include directories$'
# One class is there, but hidden; the others are not.
configured_with "$json_and_log
add_library(kepdevice SHARED $source/examples/port/adapter/gain.cpp $source/examples/port/adapter/unit.cpp)
target_include_directories(kepdevice PUBLIC $source/examples/port/vendor)
target_link_libraries(kepdevice PUBLIC kepplatform PRIVATE $port/lib/libveltoraaudio.so)"
expect out '^ *kepdevice hides mwl_gain::MWLGain::parseGainParams(): build it with CXX_VISIBILITY_PRESET default$'
expect out '^ *kepdevice lacks mwl_delay::MWLDelay::setDelayUpdate()$'
expect out '^ *kepdevice lacks HWIO_GPIO_ReadInputPort$'
# The adapter calls what the maker has changed.
cp -r examples/port "$work/brand"
sed -i 's/vlt_headphone_power(int on)/vlt_headphone_power(int on, int milliseconds)/' "$work"/brand/vendor/*
seen 1 cmake -G Ninja -S . -B "$work/mistake" -DKEP_PLATFORM="$work/brand/veltora.cmake"
expect out '^ *.*/brand/adapter/lines.cpp:[0-9]*:[0-9]*: error: .*vlt_headphone_power'
