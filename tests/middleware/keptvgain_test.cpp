// SPDX-License-Identifier: Apache-2.0
#include "keptvgain.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "faults.h"
#include "television.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kLog{"keptvgain", "GAIN_MWL_ERROR"};

kepTVGain& gain()
{
    return *kepTVGain::getInstance();
}

LogLine given(const std::string& settings)
{
    return kLog.debug("setGainSettings", "settingsKeyObject " + settings);
}

class KepTvGain : public AdapterTest
{
protected:
    KepTvGain()
    {
        gain().initGain();
        forget();
    }

    static void store(const std::string& volume)
    {
        kepTvParser::getInstance()->mQualityParamsMap["audioDescriptionVolume"] = volume;
    }

    /// Audio description cannot be switched on then, and nothing behind it is done.
    template <typename Exception>
    void expectStoredVolumeThrows(const std::string& stored)
    {
        const std::string settings =
            R"({"audioDescription":"on","audioDescriptionVolume":5,"autoVolume":"on"})";
        store(stored);
        expectTrace(stored,
                    [&] { EXPECT_THROW(gain().setGainSettings(json(settings)), Exception); }, {},
                    {given(settings)});
    }
};

// --- Operations

Operation setOutputVolume(int volume, int passed)
{
    const std::string text = "SoundOutput tv_speaker volume: " + std::to_string(volume);
    return {"setOutputVolume",
            [volume] { return gain().setOutputVolume("tv_speaker", volume); },
            {{.before = {kLog.info("setOutputVolume", text)},
              .call = "gain.setOutputVolume(\"tv_speaker\", " + std::to_string(passed) + ")",
              .onFailure = {kLog.error("setOutputVolume",
                                       "Failed to set output volume                   " + text)}}}};
}

std::vector<Operation> operations()
{
    const std::string quality = kQualityParams;
    const std::string pipeline = kAvParams;
    const std::string recording = kAencAvParams;
    const Step setInputGain = {
        .before = {kLog.info("setInputGain", "calling setGainAsInput")},
        .call = "gain.setGainAsInput()",
        .onFailure = {kLog.error("setInputGain", "Failed to set input gain")},
    };
    const Step setAencGain = {
        .before = {kLog.info("setAencGain", "calling setAencVolume")},
        .call = "gain.setAencVolume()",
        .onFailure = {kLog.error("setAencGain", "Failed to set AENC gain")},
    };
    return {
        {"initGainAttributes",
         [] { return gain().initGainAttributes(); },
         {{.before = {kLog.info("initGainAttributes", "Parsing Gain values from xml")},
           .call = "gain.registerQualityParams(" + quality + ")",
           .onFailure = {kLog.error("initGainAttributes",
                                    "Failed to register quality parameters")}},
          {.call = "gain.setGainInitialize()",
           .onFailure = {kLog.error("initGainAttributes",
                                    "Failed to initilize gain middleware API")}}}},
        {"parseGainXML",
         [] { gain().parseGainXML(); },
         {{.before = {kLog.info(
               "parseGainXML",
               "Calling registerQualityParams & parseGainParams for snapshot-boot")},
           .call = "gain.registerQualityParams(" + quality + ")",
           .onFailure = {kLog.error("parseGainXML",
                                    "Failed to register quality parameters in parseGainXML")}},
          {.call = "gain.parseGainParams()",
           .onFailure = {kLog.error("parseGainXML", "Failed to call parseGainParams")}}}},
        {"resetGainAttributes",
         [] { gain().resetGainAttributes(); },
         {{.before = {kLog.info("resetGainAttributes",
                                "Calling setVolumeInit of Gain middleware library")},
           .call = "gain.setVolumeInit()",
           .onFailure = {kLog.error("resetGainAttributes", "Failed to call setVolumeInit")}}}},
        {"setInputVolume",
         [] { return gain().setInputVolume("AMIXER5", "SUB", 40); },
         {{.before = {kLog.info("setInputVolume", "Updating input volume 40 to inputResource 7")},
           .call = "gain.setInputVolume(7, 40)"}}}, // a failure is not logged
        setOutputVolume(40, 40),
        {"setInputGain", [] { return gain().setInputGain(); }, {setInputGain}},
        {"registerAudioVideoInfo",
         [] { return gain().registerAudioVideoInfo(); },
         {{.before = {kLog.info("registerAudioVideoInfo", "Calling registerAvParams")},
           .call = "gain.registerAvParams(" + pipeline + ")",
           .onFailure = {kLog.error("registerAudioVideoInfo",
                                    "Failed to register audio video parameters")}},
          setInputGain},
         AfterFailure::Stops},
        {"setAencGain", [] { return gain().setAencGain(); }, {setAencGain}},
        {"registerAudioVideoInfoForEncoder",
         [] { return gain().registerAudioVideoInfoForEncoder(); },
         {{.before = {kLog.info("registerAudioVideoInfoForEncoder",
                                "Calling registerAencAvParams For Encoder")},
           .call = "gain.registerAencAvParams(" + recording + ")",
           .onFailure = {kLog.error("registerAudioVideoInfoForEncoder",
                                    "Failed to register audio video parameters")}},
          setAencGain},
         AfterFailure::Stops},
    };
}

// --- Resources and types

struct ResourceRow {
    const char* resource;
    int behindMain; // and behind "SUB"
    int behindAlsa;
};
constexpr ResourceRow kResources[] = {
    // resource  MAIN, SUB  ALSA
    {"ADEC", 0, -1},    {"ADEC0", 0, -1},    {"ADEC1", 1, -1},     {"ADEC2", -1, -1},
    {"AMIXER", -1, 2},  {"AMIXER0", 2, -1},  {"AMIXER1", 3, -1},   {"AMIXER2", 4, -1},
    {"AMIXER3", 5, -1}, {"AMIXER4", 6, -1},  {"AMIXER5", 7, -1},   {"AMIXER6", 8, -1},
    {"AMIXER7", 9, -1}, {"AMIXER8", -1, -1}, {"AMIXER10", -1, -1}, {"adec0", -1, -1},
    {"amixer", -1, -1}, {" ADEC0", -1, -1},  {"AENC", -1, -1},     {"MAIN", -1, -1},
    {"", -1, -1},
};
constexpr const char* kOtherSinks[] = {"", "main", "Main", "SUB ", "MAINSUB", "alsa", "ADEC0"};

struct TypeRow {
    const char* name;
    int type;
};
constexpr TypeRow kTypes[] = {
    {"input", 0},  {"output", 1}, {"Input", 2}, {"Output", 2},
    {"OUTPUT", 2}, {"input ", 2}, {"", 2},      {"other", 2},
};

struct VolumeRow {
    int volume;
    int passed; // its low 8 bits
};
constexpr VolumeRow kVolumes[] = {
    {0, 0}, {255, 255}, {256, 0}, {257, 1}, {300, 44}, {-1, 255}, {-256, 0}, {2147483647, 255},
};

// --- Audio description

constexpr const char* kNotStored = "audio description volume key not present in map";

Step fromStore(const std::string& volume)
{
    return {.before = {kLog.info("setGainSettings",
                                 "setting audioDescription volume to gain middleware library is " +
                                     volume)},
            .call = "gain.setAudioDescriptionVolume(" + volume + ")",
            .onFailure = {
                kLog.error("setGainSettings", "Failed to set audioDescriptionVolume " + volume)}};
}

Step fromSettings(const std::string& volume)
{
    return {.before = {kLog.debug("setGainSettings", "Set audioDescriptionVolume as " + volume)},
            .call = "gain.setAudioDescriptionVolume(" + volume + ")",
            .onFailure = {
                kLog.error("setGainSettings", "Failed to set audioDescriptionVolume " + volume)}};
}

Step autoVolume()
{
    return {.before = {kLog.debug("setGainSettings",
                                  "Calling setGainAsInput when autoVolume key changes"),
                       kLog.info("setInputGain", "calling setGainAsInput")},
            .call = "gain.setGainAsInput()",
            .onSuccess = {kLog.info("setGainSettings",
                                    "Call setGainAsInput is success when autoVolume key changes")},
            .onFailure = {kLog.error("setInputGain", "Failed to set input gain")}};
}

/// The settings are logged first, whatever follows.
Operation setGainSettings(const std::string& settings, std::vector<Step> steps)
{
    steps.front().before.insert(steps.front().before.begin(), given(settings));
    return {"setGainSettings", [settings] { gain().setGainSettings(json(settings)); }, steps};
}

struct StoredVolume {
    const char* stored;
    const char* volume;
};
constexpr StoredVolume kStoredVolumes[] = {
    {"30", "30"},
    {"0", "0"},
    {"-3", "-3"},
    {"+5", "5"},
    {"12abc", "12"},
    {" 7", "7"},
    {" \t\n7 8", "7"},
    {"010", "10"},
    {"0x10", "0"},
    {"3.9", "3"},
    {"2147483647", "2147483647"},
    {"-2147483648", "-2147483648"},
};
constexpr const char* kNoDigits[] = {"abc", "x12", "-", " ", "null", "\"30\""};
constexpr const char* kBeyondInt[] = {"99999999999", "2147483648", "-2147483649",
                                      "99999999999999999999999"};

} // namespace

TEST_F(KepTvGain, ThereIsOneAdapter)
{
    expectOneInstance<kepTVGain>();
}

TEST_F(KepTvGain, InitialisingAlwaysSucceedsAndCallsNothing)
{
    expectInitialising([] { return gain().initGain(); },
                       kLog.info("initGain", "mPtrGainInstance is Initialised"));
}

TEST_F(KepTvGain, EachOperationCallsAndLogsAsItsTableSays)
{
    expectAllOutcomes(operations());
}

TEST_F(KepTvGain, AtErrorLevelOnlyFailuresAreLogged)
{
    expectErrorsOnly(operations());
    expectErrorsOnly(setGainSettings(R"({"audioDescriptionVolume":30,"autoVolume":"on"})",
                                     {fromSettings("30"), autoVolume()}));
    admit(kLogError);
    expectTrace("getGainAsInput", [] { gain().getGainAsInput("input", "tv_speaker"); },
                {R"(gain.getGainAsInput(0, "tv_speaker"))"}, {});
}

TEST_F(KepTvGain, AnEmptyStoreIsRegisteredAsEmptyMaps)
{
    gain().parseGainXML();
    gain().registerAudioVideoInfo();
    gain().registerAudioVideoInfoForEncoder();
    EXPECT_THAT(middlewareCalls(),
                ElementsAre("gain.registerQualityParams({})", "gain.parseGainParams()",
                            "gain.registerAvParams({})", "gain.setGainAsInput()",
                            "gain.registerAencAvParams({})", "gain.setAencVolume()"));
}

TEST_F(KepTvGain, ResourceAndSinkTogetherChooseTheNumber)
{
    for (const ResourceRow& row : kResources) {
        EXPECT_EQ(gain().getResourceId(row.resource, "MAIN"), row.behindMain) << row.resource;
        EXPECT_EQ(gain().getResourceId(row.resource, "SUB"), row.behindMain) << row.resource;
        EXPECT_EQ(gain().getResourceId(row.resource, "ALSA"), row.behindAlsa) << row.resource;
        for (const char* sink : kOtherSinks)
            EXPECT_EQ(gain().getResourceId(row.resource, sink), -1)
                << row.resource << " / " << sink;
    }
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(middlewareCalls(), IsEmpty());
}

TEST_F(KepTvGain, AnInputVolumeGoesToTheNumberOfItsResourceEvenAnUnknownOne)
{
    for (const ResourceRow& row : kResources) {
        const std::string number = std::to_string(row.behindMain);
        expectTrace(
            row.resource, [&row] { EXPECT_TRUE(gain().setInputVolume(row.resource, "MAIN", 255)); },
            {"gain.setInputVolume(" + number + ", 255)"},
            {kLog.info("setInputVolume", "Updating input volume 255 to inputResource " + number)});
    }
    forget();
    EXPECT_TRUE(gain().setInputVolume("AMIXER", "ALSA", 0));
    EXPECT_THAT(middlewareCalls(), ElementsAre("gain.setInputVolume(2, 0)"));
}

TEST_F(KepTvGain, AnOutputVolumePassesItsLowEightBitsAndIsLoggedWhole)
{
    for (const VolumeRow& row : kVolumes)
        expectAllOutcomes(setOutputVolume(row.volume, row.passed));
}

TEST_F(KepTvGain, AnOutputsNameIsPassedOnAsItIs)
{
    for (const std::string name : {"", "no such output", "%s%n"}) {
        const std::string text = "SoundOutput " + name + " volume: 1";
        expectTrace(name, [&name] { EXPECT_TRUE(gain().setOutputVolume(name, 1)); },
                    {"gain.setOutputVolume(\"" + name + "\", 1)"},
                    {kLog.info("setOutputVolume", text)});
    }
}

// --- getGainAsInput

TEST_F(KepTvGain, AGainIsAskedForByTheNumberOfItsType)
{
    virtualtv::setGainValue("-3.5");
    for (const TypeRow& row : kTypes) {
        forget();
        EXPECT_EQ(gain().getGainAsInput(row.name, "external_arc"), "-3.5") << row.name;
        const std::string type = std::to_string(row.type);
        EXPECT_THAT(middlewareCalls(),
                    ElementsAre("gain.getGainAsInput(" + type + R"(, "external_arc"))"));
        EXPECT_THAT(
            logLines(),
            ElementsAre(kLog.info("getGainAsInput",
                                  "Calling getGainAsInput of Gain middleware library : type =" +
                                      std::string{row.name} + ", soundOutput =external_arc"),
                        kLog.debug("getGainAsInput", "Calling getGainAsInput with - " + type),
                        kLog.info("getGainAsInput", "getGainAsInput returned gain value = -3.5")));
    }
}

TEST_F(KepTvGain, NoGainIsAnErrorAndIsStillAnswered)
{
    virtualtv::setGainValue("");
    EXPECT_EQ(gain().getGainAsInput("output", ""), "");
    EXPECT_THAT(middlewareCalls(), ElementsAre(R"(gain.getGainAsInput(1, ""))"));
    EXPECT_THAT(
        logLines(),
        ElementsAre(
            kLog.info(
                "getGainAsInput",
                "Calling getGainAsInput of Gain middleware library : type =output, soundOutput ="),
            kLog.debug("getGainAsInput", "Calling getGainAsInput with - 1"),
            kLog.error("getGainAsInput", "Failed to get Gain Value"),
            kLog.info("getGainAsInput", "getGainAsInput returned gain value = ")));
}

// --- setGainSettings

TEST_F(KepTvGain, SwitchingAudioDescriptionOnAppliesTheStoredVolume)
{
    for (const StoredVolume& row : kStoredVolumes) {
        store(row.stored);
        expectAllOutcomes(setGainSettings(R"({"audioDescription":"on"})", {fromStore(row.volume)}));
    }
}

TEST_F(KepTvGain, SwitchingAudioDescriptionOnWithoutAStoredVolumeIsAnErrorAndCallsNothing)
{
    const std::string settings = R"({"audioDescription":"on"})";
    const auto act = [&settings] { gain().setGainSettings(json(settings)); };
    const std::vector<LogLine> lines = {given(settings), kLog.error("setGainSettings", kNotStored)};
    fillStore(); // without a volume
    expectTrace("missing", act, {}, lines);
    store("");
    expectTrace("empty", act, {}, lines);
    // Only the quality parameters count.
    kepTvParser::getInstance()->mQualityParamsMap.clear();
    kepTvParser::getInstance()->mAvParamsMap["audioDescriptionVolume"] = "30";
    kepTvParser::getInstance()->mAencAvParamsMap["audioDescriptionVolume"] = "30";
    expectTrace("stored elsewhere", act, {}, lines);
}

TEST_F(KepTvGain, AStoredVolumeWithoutDigitsThrows)
{
    for (const char* stored : kNoDigits)
        expectStoredVolumeThrows<std::invalid_argument>(stored);
}

TEST_F(KepTvGain, AStoredVolumeBeyondIntThrows)
{
    for (const char* stored : kBeyondInt)
        expectStoredVolumeThrows<std::out_of_range>(stored);
}

TEST_F(KepTvGain, EveryOtherValueOfAudioDescriptionDoesNothing)
{
    store("30");
    for (const char* value : {R"("off")", R"("ON")", R"("On")", R"("on ")", R"("")", "true", "1",
                              "null", R"(["on"])", R"({"on":"on"})"}) {
        const std::string settings = member("audioDescription", value);
        expectTrace(value, [&settings] { gain().setGainSettings(json(settings)); }, {},
                    {given(settings)});
    }
    // The stored volume is not touched by a payload that names none, either.
    for (const JValue& payload : payloadsWithoutKeys())
        expectTrace(payload.stringify(), [&payload] { gain().setGainSettings(payload); }, {},
                    {given(payload.stringify())});
    const std::string array = R"(["audioDescription","on","autoVolume","audioDescriptionVolume"])";
    expectTrace(array, [&array] { gain().setGainSettings(json(array)); }, {}, {given(array)});
}

TEST_F(KepTvGain, AnAudioDescriptionVolumeIsPassedOnAsAnInteger)
{
    store("30"); // not looked at
    for (const NumberConversion& row : kNumberConversions) {
        const JValue settings = json(member("audioDescriptionVolume", row.json));
        expectAllOutcomes(
            setGainSettings(settings.stringify(), {fromSettings(std::to_string(row.number))}));
    }
}

TEST_F(KepTvGain, AutoVolumeAppliesTheInputGainWhateverItsValue)
{
    for (const char* value : {R"("on")", R"("off")", R"("")", "false", "0", "null", "[]", "{}"})
        expectAllOutcomes(setGainSettings(member("autoVolume", value), {autoVolume()}));
}

TEST_F(KepTvGain, SettingsTogetherAreHandledInAFixedOrder)
{
    store("30");
    const std::string settings =
        R"({"autoVolume":"on","audioDescriptionVolume":5,"audioDescription":"on","soundMode":"x"})";
    expectAllOutcomes(
        setGainSettings(settings, {fromStore("30"), fromSettings("5"), autoVolume()}));
    // A volume that goes with the switch is not yet the stored one.
    store("");
    expectTrace("nothing stored", [&settings] { gain().setGainSettings(json(settings)); },
                {"gain.setAudioDescriptionVolume(5)", "gain.setGainAsInput()"},
                {given(settings), kLog.error("setGainSettings", kNotStored),
                 kLog.debug("setGainSettings", "Set audioDescriptionVolume as 5"),
                 autoVolume().before[0], autoVolume().before[1], autoVolume().onSuccess[0]});
}

TEST_F(KepTvGain, AFailureOfTheStoredVolumeDoesNotStopTheGivenOne)
{
    store("30");
    virtualtv::inject(
        {virtualtv::FaultPoint::Middleware, "gain.setAudioDescriptionVolume", "", kRefused, 1U});
    const std::string settings = R"({"audioDescription":"on","audioDescriptionVolume":5})";
    expectTrace(settings, [&settings] { gain().setGainSettings(json(settings)); },
                {"gain.setAudioDescriptionVolume(30) -> 7", "gain.setAudioDescriptionVolume(5)"},
                {given(settings), fromStore("30").before[0], fromStore("30").onFailure[0],
                 fromSettings("5").before[0]});
}
