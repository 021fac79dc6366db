// SPDX-License-Identifier: Apache-2.0
// The client: starting and stopping the backend, and starting it again.
#include <string>

#include <gmock/gmock.h>

#include "clienttest.h"
#include "kepalsaaudio.h"
#include "kepclient.h"
#include "kepfactory.h"
#include "keplog.h"
#include "keptvaudio.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

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
