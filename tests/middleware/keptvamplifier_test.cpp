// SPDX-License-Identifier: Apache-2.0
#include "keptvamplifier.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "television.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kLog{"keptvamplifier", "AMPLIFIER_MWL_ERROR"};

kepTVAmplifier& amplifier()
{
    return *kepTVAmplifier::getInstance();
}

// --- Start-up and chip type

constexpr const char* kChipType = R"({"tv.model.ampChipType": "chip"})";
constexpr const char* kParamsWithChip = R"({"B":"2","a":"quality","tv.model.ampChipType":"chip"})";

Step registering(const std::string& function, const std::string& params)
{
    return {.call = "amplifier.registerQualityParams(" + params + ")",
            .onFailure = {kLog.error(function, "Failed to register quality parameters")}};
}

Step initialising(const std::string& function)
{
    return {.call = "amplifier.setAmplifierInit()",
            .onFailure = {kLog.error(function, "Failed to initilize amplifier Middle ware")}};
}

std::vector<Step> attributeSteps(const std::string& params)
{
    Step first = registering("initAmplifierAttributes", params);
    first.before = {kLog.info("initAmplifierAttributes", "Parsing amplifier values from xml")};
    return {first, initialising("initAmplifierAttributes")};
}

Operation resetAmplifier()
{
    return {
        "resetAmplifierAttributes",
        [] { amplifier().resetAmplifierAttributes(); },
        {{.before = {kLog.info("resetAmplifierAttributes",
                               "Calling setAmpReset of amplifier middleware library")},
          .call = "amplifier.setAmpReset()",
          .onFailure = {kLog.error("resetAmplifierAttributes", "Failed to call setAmpReset")}}}};
}

/// The chip type arrives, as the first one since boot or as a later one.
Action chipTypeArrives(bool first)
{
    return [first] {
        amplifier().mIsBootup = first;
        const bool done = amplifier().updateAmplifierType(json(kChipType));
        EXPECT_FALSE(amplifier().mIsBootup);
        return done;
    };
}

Step firstRegistering()
{
    Step step = registering("updateAmplifierType", kParamsWithChip);
    step.before = {kLog.info("updateAmplifierType",
                             "Amplifier chip type is received during bootup to play powerOnSound")};
    return step;
}

Operation firstChipTypeBeforeReset()
{
    Step step = firstRegistering();
    step.onSuccess = {
        kLog.error("updateAmplifierType", "Amp reset is not completed, so skip Amplifier Init")};
    return {"first, before the reset", chipTypeArrives(/*first=*/true), {step}};
}

Operation firstChipTypeAfterReset()
{
    return {"first, after the reset",
            chipTypeArrives(/*first=*/true),
            {firstRegistering(), initialising("updateAmplifierType")},
            AfterFailure::Stops};
}

Operation laterChipType()
{
    return {"later",
            chipTypeArrives(/*first=*/false),
            attributeSteps(kParamsWithChip),
            AfterFailure::GoesOn,
            {kLog.error("updateAmplifierType", "Failed to init amplifier attributes")}};
}

struct ChipTypeRow {
    const char* json;
    const char* stored;
};
constexpr ChipTypeRow kChipTypes[] = {
    {R"("chip")", "chip"}, {R"("other chip")", "other chip"},
    {R"("")", ""},         {"5", ""},
    {"true", ""},          {"null", ""},
    {R"(["chip"])", ""},
};

// --- Settings

Step setAmpEQ(const std::string& status, bool on)
{
    return {.before = {kLog.info("setEqualizerStatus",
                                 "Setting Amplifier EQ equalizerStatus " + status)},
            .call = std::string{"amplifier.setAmpEQ("} + (on ? "true" : "false") + ")",
            .onFailure = {kLog.error("setEqualizerStatus",
                                     "Failed to set amplifier equalizer as " + status)}};
}

/// The same by way of the settings.
Step equalizerStatus(const std::string& status, bool on)
{
    Step step = setAmpEQ(status, on);
    step.onSuccess = {
        kLog.debug("setAmplifierSettings",
                   "set equalizerStatus for amplifier middleware successfully as " + status)};
    return step;
}

Step audioBalance(int balance)
{
    const std::string number = std::to_string(balance);
    return {
        .call = "amplifier.setAmpBalance(" + number + ")",
        .onSuccess = {kLog.info("setAmplifierSettings", "set Balance successfully as " + number)},
        .onFailure = {
            kLog.error("setAmplifierSettings",
                       "Failed to set balance in amplifier middle ware library as " + number)}};
}

Step changeAmpEQ()
{
    return {
        .call = "amplifier.changeAmpEQ()",
        .onSuccess = {kLog.info("setAmplifierSettings", "change amplifier equalizer")},
        .onFailure = {kLog.error("setAmplifierSettings", "Failed to change amplifier equalizer")}};
}

Operation setAmplifierSettings(const std::string& payload, std::vector<Step> steps)
{
    return {"setAmplifierSettings", [payload] { amplifier().setAmplifierSettings(json(payload)); },
            std::move(steps)};
}

Operation setAmplifierMute(bool mute)
{
    const std::string number = mute ? "1" : "0";
    return {"setAmplifierMute",
            [mute] { amplifier().setAmplifierMute(mute); },
            {{.before = {kLog.debug("setAmplifierMute", "Called setAmplifierMute function")},
              .call = std::string{"amplifier.setAmpMute("} + (mute ? "true" : "false") + ")",
              .onSuccess = {kLog.info("setAmplifierMute", "set amplifier mute status " + number)},
              .onFailure = {kLog.error("setAmplifierMute",
                                       "Failed to set amplifier mute status " + number)}}}};
}

struct StatusRow {
    const char* json;
    const char* text;
    bool on;
};
constexpr StatusRow kStatuses[] = {
    {R"("on")", "on", true},    {R"("On")", "On", false},     {R"("ON")", "ON", false},
    {R"("on ")", "on ", false}, {R"("off")", "off", false},   {R"("")", "", false},
    {R"("%s")", "%s", false},   {R"("true")", "true", false}, {"true", "", false},
    {"1", "", false},           {"null", "", false},          {R"(["on"])", "", false},
};

// --- State

const LogLine kStateCalled = kLog.debug("setAmplifierState", "Called setAmplifier function");

Operation setAmplifierState(const std::string& payload, const std::string& type,
                            const std::string& status)
{
    return {"setAmplifierState",
            [payload] { return amplifier().setAmplifierState(json(payload)); },
            {{.before = {kStateCalled},
              .call = "amplifier.setAmpOnOff(" + JValue{type}.stringify() + ", " +
                      JValue{status}.stringify() + ")",
              .onFailure = {kLog.error("setAmplifierState",
                                       "Failed to set amplifier state for amplifier Type: " + type +
                                           ", Status: " + status + " ")}}}};
}

struct StateRow {
    const char* json;
    const char* type;
    const char* status;
};
constexpr StateRow kStates[] = {
    {R"({"ampType": "main", "status": "on"})", "main", "on"},
    {R"({"status": "OFF", "other": 1, "ampType": "woofer"})", "woofer", "OFF"},
    {R"({"ampType": "", "status": "%s"})", "", "%s"},
    {R"({"ampType": 1, "status": true})", "", ""},
    {R"({"ampType": null, "status": null})", "", ""},
    {R"({"ampType": ["main"], "status": {"status": "on"}})", "", ""},
};

// --- Registers

enum class Register { Write, Read };

constexpr const char* kWriteKeys[] = {"slaveAddress", "portNumber",  "address",
                                      "numberOfByte", "sizeOfArray", "data"};

/// A request with everything that a write needs.
JValue registerRequest()
{
    return json(R"({"slaveAddress": "0x2A", "portNumber": 1, "address": "0x0F", "numberOfByte": 2,
                    "sizeOfArray": 3, "data": ["0x10", "0x20"]})");
}

JValue registerRequest(const std::string& key, const JValue& value)
{
    JValue request = registerRequest();
    request.put(key, value);
    return request;
}

JValue registerRequestWithout(const std::string& key)
{
    JValue request = registerRequest();
    request.remove(key);
    return request;
}

/// The arguments that the middleware has to be given, as JSON texts.
struct RegisterArguments {
    std::string slaveAddress = R"("0x2A")";
    std::string portNumber = "1";
    std::string address = R"("0x0F")";
    std::string numberOfByte = "2";
    std::string sizeOfArray = "3";
    std::string data = R"(["0x10","0x20"])";

    [[nodiscard]] std::string text(Register direction) const
    {
        return slaveAddress + ", " + portNumber + ", " + address + ", " + numberOfByte + ", " +
               sizeOfArray + (direction == Register::Write ? ", " + data : "");
    }
};

LogLine writeCalled(const JValue& request)
{
    return kLog.info("writeI2cDataToAmplifier",
                     "Called writeI2cDataToAmplifier function with amplifierObject " +
                         request.stringify());
}

LogLine readCalled(const JValue& request)
{
    return kLog.info(
        "readI2cDataFromAmplifier",
        "Called readI2cDataFromAmplifier function to read data from audio amplifier with amplifierObject " +
            request.stringify());
}

Operation writeRegisters(const JValue& request, const RegisterArguments& arguments)
{
    return {"writeI2cDataToAmplifier",
            [request] { return amplifier().writeI2cDataToAmplifier(request); },
            {{.before = {writeCalled(request)},
              .call = "amplifier.writeI2cDataToAmp(" + arguments.text(Register::Write) + ")",
              .onFailure = {kLog.error("writeI2cDataToAmplifier",
                                       "Failed to write I2c Data to Amplifier IC  slaveAddress: " +
                                           json(arguments.slaveAddress).asString() + ", address: " +
                                           json(arguments.address).asString() + " ")}}}};
}

/// A read has no status, so nothing is injected.
Operation readRegisters(const JValue& request, const RegisterArguments& arguments)
{
    return {"readI2cDataFromAmplifier",
            [request] { return amplifier().readI2cDataFromAmplifier(request).isArray(); },
            {{.before = {readCalled(request)},
              .call = "amplifier.readI2cDataFromAmp(" + arguments.text(Register::Read) + ")"}}};
}

struct ByteKey {
    const char* key;
    std::string RegisterArguments::*argument;
};
constexpr ByteKey kByteKeys[] = {
    {"portNumber", &RegisterArguments::portNumber},
    {"numberOfByte", &RegisterArguments::numberOfByte},
    {"sizeOfArray", &RegisterArguments::sizeOfArray},
};
constexpr ByteKey kTextKeys[] = {
    {"slaveAddress", &RegisterArguments::slaveAddress},
    {"address", &RegisterArguments::address},
};

struct ByteRow {
    const char* json;
    const char* byte;
};
constexpr ByteRow kBytes[] = {
    {"0", "0"},           {"255", "255"},   {"256", "0"},           {"257", "1"},
    {"300", "44"},        {"-1", "255"},    {"-256", "0"},          {"3.7", "3"},
    {"-3.7", "253"},      {"1.9e2", "190"}, {"99999999999", "255"}, {"-99999999999", "0"},
    {R"("7")", "0"},      {"true", "0"},    {"null", "0"},          {"[7]", "0"},
    {R"({"a": 7})", "0"},
};

struct TextRow {
    const char* json;
    const char* text; // as JSON
};
constexpr TextRow kTexts[] = {
    {R"("0x34")", R"("0x34")"}, {R"("52")", R"("52")"}, {R"("no address")", R"("no address")"},
    {R"("")", R"("")"},         {R"("%s")", R"("%s")"}, {"52", R"("")"},
    {"true", R"("")"},          {"null", R"("")"},      {R"(["0x34"])", R"("")"},
};

struct DataRow {
    const char* json;
    const char* passed;
};
constexpr DataRow kData[] = {
    {R"(["0x10", 5, "0x20"])", R"(["0x10","0x20"])"},
    {R"(["", "not hexadecimal"])", R"(["","not hexadecimal"])"},
    {R"([1, 2.5, true, null, ["0x10"], {"a": "0x20"}])", "[]"},
    {"[]", "[]"},
    {R"("0x10")", "[]"},
    {R"({"0": "0x10"})", "[]"},
    {"5", "[]"},
    {"true", "[]"},
    {"null", "[]"},
};

/// An array in which every seventh element is a number, and what is left of it.
struct LongData {
    explicit LongData(int size)
    {
        for (int i = 0; i < size; ++i) {
            if (i % 7 == 6) {
                given.append(i);
                continue;
            }
            given.append(std::to_string(i));
            passed.append(std::to_string(i));
        }
    }

    JValue given = JValue::array();
    JValue passed = JValue::array();
};

// --- All of them

std::vector<Operation> operations()
{
    return {
        {"initAmplifierAttributes", [] { return amplifier().initAmplifierAttributes(); },
         attributeSteps(kQualityParams)},
        {"parseAmplifierXML",
         [] { amplifier().parseAmplifierXML(); },
         {{.before = {kLog.info(
               "parseAmplifierXML",
               "Calling registerQualityParams & parseAmpParams for snapshot-boot")},
           .call = std::string{"amplifier.registerQualityParams("} + kQualityParams + ")",
           .onFailure = {kLog.error("parseAmplifierXML",
                                    "Failed to register quality parameters in parseAmplifierXML")}},
          {.call = "amplifier.parseAmpParams()",
           .onFailure = {kLog.error("parseAmplifierXML", "Failed to call parseAmpParams")}}}},
        resetAmplifier(),
        {"setEqualizerStatus",
         [] { return amplifier().setEqualizerStatus("on"); },
         {setAmpEQ("on", true)}},
        setAmplifierMute(true),
        setAmplifierMute(false),
        {"setAmplifierResume",
         [] { return amplifier().setAmplifierResume(); },
         {{.before = {kLog.debug("setAmplifierResume", "Called setAmplifierResume function")},
           .call = "amplifier.setAmpResume()",
           .onFailure = {kLog.error("setAmplifierResume", "Amp Resume call is failed")}}}},
        {"setAmplifierSuspend",
         [] { return amplifier().setAmplifierSuspend(); },
         {{.before = {kLog.info("setAmplifierSuspend", "Called setAmplifierSuspend function")},
           .call = "amplifier.setAmpSuspend()",
           .onFailure = {kLog.error("setAmplifierSuspend",
                                    "failed to call setAmpSuspend function")}}}},
        setAmplifierState(R"({"ampType": "main", "status": "on"})", "main", "on"),
        {"getAmplifierState",
         [] {
             std::string type;
             std::vector<std::string> states;
             return amplifier().getAmplifierState(type, states);
         },
         {{.before = {kLog.debug("getAmplifierState", "Called getAmplifier function")},
           .call = "amplifier.getAmpState()",
           .onFailure = {kLog.error("getAmplifierState", "Failed to get amplifier States")}}}},
        setAmplifierSettings(
            R"({"tvSetupConfiguration": 1, "audioBalance": -5, "equalizerStatus": "on"})",
            {equalizerStatus("on", true), audioBalance(-5), changeAmpEQ()}),
        writeRegisters(registerRequest(), {}),
    };
}

class KepTvAmplifier : public AdapterTest
{
protected:
    KepTvAmplifier()
    {
        amplifier().initAmplifier();
        forget();
    }
};

} // namespace

TEST_F(KepTvAmplifier, ThereIsOneAdapter)
{
    ASSERT_NE(kepTVAmplifier::getInstance(), nullptr);
    EXPECT_EQ(kepTVAmplifier::getInstance(), kepTVAmplifier::getInstance());
}

TEST_F(KepTvAmplifier, InitialisingAlwaysSucceedsAndCallsNothing)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(amplifier().initAmplifier());
        EXPECT_THAT(logLines(), ElementsAre(kLog.info("initAmplifier",
                                                      "mPtrAmplifierInstance is Initialised")));
        EXPECT_THAT(middlewareCalls(), IsEmpty());
        EXPECT_FALSE(amplifier().mIsBootup); // the backend's to set
        forget();
    }
}

TEST_F(KepTvAmplifier, EachOperationCallsAndLogsAsItsTableSays)
{
    fillStore();
    for (const Operation& operation : operations())
        expectAllOutcomes(operation);
}

TEST_F(KepTvAmplifier, AtErrorLevelOnlyFailuresAreLogged)
{
    fillStore();
    for (const Operation& operation : operations())
        expectErrorsOnly(operation);
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

// --- Registers

TEST_F(KepTvAmplifier, ReadingRegistersCallsAndLogsAsItsTableSays)
{
    for (const JValue& request : {registerRequest(), registerRequestWithout("data")})
        expectTrace(
            request.stringify(), [&request] { amplifier().readI2cDataFromAmplifier(request); },
            {"amplifier.readI2cDataFromAmp(" + RegisterArguments{}.text(Register::Read) + ")"},
            {readCalled(request)});
}

TEST_F(KepTvAmplifier, ReadingRegistersAnswersTheMiddlewaresTextsInTheirOrder)
{
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()).stringify(), "[]");
    virtualtv::setI2cData({"0xFF", "0x01", "", "a\"b"});
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()).stringify(),
              R"(["0xFF","0x01","","a\"b"])");
    const LongData data{1000};
    std::vector<std::string> texts;
    for (const JValue& text : data.passed.elements())
        texts.push_back(text.asString());
    virtualtv::setI2cData(texts);
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()), data.passed);
}

TEST_F(KepTvAmplifier, AWriteThatLacksAKeyIsRefused)
{
    const LogLine refused =
        kLog.refusal("ERROR_LOG", "writeI2cDataToAmplifier",
                     "writeI2cDataToAmplifier: amplifierObject value not received");
    const auto expectRefusal = [&](const JValue& request) {
        expectTrace(request.stringify(),
                    [&request] { EXPECT_FALSE(amplifier().writeI2cDataToAmplifier(request)); }, {},
                    {refused});
    };
    for (const char* key : kWriteKeys)
        expectRefusal(registerRequestWithout(key));
    for (const JValue& request : payloadsWithoutKeys())
        expectRefusal(request);
    JValue array = JValue::array();
    array.append(registerRequest());
    expectRefusal(array);
}

TEST_F(KepTvAmplifier, AReadThatLacksAKeyAnswersAnEmptyArray)
{
    virtualtv::setI2cData({"0xFF"});
    const LogLine refused = kLog.error("readI2cDataFromAmplifier",
                                       "Missing info to read I2c data from audio amplifier");
    const auto expectRefusal = [&](const JValue& request) {
        expectTrace(request.stringify(),
                    [&request] {
                        EXPECT_EQ(amplifier().readI2cDataFromAmplifier(request), JValue::array());
                    },
                    {}, {refused});
    };
    for (const char* key : kWriteKeys)
        if (std::string{"data"} != key)
            expectRefusal(registerRequestWithout(key));
    for (const JValue& request : payloadsWithoutKeys())
        expectRefusal(request);
    JValue array = JValue::array();
    array.append(registerRequest());
    expectRefusal(array);
}

TEST_F(KepTvAmplifier, NumbersOfARequestKeepTheirLowEightBits)
{
    for (const ByteKey& key : kByteKeys) {
        for (const ByteRow& row : kBytes) {
            const JValue request = registerRequest(key.key, json(row.json));
            RegisterArguments arguments;
            arguments.*key.argument = row.byte;
            expectAllOutcomes(writeRegisters(request, arguments));
            expectTrace(row.json, readRegisters(request, arguments).act,
                        {readRegisters(request, arguments).steps[0].call}, {readCalled(request)});
        }
    }
}

TEST_F(KepTvAmplifier, TextsOfARequestArePassedOnAsTheyAre)
{
    for (const ByteKey& key : kTextKeys) {
        for (const TextRow& row : kTexts) {
            const JValue request = registerRequest(key.key, json(row.json));
            RegisterArguments arguments;
            arguments.*key.argument = row.text;
            expectAllOutcomes(writeRegisters(request, arguments));
            expectTrace(row.json, readRegisters(request, arguments).act,
                        {readRegisters(request, arguments).steps[0].call}, {readCalled(request)});
        }
    }
}

TEST_F(KepTvAmplifier, OfTheDataOnlyTextsAreWritten)
{
    for (const DataRow& row : kData) {
        RegisterArguments arguments;
        arguments.data = row.passed;
        expectAllOutcomes(writeRegisters(registerRequest("data", json(row.json)), arguments));
    }
}

TEST_F(KepTvAmplifier, DataOfEveryLengthIsWrittenInItsOrder)
{
    for (const int size : {0, 1, 5, 1000}) {
        const LongData data{size};
        RegisterArguments arguments;
        arguments.data = data.passed.stringify();
        expectAllOutcomes(writeRegisters(registerRequest("data", data.given), arguments));
    }
}
