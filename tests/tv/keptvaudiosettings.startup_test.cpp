// SPDX-License-Identifier: Apache-2.0
// Settings: model, hardware and country, and the conditions of the start-up that they meet.
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "settingstest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

// --- Model, hardware and country

TEST_F(SettingsTest, ConfigurationGoesToTheStoreThenToTheFourAdapters)
{
    const std::string payload =
        R"({"equalizerStatus":"on","audioDescriptionVolume":5,"avSync":"on"})";
    const std::string delays =
        R"({"avSync":1,"avSyncBypassInput":0,"avSyncSpeaker":0,"avSyncSpdif":0,"avSyncWisa":0,)"
        R"("avSyncBtSurround":0})";
    const Lines flattening = {flattened("equalizerStatus", R"("on")"),
                              flattened("audioDescriptionVolume", "5"),
                              flattened("avSync", R"("on")")};
    const Lines applied = {
        audioEq("on"),
        kEngine.debug("setEqualizerStatus",
                      "set equalizerStatus for soundengine middleware successfully as on"),
        eqStatus("on"),
        kAmplifier.debug("setAmplifierSettings",
                         "set equalizerStatus for amplifier middleware successfully as on"),
        gainSettings(payload),
        kGainLog.debug("setGainSettings", "Set audioDescriptionVolume as 5"),
        kDelay.debug("setDelaySettings", "Called setUserDelay successfully"),
    };
    const Lines refused = {
        audioEq("on"),
        kEngine.error("setEqualizerStatus", "Failed to set audio equalizer as on"),
        eqStatus("on"),
        kAmplifier.error("setEqualizerStatus", "Failed to set amplifier equalizer as on"),
        gainSettings(payload),
        kGainLog.debug("setGainSettings", "Set audioDescriptionVolume as 5"),
        kGainLog.error("setGainSettings", "Failed to set audioDescriptionVolume 5"),
        kDelay.error("setDelaySettings", "Failed to call setUserDelay API"),
    };
    const Texts calls = {"soundengine.setInstartAudioEQ true", "amplifier.setAmpEQ true",
                         "gain.setAudioDescriptionVolume 5", "delay.setUserDelay " + delays};
    Texts refusedCalls;
    for (const std::string& call : calls)
        refusedCalls.push_back(call + " -> 7");
    for (const char* category : {"modelConfig", "contiConfig", "sound", "smartSoundMode"}) {
        const bool smart = std::string{category} == "smartSoundMode";
        const Lines start = {smart ? other(category) : configuring(category)};
        expect({category, payload, all({start, flattening, applied}), calls});
        EXPECT_THAT(store().mQualityParamsMap,
                    UnorderedElementsAre(Pair("equalizerStatus", "on"),
                                         Pair("audioDescriptionVolume", "5"), Pair("avSync", "on")))
            << category;
        expect({category,
                payload,
                all({start, flattening, refused}),
                refusedCalls,
                kDone,
                {"soundengine.setInstartAudioEQ", "amplifier.setAmpEQ",
                 "gain.setAudioDescriptionVolume", "delay.setUserDelay"}});
        expect({category, "{}", all({start, {gainSettings("{}")}})});
        for (const char* nothing : {"[]", R"(["equalizerStatus"])", R"("on")", "null", "5", "true"})
            expect({category, nothing, all({start, notAnObject(nothing)})});
    }
}

TEST_F(SettingsTest, TheDigitalModeIsReappliedForSoundOutputDigitalAlone)
{
    for (const char* value : {R"("x")", "true", "null", "[]"}) {
        const std::string alone = member("soundOutputDigital", value);
        expect({"sound", alone,
                all({{configuring("sound"), flattened("soundOutputDigital", value),
                      gainSettings(alone)},
                     reapplied()}),
                kPcmTold});
    }
    const std::string two = R"({"soundOutputDigital":"x","soundMode":"y"})";
    expect({"sound",
            two,
            {configuring("sound"), flattened("soundOutputDigital", R"("x")"),
             flattened("soundMode", R"("y")"),
             kEngine.debug("setSoundModeSettings", "set setSoundMode successfully as y"),
             gainSettings(two), kDelay.info("updateDelayValues", "calling setDelayUpdate"),
             kDelay.info("updateUserDelayValues", "delay values updated successfully")},
            {R"(soundengine.setSoundMode "y")", "delay.setDelayUpdate"}});
    const std::string oneOther = R"({"eq":"x"})";
    expect({"sound",
            oneOther,
            {configuring("sound"), flattened("eq", R"("x")"), gainSettings(oneOther)}});

    const std::string alone = R"({"soundOutputDigital":"x"})";
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}})
        expect(
            {"sound",
             alone,
             all({{configuring("sound"), flattened("soundOutputDigital", R"("x")"),
                   gainSettings(alone)},
                  reapplied(element),
                  {kSettings.refusal("SET_SOUNDOUTPUT_DIGITAL_ERROR", "setQualityAttributeSettings",
                                     "Failed to set soundOutputDigital as pcm")}}),
             told,
             kFailed,
             {element}});
}

TEST_F(SettingsTest, TheNewModeIsInTheStoreWhenItIsApplied)
{
    mBackend->mCurrentSoundout = KEP_AUDIO_SPDIF;
    store().mQualityParamsMap["soundOutputDigital"] = "pcm";
    EXPECT_EQ(set("sound", R"({"soundOutputDigital":"auto"})"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Spdif OutputType 2 2", "Sndout EARC Outputtype 2 1 0 0 1"));
}

TEST_F(SettingsTest, TwoCategoriesAreRoutedToAHandlerThatRefusesThem)
{
    for (const char* category : {"groupCodeConfig", "zibConfig"}) {
        for (const char* payload : {R"({"tv.zib.tvBroadcastSystem":"DVB"})", "{}", "[]", "null"}) {
            expect({category, payload, {configuring(category)}, {}, kFailed});
            EXPECT_THAT(store().mQualityParamsMap, IsEmpty());
        }
    }
}

TEST_F(SettingsTest, ACountryReappliesTheDigitalModeOnlyWhenItIsNew)
{
    const std::string payload = R"({"tv.hw.countryType":"JP","tv.hw.soc":5})";
    const Lines start = {configuring("hardwareConfig"), kHardware,
                         flattened("tv.hw.countryType", R"("JP")"), flattened("tv.hw.soc", "5")};
    expect({"hardwareConfig", payload, all({start, {country("", "JP")}, reapplied()}), kPcmTold});
    EXPECT_THAT(store().mQualityParamsMap,
                UnorderedElementsAre(Pair("tv.hw.countryType", "JP"), Pair("tv.hw.soc", "5")));
    expect({"hardwareConfig",
            payload,
            all({start, {country("EU", "JP")}, reapplied()}),
            kPcmTold,
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"tv.hw.countryType", "EU"}}});
    expect({"hardwareConfig",
            payload,
            all({start, {country("JP", "JP")}}),
            {},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"tv.hw.countryType", "JP"}}});
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}})
        expect({"hardwareConfig",
                payload,
                all({start,
                     {country("", "JP")},
                     reapplied(element),
                     {kSettings.refusal("SET_SOUNDOUTPUT_DIGITAL_ERROR", "setHwConfig",
                                        "failed to set SoundOutput Digital pcm")}}),
                told,
                kDone,
                {element}});
    expect({"hardwareConfig",
            R"({"tv.hw.soc":5})",
            {configuring("hardwareConfig"), kHardware, flattened("tv.hw.soc", "5")}});
    expect({"hardwareConfig", "{}", {configuring("hardwareConfig"), kHardware}});
    for (const char* nothing : {"[]", R"("JP")", "null", "5", "true"})
        expect(
            {"hardwareConfig", nothing, {configuring("hardwareConfig"), kHardware}, {}, kFailed});
}

TEST_F(SettingsTest, ACountryThatIsNoTextIsAnEmptyOne)
{
    for (const char* value : {"null", "true", "5", "[1]", R"({"a":1})"}) {
        const Lines start = {configuring("hardwareConfig"), kHardware,
                             flattened("tv.hw.countryType", value)};
        const std::string payload = member("tv.hw.countryType", value);
        expect({"hardwareConfig", payload, all({start, {country("", "")}})});
        EXPECT_EQ(store().mQualityParamsMap["tv.hw.countryType"], value);
        expect({"hardwareConfig",
                payload,
                all({start, {country("JP", "")}, reapplied()}),
                kPcmTold,
                kDone,
                {},
                KEP_AUDIO_NO_OUTPUT,
                {{"tv.hw.countryType", "JP"}}});
    }
}

// --- Start-up conditions

struct Conditions {
    bool conti;
    bool hardware;
    bool model;

    bool operator==(const Conditions&) const = default;
};

class StartupConditions : public SettingsTest
{
protected:
    Conditions conditions()
    {
        const auto& held = mBackend->mStartupConditions;
        return {held.contiConfigReceived, held.hardwareConfigApplied, held.modelConfigReceived};
    }
    void hold(const Conditions& wanted)
    {
        mBackend->mStartupConditions.contiConfigReceived = wanted.conti;
        mBackend->mStartupConditions.hardwareConfigApplied = wanted.hardware;
        mBackend->mStartupConditions.modelConfigReceived = wanted.model;
    }
};

TEST_F(StartupConditions, EachConfigurationSetsItsOwn)
{
    const std::vector<std::pair<const char*, Conditions>> rows = {
        {"contiConfig", {true, false, false}},      {"hardwareConfig", {false, true, false}},
        {"modelConfig", {false, false, true}},      {"sound", {false, false, false}},
        {"groupCodeConfig", {false, false, false}}, {"zibConfig", {false, false, false}},
        {"smartSoundMode", {false, false, false}},
    };
    for (const auto& [category, expected] : rows) {
        restart();
        set(category, "{}");
        EXPECT_TRUE(conditions() == expected) << category;
    }
}

TEST_F(StartupConditions, ModelAndContiCountEvenWhenTheirPayloadCouldNotBeApplied)
{
    for (const char* category : {"contiConfig", "modelConfig"}) {
        restart();
        refuse(kOptic);
        EXPECT_EQ(set(category, R"({"soundOutputDigital":"x"})"), kFailed);
        EXPECT_TRUE(conditions().conti || conditions().model) << category;
        restart();
        EXPECT_EQ(set(category, "[]"), kDone);
        EXPECT_TRUE(conditions().conti || conditions().model) << category;
    }
}

TEST_F(StartupConditions, HardwareRecordsItsResultInEveryCase)
{
    hold({false, true, false});
    EXPECT_EQ(set("hardwareConfig", "[]"), kFailed);
    EXPECT_FALSE(conditions().hardware);
    for (const char* payload : {"{}", R"({"tv.hw.countryType":"JP"})",
                                R"({"tv.hw.countryType":"JP"})", R"({"tv.hw.countryType":"EU"})"}) {
        hold({});
        EXPECT_EQ(set("hardwareConfig", payload), kDone);
        EXPECT_TRUE(conditions().hardware) << payload;
    }
    hold({});
    refuse(kOptic);
    EXPECT_EQ(set("hardwareConfig", R"({"tv.hw.countryType":"US"})"), kDone);
    EXPECT_TRUE(conditions().hardware);
}

TEST_F(StartupConditions, HardwareDoesNotLaunch)
{
    hold({true, false, true});
    EXPECT_EQ(set("hardwareConfig", "{}"), kDone);
    EXPECT_TRUE((conditions() == Conditions{true, true, true}));
}

class Launch : public StartupConditions
{
protected:
    /// The request's payload is flattened, then the worker launched, then the adapters are told.
    void expectLaunchBy(const std::string& category, const Conditions& before)
    {
        hold(before);
        EXPECT_EQ(set(category, R"({"a":"b"})"), kDone);
        ASSERT_GE(logLines().size(), std::size_t{6});
        EXPECT_EQ(logLines()[2], flattened("a", R"("b")"));
        EXPECT_EQ(logLines()[3].origin, "keptvaudiosettings:setSoundSettings");
        EXPECT_THAT(logLines()[3].text, testing::StartsWith("Inside main Thread :: ID  = 0x"));
        EXPECT_EQ(logLines()[4],
                  kSettings.info("setSoundSettings", "startXmlParsing thread is getting created"));
        EXPECT_EQ(logLines()[5], gainSettings(R"({"a":"b"})"));
    }
};

TEST_F(Launch, ByTheLastConditionOfTheModel)
{
    expectLaunchBy("modelConfig", {true, true, false});
}

TEST_F(Launch, ByTheLastConditionOfConti)
{
    expectLaunchBy("contiConfig", {false, true, true});
}

TEST_F(Launch, BySoundOnceAllHold)
{
    expectLaunchBy("sound", {true, true, true});
}

TEST_F(Launch, BySmartSoundModeOnceAllHold)
{
    expectLaunchBy("smartSoundMode", {true, true, true});
}

TEST_F(Launch, NotWhileAConditionIsMissing)
{
    for (const Conditions& held : {Conditions{false, true, true}, Conditions{true, false, true},
                                   Conditions{true, true, false}})
        for (const char* category : {"sound", "smartSoundMode"}) {
            hold(held);
            EXPECT_EQ(set(category, "{}"), kDone);
            for (const LogLine& line : logLines())
                EXPECT_NE(line.text, "startXmlParsing thread is getting created");
            EXPECT_TRUE(conditions() == held);
        }
}

} // namespace
