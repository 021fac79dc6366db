// SPDX-License-Identifier: Apache-2.0
// Digital outputs. The numbers of the modes are written down as one row for each combination of
// flags; the choice of the eARC format is restated as plainly as possible and compared with that
// for every codec and every set of capabilities.
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFile = "keptvaudio:";
constexpr const char* kCountry = "tv.hw.countryType";
constexpr const char* kBroadcastSystem = "tv.zib.tvBroadcastSystem";

LogLine said(const std::string& function, const std::string& text)
{
    return info(kFile + function, text);
}

LogLine whispered(const std::string& function, const std::string& text)
{
    return debug(kFile + function, text);
}

LogLine notSet(const std::string& function, const std::string& text)
{
    return error("CONTROL_ELEMENT_SET_ERROR", kFile + function, text);
}

/// What only other rooms of the backend write.
class DigitalTest : public TvBackendTest
{
protected:
    static kepTvParser::Map& quality() { return store().mQualityParamsMap; }
    static kepTvParser::Map& pipeline() { return store().mAvParamsMap; }

    static void setCountry(bool japan) { quality()[kCountry] = japan ? "JP" : "US"; }
    [[nodiscard]] bool& mixes() { return mBackend.mMixerFlag; }
    [[nodiscard]] bool& forces() { return mBackend.mForcedDDPlus; }
    [[nodiscard]] bool& isBnoModel() { return mBackend.mSupportBnoModel; }
    [[nodiscard]] std::string& arcProfile() { return mBackend.mArcProfile; }
    void setCapabilities(const Texts& codecs) { mBackend.mEarcCapability = arrayOf(codecs); }

    /// The current output, with the user's digital mode.
    void select(KEP_AUDIO_SNDOUT_T output, const std::string& mode)
    {
        mBackend.mCurrentSoundout = output;
        quality()["soundOutputDigital"] = mode;
    }

    void expect(const Texts& expectedTold, const Lines& expectedLines, const std::string& what)
    {
        EXPECT_EQ(told(), expectedTold) << what;
        EXPECT_EQ(logLines(), expectedLines) << what;
    }
};

std::string earcWrite(int type, int mix)
{
    return "Sndout EARC Outputtype 2 " + std::to_string(type) + " 0 0 " + std::to_string(mix);
}

Lines earcLines(int type, int mix, bool refused = false)
{
    Lines lines = {said("setEArcOutputType", "set codec type: " + std::to_string(type) +
                                                 " for earc output type and mixer value is " +
                                                 std::to_string(mix))};
    if (refused) {
        lines.push_back(refusedByDriver());
        lines.push_back(
            notSet("setEArcOutputType", "Did not able to set the element: Sndout EARC Outputtype"));
    }
    return lines;
}

// --- Country and current mode

TEST_F(DigitalTest, TheCountryIsJapanWhenItsCodeSaysSo)
{
    EXPECT_FALSE(mBackend.isCountryCodeJP()); // nothing is known
    for (const char* code : {"JP", "jp", "JPN", "J", "US", "", " JP"}) {
        quality()[kCountry] = code;
        EXPECT_EQ(mBackend.isCountryCodeJP(), code == std::string{"JP"}) << code;
    }
    pipeline()[kCountry] = "JP"; // the wrong map
    quality().erase(kCountry);
    EXPECT_FALSE(mBackend.isCountryCodeJP());
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(DigitalTest, TheModeIsTheUsersForOpticalAndArcOnly)
{
    for (const KEP_AUDIO_SNDOUT_T output : kAllOutputs) {
        for (const char* mode : {"pcm", "auto", "passThrough", "other", ""}) {
            select(output, mode);
            forget();
            if (output == KEP_AUDIO_SPDIF || output == KEP_AUDIO_ARC) {
                EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), mode);
                EXPECT_THAT(logLines(),
                            ElementsAre(said("getSoundOutputDigitalMode",
                                             std::string{"Setting digital mode as "} + mode)));
            } else {
                EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), "pcm") << output;
                EXPECT_THAT(
                    logLines(),
                    ElementsAre(said("getSoundOutputDigitalMode",
                                     "Setting digital mode as pcm, since its not optical or arc")));
            }
        }
    }
}

TEST_F(DigitalTest, TheModeIsEmptyUntilTheUserHasChosen)
{
    for (const KEP_AUDIO_SNDOUT_T output : {KEP_AUDIO_SPDIF, KEP_AUDIO_ARC}) {
        mBackend.mCurrentSoundout = output;
        forget();
        EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), "");
        EXPECT_THAT(logLines(),
                    ElementsAre(said("getSoundOutputDigitalMode", "Setting digital mode as ")));
    }
}

// --- Mode numbers

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

struct ProfileRow {
    const char* name;
    bool dolby;
};
constexpr ProfileRow kProfiles[] = {
    {"EAC3", true}, {"ATMOS", true}, {"AC3", false}, {"", false}, {"eac3", false}, {"Atmos", false},
};

class ModeNumbers : public DigitalTest
{
protected:
    void enter(const ModeRow& row, const char* profile)
    {
        setCountry(row.japan);
        isBnoModel() = row.bno;
        mixes() = row.mixed;
        forces() = row.forced;
        arcProfile() = profile;
        forget();
    }

    static Lines optic(const std::string& mode, int number)
    {
        return {
            said("getSoundOutputOpticMode",
                 "Get SoundOutputMode for Optic digitalMode " + mode + " "),
            whispered("getSoundOutputOpticMode", "Optic digital mode " + std::to_string(number))};
    }
    static Lines arc(const std::string& mode, int number)
    {
        return {
            said("getSoundOutputArcMode", "Get SoundOutputMode for ARC digitalMode " + mode + " "),
            whispered("getSoundOutputArcMode", "Arc digital mode " + std::to_string(number))};
    }

    static std::string name(const ModeRow& row, const char* profile)
    {
        return row.mode + (" " + flag(row.japan)) + flag(row.bno) + flag(row.mixed) +
               flag(row.forced) + " " + profile;
    }
};

TEST_F(ModeNumbers, FollowCountryMixerForcedFormatModelAndProfile)
{
    for (const ModeRow& row : kModes) {
        for (const ProfileRow& profile : kProfiles) {
            const std::string what = name(row, profile.name);
            const int arcNumber = profile.dolby ? row.arcDolby : row.arc;
            const bool passes = row.mode == std::string{"passThrough"};
            enter(row, profile.name);
            EXPECT_EQ(passes ? mBackend.getPassThroughOpticMode() : mBackend.getAutoOpticMode(),
                      row.optic)
                << what;
            EXPECT_EQ(passes ? mBackend.getPassThroughArcMode() : mBackend.getAutoArcMode(),
                      arcNumber)
                << what;
            EXPECT_THAT(logLines(), IsEmpty());
            EXPECT_EQ(mBackend.getSoundOutputOpticMode(row.mode), row.optic) << what;
            EXPECT_EQ(mBackend.getSoundOutputArcMode(row.mode), arcNumber) << what;
            EXPECT_EQ(logLines(), optic(row.mode, row.optic) + arc(row.mode, arcNumber)) << what;
            EXPECT_THAT(told(), IsEmpty());
        }
    }
}

TEST_F(ModeNumbers, OfPcmAndOfOtherModesAreAlwaysTheSame)
{
    for (const ModeRow& row : kModes) {
        for (const ProfileRow& profile : kProfiles) {
            for (const std::string mode : {"pcm", "PCM", "passthrough", "Auto", "", "other"}) {
                enter(row, profile.name);
                const int number = mode == "pcm" ? 1 : 0;
                EXPECT_EQ(mBackend.getSoundOutputOpticMode(mode), number) << mode;
                EXPECT_EQ(mBackend.getSoundOutputArcMode(mode), number) << mode;
                EXPECT_EQ(logLines(), optic(mode, number) + arc(mode, number)) << mode;
            }
        }
    }
}

TEST_F(ModeNumbers, OfAnUnknownCountryAreNotThoseOfJapan)
{
    quality().erase(kCountry);
    EXPECT_EQ(mBackend.getPassThroughOpticMode(), 7);
    EXPECT_EQ(mBackend.getAutoOpticMode(), 2);
    EXPECT_EQ(mBackend.getPassThroughArcMode(), 12);
    EXPECT_EQ(mBackend.getAutoArcMode(), 2);
}

TEST_F(ModeNumbers, AreWrittenBeforeTheFormatOfEarc)
{
    for (const ModeRow& row : kModes) {
        for (const ProfileRow& profile : kProfiles) {
            enter(row, profile.name);
            const int arcNumber = profile.dolby ? row.arcDolby : row.arc;
            EXPECT_TRUE(mBackend.setSoundOutputDigital(row.mode));
            EXPECT_THAT(told(), ElementsAre("Sndout Spdif OutputType " + std::to_string(row.optic) +
                                                " " + std::to_string(arcNumber),
                                            earcWrite(1, 1)))
                << name(row, profile.name); // no codec, no capability: PCM
        }
    }
}

TEST_F(ModeNumbers, AndTheFormatOfEarcAreBothTriedAndBothCount)
{
    for (const std::string mode : {"pcm", "other"}) {
        const bool known = mode == "pcm";
        for (const bool first : {false, true}) {
            for (const bool second : {false, true}) {
                clearInjections();
                if (first)
                    injectCard("write", kRefused, "Sndout Spdif OutputType");
                if (second)
                    injectCard("write", kRefused, "Sndout EARC Outputtype");
                forget();
                EXPECT_EQ(mBackend.setSoundOutputDigital(mode), known && !first && !second);
                const std::string number = known ? "1" : "0";
                Texts expectedTold = {"Sndout Spdif OutputType " + number + " " + number +
                                      (first ? " -> -5" : "")};
                Lines expected =
                    Lines{said("setSoundOutputDigital", "Request to set digital mode as " + mode)} +
                    optic(mode, known ? 1 : 0) + arc(mode, known ? 1 : 0);
                if (first)
                    expected =
                        expected +
                        Lines{refusedByDriver(),
                              notSet("setSoundOutputDigital",
                                     "setSoundOutputDigital : Did not able to set the "
                                     "element: Sndout Spdif OutputType with digitalMode as " +
                                         mode)};
                if (known) {
                    expectedTold.push_back(earcWrite(1, 1) + (second ? " -> -5" : ""));
                    expected = expected + earcLines(1, 1, second);
                }
                expect(expectedTold, expected, mode);
            }
        }
    }
}

// --- The format of eARC

// Every codec that has a rule; then some that have none.
const Texts kCodecs = {
    "truehd", "truehd_atmos", "mat", "mat_atmos", "eac3",   "eac3_atmos", "ac3",  "mpeg_h",
    "aac",    "heaac",        "ac4", "ac4_atmos", "dts",    "dts_hd_ma",  "opus", "dts_express",
    "dts_cd", "pcm",          "",    "flac",      "TrueHD", "dts_hd",
};
const Texts kCapabilities = {"PCM", "DD", "DD+", "MAT2PCM", "TrueHD", "DTSHD", "DTS", "AAC"};

const std::set<std::string> kNotPcm = {
    "truehd", "truehd_atmos", "mat",  "mat_atmos",   "eac3",   "eac3_atmos",
    "ac3",    "mpeg_h",       "aac",  "heaac",       "ac4",    "ac4_atmos",
    "dts",    "dts_hd_ma",    "opus", "dts_express", "dts_cd",
};
const std::set<std::string> kDts = {"dts", "dts_hd_ma", "dts_express", "dts_cd"};

struct Stream {
    std::string codec;
    std::string source = {};
    bool japan = false;
    bool mixed = false;
};

std::string reEncoded(const Stream& stream, const std::set<std::string>& device)
{
    if (kDts.count(stream.codec) != 0)
        return earcWrite(device.count("DTS") != 0 ? 4 : 1, 1);
    if (stream.japan && (stream.source == "HDMI" || stream.source == "TV") &&
        device.count("AAC") != 0)
        return earcWrite(3, 1);
    if (kNotPcm.count(stream.codec) == 0)
        return earcWrite(1, 1);
    if (device.count("MAT2PCM") != 0)
        return earcWrite(7, 1);
    if (device.count("DD+") != 0)
        return earcWrite(5, 1);
    if (device.count("DD") != 0)
        return earcWrite(2, 1);
    return earcWrite(1, 1);
}

std::string passedThrough(const Stream& stream, const std::set<std::string>& device)
{
    const std::string& codec = stream.codec;
    const int mix = stream.mixed ? 1 : 0;
    if ((codec == "truehd" || codec == "truehd_atmos") && device.count("TrueHD") != 0)
        return earcWrite(6, mix);
    if (codec == "dts_hd_ma" && device.count("DTSHD") != 0)
        return earcWrite(8, mix);
    if ((codec == "mat" || codec == "mat_atmos") && device.count("MAT2PCM") != 0)
        return earcWrite(7, mix);
    if ((codec == "eac3" || codec == "eac3_atmos") && device.count("DD+") != 0)
        return earcWrite(5, mix);
    if (codec == "ac3" && device.count("DD") != 0)
        return earcWrite(2, mix);
    if ((codec == "dts" || codec == "dts_cd" || codec == "dts_express") && device.count("DD") != 0)
        return earcWrite(4, mix);
    if (codec == "aac" && device.count("AAC") != 0)
        return earcWrite(3, mix);
    if (codec == "pcm" && device.count("PCM") != 0)
        return earcWrite(1, mix);
    return reEncoded(stream, device);
}

class Earc : public DigitalTest
{
protected:
    void enter(const Stream& stream)
    {
        setCountry(stream.japan);
        pipeline() = {{"codec", stream.codec}, {"sourceType", stream.source}};
        mixes() = stream.mixed;
        forget();
    }

    template <typename Check>
    void forEveryDevice(Check check)
    {
        for (unsigned int bits = 0; bits < 1U << kCapabilities.size(); ++bits) {
            Texts codecs;
            for (std::size_t i = 0; i < kCapabilities.size(); ++i)
                if ((bits >> i & 1U) != 0)
                    codecs.push_back(kCapabilities[i]);
            setCapabilities(codecs);
            check(std::set<std::string>{codecs.begin(), codecs.end()});
        }
    }

    template <typename Check>
    static void forEveryStream(Check check)
    {
        for (const std::string& codec : kCodecs)
            for (const bool mixed : {false, true})
                for (const bool japan : {false, true})
                    for (const char* source : {"HDMI", "TV", "USB"})
                        check(Stream{codec, source, japan, mixed});
    }

    static std::string name(const Stream& stream, const std::set<std::string>& device)
    {
        return stream.codec + " from " + stream.source + (stream.japan ? " in Japan" : "") +
               " to " + testing::PrintToString(device);
    }

    static LogLine available(const std::string& codec, bool available)
    {
        return said("isEarcCapabilityAvailable",
                    "Is earc capability available: " + flag(available) + " for " + codec);
    }
    static LogLine isCodec(const std::string& function, const std::string& codec)
    {
        return said(function, "input codec value is " + codec);
    }
};

TEST_F(Earc, FormatThatIsPassedThroughFollowsCodecAndDevice)
{
    admit(kLogError);
    forEveryDevice([this](const std::set<std::string>& device) {
        forEveryStream([&](const Stream& stream) {
            enter(stream);
            const bool done = mBackend.setEarcSoundOutputDigital("passThrough");
            if (!HasFailure() && (!done || told() != Texts{passedThrough(stream, device)}))
                ADD_FAILURE() << name(stream, device) << ": " << testing::PrintToString(told());
        });
    });
}

TEST_F(Earc, FormatThatIsReEncodedFollowsCodecDeviceAndCountry)
{
    admit(kLogError);
    forEveryDevice([this](const std::set<std::string>& device) {
        forEveryStream([&](const Stream& stream) {
            enter(stream);
            const bool done = mBackend.setEarcSoundOutputDigital("auto");
            if (!HasFailure() && (!done || told() != Texts{reEncoded(stream, device)}))
                ADD_FAILURE() << name(stream, device) << ": " << testing::PrintToString(told());
        });
    });
}

TEST_F(Earc, FormatOfAPipelineThatNobodyKnowsIsThatOfPcm)
{
    setCapabilities(kCapabilities);
    for (const bool japan : {false, true}) {
        for (const char* mode : {"auto", "passThrough"}) {
            pipeline().clear(); // neither codec nor source
            setCountry(japan);
            forget();
            EXPECT_TRUE(mBackend.setEarcSoundOutputDigital(mode));
            EXPECT_THAT(told(), ElementsAre(earcWrite(1, 1)));
        }
    }
}

TEST_F(Earc, ModesOtherThanTheThreeWriteNothing)
{
    setCapabilities(kCapabilities);
    for (const char* mode : {"", "PCM", "Auto", "passthrough", "other"}) {
        enter({.codec = "ac3"});
        EXPECT_FALSE(mBackend.setEarcSoundOutputDigital(mode)) << mode;
        expect({}, {}, mode);
    }
}

TEST_F(Earc, FormatOfModePcmIsPcmForEveryCodec)
{
    setCapabilities(kCapabilities);
    for (const std::string& codec : kCodecs) {
        for (const bool mixed : {false, true}) {
            enter({.codec = codec, .mixed = mixed});
            EXPECT_TRUE(mBackend.setEarcSoundOutputDigital("pcm"));
            expect({earcWrite(1, 1)}, earcLines(1, 1), codec);
        }
    }
}

TEST_F(Earc, FormatIsWrittenWithTypeAndMixOption)
{
    for (std::uint32_t type = 1; type <= 8; ++type) {
        for (const std::uint32_t mix : {0U, 1U}) {
            for (const bool refused : {false, true}) {
                clearInjections();
                if (refused)
                    refuseWrite(0);
                forget();
                EXPECT_EQ(
                    mBackend.setEArcOutputType(static_cast<sndout_earc_output_codec_type>(type),
                                               static_cast<sndout_earc_output_mix_option>(mix)),
                    !refused);
                const int number = static_cast<int>(type);
                const int option = static_cast<int>(mix);
                expect({earcWrite(number, option) + (refused ? " -> -5" : "")},
                       earcLines(number, option, refused), std::to_string(type));
            }
        }
    }
}

TEST_F(Earc, FormatThatCannotBeWrittenFailsInEveryMode)
{
    setCapabilities({"DD"});
    for (const bool japan : {false, true}) {
        for (const char* codec : {"ac3", "dts", "pcm"}) {
            for (const char* mode : {"pcm", "auto", "passThrough"}) {
                clearInjections();
                enter({.codec = codec, .japan = japan});
                refuseWrite(0);
                EXPECT_FALSE(mBackend.setEarcSoundOutputDigital(mode)) << codec << " " << mode;
                EXPECT_EQ(controlEvents().size(), 1U); // it is not tried again
            }
        }
    }
}

TEST_F(Earc, FormatThatIsPassedThroughTellsOfTheCodecAtDebugLevel)
{
    setCapabilities({"TrueHD"});
    enter({.codec = "truehd_atmos"});
    EXPECT_TRUE(mBackend.setEArcOutputTypeForPassThrough());
    expect({earcWrite(6, 0)},
           Lines{whispered("setEArcOutputTypeForPassThrough", "input codec value is truehd_atmos"),
                 available("TrueHD", true)} +
               earcLines(6, 0),
           "truehd");
}

TEST_F(Earc, FormatFallsThroughARowWhoseCapabilityIsMissing)
{
    setCapabilities({"DD"});
    enter({.codec = "eac3", .mixed = false});
    EXPECT_TRUE(mBackend.setEarcSoundOutputDigital("passThrough"));
    expect({earcWrite(2, 1)},
           Lines{whispered("setEArcOutputTypeForPassThrough", "input codec value is eac3"),
                 available("DD+", false), isCodec("checkReEncodePriority", "eac3"),
                 isCodec("isInputCodecPCM", "eac3"), available("MAT2PCM", false),
                 available("DD+", false), available("DD", true)} +
               earcLines(2, 1),
           "eac3");
}

TEST_F(Earc, FormatOfAnEmptyCodecIsReEncoded)
{
    setCapabilities({"PCM"});
    enter({.codec = ""});
    EXPECT_TRUE(mBackend.setEArcOutputTypeForPassThrough());
    expect({earcWrite(1, 1)},
           Lines{whispered("setEArcOutputTypeForPassThrough", "input codec value is "),
                 isCodec("checkReEncodePriority", ""), isCodec("isInputCodecPCM", "")} +
               earcLines(1, 1),
           "no codec");
}

TEST_F(Earc, FormatOfACompressedInputWithoutAnyCapabilityIsPcm)
{
    setCapabilities({});
    enter({.codec = "ac3"});
    EXPECT_TRUE(mBackend.checkReEncodePriority());
    expect({earcWrite(1, 1)},
           Lines{isCodec("checkReEncodePriority", "ac3"), isCodec("isInputCodecPCM", "ac3"),
                 available("MAT2PCM", false), available("DD+", false), available("DD", false)} +
               earcLines(1, 1),
           "ac3");
}

TEST_F(Earc, FormatOfDtsHasARuleOfItsOwn)
{
    for (const std::string& codec : kDts) {
        for (const bool dts : {false, true}) {
            for (const bool japan : {false, true}) {
                setCapabilities(dts ? Texts{"AAC", "DTS", "DD+"} : Texts{"AAC", "DTSHD", "DD+"});
                enter({.codec = codec, .source = "HDMI", .japan = japan});
                EXPECT_TRUE(mBackend.checkReEncodePriority());
                const int type = dts ? 4 : 1;
                const Lines own = Lines{whispered("setEArcOutputTypeForDTS",
                                                  "set dolby digital for DTS Input Source"),
                                        available("DTS", dts)} +
                                  earcLines(type, 1);
                expect({earcWrite(type, 1)}, Lines{isCodec("checkReEncodePriority", codec)} + own,
                       codec);
                forget();
                EXPECT_TRUE(mBackend.setEArcOutputTypeForDTS());
                expect({earcWrite(type, 1)}, own, codec);
            }
        }
    }
}

TEST_F(Earc, FormatInJapanLooksAtTheSource)
{
    setCapabilities({"AAC", "DD"});
    for (const char* source : {"HDMI", "TV"}) {
        enter({.codec = "pcm", .source = source, .japan = true});
        EXPECT_TRUE(mBackend.setDolbyForJP());
        expect(
            {earcWrite(3, 1)},
            Lines{whispered("setDolbyForJP",
                            std::string{"set dolby digital for country as JP & Input Source is "} +
                                source),
                  available("AAC", true)} +
                earcLines(3, 1),
            source);
    }
    for (const char* source : {"USB", "", "hdmi", "HDMI1"}) {
        enter({.codec = "ac3", .source = source, .japan = true});
        EXPECT_TRUE(mBackend.checkReEncodePriority());
        expect(
            {earcWrite(2, 1)},
            Lines{isCodec("checkReEncodePriority", "ac3"),
                  whispered("setDolbyForJP",
                            std::string{"set dolby digital for country as JP & Input Source is "} +
                                source),
                  isCodec("isInputCodecPCM", "ac3"), available("MAT2PCM", false),
                  available("DD+", false), available("DD", true)} +
                earcLines(2, 1),
            source);
    }
}

TEST_F(Earc, FormatInJapanWithoutAacIsThatOfEveryOtherCountry)
{
    setCapabilities({"DD+"});
    enter({.codec = "ac3", .source = "HDMI", .japan = true});
    EXPECT_TRUE(mBackend.setDolbyForJP());
    expect({earcWrite(5, 1)},
           Lines{whispered("setDolbyForJP",
                           "set dolby digital for country as JP & Input Source is HDMI"),
                 available("AAC", false), isCodec("isInputCodecPCM", "ac3"),
                 available("MAT2PCM", false), available("DD+", true)} +
               earcLines(5, 1),
           "HDMI");
}

TEST_F(Earc, FormatElsewhereDoesNotLookAtAac)
{
    setCapabilities({"AAC"});
    enter({.codec = "aac", .source = "HDMI"});
    EXPECT_TRUE(mBackend.setDolbyForNonJP());
    EXPECT_THAT(told(), ElementsAre(earcWrite(1, 1)));
    enter({.codec = "flac", .source = "TV"});
    EXPECT_TRUE(mBackend.setDolbyForNonJP());
    expect({earcWrite(1, 1)}, Lines{isCodec("isInputCodecPCM", "flac")} + earcLines(1, 1), "flac");
}

TEST_F(Earc, CodecIsThatOfTheCurrentPipeline)
{
    EXPECT_EQ(mBackend.getInputCodecType(), "");
    quality()["codec"] = "ac3"; // the wrong map
    EXPECT_EQ(mBackend.getInputCodecType(), "");
    pipeline()["codec"] = "eac3";
    EXPECT_EQ(mBackend.getInputCodecType(), "eac3");
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Earc, CodecCountsAsPcmUnlessItIsKnownToBeCompressed)
{
    for (const std::string& codec : kCodecs) {
        enter({.codec = codec});
        EXPECT_EQ(mBackend.isInputCodecPCM(), kNotPcm.count(codec) == 0) << codec;
        EXPECT_THAT(logLines(), ElementsAre(isCodec("isInputCodecPCM", codec)));
    }
    pipeline().clear();
    EXPECT_TRUE(mBackend.isInputCodecPCM());
}

TEST_F(Earc, CapabilityIsFoundByItsExactName)
{
    EXPECT_FALSE(mBackend.isEarcCapabilityAvailable("DD")); // no device has told of any
    setCapabilities({"AAC", "DD+", "DD+", "PCM "});
    struct Row {
        const char* codec;
        bool expected;
    };
    constexpr Row rows[] = {{"AAC", true},  {"DD+", true},  {"DD", false},  {"dd+", false},
                            {"PCM", false}, {"PCM ", true}, {"DD+ ", false}};
    for (const Row& row : rows) {
        forget();
        EXPECT_EQ(mBackend.isEarcCapabilityAvailable(row.codec), row.expected) << row.codec;
        EXPECT_THAT(logLines(), ElementsAre(available(row.codec, row.expected)));
    }
}

TEST_F(Earc, CapabilitiesAreReplacedWholeAndAppliedAtOnce)
{
    enter({.codec = "ac3"});
    select(KEP_AUDIO_ARC, "auto");
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({"DD+", "MAT2PCM"})));
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({"DD"})));
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({})));
    EXPECT_THAT(told(), ElementsAre(earcWrite(7, 1), earcWrite(2, 1), earcWrite(1, 1)));
}

TEST_F(Earc, CapabilitiesOfTheCallerAreItsOwnAfterwards)
{
    enter({.codec = "ac3"});
    JValue mine = arrayOf({"DD"});
    mBackend.updateEarcCapability(mine);
    mine.append("MAT2PCM");
    forget();
    EXPECT_FALSE(mBackend.isEarcCapabilityAvailable("MAT2PCM"));
    EXPECT_TRUE(mBackend.isEarcCapabilityAvailable("DD"));
}

TEST_F(Earc, CapabilitiesAreAppliedInTheModeOfTheCurrentOutput)
{
    struct Row {
        KEP_AUDIO_SNDOUT_T output;
        const char* mode;
        Texts told;
        bool result;
    };
    const Row rows[] = {
        {KEP_AUDIO_ARC, "passThrough", {earcWrite(5, 0)}, true},
        {KEP_AUDIO_ARC, "auto", {earcWrite(7, 1)}, true},
        {KEP_AUDIO_SPDIF, "auto", {earcWrite(7, 1)}, true},
        {KEP_AUDIO_ARC, "pcm", {earcWrite(1, 1)}, true},
        {KEP_AUDIO_ARC, "other", {}, false},
        {KEP_AUDIO_SPK, "auto", {earcWrite(1, 1)}, true},
        {KEP_AUDIO_SPK_OPTICAL_ARC, "passThrough", {earcWrite(1, 1)}, true},
    };
    for (const Row& row : rows) {
        enter({.codec = "eac3"});
        select(row.output, row.mode);
        EXPECT_EQ(mBackend.updateEarcCapability(arrayOf({"MAT2PCM", "DD+"})), row.result);
        EXPECT_EQ(told(), row.told) << row.output << " " << row.mode;
        EXPECT_EQ(logLines().front().origin, std::string{kFile} + "getSoundOutputDigitalMode");
        EXPECT_TRUE(mBackend.isEarcCapabilityAvailable("DD+")); // taken over in any case
    }
}

TEST_F(Earc, CapabilitiesAreTakenOverEvenWhenTheFormatCannotBeWritten)
{
    refuseWrite(0);
    EXPECT_FALSE(mBackend.updateEarcCapability(arrayOf({"DD"})));
    EXPECT_TRUE(mBackend.isEarcCapabilityAvailable("DD"));
}

// --- Codec and immersive format of a pipeline

TEST_F(Earc, FormatFollowsACodecThatArrivesWhileArcIsCurrent)
{
    const LogLine called = said("updateCodecImmersiveFormat",
                                "Called updateCodecImmersiveFormat to update codec and immersive "
                                "format");
    for (const KEP_AUDIO_SNDOUT_T output : kAllOutputs) {
        for (const bool codec : {false, true}) {
            for (const bool immersive : {false, true}) {
                for (const int status : {0, 7}) {
                    clearInjections();
                    injectMiddleware("soundengine.setImmersiveInfo", status);
                    setCapabilities({"DD"});
                    enter({.codec = "ac3"});
                    select(output, "auto");
                    AudioVideoInfo attributes = {{"pipelineId", "p"}};
                    if (codec)
                        attributes["codec"] = "eac3"; // that of the current pipeline counts
                    if (immersive)
                        attributes["immersive"] = "ATMOS";
                    mBackend.updateCodecImmersiveFormat(attributes);
                    Texts expected;
                    if (immersive)
                        expected.push_back(std::string{R"(soundengine.setImmersiveInfo "ATMOS")"} +
                                           (status != 0 ? " -> 7" : ""));
                    if (codec && output == KEP_AUDIO_ARC)
                        expected.push_back(earcWrite(2, 1));
                    EXPECT_EQ(told(), expected) << output;
                    EXPECT_EQ(logLines().front(), called);
                    if (expected.empty()) {
                        EXPECT_THAT(logLines(), ElementsAre(called));
                    }
                }
            }
        }
    }
}

// --- ARC and eARC switches

class ArcSwitch : public DigitalTest
{
};

TEST_F(ArcSwitch, WritesArcThenEarc)
{
    for (const int arc : {0, 1}) {
        for (const int earc : {0, 1}) {
            for (const int refused : {-1, 0, 1}) {
                clearInjections();
                if (refused >= 0)
                    refuseWrite(static_cast<unsigned int>(refused));
                forget();
                const std::string first = std::to_string(arc);
                const std::string second = std::to_string(earc);
                EXPECT_EQ(mBackend.setArcOnOff(arc, earc), refused < 0);
                Texts expectedTold = {"Sndout ARC OnOff " + first + (refused == 0 ? " -> -5" : "")};
                Lines expected = {said("setArcOnOff", "Setting SoundOut on off for ARC status: " +
                                                          first + " & eARC status: " + second)};
                if (refused == 0) {
                    expected = expected +
                               Lines{refusedByDriver(),
                                     notSet("setArcOnOff",
                                            "In setSoundOutArc : Did not able to set the element: "
                                            "Sndout ARC OnOff with status " +
                                                first)};
                } else {
                    expectedTold.push_back("Sndout EARC OnOff " + second +
                                           (refused == 1 ? " -> -5" : ""));
                    if (refused == 1)
                        expected =
                            expected + Lines{refusedByDriver(),
                                             notSet("setArcOnOff",
                                                    "In setSoundOuteArc : Did not able to set the "
                                                    "element: Sndout EARC OnOff with status " +
                                                        second)};
                }
                expect(expectedTold, expected, first + second);
            }
        }
    }
}

// --- Atmos

class AtmosEncoder : public DigitalTest
{
protected:
    static Lines lines(bool on, bool refused)
    {
        Lines all = {said("setAtmosEncode", "Setting Atmos Encode value is " + flag(on))};
        if (refused) {
            all.push_back(refusedByDriver());
            all.push_back(notSet("setAtmosEncode", "In setAtmosEncode : Did not able to set the "
                                                   "element with atmos value " +
                                                       flag(on)));
        }
        return all;
    }
    static std::string write(bool on, bool refused)
    {
        return "Sndout eAC3 ATMOS Encode OnOff " + flag(on) + (refused ? " -> -5" : "");
    }
    void enter(bool refused)
    {
        clearInjections();
        if (refused)
            refuseWrite(0);
        forget();
    }
};

TEST_F(AtmosEncoder, IsSwitched)
{
    for (const bool on : {true, false}) {
        for (const bool refused : {false, true}) {
            enter(refused);
            mBackend.setAtmosEncode(on);
            expect({write(on, refused)}, lines(on, refused), flag(on));
        }
    }
}

TEST_F(AtmosEncoder, FollowsTheProfileWhileArcIsActive)
{
    for (const std::string profile : {"ATMOS", "EAC3", "atmos", ""}) {
        for (const std::string activation : {"ARC", "eARC", "None", "arc", ""}) {
            for (const bool refused : {false, true}) {
                enter(refused);
                mBackend.setAtmosEncodeForARCProfile(profile, activation);
                const Lines opening = {said("setAtmosEncodeForARCProfile",
                                            "setAtmosEncodeForARCProfile:: arcProfileValue is " +
                                                profile + " and arcActivationStatus is " +
                                                activation)};
                const bool on = profile == "ATMOS";
                if (activation == "ARC")
                    expect({write(on, refused)}, opening + lines(on, refused), profile);
                else
                    expect({}, opening, profile + activation);
            }
        }
    }
}

TEST_F(AtmosEncoder, FollowsTheFlagWhileEarcIsActive)
{
    for (const bool atmos : {true, false}) {
        for (const std::string activation : {"eARC", "ARC", "None", "EARC", ""}) {
            for (const bool refused : {false, true}) {
                enter(refused);
                mBackend.setAtmosEncodeForEARCProfile(atmos, activation);
                const Lines opening = {said("setAtmosEncodeForEARCProfile",
                                            "setAtmosEncodeForEARCProfile:: eArcAtmosValue is " +
                                                flag(atmos) + " and arcActivationStatus is " +
                                                activation)};
                if (activation == "eARC")
                    expect({write(atmos, refused)}, opening + lines(atmos, refused), activation);
                else
                    expect({}, opening, activation);
            }
        }
    }
}

// --- Decoder

TEST_F(DigitalTest, TheDecoderGetsBothFlagsInOrder)
{
    for (const bool ott : {false, true}) {
        for (const bool lock : {false, true}) {
            for (const bool refused : {false, true}) {
                clearInjections();
                if (refused)
                    refuseWrite(0);
                forget();
                EXPECT_EQ(mBackend.setOTTAdecMode(ott, lock), !refused);
                Lines expected = {said("setOTTAdecMode", "Setting OTT mode isOTTEnable " +
                                                             flag(ott) + " isATMOSLockingEnable " +
                                                             flag(lock))};
                if (refused)
                    expected =
                        expected + Lines{refusedByDriver(),
                                         notSet("setOTTAdecMode", "Did not able to set the "
                                                                  "element: Adec Dolby OTTMode")};
                expect({"Adec Dolby OTTMode " + flag(ott) + " " + flag(lock) +
                        (refused ? " -> -5" : "")},
                       expected, flag(ott) + flag(lock));
            }
        }
    }
}

// --- Category code

class CategoryCode : public DigitalTest
{
};

TEST_F(CategoryCode, IsThatOfTheBroadcastSystem)
{
    struct Row {
        const char* system;
        const char* codes;
    };
    constexpr Row rows[] = {{"ATSC", "100 100"}, {"ARIB", "4 4"},  {"DVB", "12 12"}, {"", "0 0"},
                            {"atsc", "0 0"},     {"DVB-T", "0 0"}, {"NTSC", "0 0"}};
    for (const Row& row : rows) {
        for (const bool refused : {false, true}) {
            clearInjections();
            quality()[kBroadcastSystem] = row.system;
            if (refused)
                refuseWrite(0);
            forget();
            mBackend.setBroadcastSystem();
            Lines expected = {
                said("setBroadcastSystem",
                     std::string{"setBroadcastSystem broadcastSystemValue "} + row.system)};
            if (refused)
                expected =
                    expected + Lines{refusedByDriver(), notSet("setBroadcastSystem",
                                                               "Did not able to set the element: "
                                                               "Sndout Spdif CategoryCode")};
            expect(
                {std::string{"Sndout Spdif CategoryCode "} + row.codes + (refused ? " -> -5" : "")},
                expected, row.system);
        }
    }
}

TEST_F(CategoryCode, IsNotWrittenWithoutABroadcastSystem)
{
    pipeline()[kBroadcastSystem] = "DVB"; // the wrong map
    mBackend.setBroadcastSystem();
    expect({},
           {error("INVALID_PARAMETER", std::string{kFile} + "setBroadcastSystem",
                  "tv.zib.tvBroadcastSystem is not available. Failed to set Broadcast System")},
           "missing");
}

// --- Copy status

struct CopyRow {
    const char* copyright;
    int value;
};
constexpr CopyRow kCopies[] = {
    {"free", 1}, {"no_more", 2}, {"once", 4}, {"never", 8}, {"Never", 0},
    {"FREE", 0}, {"", 0},        {"more", 0}, {"free ", 0},
};

class CopyStatus : public DigitalTest
{
protected:
    static Lines values(const CopyRow& row)
    {
        const std::string copyright = row.copyright;
        const std::string value = std::to_string(row.value);
        return {whispered("getSoundOutOpticCopyValue",
                          "getSoundOutOpticCopyValue for copyright: " + copyright),
                whispered("getSoundOutOpticCopyValue",
                          "getSoundOutOpticCopyValue - optic value is " + value),
                whispered("getSoundOutArcCopyValue", "Copyright value received : " + copyright),
                whispered("getSoundOutArcCopyValue",
                          "getSoundOutArcCopyValue - arc value is " + value)};
    }
};

TEST_F(CopyStatus, HasANumberForFourCopyrights)
{
    for (const CopyRow& row : kCopies) {
        forget();
        EXPECT_EQ(mBackend.getSoundOutOpticCopyValue(row.copyright), row.value) << row.copyright;
        EXPECT_EQ(mBackend.getSoundOutArcCopyValue(row.copyright), row.value) << row.copyright;
        expect({}, values(row), row.copyright);
        forget();
        EXPECT_EQ(mBackend.isValidCopyright(row.copyright), row.value != 0) << row.copyright;
        expect({},
               {whispered("isValidCopyright",
                          std::string{"Copyright value received is "} + row.copyright)},
               row.copyright);
    }
}

TEST_F(CopyStatus, IsWrittenForOpticalAndArc)
{
    for (const CopyRow& row : kCopies) {
        for (const bool refused : {false, true}) {
            clearInjections();
            if (refused)
                refuseWrite(0);
            forget();
            EXPECT_EQ(mBackend.setSpdifSecurity(row.copyright), !refused);
            const std::string copyright = row.copyright;
            const std::string value = std::to_string(row.value);
            Lines expected =
                Lines{said("setSpdifSecurity",
                           "setSpdifSecurity for scms api with copyright value as " + copyright)} +
                values(row);
            if (refused)
                expected = expected + Lines{refusedByDriver(),
                                            notSet("setSpdifSecurity",
                                                   "Did not able to set the element: Sndout Spdif "
                                                   "CopyProtectionInfo with copyright value as " +
                                                       copyright)};
            expect({"Sndout Spdif CopyProtectionInfo " + value + " " + value +
                    (refused ? " -> -5" : "")},
                   expected, copyright);
        }
    }
}

} // namespace
