// SPDX-License-Identifier: Apache-2.0
// The mixer backend: its registration and its life, what each request writes, and what it has
// nothing to do for.
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "alsaaudiotest.h"
#include "kepalsaaudio.h"
#include "kepfactory.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

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
