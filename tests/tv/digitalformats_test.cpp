// SPDX-License-Identifier: Apache-2.0
// The formats of optical, ARC and eARC: which of the driver's numbers follow from what.
#include "digitalformats.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

// Found by GoogleTest beside the type.
static void PrintTo(const EarcFormat& format, std::ostream* out)
{
    *out << "codec " << format.codec << ", mix option " << format.mix;
}

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

// --- Optical and ARC

struct ModeRow {
    const char* mode;
    bool japan;
    bool bno;
    bool mixed;
    bool forced;
    int optic;
    int arc;
    int arcDolby; // ARC profile "EAC3" or "ATMOS"
};

// clang-format off
constexpr ModeRow kModes[] = {
    // mode           japan  bno    mixed  forced  optic  arc  Dolby
    {"passThrough", false, false, false, false,   7,    12,  14},
    {"passThrough", false, false, false, true,    7,    12,  14},
    {"passThrough", false, false, true,  false,   2,     2,   4},
    {"passThrough", false, false, true,  true,    2,     2,   4},
    {"passThrough", false, true,  false, false,   7,    12,  14},
    {"passThrough", false, true,  false, true,    7,    12,  14},
    {"passThrough", false, true,  true,  false,   2,     2,   4},
    {"passThrough", false, true,  true,  true,    2,     2,   4},
    {"passThrough", true,  false, false, false,   8,    13,  15},
    {"passThrough", true,  false, false, true,    8,    13,  15},
    {"passThrough", true,  false, true,  false,   3,     3,   5},
    {"passThrough", true,  false, true,  true,    3,     3,   5},
    {"passThrough", true,  true,  false, false,   8,    12,  14},
    {"passThrough", true,  true,  false, true,    8,    12,  14},
    {"passThrough", true,  true,  true,  false,   3,     2,   4},
    {"passThrough", true,  true,  true,  true,    3,     2,   4},
    {"auto",        false, false, false, false,   2,     2,   4},
    {"auto",        false, false, false, true,    6,    10,  11},
    {"auto",        false, false, true,  false,   4,     6,   8},
    {"auto",        false, false, true,  true,    6,    10,  11},
    {"auto",        false, true,  false, false,   2,     2,   4},
    {"auto",        false, true,  false, true,    6,    10,  11},
    {"auto",        false, true,  true,  false,   4,     6,   8},
    {"auto",        false, true,  true,  true,    6,    10,  11},
    {"auto",        true,  false, false, false,   3,     3,   5},
    {"auto",        true,  false, false, true,    6,    10,  11},
    {"auto",        true,  false, true,  false,   5,     7,   9},
    {"auto",        true,  false, true,  true,    6,    10,  11},
    {"auto",        true,  true,  false, false,   3,     2,   4},
    {"auto",        true,  true,  false, true,    6,    10,  11},
    {"auto",        true,  true,  true,  false,   5,     6,   8},
    {"auto",        true,  true,  true,  true,    6,    10,  11},
};
// clang-format on

DigitalFormats formatsOf(const ModeRow& row, const std::string& arcProfile)
{
    return {.bnoModel = row.bno,
            .mixed = row.mixed,
            .forcedDDPlus = row.forced,
            .country = row.japan ? "JP" : "US",
            .arcProfile = arcProfile};
}

std::string name(const ModeRow& row, const std::string& arcProfile)
{
    return std::string{row.mode} + (row.japan ? " japan" : "") + (row.bno ? " bno" : "") +
           (row.mixed ? " mixed" : "") + (row.forced ? " forced" : "") + " " + arcProfile;
}

TEST(DigitalModes, OfOpticalFollowCountryMixerAndForcedFormatOnly)
{
    for (const ModeRow& row : kModes)
        for (const char* profile : {"", "EAC3", "ATMOS"})
            EXPECT_EQ(formatsOf(row, profile).optic(row.mode), row.optic) << name(row, profile);
}

TEST(DigitalModes, OfArcFollowTheModelToo)
{
    for (const ModeRow& row : kModes)
        EXPECT_EQ(formatsOf(row, "").arc(row.mode), row.arc) << name(row, "");
}

TEST(DigitalModes, OfArcAreOthersWithADolbyProfile)
{
    for (const ModeRow& row : kModes) {
        for (const char* profile : {"EAC3", "ATMOS"})
            EXPECT_EQ(formatsOf(row, profile).arc(row.mode), row.arcDolby) << name(row, profile);
        for (const char* profile : {"AC3", "eac3", "Atmos", "EAC3 ", "None"})
            EXPECT_EQ(formatsOf(row, profile).arc(row.mode), row.arc) << name(row, profile);
    }
}

TEST(DigitalModes, OfPcmAndOfUnknownModesAreAlwaysTheSame)
{
    for (const ModeRow& row : kModes) {
        for (const char* profile : {"", "EAC3", "ATMOS"}) {
            const DigitalFormats formats = formatsOf(row, profile);
            EXPECT_EQ(formats.optic("pcm"), 1) << name(row, profile);
            EXPECT_EQ(formats.arc("pcm"), 1) << name(row, profile);
            for (const char* mode : {"", "PCM", "Auto", "passthrough", "other"}) {
                EXPECT_EQ(formats.optic(mode), 0) << mode << name(row, profile);
                EXPECT_EQ(formats.arc(mode), 0) << mode << name(row, profile);
            }
        }
    }
}

TEST(DigitalModes, AreThoseOfJapanForExactlyItsCode)
{
    EXPECT_TRUE(DigitalFormats{.country = "JP"}.isJapan());
    for (const char* country : {"", "jp", "JPN", "J", " JP", "US"})
        EXPECT_FALSE(DigitalFormats{.country = country}.isJapan()) << country;
}

TEST(DigitalModes, DoNotFollowCodecAndSource)
{
    const DigitalFormats formats = {.codec = "eac3", .source = "HDMI"};
    EXPECT_EQ(formats.optic("passThrough"), 7);
    EXPECT_EQ(formats.optic("auto"), 2);
    EXPECT_EQ(formats.arc("passThrough"), 12);
    EXPECT_EQ(formats.arc("auto"), 2);
}

// --- Codecs

struct CodecRow {
    const char* codec;
    bool dts;
    bool pcm;
    const char* capability; // that passing it through needs; "" when it never is
    int number;             // of the codec on eARC then
};

// clang-format off
constexpr CodecRow kCodecs[] = {
    // codec           DTS    PCM    capability  eARC
    {"truehd",       false, false, "TrueHD",   6},
    {"truehd_atmos", false, false, "TrueHD",   6},
    {"dts_hd_ma",    true,  false, "DTSHD",    8},
    {"mat",          false, false, "MAT2PCM",  7},
    {"mat_atmos",    false, false, "MAT2PCM",  7},
    {"eac3",         false, false, "DD+",      5},
    {"eac3_atmos",   false, false, "DD+",      5},
    {"ac3",          false, false, "DD",       2},
    {"dts",          true,  false, "DD",       4},
    {"dts_cd",       true,  false, "DD",       4},
    {"dts_express",  true,  false, "DD",       4},
    {"aac",          false, false, "AAC",      3},
    {"pcm",          false, true,  "PCM",      1},
    {"mpeg_h",       false, false, "",         0},
    {"heaac",        false, false, "",         0},
    {"ac4",          false, false, "",         0},
    {"ac4_atmos",    false, false, "",         0},
    {"opus",         false, false, "",         0},
    {"",             false, true,  "",         0},
    {"flac",         false, true,  "",         0},
    {"TrueHD",       false, true,  "",         0},
    {"dts_hd",       false, true,  "",         0},
};
// clang-format on

TEST(Codec, CountsAsPcmUnlessItIsKnownToBeCompressed)
{
    for (const CodecRow& row : kCodecs)
        EXPECT_EQ(DigitalFormats{.codec = row.codec}.isPcm(), row.pcm) << row.codec;
}

TEST(Codec, IsOneOfFourOfDts)
{
    for (const CodecRow& row : kCodecs)
        EXPECT_EQ(DigitalFormats{.codec = row.codec}.isDts(), row.dts) << row.codec;
}

// --- eARC

const Texts kCapabilities = {"PCM", "DD", "DD+", "MAT2PCM", "TrueHD", "DTSHD", "DTS", "AAC"};

/// A receiver that remembers what it was asked for.
struct Receiver {
    Texts capabilities;
    Texts asked = {};

    DigitalFormats::CanDecode canDecode()
    {
        return [this](const std::string& capability) {
            asked.push_back(capability);
            return std::find(capabilities.begin(), capabilities.end(), capability) !=
                   capabilities.end();
        };
    }
};

EarcFormat earc(int codec, int mix)
{
    return {static_cast<sndout_earc_output_codec_type>(codec),
            static_cast<sndout_earc_output_mix_option>(mix)};
}

TEST(EarcPassThrough, NeedsTheCapabilityOfTheCodec)
{
    for (const CodecRow& row : kCodecs) {
        for (const std::string& capability : kCapabilities) {
            Receiver receiver{{capability}};
            const std::optional<EarcFormat> format =
                DigitalFormats{.codec = row.codec}.passedThrough(receiver.canDecode());
            if (capability == row.capability)
                EXPECT_EQ(format, earc(row.number, 0)) << row.codec << " " << capability;
            else
                EXPECT_EQ(format, std::nullopt) << row.codec << " " << capability;
        }
    }
}

TEST(EarcPassThrough, AsksForTheCapabilityOfTheCodecOnly)
{
    for (const CodecRow& row : kCodecs) {
        for (const Texts& capabilities : {Texts{}, kCapabilities}) {
            Receiver receiver{capabilities};
            static_cast<void>(
                DigitalFormats{.codec = row.codec}.passedThrough(receiver.canDecode()));
            if (*row.capability != '\0')
                EXPECT_THAT(receiver.asked, ElementsAre(row.capability)) << row.codec;
            else
                EXPECT_THAT(receiver.asked, IsEmpty()) << row.codec;
        }
    }
}

TEST(EarcPassThrough, MixesWhenTheMixerIsOn)
{
    for (const CodecRow& row : kCodecs) {
        Receiver receiver{kCapabilities};
        const DigitalFormats formats = {.mixed = true, .codec = row.codec};
        const std::optional<EarcFormat> format = formats.passedThrough(receiver.canDecode());
        if (*row.capability != '\0')
            EXPECT_EQ(format, earc(row.number, 1)) << row.codec;
        else
            EXPECT_EQ(format, std::nullopt) << row.codec;
    }
}

TEST(EarcPassThrough, FollowsNeitherCountryNorSourceNorFlags)
{
    Receiver receiver{kCapabilities};
    const DigitalFormats formats = {.bnoModel = true,
                                    .forcedDDPlus = true,
                                    .country = "JP",
                                    .arcProfile = "ATMOS",
                                    .codec = "ac3",
                                    .source = "HDMI"};
    EXPECT_EQ(formats.passedThrough(receiver.canDecode()), earc(2, 0));
}

TEST(EarcReEncoding, TakesTheBestThatTheReceiverCanDecode)
{
    struct Row {
        Texts capabilities;
        int number;
        Texts asked;
    };
    // clang-format off
    const Row rows[] = {
        {{},                                 1, {"MAT2PCM", "DD+", "DD"}},
        {{"PCM", "TrueHD", "DTSHD", "DTS"},  1, {"MAT2PCM", "DD+", "DD"}},
        {{"AAC"},                            1, {"MAT2PCM", "DD+", "DD"}},
        {{"DD"},                             2, {"MAT2PCM", "DD+", "DD"}},
        {{"DD+"},                            5, {"MAT2PCM", "DD+"}},
        {{"DD", "DD+"},                      5, {"MAT2PCM", "DD+"}},
        {{"MAT2PCM"},                        7, {"MAT2PCM"}},
        {{"DD", "MAT2PCM"},                  7, {"MAT2PCM"}},
        {{"DD", "DD+", "MAT2PCM"},           7, {"MAT2PCM"}},
        {kCapabilities,                      7, {"MAT2PCM"}},
    };
    // clang-format on
    for (const Row& row : rows) {
        Receiver receiver{row.capabilities};
        EXPECT_EQ(DigitalFormats::reEncoded(receiver.canDecode()), earc(row.number, 1))
            << testing::PrintToString(row.capabilities);
        EXPECT_THAT(receiver.asked, ElementsAreArray(row.asked));
    }
}

TEST(EarcReEncoding, OfDtsNeedsDtsAndNothingElse)
{
    for (const std::string& capability : kCapabilities) {
        Receiver receiver{{capability}};
        EXPECT_EQ(DigitalFormats::reEncodedDts(receiver.canDecode()),
                  earc(capability == "DTS" ? 4 : 1, 1))
            << capability;
        EXPECT_THAT(receiver.asked, ElementsAre("DTS"));
    }
}

TEST(EarcReEncoding, InJapanIsToAacForWhatHdmiAndTunerBring)
{
    for (const char* source : {"HDMI", "TV"}) {
        for (const CodecRow& row : kCodecs) { // whatever comes in
            for (const std::string& capability : kCapabilities) {
                Receiver receiver{{capability}};
                const DigitalFormats formats = {
                    .country = "JP", .codec = row.codec, .source = source};
                const std::optional<EarcFormat> format = formats.aacInJapan(receiver.canDecode());
                if (capability == "AAC")
                    EXPECT_EQ(format, earc(3, 1)) << source << " " << row.codec;
                else
                    EXPECT_EQ(format, std::nullopt) << source << " " << capability;
                EXPECT_THAT(receiver.asked, ElementsAre("AAC"));
            }
        }
    }
}

TEST(EarcReEncoding, InJapanIsNotToAacForOtherSources)
{
    for (const char* source : {"", "USB", "hdmi", "HDMI1", "tv"}) {
        Receiver receiver{kCapabilities};
        const DigitalFormats formats = {.country = "JP", .codec = "ac3", .source = source};
        EXPECT_EQ(formats.aacInJapan(receiver.canDecode()), std::nullopt) << source;
        EXPECT_THAT(receiver.asked, IsEmpty()) << source;
    }
}

TEST(EarcReEncoding, EndsAtPcmMixed)
{
    EXPECT_EQ(DigitalFormats::kPcm, earc(1, 1));
}

} // namespace
