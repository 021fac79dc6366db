// SPDX-License-Identifier: Apache-2.0
// Settings: the categories of the amplifier.
#include <string>

#include <gmock/gmock.h>

#include "settingstest.h"

namespace
{

using testing::ElementsAre;
using testing::Pair;

// --- Amplifier

TEST_F(SettingsTest, TheAmplifierTypeIsUpdated)
{
    const std::string payload = R"({"tv.model.ampChipType":"X1"})";
    const std::string registered =
        R"(amplifier.registerQualityParams {"tv.model.ampChipType":"X1"})";
    const LogLine start = amplifying("amplifier", payload);
    const LogLine parsing =
        kAmplifier.info("initAmplifierAttributes", "Parsing amplifier values from xml");
    expect({"amplifier",
            payload,
            {start, parsing,
             kSettings.debug("setAmplifierSettings", "successfully updated amplifier type")},
            {registered, "amplifier.setAmplifierInit"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("tv.model.ampChipType", "X1")));
    const LogLine failed =
        kAmplifier.error("updateAmplifierType", "Failed to init amplifier attributes");
    expect({"amplifier",
            payload,
            {start, parsing,
             kAmplifier.error("initAmplifierAttributes", "Failed to register quality parameters"),
             failed},
            {registered + " -> 7", "amplifier.setAmplifierInit"},
            kFailed,
            {"amplifier.registerQualityParams"}});
    expect(
        {"amplifier",
         payload,
         {start, parsing,
          kAmplifier.error("initAmplifierAttributes", "Failed to initilize amplifier Middle ware"),
          failed},
         {registered, "amplifier.setAmplifierInit -> 7"},
         kFailed,
         {"amplifier.setAmplifierInit"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"}) {
        const std::string other = member("tv.model.ampChipType", value);
        expect({"amplifier",
                other,
                {amplifying("amplifier", other), parsing,
                 kSettings.debug("setAmplifierSettings", "successfully updated amplifier type")},
                {R"(amplifier.registerQualityParams {"tv.model.ampChipType":""})",
                 "amplifier.setAmplifierInit"}});
    }
    for (const char* nothing : {"{}", "[]", R"("X1")", "null"})
        expect({"amplifier",
                nothing,
                {amplifying("amplifier", nothing),
                 kAmplifier.refusal("INVALID_PARAMETER", "updateAmplifierType",
                                    "tv.model.ampChipType is not available")},
                {},
                kFailed});
}

TEST_F(SettingsTest, ResumeAndSuspendDoNotReadTheirPayload)
{
    const LogLine resuming =
        kAmplifier.debug("setAmplifierResume", "Called setAmplifierResume function");
    const LogLine suspending =
        kAmplifier.info("setAmplifierSuspend", "Called setAmplifierSuspend function");
    for (const char* payload : {R"({"a":1})", "{}", "[1]", R"("x")", "null", "5", "true"}) {
        const LogLine resume = amplifying("prepareResume", payload);
        const LogLine suspend = amplifying("prepareAmplifierSuspend", payload);
        expect({"prepareResume", payload, {resume, resuming}, {"amplifier.setAmpResume"}});
        EXPECT_TRUE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareResume",
                payload,
                {resume, resuming,
                 kAmplifier.error("setAmplifierResume", "Amp Resume call is failed")},
                {"amplifier.setAmpResume -> 7"},
                kFailed,
                {"amplifier.setAmpResume"}});
        EXPECT_TRUE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareAmplifierSuspend",
                payload,
                {suspend, suspending},
                {"amplifier.setAmpSuspend"}});
        EXPECT_FALSE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareAmplifierSuspend",
                payload,
                {suspend, suspending,
                 kAmplifier.error("setAmplifierSuspend", "failed to call setAmpSuspend function")},
                {"amplifier.setAmpSuspend -> 7"},
                kFailed,
                {"amplifier.setAmpSuspend"}});
    }
}

TEST_F(SettingsTest, TheAmplifierStateIsPassedOn)
{
    const LogLine called = kAmplifier.debug("setAmplifierState", "Called setAmplifier function");
    const std::string payload = R"({"ampType":"main","status":"on"})";
    const Lines lines = {amplifying("amplifierState", payload), called};
    expect({"amplifierState", payload, lines, {R"(amplifier.setAmpOnOff "main" "on")"}});
    expect({"amplifierState",
            payload,
            all({lines,
                 {kAmplifier.error("setAmplifierState", "Failed to set amplifier state for "
                                                        "amplifier Type: main, Status: on ")}}),
            {R"(amplifier.setAmpOnOff "main" "on" -> 7)"},
            kFailed,
            {"amplifier.setAmpOnOff"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"}) {
        const std::string type = R"({"ampType":)" + std::string{value} + R"(,"status":"on"})";
        expect({"amplifierState",
                type,
                {amplifying("amplifierState", type), called},
                {R"(amplifier.setAmpOnOff "" "on")"}});
        const std::string status = R"({"ampType":"main","status":)" + std::string{value} + "}";
        expect({"amplifierState",
                status,
                {amplifying("amplifierState", status), called},
                {R"(amplifier.setAmpOnOff "main" "")"}});
    }
    for (const char* incomplete :
         {"{}", "[]", R"("on")", "null", R"({"ampType":"main"})", R"({"status":"on"})"})
        expect({"amplifierState",
                incomplete,
                {amplifying("amplifierState", incomplete), called},
                {},
                kFailed});
}

struct Member {
    const char* key;
    const char* value;
    bool number;
};
constexpr Member kI2cMembers[] = {
    {"slaveAddress", R"("0x54")", false}, {"portNumber", "3", true},
    {"address", R"("0x10")", false},      {"numberOfByte", "1", true},
    {"sizeOfArray", "2", true},           {"data", R"(["a","b"])", false},
};

/// The register request with one value replaced, or left out when that is "".
std::string i2cRequest(const std::string& changed = "none", const std::string& value = "")
{
    std::string text;
    for (const Member& row : kI2cMembers) {
        const std::string used = row.key == changed ? value : row.value;
        if (!used.empty())
            text += (text.empty() ? "{\"" : ",\"") + std::string{row.key} + "\":" + used;
    }
    return text + "}";
}

std::string i2cCall(const std::string& changed = "none")
{
    std::string text = "amplifier.writeI2cDataToAmp";
    for (const Member& row : kI2cMembers) {
        const std::string nothing = row.number                       ? "0"
                                    : std::string{row.key} == "data" ? "[]"
                                                                     : R"("")";
        text += " " + (row.key == changed ? nothing : row.value);
    }
    return text;
}

TEST_F(SettingsTest, RegistersAreWritten)
{
    const auto lines = [](const std::string& payload) {
        return Lines{
            amplifying("writeI2cDataToAmplifier", payload),
            kAmplifier.info("writeI2cDataToAmplifier",
                            "Called writeI2cDataToAmplifier function with amplifierObject " +
                                payload)};
    };
    const std::string payload = i2cRequest();
    expect({"writeI2cDataToAmplifier", payload, lines(payload), {i2cCall()}});
    expect({"writeI2cDataToAmplifier",
            payload,
            all({lines(payload),
                 {kAmplifier.error("writeI2cDataToAmplifier",
                                   "Failed to write I2c Data to Amplifier IC  slaveAddress: 0x54, "
                                   "address: 0x10 ")}}),
            {i2cCall() + " -> 7"},
            kFailed,
            {"amplifier.writeI2cDataToAmp"}});
    const auto missing = [](const std::string& given) {
        return Lines{
            amplifying("writeI2cDataToAmplifier", given),
            kAmplifier.refusal("ERROR_LOG", "writeI2cDataToAmplifier",
                               "writeI2cDataToAmplifier: amplifierObject value not received")};
    };
    for (const Member& row : kI2cMembers) {
        const std::string without = i2cRequest(row.key, "");
        expect({"writeI2cDataToAmplifier", without, missing(without), {}, kFailed});
        for (const char* value : {"null", "true", "{}"}) {
            const std::string wrong = i2cRequest(row.key, value);
            expect({"writeI2cDataToAmplifier", wrong, lines(wrong), {i2cCall(row.key)}});
        }
    }
    for (const char* nothing : {"{}", "[]", R"("x")", "null"})
        expect({"writeI2cDataToAmplifier", nothing, missing(nothing), {}, kFailed});
}

} // namespace
