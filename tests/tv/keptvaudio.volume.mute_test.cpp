// SPDX-License-Identifier: Apache-2.0
// Mute: of outputs, and of the external speaker.
#include <algorithm>
#include <iterator>
#include <string>

#include <gmock/gmock.h>

#include "faults.h"
#include "volumetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Mute of an output

class OutputMute : public VolumeTest
{
};

TEST_F(OutputMute, GoesTheWayOfItsOutputAndIsAlwaysKept)
{
    for (const OutputRow& row : kOutputs) {
        for (const KEP_AUDIO_SNDOUT_T current : kSelectable) {
            for (const bool fails : {false, true}) {
                for (const int volume : {0, 25}) {
                    for (const bool mute : {true, false}) {
                        const Situation situation{current, volume, !mute, fails};
                        const std::string what =
                            std::string{row.name} + testing::PrintToString(situation);
                        enter(situation);
                        expect(muteRequest(row, mute, situation),
                               mBackend.setOutputMute(row.name, mute), what);
                        clearInjections();
                        forget();
                        EXPECT_EQ(mBackend.setOutputVolume("qnSoundSync", 77), kDone);
                        EXPECT_THAT(told(),
                                    ElementsAre("Sndout Optic QN 15747238 77 " + flag(mute) + " 1"))
                            << what;
                    }
                }
            }
        }
    }
}

TEST_F(OutputMute, OfTheSpeakerAtVolumeZeroLeavesTheAmplifierAlone)
{
    enter({KEP_AUDIO_SPK, 0, false, false});
    EXPECT_EQ(mBackend.setOutputMute("tv_speaker", /*mute=*/true), kDone);
    EXPECT_EQ(mBackend.setOutputMute("tv_speaker", /*mute=*/false), kDone);
    EXPECT_THAT(told(), ElementsAre("Mute Output 1 1", "Mute Output 1 0"));
}

TEST_F(OutputMute, OfAnUnknownOutputIsKept)
{
    EXPECT_EQ(mBackend.setOutputMute("unknown", /*mute=*/true), kUnknownOutput);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(logLines(), ElementsAre(volumeInfo(
                                "setOutputMute", "Setting mute to 1 on soundOutputType unknown")));
    EXPECT_EQ(kept(), "0 1");
}

TEST_F(OutputMute, OfTheHeadphoneFailsWithEitherOfItsSteps)
{
    enter({});
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", kBroken, {}});
    EXPECT_EQ(mBackend.setOutputMute("headphone", /*mute=*/true), kFailed);
    EXPECT_THAT(told(), ElementsAre("subcpu_misc_Set_HPMuteOnOff true -> 7", "Mute Output 16 1"));
    EXPECT_THAT(logLines(kLogError),
                ElementsAre(error("SUBCPU_ERROR", "keptvaudio:executeMuteHeadphone",
                                  "Failed to set headphone mute status 1")));
}

TEST_F(OutputMute, OfTheHeadphoneThatIsHeldBackCountsAsDone)
{
    enter({});
    mBackend.mHeadphoneTimerMuteDone = false;
    EXPECT_EQ(mBackend.setOutputMute("headphone", /*mute=*/false), kDone);
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(OutputMute, OfTheSpeakerIsDoneEvenWhenTheAmplifierDoesNotAnswer)
{
    enter({KEP_AUDIO_SPK, 25, false, false});
    injectMiddleware("amplifier.setAmpMute", kBroken);
    EXPECT_EQ(mBackend.setOutputMute("tv_speaker", /*mute=*/true), kDone);
    EXPECT_THAT(told(), ElementsAre("Mute Output 1 1", "amplifier.setAmpMute true -> 7"));
    EXPECT_THAT(backendLines(),
                ElementsAre(volumeInfo("setOutputMute", "Setting mute to 1 on soundOutputType "
                                                        "tv_speaker")));
}

TEST_F(OutputMute, OfTheSpeakerIsAlsoAnOperationOfItsOwn)
{
    for (const bool mute : {true, false}) {
        enter({KEP_AUDIO_HP, 25, !mute, false});
        EXPECT_EQ(mBackend.setSpeakerOutputMute(mute), kDone);
        EXPECT_THAT(told(), ElementsAre("Mute Output 1 " + flag(mute),
                                        "amplifier.setAmpMute " + word(mute)));
        EXPECT_THAT(backendLines(), IsEmpty());
        EXPECT_EQ(kept(), "25 " + flag(!mute)); // its caller keeps the mute
    }
}

TEST_F(OutputMute, OfTheCombinationsIsThatOfTheSpeaker)
{
    for (const KEP_AUDIO_SNDOUT_T output : kSpeakerFamily) {
        const auto* row = std::find_if(std::begin(kOutputs), std::end(kOutputs),
                                       [&](const OutputRow& one) { return one.output == output; });
        enter({output, 25, false, false});
        EXPECT_EQ(mBackend.setOutputMute(row->name, /*mute=*/true), kDone);
        EXPECT_THAT(told(), ElementsAre("Mute Output 1 1", "amplifier.setAmpMute true"))
            << row->name;
    }
}

// --- External speaker

class ExternalSpeaker : public VolumeTest
{
};

TEST_F(ExternalSpeaker, IsMutedThroughTheHeadphonesLine)
{
    for (const bool mute : {true, false}) {
        for (const int status : {0, 1, -1, kBroken}) {
            enter({KEP_AUDIO_SPK, 25, !mute, false});
            virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", status, {}});
            const std::string call = "subcpu_misc_Set_HPMuteOnOff " + word(mute) +
                                     (status != 0 ? " -> " + std::to_string(status) : "");
            Lines expected = {
                volumeInfo("setMuteExtSPK",
                           "Setting mute to " + flag(mute) + " on External Speaker"),
                volumeInfo("executeMuteExtSpeaker",
                           "executeMuteExtSpeaker is called / muteStatus = " + flag(mute))};
            if (status != 0)
                expected.push_back(
                    volumeError("SUBCPU_ERROR", "executeMuteExtSpeaker",
                                "Failed to set external speaker mute status " + flag(mute)));
            EXPECT_EQ(mBackend.setMuteExtSPK(mute), status == 0 ? kDone : kFailed);
            EXPECT_THAT(told(), ElementsAre(call));
            EXPECT_EQ(logLines(), expected);

            forget();
            expected.erase(expected.begin());
            EXPECT_EQ(mBackend.executeMuteExtSpeaker(mute), status == 0);
            EXPECT_THAT(told(), ElementsAre(call));
            EXPECT_EQ(logLines(), expected);
            EXPECT_EQ(kept(), "25 " + flag(!mute));
        }
    }
}

} // namespace
