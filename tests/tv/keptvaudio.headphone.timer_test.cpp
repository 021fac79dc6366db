// SPDX-License-Identifier: Apache-2.0
// Headphone: the timers after power-on and resume.
#include <string>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "headphonetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Timers

class UnmuteTimer : public HeadphoneTest
{
};

TEST_F(UnmuteTimer, RunsFiveSecondsAfterAResume)
{
    enter({.gate = Gate::NotYet, .prepareResume = true});
    EXPECT_TRUE(mBackend.setPowerStateMute(powerStateMute("headphone", false)));
    EXPECT_THAT(gTimers, ElementsAre(Timer{5000, kResumeCallback, &mBackend}));
    EXPECT_TRUE(isInMainLoop(timer()));
    EXPECT_FALSE(timerDone());
    EXPECT_FALSE(preparesResume());
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), KEP_AUDIO_HP);
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(UnmuteTimer, UnmutesTheRememberedOutput)
{
    struct Row {
        const char* name;
        Texts told;
    };
    const Row rows[] = {
        {"headphone",
         {"subcpu_misc_Set_HPMuteOnOff false", "subcpu_misc_Set_HPMuteOnOff false",
          "Mute Output 16 0"}},
        {"tv_speaker_headphone",
         {"subcpu_misc_Set_HPMuteOnOff false", "subcpu_misc_Set_HPMuteOnOff false",
          "Mute Output 16 0", "Mute Output 1 0", "amplifier.setAmpMute false"}},
    };
    for (const Row& row : rows) {
        enter({.gate = Gate::NotYet, .prepareResume = true, .volume = 25});
        EXPECT_TRUE(mBackend.setPowerStateMute(powerStateMute(row.name, false)));
        EXPECT_THAT(told(), IsEmpty());
        const unsigned int source = timer();
        runTimer();
        EXPECT_EQ(told(), row.told);
        EXPECT_FALSE(isInMainLoop(source));
        EXPECT_TRUE(timerDone());
        EXPECT_EQ(gTimers.size(), 1U);
    }
}

TEST_F(UnmuteTimer, HoldsUnmutesBackFromStandbyToItsEnd)
{
    enter({.volume = 25});
    mBackend.mCurrentSoundout = KEP_AUDIO_HP;
    mBackend.setPowerStateMute(powerStateMute("headphone", true)); // standby
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff true",
                                    "subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1"));
    preparesResume() = true;
    forgetAll();
    mBackend.setPowerStateMute(powerStateMute("headphone", false)); // resume
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/false));
    EXPECT_TRUE(mBackend.setHeadphoneDetectionMute(/*mute=*/false));
    EXPECT_FALSE(mBackend.setPowerStateMute(powerStateMute("headphone", false)));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(gTimers.size(), 1U);

    forgetAll();
    runTimer();
    const Lines ended = {
        said("_resetHeadphoneUnmuteTimerCallback", "In _resetHeadphoneUnmuteTimerCallback"),
        said("_resetHeadphoneUnmuteTimerCallback",
             "Headphone Unmute Timer will be removed while timeout"),
        info("keptvaudioutil:getPopNoiseSoundOutput", "getPopNoiseSoundOutput soundOutput: 32"),
        byPowerState(KEP_AUDIO_HP),
        externalSpeaker(false),
    };
    expect({Texts{"subcpu_misc_Set_HPMuteOnOff false"} + headphoneTold(false),
            ended + decided(kDecisions[0], false)},
           "end of the timer");

    forgetAll();
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/true));
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/false));
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1",
                                    "subcpu_misc_Set_HPMuteOnOff false", "Mute Output 16 0"));
}

TEST_F(UnmuteTimer, LetsMutesThrough)
{
    enter({.gate = Gate::Pending});
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/true));
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1"));
    EXPECT_TRUE(isInMainLoop(timer()));
}

TEST_F(UnmuteTimer, AtItsEndStillAsksForTheReasons)
{
    enter({.detection = true, .gate = Gate::NotYet, .prepareResume = true});
    mBackend.setPowerStateMute(powerStateMute("headphone", false));
    runTimer();
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff false")); // external speaker
}

TEST_F(UnmuteTimer, OfAResumeDuringAResumeIsTheFirstOne)
{
    enter({.gate = Gate::NotYet, .prepareResume = true});
    EXPECT_TRUE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_HP, /*mute=*/false));
    const unsigned int first = timer();
    preparesResume() = true;
    EXPECT_TRUE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_SPK_HP, /*mute=*/false));
    EXPECT_EQ(gTimers.size(), 1U);
    EXPECT_EQ(timer(), first);
    EXPECT_FALSE(preparesResume());
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), KEP_AUDIO_SPK_HP);
    runTimer();
    EXPECT_EQ(told().back(), "Mute Output 1 0"); // the output that was asked for last
}

TEST_F(UnmuteTimer, CanFollowAnother)
{
    for (int resume = 0; resume < 3; ++resume) {
        forgetAll();
        preparesResume() = true;
        EXPECT_TRUE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_HP, /*mute=*/false));
        EXPECT_EQ(gTimers.size(), 1U);
        EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/false));
        EXPECT_THAT(told(), IsEmpty());
        runTimer();
        EXPECT_EQ(told().size(), 3U);
        EXPECT_TRUE(timerDone());
    }
}

TEST_F(UnmuteTimer, IsSharedByAllBackends)
{
    enter({.gate = Gate::Pending});
    OpenBackend other;
    other.initAudio();
    forgetAll();
    EXPECT_TRUE(other.setMuteHeadphone(/*mute=*/false));
    other.mIsPrepareResume = true;
    EXPECT_TRUE(other.setPowerStateHeadphoneMute(KEP_AUDIO_HP, /*mute=*/false));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(gTimers, IsEmpty());
}

TEST_F(UnmuteTimer, IsNotStartedWhileOneIsPending)
{
    enter({.gate = Gate::Pending});
    const unsigned int first = timer();
    EXPECT_FALSE(mBackend.startUnmuteTimer(kResumeCallback));
    EXPECT_EQ(timer(), first);
    EXPECT_THAT(gTimers, IsEmpty());
}

struct CallbackRow {
    GSourceFunc callback;
    const char* function;
    const char* removal;
};
const CallbackRow kCallbacks[] = {
    {kResumeCallback, "_resetHeadphoneUnmuteTimerCallback",
     "Headphone Unmute Timer will be removed while timeout"},
    {kColdStartCallback, "_headphoneUnmuteAcOnCallback",
     "Headphone Unmute Timer will be removed during AC On"},
};

TEST_F(UnmuteTimer, CallbackWithoutATimerDoesNothing)
{
    for (const CallbackRow& row : kCallbacks) {
        for (const Gate gate : {Gate::NotYet, Gate::Done}) {
            for (OpenBackend* backend : {&mBackend, static_cast<OpenBackend*>(nullptr)}) {
                enter({.gate = gate});
                mBackend.mCurrentSoundout = KEP_AUDIO_HP;
                EXPECT_EQ(row.callback(backend), G_SOURCE_REMOVE);
                EXPECT_THAT(told(), IsEmpty());
                EXPECT_THAT(logLines(),
                            ElementsAre(said(row.function, std::string{"In "} + row.function)));
                EXPECT_EQ(timer(), 0U);
                EXPECT_EQ(timerDone(), gate == Gate::Done);
            }
        }
    }
}

TEST_F(UnmuteTimer, CallbackWithoutABackendOnlyEndsTheTimer)
{
    for (const CallbackRow& row : kCallbacks) {
        enter({.gate = Gate::Pending});
        const unsigned int source = timer();
        EXPECT_TRUE(isInMainLoop(source));
        EXPECT_EQ(row.callback(nullptr), G_SOURCE_REMOVE);
        EXPECT_FALSE(isInMainLoop(source));
        EXPECT_EQ(timer(), 0U);
        EXPECT_TRUE(timerDone());
        EXPECT_THAT(told(), IsEmpty());
        EXPECT_THAT(logLines(), ElementsAre(said(row.function, std::string{"In "} + row.function),
                                            said(row.function, row.removal)));
    }
}

TEST_F(UnmuteTimer, CallbackEndsTheTimerBeforeItUnmutes)
{
    for (const CallbackRow& row : kCallbacks) {
        enter({.gate = Gate::NotYet});
        mBackend.mCurrentSoundout = KEP_AUDIO_HP;
        startTimer(row.callback);
        forget();
        const unsigned int source = timer();
        EXPECT_EQ(row.callback(&mBackend), G_SOURCE_REMOVE);
        EXPECT_FALSE(isInMainLoop(source));
        EXPECT_EQ(timer(), 0U);
        EXPECT_TRUE(timerDone());
        EXPECT_EQ(told().back(), "Mute Output 16 0"); // neither gate was in the way
    }
}

TEST_F(UnmuteTimer, OfTheColdStartUnmutesTheHeadphoneWhenItIsCurrent)
{
    for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
        enter({.status = true, .gate = Gate::NotYet});
        mBackend.mCurrentSoundout = current;
        startTimer(kColdStartCallback);
        EXPECT_THAT(gTimers, ElementsAre(Timer{5000, kColdStartCallback, &mBackend}));
        forgetAll();
        runTimer();
        Outcome outcome;
        outcome.logged = {said("_headphoneUnmuteAcOnCallback", "In _headphoneUnmuteAcOnCallback"),
                          said("_headphoneUnmuteAcOnCallback",
                               "Headphone Unmute Timer will be removed during AC On")};
        const bool unmutes = current == KEP_AUDIO_HP || current == KEP_AUDIO_SPK_HP;
        if (unmutes) {
            outcome.told = headphoneTold(false);
            outcome.logged = outcome.logged + muteAskedFor(false) + decided(kDecisions[0], false);
        }
        expect(outcome, std::to_string(current));
        EXPECT_EQ(mBackend.getMuteHeadphone(), !unmutes);
        EXPECT_TRUE(timerDone());
    }
}

TEST_F(UnmuteTimer, OfTheColdStartGoesOnAfterAFailure)
{
    enter({.status = true, .gate = Gate::NotYet});
    mBackend.mCurrentSoundout = KEP_AUDIO_HP;
    startTimer(kColdStartCallback);
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", kBroken, {}});
    forget();
    runTimer();
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff false -> 5", "Mute Output 16 0"));
    EXPECT_TRUE(timerDone());
}

} // namespace
