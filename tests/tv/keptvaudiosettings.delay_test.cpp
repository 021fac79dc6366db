// SPDX-License-Identifier: Apache-2.0
// Settings: the categories of the delay, the picture's included.
#include <string>

#include <gmock/gmock.h>

#include "settingstest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// --- Delay and picture

TEST_F(SettingsTest, TheCorrectionIsAnInteger)
{
    for (const NumberConversion& row : kNumberConversions) {
        const std::string payload = json(member("correctionValue", row.json)).stringify();
        const std::string number = std::to_string(row.number);
        const std::string call = "delay.setFactoryDelay " + number;
        const Lines lines = {
            delaying("audioVideoSync"),
            kDelay.info("setAudioVideoSync", "Request to set AudioVideoSync value as " + number)};
        expect({"audioVideoSync", payload, lines, {call}});
        expect({"audioVideoSync",
                payload,
                all({lines,
                     {kDelay.error("setAudioVideoSync",
                                   "Failed to set AudioVideoSync value as " + number)}}),
                {call + " -> 7"},
                kFailed,
                {"delay.setFactoryDelay"}});
    }
    for (const char* nothing : {"{}", "[10]", R"("x")", "null"})
        expect({"audioVideoSync",
                nothing,
                {delaying("audioVideoSync"),
                 kSettings.error("setDelaySettings",
                                 "status value not present for audioVideoSync category")},
                {},
                kFailed});
}

TEST_F(SettingsTest, TheOffsetDelayIsPassedOn)
{
    const LogLine requested = kDelay.info("setOffsetDelay", "Request to set offset delay");
    const auto payload = [](const std::string& value, const std::string& type) {
        return json(R"({"offsetValue":)" + value + R"(,"operationType":)" + type + "}").stringify();
    };
    const std::string good = payload("40", R"("add")");
    const Lines start = {delaying("offsetDelay"), requested};
    expect({"offsetDelay",
            good,
            all({start, {kDelay.debug("setOffsetDelay", "set offset delay value 40 for add")}}),
            {R"(delay.setOffSetDelay 40 "add")"}});
    expect({"offsetDelay",
            good,
            all({start,
                 {kDelay.error("setOffsetDelay", "Failed to set offset delay value 40 for add")}}),
            {R"(delay.setOffSetDelay 40 "add" -> 7)"},
            kFailed,
            {"delay.setOffSetDelay"}});
    for (const NumberConversion& row : kNumberConversions) {
        const std::string number = std::to_string(row.number);
        expect({"offsetDelay",
                payload(row.json, R"("add")"),
                all({start,
                     {kDelay.debug("setOffsetDelay",
                                   "set offset delay value " + number + " for add")}}),
                {"delay.setOffSetDelay " + number + R"( "add")"}});
    }
    for (const char* type : {"null", "true", "5", "[]", "{}"})
        expect({"offsetDelay",
                payload("40", type),
                all({start, {kDelay.debug("setOffsetDelay", "set offset delay value 40 for ")}}),
                {R"(delay.setOffSetDelay 40 "")"}});
    for (const char* nothing :
         {"{}", "[]", R"("add")", "null", R"({"offsetValue":40})", R"({"operationType":"add"})"})
        expect({"offsetDelay", nothing, start, {}, kFailed});
}

TEST_F(SettingsTest, ANewPictureLevelUpdatesTheDelays)
{
    const std::string payload = R"({"memcDelayLevel":"low"})";
    const Lines start = {other("picture"), picturing(payload)};
    const Lines updated = {
        kSettings.debug("setPictureSettings", "Updated memcDelayLevel Value received = low"),
        kDelay.info("updateDelayValues", "calling setDelayUpdate")};
    const Lines refused = {kDelay.error("updateDelayValues", "Failed to update delay values"),
                           kSettings.refusal("DELAY_MIDDLEWARE_ERROR", "setPictureSettings",
                                             "Failed to update delay value to middleware")};
    const LogLine added = flattened("memcDelayLevel", R"("low")");
    expect({"picture", payload, all({start, {added}, updated}), {"delay.setDelayUpdate"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, {added}, updated, refused}),
            {"delay.setDelayUpdate -> 7"},
            kFailed,
            {"delay.setDelayUpdate"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, updated}),
            {"delay.setDelayUpdate"},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "high"}}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, updated, refused}),
            {"delay.setDelayUpdate -> 7"},
            kFailed,
            {"delay.setDelayUpdate"},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "high"}}});
    expect({"picture",
            payload,
            all({start,
                 {kSettings.info("setPictureSettings", "memcDelayLevelValue low is same as "
                                                       "previous MemcDelayLevelValue low ")}}),
            {},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "low"}}});
    const std::string empty = R"({"memcDelayLevel":""})";
    expect({"picture",
            empty,
            {other("picture"), picturing(empty),
             kSettings.info("setPictureSettings", "memcDelayLevelValue  is same as "
                                                  "previous MemcDelayLevelValue  ")}});
    EXPECT_THAT(store().mQualityParamsMap, IsEmpty());
    for (const char* nothing :
         {"{}", "[]", R"("low")", "null", R"({"memcDelayLevel":1})", R"({"memcDelayLevel":null})",
          R"({"memcDelayLevel":true})", R"({"memcDelayLevel":["low"]})",
          R"({"memcDelayLevel":{"low":1}})"}) {
        expect({"picture", nothing, {other("picture"), picturing(nothing)}, {}, kFailed});
        EXPECT_THAT(store().mQualityParamsMap, IsEmpty()) << nothing;
    }
}

} // namespace
