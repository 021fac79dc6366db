// SPDX-License-Identifier: Apache-2.0
#include "digitalformats.h"

#include <algorithm>
#include <iterator>

namespace
{

/// The driver's numbers for one digital mode of one output.
struct ModeNumbers {
    int forced; // while Dolby Digital Plus is forced; 0: that changes nothing
    int japanMixed;
    int japan;
    int mixed;
    int plain;
};

struct ModeRow {
    std::string_view mode;
    ModeNumbers optic;
    ModeNumbers arc;
    ModeNumbers arcDolby; // the receiver's profile is one of Dolby's
};

// From the driver's list; nothing derives them.
// clang-format off
constexpr ModeRow kModes[] = {
    // each number list: forced, Japan mixed, Japan, mixed, plain
    // mode           optic               ARC                  ARC, Dolby
    {"passThrough", { 0, 3,  8, 2,  7}, { 0, 3, 13, 2, 12}, { 0, 5, 15, 4, 14}},
    {"auto",        { 6, 5,  3, 4,  2}, {10, 7,  3, 6,  2}, {11, 9,  5, 8,  4}},
    {"pcm",         { 0, 1,  1, 1,  1}, { 0, 1,  1, 1,  1}, { 0, 1,  1, 1,  1}},
};
// clang-format on
constexpr int kUnknownMode = 0;

struct CodecRow {
    std::string_view inputs[3]; // codecs of a pipeline
    const char* capability;     // what the receiver must be able to decode
    sndout_earc_output_codec_type type;
};

// In the order in which they are tried.
// clang-format off
constexpr CodecRow kPassThroughCodecs[] = {
    {{"truehd", "truehd_atmos"},         "TrueHD",  SNDOUT_EARC_TRUEHD},
    {{"dts_hd_ma"},                      "DTSHD",   SNDOUT_EARC_DTSHD},
    {{"mat", "mat_atmos"},               "MAT2PCM", SNDOUT_EARC_MAT2PCM},
    {{"eac3", "eac3_atmos"},             "DD+",     SNDOUT_EARC_DDPLUS},
    {{"ac3"},                            "DD",      SNDOUT_EARC_DD},
    {{"dts", "dts_cd", "dts_express"},   "DD",      SNDOUT_EARC_DD_FROM_DTS},
    {{"aac"},                            "AAC",     SNDOUT_EARC_AAC},
    {{"pcm"},                            "PCM",     SNDOUT_EARC_PCM},
};

struct ReEncodeRow {
    const char* capability;
    sndout_earc_output_codec_type type;
};
constexpr ReEncodeRow kReEncodePriority[] = {
    {"MAT2PCM", SNDOUT_EARC_MAT2PCM},
    {"DD+",     SNDOUT_EARC_DDPLUS},
    {"DD",      SNDOUT_EARC_DD},
};

constexpr std::string_view kDtsCodecs[] = {"dts", "dts_hd_ma", "dts_express", "dts_cd"};

// Every other codec, an unknown one included, counts as PCM.
constexpr std::string_view kCompressedCodecs[] = {
    "truehd", "truehd_atmos", "mat",  "mat_atmos",  "eac3", "eac3_atmos",  "ac3",   "mpeg_h", "aac",
    "heaac",  "ac4",          "dts",  "ac4_atmos",  "opus", "dts_express", "dts_cd", "dts_hd_ma",
};
// clang-format on

template <std::size_t Size>
bool isOneOf(std::string_view name, const std::string_view (&names)[Size])
{
    return !name.empty() && std::find(std::begin(names), std::end(names), name) != std::end(names);
}

const ModeRow* findMode(std::string_view mode)
{
    const auto* row =
        std::find_if(std::begin(kModes), std::end(kModes),
                     [&](const ModeRow& candidate) { return candidate.mode == mode; });
    return row != std::end(kModes) ? row : nullptr;
}

int numberOf(const ModeNumbers& numbers, const DigitalFormats& formats, bool japan)
{
    if (formats.forcedDDPlus && numbers.forced != 0)
        return numbers.forced;
    if (japan)
        return formats.mixed ? numbers.japanMixed : numbers.japan;
    return formats.mixed ? numbers.mixed : numbers.plain;
}

} // namespace

// --- Optical and ARC

int DigitalFormats::optic(std::string_view mode) const
{
    const ModeRow* row = findMode(mode);
    return row != nullptr ? numberOf(row->optic, *this, isJapan()) : kUnknownMode;
}

int DigitalFormats::arc(std::string_view mode) const
{
    const ModeRow* row = findMode(mode);
    if (row == nullptr)
        return kUnknownMode;
    const bool dolby = arcProfile == "EAC3" || arcProfile == "ATMOS";
    // sic: unlike ARC, optical does not look at the model; callers rely on it
    return numberOf(dolby ? row->arcDolby : row->arc, *this, isJapan() && !bnoModel);
}

// --- Country and codec

bool DigitalFormats::isJapan() const
{
    return country == "JP";
}

bool DigitalFormats::isDts() const
{
    return isOneOf(codec, kDtsCodecs);
}

bool DigitalFormats::isPcm() const
{
    return !isOneOf(codec, kCompressedCodecs);
}

// --- eARC

std::optional<EarcFormat> DigitalFormats::passedThrough(const CanDecode& canDecode) const
{
    for (const CodecRow& row : kPassThroughCodecs)
        if (isOneOf(codec, row.inputs) && canDecode(row.capability))
            return EarcFormat{row.type, mixed ? SNDOUT_EARC_MIX_ON : SNDOUT_EARC_MIX_OFF};
    return std::nullopt;
}

std::optional<EarcFormat> DigitalFormats::aacInJapan(const CanDecode& canDecode) const
{
    if ((source == "HDMI" || source == "TV") && canDecode("AAC"))
        return EarcFormat{SNDOUT_EARC_AAC, SNDOUT_EARC_MIX_ON};
    return std::nullopt;
}

EarcFormat DigitalFormats::reEncoded(const CanDecode& canDecode)
{
    for (const ReEncodeRow& row : kReEncodePriority)
        if (canDecode(row.capability))
            return {row.type, SNDOUT_EARC_MIX_ON};
    return kPcm;
}

EarcFormat DigitalFormats::reEncodedDts(const CanDecode& canDecode)
{
    return canDecode("DTS") ? EarcFormat{SNDOUT_EARC_DD_FROM_DTS, SNDOUT_EARC_MIX_ON} : kPcm;
}
