// SPDX-License-Identifier: Apache-2.0
// The elements that the virtual cards have unless a card table says otherwise.
#pragma once

#include <climits>

namespace virtualtv
{

/// An element of the television's audio driver: it takes any 32-bit numbers, so many of them.
struct DriverRow {
    const char* name;
    int count;
};

// clang-format off
inline constexpr DriverRow kDriverElements[] = {
    {"Sndout Connect",                  3}, // output type, index, port
    {"Sndout Disconnect",               3}, // output type, index, port
    {"Sndout Open",                     1}, // output type
    {"Sndout Close",                    1}, // output type
    {"Mute Output",                     2}, // output type, mute
    {"Mute Input",                      3}, // index, port, mute
    {"Sndout MainAudio Output",         2}, // index, port
    {"Sndout Optic QN",                 4}, // key, volume, mute, power
    {"Sndout Optic LightOnOff",         1}, // light
    {"Sndout ARC OnOff",                1}, // ARC
    {"Sndout EARC OnOff",               1}, // eARC
    {"Sndout EARC Outputtype",          5}, // 2, codec, 0, 0, mix
    {"Sndout Spdif OutputType",         2}, // optical mode, ARC mode
    {"Sndout Spdif CategoryCode",       2}, // the code, twice
    {"Sndout Spdif CopyProtectionInfo", 2}, // optical, ARC
    {"Sndout eAC3 ATMOS Encode OnOff",  1}, // encoder
    {"Adec Dolby OTTMode",              2}, // two flags
    {"Gain Input",                      3}, // index, port, gain
    {"Gain Output",                     2}, // output type, gain
};
// clang-format on

/// An element of the plain mixer: a switch where the maximum is 1, else a volume.
struct MixerRow {
    const char* name;
    int maximum;
};

// clang-format off
inline constexpr MixerRow kMixerElements[] = {
    {"Master Playback Switch", 1},
    {"Master Playback Volume", 100},
    {"Softmaster",             100},
    {"Softmaster0",            100},
    {"Softmaster1",            100},
};
// clang-format on

} // namespace virtualtv
