// SPDX-License-Identifier: Apache-2.0
// What the tests of the amplifier adapter share: each operation with all that it calls and logs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adaptertest.h"
#include "keptvamplifier.h"

inline constexpr FileLog kLog{"keptvamplifier", "AMPLIFIER_MWL_ERROR"};

inline kepTVAmplifier& amplifier()
{
    return *kepTVAmplifier::getInstance();
}

// --- Start-up and chip type

inline constexpr const char* kChipType = R"({"tv.model.ampChipType": "chip"})";
inline constexpr const char* kParamsWithChip =
    R"({"B":"2","a":"quality","tv.model.ampChipType":"chip"})";

inline Step registering(const std::string& function, const std::string& params)
{
    return {.call = "amplifier.registerQualityParams(" + params + ")",
            .onFailure = {kLog.error(function, "Failed to register quality parameters")}};
}

inline Step initialising(const std::string& function)
{
    return {.call = "amplifier.setAmplifierInit()",
            .onFailure = {kLog.error(function, "Failed to initilize amplifier Middle ware")}};
}

inline std::vector<Step> attributeSteps(const std::string& params)
{
    Step first = registering("initAmplifierAttributes", params);
    first.before = {kLog.info("initAmplifierAttributes", "Parsing amplifier values from xml")};
    return {first, initialising("initAmplifierAttributes")};
}

inline Operation resetAmplifier()
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
inline Action chipTypeArrives(bool first)
{
    return [first] {
        amplifier().mIsBootup = first;
        const bool done = amplifier().updateAmplifierType(json(kChipType));
        EXPECT_FALSE(amplifier().mIsBootup);
        return done;
    };
}

inline Step firstRegistering()
{
    Step step = registering("updateAmplifierType", kParamsWithChip);
    step.before = {kLog.info("updateAmplifierType",
                             "Amplifier chip type is received during bootup to play powerOnSound")};
    return step;
}

inline Operation firstChipTypeBeforeReset()
{
    Step step = firstRegistering();
    step.onSuccess = {
        kLog.error("updateAmplifierType", "Amp reset is not completed, so skip Amplifier Init")};
    return {"first, before the reset", chipTypeArrives(/*first=*/true), {step}};
}

inline Operation firstChipTypeAfterReset()
{
    return {"first, after the reset",
            chipTypeArrives(/*first=*/true),
            {firstRegistering(), initialising("updateAmplifierType")},
            AfterFailure::Stops};
}

inline Operation laterChipType()
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
inline constexpr ChipTypeRow kChipTypes[] = {
    {R"("chip")", "chip"}, {R"("other chip")", "other chip"},
    {R"("")", ""},         {"5", ""},
    {"true", ""},          {"null", ""},
    {R"(["chip"])", ""},
};

// --- Settings

inline Step setAmpEQ(const std::string& status, bool on)
{
    return {.before = {kLog.info("setEqualizerStatus",
                                 "Setting Amplifier EQ equalizerStatus " + status)},
            .call = std::string{"amplifier.setAmpEQ("} + (on ? "true" : "false") + ")",
            .onFailure = {kLog.error("setEqualizerStatus",
                                     "Failed to set amplifier equalizer as " + status)}};
}

/// The same by way of the settings.
inline Step equalizerStatus(const std::string& status, bool on)
{
    Step step = setAmpEQ(status, on);
    step.onSuccess = {
        kLog.debug("setAmplifierSettings",
                   "set equalizerStatus for amplifier middleware successfully as " + status)};
    return step;
}

inline Step audioBalance(int balance)
{
    const std::string number = std::to_string(balance);
    return {
        .call = "amplifier.setAmpBalance(" + number + ")",
        .onSuccess = {kLog.info("setAmplifierSettings", "set Balance successfully as " + number)},
        .onFailure = {
            kLog.error("setAmplifierSettings",
                       "Failed to set balance in amplifier middle ware library as " + number)}};
}

inline Step changeAmpEQ()
{
    return {
        .call = "amplifier.changeAmpEQ()",
        .onSuccess = {kLog.info("setAmplifierSettings", "change amplifier equalizer")},
        .onFailure = {kLog.error("setAmplifierSettings", "Failed to change amplifier equalizer")}};
}

inline Operation setAmplifierSettings(const std::string& payload, std::vector<Step> steps)
{
    return {"setAmplifierSettings", [payload] { amplifier().setAmplifierSettings(json(payload)); },
            std::move(steps)};
}

inline Operation setAmplifierMute(bool mute)
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
inline constexpr StatusRow kStatuses[] = {
    {R"("on")", "on", true},    {R"("On")", "On", false},     {R"("ON")", "ON", false},
    {R"("on ")", "on ", false}, {R"("off")", "off", false},   {R"("")", "", false},
    {R"("%s")", "%s", false},   {R"("true")", "true", false}, {"true", "", false},
    {"1", "", false},           {"null", "", false},          {R"(["on"])", "", false},
};

// --- State

inline const LogLine kStateCalled = kLog.debug("setAmplifierState", "Called setAmplifier function");

inline Operation setAmplifierState(const std::string& payload, const std::string& type,
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
inline constexpr StateRow kStates[] = {
    {R"({"ampType": "main", "status": "on"})", "main", "on"},
    {R"({"status": "OFF", "other": 1, "ampType": "woofer"})", "woofer", "OFF"},
    {R"({"ampType": "", "status": "%s"})", "", "%s"},
    {R"({"ampType": 1, "status": true})", "", ""},
    {R"({"ampType": null, "status": null})", "", ""},
    {R"({"ampType": ["main"], "status": {"status": "on"}})", "", ""},
};

// --- Registers

enum class Register { Write, Read };

inline constexpr const char* kWriteKeys[] = {"slaveAddress", "portNumber",  "address",
                                             "numberOfByte", "sizeOfArray", "data"};

/// A request with everything that a write needs.
inline JValue registerRequest()
{
    return json(R"({"slaveAddress": "0x2A", "portNumber": 1, "address": "0x0F", "numberOfByte": 2,
                    "sizeOfArray": 3, "data": ["0x10", "0x20"]})");
}

inline JValue registerRequest(const std::string& key, const JValue& value)
{
    JValue request = registerRequest();
    request.put(key, value);
    return request;
}

inline JValue registerRequestWithout(const std::string& key)
{
    JValue request = registerRequest();
    request.remove(key);
    return request;
}

/// Whatever is no object with keys.
inline std::vector<JValue> unusableRequests()
{
    std::vector<JValue> requests = payloadsWithoutKeys();
    JValue array = JValue::array();
    array.append(registerRequest());
    requests.push_back(array);
    return requests;
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

inline LogLine writeCalled(const JValue& request)
{
    return kLog.info("writeI2cDataToAmplifier",
                     "Called writeI2cDataToAmplifier function with amplifierObject " +
                         request.stringify());
}

inline LogLine readCalled(const JValue& request)
{
    return kLog.info(
        "readI2cDataFromAmplifier",
        "Called readI2cDataFromAmplifier function to read data from audio amplifier with amplifierObject " +
            request.stringify());
}

inline Operation writeRegisters(const JValue& request, const RegisterArguments& arguments)
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
inline Operation readRegisters(const JValue& request, const RegisterArguments& arguments)
{
    return {"readI2cDataFromAmplifier",
            [request] { return amplifier().readI2cDataFromAmplifier(request).isArray(); },
            {{.before = {readCalled(request)},
              .call = "amplifier.readI2cDataFromAmp(" + arguments.text(Register::Read) + ")"}}};
}

struct RequestKey {
    const char* key;
    std::string RegisterArguments::*argument;
};
inline constexpr RequestKey kByteKeys[] = {
    {"portNumber", &RegisterArguments::portNumber},
    {"numberOfByte", &RegisterArguments::numberOfByte},
    {"sizeOfArray", &RegisterArguments::sizeOfArray},
};
inline constexpr RequestKey kTextKeys[] = {
    {"slaveAddress", &RegisterArguments::slaveAddress},
    {"address", &RegisterArguments::address},
};

/// A value of a request, and what the middleware is told for it, both as JSON.
struct ConversionRow {
    const char* json;
    const char* passed;
};
inline constexpr ConversionRow kBytes[] = {
    {"0", "0"},           {"255", "255"},   {"256", "0"},           {"257", "1"},
    {"300", "44"},        {"-1", "255"},    {"-256", "0"},          {"3.7", "3"},
    {"-3.7", "253"},      {"1.9e2", "190"}, {"99999999999", "255"}, {"-99999999999", "0"},
    {R"("7")", "0"},      {"true", "0"},    {"null", "0"},          {"[7]", "0"},
    {R"({"a": 7})", "0"},
};

inline constexpr ConversionRow kTexts[] = {
    {R"("0x34")", R"("0x34")"}, {R"("52")", R"("52")"}, {R"("no address")", R"("no address")"},
    {R"("")", R"("")"},         {R"("%s")", R"("%s")"}, {"52", R"("")"},
    {"true", R"("")"},          {"null", R"("")"},      {R"(["0x34"])", R"("")"},
};

inline constexpr ConversionRow kData[] = {
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

inline std::vector<Operation> operations()
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

    /// Both register operations for each value of one key.
    template <std::size_t Size>
    void expectWritesAndReads(const RequestKey& key, const ConversionRow (&rows)[Size])
    {
        for (const ConversionRow& row : rows) {
            const JValue request = registerRequest(key.key, json(row.json));
            RegisterArguments arguments;
            arguments.*key.argument = row.passed;
            expectAllOutcomes(writeRegisters(request, arguments));
            const Operation read = readRegisters(request, arguments);
            expectTrace(row.json, read.act, {read.steps[0].call}, {readCalled(request)});
        }
    }
};
