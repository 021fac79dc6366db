// SPDX-License-Identifier: Apache-2.0
#include "kepalsaaudio.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "journal.h"
#include "kepfactory.h"
#include "keplog.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr const char* kSwitch = "name='Master Playback Switch'";
constexpr const char* kVolume = "name='Master Playback Volume'";

bool isRegistered()
{
    return kepFactory::getInstance()->getRegistry().count("ALSA") != 0;
}

kepAlsaAudio& backend()
{
    return static_cast<kepAlsaAudio&>(*kepAlsaAudio::createObject());
}

LogLine debugOf(const std::string& function, const std::string& text)
{
    return {kLogDebug, "", "kepalsaaudio:" + function, text};
}

LogLine volumeError(const std::string& function, const std::string& text)
{
    return {kLogError, "SET_VOLUME_ERROR", "kepalsaaudio:" + function, text};
}

LogLine writing(const std::string& card, const std::string& control, const std::string& value)
{
    return debugOf("setControl", "snd_ctl_open on card " + card + ", control " + control +
                                     " value=" + value + "\n");
}

/// A request with what it has to write and to log, as far as it gets.
struct Request {
    unsigned int (*send)();
    const char* element;
    int value;
    std::vector<LogLine> before; // logged in front of the write
    std::string control;
    std::string text; // of the value
    LogLine failure;  // in case the write fails, on card "default"
};

Request softmaster(unsigned int (*send)(), const std::string& suffix, int resource, bool mute,
                   std::vector<LogLine> before = {})
{
    const std::string control = "name=Softmaster" + suffix;
    const std::string text = mute ? "0%" : "100%";
    before.push_back(
        debugOf("resetMixerVolume", "reset volume  resource=" + std::to_string(resource) +
                                        " mute=" + (mute ? "1" : "0")));
    const char* element = suffix.empty()  ? "Softmaster"
                          : suffix == "0" ? "Softmaster0"
                                          : "Softmaster1";
    return {send,
            element,
            mute ? 0 : 100,
            std::move(before),
            control,
            text,
            volumeError("resetMixerVolume",
                        "Failed to set control " + control + " to " + text + " for card:default")};
}

Request connected(unsigned int (*send)(), const std::string& suffix, int resource)
{
    return softmaster(send, suffix, resource, /*mute=*/false,
                      {debugOf("connectInput", "connectInput  " + std::to_string(resource))});
}

Request masterVolume(unsigned int (*send)(), int asked, int written)
{
    const std::string number = std::to_string(asked);
    return {send,
            "Master Playback Volume",
            written,
            {debugOf("setVolume", "In setVolume, setting volume to " + number + "%")},
            kVolume,
            number + "%",
            volumeError("setOutputVolume", "Failed setting volume to " + number)};
}

Request masterMute(unsigned int (*send)(), bool mute)
{
    const std::string text = mute ? "off" : "on";
    return {send,
            "Master Playback Switch",
            mute ? 0 : 1,
            {debugOf("setOutputMute",
                     std::string{"In setOutputMute, setting mute to "} + (mute ? "1" : "0"))},
            kSwitch,
            text,
            volumeError("setOutputMute", "Failed to set mute " + text + " for card:default" +
                                             ", control:" + kSwitch)};
}

JValue attribute()
{
    JValue value = JValue::object();
    value.put("stream", "kepgame");
    return value;
}

// clang-format off
const Request kRequests[] = {
    connected([] { return backend().connectInput("AMIXER", "ALSA", attribute()); }, "0", 20),
    connected([] { return backend().connectInput("AMIXER", "ALSA", JValue::invalid()); }, "0", 20),
    connected([] { return backend().connectInput("ADEC", "MAIN", attribute()); }, "", 255),
    connected([] { return backend().connectInput("AMIXER", "MAIN", JValue{}); }, "", 255),
    connected([] { return backend().connectInput("", "", JValue{}); }, "", 255),
    softmaster([] { return backend().disconnectInput("AMIXER", "ALSA"); }, "0", 20, true),
    softmaster([] { return backend().disconnectInput("ADEC", "MAIN"); }, "", 255, true),
    softmaster([] { return backend().setMute("AMIXER", "ALSA", true); }, "0", 20, true),
    softmaster([] { return backend().setMute("AMIXER", "ALSA", false); }, "0", 20, false),
    softmaster([] { return backend().setMute("ADEC", "MAIN", true); }, "", 255, true),
    softmaster([] { return backend().setMute("ADEC", "MAIN", false); }, "", 255, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER0, true); }, "0", 20, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER0, false); }, "0", 20, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER1, true); }, "1", 21, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER1, false); }, "1", 21, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER2, false); }, "", 22, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER7, true); }, "", 27, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_ADEC0, false); }, "", 8, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_ADEC1, true); }, "", 9, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_INVALID, false); }, "", 255, false),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 0); }, 0, 0),
    masterVolume([] { return backend().setOutputVolume("", 0); }, 0, 0),
    masterVolume([] { return backend().setOutputVolume("no such output", 1); }, 1, 1),
    masterVolume([] { return backend().setOutputVolume("headphone", 35); }, 35, 35),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 100); }, 100, 100),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 255); }, 255, 100), // no more than all
    masterMute([] { return backend().setOutputMute("tv_speaker", true); }, true),
    masterMute([] { return backend().setOutputMute("tv_speaker", false); }, false),
    masterMute([] { return backend().setOutputMute("", true); }, true),
};

struct FailureRow {
    const char* stage;
    int status;
    const char* text;
    int opened;
};
constexpr FailureRow kFailures[] = {
    {"open",  -19, "Control default open error: No such device\n",                                              0},
    {"open",  -13, "Control default open error: Permission denied\n",                                           0},
    {"info",   -6, "Cannot find the given element from control default, error No such device or address\n",     1},
    {"write",  -5, "Control default element write error: Input/output error\n",                                 1},
};

struct ResourceRow {
    const char* source;
    const char* sink;
    KEP_AUDIO_RESOURCE_T resource;
};
constexpr ResourceRow kResources[] = {
    {"AMIXER",  "ALSA",   KEP_AUDIO_RESOURCE_AMIXER0},
    {"amixer",  "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "alsa",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER0", "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "ALSA ",  KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "MAIN",   KEP_AUDIO_RESOURCE_INVALID},
    {"ADEC",    "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"ADEC",    "MAIN",   KEP_AUDIO_RESOURCE_INVALID},
    {"ALSA",    "AMIXER", KEP_AUDIO_RESOURCE_INVALID},
    {"",        "",       KEP_AUDIO_RESOURCE_INVALID},
};
// clang-format on

class KepAlsaAudio : public TelevisionTest
{
protected:
    KepAlsaAudio() { connectLog(); }

    /// Creates the backend on the card and the control names of this file and forgets that.
    void create(const std::string& card = "default",
                const std::string& mute = "'Master Playback Switch'",
                const std::string& volume = "'Master Playback Volume'")
    {
        writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": ")" + card +
                                           R"(", "muteControlName": ")" + mute +
                                           R"(", "volumeControlName": ")" + volume + R"("}})");
        ASSERT_NE(kepAlsaAudio::createObject(), nullptr);
        forget();
        mStart = virtualtv::cardHandles();
    }
    /// Expects this many cards opened since `create`, and every one of them closed again.
    void expectHandles(int opened, const std::string& what)
    {
        const virtualtv::HandleCount now = virtualtv::cardHandles();
        EXPECT_EQ(now.opened - mStart.opened, opened) << what;
        EXPECT_EQ(now.closed - mStart.closed, opened) << what;
        mStart = now;
    }
    [[nodiscard]] LogLine path(const std::string& file) const
    {
        return debugOf("getConfigFilePath", "KEP Configuration file path: " + file);
    }

private:
    virtualtv::HandleCount mStart = virtualtv::cardHandles();
};

/// What a process that ends says, on standard error: each log message, with whether the backend is
/// still registered at that time.
void sayGoodbye()
{
    LogSetSink([](const LogMessage& message) {
        fprintf(stderr, "%d [%s] %s, registered: %d\n", message.level, message.id, message.text,
                isRegistered());
    });
    std::exit(0); // NOLINT: the static objects are to be destroyed
}

} // namespace

// --- Registration and life cycle

TEST_F(KepAlsaAudio, TheBackendIsRegisteredWhenTheLibraryIsLoaded)
{
    EXPECT_TRUE(kepAlsaAudio::mIsObjRegistered);
    ASSERT_TRUE(isRegistered());
    EXPECT_EQ(kepFactory::getInstance()->getRegistry().at("ALSA"), &kepAlsaAudio::createObject);
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepAlsaAudio, EveryCreationGivesTheOneBackend)
{
    kepAudio* created = kepAlsaAudio::createObject();
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(kepAlsaAudio::createObject(), created);
    EXPECT_EQ(kepFactory::getInstance()->createKEPAudioObj("ALSA"), created);
    EXPECT_EQ(kepFactory::getInstance()->createKEPAudioObj("ALSA"), created);
}

TEST_F(KepAlsaAudio, ABackendThatCouldNotRegisterDeclines)
{
    kepAlsaAudio::mIsObjRegistered = false;
    EXPECT_EQ(kepAlsaAudio::createObject(), nullptr);
    EXPECT_EQ(kepFactory::getInstance()->createKEPAudioObj("ALSA"), nullptr);
    EXPECT_THAT(logLines(), IsEmpty());

    kepAlsaAudio::mIsObjRegistered = true;
    EXPECT_NE(kepAlsaAudio::createObject(), nullptr);
    kepAlsaAudio::mIsObjRegistered = false;
    EXPECT_EQ(kepAlsaAudio::createObject(), nullptr);
}

TEST_F(KepAlsaAudio, CreationReadsTheCapabilityFileOnce)
{
    const std::string file = directory() / "device-cap.json";
    writeConfig("device-cap.json", "{}");
    kepAlsaAudio::createObject();
    EXPECT_THAT(logLines(),
                ElementsAre(path(file),
                            LogLine{kLogInfo, "LOAD_CONFIG", "devicecapability:loadDeviceConfig",
                                    "Loading static DeviceCapability from file " + file},
                            LogLine{kLogDebug, "", "devicecapability:loadDeviceConfig",
                                    "Did not find  audioMasterDefault"}));
    forget();
    kepAlsaAudio::createObject();
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepAlsaAudio, TheCapabilityFileLiesBesideTheConfiguration)
{
    EXPECT_EQ(kepAlsaAudio::getConfigFilePath(), directory() / "device-cap.json");
    EXPECT_THAT(logLines(), ElementsAre(path(directory() / "device-cap.json")));
}

TEST_F(KepAlsaAudio, WithoutAReplacementTheSystemsDirectoryIsRead)
{
    const std::string expected = "/etc/orva/kep/device-cap.json";
    setenv("KEP_CONFIG_DIR", "", 1);
    EXPECT_EQ(kepAlsaAudio::getConfigFilePath(), expected);
    unsetenv("KEP_CONFIG_DIR");
    EXPECT_EQ(kepAlsaAudio::getConfigFilePath(), expected);
    EXPECT_THAT(logLines(), ElementsAre(path(expected), path(expected)));
}

TEST_F(KepAlsaAudio, AtTheEndTheBackendUnregistersAndThenSaysSo)
{
    EXPECT_EXIT(
        {
            create();
            sayGoodbye();
        },
        testing::ExitedWithCode(0),
        testing::MatchesRegex("7 \\[\\] kepalsaaudio:~kepAlsaAudio\\([0-9]+\\) "
                              "UnRegister kepAlsaAudio \\.\\.\\., registered: 0\n"));
}

TEST_F(KepAlsaAudio, AtLevelInfoTheEndIsSilent)
{
    EXPECT_EXIT(
        {
            create();
            admit(kLogInfo);
            sayGoodbye();
        },
        testing::ExitedWithCode(0), testing::StrEq(""));
}

TEST_F(KepAlsaAudio, ABackendThatWasNeverCreatedEndsSilently)
{
    EXPECT_EXIT(sayGoodbye(), testing::ExitedWithCode(0), testing::StrEq(""));
}

// --- What is written

TEST_F(KepAlsaAudio, EachRequestIsOneWriteOfOneControl)
{
    create();
    for (const Request& request : kRequests) {
        forget();
        const std::string& what = request.before.back().text;
        EXPECT_EQ(request.send(), KEP_RESULT_OK) << what;
        EXPECT_THAT(controlEvents(),
                    ElementsAre(ControlEvent{"default", request.element, {request.value}, 0}))
            << what;
        expectHandles(1, what);
    }
}

TEST_F(KepAlsaAudio, EachRequestLogsWhatItWrites)
{
    create();
    for (const Request& request : kRequests) {
        forget();
        request.send();
        std::vector<LogLine> expected = request.before;
        expected.push_back(writing("default", request.control, request.text));
        EXPECT_THAT(logLines(), ElementsAreArray(expected));
    }
}

TEST_F(KepAlsaAudio, OnlyOneSourceBehindOneSinkHasAResource)
{
    for (const ResourceRow& row : kResources)
        EXPECT_EQ(kepAlsaAudio::getResourceId(row.source, row.sink), row.resource)
            << row.source << " / " << row.sink;
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepAlsaAudio, SetVolumeWritesPercent)
{
    create();
    EXPECT_TRUE(backend().setVolume(35));
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Volume", {35}, 0}));
    EXPECT_THAT(logLines(), ElementsAre(debugOf("setVolume", "In setVolume, setting volume to 35%"),
                                        writing("default", kVolume, "35%")));
}

TEST_F(KepAlsaAudio, SetVolumeLogsNoErrorOfItsOwn)
{
    create();
    injectCard("write", -5);
    EXPECT_FALSE(backend().setVolume(35));
    EXPECT_THAT(logLines(kLogError), IsEmpty());
}

TEST_F(KepAlsaAudio, WithoutACapabilityFileTheDefaultsAreWritten)
{
    ASSERT_NE(kepAlsaAudio::createObject(), nullptr);
    EXPECT_EQ(backend().setOutputMute("", false), KEP_RESULT_OK);
    EXPECT_EQ(backend().setOutputVolume("", 7), KEP_RESULT_OK);
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Switch", {1}, 0},
                            ControlEvent{"default", "Master Playback Volume", {7}, 0}));
}

TEST_F(KepAlsaAudio, ControlNamesComeFromTheCapabilityFile)
{
    create("default", "Softmaster1", "'Softmaster'");
    EXPECT_EQ(backend().setOutputVolume("", 7), KEP_RESULT_OK);
    backend().setOutputMute("", true);
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"default", "Softmaster", {7}, 0},
                                             ControlEvent{"default", "Softmaster1", {0}, 0}));
    EXPECT_EQ(logLines().back(), writing("default", "name=Softmaster1", "off"));
}

TEST_F(KepAlsaAudio, TheCardComesFromTheCapabilityFile)
{
    create("hw:0", "'Sndout Close'", "'Sndout Open'");
    EXPECT_EQ(backend().setOutputVolume("", 100), KEP_RESULT_OK);
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Sndout Open", {INT_MAX}, 0}));
    EXPECT_EQ(logLines().back(), writing("hw:0", "name='Sndout Open'", "100%"));

    forget(); // a card without the control
    EXPECT_EQ(backend().connectInput("AMIXER", "ALSA", JValue{}), KEP_RESULT_FAILED);
    EXPECT_THAT(controlEvents(), IsEmpty());
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("connectInput", "connectInput  20"),
                    debugOf("resetMixerVolume", "reset volume  resource=20 mute=0"),
                    writing("hw:0", "name=Softmaster0", "100%"),
                    debugOf("setControl", "Cannot find the given element from control hw:0, "
                                          "error No such file or directory\n"),
                    volumeError("resetMixerVolume",
                                "Failed to set control name=Softmaster0 to 100% for card:hw:0")));
    expectHandles(2, "hw:0");
}

// --- Failures

TEST_F(KepAlsaAudio, EachFailedStageIsToldOnceAndTheCardIsClosed)
{
    create();
    for (const FailureRow& row : kFailures) {
        for (const Request& request : kRequests) {
            clearInjections();
            injectCard(row.stage, row.status);
            forget();
            EXPECT_EQ(request.send(), KEP_RESULT_FAILED) << row.text << request.failure;
            std::vector<LogLine> expected = request.before;
            expected.push_back(writing("default", request.control, request.text));
            expected.push_back(debugOf("setControl", row.text));
            expected.push_back(request.failure);
            EXPECT_THAT(logLines(), ElementsAreArray(expected));
            EXPECT_EQ(controlEvents().size(), 1U) << row.text;
            EXPECT_EQ(controlEvents().back().status, row.status) << row.text;
            expectHandles(row.opened, row.text);
        }
    }
}

TEST_F(KepAlsaAudio, TheWriteAfterAFailureStartsAfresh)
{
    create();
    for (const FailureRow& row : kFailures) {
        injectCard(row.stage, row.status);
        EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED) << row.text;
        clearInjections();
        forget();
        EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_OK) << row.text;
        EXPECT_THAT(controlEvents(),
                    ElementsAre(ControlEvent{"default", "Master Playback Volume", {35}, 0}));
        expectHandles(row.opened + 1, row.text);
    }
}

TEST_F(KepAlsaAudio, ACardThatDoesNotExistFails)
{
    create("hw:9");
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("setOutputMute", "In setOutputMute, setting mute to 1"),
                    writing("hw:9", kSwitch, "off"),
                    debugOf("setControl", "Control hw:9 open error: No such file or directory\n"),
                    volumeError("setOutputMute", std::string{"Failed to set mute off for "
                                                             "card:hw:9, control:"} +
                                                     kSwitch)));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(0, "hw:9");
}

TEST_F(KepAlsaAudio, ACardWithoutANameIsNotOpened)
{
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": 0,
        "muteControlName": "'Master Playback Switch'", "volumeControlName": "Softmaster"}})");
    ASSERT_NE(kepAlsaAudio::createObject(), nullptr);
    forget();
    EXPECT_EQ(backend().connectInput("AMIXER", "ALSA", JValue{}), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("connectInput", "connectInput  20"),
                    debugOf("resetMixerVolume", "reset volume  resource=20 mute=0"),
                    debugOf("setControl", "Wrong input parameter\n"),
                    volumeError("resetMixerVolume",
                                "Failed to set control name=Softmaster0 to 100% for card:")));
    expectHandles(0, "no name");
}

TEST_F(KepAlsaAudio, AControlNameThatIsNoIdentifierIsNotWritten)
{
    create("default", "x,bogus=1", "x,numid=none");
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("setOutputMute", "In setOutputMute, setting mute to 1"),
                    debugOf("setControl", "Wrong control identifier: name=x,bogus=1\n"),
                    volumeError("setOutputMute",
                                "Failed to set mute off for card:default, control:name=x,bogus=1"),
                    debugOf("setVolume", "In setVolume, setting volume to 35%"),
                    debugOf("setControl", "Wrong control identifier: name=x,numid=none\n"),
                    volumeError("setOutputVolume", "Failed setting volume to 35")));
    expectHandles(0, "no identifier");
}

TEST_F(KepAlsaAudio, AtLevelErrorAFailureIsOneLine)
{
    create();
    admit(kLogError);
    for (const Request& request : kRequests) {
        clearInjections();
        forget();
        request.send();
        EXPECT_THAT(logLines(), IsEmpty()) << request.failure;
        injectCard("open", -19);
        request.send();
        EXPECT_THAT(logLines(), ElementsAre(request.failure));
    }
}

// --- setControl

TEST_F(KepAlsaAudio, SetControlWritesOnceAndClosesTheCard)
{
    EXPECT_TRUE(kepAlsaAudio::setControl("default", kSwitch, "on"));
    EXPECT_TRUE(kepAlsaAudio::setControl("default", "name=Softmaster1", "35%"));
    EXPECT_TRUE(kepAlsaAudio::setControl("hw:0", "name='Sndout Connect'", "1,2,3"));
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Switch", {1}, 0},
                            ControlEvent{"default", "Softmaster1", {35}, 0},
                            ControlEvent{"hw:0", "Sndout Connect", {1, 2, 3}, 0}));
    EXPECT_THAT(logLines(), ElementsAre(writing("default", kSwitch, "on"),
                                        writing("default", "name=Softmaster1", "35%"),
                                        writing("hw:0", "name='Sndout Connect'", "1,2,3")));
    expectHandles(3, "three writes");
}

TEST_F(KepAlsaAudio, SetControlTakesNoEmptyString)
{
    const LogLine wrong = debugOf("setControl", "Wrong input parameter\n");
    EXPECT_FALSE(kepAlsaAudio::setControl("", kSwitch, "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "", "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", kSwitch, ""));
    EXPECT_FALSE(kepAlsaAudio::setControl("", "", ""));
    EXPECT_THAT(logLines(), ElementsAre(wrong, wrong, wrong, wrong));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(0, "empty");
}

TEST_F(KepAlsaAudio, SetControlTakesNoWrongIdentifier)
{
    for (const char* control : {"Master Playback Switch", "numid=", "numid=0",
                                "iface=BOGUS,name=Softmaster", " ", "%s"}) {
        forget();
        EXPECT_FALSE(kepAlsaAudio::setControl("default", control, "on")) << control;
        EXPECT_THAT(logLines(),
                    ElementsAre(debugOf("setControl", std::string{"Wrong control identifier: "} +
                                                          control + "\n")));
    }
    expectHandles(0, "wrong identifier");
}

TEST_F(KepAlsaAudio, SetControlFindsNoUnknownElement)
{
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "name=Nobody", "on"));
    EXPECT_THAT(logLines(),
                ElementsAre(writing("default", "name=Nobody", "on"),
                            debugOf("setControl", "Cannot find the given element from control "
                                                  "default, error No such file or directory\n")));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(1, "unknown element");
}

TEST_F(KepAlsaAudio, SetControlLogsFailuresAtDebugLevelOnly)
{
    admit(kLogInfo);
    for (const FailureRow& row : kFailures) {
        clearInjections();
        injectCard(row.stage, row.status);
        EXPECT_FALSE(kepAlsaAudio::setControl("default", kSwitch, "on")) << row.text;
    }
    EXPECT_FALSE(kepAlsaAudio::setControl("", kSwitch, "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "bogus", "on"));
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- What a plain mixer has nothing to do for

TEST_F(KepAlsaAudio, StartAndStopDoNothingAndSucceed)
{
    create();
    EXPECT_EQ(backend().initAudio(), KEP_STATUS_OK);
    EXPECT_EQ(backend().initSpeaker(), KEP_STATUS_OK);
    EXPECT_EQ(backend().deinitAudio(), KEP_STATUS_OK);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    expectHandles(0, "start and stop");
}

TEST_F(KepAlsaAudio, RequestsWithoutAMeaningDoNothingAndSucceed)
{
    create();
    for (const char* text : {"", "tv_speaker", "AMIXER"}) {
        EXPECT_EQ(backend().setSoundOutput(text), KEP_RESULT_OK);
        EXPECT_EQ(backend().setInputVolume(text, "ALSA", 255), KEP_RESULT_OK);
        EXPECT_EQ(backend().setSettings(text, attribute()), KEP_RESULT_OK);
        EXPECT_EQ(backend().setSettings(text, JValue::invalid()), KEP_RESULT_OK);
    }
    for (const bool mute : {false, true})
        EXPECT_EQ(backend().setMuteExtSPK(mute), KEP_RESULT_OK);
    EXPECT_EQ(backend().setQualityAttribute(attribute()), KEP_RESULT_OK);
    EXPECT_EQ(backend().setQualityAttribute(JValue{}), KEP_RESULT_OK);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    expectHandles(0, "requests without a meaning");
}

TEST_F(KepAlsaAudio, EveryQueryIsAnsweredByTrue)
{
    create();
    for (const char* category : {"", "audioEQ", "no such category"}) {
        const JValue answer = backend().getSettings(category, attribute());
        EXPECT_TRUE(answer.isBool()) << category;
        EXPECT_TRUE(answer.asBool()) << category;
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepAlsaAudio, ThereIsNeverAHeadphone)
{
    create();
    bool connected = true;
    EXPECT_EQ(backend().getHeadphoneStatus(&connected), KEP_RESULT_OK);
    EXPECT_FALSE(connected);
    EXPECT_THAT(logLines(), ElementsAre(debugOf("getHeadphoneStatus", "In getHeadphoneStatus ")));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(KepAlsaAudio, RemovingAPipelineIsLoggedOnly)
{
    create();
    EXPECT_EQ(backend().removePipelineInfo("pipeline 7"), KEP_RESULT_OK);
    EXPECT_THAT(logLines(), ElementsAre(debugOf("removePipelineInfo", "In removePipelineInfo ")));
    EXPECT_THAT(events(), IsEmpty());
}
