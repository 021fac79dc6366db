// SPDX-License-Identifier: Apache-2.0
// Headphone: whether one is there, the decision about a mute, and the three ways to ask for one.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "faults.h"
#include "headphonetest.h"
#include "television.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

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
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) {
            for (const bool mute : {true, false}) {
                const Situation situation{row.status, row.detection, row.powerState, gate};
                enter(situation);
                const bool reaches = mute ? row.muteReaches : row.unmuteReaches;
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_TRUE(mBackend.executeMuteHeadphone(mute)) << what;
                expect({reaches ? headphoneTold(mute) : Texts{}, decided(row, mute)}, what);
            }
        }
    }
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
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) {
            for (const bool before : {true, false}) {
                const bool mute = row.status; // the request is the first of the reasons
                const Situation situation{before, row.detection, row.powerState, gate};
                enter(situation);
                Outcome outcome{.logged = muteAskedFor(mute)};
                if (!mute && gate != Gate::Done)
                    outcome.logged.push_back(heldBack("setMuteHeadphone", gate));
                else
                    outcome.logged = outcome.logged + decided(row, mute);
                if (mute || (gate == Gate::Done && row.unmuteReaches))
                    outcome.told = headphoneTold(mute);
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_TRUE(mBackend.setMuteHeadphone(mute)) << what;
                expect(outcome, what);
                EXPECT_THAT(reasons(), ElementsAre(mute, row.detection, row.powerState));
            }
        }
    }
}

TEST_F(MuteHeadphone, ByDetectionPassesTimerAndDecision)
{
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) {
            for (const bool before : {true, false}) {
                const bool mute = row.detection;
                const Situation situation{row.status, before, row.powerState, gate};
                enter(situation);
                Outcome outcome{
                    .logged = {said("setHeadphoneDetectionMute",
                                    "Called setHeadphoneDetectionMute muteStatus " + flag(mute))}};
                if (!mute && gate != Gate::Done) {
                    outcome.logged.push_back(heldBack("setHeadphoneDetectionMute", gate));
                } else {
                    outcome.told = {"subcpu_misc_Set_HPMuteOnOff " + word(mute)};
                    outcome.logged =
                        outcome.logged + Lines{externalSpeaker(mute)} + decided(row, mute);
                    if (mute || row.unmuteReaches)
                        outcome.told = outcome.told + headphoneTold(mute);
                }
                const std::string what = testing::PrintToString(situation) + flag(mute);
                EXPECT_TRUE(mBackend.setHeadphoneDetectionMute(mute)) << what;
                expect(outcome, what);
                EXPECT_THAT(reasons(), ElementsAre(row.status, mute, row.powerState));
            }
        }
    }
}

TEST_F(MuteHeadphone, ByPowerStatePassesTimerAndDecision)
{
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) {
            for (const KEP_AUDIO_SNDOUT_T output :
                 {KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_NO_OUTPUT}) {
                for (const bool mute : {true, false}) {
                    for (const bool resume : {false, mute}) { // an unmute is the next test's
                        const Situation situation{row.status, row.detection, row.powerState,
                                                  gate,       resume,        25};
                        enter(situation);
                        const bool pair = output == KEP_AUDIO_SPK_HP;
                        const Texts speaker = pair ? Texts{"Mute Output 1 " + flag(mute)} : Texts{};
                        const bool passes = mute || gate == Gate::Done;
                        Outcome outcome{.logged = {byPowerState(output)}};
                        if (!passes) {
                            outcome.told = speaker; // need not wait
                            outcome.logged.push_back(heldBack("setPowerStateHeadphoneMute", gate));
                        } else {
                            const bool reaches = mute ? row.muteReaches : row.unmuteReaches;
                            outcome.told =
                                Texts{"subcpu_misc_Set_HPMuteOnOff " + word(mute)} +
                                (reaches ? headphoneTold(mute) : Texts{}) + speaker +
                                (pair ? Texts{"amplifier.setAmpMute " + word(mute)} : Texts{});
                            outcome.logged =
                                outcome.logged + Lines{externalSpeaker(mute)} + decided(row, mute);
                        }
                        const std::string what = testing::PrintToString(situation) +
                                                 std::to_string(output) + " " + flag(mute);
                        EXPECT_EQ(mBackend.setPowerStateHeadphoneMute(output, mute), passes)
                            << what;
                        expect(outcome, what);
                        EXPECT_THAT(reasons(),
                                    ElementsAre(row.status, row.detection, row.powerState));
                        EXPECT_EQ(preparesResume(), resume) << what;
                    }
                }
            }
        }
    }
}

TEST_F(MuteHeadphone, AfterAResumeIsEndedByATimer)
{
    for (const DecisionRow& row : kDecisions) {
        for (const Gate gate : kGates) {
            for (const KEP_AUDIO_SNDOUT_T output :
                 {KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_NO_OUTPUT}) {
                const Situation situation{row.status, row.detection,          row.powerState,
                                          gate,       /*prepareResume=*/true, 25};
                enter(situation);
                const std::string what = testing::PrintToString(situation) + std::to_string(output);
                EXPECT_TRUE(mBackend.setPowerStateHeadphoneMute(output, /*mute=*/false)) << what;
                expect({{}, {byPowerState(output), kResuming}, isPending(gate) ? 0U : 1U}, what);
                EXPECT_FALSE(preparesResume()) << what;
            }
        }
    }
}

TEST_F(MuteHeadphone, GoesOnAfterAFailureAndTellsOfIt)
{
    enum Way { kRequest, kDetection, kHeadphone, kPair, kPairSilent };
    const auto run = [this](Way way, bool mute) {
        switch (way) {
        case kRequest:
            return mBackend.setMuteHeadphone(mute);
        case kDetection:
            return mBackend.setHeadphoneDetectionMute(mute);
        case kHeadphone:
            return mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_HP, mute);
        default:
            return mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_SPK_HP, mute);
        }
    };
    struct Row {
        Way way;
        std::vector<bool> line; // orders to the sub-microcontroller that fail
        int refusedWrite;
        bool done;
        const char* told; // by initials: external speaker, Headphone, Write, Speaker, Amplifier
        const char* errors;
    };
    // A "!" behind a step says that it fails.
    // clang-format off
    const Row rows[] = {
        // way        line            write  done   told        errors
        {kRequest,    {true},         -1,    false, "H!W",      "H"},
        {kRequest,    {},              0,    false, "HW!",      "W"},
        {kRequest,    {true},          0,    false, "H!W!",     "HW"},
        {kDetection,  {true},         -1,    true,  "E!HW",     "E"},
        {kDetection,  {false, true},  -1,    false, "EH!W",     "H"},
        {kDetection,  {},              0,    false, "EHW!",     "W"},
        {kDetection,  {true, true},    0,    false, "E!H!W!",   "EHW"},
        {kHeadphone,  {true},         -1,    true,  "E!HW",     "E"},
        {kHeadphone,  {false, true},  -1,    false, "EH!W",     "H"},
        {kHeadphone,  {},              0,    false, "EHW!",     "W"},
        {kHeadphone,  {true, true},    0,    false, "E!H!W!",   "EHW"},
        {kPair,       {},             -1,    true,  "EHWSA",    ""},
        {kPair,       {true},         -1,    true,  "E!HWSA",   "E"},
        {kPair,       {false, true},  -1,    false, "EH!WS",    "H"},
        {kPair,       {},              0,    false, "EHW!S",    "W"},
        {kPair,       {},              1,    false, "EHWS!",    "S"},
        {kPair,       {true, true},    1,    false, "E!H!WS!",  "EHS"},
        {kPairSilent, {},             -1,    true,  "EHWS",     ""},
    };
    // clang-format on
    for (const Row& row : rows) {
        for (const bool mute : {true, false}) {
            const std::string flagged = flag(mute);
            const std::map<char, std::pair<std::string, std::string>> steps = {
                {'E', {"subcpu_misc_Set_HPMuteOnOff " + word(mute), " -> 5"}},
                {'H', {"subcpu_misc_Set_HPMuteOnOff " + word(mute), " -> 5"}},
                {'W', {"Mute Output 16 " + flagged, " -> -5"}},
                {'S', {"Mute Output 1 " + flagged, " -> -5"}},
                {'A', {"amplifier.setAmpMute " + word(mute), ""}},
            };
            const std::map<char, Lines> errors = {
                {'E', {lineFailed("executeMuteExtSpeaker", "external speaker", mute)}},
                {'H', {lineFailed("executeMuteHeadphone", "headphone", mute)}},
                {'W', {refusedByDriver(), muteNotSet(KEP_AUDIO_HP)}},
                {'S', {refusedByDriver(), muteNotSet(KEP_AUDIO_SPK)}},
            };
            Texts expectedTold;
            char last = ' ';
            for (const char step : std::string{row.told}) {
                if (step == '!')
                    expectedTold.back() += steps.at(last).second;
                else
                    expectedTold.push_back(steps.at(step).first);
                last = step;
            }
            Lines expectedErrors;
            for (const char step : std::string{row.errors})
                expectedErrors = expectedErrors + errors.at(step);
            enter({.powerState = mute && row.way >= kHeadphone,
                   .volume = row.way == kPairSilent ? 0 : 25,
                   .refusedWrite = row.refusedWrite});
            failLine(row.line);
            EXPECT_EQ(run(row.way, mute), row.done) << row.told << flagged;
            EXPECT_EQ(told(), expectedTold) << row.told << flagged;
            EXPECT_EQ(logLines(kLogError), expectedErrors) << row.told << flagged;
        }
    }
}

TEST_F(MuteHeadphone, OfThePairTellsOfASpeakerThatIsRefusedWhileItWaits)
{
    enter({.gate = Gate::NotYet, .volume = 25, .refusedWrite = 0});
    EXPECT_FALSE(mBackend.setPowerStateHeadphoneMute(KEP_AUDIO_SPK_HP, /*mute=*/false));
    EXPECT_THAT(told(), ElementsAre("Mute Output 1 0 -> -5"));
    EXPECT_THAT(logLines(kLogError), ElementsAre(refusedByDriver(), muteNotSet(KEP_AUDIO_SPK)));
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
                enter({.gate = gate});
                if (fails)
                    failLine({false, true});
                const bool passes = row.hasMute && (row.mute || gate == Gate::Done);
                EXPECT_EQ(mBackend.setHeadphoneDetectionMute(row.payload),
                          row.hasMute && !(passes && fails))
                    << row.payload.stringify();
                Texts expected;
                if (passes)
                    expected = Texts{"subcpu_misc_Set_HPMuteOnOff " + word(row.mute)} +
                               headphoneTold(row.mute);
                if (passes && fails)
                    expected[1] += " -> 5";
                EXPECT_EQ(told(), expected) << row.payload.stringify();
                EXPECT_EQ(logLines().front(),
                          said("setHeadphoneDetectionMute",
                               "Setting headphone detection mute to " + flag(row.mute)));
                EXPECT_EQ(logLines().size() > 1, row.hasMute) << row.payload.stringify();
                EXPECT_EQ(mBackend.getMuteHeadphoneDetection(), row.mute);
            }
        }
    }
}

} // namespace
