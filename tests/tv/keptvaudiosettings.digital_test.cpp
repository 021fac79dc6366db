// SPDX-License-Identifier: Apache-2.0
// Settings: digital outputs, the driver and the receiver behind ARC.
#include <map>
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
using testing::SizeIs;
using testing::UnorderedElementsAre;

// --- Digital outputs

TEST_F(SettingsTest, TheModeOfADigitalOutputIsReapplied)
{
    for (const char* output : {"external_arc", "external_optical", "SPDIF", "tv_external_speaker",
                               "tv_speaker_optical_arc"}) {
        const std::string payload =
            R"({"soundOutput":")" + std::string{output} + R"(","mode":"auto"})";
        const Lines start = {kDigitalSettings, kOutputMode};
        expect({"soundOutputMode", payload, all({start, reapplied()}), kPcmTold});
        expect({"soundOutputMode",
                payload,
                all({start, reapplied(kOptic)}),
                kOpticRefused,
                kFailed,
                {kOptic}});
        expect({"soundOutputMode",
                payload,
                all({start, reapplied(kEarc)}),
                kEarcRefused,
                kFailed,
                {kEarc}});
        expect({"soundOutputMode",
                R"({"soundOutput":")" + std::string{output} + R"("})",
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
        for (const char* mode : {"null", "5", "true", "[]", "{}"})
            expect({"soundOutputMode",
                    R"({"soundOutput":")" + std::string{output} + R"(","mode":)" + mode + "}",
                    all({start, reapplied()}), kPcmTold});
    }
}

TEST_F(SettingsTest, NoOtherOutputHasADigitalMode)
{
    for (const char* output :
         {R"("headphone")", R"("tv_speaker")", R"("external_speaker")", R"("spdif")", R"("")",
          R"("tv_speaker_external")", "5", "null", "true", "[]", R"({"a":1})"})
        expect({"soundOutputMode",
                R"({"soundOutput":)" + std::string{output} + R"(,"mode":"auto"})",
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
    for (const char* payload : {R"({"mode":"auto"})", "{}", "[]", R"("SPDIF")", "null"})
        expect({"soundOutputMode",
                payload,
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
}

TEST_F(SettingsTest, ForcedOutputIsReappliedOnlyWhenItChanges)
{
    const Lines start = {kDigitalSettings, kForceOutput};
    const std::string on = R"({"forceOutputDDPLUS":"true"})";
    expect({"forceOutput", on, all({start, reapplied()}), kPcmTold});
    EXPECT_TRUE(mBackend->mForcedDDPlus);
    EXPECT_EQ(set("forceOutput", on), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(set("forceOutput", R"({"forceOutputDDPLUS":"false"})"), kDone);
    EXPECT_EQ(told(), kPcmTold);
    EXPECT_FALSE(mBackend->mForcedDDPlus);
    for (const char* off : {"TRUE", "false", "", "1", " true"}) {
        expect({"forceOutput", R"({"forceOutputDDPLUS":")" + std::string{off} + R"("})", start});
        EXPECT_FALSE(mBackend->mForcedDDPlus) << off;
        mBackend->mForcedDDPlus = true;
        set("forceOutput", R"({"forceOutputDDPLUS":")" + std::string{off} + R"("})");
        EXPECT_FALSE(mBackend->mForcedDDPlus) << off;
        EXPECT_EQ(told(), kPcmTold) << off;
    }
    expect({"forceOutput", on, all({start, reapplied(kOptic)}), kOpticRefused, kFailed, {kOptic}});
    EXPECT_TRUE(mBackend->mForcedDDPlus);
    expect({"forceOutput", on, all({start, reapplied(kEarc)}), kEarcRefused, kFailed, {kEarc}});
    expect({"forceOutput", "{}", start, {}, kFailed});
}

TEST_F(SettingsTest, AForcedFlagOfAnotherTypeChangesNothing)
{
    for (const char* value : {"true", "null", "1", "[]", "{}"}) {
        restart();
        mBackend->mForcedDDPlus = true;
        EXPECT_EQ(set("forceOutput", member("forceOutputDDPLUS", value)), kFailed) << value;
        EXPECT_TRUE(mBackend->mForcedDDPlus) << value;
    }
}

TEST_F(SettingsTest, TheMixerIsReappliedOnlyWhenItChanges)
{
    const Lines start = {kDigitalSettings, kMixer};
    expect({"setMixer", R"({"mix":true})", all({start, reapplied()}), kPcmTold});
    EXPECT_TRUE(mBackend->mMixerFlag);
    EXPECT_EQ(set("setMixer", R"({"mix":true})"), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(set("setMixer", R"({"mix":false})"), kDone);
    EXPECT_EQ(told(), kPcmTold);
    EXPECT_FALSE(mBackend->mMixerFlag);
    expect({"setMixer", R"({"mix":false})", start});
    expect({"setMixer",
            R"({"mix":true})",
            all({start, reapplied(kOptic)}),
            kOpticRefused,
            kFailed,
            {kOptic}});
    EXPECT_TRUE(mBackend->mMixerFlag);
    expect({"setMixer",
            R"({"mix":true})",
            all({start, reapplied(kEarc)}),
            kEarcRefused,
            kFailed,
            {kEarc}});
    expect({"setMixer", "{}", start, {}, kFailed});
    for (const char* value : {R"("true")", "null", "1", "[]", "{}"}) {
        restart();
        mBackend->mMixerFlag = true;
        EXPECT_EQ(set("setMixer", member("mix", value)), kFailed) << value;
        EXPECT_TRUE(mBackend->mMixerFlag) << value;
    }
}

struct DigitalEffect {
    const char* category;
    const char* payload;
    KEP_AUDIO_SNDOUT_T current;
    std::map<std::string, std::string> params;
    const char* formats; // optical and ARC
};

TEST_F(SettingsTest, WhatASettingChangedIsInForceWhenTheModeIsReapplied)
{
    const std::map<std::string, std::string> automatic = {{"soundOutputDigital", "auto"}};
    const std::map<std::string, std::string> japan = {{"soundOutputDigital", "auto"},
                                                      {"tv.hw.countryType", "JP"}};
    // clang-format off
    const std::vector<DigitalEffect> rows = {
        {"forceOutput",     R"({"forceOutputDDPLUS":"true"})",               KEP_AUDIO_ARC,   automatic, "6 10"},
        {"forceOutput",     R"({"forceOutputDDPLUS":"true"})",               KEP_AUDIO_SPDIF, automatic, "6 10"},
        {"setMixer",        R"({"mix":true})",                               KEP_AUDIO_ARC,   automatic, "4 6"},
        {"external_arc",    R"({"arcProfile":"ATMOS"})",                     KEP_AUDIO_ARC,   automatic, "2 4"},
        {"hardwareConfig",  R"({"tv.hw.countryType":"JP"})",                 KEP_AUDIO_ARC,   automatic, "3 3"},
        {"other",           R"({"supportBnoModel":true})",                   KEP_AUDIO_ARC,   japan,     "3 2"},
        {"other",           R"({"supportBnoModel":false})",                  KEP_AUDIO_ARC,   japan,     "3 3"},
        {"soundOutputMode", R"({"soundOutput":"SPDIF","mode":"pcm"})",       KEP_AUDIO_SPDIF, automatic, "2 2"},
        {"soundOutputMode", R"({"soundOutput":"SPDIF","mode":"auto"})",      KEP_AUDIO_SPK,   automatic, "1 1"},
    };
    // clang-format on
    for (const DigitalEffect& row : rows) {
        restart();
        mBackend->mCurrentSoundout = row.current;
        store().mQualityParamsMap = row.params;
        EXPECT_EQ(set(row.category, row.payload), kDone) << row.payload;
        ASSERT_THAT(told(), SizeIs(2)) << row.payload;
        EXPECT_EQ(told()[0], "Sndout Spdif OutputType " + std::string{row.formats}) << row.payload;
    }
}

// --- Driver

TEST_F(SettingsTest, ACopyrightIsWrittenForBothOutputs)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"free", "1"}, {"no_more", "2"}, {"once", "4"}, {"never", "8"}};
    for (const auto& [value, number] : rows) {
        const std::string payload = R"({"copyright":")" + value + R"("})";
        const std::string write = "Sndout Spdif CopyProtectionInfo " + number + " " + number;
        const Lines lines = all({copyright(value), copyrightWritten(value, number)});
        expect({"scms", payload, lines, {write}});
        expect({"scms",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setSpdifSecurity",
                                     "Did not able to set the element: Sndout Spdif "
                                     "CopyProtectionInfo with copyright value as " +
                                         value)}}),
                {write + " -> -5"},
                kFailed,
                {"Sndout Spdif CopyProtectionInfo"}});
    }
}

TEST_F(SettingsTest, AnInvalidCopyrightWritesNothing)
{
    for (const char* value : {"unknown", "Never", "", "free "})
        expect({"scms",
                R"({"copyright":")" + std::string{value} + R"("})",
                copyright(value),
                {},
                kFailed});
    for (const char* payload :
         {"{}", "[]", R"("free")", "null", R"({"copyright":1})", R"({"copyright":null})",
          R"({"copyright":true})", R"({"copyright":["free"]})", R"({"copyright":{"free":1}})"})
        expect({"scms", payload, copyright(""), {}, kFailed});
}

TEST_F(SettingsTest, TheOttModeIsWrittenOnlyWhenThePairIsNew)
{
    const auto payload = [](const std::string& ott, const std::string& lock) {
        return R"({"isOTTEnable":)" + ott + R"(,"isATMOSLockingEnable":)" + lock + "}";
    };
    const auto setting = [](const std::string& ott, const std::string& lock) {
        return kDigital.info("setOTTAdecMode", "Setting OTT mode isOTTEnable " + ott +
                                                   " isATMOSLockingEnable " + lock);
    };
    const LogLine same = kSettings.info(
        "setAlsaDriverSettings", "Not setting Adec Dolby OTTMode since OTTEnable values are same");
    const LogLine failure =
        kDigital.error("setOTTAdecMode", "Did not able to set the element: Adec Dolby OTTMode");
    const Texts refused = {"Adec Dolby OTTMode"};
    const LogLine start = driving("ottAdecMode");
    const std::string both = payload("true", "true");
    expect({"ottAdecMode", both, {start, setting("1", "1")}, {"Adec Dolby OTTMode 1 1"}});
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), IsEmpty());
    expect({"ottAdecMode",
            payload("true", "false"),
            {start, setting("1", "0")},
            {"Adec Dolby OTTMode 1 0"}});
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 1 1"));
    EXPECT_EQ(set("ottAdecMode", payload("false", "true")), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 0 1"));
    EXPECT_EQ(set("ottAdecMode", payload("false", "false")), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 0 0"));
    expect({"ottAdecMode", payload("false", "false"), {start, same}});
    expect({"ottAdecMode",
            both,
            {start, setting("1", "1"), refusedByDriver(), failure},
            {"Adec Dolby OTTMode 1 1 -> -5"},
            kFailed,
            refused});
    clearInjections(); // what was refused was not remembered
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 1 1"));
    for (const char* incomplete : {"{}", "[]", R"("x")", "null", R"({"isOTTEnable":true})",
                                   R"({"isATMOSLockingEnable":true})"})
        expect({"ottAdecMode", incomplete, {start}, {}, kFailed});
    for (const char* value : {"null", R"("true")", "1", "[]", "{}"}) {
        expect({"ottAdecMode",
                payload(value, "true"),
                {start, setting("0", "1")},
                {"Adec Dolby OTTMode 0 1"}});
        expect({"ottAdecMode",
                payload("true", value),
                {start, setting("1", "0")},
                {"Adec Dolby OTTMode 1 0"}});
        expect({"ottAdecMode", payload(value, value), {start, same}});
    }
}

TEST_F(SettingsTest, ThePowerStateReachesSoundBarAndLight)
{
    const LogLine start = driving("powerState");
    const std::string light = R"({"powerState":"opticLightOn"})";
    const LogLine lighting =
        kHeadphone.info("setOpticLightOnOff", "setOpticLightOnOff, power state is opticLightOn");
    expect({"powerState",
            light,
            {start, qnState(light), lighting,
             kHeadphone.info("setOpticLightOnOff", "Set SPDIF_LIGHT ON/OFF is success")},
            {"Sndout Optic LightOnOff 1"},
            kDone,
            {},
            KEP_AUDIO_SPDIF});
    expect({"powerState",
            light,
            {start, qnState(light), lighting, refusedByDriver(),
             kHeadphone.refusal("CONTROL_ELEMENT_SET_ERROR", "setOpticLightOnOff",
                                "Did not able to set the element: Sndout Optic LightOnOff")},
            {"Sndout Optic LightOnOff 1 -> -5"},
            kFailed,
            {"Sndout Optic LightOnOff"},
            KEP_AUDIO_SPDIF});
    const std::string on = R"({"powerState":"on"})";
    expect({"powerState",
            on,
            {start, qnState(on),
             kHeadphone.info("setPowerOnOffQNSoundSync",
                             "setPowerOnOffQNSoundSync, power state is on"),
             kHeadphone.info("setPowerOnOffQNSoundSync",
                             "SOUNDOUT_OPTICQN_POWER ON/OFF is not set, since QNSoundSync is not "
                             "current soundout")},
            {},
            kFailed});
    const std::string unknown = R"({"powerState":"standby"})";
    expect({"powerState",
            unknown,
            {start, qnState(unknown),
             kHeadphone.error("setQNSoundbarState", "Invalid power status: standby")},
            {},
            kFailed});
    for (const char* nothing :
         {"{}", "[]", R"("on")", "null", R"({"powerState":1})", R"({"powerState":null})",
          R"({"powerState":true})", R"({"powerState":["on"]})", R"({"powerState":{"on":1}})"})
        expect({"powerState",
                nothing,
                {start, qnState(nothing),
                 kHeadphone.error("setQNSoundbarState", "powerState key is not available")},
                {},
                kFailed});
}

// --- The receiver behind ARC

TEST_F(SettingsTest, TheActivationSwitchesArcAndEarc)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::vector<std::vector<std::string>> rows = {
        {"ARC", "1", "0"}, {"eARC", "0", "1"}, {"None", "0", "0"}};
    for (const auto& row : rows) {
        const std::string payload = R"({"arcActivation":")" + row[0] + R"("})";
        const std::string arc = "Sndout ARC OnOff " + row[1];
        const std::string earc = "Sndout EARC OnOff " + row[2];
        const Lines lines = all({start, {switchingArc(row[1], row[2])}});
        expect({"external_arc", payload, lines, {arc, earc}});
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setArcOnOff", "In setSoundOutArc : Did not able to set the "
                                                    "element: Sndout ARC OnOff with status " +
                                                        row[1])}}),
                {arc + " -> -5"},
                kFailed,
                {"Sndout ARC OnOff"}});
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setArcOnOff", "In setSoundOuteArc : Did not able to set the "
                                                    "element: Sndout EARC OnOff with status " +
                                                        row[2])}}),
                {arc, earc + " -> -5"},
                kFailed,
                {"Sndout EARC OnOff"}});
    }
    for (const char* nothing : {"{}",
                                "[]",
                                R"("ARC")",
                                "null",
                                "5",
                                R"({"arcActivation":"arc"})",
                                R"({"arcActivation":""})",
                                R"({"arcActivation":1})",
                                R"({"arcActivation":null})",
                                R"({"arcActivation":true})",
                                R"({"arcActivation":["ARC"]})",
                                R"({"arcActivation":{"ARC":1}})",
                                R"({"arcProfile":1})",
                                R"({"arcProfile":null})",
                                R"({"arcProfile":true})",
                                R"({"arcProfile":["ATMOS"]})",
                                R"({"arcProfile":{}})",
                                R"({"earcCapability":"DD"})",
                                R"({"earcCapability":null})",
                                R"({"earcCapability":1})",
                                R"({"earcCapability":true})",
                                R"({"earcCapability":{"DD":1}})",
                                R"({"earcATMOS":"true"})",
                                R"({"earcATMOS":null})",
                                R"({"earcATMOS":1})",
                                R"({"earcATMOS":[true]})",
                                R"({"earcATMOS":{}})"}) {
        expect({"external_arc", nothing, start});
        EXPECT_THAT(store().mQualityParamsMap, IsEmpty()) << nothing;
    }
}

TEST_F(SettingsTest, AProfileIsReappliedWhenItIsNewAndTurnsTheEncoderInEveryCase)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::string alone = R"({"arcProfile":"ATMOS"})";
    expect({"external_arc", alone, all({start, reapplied(), {atmosByProfile("ATMOS", "")}}),
            kPcmTold});
    EXPECT_EQ(mBackend->mArcProfile, "ATMOS");
    forget();
    EXPECT_EQ(set("external_arc", R"({"arcProfile":"ATMOS","arcActivation":"ARC"})"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout ARC OnOff 1", "Sndout EARC OnOff 0",
                                    "Sndout eAC3 ATMOS Encode OnOff 1"));
    EXPECT_EQ(set("external_arc", R"({"arcProfile":"EAC3","arcActivation":"ARC"})"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout ARC OnOff 1", "Sndout EARC OnOff 0", kPcmTold[0],
                                    kPcmTold[1], "Sndout eAC3 ATMOS Encode OnOff 0"));
    EXPECT_EQ(mBackend->mArcProfile, "EAC3");
    EXPECT_EQ(set("external_arc", R"({"arcProfile":""})"), kDone); // empty, but new
    EXPECT_EQ(told(), kPcmTold);
    expect({"external_arc", R"({"arcProfile":""})", all({start, {atmosByProfile("", "")}})});
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}}) {
        expect({"external_arc",
                alone,
                all({start, reapplied(element), {atmosByProfile("ATMOS", "")}}),
                told,
                kFailed,
                {element}});
        EXPECT_EQ(mBackend->mArcProfile, "ATMOS");
    }
}

TEST_F(SettingsTest, TheCapabilityIsTakenOverAppliedAndFlattened)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::string payload = R"({"earcCapability":["DD","DD+"],"x":"y"})";
    const Lines flattening = {flattened("earcCapability", R"(["DD","DD+"])"),
                              flattened("x", R"("y")")};
    expect({"external_arc", payload, all({start, earcReapplied(), flattening}), {kPcmTold[1]}});
    EXPECT_EQ(mBackend->mEarcCapability.stringify(), R"(["DD","DD+"])");
    EXPECT_THAT(store().mQualityParamsMap,
                UnorderedElementsAre(Pair("earcCapability", R"(["DD","DD+"])"), Pair("x", "y")));
    expect({"external_arc",
            payload,
            all({start, earcReapplied(kEarc), flattening}),
            {kEarcRefused[1]},
            kFailed,
            {kEarc}});
    EXPECT_THAT(store().mQualityParamsMap, SizeIs(2));
    expect({"external_arc",
            R"({"earcCapability":[]})",
            all({start, earcReapplied(), {flattened("earcCapability", "[]")}}),
            {kPcmTold[1]}});
}

TEST_F(SettingsTest, EarcAtmosTurnsTheEncoderOnlyWhileEarcIsActivated)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    expect({"external_arc", R"({"earcATMOS":true})", all({start, {atmosByEarc("1", "")}})});
    const Lines earc = all({start, {switchingArc("0", "1")}});
    const Texts switched = {"Sndout ARC OnOff 0", "Sndout EARC OnOff 1"};
    for (const char* value : {"true", "false"}) {
        const std::string on = std::string{value} == "true" ? "1" : "0";
        const std::string payload =
            R"({"arcActivation":"eARC","earcATMOS":)" + std::string{value} + "}";
        const std::string write = "Sndout eAC3 ATMOS Encode OnOff " + on;
        const Lines lines = all({earc, {atmosByEarc(on, "eARC"), encodingAtmos(on)}});
        expect({"external_arc", payload, lines, {switched[0], switched[1], write}});
        // A refused encoder is no failure.
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setAtmosEncode",
                                     "In setAtmosEncode : Did not able to set the element with "
                                     "atmos value " +
                                         on)}}),
                {switched[0], switched[1], write + " -> -5"},
                kDone,
                {"Sndout eAC3 ATMOS Encode OnOff"}});
    }
    expect({"external_arc",
            R"({"arcActivation":"ARC","earcATMOS":true})",
            all({start, {switchingArc("1", "0"), atmosByEarc("1", "ARC")}}),
            {"Sndout ARC OnOff 1", "Sndout EARC OnOff 0"}});
}

TEST_F(SettingsTest, AFailedStepForTheReceiverDoesNotStopTheNext)
{
    const std::string payload = R"({"earcATMOS":true,"earcCapability":["DD"],"arcProfile":"EAC3",)"
                                R"("arcActivation":"eARC"})";
    const Texts good = {"Sndout ARC OnOff 0", "Sndout EARC OnOff 1",
                        kPcmTold[0],          kPcmTold[1],
                        kPcmTold[1],          "Sndout eAC3 ATMOS Encode OnOff 1"};
    for (unsigned int failing = 0; failing <= good.size(); ++failing) {
        restart();
        Texts expected = good;
        if (failing < good.size()) {
            refuseWrite(failing);
            expected[failing] += " -> -5";
        }
        if (failing == 0)
            expected.erase(expected.begin() + 1);     // eARC is left alone
        const bool done = failing >= good.size() - 1; // the encoder reports none
        EXPECT_EQ(set("external_arc", payload), done ? kDone : kFailed) << failing;
        EXPECT_EQ(told(), expected) << failing;
        EXPECT_THAT(store().mQualityParamsMap, SizeIs(4)) << failing;
        EXPECT_THAT(stored(), SizeIs(done ? 1 : 0)) << failing;
    }
}

} // namespace
