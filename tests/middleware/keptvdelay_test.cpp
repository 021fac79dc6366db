// SPDX-License-Identifier: Apache-2.0
#include "keptvdelay.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kLog{"keptvdelay", "DELAY_MWL_ERROR"};

kepTVDelay& delay()
{
    return *kepTVDelay::getInstance();
}

class KepTvDelay : public AdapterTest
{
protected:
    KepTvDelay()
    {
        delay().initDelay();
        forget();
    }
};

Step setDelayUpdate()
{
    return {.before = {kLog.info("updateDelayValues", "calling setDelayUpdate")},
            .call = "delay.setDelayUpdate()",
            .onFailure = {kLog.error("updateDelayValues", "Failed to update delay values")}};
}

Operation setAudioVideoSync(int value)
{
    const std::string number = std::to_string(value);
    return {"setAudioVideoSync",
            [value] { return delay().setAudioVideoSync(value); },
            {{.before = {kLog.info("setAudioVideoSync",
                                   "Request to set AudioVideoSync value as " + number)},
              .call = "delay.setFactoryDelay(" + number + ")",
              .onFailure = {kLog.error("setAudioVideoSync",
                                       "Failed to set AudioVideoSync value as " + number)}}}};
}

// --- setOffsetDelay

const LogLine kOffsetRequested = kLog.info("setOffsetDelay", "Request to set offset delay");

Operation setOffsetDelay(const std::string& settings, int value, const std::string& type)
{
    const std::string what = "set offset delay value " + std::to_string(value) + " for " + type;
    return {"setOffsetDelay",
            [settings] { return delay().setOffsetDelay(json(settings)); },
            {{.before = {kOffsetRequested},
              .call = "delay.setOffSetDelay(" + std::to_string(value) + ", " +
                      JValue{type}.stringify() + ")",
              .onSuccess = {kLog.debug("setOffsetDelay", what)},
              .onFailure = {kLog.error("setOffsetDelay", "Failed to " + what)}}}};
}

constexpr const char* kIncompleteOffsets[] = {
    R"({"offsetValue": 5})",
    R"({"operationType": "bluetooth"})",
    R"({"OffsetValue": 5, "operationtype": "bluetooth"})",
    R"(["offsetValue", "operationType"])",
};

struct OperationTypeRow {
    const char* json;
    const char* text;
};
constexpr OperationTypeRow kOperationTypes[] = {
    {R"("bluetooth")", "bluetooth"},
    {R"("")", ""},
    {R"("%s%n")", "%s%n"},
    {R"("a\"b")", "a\"b"},
    {"5", ""},
    {"true", ""},
    {"null", ""},
    {R"(["x"])", ""},
};

// --- The user's list

struct UserList {
    int avSync = 0;
    int bypass = 0;
    int speaker = 0;
    int spdif = 0;
    int wisa = 0;
    int btSurround = 0;
};

/// The call that hands the whole list over.
Step setUserDelay(const UserList& list)
{
    JValue fields = JValue::object();
    fields.put("avSync", list.avSync);
    fields.put("avSyncBypassInput", list.bypass);
    fields.put("avSyncSpeaker", list.speaker);
    fields.put("avSyncSpdif", list.spdif);
    fields.put("avSyncWisa", list.wisa);
    fields.put("avSyncBtSurround", list.btSurround);
    return {.call = "delay.setUserDelay(" + fields.stringify() + ")",
            .onSuccess = {kLog.debug("setDelaySettings", "Called setUserDelay successfully")},
            .onFailure = {kLog.error("setDelaySettings", "Failed to call setUserDelay API")}};
}

/// The update that a setting of the sound engine causes.
Step updateBySettings()
{
    Step step = setDelayUpdate();
    step.onSuccess = {kLog.info("updateUserDelayValues", "delay values updated successfully")};
    return step;
}

Operation setDelaySettings(const std::string& settings, std::vector<Step> steps)
{
    return {"setDelaySettings", [settings] { delay().setDelaySettings(json(settings)); },
            std::move(steps)};
}

Operation updateUserDelayValues(const std::string& settings, std::vector<Step> steps)
{
    return {"updateUserDelayValues", [settings] { delay().updateUserDelayValues(json(settings)); },
            std::move(steps)};
}

struct ListRow {
    const char* settings;
    UserList sent; // all that has been set so far
};
const ListRow kListRows[] = {
    {R"({"avSync": "on"})", {1, 0, 0, 0, 0, 0}},
    {R"({"avSyncSpeaker": 40})", {1, 0, 40, 0, 0, 0}},
    {R"({"avSyncWisa": 10})", {1, 0, 40, 0, 10, 0}},
    {R"({"avSyncBypassInput": "on"})", {1, 1, 40, 0, 10, 0}},
    {R"({"avSyncSpdif": -20})", {1, 1, 40, -20, 10, 0}},
    {R"({"avSyncBtSurround": 2147483647})", {1, 1, 40, -20, 10, 2147483647}},
    {R"({"avSync": "ON"})", {0, 1, 40, -20, 10, 2147483647}},
    {R"({"avSyncSpeaker": 41, "other": 1})", {0, 1, 41, -20, 10, 2147483647}},
    {R"({"avSyncSpeaker": null})", {0, 1, 0, -20, 10, 2147483647}},
    {R"({"avSyncBtSurround": 1, "avSyncWisa": 2, "avSyncSpdif": 3, "avSyncSpeaker": 4,
         "avSyncBypassInput": "off", "avSync": "on"})",
     {1, 0, 4, 3, 2, 1}},
};

struct SwitchRow {
    const char* json;
    int on;
};
constexpr SwitchRow kSwitches[] = {
    {R"("on")", 1},  {R"("ON")", 0}, {R"("On")", 0},   {R"("on ")", 0},
    {R"("off")", 0}, {R"("")", 0},   {R"("true")", 0}, {"true", 0},
    {"1", 0},        {"null", 0},    {R"(["on"])", 0},
};

struct DelayKey {
    const char* key;
    int UserList::*field;
};
constexpr DelayKey kDelayKeys[] = {
    {"avSyncSpeaker", &UserList::speaker},
    {"avSyncSpdif", &UserList::spdif},
    {"avSyncWisa", &UserList::wisa},
    {"avSyncBtSurround", &UserList::btSurround},
};
constexpr DelayKey kSwitchKeys[] = {
    {"avSync", &UserList::avSync},
    {"avSyncBypassInput", &UserList::bypass},
};

constexpr const char* kUpdatingSettings[] = {
    R"({"soundMode": "x"})",
    R"({"supportATMOS": "off"})",
    R"({"virtualSurround": null})",
    R"({"virtualSurround": "on", "soundMode": 5, "supportATMOS": true})",
};

const UserList kNothingSet{};

// --- Operations

std::vector<Operation> operations()
{
    const std::string quality = kQualityParams;
    const std::string pipeline = kAvParams;
    return {
        {"initDelayAttributes",
         [] { return delay().initDelayAttributes(); },
         {{.before = {kLog.info("initDelayAttributes", "Parsing delay values from xml")},
           .call = "delay.registerQualityParams(" + quality + ")",
           .onFailure = {kLog.error("initDelayAttributes",
                                    "Failed to register quality parameters")}},
          {.call = "delay.setDelayInitialize()",
           .onFailure = {kLog.error("initDelayAttributes",
                                    "Failed to initilize delay middleware API")}}}},
        setAudioVideoSync(120),
        {"updateDelayValues", [] { return delay().updateDelayValues(); }, {setDelayUpdate()}},
        {"registerAudioVideoInfo",
         [] { return delay().registerAudioVideoInfo(); },
         {{.before = {kLog.info("registerAudioVideoInfo", "calling registerAvParams")},
           .call = "delay.registerAvParams(" + pipeline + ")",
           .onFailure = {kLog.error("registerAudioVideoInfo",
                                    "Failed to register audio video parameters")}},
          setDelayUpdate()},
         AfterFailure::Stops},
        setOffsetDelay(R"({"offsetValue": 5, "operationType": "bluetooth"})", 5, "bluetooth"),
        updateUserDelayValues(R"({"soundMode": "x"})", {updateBySettings()}),
        setDelaySettings(R"({"avSync": "on", "soundMode": "x"})",
                         {updateBySettings(), setUserDelay({.avSync = 1})}),
    };
}

} // namespace

TEST_F(KepTvDelay, ThereIsOneAdapter)
{
    expectOneInstance<kepTVDelay>();
}

TEST_F(KepTvDelay, InitialisingAlwaysSucceedsAndCallsNothing)
{
    expectInitialising([] { return delay().initDelay(); },
                       kLog.info("initDelay", "mPtrDelayInstance is Initialised"));
}

TEST_F(KepTvDelay, EachOperationCallsAndLogsAsItsTableSays)
{
    expectAllOutcomes(operations());
}

TEST_F(KepTvDelay, AtErrorLevelOnlyFailuresAreLogged)
{
    expectErrorsOnly(operations());
}

TEST_F(KepTvDelay, AnEmptyStoreIsRegisteredAsEmptyMaps)
{
    EXPECT_TRUE(delay().initDelayAttributes());
    EXPECT_TRUE(delay().registerAudioVideoInfo());
    EXPECT_THAT(middlewareCalls(),
                ElementsAre("delay.registerQualityParams({})", "delay.setDelayInitialize()",
                            "delay.registerAvParams({})", "delay.setDelayUpdate()"));
}

TEST_F(KepTvDelay, TheFactorysCorrectionIsPassedOnUnchanged)
{
    for (const int value : {0, -1, 300, 2147483647, -2147483647 - 1})
        expectAllOutcomes(setAudioVideoSync(value));
}

// --- setOffsetDelay

TEST_F(KepTvDelay, AnOffsetWithoutValueOrTypeFailsAndCallsNothing)
{
    for (const char* settings : kIncompleteOffsets)
        expectTrace(settings, [settings] { EXPECT_FALSE(delay().setOffsetDelay(json(settings))); },
                    {}, {kOffsetRequested});
    for (const JValue& settings : payloadsWithoutKeys())
        expectTrace(settings.stringify(),
                    [&settings] { EXPECT_FALSE(delay().setOffsetDelay(settings)); }, {},
                    {kOffsetRequested});
}

TEST_F(KepTvDelay, AnOffsetIsPassedOnAsAnInteger)
{
    for (const NumberConversion& row : kNumberConversions)
        expectAllOutcomes(setOffsetDelay(R"({"operationType": "arc", "offsetValue": )" +
                                             std::string{row.json} + "}",
                                         row.number, "arc"));
}

TEST_F(KepTvDelay, AnOperationTypeIsPassedOnAsText)
{
    for (const OperationTypeRow& row : kOperationTypes)
        expectAllOutcomes(setOffsetDelay(
            R"({"offsetValue": 1, "operationType": )" + std::string{row.json} + "}", 1, row.text));
}

// --- The user's list

TEST_F(KepTvDelay, TheUsersListAccumulatesAndIsAlwaysSentWhole)
{
    for (const ListRow& row : kListRows)
        expectAllOutcomes(setDelaySettings(row.settings, {setUserDelay(row.sent)}));
}

TEST_F(KepTvDelay, EachSwitchIsOnOnlyAtExactlyOn)
{
    for (const DelayKey& key : kSwitchKeys) {
        for (const SwitchRow& row : kSwitches) {
            UserList list = kNothingSet;
            list.*key.field = 1;
            expectAllOutcomes(setDelaySettings(member(key.key, R"("on")"), {setUserDelay(list)}));
            list.*key.field = row.on;
            expectAllOutcomes(setDelaySettings(member(key.key, row.json), {setUserDelay(list)}));
        }
        delay().setDelaySettings(json(member(key.key, R"("off")")));
    }
}

TEST_F(KepTvDelay, EachDelayIsTakenAsAnInteger)
{
    for (const DelayKey& key : kDelayKeys) {
        for (const NumberConversion& row : kNumberConversions) {
            UserList list = kNothingSet;
            list.*key.field = 77;
            expectAllOutcomes(setDelaySettings(member(key.key, "77"), {setUserDelay(list)}));
            list.*key.field = row.number;
            expectAllOutcomes(setDelaySettings(member(key.key, row.json), {setUserDelay(list)}));
        }
        delay().setDelaySettings(json(member(key.key, "0")));
    }
}

TEST_F(KepTvDelay, SettingsOfTheSoundEngineHaveDelaysUpdatedButSendNoList)
{
    for (const char* settings : kUpdatingSettings) {
        expectAllOutcomes(setDelaySettings(settings, {updateBySettings()}));
        expectAllOutcomes(updateUserDelayValues(settings, {updateBySettings()}));
    }
}

TEST_F(KepTvDelay, AnUpdateComesBeforeTheListAndItsFailureDoesNotHoldTheListBack)
{
    expectAllOutcomes(setDelaySettings(R"({"avSyncSpdif": 8, "virtualSurround": "off"})",
                                       {updateBySettings(), setUserDelay({.spdif = 8})}));
}

TEST_F(KepTvDelay, UpdatingTheUsersValuesKeepsTheDelaysButSendsNoListAndLeavesTheSwitches)
{
    expectTrace("update",
                [] {
                    delay().updateUserDelayValues(
                        json(R"({"avSync": "on", "avSyncBypassInput": "on",
                "avSyncSpeaker": 1, "avSyncSpdif": 2, "avSyncWisa": 3, "avSyncBtSurround": 4})"));
                },
                {}, {});
    expectAllOutcomes(setDelaySettings(R"({"avSyncWisa": 5})", {setUserDelay({0, 0, 1, 2, 5, 4})}));
}

TEST_F(KepTvDelay, AListThatWasRefusedIsKept)
{
    injectMiddleware("delay.setUserDelay", kRefused);
    delay().setDelaySettings(json(R"({"avSync": "on", "avSyncSpeaker": 40})"));
    clearInjections();
    expectAllOutcomes(setDelaySettings(R"({"avSyncWisa": 10})",
                                       {setUserDelay({.avSync = 1, .speaker = 40, .wisa = 10})}));
}

TEST_F(KepTvDelay, WithoutAKnownKeyNothingIsDone)
{
    for (const char* settings :
         {R"({"avsync": "on", "SoundMode": "x", "autoVolume": "on"})",
          R"(["avSync", "avSyncSpeaker", "soundMode"])", R"({"a": {"avSync": "on"}})"}) {
        expectAllOutcomes(setDelaySettings(settings, {}));
        expectAllOutcomes(updateUserDelayValues(settings, {}));
    }
    for (const JValue& settings : payloadsWithoutKeys())
        expectTrace(settings.stringify(),
                    [&settings] {
                        delay().setDelaySettings(settings);
                        delay().updateUserDelayValues(settings);
                    },
                    {}, {});
    expectAllOutcomes(setDelaySettings(R"({"avSync": null})", {setUserDelay(kNothingSet)}));
}
