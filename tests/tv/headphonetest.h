// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of headphone and power state. The linker puts the functions of
// headphonetest.cpp in front of GLib's.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "tvbackendtest.h"

struct Timer {
    unsigned int intervalMs;
    GSourceFunc callback;
    void* data;

    bool operator==(const Timer&) const = default;
};
inline std::vector<Timer> gTimers;
inline std::vector<unsigned long> gPausesUs;

inline constexpr int kBroken = 5; // any status but 0
inline constexpr const char* kFile = "keptvaudio:";

inline const GSourceFunc kResumeCallback = &kepTVAudio::_resetHeadphoneUnmuteTimerCallback;
inline const GSourceFunc kColdStartCallback = &kepTVAudio::_headphoneUnmuteAcOnCallback;

inline LogLine said(const std::string& function, const std::string& text)
{
    return info(kFile + function, text);
}

inline JValue powerStateMute(const JValue& output, const JValue& mute)
{
    JValue payload = with("soundOutput", output);
    payload.put("mute", mute);
    return payload;
}

// --- Outputs

/// Where a timer stands.
enum class Gate { NotYet, Pending, PendingAgain, Done };
inline constexpr Gate kGates[] = {Gate::NotYet, Gate::Pending, Gate::PendingAgain, Gate::Done};

inline bool isPending(Gate gate)
{
    return gate == Gate::Pending || gate == Gate::PendingAgain;
}

struct Situation {
    bool status = false; // the three reasons to stay muted
    bool detection = false;
    bool powerState = false;
    Gate gate = Gate::Done;
    bool prepareResume = false;
    int volume = 0;
    int refusedWrite = -1; // number of the write, from 0
};

inline std::ostream& operator<<(std::ostream& stream, const Situation& situation)
{
    return stream << " [reasons " << situation.status << situation.detection << situation.powerState
                  << ", gate " << static_cast<int>(situation.gate) << ", resume "
                  << situation.prepareResume << ", volume " << situation.volume
                  << ", refused write " << situation.refusedWrite << "]";
}

// Reasons (status, detection, power state) against what may reach the hardware: none, and each by
// itself; headphonemute_test has all.
struct DecisionRow {
    bool status;
    bool detection;
    bool powerState;
    bool muteReaches;
    bool unmuteReaches;
};
inline constexpr DecisionRow kDecisions[] = {
    // status, detection, power; mute, unmute
    {false, false, false, false, true},
    {false, false, true, true, false},
    {false, true, false, true, false},
    {true, false, false, true, false},
};

// --- Lines

inline Lines muteAskedFor(bool mute)
{
    return {said("setMuteHeadphone", "Called setMuteHeadphone muteStatus " + flag(mute)),
            said("setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus " + flag(mute))};
}

/// What the timer says to an unmute that comes too early.
inline LogLine heldBack(const std::string& function, Gate gate)
{
    return said(function,
                isPending(gate)
                    ? "To avoid noise Headphone timer is running, so skip headphone unmute"
                    : "Headphone timer has not been make yet, so skip headphone unmute");
}

/// What the decision says, for the three reasons as they stand then.
inline Lines decided(const DecisionRow& reasons, bool mute)
{
    Lines lines = {
        said("executeMuteHeadphone", "Called execute muteHeadphone muteStatus " + flag(mute)),
        said("isValidHeadphoneMute", "isValidHeadphoneMute check " + flag(reasons.status) + " " +
                                         flag(reasons.detection) + " " + flag(reasons.powerState))};
    if (!(mute ? reasons.muteReaches : reasons.unmuteReaches))
        lines.push_back(said("executeMuteHeadphone", "Headphone mute is not valid"));
    return lines;
}

inline LogLine externalSpeaker(bool mute)
{
    return said("executeMuteExtSpeaker",
                "executeMuteExtSpeaker is called / muteStatus = " + flag(mute));
}

inline LogLine byPowerState(KEP_AUDIO_SNDOUT_T output)
{
    return said("setPowerStateHeadphoneMute",
                "setPowerStateHeadphoneMute soundOutResourceId " + std::to_string(output));
}

inline const LogLine kResuming =
    said("setPowerStateHeadphoneMute",
         "Prepare resume is in progress, so started headphone unmute timer");

inline LogLine lineFailed(const std::string& function, const std::string& what, bool mute)
{
    return error("SUBCPU_ERROR", kFile + function,
                 "Failed to set " + what + " mute status " + flag(mute));
}

inline LogLine muteNotSet(KEP_AUDIO_SNDOUT_T output)
{
    return error("CONTROL_ELEMENT_SET_ERROR", kFile + std::string{"setMuteControlElement"},
                 "Did not able to set the element: Mute Output on " + std::to_string(output));
}

/// What reaches the hardware of the headphone.
inline Texts headphoneTold(bool mute)
{
    return {"subcpu_misc_Set_HPMuteOnOff " + word(mute), "Mute Output 16 " + flag(mute)};
}

inline Texts operator+(Texts texts, const Texts& more)
{
    texts.insert(texts.end(), more.begin(), more.end());
    return texts;
}

/// All that a request leaves behind.
struct Outcome {
    Texts told = {};
    Lines logged = {};
    std::size_t timers = 0; // started
};

// --- The fixture

class HeadphoneTest : public TvBackendTest
{
protected:
    HeadphoneTest() { enter({.gate = Gate::NotYet}); }
    ~HeadphoneTest() override { stopTimer(); }

    [[nodiscard]] bool& preparesResume() { return mBackend.mIsPrepareResume; }
    [[nodiscard]] static unsigned int timer() { return OpenBackend::mHeadphoneUnmuteTimerID; }
    [[nodiscard]] static bool timerDone() { return OpenBackend::mHeadphoneTimerMuteDone; }

    static bool isInMainLoop(unsigned int source)
    {
        return source != 0 && g_main_context_find_source_by_id(nullptr, source) != nullptr;
    }
    static void stopTimer()
    {
        if (isInMainLoop(timer()))
            g_source_remove(timer());
        OpenBackend::mHeadphoneUnmuteTimerID = 0;
    }

    /// Starts a timer with that callback, as the start of the television and its resume do.
    void startTimer(GSourceFunc callback) { EXPECT_TRUE(mBackend.startUnmuteTimer(callback)); }

    void enter(const Situation& situation)
    {
        clearInjections();
        stopTimer();
        // The reasons come in through requests that nothing holds back.
        OpenBackend::mHeadphoneTimerMuteDone = true;
        preparesResume() = false;
        mBackend.setMuteHeadphone(situation.status);
        mBackend.setHeadphoneDetectionMute(situation.detection);
        mBackend.setPowerStateMute(powerStateMute("unknown", situation.powerState));
        OpenBackend::mHeadphoneTimerMuteDone =
            situation.gate == Gate::Done || situation.gate == Gate::PendingAgain;
        if (isPending(situation.gate))
            startTimer(kColdStartCallback);
        preparesResume() = situation.prepareResume;
        mBackend.mOutputVolume = static_cast<std::uint8_t>(situation.volume);
        forgetAll();
        if (situation.refusedWrite >= 0)
            refuseWrite(static_cast<unsigned int>(situation.refusedWrite));
    }
    /// Fails the orders to the sub-microcontroller of these numbers, from 0.
    static void failLine(const std::vector<bool>& orders)
    {
        using virtualtv::FaultPoint;
        for (const bool fails : orders)
            virtualtv::inject({FaultPoint::SubMicro, "*", "", fails ? kBroken : 0, 1});
    }

    void forgetAll()
    {
        forget();
        gTimers.clear();
        gPausesUs.clear();
    }

    /// The backend's own lines; the adapters are not looked at.
    [[nodiscard]] Lines backendLines() const
    {
        Lines lines;
        std::copy_if(logLines().begin(), logLines().end(), std::back_inserter(lines),
                     [](const LogLine& line) { return line.origin.rfind("keptvaudio", 0) == 0; });
        return lines;
    }

    /// Runs the main loop until no timer of the backend is left.
    static void runTimer()
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{10};
        while (timer() != 0 && std::chrono::steady_clock::now() < deadline)
            g_main_context_iteration(nullptr, FALSE);
        EXPECT_EQ(timer(), 0U);
        while (g_main_context_pending(nullptr) != FALSE)
            g_main_context_iteration(nullptr, FALSE);
    }

    [[nodiscard]] std::array<bool, 3> reasons() const
    {
        return {mBackend.getMuteHeadphone(), mBackend.getMuteHeadphoneDetection(),
                mBackend.getPowerStateHeadphoneMute()};
    }

    void expect(const Outcome& outcome, const std::string& what)
    {
        EXPECT_EQ(told(), outcome.told) << what;
        EXPECT_EQ(backendLines(), outcome.logged) << what;
        EXPECT_EQ(gTimers.size(), outcome.timers) << what;
        EXPECT_THAT(gPausesUs, testing::IsEmpty()) << what;
    }
};
