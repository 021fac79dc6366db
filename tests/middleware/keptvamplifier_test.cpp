// SPDX-License-Identifier: Apache-2.0
// The amplifier adapter: every operation by its table, the chip type, settings and state.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "amplifiertest.h"
#include "keptvamplifier.h"
#include "television.h"

using testing::ElementsAre;
using testing::IsEmpty;

// --- Every operation

TEST_F(KepTvAmplifier, ThereIsOneAdapter)
{
    expectOneInstance<kepTVAmplifier>();
}

TEST_F(KepTvAmplifier, InitialisingAlwaysSucceedsAndCallsNothing)
{
    expectInitialising([] { return amplifier().initAmplifier(); },
                       kLog.info("initAmplifier", "mPtrAmplifierInstance is Initialised"));
    EXPECT_FALSE(amplifier().mIsBootup); // the backend's to set
}

TEST_F(KepTvAmplifier, EachOperationCallsAndLogsAsItsTableSays)
{
    expectAllOutcomes(operations());
}

TEST_F(KepTvAmplifier, AtErrorLevelOnlyFailuresAreLogged)
{
    expectErrorsOnly(operations());
    admit(kLogError);
    expectTrace("read", [] { amplifier().readI2cDataFromAmplifier(registerRequest()); },
                {"amplifier.readI2cDataFromAmp(" + RegisterArguments{}.text(Register::Read) + ")"},
                {});
}

TEST_F(KepTvAmplifier, AnEmptyStoreIsRegisteredAsAnEmptyMap)
{
    EXPECT_TRUE(amplifier().initAmplifierAttributes());
    EXPECT_THAT(middlewareCalls(),
                ElementsAre("amplifier.registerQualityParams({})", "amplifier.setAmplifierInit()"));
}

// --- updateAmplifierType

TEST_F(KepTvAmplifier, BeforeTheResetTheFirstChipTypeIsRegisteredOnly)
{
    fillStore();
    expectAllOutcomes(firstChipTypeBeforeReset());
    expectAllOutcomes(laterChipType());
}

TEST_F(KepTvAmplifier, AfterTheResetTheFirstChipTypeInitialises)
{
    fillStore();
    amplifier().resetAmplifierAttributes();
    expectAllOutcomes(firstChipTypeAfterReset());
    expectAllOutcomes(laterChipType());
}

TEST_F(KepTvAmplifier, AFailedResetIsNotDone)
{
    fillStore();
    injectMiddleware("amplifier.setAmpReset", kRefused);
    amplifier().resetAmplifierAttributes();
    clearInjections();
    expectAllOutcomes(firstChipTypeBeforeReset());
}

TEST_F(KepTvAmplifier, AResetThatWasDoneStaysDone)
{
    fillStore();
    expectAllOutcomes(resetAmplifier()); // succeeds, then fails
    expectAllOutcomes(firstChipTypeAfterReset());
    expectAllOutcomes(firstChipTypeAfterReset());
}

TEST_F(KepTvAmplifier, OnlyTheFirstChipTypeSinceBootIsTheFirst)
{
    amplifier().mIsBootup = true;
    EXPECT_TRUE(amplifier().updateAmplifierType(json(kChipType)));
    EXPECT_FALSE(amplifier().mIsBootup);
    EXPECT_THAT(middlewareCalls(),
                ElementsAre(R"(amplifier.registerQualityParams({"tv.model.ampChipType":"chip"}))"));
    forget();
    EXPECT_TRUE(amplifier().updateAmplifierType(json(kChipType)));
    EXPECT_THAT(middlewareCalls(),
                ElementsAre(R"(amplifier.registerQualityParams({"tv.model.ampChipType":"chip"}))",
                            "amplifier.setAmplifierInit()"));
}

TEST_F(KepTvAmplifier, AFirstChipTypeThatCouldNotBeRegisteredIsTheFirstNonetheless)
{
    fillStore();
    amplifier().mIsBootup = true;
    injectMiddleware("amplifier.registerQualityParams", kRefused);
    EXPECT_FALSE(amplifier().updateAmplifierType(json(kChipType)));
    EXPECT_FALSE(amplifier().mIsBootup);
}

TEST_F(KepTvAmplifier, WithoutAChipTypeNothingChanges)
{
    const std::vector<LogLine> lines = {kLog.refusal("INVALID_PARAMETER", "updateAmplifierType",
                                                     "tv.model.ampChipType is not available")};
    const std::vector<JValue> payloads =
        payloadsWithoutKeys({R"({"tv": {"model": {"ampChipType": "chip"}}, "ampChipType": "chip"})",
                             R"(["tv.model.ampChipType"])"});
    for (const bool atBoot : {true, false}) {
        for (const JValue& payload : payloads) {
            amplifier().mIsBootup = atBoot;
            expectTrace(
                payload.stringify(),
                [&payload] { EXPECT_FALSE(amplifier().updateAmplifierType(payload)); }, {}, lines);
            EXPECT_EQ(amplifier().mIsBootup, atBoot);
        }
    }
    EXPECT_THAT(kepTvParser::getInstance()->mQualityParamsMap, IsEmpty());
}

TEST_F(KepTvAmplifier, TheChipTypeIsStoredAsTextOverTheEarlierOne)
{
    for (const ChipTypeRow& row : kChipTypes) {
        kepTvParser::getInstance()->mQualityParamsMap["tv.model.ampChipType"] = "earlier";
        EXPECT_TRUE(
            amplifier().updateAmplifierType(json(member("tv.model.ampChipType", row.json))));
        EXPECT_THAT(kepTvParser::getInstance()->mQualityParamsMap,
                    ElementsAre(testing::Pair("tv.model.ampChipType", row.stored)))
            << row.json;
    }
    EXPECT_THAT(kepTvParser::getInstance()->mAvParamsMap, IsEmpty());
    EXPECT_THAT(kepTvParser::getInstance()->mAencAvParamsMap, IsEmpty());
}

// --- Settings

TEST_F(KepTvAmplifier, TheEqualiserIsOnOnlyAtExactlyOn)
{
    for (const StatusRow& row : kStatuses) {
        expectAllOutcomes(setAmplifierSettings(member("equalizerStatus", row.json),
                                               {equalizerStatus(row.text, row.on)}));
        const std::string text = row.text;
        expectAllOutcomes({"setEqualizerStatus",
                           [text] { return amplifier().setEqualizerStatus(text); },
                           {setAmpEQ(row.text, row.on)}});
    }
}

TEST_F(KepTvAmplifier, TheBalanceIsPassedOnAsAnInteger)
{
    for (const NumberConversion& row : kNumberConversions)
        expectAllOutcomes(
            setAmplifierSettings(member("audioBalance", row.json), {audioBalance(row.number)}));
}

TEST_F(KepTvAmplifier, ASetupOfTheTelevisionChangesTheEqualiserWhateverItsValue)
{
    for (const char* value : {R"("wall")", R"("")", "0", "false", "null", "[]", "{}"})
        expectAllOutcomes(
            setAmplifierSettings(member("tvSetupConfiguration", value), {changeAmpEQ()}));
}

TEST_F(KepTvAmplifier, SettingsWithoutAKnownKeyDoNothing)
{
    for (const char* payload :
         {"{}", R"({"EqualizerStatus": "on", "balance": 1, "soundMode": "x"})",
          R"({"a": {"audioBalance": 1, "equalizerStatus": "on", "tvSetupConfiguration": 1}})"})
        expectAllOutcomes(setAmplifierSettings(payload, {}));
}

TEST_F(KepTvAmplifier, SettingsThatAreNoObjectAreRefused)
{
    const LogLine refused =
        kLog.refusal("INVALID_PARAMETER", "setAmplifierSettings", "Invalid object");
    for (const JValue& payload : payloadsWithoutKeys())
        if (!payload.isObject())
            expectTrace(payload.stringify(),
                        [&payload] { amplifier().setAmplifierSettings(payload); }, {}, {refused});
    expectTrace("array",
                [] {
                    amplifier().setAmplifierSettings(
                        json(R"(["equalizerStatus", "audioBalance", "tvSetupConfiguration"])"));
                },
                {}, {refused});
}

// --- State

TEST_F(KepTvAmplifier, TypeAndStatusArePassedOnAsTexts)
{
    for (const StateRow& row : kStates)
        expectAllOutcomes(setAmplifierState(row.json, row.type, row.status));
}

TEST_F(KepTvAmplifier, AStateWithoutTypeOrStatusFailsSilently)
{
    for (const char* payload :
         {R"({"ampType": "main"})", R"({"status": "on"})", R"({"amptype": "main", "Status": "on"})",
          R"(["ampType", "status"])"})
        expectTrace(payload,
                    [payload] { EXPECT_FALSE(amplifier().setAmplifierState(json(payload))); }, {},
                    {kStateCalled});
    for (const JValue& payload : payloadsWithoutKeys())
        expectTrace(payload.stringify(),
                    [&payload] { EXPECT_FALSE(amplifier().setAmplifierState(payload)); }, {},
                    {kStateCalled});
}

TEST_F(KepTvAmplifier, TheStateIsWhatTheMiddlewareFillsIn)
{
    virtualtv::setAmplifierState({"chip", {"on", "muted", ""}});
    std::string type = "before";
    std::vector<std::string> states = {"before"};
    EXPECT_TRUE(amplifier().getAmplifierState(type, states));
    EXPECT_EQ(type, "chip");
    EXPECT_THAT(states, ElementsAre("on", "muted", ""));
    virtualtv::setAmplifierState({"", {}});
    EXPECT_TRUE(amplifier().getAmplifierState(type, states));
    EXPECT_EQ(type, "");
    EXPECT_THAT(states, IsEmpty());
}
