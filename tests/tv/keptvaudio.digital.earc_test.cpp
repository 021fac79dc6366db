// SPDX-License-Identifier: Apache-2.0
// Digital outputs: the format of eARC, by mode, codec, country and what the device announces.
#include <cstdint>
#include <string>

#include <gmock/gmock.h>

#include "digitaltest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- The format of eARC

const Texts kCapabilities = {"PCM", "DD", "DD+", "MAT2PCM", "TrueHD", "DTSHD", "DTS", "AAC"};

struct Stream {
    std::string codec;
    std::string source = {};
    bool japan = false;
    bool mixed = false;
};

struct FormatRow {
    Stream stream;
    Texts capabilities;
    int passedThrough; // number of the codec
    int mix;           // with it; what is re-encoded is always mixed
    int reEncoded;
};

// A row a way through the rules; digitalformats_test has every codec and every capability.
// clang-format off
const FormatRow kFormats[] = {
    // stream                               capabilities            passed through, mix  re-encoded
    {{"truehd", "USB"},                     kCapabilities,              6, 0,              7},
    {{"truehd", "USB", false, true},        kCapabilities,              6, 1,              7},
    {{"truehd", "USB"},                     {"MAT2PCM", "DD+"},         7, 1,              7},
    {{"eac3", "USB"},                       {"DD+"},                    5, 0,              5},
    {{"eac3", "USB"},                       {"DD"},                     2, 1,              2},
    {{"eac3", "HDMI"},                      {"AAC", "DD"},              2, 1,              2},
    {{"eac3", "HDMI", true},                {"AAC", "DD"},              3, 1,              3},
    {{"eac3", "TV", true},                  {"AAC", "DD+"},             5, 0,              3},
    {{"eac3", "USB", true},                 {"AAC", "DD"},              2, 1,              2},
    {{"eac3", "HDMI", true},                {"MAT2PCM", "DD+"},         5, 0,              7},
    {{"aac", "USB"},                        {"AAC"},                    3, 0,              1},
    {{"aac", "HDMI", true, true},           {"AAC"},                    3, 1,              3},
    {{"dts", "HDMI"},                       {"DD", "DTS"},              4, 0,              4},
    {{"dts", "HDMI"},                       {"DTS"},                    4, 1,              4},
    {{"dts", "HDMI", true},                 {"AAC", "DD+"},             1, 1,              1},
    {{"dts_hd_ma", "HDMI"},                 {"DTSHD"},                  8, 0,              1},
    {{"opus", "USB"},                       kCapabilities,              7, 1,              7},
    {{"opus", "USB"},                       {},                         1, 1,              1},
    {{"pcm", "USB"},                        kCapabilities,              1, 0,              1},
    {{"pcm", "HDMI", true},                 kCapabilities,              1, 0,              3},
    {{"pcm", "HDMI"},                       {"MAT2PCM", "AAC"},         1, 1,              1},
    {{"", "HDMI"},                          kCapabilities,              1, 1,              1},
    {{"", "HDMI", true},                    kCapabilities,              3, 1,              3},
};
// clang-format on

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

    void enter(const FormatRow& row)
    {
        setCapabilities(row.capabilities);
        enter(row.stream);
    }

    static std::string name(const FormatRow& row)
    {
        return row.stream.codec + " from " + row.stream.source +
               (row.stream.japan ? " in Japan" : "") + " to " +
               testing::PrintToString(row.capabilities);
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
    for (const FormatRow& row : kFormats) {
        enter(row);
        EXPECT_TRUE(mBackend.setEarcSoundOutputDigital("passThrough")) << name(row);
        EXPECT_THAT(told(), ElementsAre(earcWrite(row.passedThrough, row.mix))) << name(row);
    }
}

TEST_F(Earc, FormatThatIsReEncodedFollowsCodecDeviceAndCountry)
{
    for (const FormatRow& row : kFormats) {
        enter(row);
        EXPECT_TRUE(mBackend.setEarcSoundOutputDigital("auto")) << name(row);
        EXPECT_THAT(told(), ElementsAre(earcWrite(row.reEncoded, 1))) << name(row);
    }
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
        enter(Stream{.codec = "ac3"});
        EXPECT_FALSE(mBackend.setEarcSoundOutputDigital(mode)) << mode;
        expect({}, {}, mode);
    }
}

TEST_F(Earc, FormatOfModePcmIsPcmForEveryCodec)
{
    setCapabilities(kCapabilities);
    for (const char* codec : {"truehd", "dts", "pcm", "", "flac"}) {
        for (const bool mixed : {false, true}) {
            enter(Stream{.codec = codec, .mixed = mixed});
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
                enter(Stream{.codec = codec, .japan = japan});
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
    enter(Stream{.codec = "truehd_atmos"});
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
    enter(Stream{.codec = "eac3", .mixed = false});
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
    enter(Stream{.codec = ""});
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
    enter(Stream{.codec = "ac3"});
    EXPECT_TRUE(mBackend.checkReEncodePriority());
    expect({earcWrite(1, 1)},
           Lines{isCodec("checkReEncodePriority", "ac3"), isCodec("isInputCodecPCM", "ac3"),
                 available("MAT2PCM", false), available("DD+", false), available("DD", false)} +
               earcLines(1, 1),
           "ac3");
}

TEST_F(Earc, FormatOfDtsHasARuleOfItsOwn)
{
    for (const std::string codec : {"dts", "dts_hd_ma", "dts_express", "dts_cd"}) {
        for (const bool dts : {false, true}) {
            for (const bool japan : {false, true}) {
                setCapabilities(dts ? Texts{"AAC", "DTS", "DD+"} : Texts{"AAC", "DTSHD", "DD+"});
                enter(Stream{.codec = codec, .source = "HDMI", .japan = japan});
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
        enter(Stream{.codec = "pcm", .source = source, .japan = true});
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
        enter(Stream{.codec = "ac3", .source = source, .japan = true});
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
    enter(Stream{.codec = "ac3", .source = "HDMI", .japan = true});
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
    enter(Stream{.codec = "aac", .source = "HDMI"});
    EXPECT_TRUE(mBackend.setDolbyForNonJP());
    EXPECT_THAT(told(), ElementsAre(earcWrite(1, 1)));
    enter(Stream{.codec = "flac", .source = "TV"});
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
    for (const std::string codec : {"ac3", "opus", "dts_cd", "pcm", "", "flac"}) {
        enter(Stream{.codec = codec});
        EXPECT_EQ(mBackend.isInputCodecPCM(), codec == "pcm" || codec.empty() || codec == "flac")
            << codec;
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
    enter(Stream{.codec = "ac3"});
    select(KEP_AUDIO_ARC, "auto");
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({"DD+", "MAT2PCM"})));
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({"DD"})));
    EXPECT_TRUE(mBackend.updateEarcCapability(arrayOf({})));
    EXPECT_THAT(told(), ElementsAre(earcWrite(7, 1), earcWrite(2, 1), earcWrite(1, 1)));
}

TEST_F(Earc, CapabilitiesOfTheCallerAreItsOwnAfterwards)
{
    enter(Stream{.codec = "ac3"});
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
        enter(Stream{.codec = "eac3"});
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

TEST_F(Earc, AnEmptyFormatOfAPipelineIsTold)
{
    enter(Stream{.codec = "ac3"});
    select(KEP_AUDIO_SPK, "auto");
    mBackend.updateCodecImmersiveFormat({{"pipelineId", "p"}, {"immersive", ""}});
    EXPECT_THAT(told(), ElementsAre(R"(soundengine.setImmersiveInfo "")"));
}

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
                    enter(Stream{.codec = "ac3"});
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

} // namespace
