// SPDX-License-Identifier: Apache-2.0
// The control elements of the audio driver: card, names, and how many integers each one takes.
#pragma once

#include <cstddef>
#include <cstdint>

/// An element with the number of its integers; writing it with another number does not compile.
template <std::size_t Count>
struct ControlElement {
    const char* name;
};

inline constexpr const char* kCard = "hw:0";

// The values in order. Output types are those of getSoundOutputCommonType, index and port those of
// a resource; a switch is 1 or 0.
// clang-format off
inline constexpr ControlElement<3> kSndoutConnect           {"Sndout Connect"};                  // output type, index, port
inline constexpr ControlElement<3> kSndoutDisconnect        {"Sndout Disconnect"};               // output type, index, port
inline constexpr ControlElement<1> kSndoutOpen              {"Sndout Open"};                     // output type
inline constexpr ControlElement<1> kSndoutClose             {"Sndout Close"};                    // output type
inline constexpr ControlElement<2> kMuteOutput              {"Mute Output"};                     // output type, mute
inline constexpr ControlElement<3> kMuteInput               {"Mute Input"};                      // index, port, mute
inline constexpr ControlElement<2> kSndoutMainAudioOutput   {"Sndout MainAudio Output"};         // index, port
inline constexpr ControlElement<4> kSndoutOpticQn           {"Sndout Optic QN"};                 // key or switch, volume, mute, 1
inline constexpr ControlElement<1> kSndoutOpticLight        {"Sndout Optic LightOnOff"};         // light
inline constexpr ControlElement<1> kSndoutArc               {"Sndout ARC OnOff"};                // ARC
inline constexpr ControlElement<1> kSndoutEarc              {"Sndout EARC OnOff"};               // eARC
inline constexpr ControlElement<5> kSndoutEarcOutputType    {"Sndout EARC Outputtype"};          // 2, codec type, 0, 0, mix option
inline constexpr ControlElement<2> kSndoutSpdifOutputType   {"Sndout Spdif OutputType"};         // optical mode, ARC mode
inline constexpr ControlElement<2> kSndoutSpdifCategoryCode {"Sndout Spdif CategoryCode"};       // the code, twice
inline constexpr ControlElement<2> kSndoutSpdifCopy         {"Sndout Spdif CopyProtectionInfo"}; // optical, ARC
inline constexpr ControlElement<1> kSndoutAtmosEncode       {"Sndout eAC3 ATMOS Encode OnOff"};  // encoder
inline constexpr ControlElement<2> kAdecDolbyOttMode        {"Adec Dolby OTTMode"};              // two flags
inline constexpr ControlElement<3> kGainInput               {"Gain Input"};                      // index, port, gain
inline constexpr ControlElement<2> kGainOutput              {"Gain Output"};                     // output type, gain
// clang-format on

/// The first integer of "Sndout Optic QN", but for the one write that opens the output.
inline constexpr std::int32_t kOpticQnKey = 0xF048A6; // sic
