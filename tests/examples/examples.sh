#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# examples.sh KEPCTL FOLDER SOURCE NAME: plays one example of the folder on the virtual television, and compares
# what it prints and what the television is told.
set -eu
. "$(dirname "$0")/../docs/check.sh"
kepctl=$1 folder=$2 name=$4
eval "$("$kepctl" env)"
export KEP_CONFIG_DIR="$3/packaging/config/TV" KEP_VIRTUALTV_TRACE="$work/trace" KEP_VIRTUALTV_LINES="$work"
unset JOURNAL_STREAM # log lines go to standard error
touch "$work/out" "$work/errors" "$work/trace"

lines=$(wc -l <"$3/examples/$name.cpp")
[ "$lines" -lt 80 ] || fail "$name.cpp has $lines lines"

# --- Starting it, with what is typed on standard input, and ending it

start() {
    mkfifo "$work/input"
    "$folder/$name" <"$work/input" >"$work/out" 2>"$work/errors" &
    program=$!
    exec 3>"$work/input"
}
type_in() {
    printf '%b' "$1" >&3
}

# await FILE PATTERN [COUNT]: until so many lines of the file match (1); thirty seconds at most.
await() {
    tries=0
    until [ "$(grep -c -e "$2" "$work/$1")" -ge "${3:-1}" ]; do
        tries=$((tries + 1))
        if [ $tries = 600 ] || ! kill -0 "$program" 2>/dev/null; then
            kill "$program" 2>/dev/null || true
            cat "$work/$1"
            fail "not ${3:-1} lines like this in $1: $2"
        fi
        sleep 0.05
    done
}

# ends STATUS: by itself once its input has ended.
ends() {
    exec 3>&-
    status=0
    wait "$program" || status=$?
    [ "$status" = "$1" ] || {
        cat "$work/out" "$work/errors"
        fail "$name: status $status instead of $1"
    }
}

# --- Comparing; what was expected stands on standard input

prints() {
    cat >"$work/wanted"
    diff "$work/wanted" "$work/out" || fail "$name prints other lines"
}

# told EXPRESSION: the driver writes and calls whose names match, in short: Sndout Open [1].
told() {
    cat >"$work/wanted"
    sed -n -E 's/.*"(element|operation)":"([^"]*)","(values|args)":(\[.*\]),("returned":.*,)?"status":.*/\2 \4/p' \
        "$work/trace" | grep -E "$1" >"$work/told" || true
    diff "$work/wanted" "$work/told" || fail "the television is told other things by $name"
}

outputs='^(Sndout (Open|Close|(Dis)?[Cc]onnect|MainAudio)|Mute Output)'

case $name in
route)
    start
    await out playing
    kill -TERM "$program"
    ends 0
    prints <<END
playing ADEC0 on tv_speaker
END
    # The mixer's ports are 16, the decoder's 1, 0.
    told "$outputs|setOSDVolume" <<END
Sndout Open [1]
Sndout Connect [1,16,5]
Sndout Connect [1,16,6]
Sndout Connect [1,16,7]
Mute Output [1,0]
setOSDVolume [15]
Sndout MainAudio Output [1,0]
Sndout Connect [1,1,0]
Sndout Disconnect [1,1,0]
END

    # No backend: one line, and a status of its own.
    KEP_CONFIG_DIR=$work expect_status 1 "$folder/route"
    expect errors '^route: no audio'
    ;;

headphone)
    start
    await out '^tv_speaker'
    echo 1 >"$work/GPIO_RD_HP_LINK"
    await out '^headphone'
    # Five seconds after the start-up work the timer, which needs the main loop, lets it be heard.
    await trace 'Set_HPMuteOnOff","args":\[false\]'
    echo 0 >"$work/GPIO_RD_HP_LINK"
    await out '^tv_speaker' 2
    kill -TERM "$program"
    ends 0
    prints <<END
tv_speaker
headphone
tv_speaker
END
    told '^Sndout (Open|Close)|HPMuteOnOff' <<END
Sndout Open [1]
Sndout Close [1]
Sndout Open [16]
subcpu_misc_Set_HPMuteOnOff [true]
subcpu_misc_Set_HPMuteOnOff [false]
Sndout Close [16]
subcpu_misc_Set_HPMuteOnOff [true]
Sndout Open [1]
END
    ;;

volume)
    start
    type_in '++m+m-x'
    await out 'volume 25$'
    ends 0
    prints <<END
volume 20
volume 25
volume 25, muted
volume 30
volume 30, muted
volume 25
END
    # The first line is the output's own; a volume unmutes.
    told '^Mute Output|setOSDVolume' <<END
Mute Output [1,0]
setOSDVolume [15]
setOSDVolume [20]
setOSDVolume [25]
Mute Output [1,1]
setOSDVolume [30]
Mute Output [1,0]
Mute Output [1,1]
setOSDVolume [25]
Mute Output [1,0]
END
    ;;

earc)
    start
    type_in 'eARC DD+ DD\n'
    await out '^eARC'
    type_in 'None\n'
    ends 0
    prints <<END
eARC DD+ DD: done
None: done
END
    expect errors 'category external_arc Payload received is {"arcActivation":"eARC","earcCapability":\["DD+","DD"\]}'
    expect errors 'category sound Payload received is {"soundOutputDigital":"auto"}'
    # 2 is "auto" where the receiver is heard; switched on before, and off after that.
    told '^Sndout (Open|Close|ARC|EARC OnOff|Spdif)' <<END
Sndout Spdif OutputType [1,1]
Sndout Open [1]
Sndout Spdif OutputType [1,1]
Sndout ARC OnOff [0]
Sndout EARC OnOff [1]
Sndout Close [1]
Sndout Open [32]
Sndout Spdif OutputType [2,2]
Sndout Close [32]
Sndout Open [1]
Sndout Spdif OutputType [1,1]
Sndout ARC OnOff [0]
Sndout EARC OnOff [0]
END
    ;;

settings)
    start
    ends 0
    prints <<END
gainValue: {"soundOutput":"","gainValue":"0"}
getAmplifierState: {"amplifierType":"virtual","amplifierStates":["on"]}
setMixer: [{"category":"setMixer","value":{"mix":true}}]
END
    for category in hardwareConfig modelConfig contiConfig setMixer; do
        expect errors "category $category Payload received is {\"[^\"]*\":[^ ]*}"
    done
    expect errors 'startXmlParsing thread is getting created'

    # A refusal stops nothing, and is told.
    expect_status 1 "$folder/settings" zibConfig '{}'
    expect errors '^settings: zibConfig was refused with code 2'
    expect out '^setMixer: .*true'
    expect_status 1 "$folder/settings" dolbyAtmos '{"atmosState"'
    expect errors '^settings: dolbyAtmos: .* at byte'
    expect_status 0 "$folder/settings" dolbyAtmos '{"atmosState": "on"}'
    expect trace '"setDolbyAtmos","args":\[true\]'
    ;;

backend)
    mkdir "$work/config"
    echo '{"Q27R5": {"kepAudio": "COUNTING"}}' >"$work/config/kep-config.json"
    KEP_CONFIG_DIR=$work/config expect_status 0 "$folder/backend"
    expect errors '^backend: .*no external speaker'
    prints <<END
requests: 1
END
    [ ! -s "$work/trace" ] || fail "the television is told something"
    # Under another name it is not found.
    KEP_CONFIG_DIR=$3/packaging/config/TV expect_status 0 "$folder/backend"
    expect trace 'Sndout Open'
    ;;
esac
