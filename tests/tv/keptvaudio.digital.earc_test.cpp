// SPDX-License-Identifier: Apache-2.0
// Digital outputs: the format of eARC, by mode, codec, country and what the device announces.
#include <cstdint>
#include <set>
#include <string>

#include <gmock/gmock.h>

#include "digitaltest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(Earc, AnEmptyFormatOfAPipelineIsTold)
{
    enter({.codec = "ac3"});
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

} // namespace
