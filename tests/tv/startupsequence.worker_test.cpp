// SPDX-License-Identifier: Apache-2.0
// Start-up: gains that the worker writes again, the timer of the cold start, and the worker beside
// the caller.
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "keptvaudio.h"
#include "startuptest.h"

using testing::ElementsAre;
using testing::SizeIs;

// --- The gains that could not be written before

TEST_F(StartupGains, AreWrittenAgainWhenTheFirstOnesFailed)
{
    for (const char* element : {"Gain Input", "Gain Output"}) {
        backend().deinitAudio();
        backend().mIsInitGainAudioUpdate = false;
        virtualtv::inject({virtualtv::FaultPoint::CardWrite, element, "", -EIO, 1});
        start();
        clearInjections();
        std::vector<std::string> more = {kRetry};
        more.insert(more.end(), kGains.begin(), kGains.end());
        EXPECT_EQ(live(), insertedBehind(kWholeLife, kTimerStarted, more)) << element;
        cancelTimer();
        EXPECT_EQ(live(), kWholeLife) << element << ", which has been written now";
        cancelTimer();
    }
}

TEST_F(StartupGains, AreTriedByEachLifeUntilTheyAreWritten)
{
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Input", "", -EIO, 1});
    start();
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Input", "", -EIO, 1});
    std::vector<std::string> more = {kRetry};
    more.insert(more.end(), kGains.begin(), kGains.end());
    more[2] += " -> -5";
    more.insert(more.begin() + 3, {kWriteError, "3 CONTROL_ELEMENT_SET_ERROR "
                                                "keptvaudio:initGainAudio Did not able to "
                                                "set the element Gain Input"});
    more.back().back() = '0';
    EXPECT_EQ(live(), insertedBehind(kWholeLife, kTimerStarted, more));
    cancelTimer();
    live();
    EXPECT_EQ(count(kRetry), 1);
    EXPECT_TRUE(backend().mIsInitGainAudioUpdate);
}

TEST_F(StartupGains, AreThoseOfAllThatIsConnectedByThen)
{
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Output", "", -EIO, 1});
    start();
    EXPECT_EQ(backend().setSoundOutput("tv_speaker"), kDone);
    EXPECT_EQ(backend().connectInput("ADEC1", "MAIN", JValue::object()), kDone);
    std::vector<std::string> gains;
    for (const std::string& line : live())
        if (line.starts_with("Gain "))
            gains.push_back(line);
    EXPECT_THAT(gains, ElementsAre("Gain Input 16 5 8388608", "Gain Input 16 6 8388608",
                                   "Gain Input 16 7 8388608", "Gain Input 1 1 8388608",
                                   "Gain Output 1 8388608"));
}

// --- The timer of the cold start

TEST_F(ColdStartTimer, IsOneOfFiveSecondsForThisBackend)
{
    start();
    live();
    const std::vector<Timer> timers = startedTimers();
    ASSERT_THAT(timers, SizeIs(1));
    EXPECT_EQ(timers[0].intervalMs, 5000U);
    EXPECT_EQ(timers[0].callback, &kepTVAudio::_headphoneUnmuteAcOnCallback);
    EXPECT_EQ(timers[0].data, static_cast<kepTVAudio*>(&backend()));
    EXPECT_EQ(OpenBackend::mHeadphoneUnmuteTimerID, timers[0].id);
    EXPECT_FALSE(OpenBackend::mHeadphoneTimerMuteDone);
    EXPECT_EQ(backend().setSettings("headphoneDetectionMute", json(R"({"mute":false})")), kDone);
    EXPECT_EQ(
        count(headphone("setHeadphoneDetectionMute To avoid noise Headphone timer is running, "
                        "so skip headphone unmute")),
        1);
}

TEST_F(ColdStartTimer, IsNotStartedWhileOneIsPending)
{
    start();
    live();
    EXPECT_EQ(live(), without(kWholeLife, {kTimerStarted}));
    EXPECT_THAT(startedTimers(), SizeIs(1));
    cancelTimer();

    // Whoever has started it.
    OpenBackend::mHeadphoneUnmuteTimerID = 4711;
    EXPECT_EQ(live(), without(kWholeLife, {kTimerStarted}));
    EXPECT_EQ(OpenBackend::mHeadphoneUnmuteTimerID, 4711U);
    EXPECT_THAT(startedTimers(), SizeIs(1));
    OpenBackend::mHeadphoneUnmuteTimerID = 0;
}

TEST_F(ColdStartTimer, UnmutesTheHeadphoneThatIsCurrentWhenItFires)
{
    const std::vector<std::string> fired = {
        headphone("_headphoneUnmuteAcOnCallback In _headphoneUnmuteAcOnCallback"),
        headphone("_headphoneUnmuteAcOnCallback Headphone Unmute Timer will be removed during AC "
                  "On"),
    };
    const std::vector<std::string> unmuted = {
        headphone("setMuteHeadphone Called setMuteHeadphone muteStatus 0"),
        headphone("setMuteHeadphone Called setMuteHeadphone mHeadphoneMuteStatus 0"),
        headphone("executeMuteHeadphone Called execute muteHeadphone muteStatus 0"),
        headphone("isValidHeadphoneMute isValidHeadphoneMute check 0 0 0"),
        "subcpu_misc_Set_HPMuteOnOff false",
        "Mute Output 16 0",
    };
    gTimersFireSoon = true;
    start();
    for (const KEP_AUDIO_SNDOUT_T output :
         {KEP_AUDIO_SPK, KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_ARC}) {
        const bool unmutes = output == KEP_AUDIO_HP || output == KEP_AUDIO_SPK_HP;
        OpenBackend::mHeadphoneTimerMuteDone = false;
        backend().mCurrentSoundout = output;
        live();
        mRecorder->forget();
        const auto end = std::chrono::steady_clock::now() + kDeadline;
        while (OpenBackend::mHeadphoneUnmuteTimerID != 0 && std::chrono::steady_clock::now() < end)
            g_main_context_iteration(nullptr, /*may_block=*/FALSE);
        std::vector<std::string> expected = fired;
        if (unmutes)
            expected.insert(expected.end(), unmuted.begin(), unmuted.end());
        EXPECT_EQ(callerDid(), expected) << output;
        EXPECT_TRUE(OpenBackend::mHeadphoneTimerMuteDone);
        EXPECT_EQ(backend().getMuteHeadphone(), !unmutes);
        for (const Timer& timer : startedTimers())
            EXPECT_EQ(g_main_context_find_source_by_id(nullptr, timer.id), nullptr);
    }
}

// --- Beside the caller

namespace
{

/// All kinds of requests, thousands in all, while one worker after the other goes through its life.
void storm(int lives)
{
    struct Request {
        const char* category;
        const char* payload;
    };
    constexpr Request kRequests[] = {
        {"sound", R"({"soundMode":"movie","autoVolume":"on","audioBalance":3})"},
        {"sound", R"({"soundOutputDigital":"auto"})"},
        {"smartSoundMode", R"({"smartSoundMode":"on","avSync":"on","avSyncSpeaker":5})"},
        {"hardwareConfig", R"({"tv.hw.countryType":"JP"})"},
        {"hardwareConfig", R"({"tv.hw.countryType":"KR","tv.model.ampChipType":"x"})"},
        {"hardwareConfig", "[]"},
        {"soundOutputMode", R"({"soundOutput":"tv_speaker","mode":"auto"})"},
        {"forceOutput", R"({"forceOutputDDPLUS":"true"})"},
        {"setMixer", R"({"mix":true})"},
        {"scms", R"({"copyright":"once"})"},
        {"powerState", R"({"powerState":"opticLightOn"})"},
        {"audioEQ", R"({"status":"on"})"},
        {"soundEngine", R"({"status":"on"})"},
        {"dolbyAtmos", R"({"dolbyAtmos":"on"})"},
        {"amplifier", R"({"tv.model.ampChipType":"a","ampChipType":"b"})"},
        {"amplifierState", R"({"ampType":"woofer","status":"on"})"},
        {"prepareResume", R"({"prepareResume":true,"status":true})"},
        {"audioVideoSync", R"({"audioVideoSync":4,"value":4})"},
        {"offsetDelay", R"({"offsetValue":4,"operationType":"x"})"},
        {"option", R"({"tv.zib.tvBroadcastSystem":"ATSC","supportATMOS":"on"})"},
        {"picture", R"({"a":"b"})"},
        {"other", R"({"supportBnoModel":true})"},
        {"powerStateMute", R"({"soundOutput":"headphone","mute":true})"},
        {"powerStateMute", R"({"soundOutput":"headphone","mute":false})"},
        {"headphoneDetectionMute", R"({"mute":true})"},
        {"headphoneDetectionMute", R"({"mute":false})"},
    };
    constexpr const char* kOutputs[] = {"tv_speaker", "headphone", "external_arc",
                                        "tv_speaker_headphone"};
    const auto settings = [](const char* category, const char* payload) {
        backend().setSettings(category, json(payload));
    };
    for (int life = 0; life < lives; ++life) {
        if (life % 2 == 0)
            backend().mIsInitGainAudioUpdate = false; // the retry walks the connected resources
        settings("contiConfig", R"({"tv.zib.tvBroadcastSystem":"DVB"})");
        settings("hardwareConfig", "{}");
        settings("modelConfig", "{}");
        const std::string output = kOutputs[life % 4];
        for (int i = 0; i < 50; ++i) {
            const Request& request =
                kRequests[static_cast<std::size_t>(life * 7 + i) % std::size(kRequests)];
            settings(request.category, request.payload);
            switch (i % 10) {
            case 0:
                backend().setSoundOutput(output);
                break;
            case 1:
                backend().connectInput(i % 4 == 1 ? "ADEC0" : "AMIXER2", "MAIN",
                                       json(R"({"pipelineId":"p1","streamType":"movie"})"));
                break;
            case 2:
                backend().setOutputVolume(output, static_cast<std::uint8_t>(i));
                backend().setInputVolume("ADEC0", "MAIN", static_cast<std::uint8_t>(i));
                break;
            case 3:
                backend().setMute("ADEC0", "MAIN", i % 4 == 3);
                backend().setOutputMute(output, i % 4 == 3);
                backend().setMuteExtSPK(i % 4 == 3);
                break;
            case 4:
                backend().setQualityAttribute(
                    json(R"({"requestType":"setAudioInputInfo","pipelineInfo":{"pipelineId":"p1",)"
                         R"("source":"ADEC0","sink":"MAIN"},"categoryInfo":{"codec":"ac3"}})"));
                break;
            case 5:
                backend().getSettings("sound", JValue::object());
                backend().getSettings("amplifierState", JValue::object());
                break;
            case 6:
                backend().disconnectInput(i % 4 == 1 ? "ADEC0" : "AMIXER2", "MAIN");
                backend().removePipelineInfo("p1");
                break;
            case 7:
                backend().deinitAudio();
                backend().initAudio();
                break;
            case 8:
                backend().setActiveState(i % 4 == 0);
                backend().getActiveState();
                break;
            default:
                g_main_context_iteration(nullptr, /*may_block=*/FALSE);
            }
        }
    }
}

/// Waits until all works that were launched have ended.
bool awaitAllWorks()
{
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (gWorksEnded != gWorksLaunched && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    return gWorksEnded == gWorksLaunched;
}

} // namespace

TEST_F(StartupStorm, OfAllKindsOfRequestsDoesNotDisturbTheWorker)
{
    constexpr int kLives = 10;
    gTimersFireSoon = true; // the callbacks of the timers take part
    start();
    storm(kLives);
    EXPECT_TRUE(awaitAllWorks());
    EXPECT_GE(launches(), kLives);
    EXPECT_EQ(launches(), gWorksLaunched);
    EXPECT_EQ(count(kCompleted), launches());
    const virtualtv::HandleCount handles = virtualtv::cardHandles();
    EXPECT_EQ(handles.opened, handles.closed);
}

TEST_F(StartupStorm, GoesUnrecordedSoThatNoRecordKeepsTheThreadsInStep)
{
    constexpr int kLives = 150;
    gTimersFireSoon = true;
    start();
    admit(0);
    virtualtv::listen({});
    storm(kLives);
    EXPECT_TRUE(awaitAllWorks());
    EXPECT_GE(gWorksLaunched, kLives);
    const virtualtv::HandleCount handles = virtualtv::cardHandles();
    EXPECT_EQ(handles.opened, handles.closed);
}
