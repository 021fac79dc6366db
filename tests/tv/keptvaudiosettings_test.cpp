// SPDX-License-Identifier: Apache-2.0
// Settings: how a category finds its handler, what is remembered, and the categories that stand
// alone.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "jdomparser.h"
#include "kepclient.h"
#include "settingstest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- Dispatch

TEST_F(SettingsTest, AnUnknownCategoryIsRefusedWithTheEntryLineAlone)
{
    for (const char* category :
         {"", "Sound", "sound ", "audioeq", "gainValue", "getAmplifierState", "external-arc"})
        expect({category, R"({"status":"on"})", {}, {}, kFailed});
}

TEST_F(SettingsTest, EachHandlerRefusesTheCategoriesOfTheOthers)
{
    using Handler = bool (kepTVAudio::*)(std::string, JValue);
    const std::map<std::string, Handler> handlers = {
        {"Config", &kepTVAudio::setSoundConfigSettings},
        {"Digital", &kepTVAudio::setSoundOutputDigitalSettings},
        {"Driver", &kepTVAudio::setAlsaDriverSettings},
        {"Engine", &kepTVAudio::setSoundEngineSettings},
        {"Atmos", &kepTVAudio::setDolbyAtmosSettings},
        {"Amplifier", &kepTVAudio::setAmplifierSettings},
        {"Delay", &kepTVAudio::setDelaySettings},
        {"Other", &kepTVAudio::setOtherCategorySettings},
    };
    const JValue everything = json(
        R"({"mode":"pcm","soundOutput":"SPDIF","status":"on","correctionValue":1,"mix":true})");
    kepTVAudio& backend = *mBackend;
    for (const auto& [name, handler] : handlers) {
        forget();
        EXPECT_FALSE((backend.*handler)("activateWisa", everything)) << name;
        EXPECT_THAT(told(), IsEmpty()) << name;
    }
}

TEST_F(SettingsTest, AHandlerCalledByItselfRemembersWhatItApplied)
{
    EXPECT_TRUE(mBackend->setDelaySettings("audioVideoSync", json(R"({"correctionValue":5})")));
    EXPECT_TRUE(mBackend->setOtherCategorySettings("dimension", json("{}")));
    EXPECT_TRUE(mBackend->setAlsaDriverSettings("scms", json(R"({"copyright":"once"})")));
    EXPECT_FALSE(mBackend->setDelaySettings("audioVideoSync", json("{}")));
    EXPECT_FALSE(mBackend->setDelaySettings("dimension", json("{}")));
    EXPECT_THAT(mBackend->mSettingsList,
                ElementsAre(json(R"({"category":"audioVideoSync","value":{"correctionValue":5}})"),
                            json(R"({"category":"dimension","value":{}})")));
}

TEST_F(SettingsTest, AHandlerNamesTheForeignCategoryThatItRefuses)
{
    EXPECT_FALSE(mBackend->setDelaySettings("option", json(R"({"storeMode":"home"})")));
    EXPECT_FALSE(mBackend->setDelaySettings("nobody's", json("{}")));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(logLines(), (Lines{info("keptvaudiosettings:setDelaySettings",
                                      "Set delay settings for category option"),
                                 info("keptvaudiosettings:setDelaySettings",
                                      "Set delay settings for category nobody's")}));
}

// --- The rest

TEST_F(SettingsTest, OptionSucceedsWhateverTheMiddlewareSays)
{
    const std::string payload = R"({"storeMode":"home"})";
    expect({"option",
            payload,
            {other("option"),
             kEngine.info("setOptionCategorySettings", "set Store/Home mode successfully as home")},
            {R"(soundengine.setStoreMode "home")"}});
    expect({"option",
            payload,
            {other("option"), kEngine.error("setOptionCategorySettings",
                                            "Failed to set Store/Home mode value as home")},
            {R"(soundengine.setStoreMode "home" -> 7)"},
            kDone,
            {"soundengine.setStoreMode"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"})
        expect({"option",
                member("storeMode", value),
                {other("option"),
                 kEngine.info("setOptionCategorySettings", "set Store/Home mode successfully as ")},
                {R"(soundengine.setStoreMode "")"}});
    for (const char* nothing : {"{}", "[]", R"("home")", "null", "5", R"({"mode":"home"})"})
        expect({"option", nothing, {other("option")}});
}

TEST_F(SettingsTest, DimensionIsOnlyRemembered)
{
    for (const char* payload : {R"({"a":1})", "{}", "[]", R"("x")", "null", "5", "true"})
        expect({"dimension", payload, {other("dimension")}});
}

TEST_F(SettingsTest, TheModelFlagReappliesTheDigitalModeEachTime)
{
    for (const auto& [value, on] : {std::pair{"true", "1"}, {"false", "0"}}) {
        const std::string payload = member("supportBnoModel", value);
        const Lines start = {
            other("other"),
            kHeadphone.info("setSupportBnoModel", "Setting support bno model: " + std::string{on})};
        expect({"other", payload, all({start, reapplied()}), kPcmTold});
        EXPECT_EQ(mBackend->mSupportBnoModel, std::string{value} == "true");
        EXPECT_EQ(set("other", payload), kDone); // the same value again
        EXPECT_EQ(told(), kPcmTold);
        expect(
            {"other", payload, all({start, reapplied(kOptic)}), kOpticRefused, kFailed, {kOptic}});
        EXPECT_EQ(mBackend->mSupportBnoModel, std::string{value} == "true");
        expect({"other", payload, all({start, reapplied(kEarc)}), kEarcRefused, kFailed, {kEarc}});
    }
    for (const char* nothing : {"{}", "[]", "true", "null", R"({"supportBnoModel":"true"})",
                                R"({"supportBnoModel":1})", R"({"supportBnoModel":null})",
                                R"({"supportBnoModel":[true]})", R"({"supportBnoModel":{}})"})
        expect({"other", nothing, {other("other")}, {}, kFailed});
}

TEST_F(SettingsTest, WisaIsActivatedByABool)
{
    expect({"activateWisa", R"({"activateWisa":true})"});
    EXPECT_TRUE(mBackend->mWisaActivated);
    EXPECT_EQ(set("activateWisa", R"({"activateWisa":false})"), kDone);
    EXPECT_FALSE(mBackend->mWisaActivated);
    for (const char* nothing :
         {"{}", "[]", "true", "null", R"({"activateWisa":"true"})", R"({"activateWisa":1})",
          R"({"activateWisa":null})", R"({"activateWisa":[]})", R"({"activateWisa":{}})"}) {
        expect({"activateWisa",
                nothing,
                {kSettings.refusal("ERROR_LOG", "setActivateWisa",
                                   "activateWisa key is not available")},
                {},
                kFailed});
        mBackend->mWisaActivated = true;
        EXPECT_EQ(set("activateWisa", nothing), kFailed);
        EXPECT_TRUE(mBackend->mWisaActivated) << nothing;
    }
}

TEST_F(SettingsTest, ThePowerStateMutesTheNamedOutput)
{
    const auto payload = [](const std::string& output, const std::string& mute) {
        return R"({"soundOutput":)" + output + R"(,"mute":)" + mute + "}";
    };
    const auto setting = [](const std::string& mute, const std::string& output) {
        return kHeadphone.info("setPowerStateMute", "Setting powerState mute to " + mute +
                                                        " on soundOutputType " + output);
    };
    expect({"powerStateMute",
            payload(R"("external_arc")", "true"),
            {setting("1", "external_arc")},
            {"Mute Output 32 1"}});
    EXPECT_TRUE(mBackend->mPowerStateHeadphoneMute);
    expect({"powerStateMute",
            payload(R"("external_arc")", "true"),
            {setting("1", "external_arc"), refusedByDriver(),
             kControl.error("setMuteControlElement",
                            "Did not able to set the element: Mute Output on 1024")},
            {"Mute Output 32 1 -> -5"},
            kFailed,
            {"Mute Output"}});
    for (const char* mute : {"false", "null", R"("true")", "1", "[]", "{}"}) {
        expect({"powerStateMute",
                payload(R"("external_arc")", mute),
                {setting("0", "external_arc")},
                {"Mute Output 32 0"}});
        EXPECT_FALSE(mBackend->mPowerStateHeadphoneMute);
    }
    for (const char* output : {"null", "true", "5", "[]", "{}", R"("")"})
        expect({"powerStateMute", payload(output, "true"), {setting("1", "")}, {}, kFailed});
    for (const char* nothing :
         {"{}", "[]", R"("x")", "null", R"({"mute":true})", R"({"soundOutput":"external_arc"})"}) {
        expect({"powerStateMute", nothing});
        EXPECT_FALSE(mBackend->mPowerStateHeadphoneMute);
    }
}

TEST_F(SettingsTest, DetectionMutesTheHeadphone)
{
    const auto setting = [](const std::string& mute) {
        return kHeadphone.info("setHeadphoneDetectionMute",
                               "Setting headphone detection mute to " + mute);
    };
    const auto called = [](const std::string& mute) {
        return kHeadphone.info("setHeadphoneDetectionMute",
                               "Called setHeadphoneDetectionMute muteStatus " + mute);
    };
    const std::string sub = "subcpu_misc_Set_HPMuteOnOff true";
    const Lines muting = {
        setting("1"),
        called("1"),
        kVolume.info("executeMuteExtSpeaker", "executeMuteExtSpeaker is called / muteStatus = 1"),
        kHeadphone.info("executeMuteHeadphone", "Called execute muteHeadphone muteStatus 1"),
        kHeadphone.info("isValidHeadphoneMute", "isValidHeadphoneMute check 0 1 0"),
    };
    expect({"headphoneDetectionMute", R"({"mute":true})", muting, {sub, sub, "Mute Output 16 1"}});
    EXPECT_TRUE(mBackend->mHeadphoneDetectionMute);
    expect({"headphoneDetectionMute",
            R"({"mute":true})",
            all({muting,
                 {refusedByDriver(),
                  kControl.error("setMuteControlElement",
                                 "Did not able to set the element: Mute Output on 32")}}),
            {sub, sub, "Mute Output 16 1 -> -5"},
            kFailed,
            {"Mute Output"}});
    for (const char* mute : {"false", "null", R"("true")", "1", "[]", "{}"}) {
        expect(
            {"headphoneDetectionMute",
             member("mute", mute),
             {setting("0"), called("0"),
              kHeadphone.info("setHeadphoneDetectionMute",
                              "Headphone timer has not been make yet, so skip headphone unmute")}});
        EXPECT_FALSE(mBackend->mHeadphoneDetectionMute);
    }
    for (const char* nothing : {"{}", "[]", "true", "null", R"({"Mute":true})"}) {
        expect({"headphoneDetectionMute", nothing, {setting("0")}, {}, kFailed});
        EXPECT_FALSE(mBackend->mHeadphoneDetectionMute);
    }
}

// --- Payloads without keys

TEST_F(SettingsTest, APayloadThatIsNoObjectHasNoKeys)
{
    for (const Category& category : kCategories) {
        const std::string name = category.name;
        if (name == "modelConfig" || name == "contiConfig" || name == "sound" ||
            name == "smartSoundMode" || name == "hardwareConfig")
            continue; // these want an object, and have tests of their own
        const Outcome expected = outcome(name, JValue::object());
        for (const char* payload : {"[]", R"("on")", "5", "true", "null", "[[]]"})
            EXPECT_EQ(outcome(name, json(payload)), expected) << name << " " << payload;
    }
}

TEST_F(SettingsTest, AMissingPayloadIsANull)
{
    EXPECT_EQ(outcome("audioVideoSync", JValue::invalid()), outcome("audioVideoSync", JValue{}));
    EXPECT_EQ(outcome("dimension", JValue::invalid()), outcome("dimension", JValue{}));
    restart();
    EXPECT_EQ(mBackend->setSettings("dimension", JValue::invalid()), kDone);
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", "null")));
}

// --- The store

TEST_F(SettingsTest, ARepeatedCategoryIsReplacedAndMovesToTheEnd)
{
    for (const char* category : {"dimension", "audioVideoSync", "option"})
        set(category, R"({"correctionValue":1})");
    set("audioVideoSync", R"({"correctionValue":2})");
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", R"({"correctionValue":1})"),
                                      storedAs("option", R"({"correctionValue":1})"),
                                      storedAs("audioVideoSync", R"({"correctionValue":2})")));
    const Lines lines = logLines();
    ASSERT_THAT(lines, SizeIs(6));
    EXPECT_EQ(lines[3],
              kSettings.info("storeSettings", "Store settings key for category audioVideoSync"));
    EXPECT_EQ(lines[4],
              kSettings.debug("storeSettings", "Found the Category change only Value Delete the "
                                               "same and add new one in Vector"));
    EXPECT_EQ(lines[5], remembered("audioVideoSync", stored().back()));
}

TEST_F(SettingsTest, AFailedRequestLeavesWhatWasStoredBefore)
{
    set("audioVideoSync", R"({"correctionValue":1})");
    set("dimension", "{}");
    const Texts before = stored();
    injectMiddleware("delay.setFactoryDelay", 7);
    EXPECT_EQ(set("audioVideoSync", R"({"correctionValue":2})"), kFailed);
    EXPECT_EQ(set("audioVideoSync", "{}"), kFailed);
    EXPECT_EQ(stored(), before);
}

TEST_F(SettingsTest, OnlyTheFirstOfTwoEqualCategoriesIsReplaced)
{
    for (const char* category : {"a", "b", "a"}) {
        JValue element = JValue::object();
        element.put("category", category);
        element.put("value", 1);
        mBackend->mSettingsList.push_back(element);
    }
    mBackend->storeSettings("a", json("2"));
    EXPECT_THAT(stored(), ElementsAre(storedAs("b", "1"), storedAs("a", "1"), storedAs("a", "2")));
}

struct RemovalRow {
    const char* payload;
    const char* value;
    Texts removed; // what the value looks like after each removal
};

TEST_F(SettingsTest, AnswersOfTheCallerAreNotStored)
{
    const std::vector<RemovalRow> rows = {
        {R"({"correctionValue":10,"returnValue":true,"subscribe":false})",
         R"({"correctionValue":10})",
         {R"({"correctionValue":10,"subscribe":false})", R"({"correctionValue":10})"}},
        {R"({"subscribe":null,"a":1})", R"({"a":1})", {R"({"a":1})"}},
        {R"({"a":1,"returnValue":{"b":2}})", R"({"a":1})", {R"({"a":1})"}},
        {R"({"returnValue":1,"subscribe":2})", "{}", {R"({"subscribe":2})", "{}"}},
        {R"({"a":{"returnValue":1,"subscribe":2}})",
         R"({"a":{"returnValue":1,"subscribe":2}})",
         {}},
        {R"(["returnValue","subscribe"])", R"(["returnValue","subscribe"])", {}},
        {"null", "null", {}},
    };
    for (const RemovalRow& row : rows) {
        restart();
        const JValue payload = json(row.payload);
        EXPECT_EQ(mBackend->setSettings("dimension", payload), kDone);
        EXPECT_EQ(payload.stringify(), row.payload);
        EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", row.value)));
        Lines lines = {
            kDispatch.info("setSettings",
                           "category dimension Payload received is " + std::string{row.payload}),
            other("dimension"),
            kSettings.info("storeSettings", "Store settings key for category dimension")};
        for (const std::string& text : row.removed)
            lines.push_back(shortened(text));
        lines.push_back(remembered("dimension", stored().front()));
        EXPECT_EQ(logLines(), lines) << row.payload;
    }
}

TEST_F(SettingsTest, WhateverTheParserLetsInIsStoredListedAndAnsweredWhole)
{
    for (int depth = 1; depth <= JDomParser::kMaxDepth; ++depth) {
        const std::string inner(static_cast<std::size_t>(depth - 1), '[');
        const std::string closing(static_cast<std::size_t>(depth - 1), ']');
        const std::string text = R"({"a":)" + (depth > 1 ? inner + closing : "1") + "}";
        ASSERT_EQ(set("dimension", text), kDone) << depth;
        const std::string entry = R"({"category":"dimension","value":)" + text + "}";
        EXPECT_EQ(mBackend->getSettings("", JValue{}).stringify(), "[" + entry + "]") << depth;
        EXPECT_EQ(mBackend->getSettings("dimension", JValue{}).stringify(), "[" + entry + "]")
            << depth;
    }
}

TEST_F(SettingsTest, APayloadThatNoAnswerHasRoomForIsRefusedAndTheOneBeforeKept)
{
    JValue payload = JValue::object();
    while (payload.depth() < JValue::kMaxDepth) {
        restart();
        const bool fits = payload.depth() + 2 <= JValue::kMaxDepth;
        set("dimension", R"({"before":1})");
        forget();
        EXPECT_EQ(mBackend->setSettings("dimension", payload), fits ? kDone : kFailed);
        const std::string kept = fits ? payload.stringify() : R"({"before":1})";
        EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", kept)));
        EXPECT_EQ(mBackend->getSettings("", JValue{})[0]["value"].stringify(), kept);
        const LogLine refusal =
            kSettings.refusal("ERROR_LOG", "storeSettings",
                              "Settings of category dimension are nested too deep to be stored");
        EXPECT_EQ(logLines(kLogError), fits ? Lines{} : Lines{refusal}) << payload.depth();
        JValue outer = JValue::object();
        ASSERT_TRUE(outer.put("a", payload));
        payload = outer;
    }
}

TEST_F(SettingsTest, TheCallerKeepsItsPayloadAndTheStoreItsCopy)
{
    JValue payload = json(R"({"a":{"b":[1]},"returnValue":true})");
    EXPECT_EQ(mBackend->setSettings("dimension", payload), kDone);
    EXPECT_EQ(payload.stringify(), R"({"a":{"b":[1]},"returnValue":true})");
    payload["a"]["b"].append(2);
    payload.put("c", 3);
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", R"({"a":{"b":[1]}})")));
}

TEST_F(SettingsTest, TheCapabilityIsTheBackendsOwn)
{
    JValue payload = json(R"({"earcCapability":["DD"]})");
    EXPECT_EQ(mBackend->setSettings("external_arc", payload), kDone);
    payload["earcCapability"].append("DD+");
    EXPECT_EQ(mBackend->mEarcCapability.stringify(), R"(["DD"])");
}

// --- What the facade makes of an exception

TEST_F(SettingsTest, AnUnreadableVolumeEndsTheRequestAtTheFacade)
{
    configureBackend("TV");
    kepClient* client = kepClient::getInstance();
    ASSERT_TRUE(client->initialize());
    for (const char* volume : {"loud", "", "99999999999999999999"}) {
        store().mQualityParamsMap = {{"audioDescriptionVolume", volume}};
        forget();
        const bool empty = std::string{volume}.empty();
        EXPECT_EQ(client->setSettings("sound", json(R"({"audioDescription":"on","avSync":"on"})")),
                  empty ? kDone : kFailed)
            << volume;
        EXPECT_THAT(told(), SizeIs(empty ? 1 : 0)) << volume;
    }
    EXPECT_EQ(client->setSettings("dimension", json("{}")), kDone);
}

} // namespace
