// SPDX-License-Identifier: Apache-2.0
// The ways into the backend: what is thrown behind them is logged and answered as a failure, and
// nothing is done before the backend has been started.
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "journal.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int kAnswersTrue = 1000; // in the place of a code: the JSON value true

/// A request that reaches the middleware or the driver; its answer.
struct Slot {
    const char* name;
    unsigned int (*request)(kepAudio& backend);
};
// clang-format off
const Slot kSlots[] = {
    {"connectInput",        [](kepAudio& tv) { return tv.connectInput("ADEC0", "MAIN", JValue::object()); }},
    {"disconnectInput",     [](kepAudio& tv) { return tv.disconnectInput("ADEC0", "MAIN"); }},
    {"getHeadphoneStatus",  [](kepAudio& tv) { bool connected = false; return tv.getHeadphoneStatus(&connected); }},
    {"setSoundOutput",      [](kepAudio& tv) { return tv.setSoundOutput("headphone"); }},
    {"setMute",             [](kepAudio& tv) { return tv.setMute("ADEC0", "MAIN", true); }},
    {"setOutputVolume",     [](kepAudio& tv) { return tv.setOutputVolume("tv_speaker", 5); }},
    {"setInputVolume",      [](kepAudio& tv) { return tv.setInputVolume("ADEC0", "MAIN", 5); }},
    {"setOutputMute",       [](kepAudio& tv) { return tv.setOutputMute("headphone", true); }},
    {"setMuteExtSPK",       [](kepAudio& tv) { return tv.setMuteExtSPK(true); }},
    {"setQualityAttribute", [](kepAudio& tv) { return tv.setQualityAttribute(json(
                                R"({"requestType":"","pipelineInfo":{"pipelineId":"p"},"categoryInfo":{"immersive":"x"}})")); }},
    {"setSettings",         [](kepAudio& tv) { return tv.setSettings("prepareResume", JValue::object()); }},
    {"getSettings",         [](kepAudio& tv) { return tv.getSettings("gainValue", JValue::object()) == JValue{true} ? kAnswersTrue : 0U; }},
};
// clang-format on

unsigned int failureOf(const Slot& slot)
{
    return slot.name == std::string{"getSettings"} ? kAnswersTrue : kFailed;
}

using Slots = TvBackendTest;

LogLine caught(const std::string& function, const std::string& text)
{
    return error("ERROR_LOG",
                 "keptvaudio" + std::string{function == "getSettings" ? "quality" : ""} + ":" +
                     function,
                 "Exception in " + function + ": " + text);
}

} // namespace

TEST_F(Slots, WhatTheTelevisionThrowsIsToldOnceAndAnsweredAsAFailure)
{
    mBackend.setSoundOutput("tv_speaker");
    for (const Slot& slot : kSlots) {
        forget();
        virtualtv::listen([](const JValue& event) {
            if (event["event"].asString() != "control") // a card's plugin is C
                throw std::runtime_error{"broken"};
        });
        const bool onlyWrites =
            slot.name == std::string{"setMute"} || slot.name == std::string{"disconnectInput"};
        const unsigned int expected = onlyWrites ? kDone : failureOf(slot);
        EXPECT_EQ(slot.request(mBackend), expected) << slot.name;
        if (!onlyWrites) {
            EXPECT_THAT(logLines(kLogError), ElementsAre(caught(slot.name, "broken"))) << slot.name;
        }
    }
}

TEST_F(Slots, AStoredVolumeThatIsNoNumberFailsTheRequestAndNothingElse)
{
    EXPECT_EQ(mBackend.setSettings("sound", json(R"({"audioDescriptionVolume":"abc"})")), kDone);
    forget();
    EXPECT_EQ(mBackend.setSettings("sound", json(R"({"audioDescription":"on"})")), kFailed);
    EXPECT_THAT(logLines(kLogError), ElementsAre(caught("setSettings", "stoi")));
    EXPECT_EQ(mBackend.setSettings("sound", json(R"({"audioDescription":"off"})")), kDone);
}

TEST_F(Slots, BeforeTheStartEveryRequestFailsAndDoesNothing)
{
    static auto& unstarted = *new OpenBackend;
    forget();
    for (const Slot& slot : kSlots) {
        EXPECT_EQ(slot.request(unstarted), failureOf(slot)) << slot.name;
        EXPECT_THAT(told(), IsEmpty()) << slot.name;
        EXPECT_THAT(logLines(), ElementsAre(caught(slot.name, "the backend has not been started")))
            << slot.name;
        forget();
    }
    EXPECT_EQ(unstarted.removePipelineInfo("p"), kFailed);
    EXPECT_EQ(unstarted.initAudio(), 1U);
    EXPECT_EQ(unstarted.setOutputVolume("tv_speaker", 5), kDone);
}

TEST_F(Slots, WhatATimerMeetsDoesNotReachTheMainLoop)
{
    mBackend.mCurrentSoundout = KEP_AUDIO_HP;
    ASSERT_TRUE(mBackend.startUnmuteTimer(&kepTVAudio::_headphoneUnmuteAcOnCallback));
    virtualtv::listen([](const JValue&) { throw std::runtime_error{"broken"}; });
    EXPECT_EQ(kepTVAudio::_headphoneUnmuteAcOnCallback(&mBackend), 0);
    EXPECT_THAT(logLines(kLogError), ElementsAre(caught("_headphoneUnmuteAcOnCallback", "broken")));
    ASSERT_TRUE(mBackend.startUnmuteTimer(&kepTVAudio::_resetHeadphoneUnmuteTimerCallback));
    mBackend.mPopNoiseSoundOutput = KEP_AUDIO_HP;
    forget();
    EXPECT_EQ(kepTVAudio::_resetHeadphoneUnmuteTimerCallback(&mBackend), 0);
    EXPECT_THAT(logLines(kLogError),
                ElementsAre(caught("_resetHeadphoneUnmuteTimerCallback", "broken")));
}
