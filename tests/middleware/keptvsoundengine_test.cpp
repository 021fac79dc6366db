// SPDX-License-Identifier: Apache-2.0
#include "keptvsoundengine.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kLog{"keptvsoundengine", "SOUND_ENGINE_MWL_ERROR"};

kepTVSoundEngine& engine()
{
    return *kepTVSoundEngine::getInstance();
}

std::string call(const std::string& operation, const std::string& arguments)
{
    return "soundengine." + operation + "(" + arguments + ")";
}

std::string asJson(bool on)
{
    return on ? "true" : "false";
}

// --- Single values

Step singleValue(const std::string& function, const std::string& entry,
                 const std::string& middlewareCall, const std::string& failure)
{
    return {.before = {kLog.info(function, entry)},
            .call = middlewareCall,
            .onFailure = {kLog.error(function, failure)}};
}

Operation setSoundOutputVolume(int volume)
{
    const std::string number = std::to_string(volume);
    return {"setSoundOutputVolume",
            [volume] { return engine().setSoundOutputVolume(volume); },
            {singleValue("setSoundOutputVolume", "Setting OSD volume " + number,
                         call("setOSDVolume", number),
                         "Failed to set OSD volume " + number + " of sound engine library")}};
}

Operation setImmersiveFormat(const std::string& format)
{
    return {"setImmersiveFormat",
            [format] { return engine().setImmersiveFormat(format); },
            {singleValue("setImmersiveFormat", "Setting immersive info  immersiveFormat " + format,
                         call("setImmersiveInfo", JValue{format}.stringify()),
                         "Failed to set Immersive Format " + format)}};
}

Step equalizerStatus(const std::string& status, bool on)
{
    return singleValue("setEqualizerStatus", "Setting Instart Audio EQ " + status,
                       call("setInstartAudioEQ", asJson(on)),
                       "Failed to set audio equalizer as " + status);
}

Step soundEngineStatus(const std::string& status, bool on)
{
    return singleValue("setSoundEngineStatus", "Setting Instart SoundEngine " + status,
                       call("setInstartSoundEngine", asJson(on)),
                       "Failed to set sound engine status as " + status);
}

Step dolbyAtmos(const std::string& status, bool on)
{
    return singleValue("setDolbyAtmos", "Setting Dolby Atmos State " + status,
                       call("setDolbyAtmos", asJson(on)), "Failed to set Dolby Atmos as " + status);
}

Operation setForcedDolbyAtmos(bool on)
{
    const std::string number = on ? "1" : "0";
    return {"setForcedDolbyAtmos",
            [on] { return engine().setForcedDolbyAtmos(on); },
            {singleValue("setForcedDolbyAtmos", "setForcedDolbyAtmos " + number,
                         call("setForcedDolbyAtmos", asJson(on)),
                         "Failed to set forced Dolby Atmos as " + number)}};
}

struct Status {
    const char* name;
    bool (kepTVSoundEngine::*set)(const std::string&);
    Step (*step)(const std::string& status, bool on);
};
const Status kStatuses[] = {
    {"setEqualizerStatus", &kepTVSoundEngine::setEqualizerStatus, equalizerStatus},
    {"setSoundEngineStatus", &kepTVSoundEngine::setSoundEngineStatus, soundEngineStatus},
    {"setDolbyAtmos", &kepTVSoundEngine::setDolbyAtmos, dolbyAtmos},
};

Operation setStatus(const Status& status, const std::string& text)
{
    return {status.name,
            [&status, text] { return (engine().*status.set)(text); },
            {status.step(text, text == "on")}};
}

// --- Values of a payload

/// A value with the text that it is read as.
struct ValueRow {
    const char* json;
    const char* text;
};
constexpr ValueRow kValues[] = {
    {R"("on")", "on"},
    {R"("ON")", "ON"},
    {R"("On")", "On"},
    {R"("on ")", "on "},
    {R"("off")", "off"},
    {R"("")", ""},
    {R"("true")", "true"},
    {R"("TRUE")", "TRUE"},
    {R"("a\"b")", "a\"b"},
    {R"("%s%n")", "%s%n"},
    {"true", ""},
    {"false", ""},
    {"1", ""},
    {"null", ""},
    {R"(["on"])", ""},
    {R"({"on": "on"})", ""},
};

/// Setting one key of a payload.
Operation setting(const std::string& key, const std::string& value, std::vector<Step> steps)
{
    return {"setSoundEngineSettings",
            [payload = member(key, value)] { engine().setSoundEngineSettings(json(payload)); },
            std::move(steps)};
}

/// The two keys that are taken from objects only.
struct StatusHandler {
    const char* key;
    const char* handler;
    Step (*step)(const std::string& status, bool on);
};
constexpr StatusHandler kStatusHandlers[] = {
    {"equalizerStatus", "setEqualizerStatus", equalizerStatus},
    {"soundEngineStatus", "setSoundEngineStatus", soundEngineStatus},
};

Step statusStep(const StatusHandler& handler, const std::string& text)
{
    Step step = handler.step(text, text == "on");
    step.onSuccess = {kLog.debug(
        handler.handler, "set equalizerStatus for soundengine middleware successfully as " + text)};
    return step;
}

LogLine invalidObject(const char* handler)
{
    return kLog.refusal("INVALID_PARAMETER", handler, "Invalid object");
}

enum class Reading { Text, SwitchOn, SwitchTrue };

struct KeyedHandler {
    const char* key;
    const char* handler;
    const char* operation;
    const char* subject; // in the texts
    Reading reading;
};
// clang-format off
constexpr KeyedHandler kKeyedHandlers[] = {
    // key                  handler                          operation                     subject               reading
    {"soundMode",          "setSoundModeSettings",          "setSoundMode",               "setSoundMode",       Reading::Text},
    {"smartSoundMode",     "setSmartSoundModeSettings",     "setSmartSoundMode",          "smartSoundMode",     Reading::SwitchOn},
    {"autoVolume",         "setAutoVolumeSettings",         "setAutoVolume",              "autoVolume",         Reading::SwitchOn},
    {"virtualSurround",    "setVirtualSurroundSettings",    "setVirtualSurround",         "virtualSurround",    Reading::SwitchOn},
    {"magicSpaceSound",    "setMagicSpaceSoundSettings",    "setMagicSpaceSound",         "magicSpaceSound",    Reading::Text},
    {"magicSoundModified", "setMagicSoundModifiedSettings", "setMagicSpaceSoundModified", "magicSoundModified", Reading::SwitchTrue},
    {"userEqualizer",      "setUserEqualizerSettings",      "setUserEQ",                  "userEqualizer",      Reading::SwitchOn},
    {"volumeControl",      "setVolumeControlSettings",      "setVolumeMode",              "volumeControl",      Reading::Text},
    {"aiSound",            "setAiSoundSettings",            "setAISound",                 "aiSound",            Reading::SwitchOn},
    {"supportATMOS",       "setATMOSSettings",              "setDolbyAtmos",              "supportATMOS",       Reading::SwitchOn},
};
// clang-format on

const KeyedHandler& handlerOf(const std::string& key)
{
    return *std::find_if(std::begin(kKeyedHandlers), std::end(kKeyedHandlers),
                         [&key](const KeyedHandler& row) { return key == row.key; });
}

Step keyedStep(const KeyedHandler& handler, const std::string& text)
{
    std::string argument = JValue{text}.stringify();
    if (handler.reading != Reading::Text)
        argument = asJson(text == (handler.reading == Reading::SwitchOn ? "on" : "true"));
    const std::string subject = handler.subject;
    return {
        .call = call(handler.operation, argument),
        .onSuccess = {kLog.debug(handler.handler, "set " + subject + " successfully as " + text)},
        .onFailure = {kLog.error(handler.handler, "Failed to set " + subject + " as " + text)}};
}

// --- Arrays

struct ArrayRow {
    const char* json;
    const char* passed;
    int count;
};
const ArrayRow kMagicSpaceSounds[] = {
    {"[]", "[]", 0},
    {R"([3, "x", 7])", "[3,0,7]", 3},
    {"[1, 2, 3, 4, 5]", "[1,2,3,4,5]", 5},
    {R"([1.9, -1.9, true, null, [5], {"a": 5}, "5"])", "[1,-1,0,0,0,0,0]", 7},
    {"[99999999999, -99999999999, 1e300]", "[2147483647,-2147483648,2147483647]", 3},
    {R"("123")", "[]", 0},
    {R"({"0": 1})", "[]", 0},
    {"5", "[]", 0},
    {"true", "[]", 0},
    {"null", "[]", 0},
};

struct BandsRow {
    const char* json;
    const char* passed;
};
constexpr BandsRow kBands[] = {
    {"[1, 2, 3, 4, 5]", "[1,2,3,4,5]"},
    {"[1, 2, 3, 4, 5, 6]", "[1,2,3,4,5]"},
    {"[1, 2, 3]", "[1,2,3,0,0]"},
    {"[]", "[0,0,0,0,0]"},
    {R"([1, "x", 3, null, 5])", "[1,0,3,0,5]"},
    {"[-1.9, 1.9, 99999999999, -99999999999, true]", "[-1,1,2147483647,-2147483648,0]"},
    {R"("12345")", "[0,0,0,0,0]"},
    {R"({"0": 1})", "[0,0,0,0,0]"},
    {"5", "[0,0,0,0,0]"},
    {"true", "[0,0,0,0,0]"},
    {"null", "[0,0,0,0,0]"},
};

Operation setMagicSpaceSound(const std::string& values, const std::string& passed, int count)
{
    const JValue payload = json(member("soundSettingValues", values));
    return {"setMagicSpaceSound",
            [payload] { return engine().setMagicSpaceSound(payload); },
            {{.before = {kLog.info("setMagicSpaceSound",
                                   "Setting MagicSpace SoundParams " + payload.stringify())},
              .call = call("setMagicSpaceSoundParams", passed + ", " + std::to_string(count)),
              .onSuccess = {kLog.debug("setMagicSpaceSound", "set magic space sound successfully")},
              .onFailure = {kLog.error("setMagicSpaceSound", "Failed to set magic space sound")}}}};
}

Step bandsStep(const std::string& passed)
{
    constexpr const char* kHandler = "setUserEqualizerValuesSettings";
    return {.call = call("setUserEQValues", passed),
            .onSuccess = {kLog.debug(kHandler, "set userEqualizerValues successfully")},
            .onFailure = {kLog.error(kHandler, "Failed to set userEqualizerValues")}};
}

/// An array in which every seventh element is a text, and the integers that it is read as.
struct LongArray {
    explicit LongArray(int size)
    {
        for (int i = 0; i < size; ++i) {
            const bool isText = i % 7 == 6;
            static_cast<void>(given.append(isText ? JValue{"text"} : JValue{i}));
            read.append(isText ? 0 : i);
        }
    }

    JValue given = JValue::array();
    JValue read = JValue::array();
};

// --- setOptionCategorySettings

Operation setStoreMode(const std::string& value, const std::string& text)
{
    constexpr const char* kHandler = "setOptionCategorySettings";
    return {
        kHandler,
        [payload = member("storeMode", value)] {
            engine().setOptionCategorySettings(json(payload));
        },
        {{.call = call("setStoreMode", JValue{text}.stringify()),
          .onSuccess = {kLog.info(kHandler, "set Store/Home mode successfully as " + text)},
          .onFailure = {kLog.error(kHandler, "Failed to set Store/Home mode value as " + text)}}}};
}

// --- All of them

// Every known key, none in the place in which it is handled.
constexpr const char* kAllSettings = R"({
    "storeMode": "home", "supportATMOS": "on", "aiSound": "on", "volumeControl": "hard",
    "userEqualizerValues": [1, 2, 3, 4, 5], "userEqualizer": "on", "magicSoundModified": "true",
    "magicSpaceSound": "room", "virtualSurround": "on", "autoVolume": "on", "smartSoundMode": "on",
    "soundMode": "cinema", "soundEngineStatus": "on", "equalizerStatus": "on", "other": "on"})";

Operation allSettings()
{
    return {"setSoundEngineSettings",
            [] { engine().setSoundEngineSettings(json(kAllSettings)); },
            {
                statusStep(kStatusHandlers[0], "on"),
                statusStep(kStatusHandlers[1], "on"),
                keyedStep(handlerOf("soundMode"), "cinema"),
                keyedStep(handlerOf("smartSoundMode"), "on"),
                keyedStep(handlerOf("autoVolume"), "on"),
                keyedStep(handlerOf("virtualSurround"), "on"),
                keyedStep(handlerOf("magicSpaceSound"), "room"),
                keyedStep(handlerOf("magicSoundModified"), "true"),
                keyedStep(handlerOf("userEqualizer"), "on"),
                bandsStep("[1,2,3,4,5]"),
                keyedStep(handlerOf("volumeControl"), "hard"),
                keyedStep(handlerOf("aiSound"), "on"),
                keyedStep(handlerOf("supportATMOS"), "on"),
            }};
}

class KepTvSoundEngine : public AdapterTest
{
protected:
    KepTvSoundEngine()
    {
        engine().initSoundEngine();
        forget();
    }
};

std::vector<Operation> operations()
{
    return {
        {"initSoundEngineAttributes",
         [] { return engine().initSoundEngineAttributes(); },
         {{.call = call("registerQualityParams", kQualityParams),
           .onFailure = {kLog.error(
               "initSoundEngineAttributes",
               "Failed to register quality Parameters for sound engine instance")}},
          {.call = call("initialize", ""),
           .onFailure = {kLog.error("initSoundEngineAttributes",
                                    "Failed to initialize for sound engine instance")}}}},
        {"registerAudioVideoInfo",
         [] { engine().registerAudioVideoInfo(); },
         {{.before = {kLog.info("registerAudioVideoInfo", "Calling registerAvParams")},
           .call = call("registerAvParams", kAvParams),
           .onFailure = {kLog.error("registerAudioVideoInfo",
                                    "Failed to register audio video parameters")}}}},
        setSoundOutputVolume(40),
        setImmersiveFormat("atmos"),
        setStatus(kStatuses[0], "on"),
        setStatus(kStatuses[1], "on"),
        setStatus(kStatuses[2], "on"),
        setForcedDolbyAtmos(true),
        setMagicSpaceSound("[3,7]", "[3,7]", 2),
        setStoreMode(R"("home")", "home"),
        allSettings(),
    };
}

} // namespace

TEST_F(KepTvSoundEngine, ThereIsOneAdapter)
{
    expectOneInstance<kepTVSoundEngine>();
}

TEST_F(KepTvSoundEngine, InitialisingAlwaysSucceedsAndCallsNothing)
{
    expectInitialising([] { return engine().initSoundEngine(); },
                       kLog.info("initSoundEngine", "mPtrSoundEngineInstance is Initialised"));
}

TEST_F(KepTvSoundEngine, EachOperationCallsAndLogsAsItsTableSays)
{
    expectAllOutcomes(operations());
}

TEST_F(KepTvSoundEngine, AtErrorLevelOnlyFailuresAreLogged)
{
    expectErrorsOnly(operations());
}

TEST_F(KepTvSoundEngine, AnEmptyStoreIsRegisteredAsEmptyMaps)
{
    EXPECT_TRUE(engine().initSoundEngineAttributes());
    engine().registerAudioVideoInfo();
    EXPECT_THAT(middlewareCalls(),
                ElementsAre(call("registerQualityParams", "{}"), call("initialize", ""),
                            call("registerAvParams", "{}")));
}

// --- Single values

TEST_F(KepTvSoundEngine, AVolumeIsPassedOnUnchanged)
{
    for (const int volume : {0, 100, 256, -1, 2147483647, -2147483647 - 1})
        expectAllOutcomes(setSoundOutputVolume(volume));
}

TEST_F(KepTvSoundEngine, AnImmersiveFormatIsPassedOnUnchanged)
{
    for (const char* format : {"", "none", "DTS:X", "%s%n", "a \"b\""})
        expectAllOutcomes(setImmersiveFormat(format));
}

TEST_F(KepTvSoundEngine, AStatusIsOnOnlyAtExactlyOn)
{
    for (const Status& status : kStatuses)
        for (const char* text : {"on", "On", "ON", "on ", " on", "off", "true", "1", "", "%s%n"})
            expectAllOutcomes(setStatus(status, text));
}

TEST_F(KepTvSoundEngine, ForcingDolbyAtmosPassesTheFlag)
{
    for (const bool on : {true, false})
        expectAllOutcomes(setForcedDolbyAtmos(on));
}

// --- setMagicSpaceSound

TEST_F(KepTvSoundEngine, MagicSpaceSoundPassesItsNumbersWithTheirCount)
{
    for (const ArrayRow& row : kMagicSpaceSounds)
        expectAllOutcomes(setMagicSpaceSound(row.json, row.passed, row.count));
}

TEST_F(KepTvSoundEngine, MagicSpaceSoundTakesArraysOfEveryLength)
{
    for (const int size : {0, 1, 5, 1000}) {
        const LongArray array{size};
        expectAllOutcomes(
            setMagicSpaceSound(array.given.stringify(), array.read.stringify(), size));
    }
}

TEST_F(KepTvSoundEngine, MagicSpaceSoundWithoutValuesFailsAndCallsNothing)
{
    const std::vector<JValue> payloads =
        payloadsWithoutKeys({R"({"soundSettingvalues": [1], "magicSpaceSound": "room"})",
                             R"(["soundSettingValues"])", R"([{"soundSettingValues": [1]}])"});
    for (const JValue& payload : payloads)
        expectTrace(payload.stringify(),
                    [&payload] { EXPECT_FALSE(engine().setMagicSpaceSound(payload)); }, {},
                    {kLog.info("setMagicSpaceSound",
                               "Setting MagicSpace SoundParams " + payload.stringify()),
                     kLog.error("setMagicSpaceSound", "No values to set magic space sound")});
}

// --- setOptionCategorySettings

TEST_F(KepTvSoundEngine, TheStoreModeIsPassedOnAsText)
{
    for (const ValueRow& row : kValues)
        expectAllOutcomes(setStoreMode(row.json, row.text));
}

TEST_F(KepTvSoundEngine, OptionsWithoutAStoreModeDoNothing)
{
    const std::vector<JValue> payloads = payloadsWithoutKeys(
        {R"({"StoreMode": "home", "soundMode": "cinema", "aiSound": "on"})", R"(["storeMode"])"});
    for (const JValue& payload : payloads)
        expectTrace(payload.stringify(),
                    [&payload] { engine().setOptionCategorySettings(payload); }, {}, {});
}

// --- setSoundEngineSettings

TEST_F(KepTvSoundEngine, EachKeyIsReadAsItsTableSays)
{
    for (const KeyedHandler& handler : kKeyedHandlers)
        for (const ValueRow& row : kValues)
            expectAllOutcomes(setting(handler.key, row.json, {keyedStep(handler, row.text)}));
}

TEST_F(KepTvSoundEngine, AStatusOfAPayloadIsOnOnlyAtExactlyOn)
{
    for (const StatusHandler& handler : kStatusHandlers)
        for (const ValueRow& row : kValues)
            expectAllOutcomes(setting(handler.key, row.json, {statusStep(handler, row.text)}));
}

TEST_F(KepTvSoundEngine, OnlyTheTextOnSwitchesAiSoundOnAndOnlyTheTextTrueTheModifiedSound)
{
    engine().setSoundEngineSettings(json(R"({"aiSound": "ON"})"));
    engine().setSoundEngineSettings(json(R"({"aiSound": "true"})"));
    engine().setSoundEngineSettings(json(R"({"aiSound": "on"})"));
    engine().setSoundEngineSettings(json(R"({"magicSoundModified": "on"})"));
    engine().setSoundEngineSettings(json(R"({"magicSoundModified": true})"));
    engine().setSoundEngineSettings(json(R"({"magicSoundModified": "true"})"));
    EXPECT_THAT(middlewareCalls(),
                ElementsAre("soundengine.setAISound(false)", "soundengine.setAISound(false)",
                            "soundengine.setAISound(true)",
                            "soundengine.setMagicSpaceSoundModified(false)",
                            "soundengine.setMagicSpaceSoundModified(false)",
                            "soundengine.setMagicSpaceSoundModified(true)"));
}

TEST_F(KepTvSoundEngine, TheUsersEqualiserAlwaysGetsFiveBands)
{
    for (const BandsRow& row : kBands)
        expectAllOutcomes(setting("userEqualizerValues", row.json, {bandsStep(row.passed)}));
    expectAllOutcomes(setting("userEqualizerValues", LongArray{1000}.given.stringify(),
                              {bandsStep("[0,1,2,3,4]")}));
}

TEST_F(KepTvSoundEngine, AllKeysTogetherAreHandledInAFixedOrderAndNoFailureStopsTheOthers)
{
    expectAllOutcomes(allSettings());
}

TEST_F(KepTvSoundEngine, AKeyThatIsMissingIsSilent)
{
    for (const char* payload :
         {"{}", R"({"storeMode": "home"})", R"({"AiSound": "on", "soundmode": "cinema", "": "on"})",
          R"({"a": {"aiSound": "on", "soundMode": "cinema", "equalizerStatus": "on"}})",
          R"({"soundSettingValues": [1, 2]})"})
        expectTrace(payload, [payload] { engine().setSoundEngineSettings(json(payload)); }, {}, {});
    // Without one of its keys a payload is handled as before but for that one.
    const Operation all = allSettings();
    for (const KeyedHandler& handler : kKeyedHandlers) {
        const JValue rest = json(kAllSettings);
        EXPECT_TRUE(JValue{rest}.remove(handler.key));
        Operation operation{handler.key, [rest] { engine().setSoundEngineSettings(rest); }, {}};
        std::copy_if(all.steps.begin(), all.steps.end(), std::back_inserter(operation.steps),
                     [&handler](const Step& step) {
                         return step.call.find(std::string{"."} + handler.operation + "(") ==
                                std::string::npos;
                     });
        ASSERT_EQ(operation.steps.size(), all.steps.size() - 1);
        expectAllOutcomes(operation);
    }
}

TEST_F(KepTvSoundEngine, APayloadThatIsNoObjectIsRefusedByTheTwoStatusesAndHasNoKeys)
{
    const std::vector<JValue> payloads =
        payloadsWithoutKeys({R"(["equalizerStatus", "soundEngineStatus", "aiSound", "soundMode"])",
                             R"([{"aiSound": "on"}])"});
    for (const JValue& payload : payloads)
        if (!payload.isObject())
            expectTrace(
                payload.stringify(), [&payload] { engine().setSoundEngineSettings(payload); }, {},
                {invalidObject("setEqualizerStatus"), invalidObject("setSoundEngineStatus")});
}

TEST_F(KepTvSoundEngine, AtErrorLevelNoKeyIsLoggedUnlessItFails)
{
    for (const KeyedHandler& handler : kKeyedHandlers)
        expectErrorsOnly(setting(handler.key, R"("on")", {keyedStep(handler, "on")}));
    for (const StatusHandler& handler : kStatusHandlers)
        expectErrorsOnly(setting(handler.key, R"("on")", {statusStep(handler, "on")}));
    expectErrorsOnly(setting("userEqualizerValues", "[1]", {bandsStep("[1,0,0,0,0]")}));
}
