// SPDX-License-Identifier: Apache-2.0
// Headphone and power state. What a request has to do is written down here a second time, in
// `Prediction`; every combination of reasons, timer and failures is compared with it.
// The linker puts the functions below in front of GLib's: timers keep their order but not their
// length, and pauses are only noted.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "television.h"
#include "tvbackendtest.h"

namespace
{

struct Timer {
    unsigned int intervalMs;
    GSourceFunc callback;
    void* data;

    bool operator==(const Timer&) const = default;
};
std::vector<Timer> gTimers;
std::vector<unsigned long> gPausesUs;

} // namespace

extern "C" {
guint __real_g_timeout_add(guint interval, GSourceFunc callback, gpointer data);

guint __wrap_g_timeout_add(guint interval, GSourceFunc callback, gpointer data)
{
    gTimers.push_back({interval, callback, data});
    return __real_g_timeout_add(1, callback, data);
}

void __wrap_g_usleep(gulong microseconds)
{
    gPausesUs.push_back(microseconds);
}
}

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBroken = 5; // any status but 0
constexpr const char* kFile = "keptvaudio:";

const GSourceFunc kResumeCallback = &kepTVAudio::_resetHeadphoneUnmuteTimerCallback;
const GSourceFunc kColdStartCallback = &kepTVAudio::_headphoneUnmuteAcOnCallback;

LogLine said(const std::string& function, const std::string& text)
{
    return info(kFile + function, text);
}

JValue powerStateMute(const JValue& output, const JValue& mute)
{
    JValue payload = with("soundOutput", output);
    payload.put("mute", mute);
    return payload;
}

// --- Outputs

/// Where a timer stands.
enum class Gate { NotYet, Pending, PendingAgain, Done };
constexpr Gate kGates[] = {Gate::NotYet, Gate::Pending, Gate::PendingAgain, Gate::Done};

bool isPending(Gate gate)
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
    bool externalSpeakerFails = false;
    bool headphoneFails = false;
    int refusedWrite = -1; // number of the write, from 0
};

std::ostream& operator<<(std::ostream& stream, const Situation& situation)
{
    return stream << " [reasons " << situation.status << situation.detection << situation.powerState
                  << ", gate " << static_cast<int>(situation.gate) << ", resume "
                  << situation.prepareResume << ", volume " << situation.volume << ", failing "
                  << situation.externalSpeakerFails << situation.headphoneFails << " write "
                  << situation.refusedWrite << "]";
}

// Reasons (status, detection, power state) against what may reach the hardware.
struct DecisionRow {
    bool status;
    bool detection;
    bool powerState;
    bool muteReaches;
    bool unmuteReaches;
};
// clang-format off
constexpr DecisionRow kDecisions[] = {
    // status detection power   mute   unmute
    {  false, false,    false,  false, true},
    {  false, false,    true,   true,  false},
    {  false, true,     false,  true,  false},
    {  false, true,     true,   true,  false},
    {  true,  false,    false,  true,  false},
    {  true,  false,    true,   true,  false},
    {  true,  true,     false,  true,  false},
    {  true,  true,     true,   true,  false},
};
// clang-format on

bool reaches(const Situation& situation, bool mute)
{
    for (const DecisionRow& row : kDecisions)
        if (row.status == situation.status && row.detection == situation.detection &&
            row.powerState == situation.powerState)
            return mute ? row.muteReaches : row.unmuteReaches;
    return false;
}

// --- Prediction

/// What is to be told and logged, step by step.
class Prediction
{
public:
    explicit Prediction(const Situation& situation) : mNow(situation) {}

    bool setMuteHeadphone(bool mute);
    bool setDetectionMute(bool mute);
    bool setPowerStateHeadphoneMute(KEP_AUDIO_SNDOUT_T output, bool mute);
    bool executeMuteHeadphone(bool mute);
    bool writeMute(KEP_AUDIO_SNDOUT_T output, const std::string& type, bool mute);
    void amplifier(bool mute);

    Texts told;
    Lines logged;
    unsigned int timers = 0; // started

private:
    void say(const std::string& function, const std::string& text)
    {
        logged.push_back(said(function, text));
    }
    void setExternalSpeaker(bool mute);
    bool isHeldBack(const std::string& function, bool mute);

    Situation mNow;
    int mWrites = 0;
};

bool Prediction::writeMute(KEP_AUDIO_SNDOUT_T output, const std::string& type, bool mute)
{
    const bool refused = mWrites++ == mNow.refusedWrite;
    told.push_back("Mute Output " + type + " " + flag(mute) + (refused ? " -> -5" : ""));
    if (refused) {
        logged.push_back(refusedByDriver());
        logged.push_back(
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:setMuteControlElement",
                  "Did not able to set the element: Mute Output on " + std::to_string(output)));
    }
    return !refused;
}

void Prediction::amplifier(bool mute)
{
    told.push_back("amplifier.setAmpMute " + word(mute));
}

void Prediction::setExternalSpeaker(bool mute)
{
    logged.push_back(info("keptvaudio:executeMuteExtSpeaker",
                          "executeMuteExtSpeaker is called / muteStatus = " + flag(mute)));
    told.push_back("subcpu_misc_Set_HPMuteOnOff " + word(mute) +
                   (mNow.externalSpeakerFails ? " -> 5" : ""));
    if (mNow.externalSpeakerFails)
        logged.push_back(error("SUBCPU_ERROR", "keptvaudio:executeMuteExtSpeaker",
                               "Failed to set external speaker mute status " + flag(mute)));
}

bool Prediction::executeMuteHeadphone(bool mute)
{
    say("executeMuteHeadphone", "Called execute muteHeadphone muteStatus " + flag(mute));
    say("isValidHeadphoneMute", "isValidHeadphoneMute check " + flag(mNow.status) + " " +
                                    flag(mNow.detection) + " " + flag(mNow.powerState));
    if (!reaches(mNow, mute)) {
        say("executeMuteHeadphone", "Headphone mute is not valid");
        return true;
    }
    told.push_back("subcpu_misc_Set_HPMuteOnOff " + word(mute) +
                   (mNow.headphoneFails ? " -> 5" : ""));
    if (mNow.headphoneFails)
        logged.push_back(error("SUBCPU_ERROR", std::string{kFile} + "executeMuteHeadphone",
                               "Failed to set headphone mute status " + flag(mute)));
    const bool written = writeMute(KEP_AUDIO_HP, "16", mute);
    return written && !mNow.headphoneFails;
}

bool Prediction::isHeldBack(const std::string& function, bool mute)
{
    if (mute || mNow.gate == Gate::Done)
        return false;
    if (isPending(mNow.gate))
        say(function, "To avoid noise Headphone timer is running, so skip headphone unmute");
    else
        say(function, "Headphone timer has not been make yet, so skip headphone unmute");
    return true;
}

bool Prediction::setMuteHeadphone(bool mute)
{
    mNow.status = mute;
    say("setMuteHeadphone", "Called setMuteHeadphone muteStatus " + flag(mute));
    say("setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus " + flag(mute));
    return isHeldBack("setMuteHeadphone", mute) || executeMuteHeadphone(mute);
}

bool Prediction::setDetectionMute(bool mute)
{
    mNow.detection = mute;
    say("setHeadphoneDetectionMute", "Called setHeadphoneDetectionMute muteStatus " + flag(mute));
    if (isHeldBack("setHeadphoneDetectionMute", mute))
        return true;
    setExternalSpeaker(mute);
    return executeMuteHeadphone(mute);
}

bool Prediction::setPowerStateHeadphoneMute(KEP_AUDIO_SNDOUT_T output, bool mute)
{
    const std::string function = "setPowerStateHeadphoneMute";
    const bool pair = output == KEP_AUDIO_SPK_HP;
    say(function, "setPowerStateHeadphoneMute soundOutResourceId " + std::to_string(output));
    if (mNow.prepareResume && !mute) {
        say(function, "Prepare resume is in progress, so started headphone unmute timer");
        timers = isPending(mNow.gate) ? 0 : 1;
        return true;
    }
    if (isHeldBack(function, mute)) {
        if (pair)
            writeMute(KEP_AUDIO_SPK, "1", mute);
        return false;
    }
    setExternalSpeaker(mute);
    const bool headphone = executeMuteHeadphone(mute);
    if (!pair)
        return headphone;
    const bool speaker = writeMute(KEP_AUDIO_SPK, "1", mute);
    if (!speaker || !headphone)
        return false;
    if (mNow.volume != 0)
        amplifier(mute);
    return true;
}

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
    /// For requests that reach the sub-microcontroller once, or twice with the external speaker
    /// first.
    static void failSubMicro(const Situation& situation, bool twice)
    {
        using virtualtv::FaultPoint;
        if (twice)
            virtualtv::inject(
                {FaultPoint::SubMicro, "*", "", situation.externalSpeakerFails ? kBroken : 0, 1});
        virtualtv::inject(
            {FaultPoint::SubMicro, "*", "", situation.headphoneFails ? kBroken : 0, {}});
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

    void expect(const Prediction& prediction, const std::string& what)
    {
        EXPECT_EQ(told(), prediction.told) << what;
        EXPECT_EQ(backendLines(), prediction.logged) << what;
        EXPECT_EQ(gTimers.size(), prediction.timers) << what;
        EXPECT_THAT(gPausesUs, IsEmpty()) << what;
    }

    /// Runs `check` for every combination of reasons, timer, volume and failures.
    template <typename Check>
    void inEverySituation(Check check, bool withResume)
    {
        for (unsigned int bits = 0; bits < 32; ++bits) {
            for (const Gate gate : kGates) {
                for (const int volume : {0, 25}) {
                    for (int refused = -1; refused < 2; ++refused) {
                        for (const bool resume : {false, true}) {
                            if (resume && !withResume)
                                continue;
                            check(Situation{(bits & 1U) != 0, (bits & 2U) != 0, (bits & 4U) != 0,
                                            gate, resume, volume, (bits & 8U) != 0,
                                            (bits & 16U) != 0, refused});
                        }
                    }
                }
            }
        }
    }
};

// --- Headphone-detect line

class HeadphoneStatus : public HeadphoneTest
{
};

TEST_F(HeadphoneStatus, IsTheLevelOfTheLine)
{
    for (const int level : {0, 1, 2, 255}) {
        for (const bool before : {false, true}) {
            forget();
            virtualtv::setLineLevel("GPIO_RD_HP_LINK", level);
            bool connected = before;
            EXPECT_EQ(mBackend.getHeadphoneStatus(&connected), kDone);
            EXPECT_EQ(connected, level != 0);
            EXPECT_THAT(told(), ElementsAre("GPIO_RD_HP_LINK"));
            EXPECT_THAT(logLines(), IsEmpty());
        }
    }
}

TEST_F(HeadphoneStatus, IsNotTouchedWhenTheLineCannotBeRead)
{
    virtualtv::setLineLevel("GPIO_RD_HP_LINK", 1);
    for (const int status : {1, -1, 42}) {
        clearInjections();
        virtualtv::inject({virtualtv::FaultPoint::Gpio, "GPIO_RD_HP_LINK", "", status, {}});
        forget();
        bool connected = false;
        EXPECT_EQ(mBackend.getHeadphoneStatus(&connected), kFailed);
        EXPECT_FALSE(connected);
        EXPECT_THAT(logLines(),
                    ElementsAre(error("HWIO_GPIO_ERROR", std::string{kFile} + "getHeadphoneStatus",
                                      "Received error from HWIO library Status: " +
                                          std::to_string(status) + " ")));
    }
}

// --- The decision

class Decision : public HeadphoneTest
{
};

TEST_F(Decision, LetsAMuteThroughForAnyReasonAndAnUnmuteForNone)
{
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) { // the timer is not asked
            enter({.status = row.status,
                   .detection = row.detection,
                   .powerState = row.powerState,
                   .gate = gate});
            EXPECT_THAT(reasons(), ElementsAre(row.status, row.detection, row.powerState));
            EXPECT_EQ(mBackend.isValidHeadphoneMute(true), row.muteReaches);
            EXPECT_EQ(mBackend.isValidHeadphoneMute(false), row.unmuteReaches);
            const LogLine line = said("isValidHeadphoneMute",
                                      "isValidHeadphoneMute check " + flag(row.status) + " " +
                                          flag(row.detection) + " " + flag(row.powerState));
            EXPECT_THAT(logLines(), ElementsAre(line, line));
            EXPECT_THAT(told(), IsEmpty());
        }
    }
}

TEST_F(Decision, HasNoReasonAtFirst)
{
    const OpenBackend fresh;
    EXPECT_FALSE(fresh.getMuteHeadphone());
    EXPECT_FALSE(fresh.getMuteHeadphoneDetection());
    EXPECT_FALSE(fresh.getPowerStateHeadphoneMute());
    EXPECT_EQ(fresh.getPopNoiseSoundOutput(), KEP_AUDIO_NO_OUTPUT);
}

TEST_F(Decision, ComesBeforeTheHardware)
{
    inEverySituation(
        [this](const Situation& situation) {
            if (situation.gate != Gate::Done || situation.externalSpeakerFails)
                return;
            for (const bool mute : {true, false}) {
                enter(situation);
                failSubMicro(situation, /*twice=*/false);
                Prediction prediction{situation};
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_EQ(mBackend.executeMuteHeadphone(mute),
                          prediction.executeMuteHeadphone(mute))
                    << what;
                expect(prediction, what);
            }
        },
        /*withResume=*/false);
}

TEST_F(Decision, KeepsADetectedHeadphoneMuted)
{
    enter({.detection = true});
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/false));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/true));
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1"));
}

// --- Mute by request, by detection and by power state

class MuteHeadphone : public HeadphoneTest
{
};

TEST_F(MuteHeadphone, ByRequestPassesTimerAndDecision)
{
    inEverySituation(
        [this](const Situation& situation) {
            if (situation.externalSpeakerFails)
                return;
            for (const bool mute : {true, false}) {
                enter(situation);
                failSubMicro(situation, /*twice=*/false);
                Prediction prediction{situation};
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_EQ(mBackend.setMuteHeadphone(mute), prediction.setMuteHeadphone(mute))
                    << what;
                expect(prediction, what);
                EXPECT_THAT(reasons(),
                            ElementsAre(mute, situation.detection, situation.powerState));
            }
        },
        /*withResume=*/true);
}

TEST_F(MuteHeadphone, ByDetectionPassesTimerAndDecision)
{
    inEverySituation(
        [this](const Situation& situation) {
            for (const bool mute : {true, false}) {
                enter(situation);
                failSubMicro(situation, /*twice=*/true);
                Prediction prediction{situation};
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_EQ(mBackend.setHeadphoneDetectionMute(mute),
                          prediction.setDetectionMute(mute))
                    << what;
                expect(prediction, what);
                EXPECT_THAT(reasons(), ElementsAre(situation.status, mute, situation.powerState));
            }
        },
        /*withResume=*/true);
}

TEST_F(MuteHeadphone, ByPowerStatePassesResumeTimerAndDecision)
{
    inEverySituation(
        [this](const Situation& situation) {
            for (const KEP_AUDIO_SNDOUT_T output :
                 {KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_NO_OUTPUT}) {
                for (const bool mute : {true, false}) {
                    enter(situation);
                    failSubMicro(situation, /*twice=*/true);
                    Prediction prediction{situation};
                    const std::string what = testing::PrintToString(situation) +
                                             std::to_string(output) + " " + flag(mute);
                    EXPECT_EQ(mBackend.setPowerStateHeadphoneMute(output, mute),
                              prediction.setPowerStateHeadphoneMute(output, mute))
                        << what;
                    expect(prediction, what);
                    EXPECT_THAT(reasons(), ElementsAre(situation.status, situation.detection,
                                                       situation.powerState));
                    EXPECT_EQ(preparesResume(), situation.prepareResume && mute) << what;
                }
            }
        },
        /*withResume=*/true);
}

TEST_F(MuteHeadphone, IsNotEndedBeforeAnyTimerHasRun)
{
    EXPECT_TRUE(mBackend.setMuteHeadphone(/*mute=*/false));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(logLines().back(),
              said("setMuteHeadphone",
                   "Headphone timer has not been make yet, so skip headphone unmute"));
}

TEST_F(MuteHeadphone, IsRememberedEvenWhenItIsHeldBack)
{
    enter({.status = true, .detection = true, .gate = Gate::NotYet});
    mBackend.setMuteHeadphone(/*mute=*/false);
    EXPECT_FALSE(mBackend.getMuteHeadphone());
    mBackend.setHeadphoneDetectionMute(/*mute=*/false);
    EXPECT_FALSE(mBackend.getMuteHeadphoneDetection());
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(MuteHeadphone, OfThePairUnmutesTheSpeakerAtOnce)
{
    for (const Gate gate : {Gate::NotYet, Gate::Pending, Gate::PendingAgain}) {
        enter({.gate = gate, .volume = 25});
        EXPECT_FALSE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_SPK_HP, /*mute=*/false));
        EXPECT_THAT(told(), ElementsAre("Mute Output 1 0"));
        enter({.gate = gate, .volume = 25});
        EXPECT_FALSE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_HP, /*mute=*/false));
        EXPECT_THAT(told(), IsEmpty());
    }
}

TEST_F(MuteHeadphone, ByDetectionIsRequestedByAPayload)
{
    struct Row {
        JValue payload;
        bool hasMute;
        bool mute;
    };
    const Row rows[] = {
        {with("mute", true), true, true},      {with("mute", false), true, false},
        {with("mute", "true"), true, false},   {with("mute", 1), true, false},
        {with("mute", JValue{}), true, false}, {with("Mute", true), false, false},
        {JValue::object(), false, false},      {JValue::array(), false, false},
        {JValue{"mute"}, false, false},        {JValue{}, false, false},
        {JValue::invalid(), false, false},
    };
    for (const Row& row : rows) {
        for (const Gate gate : kGates) {
            for (const bool fails : {false, true}) {
                const Situation situation{.gate = gate, .headphoneFails = fails};
                enter(situation);
                failSubMicro(situation, /*twice=*/true);
                Prediction prediction{situation};
                prediction.logged.push_back(
                    said("setHeadphoneDetectionMute",
                         "Setting headphone detection mute to " + flag(row.mute)));
                const bool done = row.hasMute && prediction.setDetectionMute(row.mute);
                EXPECT_EQ(mBackend.setHeadphoneDetectionMute(row.payload), done)
                    << row.payload.stringify();
                expect(prediction, row.payload.stringify());
                EXPECT_EQ(mBackend.getMuteHeadphoneDetection(), row.mute);
            }
        }
    }
}

// --- Power state, by the name of the output

struct PowerRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
    std::vector<std::pair<KEP_AUDIO_SNDOUT_T, const char*>> writes; // outputs with their types
    bool isSpeaker; // the amplifier follows, and a line tells of it
};

// clang-format off
const std::vector<PowerRow> kPowerRows = {
    {"tv_speaker",             KEP_AUDIO_SPK,             {{KEP_AUDIO_SPK, "1"}},                                                true},
    {"tv_speaker_external",    KEP_AUDIO_SPK_SPDIF,       {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}},                        true},
    {"tv_external_speaker",    KEP_AUDIO_SPK_SPDIF,       {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}},                        true},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC, {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}, {KEP_AUDIO_ARC, "32"}}, true},
    {"tv_speaker_bluetooth",   KEP_AUDIO_SPK_BLUETOOTH,   {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_BLUETOOTH, "128"}},                  true},
    {"external_speaker",       KEP_AUDIO_SPDIF,           {{KEP_AUDIO_SPDIF, "2"}},                                              false},
    {"external_optical",       KEP_AUDIO_SPDIF,           {{KEP_AUDIO_SPDIF, "2"}},                                              false},
    {"external_arc",           KEP_AUDIO_ARC,             {{KEP_AUDIO_ARC, "32"}},                                               false},
    {"urcu_oss",               KEP_AUDIO_ARC,             {{KEP_AUDIO_ARC, "32"}},                                               false},
    {"qnSoundSync",            KEP_AUDIO_QN_SOUND_SYNC,   {{KEP_AUDIO_QN_SOUND_SYNC, "4"}},                                      false},
    {"bt_soundbar",            KEP_AUDIO_BT_SOUNDBAR,     {{KEP_AUDIO_BT_SOUNDBAR, "8"}},                                        false},
    {"wisa_speaker",           KEP_AUDIO_WISA,            {{KEP_AUDIO_WISA, "64"}},                                              false},
};
// clang-format on

class PowerStateMute : public HeadphoneTest
{
protected:
    static Lines opening(const std::string& name, bool mute)
    {
        return {said("setPowerStateMute",
                     "Setting powerState mute to " + flag(mute) + " on soundOutputType " + name)};
    }

    static bool predict(Prediction& prediction, const PowerRow& row, bool mute, int volume)
    {
        if (row.isSpeaker)
            prediction.logged.push_back(said("setPowerStateTvSpeakerMute",
                                             "setPowerStateTvSpeakerMute soundOutResourceId " +
                                                 std::to_string(row.output)));
        bool done = true;
        for (const auto& [output, type] : row.writes) {
            const bool written = prediction.writeMute(output, type, mute);
            if (output == KEP_AUDIO_SPK && written && volume != 0)
                prediction.amplifier(mute);
            done = done && written;
        }
        return done;
    }
};

TEST_F(PowerStateMute, WritesEveryMemberWhateverTheOthersGave)
{
    for (const PowerRow& row : kPowerRows) {
        for (const bool mute : {true, false}) {
            for (const int volume : {0, 25}) {
                for (int refused = -1; refused < static_cast<int>(row.writes.size()); ++refused) {
                    const Situation situation{
                        .powerState = !mute, .volume = volume, .refusedWrite = refused};
                    const std::string what = row.name + testing::PrintToString(situation);
                    enter(situation);
                    Prediction prediction{situation};
                    prediction.logged = opening(row.name, mute);
                    const bool done = predict(prediction, row, mute, volume);
                    EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(row.name, mute)), done)
                        << what;
                    expect(prediction, what);
                    EXPECT_THAT(reasons(), ElementsAre(false, false, mute)) << what;
                }
            }
        }
    }
}

TEST_F(PowerStateMute, OfTheSpeakerIsAlsoAnOperationOfItsOwn)
{
    for (const PowerRow& row : kPowerRows) {
        if (!row.isSpeaker)
            continue;
        for (const bool mute : {true, false}) {
            for (int refused = -1; refused < static_cast<int>(row.writes.size()); ++refused) {
                const Situation situation{
                    .powerState = true, .volume = 25, .refusedWrite = refused};
                enter(situation);
                Prediction prediction{situation};
                const bool done = predict(prediction, row, mute, situation.volume);
                EXPECT_EQ(mBackend.setPowerStateTvSpeakerMute(row.output, mute), done);
                expect(prediction, row.name + testing::PrintToString(situation));
                EXPECT_TRUE(mBackend.getPowerStateHeadphoneMute()); // its caller notes the reason
            }
        }
    }
}

TEST_F(PowerStateMute, OfTheSpeakerWritesTheSpeakerWhateverItIsGiven)
{
    for (const KEP_AUDIO_SNDOUT_T output :
         {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_ARC, KEP_AUDIO_BLUETOOTH}) {
        enter({.volume = 25});
        EXPECT_TRUE(mBackend.setPowerStateTvSpeakerMute(output, true));
        EXPECT_THAT(told(), ElementsAre("Mute Output 1 1", "amplifier.setAmpMute true")) << output;
    }
}

TEST_F(PowerStateMute, DoesNotDependOnTheAmplifiersAnswer)
{
    enter({.volume = 25});
    injectMiddleware("amplifier.setAmpMute", kBroken);
    EXPECT_TRUE(mBackend.setPowerStateMute(powerStateMute("tv_speaker", true)));
    EXPECT_TRUE(mBackend.setPowerStateMute(powerStateMute("tv_speaker_headphone", true)));
    EXPECT_THAT(told(), ElementsAre("Mute Output 1 1", "amplifier.setAmpMute true -> 5",
                                    "subcpu_misc_Set_HPMuteOnOff true",
                                    "subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1",
                                    "Mute Output 1 1", "amplifier.setAmpMute true -> 5"));
}

TEST_F(PowerStateMute, OfTheOpticalOutputIsThatOfArcWhenArcIsTheSetting)
{
    for (const char* name : {"external_speaker", "external_optical"}) {
        for (const char* setting : {"", "external_arc", "urcu_oss", "external_speaker"}) {
            for (const KEP_AUDIO_SNDOUT_T current : {KEP_AUDIO_SPDIF, KEP_AUDIO_ARC}) {
                for (int refused = -1; refused < 1; ++refused) {
                    const Situation situation{.refusedWrite = refused};
                    enter(situation);
                    mBackend.mCurrentSoundout = current; // is not asked
                    mBackend.mStoredSettings = {{"soundOutput", setting}};
                    const bool arc = setting == std::string{"external_arc"};
                    Prediction prediction{situation};
                    prediction.logged = opening(name, true);
                    const bool done = prediction.writeMute(arc ? KEP_AUDIO_ARC : KEP_AUDIO_SPDIF,
                                                           arc ? "32" : "2", true);
                    EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(name, true)), done);
                    expect(prediction, setting);
                }
            }
        }
    }
}

TEST_F(PowerStateMute, OfTheHeadphoneIsOneOfItsReasons)
{
    struct Row {
        const char* name;
        KEP_AUDIO_SNDOUT_T output;
    };
    constexpr Row rows[] = {{"headphone", KEP_AUDIO_HP},
                            {"lineout", KEP_AUDIO_HP},
                            {"tv_speaker_headphone", KEP_AUDIO_SPK_HP}};
    for (const Row& row : rows) {
        for (const bool mute : {true, false}) {
            for (const Gate gate : kGates) {
                for (const bool resume : {false, true}) {
                    Situation situation{
                        .powerState = !mute, .gate = gate, .prepareResume = resume, .volume = 25};
                    enter(situation);
                    situation.powerState = mute; // noted before anything else
                    Prediction prediction{situation};
                    prediction.logged = opening(row.name, mute);
                    const bool done = prediction.setPowerStateHeadphoneMute(row.output, mute);
                    const std::string what = row.name + testing::PrintToString(situation);
                    EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(row.name, mute)), done)
                        << what;
                    expect(prediction, what);
                    EXPECT_EQ(mBackend.getPowerStateHeadphoneMute(), mute) << what;
                }
            }
        }
    }
}

TEST_F(PowerStateMute, OfAnotherOutputIsRefusedButNoted)
{
    for (const char* name : {"alsa", "unknown", "TV_SPEAKER", ""}) {
        for (const bool mute : {true, false}) {
            enter({.powerState = !mute});
            EXPECT_FALSE(mBackend.setPowerStateMute(powerStateMute(name, mute))) << name;
            EXPECT_EQ(mBackend.getPowerStateHeadphoneMute(), mute);
            EXPECT_THAT(told(), IsEmpty());
            EXPECT_EQ(logLines(), opening(name, mute));
        }
    }
}

TEST_F(PowerStateMute, NeedsBothOfItsMembers)
{
    enter({.powerState = true});
    for (const JValue& payload :
         {with("soundOutput", "tv_speaker"), with("mute", true), JValue::object(), JValue::array(),
          JValue{"mute"}, JValue{}, JValue::invalid()}) {
        EXPECT_TRUE(mBackend.setPowerStateMute(payload)) << payload.stringify();
        EXPECT_THAT(told(), IsEmpty());
        EXPECT_THAT(logLines(), IsEmpty());
        EXPECT_TRUE(mBackend.getPowerStateHeadphoneMute());
    }
}

TEST_F(PowerStateMute, TakesMembersOfAnotherTypeForNothing)
{
    enter({.powerState = true});
    EXPECT_TRUE(mBackend.setPowerStateMute(powerStateMute("wisa_speaker", "true")));
    EXPECT_FALSE(mBackend.setPowerStateMute(powerStateMute(1, true)));
    EXPECT_THAT(told(), ElementsAre("Mute Output 64 0"));
    Lines expected = opening("wisa_speaker", false);
    expected.push_back(opening("", true).front());
    EXPECT_EQ(logLines(), expected);
}

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
    Prediction prediction{{}};
    prediction.logged = {
        said("_resetHeadphoneUnmuteTimerCallback", "In _resetHeadphoneUnmuteTimerCallback"),
        said("_resetHeadphoneUnmuteTimerCallback",
             "Headphone Unmute Timer will be removed while timeout"),
        info("keptvaudioutil:getPopNoiseSoundOutput", "getPopNoiseSoundOutput soundOutput: 32")};
    prediction.setPowerStateHeadphoneMute(KEP_AUDIO_HP, false);
    expect(prediction, "end of the timer");

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
        Prediction prediction{{.status = true}};
        prediction.logged = {
            said("_headphoneUnmuteAcOnCallback", "In _headphoneUnmuteAcOnCallback"),
            said("_headphoneUnmuteAcOnCallback",
                 "Headphone Unmute Timer will be removed during AC On")};
        const bool unmutes = current == KEP_AUDIO_HP || current == KEP_AUDIO_SPK_HP;
        if (unmutes)
            prediction.setMuteHeadphone(false);
        expect(prediction, std::to_string(current));
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

// --- Sound bar and light

class SoundBar : public HeadphoneTest
{
protected:
    static Lines request(const JValue& payload)
    {
        return {debug(std::string{kFile} + "setQNSoundbarState",
                      "Set Qn Sound Bar status based on power state " + payload.stringify())};
    }
    static bool hasLight(KEP_AUDIO_SNDOUT_T output)
    {
        return output == KEP_AUDIO_SPK_OPTICAL_ARC || output == KEP_AUDIO_SPK_SPDIF ||
               output == KEP_AUDIO_SPDIF || output == KEP_AUDIO_QN_SOUND_SYNC;
    }

    bool predictBar(Prediction& prediction, KEP_AUDIO_SNDOUT_T current, const std::string& state,
                    int volume, bool mute, bool refused)
    {
        const std::string function = "setPowerOnOffQNSoundSync";
        prediction.logged.push_back(
            said(function, "setPowerOnOffQNSoundSync, power state is " + state));
        if (current != KEP_AUDIO_QN_SOUND_SYNC) {
            prediction.logged.push_back(
                said(function, "SOUNDOUT_OPTICQN_POWER ON/OFF is not set, since QNSoundSync is "
                               "not current soundout"));
            return false;
        }
        prediction.told.push_back("Sndout Optic QN 15747238 " + std::to_string(volume) + " " +
                                  flag(mute) + (state == "on" ? " 1" : " 0") +
                                  (refused ? " -> -5" : ""));
        if (refused) {
            prediction.logged.push_back(refusedByDriver());
            prediction.logged.push_back(
                error("CONTROL_ELEMENT_SET_ERROR", kFile + function,
                      "Did not able to set the element: Sndout Optic QN for QN SOUND SYNC"));
        } else {
            prediction.logged.push_back(
                said(function, "Set SOUNDOUT_OPTICQN_POWER ON/OFF is success"));
        }
        return !refused;
    }

    bool predictLight(Prediction& prediction, KEP_AUDIO_SNDOUT_T current, const std::string& state,
                      bool refused)
    {
        const std::string function = "setOpticLightOnOff";
        prediction.logged.push_back(said(function, "setOpticLightOnOff, power state is " + state));
        if (!hasLight(current)) {
            prediction.logged.push_back(
                said(function, "SPDIF_LIGHT ON/OFF is not set, since not supported soundout"));
            return true;
        }
        prediction.told.push_back("Sndout Optic LightOnOff " + flag(state == "opticLightOn") +
                                  (refused ? " -> -5" : ""));
        if (refused) {
            prediction.logged.push_back(refusedByDriver());
            prediction.logged.push_back(
                error("CONTROL_ELEMENT_SET_ERROR", kFile + function,
                      "Did not able to set the element: Sndout Optic LightOnOff"));
        } else {
            prediction.logged.push_back(said(function, "Set SPDIF_LIGHT ON/OFF is success"));
        }
        return !refused;
    }

    void expectPause(bool paused, const std::string& what)
    {
        if (paused)
            EXPECT_THAT(gPausesUs, ElementsAre(50000UL)) << what;
        else
            EXPECT_THAT(gPausesUs, IsEmpty()) << what;
        gPausesUs.clear();
    }
};

constexpr const char* kStates[] = {
    "on", "off", "opticLightOn", "opticLightOff", "", "ON", "standby",
};

TEST_F(SoundBar, StatesGoToTheBarOrToTheLight)
{
    for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
        for (const std::string state : kStates) {
            for (const bool refused : {false, true}) {
                enter({.volume = 33, .refusedWrite = refused ? 0 : -1});
                mBackend.mCurrentSoundout = current;
                mBackend.mOutputMuteStatus = refused;
                const JValue payload = with("powerState", state);
                const std::string what = std::to_string(current) + " " + state;
                Prediction prediction{{}};
                prediction.logged = request(payload);
                bool done = false;
                if (state == "on" || state == "off")
                    done = predictBar(prediction, current, state, 33, refused, refused);
                else if (state == "opticLightOn" || state == "opticLightOff")
                    done = predictLight(prediction, current, state, refused);
                else
                    prediction.logged.push_back(error("INVALID_PARAMETER",
                                                      std::string{kFile} + "setQNSoundbarState",
                                                      "Invalid power status: " + state));
                EXPECT_EQ(mBackend.setQNSoundbarState(payload), done) << what;
                expectPause(state == "off" && current == KEP_AUDIO_QN_SOUND_SYNC, what);
                expect(prediction, what);
            }
        }
    }
}

TEST_F(SoundBar, StateHasToBeAString)
{
    mBackend.mCurrentSoundout = KEP_AUDIO_QN_SOUND_SYNC;
    for (const JValue& payload : {JValue::object(), with("powerState", true), with("powerState", 1),
                                  with("powerState", JValue{}), with("powerState", JValue::array()),
                                  JValue::array(), JValue{"on"}, JValue{}, JValue::invalid()}) {
        forget();
        EXPECT_FALSE(mBackend.setQNSoundbarState(payload)) << payload.stringify();
        Lines expected = request(payload);
        expected.push_back(error("INVALID_PARAMETER", std::string{kFile} + "setQNSoundbarState",
                                 "powerState key is not available"));
        EXPECT_EQ(logLines(), expected);
        EXPECT_THAT(told(), IsEmpty());
    }
}

TEST_F(SoundBar, IsSwitchedWithTheKeptVolumeAndMute)
{
    for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
        for (const std::string state : kStates) {
            for (const int volume : {0, 255}) {
                for (const bool mute : {false, true}) {
                    for (const bool refused : {false, true}) {
                        enter({.volume = volume, .refusedWrite = refused ? 0 : -1});
                        mBackend.mCurrentSoundout = current;
                        mBackend.mOutputMuteStatus = mute;
                        const std::string what = std::to_string(current) + " " + state;
                        Prediction prediction{{}};
                        const bool done =
                            predictBar(prediction, current, state, volume, mute, refused);
                        EXPECT_EQ(mBackend.setPowerOnOffQNSoundSync(state), done) << what;
                        expectPause(state == "off" && current == KEP_AUDIO_QN_SOUND_SYNC, what);
                        expect(prediction, what);
                    }
                }
            }
        }
    }
}

TEST_F(SoundBar, IsNotWaitedForWhenAnotherOutputIsCurrent)
{
    mBackend.mCurrentSoundout = KEP_AUDIO_SPDIF;
    EXPECT_FALSE(mBackend.setPowerOnOffQNSoundSync("off"));
    EXPECT_THAT(gPausesUs, IsEmpty());
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(SoundBar, LightIsThatOfOpticalOutputs)
{
    for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
        for (const std::string state : kStates) {
            for (const bool refused : {false, true}) {
                enter({.refusedWrite = refused ? 0 : -1});
                mBackend.mCurrentSoundout = current;
                const std::string what = std::to_string(current) + " " + state;
                Prediction prediction{{}};
                const bool done = predictLight(prediction, current, state, refused);
                EXPECT_EQ(mBackend.setOpticLightOnOff(state), done) << what;
                expect(prediction, what);
            }
        }
    }
}

TEST_F(SoundBar, LightIsNotThatOfTheHeadphone)
{
    mBackend.mCurrentSoundout = KEP_AUDIO_HP;
    EXPECT_TRUE(mBackend.setOpticLightOnOff("opticLightOn"));
    EXPECT_THAT(told(), IsEmpty());
}

// --- Model

TEST_F(HeadphoneTest, TheModelFlagIsKept)
{
    EXPECT_FALSE(mBackend.getSupportBnoModel());
    for (const bool supported : {true, false}) {
        forget();
        mBackend.setSupportBnoModel(supported);
        EXPECT_EQ(mBackend.mSupportBnoModel, supported);
        EXPECT_EQ(mBackend.getSupportBnoModel(), supported);
        EXPECT_THAT(logLines(), ElementsAre(said("setSupportBnoModel",
                                                 "Setting support bno model: " + flag(supported)),
                                            said("getSupportBnoModel",
                                                 "Getting support bno model: " + flag(supported))));
    }
}

} // namespace
