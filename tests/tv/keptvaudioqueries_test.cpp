// SPDX-License-Identifier: Apache-2.0
// Queries of settings: what is answered from the store, what is asked of the middleware, and that
// an answer shares nothing with the store.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "television.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kQueries{"keptvaudioquality", ""};
constexpr FileLog kAmplifier{"keptvamplifier", "AMPLIFIER_MWL_ERROR"};
constexpr FileLog kGain{"keptvgain", "GAIN_MWL_ERROR"};

/// The backend's state, by name.
LogLine asked(const std::string& category, const std::string& request)
{
    return kQueries.info("getSettings",
                         "get settings for category " + category + ", settings:" + request);
}

const LogLine kNothingStored =
    kQueries.debug("getSettings", "settingsList is empty, Hence KEP returning jnull");
const LogLine kWholeList = kQueries.debug("getSettings", "Resquested for Complete Settings List");

LogLine oneOf(const std::string& category)
{
    return kQueries.debug("getSettingsObject",
                          "Resquested for category = " + category + " from Settings List");
}

LogLine found(const std::string& element)
{
    return kQueries.debug("getSettingsObject", "Requested Category StreamInfo = " + element);
}

/// One element of the whole list: the line names another function.
LogLine listed(const std::string& element)
{
    return kQueries.debug("printAudioVideoInfoTable", "StreamInfo  Inside =  " + element);
}

LogLine wholeAnswer(const std::string& answer)
{
    return kQueries.debug("getSettings", "currentSettings =  " + answer);
}

const LogLine kAmplifierAsked =
    kAmplifier.debug("getAmplifierState", "Called getAmplifier function");

const char* const kSync = R"({"category":"audioVideoSync","value":{"correctionValue":1}})";
const char* const kDimension = R"({"category":"dimension","value":{"a":{"b":[1]}}})";

class SettingsQuery : public TvBackendTest
{
protected:
    std::vector<JValue>& list() { return mBackend.mSettingsList; }

    void storeTwo()
    {
        ASSERT_EQ(mBackend.setSettings("audioVideoSync", json(R"({"correctionValue":1})")), kDone);
        ASSERT_EQ(mBackend.setSettings("dimension", json(R"({"a":{"b":[1]}})")), kDone);
    }

    void expectAnswer(const std::string& category, const JValue& request, const std::string& answer,
                      const Lines& lines, const Texts& calls = {})
    {
        forget();
        const JValue given = mBackend.getSettings(category, request);
        EXPECT_EQ(given.stringify(), answer) << category;
        EXPECT_TRUE(given.isValid()) << category;
        Lines all = {asked(category, request.stringify())};
        all.insert(all.end(), lines.begin(), lines.end());
        EXPECT_EQ(logLines(), all) << category;
        EXPECT_EQ(told(), calls) << category;
    }
};

// --- Gain

struct GainRow {
    const char* request;
    const char* type;
    const char* typeNumber;
    const char* output;
};

TEST_F(SettingsQuery, TheGainIsAskedForEachTime)
{
    // clang-format off
    constexpr GainRow rows[] = {
        {R"({"gainType":"input","soundOutput":"tv_speaker"})",  "input",  "0", "tv_speaker"},
        {R"({"gainType":"output","soundOutput":"headphone"})",  "output", "1", "headphone"},
        {R"({"soundOutput":"headphone","gainType":"x"})",       "x",      "2", "headphone"},
        {R"({"soundOutput":"headphone"})",                      "",       "2", "headphone"},
        {R"({"gainType":"input"})",                             "input",  "0", ""},
        {R"({"gainType":5,"soundOutput":true})",                "",       "2", ""},
        {R"({"gainType":null,"soundOutput":["tv_speaker"]})",   "",       "2", ""},
        {R"({"gainType":{"a":1},"soundOutput":{"a":1}})",       "",       "2", ""},
        {"{}",                                                  "",       "2", ""},
        {"[]",                                                  "",       "2", ""},
        {R"("input")",                                          "",       "2", ""},
        {"null",                                                "",       "2", ""},
    };
    // clang-format on
    for (const bool somethingStored : {false, true}) {
        if (somethingStored)
            storeTwo();
        for (const char* gain : {"-12", ""}) {
            virtualtv::setGainValue(gain);
            for (const GainRow& row : rows) {
                const std::string type = row.type;
                const std::string output = row.output;
                const std::string answer = R"({"soundOutput":")" + output + R"(","gainValue":")" +
                                           std::string{gain} + R"("})";
                Lines lines = {
                    kQueries.debug("getSettings", "Calling getGainAsInput with: type = " + type +
                                                      ", soundoutput = " + output),
                    kGain.info("getGainAsInput",
                               "Calling getGainAsInput of Gain middleware library : type =" + type +
                                   ", soundOutput =" + output),
                    kGain.debug("getGainAsInput",
                                "Calling getGainAsInput with - " + std::string{row.typeNumber}),
                    kGain.info("getGainAsInput",
                               "getGainAsInput returned gain value = " + std::string{gain}),
                    kQueries.debug("getSettings", "currentSettings = " + answer),
                };
                if (std::string{gain}.empty())
                    lines.insert(lines.begin() + 3,
                                 kGain.error("getGainAsInput", "Failed to get Gain Value"));
                expectAnswer("gainValue", json(row.request), answer, lines,
                             {"gain.getGainAsInput " + std::string{row.typeNumber} + R"( ")" +
                              output + R"(")"});
            }
        }
    }
}

// --- Amplifier

TEST_F(SettingsQuery, RegistersAreReadEvenWhileNothingIsStored)
{
    const std::string request =
        R"({"slaveAddress":"0x54","portNumber":3,"address":"0x10","numberOfByte":1,)"
        R"("sizeOfArray":2})";
    const auto answered = [](const std::string& answer) {
        return kQueries.info("getSettings", "Data from audio amplifier is " + answer);
    };
    const LogLine reading = kAmplifier.info(
        "readI2cDataFromAmplifier", "Called readI2cDataFromAmplifier function to read data from "
                                    "audio amplifier with amplifierObject " +
                                        request);
    const Texts calls = {R"(amplifier.readI2cDataFromAmp "0x54" 3 "0x10" 1 2)"};
    expectAnswer("readI2cDataFromAmplifier", json(request), "[]", {reading, answered("[]")}, calls);
    storeTwo();
    virtualtv::setI2cData({"0a", "ff"});
    expectAnswer("readI2cDataFromAmplifier", json(request), R"(["0a","ff"])",
                 {reading, answered(R"(["0a","ff"])")}, calls);
    const LogLine missing = kAmplifier.error("readI2cDataFromAmplifier",
                                             "Missing info to read I2c data from audio amplifier");
    for (const JValue& incomplete : payloadsWithoutKeys({R"({"slaveAddress":"0x54"})"}))
        expectAnswer("readI2cDataFromAmplifier", incomplete, "[]", {missing, answered("[]")});
}

TEST_F(SettingsQuery, TheAmplifierStateIsAskedOnlyOnceSomethingIsStored)
{
    virtualtv::setAmplifierState({"main", {"on", "muted"}});
    expectAnswer("getAmplifierState", json("{}"), "true", {kNothingStored});
    storeTwo();
    const auto reply = [](const std::string& answer) {
        return kQueries.debug("getSettingsObject", "Reply Back from getSettings = " + answer);
    };
    const std::string two = R"({"amplifierType":"main","amplifierStates":["on","muted"]})";
    expectAnswer("getAmplifierState", json("{}"), two, {kAmplifierAsked, reply(two)},
                 {"amplifier.getAmpState"});
    virtualtv::setAmplifierState({"", {}});
    const std::string none = R"({"amplifierType":"","amplifierStates":[]})";
    expectAnswer("getAmplifierState", JValue{}, none, {kAmplifierAsked, reply(none)},
                 {"amplifier.getAmpState"});
    injectMiddleware("amplifier.getAmpState", 7);
    expectAnswer(
        "getAmplifierState", json("{}"), "true",
        {kAmplifierAsked, kAmplifier.error("getAmplifierState", "Failed to get amplifier States")},
        {"amplifier.getAmpState -> 7"});
}

TEST_F(SettingsQuery, TheAmplifierStateHidesACategoryOfThatName)
{
    mBackend.storeSettings("getAmplifierState", json("{}"));
    EXPECT_EQ(mBackend.getSettings("getAmplifierState", json("{}")).stringify(),
              R"({"amplifierType":"virtual","amplifierStates":["on"]})");
}

TEST_F(SettingsQuery, TheAmplifierStateCanBeAskedDirectlyWhileNothingIsStored)
{
    EXPECT_EQ(mBackend.getSettingsObject("getAmplifierState").stringify(),
              R"({"amplifierType":"virtual","amplifierStates":["on"]})");
    EXPECT_THAT(told(), ElementsAre("amplifier.getAmpState"));
}

// --- Stored settings

TEST_F(SettingsQuery, AnEmptyStoreAnswersTrue)
{
    for (const char* category : {"audioVideoSync", "", "unknown", "gainvalue", "getAmplifierState"})
        for (const JValue& request : payloadsWithoutKeys())
            expectAnswer(category, request, "true", {kNothingStored});
    EXPECT_TRUE(mBackend.getSettings("audioVideoSync", json("{}")).isBool());
}

TEST_F(SettingsQuery, AStoredCategoryIsAnsweredInAnArray)
{
    storeTwo();
    const std::string sync = kSync;
    const std::string dimension = kDimension;
    for (const JValue& request : payloadsWithoutKeys({R"({"category":"x"})"})) {
        expectAnswer("audioVideoSync", request, "[" + sync + "]",
                     {oneOf("audioVideoSync"), found(sync)});
        expectAnswer("dimension", request, "[" + dimension + "]",
                     {oneOf("dimension"), found(dimension)});
        for (const char* category : {"option", "Dimension", "dimensio", "dimension ", "powerState"})
            expectAnswer(category, request, "[]", {oneOf(category)});
    }
}

TEST_F(SettingsQuery, AnEmptyCategoryAnswersTheWholeListInOrder)
{
    storeTwo();
    const std::string sync = kSync;
    const std::string dimension = kDimension;
    expectAnswer("", json("{}"), "[" + sync + "," + dimension + "]",
                 {kWholeList, listed(sync), listed(dimension),
                  wholeAnswer("[" + sync + "," + dimension + "]")});
    mBackend.setSettings("audioVideoSync", json(R"({"correctionValue":1})"));
    expectAnswer("", JValue{}, "[" + dimension + "," + sync + "]",
                 {kWholeList, listed(dimension), listed(sync),
                  wholeAnswer("[" + dimension + "," + sync + "]")});
}

TEST_F(SettingsQuery, AnElementWithoutACategoryIsNotInTheWholeList)
{
    const std::string sync = kSync;
    list().push_back(json(R"({"value":1})"));
    expectAnswer("", json("{}"), "[]", {kWholeList, wholeAnswer("[]")});
    list().push_back(json(sync));
    expectAnswer("", json("{}"), "[" + sync + "]",
                 {kWholeList, listed(sync), wholeAnswer("[" + sync + "]")});
    list().push_back(json(R"({"category":5})")); // the key alone counts here
    const std::string both = "[" + sync + R"(,{"category":5}])";
    expectAnswer("", json("{}"), both,
                 {kWholeList, listed(sync), listed(R"({"category":5})"), wholeAnswer(both)});
}

TEST_F(SettingsQuery, AnElementWhoseCategoryIsNoTextIsNotFound)
{
    for (const char* element :
         {R"({"value":1})", R"({"category":5})", R"({"category":null})", R"({"category":["x"]})",
          R"({"category":{}})", R"({"category":true})"})
        list().push_back(json(element));
    for (const char* category : {"5", "null", "true", "x"})
        expectAnswer(category, json("{}"), "[]", {oneOf(category)});
    EXPECT_EQ(mBackend.getSettingsObject("").stringify(), "[]");
    list().push_back(json(R"({"category":"","value":1})"));
    EXPECT_EQ(mBackend.getSettingsObject("").stringify(), R"([{"category":"","value":1}])");
}

TEST_F(SettingsQuery, OnlyTheFirstOfTwoEqualCategoriesIsAnswered)
{
    list().push_back(json(R"({"category":"a","value":1})"));
    list().push_back(json(R"({"category":"a","value":2})"));
    expectAnswer("a", json("{}"), R"([{"category":"a","value":1}])",
                 {oneOf("a"), found(R"({"category":"a","value":1})")});
}

TEST_F(SettingsQuery, AnAnswerSharesNothingWithTheStore)
{
    storeTwo();
    const std::string whole = "[" + std::string{kSync} + "," + kDimension + "]";
    const std::vector<std::pair<std::string, int>> rows = {{"dimension", 0}, {"", 1}};
    for (const auto& [category, place] : rows) {
        JValue answer = mBackend.getSettings(category, json("{}"));
        EXPECT_TRUE(answer[place]["value"]["a"]["b"].append(2));
        EXPECT_TRUE(answer[place].put("category", "changed"));
        EXPECT_TRUE(answer.append(5));
        EXPECT_EQ(mBackend.getSettings("", json("{}")).stringify(), whole) << category;
    }
    JValue direct = mBackend.getSettingsObject("dimension");
    EXPECT_TRUE(direct[0]["value"].remove("a"));
    EXPECT_EQ(mBackend.getSettings("", json("{}")).stringify(), whole);
}

TEST_F(SettingsQuery, AQueryLeavesItsRequestAndTheStoreAsTheyWere)
{
    storeTwo();
    const JValue request = json(R"({"gainType":"input","returnValue":true})");
    for (const char* category :
         {"gainValue", "readI2cDataFromAmplifier", "getAmplifierState", "dimension", ""}) {
        mBackend.getSettings(category, request);
        EXPECT_EQ(request.stringify(), R"({"gainType":"input","returnValue":true})") << category;
        EXPECT_EQ(list().size(), std::size_t{2}) << category;
    }
}

TEST_F(SettingsQuery, NothingIsLoggedBelowTheAdmittedLevel)
{
    storeTwo();
    admit(kLogError);
    forget();
    for (const char* category : {"gainValue", "getAmplifierState", "dimension", "", "unknown"})
        mBackend.getSettings(category, json("{}"));
    EXPECT_THAT(logLines(), IsEmpty());
}

} // namespace
