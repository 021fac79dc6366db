// SPDX-License-Identifier: Apache-2.0
// The virtual cards and their control elements.
#pragma once

#include <climits>
#include <span>

namespace virtualtv
{

enum class ElementType { Boolean, Integer };

struct Element {
    const char* name; // interface mixer, no index
    ElementType type;
    int count; // values, at most kMaxValues
    int minimum;
    int maximum;
};

struct Card {
    const char* key;   // what the ALSA configuration passes of the card: its number or its name,
    const char* value; // and which
    const char* title;
    std::span<const Element> elements;
};

inline constexpr int kMaxValues = 8;

/// What the television's audio driver takes: any 32-bit number, as many as the element has.
constexpr Element driverElement(const char* name, int count)
{
    return {name, ElementType::Integer, count, INT_MIN, INT_MAX};
}

// clang-format off
inline constexpr Element kDriverElements[] = {
    driverElement("Sndout Connect",                  3), // output type, index, port
    driverElement("Sndout Disconnect",               3), // output type, index, port
    driverElement("Sndout Open",                     1), // output type
    driverElement("Sndout Close",                    1), // output type
    driverElement("Mute Output",                     2), // output type, mute
    driverElement("Mute Input",                      3), // index, port, mute
    driverElement("Sndout MainAudio Output",         2), // index, port
    driverElement("Sndout Optic QN",                 4), // key, volume, mute, 1
    driverElement("Sndout Optic LightOnOff",         1), // light
    driverElement("Sndout ARC OnOff",                1), // ARC
    driverElement("Sndout EARC OnOff",               1), // eARC
    driverElement("Sndout EARC Outputtype",          5), // 2, codec, 0, 0, mix
    driverElement("Sndout Spdif OutputType",         2), // optical mode, ARC mode
    driverElement("Sndout Spdif CategoryCode",       2), // the code, twice
    driverElement("Sndout Spdif CopyProtectionInfo", 2), // optical, ARC
    driverElement("Sndout eAC3 ATMOS Encode OnOff",  1), // encoder
    driverElement("Adec Dolby OTTMode",              2), // two flags
    driverElement("Gain Input",                      3), // index, port, gain
    driverElement("Gain Output",                     2), // output type, gain
};

inline constexpr Element kMixerElements[] = {
    {"Master Playback Switch", ElementType::Boolean, 1, 0, 1},
    {"Master Playback Volume", ElementType::Integer, 1, 0, 100},
    {"Softmaster",             ElementType::Integer, 1, 0, 100},
    {"Softmaster0",            ElementType::Integer, 1, 0, 100},
    {"Softmaster1",            ElementType::Integer, 1, 0, 100},
};

inline constexpr Card kCards[] = {
    {"number", "0",       "Virtual television", kDriverElements},
    {"name",   "default", "Virtual mixer",      kMixerElements},
};
// clang-format on

} // namespace virtualtv
