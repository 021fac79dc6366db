// SPDX-License-Identifier: Apache-2.0
#include "kepclient.h"

#include <climits>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "kepalsaaudio.h"
#include "kepfactory.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "televisiontest.h"

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::string shown(const std::string& text)
{
    return text;
}
std::string shown(bool value)
{
    return value ? "true" : "false";
}
std::string shown(std::uint8_t number)
{
    return std::to_string(number);
}
std::string shown(const JValue& value)
{
    return value.isValid() ? value.stringify() : "invalid";
}

/// A backend that writes down what it is asked, answers as told and throws on request.
class RecordingBackend final : public kepAudio
{
public:
    unsigned int initStatus = KEP_STATUS_OK;
    unsigned int deinitStatus = KEP_STATUS_OK;
    unsigned int answer = KEP_RESULT_OK;
    JValue reply = true;
    std::function<void()> raise;
    std::vector<std::string> calls;
    bool* headphonePointer = nullptr;

    unsigned int initAudio() override { return note(initStatus, "initAudio"); }
    unsigned int deinitAudio() override { return note(deinitStatus, "deinitAudio"); }
    unsigned int connectInput(std::string source, std::string sink, JValue attribute) override
    {
        return note(answer, "connectInput", source, sink, attribute);
    }
    unsigned int disconnectInput(std::string source, std::string sink) override
    {
        return note(answer, "disconnectInput", source, sink);
    }
    unsigned int getHeadphoneStatus(bool* connected) override
    {
        headphonePointer = connected;
        if (connected != nullptr)
            *connected = true;
        return note(answer, "getHeadphoneStatus");
    }
    unsigned int removePipelineInfo(std::string pipelineId) override
    {
        return note(answer, "removePipelineInfo", pipelineId);
    }
    unsigned int setSoundOutput(std::string output) override
    {
        return note(answer, "setSoundOutput", output);
    }
    unsigned int setMute(std::string source, std::string sink, bool mute) override
    {
        return note(answer, "setMute", source, sink, mute);
    }
    unsigned int setOutputVolume(std::string output, std::uint8_t volume) override
    {
        return note(answer, "setOutputVolume", output, volume);
    }
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume) override
    {
        return note(answer, "setInputVolume", source, sink, volume);
    }
    unsigned int setOutputMute(std::string output, bool mute) override
    {
        return note(answer, "setOutputMute", output, mute);
    }
    unsigned int setMuteExtSPK(bool mute) override { return note(answer, "setMuteExtSPK", mute); }
    unsigned int setQualityAttribute(JValue attribute) override
    {
        return note(answer, "setQualityAttribute", attribute);
    }
    unsigned int setSettings(std::string category, JValue payload) override
    {
        return note(answer, "setSettings", category, payload);
    }
    JValue getSettings(const std::string& category, JValue request) override
    {
        return note(reply, "getSettings", category, request);
    }

private:
    template <typename Result, typename... Arguments>
    Result note(const Result& result, const std::string& operation, const Arguments&... arguments)
    {
        std::string call = operation;
        ((call += "|" + shown(arguments)), ...);
        calls.push_back(call);
        if (raise)
            raise();
        return result;
    }
};

RecordingBackend& backend()
{
    static RecordingBackend instance;
    return instance;
}

int gCreations = 0;

kepAudio* createBackend()
{
    ++gCreations;
    return &backend();
}

kepAudio* decline()
{
    return nullptr;
}

kepAudio* createAndThrow()
{
    throw std::runtime_error{"no backend today"};
}

kepClient& client()
{
    return *kepClient::getInstance();
}

bool gConnected = false;

struct Request {
    unsigned int (*send)();
    std::string received;
};
// clang-format off
const Request kRequests[] = {
    {[] { return client().connectInput("ADEC0", "tv_speaker", json(R"({"stream":"kepgame"})")); },
     R"(connectInput|ADEC0|tv_speaker|{"stream":"kepgame"})"},
    {[] { return client().connectInput("", "", JValue{}); },
     "connectInput|||null"},
    {[] { return client().connectInput("A", "B", JValue::invalid()); },
     "connectInput|A|B|invalid"},
    {[] { return client().disconnectInput("AMIXER", "ALSA"); },
     "disconnectInput|AMIXER|ALSA"},
    {[] { return client().disconnectInput("", "MAIN"); },
     "disconnectInput||MAIN"},
    {[] { return client().getHeadphoneStatus(&gConnected); },
     "getHeadphoneStatus"},
    {[] { return client().getHeadphoneStatus(nullptr); },
     "getHeadphoneStatus"},
    {[] { return client().removePipelineInfo("pipeline 7"); },
     "removePipelineInfo|pipeline 7"},
    {[] { return client().setSoundOutput("tv_speaker"); },
     "setSoundOutput|tv_speaker"},
    {[] { return client().setSoundOutput("no such \xc3\xb6utput"); },
     "setSoundOutput|no such \xc3\xb6utput"},
    {[] { return client().setMute("ADEC0", "MAIN", true); },
     "setMute|ADEC0|MAIN|true"},
    {[] { return client().setMute("ADEC1", "SUB", false); },
     "setMute|ADEC1|SUB|false"},
    {[] { return client().setOutputVolume("headphone", 0); },
     "setOutputVolume|headphone|0"},
    {[] { return client().setOutputVolume("headphone", 255); },
     "setOutputVolume|headphone|255"},
    {[] { return client().setInputVolume("AMIXER", "ALSA", 1); },
     "setInputVolume|AMIXER|ALSA|1"},
    {[] { return client().setInputVolume("ADEC", "MAIN", 255); },
     "setInputVolume|ADEC|MAIN|255"},
    {[] { return client().setOutputMute("external_arc", true); },
     "setOutputMute|external_arc|true"},
    {[] { return client().setOutputMute("external_arc", false); },
     "setOutputMute|external_arc|false"},
    {[] { return client().setMuteExtSPK(true); },
     "setMuteExtSPK|true"},
    {[] { return client().setMuteExtSPK(false); },
     "setMuteExtSPK|false"},
    {[] { return client().setQualityAttribute(json(R"({"id":"7","rates":[1,2.5]})")); },
     R"(setQualityAttribute|{"id":"7","rates":[1,2.5]})"},
    {[] { return client().setSettings("audioEQ", json(R"({"bands":[1,-2,3]})")); },
     R"(setSettings|audioEQ|{"bands":[1,-2,3]})"},
};
// clang-format on

struct VolumeRow {
    const char* json;
    std::uint8_t volume;
};
// clang-format off
constexpr VolumeRow kDefaultVolumes[] = {
    {"15",     15},
    {"0",      0},
    {"255",    255},
    {"256",    0},
    {"300",    44},
    {"-1",     255},
    {"12.9",   12},
    {"-0.5",   0},
    {"-1.9",   255},
    {"\"15\"", 0},
    {"true",   0},
    {"null",   0},
    {"{}",     0},
    {"[15]",   0},
};
// clang-format on

struct Thrower {
    const char* what;
    void (*raise)();
};
constexpr Thrower kThrowers[] = {
    {"an exception", [] { throw std::runtime_error{"broken"}; }},
    {"out of memory", [] { throw std::bad_alloc{}; }},
    {"a number", [] { throw 7; }},
    {"a text", [] { throw "broken"; }},
};

LogLine errorOf(const std::string& function, const std::string& id, const std::string& text)
{
    return {kLogError, id, "kepclient:" + function, text};
}

const LogLine kNotLoaded =
    errorOf("initialize", "INVALID_KEP_TYPE", "Failed to load KEP Config file");
const LogLine kNoBackendName =
    errorOf("initialize", "INVALID_KEP_TYPE", "Failed to get kep soc type from config");
const LogLine kNotStopped = errorOf("deinitialize", "ERROR_LOG", "Failed to deinitAudio");
const LogLine kWantsBackend{kLogDebug, "", "kepconfig:getValue",
                            "Need value for soc type: Q27R5 & key type: kepAudio"};
const LogLine kWantsVolume{kLogDebug, "", "kepconfig:getDefaultVolume",
                           "Need value for soc type: Q27R5 & key type: kepDefaultVolume"};

LogLine defaultVolume(int volume)
{
    return {kLogDebug, "", "kepclient:initialize", "Default volume " + std::to_string(volume)};
}

LogLine starting(const std::string& name)
{
    return {kLogInfo, "INFO_LOG", "kepclient:initialize", "In kepClient::initialize " + name};
}

class KepClient : public TelevisionTest
{
protected:
    KepClient()
    {
        kepFactory::getInstance()->Register("RECORDING", &createBackend);
        kepFactory::getInstance()->Register("DECLINING", &decline);
        kepFactory::getInstance()->Register("THROWING", &createAndThrow);
    }

    void configure(const std::string& content) const { writeConfig("kep-config.json", content); }
    void configureSection(const std::string& members) const
    {
        configure(R"({"Q27R5": {)" + members + "}}");
    }
    /// Starts the recording backend and forgets that.
    void start()
    {
        configureBackend("RECORDING");
        ASSERT_EQ(client().initialize(), KEP_STATUS_OK);
        backend().calls.clear();
        forget();
    }
    [[nodiscard]] LogLine loading() const
    {
        return {kLogInfo, "LOAD_CONFIG", "kepconfig:loadKEPConfig",
                "Loading kepConfig config from file " + (directory() / "kep-config.json").string()};
    }
    [[nodiscard]] LogLine unreadable(const std::string& reason) const
    {
        return {kLogError, "CONFIG_FILE_READ_FAILED", "kepconfig:loadKEPConfig",
                "Failed to parse kep config file, using defaults. File: " +
                    (directory() / "kep-config.json").string() + ". Error: " + reason};
    }
};

} // namespace

// --- Before initialize

TEST_F(KepClient, ThereIsOneClient)
{
    ASSERT_NE(kepClient::getInstance(), nullptr);
    EXPECT_EQ(kepClient::getInstance(), kepClient::getInstance());
}

TEST_F(KepClient, AtFirstThereIsNeitherBackendNorVolume)
{
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getDefaultVolume(), 0);
    EXPECT_EQ(kepLogContext.load(), nullptr);
}

TEST_F(KepClient, WithoutABackendEveryRequestFailsAndNothingIsLogged)
{
    connectLog();
    for (const Request& request : kRequests)
        EXPECT_EQ(request.send(), KEP_RESULT_FAILED) << request.received;
    const JValue answer = client().getSettings("audioEQ", JValue::object());
    EXPECT_TRUE(answer.isBool());
    EXPECT_TRUE(answer.asBool());
    EXPECT_FALSE(gConnected);
    EXPECT_THAT(backend().calls, IsEmpty());
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, WithoutABackendDeinitializeFailsAndLogsNothing)
{
    connectLog();
    EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- initialize

TEST_F(KepClient, InitializeStartsTheConfiguredBackend)
{
    configureBackend("RECORDING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_EQ(client().getAudioObj(), &backend());
    EXPECT_EQ(client().getDefaultVolume(), 15);
    EXPECT_THAT(backend().calls, ElementsAre("initAudio"));
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15),
                                        starting("RECORDING")));
}

TEST_F(KepClient, InitializeObtainsTheLogContext)
{
    client().initialize();
    EXPECT_EQ(kepLogContext.load(), LogGetContext("kep"));
}

TEST_F(KepClient, InitializeAnswersWhatTheBackendAnswers)
{
    configureBackend("RECORDING");
    for (const unsigned int status : {0U, 1U, 7U, UINT_MAX}) {
        backend().initStatus = status;
        forget();
        EXPECT_EQ(client().initialize(), status);
        EXPECT_EQ(client().getAudioObj(), &backend());
        EXPECT_THAT(logLines(kLogError), IsEmpty()) << status;
    }
}

TEST_F(KepClient, TheConfiguredNameChoosesTheBackend)
{
    kepFactory::getInstance()->UnRegister("TV");
    kepFactory::getInstance()->Register("TV", &createBackend);
    configureBackend("TV");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_EQ(client().getAudioObj(), &backend());
    EXPECT_THAT(logLines(), Contains(starting("TV")));
}

TEST_F(KepClient, TheNameAlsaStartsTheMixerBackend)
{
    configureBackend("ALSA");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    ASSERT_NE(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getAudioObj(), kepAlsaAudio::createObject());
    EXPECT_THAT(logLines(), Contains(starting("ALSA")));
    EXPECT_EQ(client().setOutputVolume("any", 35), KEP_RESULT_OK);
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Volume", {35}, 0}));
}

TEST_F(KepClient, TheNameTvStartsTheTelevisionBackend)
{
    configureBackend("TV");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    ASSERT_NE(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getAudioObj(), kepTVAudio::createObject());
    EXPECT_THAT(logLines(), Contains(starting("TV")));
}

TEST_F(KepClient, ANameThatNobodyRegisteredFailsSilently)
{
    for (const char* name : {"alsa", "Alsa", "tv", "RADIO", "ALSA ", " "}) {
        configureBackend(name);
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << name;
        EXPECT_EQ(client().getAudioObj(), nullptr) << name;
        EXPECT_THAT(logLines(),
                    ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15)))
            << name;
        EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_FAILED) << name;
    }
    EXPECT_EQ(client().getDefaultVolume(), 15);
}

TEST_F(KepClient, ACreatorThatDeclinesLeavesNoBackend)
{
    configureBackend("DECLINING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getDefaultVolume(), 15);
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15)));
}

TEST_F(KepClient, AnEmptyNameFailsBeforeTheRegistryIsAsked)
{
    kepFactory::getInstance()->Register("", &createBackend);
    configureSection(R"("kepAudio": "", "kepDefaultVolume": 15)");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(gCreations, 0);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getDefaultVolume(), 0);
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kNoBackendName));
}

TEST_F(KepClient, ANameThatIsNoTextIsEmpty)
{
    for (const char* name : {"1", "true", "null", R"(["ALSA"])", R"({"ALSA": 1})"}) {
        configureSection(std::string{R"("kepAudio": )"} + name);
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << name;
        EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kNoBackendName)) << name;
    }
}

TEST_F(KepClient, AMissingNameOrSectionIsAnEmptyName)
{
    const LogLine notFound{kLogDebug, "", "kepconfig:getValue",
                           "Did not find key type in kep config kepAudio"};
    for (const char* content :
         {"{}", R"({"Q27R5": {}})", R"({"Q27R5": "ALSA"})", R"({"kepAudio": "ALSA"})"}) {
        configure(content);
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << content;
        EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, notFound, kNoBackendName))
            << content;
    }
}

TEST_F(KepClient, AFileThatCannotBeReadFails)
{
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(),
                ElementsAre(loading(), unreadable("No such file or directory"), kNotLoaded));
    EXPECT_EQ(client().getAudioObj(), nullptr);

    configure("[]");
    forget();
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(loading(), unreadable(""), kNotLoaded));
}

TEST_F(KepClient, TheDefaultVolumeIsTheLowByteOfTheNumber)
{
    for (const VolumeRow& row : kDefaultVolumes) {
        configureSection(std::string{R"("kepAudio": "RECORDING", "kepDefaultVolume": )"} +
                         row.json);
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_OK) << row.json;
        EXPECT_EQ(client().getDefaultVolume(), row.volume) << row.json;
        EXPECT_THAT(logLines(), Contains(defaultVolume(row.volume))) << row.json;
        EXPECT_THAT(logLines(kLogError), IsEmpty()) << row.json;
    }
}

TEST_F(KepClient, AMissingDefaultVolumeIsZero)
{
    configureSection(R"("kepAudio": "RECORDING", "kepDefaultVolume": 15)");
    client().initialize();
    configureSection(R"("kepAudio": "RECORDING")");
    forget();
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_EQ(client().getDefaultVolume(), 0);
    EXPECT_THAT(logLines(), Contains(defaultVolume(0)));
}

// --- initialize again

TEST_F(KepClient, InitializeAgainRepeatsEveryStep)
{
    start();
    configureSection(R"("kepAudio": "RECORDING", "kepDefaultVolume": 16)");
    gCreations = 0;
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_EQ(gCreations, 1);
    EXPECT_EQ(client().getDefaultVolume(), 16);
    EXPECT_THAT(backend().calls, ElementsAre("initAudio"));
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(16),
                                        starting("RECORDING")));
}

TEST_F(KepClient, InitializeAgainWithAnUnregisteredNameRestartsTheKeptBackend)
{
    start();
    configureBackend("RADIO");
    backend().initStatus = 7;
    gCreations = 0;
    EXPECT_EQ(client().initialize(), 7U);
    EXPECT_EQ(gCreations, 0);
    EXPECT_EQ(client().getAudioObj(), &backend());
    EXPECT_THAT(backend().calls, ElementsAre("initAudio"));
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15),
                                        starting("RADIO")));
}

TEST_F(KepClient, InitializeAgainWithACreatorThatDeclinesGivesTheBackendUp)
{
    start();
    configureBackend("DECLINING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_FAILED);
    EXPECT_THAT(backend().calls, IsEmpty());
}

TEST_F(KepClient, InitializeAgainWithAFaultyFileKeepsBackendAndVolume)
{
    start();
    for (const char* content : {"[]", R"({"Q27R5": {"kepDefaultVolume": 99}})"}) {
        configure(content);
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << content;
        EXPECT_EQ(client().getAudioObj(), &backend()) << content;
        EXPECT_EQ(client().getDefaultVolume(), 15) << content;
    }
    EXPECT_THAT(backend().calls, IsEmpty());
    EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_OK);
    EXPECT_THAT(backend().calls, ElementsAre("setSoundOutput|tv_speaker"));
}

// --- deinitialize

TEST_F(KepClient, DeinitializeStopsTheBackendAndLogsNothing)
{
    start();
    for (const unsigned int status : {1U, 7U, UINT_MAX}) {
        backend().calls.clear();
        backend().deinitStatus = status;
        EXPECT_EQ(client().deinitialize(), status);
        EXPECT_THAT(backend().calls, ElementsAre("deinitAudio"));
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, ABackendThatCannotBeStoppedIsAnError)
{
    start();
    backend().deinitStatus = KEP_STATUS_FAILED;
    EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNotStopped));
}

TEST_F(KepClient, AStoppedBackendIsKept)
{
    start();
    client().deinitialize();
    EXPECT_EQ(client().getAudioObj(), &backend());
    EXPECT_EQ(client().getDefaultVolume(), 15);
    backend().calls.clear();
    EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_OK);
    EXPECT_EQ(client().deinitialize(), KEP_STATUS_OK);
    EXPECT_THAT(backend().calls, ElementsAre("setSoundOutput|tv_speaker", "deinitAudio"));
}

// --- Requests

TEST_F(KepClient, EveryRequestReachesTheBackendUnchanged)
{
    start();
    for (const Request& request : kRequests) {
        backend().calls.clear();
        EXPECT_EQ(request.send(), KEP_RESULT_OK) << request.received;
        EXPECT_THAT(backend().calls, ElementsAre(request.received));
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, EveryAnswerReachesTheCallerUnchanged)
{
    start();
    for (const unsigned int answer : {0U, 1U, 2U, 3U, 4U, 77U, UINT_MAX}) {
        backend().answer = answer;
        for (const Request& request : kRequests)
            EXPECT_EQ(request.send(), answer) << request.received;
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, TheHeadphoneStatusGoesStraightToTheCallersBool)
{
    start();
    bool connected = false;
    client().getHeadphoneStatus(&connected);
    EXPECT_EQ(backend().headphonePointer, &connected);
    EXPECT_TRUE(connected);
    client().getHeadphoneStatus(nullptr);
    EXPECT_EQ(backend().headphonePointer, nullptr);
}

TEST_F(KepClient, StringsKeepTheirNulCharactersAndTheirLength)
{
    start();
    const std::string name = std::string{"a\0b", 3} + std::string(100000, 'x');
    client().disconnectInput(name, name);
    EXPECT_THAT(backend().calls, ElementsAre("disconnectInput|" + name + "|" + name));
}

TEST_F(KepClient, GetSettingsPassesTheRequestAndTheReply)
{
    start();
    for (const char* reply : {"true", "false", "null", "7", R"("text")", R"({"a":[1,2]})"}) {
        backend().calls.clear();
        backend().reply = json(reply);
        const JValue answer = client().getSettings("audioEQ", json(R"({"query":1})"));
        EXPECT_EQ(answer.stringify(), reply);
        EXPECT_THAT(backend().calls, ElementsAre(R"(getSettings|audioEQ|{"query":1})"));
    }
    backend().reply = JValue::invalid();
    EXPECT_FALSE(client().getSettings("", JValue::invalid()).isValid());
    EXPECT_EQ(backend().calls.back(), "getSettings||invalid");
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- What is thrown behind the client

TEST_F(KepClient, WhatARequestThrowsEndsItAsAFailure)
{
    start();
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        for (const Request& request : kRequests) {
            backend().calls.clear();
            EXPECT_EQ(request.send(), KEP_RESULT_FAILED)
                << request.received << ": " << thrower.what;
            EXPECT_THAT(backend().calls, ElementsAre(request.received));
        }
        backend().reply = 7;
        const JValue answer = client().getSettings("audioEQ", JValue::object());
        EXPECT_TRUE(answer.isBool()) << thrower.what;
        EXPECT_TRUE(answer.asBool()) << thrower.what;
    }
    EXPECT_THAT(logLines(), IsEmpty());

    backend().raise = nullptr;
    EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_OK);
}

TEST_F(KepClient, WhatTheStartThrowsEndsItAsAFailure)
{
    configureBackend("RECORDING");
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << thrower.what;
        EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume,
                                            defaultVolume(15), starting("RECORDING")))
            << thrower.what;
    }
}

TEST_F(KepClient, WhatTheCreatorThrowsEndsTheStartAsAFailure)
{
    configureBackend("THROWING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15)));
}

TEST_F(KepClient, WhatTheStopThrowsEndsItAsAFailureWithoutALogLine)
{
    start();
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED) << thrower.what;
    }
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(client().getAudioObj(), &backend());
}

// --- The admitted level

TEST_F(KepClient, AtLevelInfoDebugLinesAreLeftOut)
{
    admit(kLogInfo);
    configureBackend("RECORDING");
    client().initialize();
    EXPECT_THAT(logLines(), ElementsAre(loading(), starting("RECORDING")));
}

TEST_F(KepClient, AtLevelErrorOnlyErrorsAreLogged)
{
    admit(kLogError);
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(unreadable("No such file or directory"), kNotLoaded));

    forget();
    configureBackend("");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoBackendName));

    forget();
    configureBackend("RADIO");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    configureBackend("RECORDING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_THAT(logLines(), IsEmpty());

    backend().deinitStatus = KEP_STATUS_FAILED;
    client().deinitialize();
    EXPECT_THAT(logLines(), ElementsAre(kNotStopped));
}

TEST_F(KepClient, BelowLevelErrorNothingIsLogged)
{
    start();
    admit(kLogError - 1);
    backend().deinitStatus = KEP_STATUS_FAILED;
    EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED);
    configure("[]");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), IsEmpty());
}
