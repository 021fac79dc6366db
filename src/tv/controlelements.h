// SPDX-License-Identifier: Apache-2.0
// The control elements of the audio driver: names, and the integers that each one takes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "catalogue.h"
#include "soundoutputs.h"

/// An element with the number of its integers; writing it with another number does not compile.
template <std::size_t Count>
struct ControlElement {
    const char* name = nullptr;
    kepControlInteger integers[Count] = {};
};

template <std::size_t Count>
constexpr kepControlElement shown(const ControlElement<Count>& element)
{
    return {element.name, listOf(element.integers)};
}

/// The first integer of "Sndout Optic QN", but for the one write that opens the output.
inline constexpr std::int32_t kOpticQnKey = 0xF048A6; // sic; of the driver
/// What every gain is set to. Nothing derives it.
inline constexpr std::int32_t kInitialGain = 0x800000; // of the driver

extern const kepList<kepNamedNumber> kBlocks;     // of the resources
extern const kepList<kepNamedNumber> kSwitch;     // off, on
extern const kepList<kepNamedNumber> kMuteSwitch; // unmuted, muted
extern const kepList<kepNamedNumber> kEarcCodecs; // sndout_earc_output_codec_type

inline constexpr kepControlInteger kOutputType{"output type", &kOutputTypes};
inline constexpr kepControlInteger kIndex{"index", &kBlocks};    // a resource's block,
inline constexpr kepControlInteger kPort{"port", nullptr, 0, 7}; // and its port there
inline constexpr kepControlInteger kMute{"mute", &kMuteSwitch};
inline constexpr kepControlInteger kGain{"gain", nullptr, kInitialGain, kInitialGain};
inline constexpr kepControlInteger kCategoryCode{"category code", nullptr, 0, 100};

// The integers in order.
// clang-format off
inline constexpr ControlElement<3> kSndoutConnect           {"Sndout Connect",                  {kOutputType, kIndex, kPort}};
inline constexpr ControlElement<3> kSndoutDisconnect        {"Sndout Disconnect",               {kOutputType, kIndex, kPort}};
inline constexpr ControlElement<1> kSndoutOpen              {"Sndout Open",                     {kOutputType}};
inline constexpr ControlElement<1> kSndoutClose             {"Sndout Close",                    {kOutputType}};
inline constexpr ControlElement<2> kMuteOutput              {"Mute Output",                     {kOutputType, kMute}};
inline constexpr ControlElement<3> kMuteInput               {"Mute Input",                      {kIndex, kPort, kMute}};
inline constexpr ControlElement<2> kSndoutMainAudioOutput   {"Sndout MainAudio Output",         {kIndex, kPort}};
inline constexpr ControlElement<4> kSndoutOpticQn           {"Sndout Optic QN",                 {{"key", nullptr, 1, kOpticQnKey}, {"volume", nullptr, 0, 255}, kMute, {"power", &kSwitch}}};
inline constexpr ControlElement<1> kSndoutOpticLight        {"Sndout Optic LightOnOff",         {{"light", &kSwitch}}};
inline constexpr ControlElement<1> kSndoutArc               {"Sndout ARC OnOff",                {{"ARC", &kSwitch}}};
inline constexpr ControlElement<1> kSndoutEarc              {"Sndout EARC OnOff",               {{"eARC", &kSwitch}}};
inline constexpr ControlElement<5> kSndoutEarcOutputType    {"Sndout EARC Outputtype",          {{"2", nullptr, 2, 2}, {"codec", &kEarcCodecs}, {"0"}, {"0"}, {"mix", &kSwitch}}};
inline constexpr ControlElement<2> kSndoutSpdifOutputType   {"Sndout Spdif OutputType",         {{"optical mode", nullptr, 0, 8}, {"ARC mode", nullptr, 0, 15}}};
inline constexpr ControlElement<2> kSndoutSpdifCategoryCode {"Sndout Spdif CategoryCode",       {kCategoryCode, kCategoryCode}};
inline constexpr ControlElement<2> kSndoutSpdifCopy         {"Sndout Spdif CopyProtectionInfo", {{"optical copyright", nullptr, 0, 8}, {"ARC copyright", nullptr, 0, 8}}};
inline constexpr ControlElement<1> kSndoutAtmosEncode       {"Sndout eAC3 ATMOS Encode OnOff",  {{"encoder", &kSwitch}}};
inline constexpr ControlElement<2> kAdecDolbyOttMode        {"Adec Dolby OTTMode",              {{"OTT", &kSwitch}, {"Atmos locking", &kSwitch}}};
inline constexpr ControlElement<3> kGainInput               {"Gain Input",                      {kIndex, kPort, kGain}};
inline constexpr ControlElement<2> kGainOutput              {"Gain Output",                     {kOutputType, kGain}};

/// All of them, for the catalogue.
inline constexpr kepControlElement kControlElements[] = {
    shown(kSndoutConnect),           shown(kSndoutDisconnect),  shown(kSndoutOpen),       shown(kSndoutClose),
    shown(kMuteOutput),              shown(kMuteInput),         shown(kSndoutMainAudioOutput),
    shown(kSndoutOpticQn),           shown(kSndoutOpticLight),  shown(kSndoutArc),        shown(kSndoutEarc),
    shown(kSndoutEarcOutputType),    shown(kSndoutSpdifOutputType),
    shown(kSndoutSpdifCategoryCode), shown(kSndoutSpdifCopy),   shown(kSndoutAtmosEncode),
    shown(kAdecDolbyOttMode),        shown(kGainInput),         shown(kGainOutput),
};
// clang-format on
