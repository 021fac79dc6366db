#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# exports.sh LIBRARY: the library shows its own classes and nothing else.
set -eu
shown=$(nm -DC --defined-only "$1" | cut -d' ' -f3-)
foreign=$(echo "$shown" |
    grep -vE '^((typeinfo|typeinfo name|vtable) for )?kep(AlsaAudio|Audio|Catalogue|Client|Factory|TVAudio)\b') || true
[ -z "$foreign" ] || { echo "exported, but not of the interface:"; echo "$foreign"; exit 1; }
for operation in 'initialize()' 'getDefaultVolume() const' 'getAudioObj() const'; do
    echo "$shown" | grep -qFx "kepClient::$operation" || { echo "not exported: $operation"; exit 1; }
done
