// SPDX-License-Identifier: Apache-2.0
// Volume: of outputs and of inputs, and whether a reset is asked for.
#include <cstdint>
#include <string>

#include <gmock/gmock.h>

#include "volumetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Volume of an output

class OutputVolume : public VolumeTest
{
};

TEST_F(OutputVolume, GoesTheWayOfItsOutputAndIsKeptForTheCurrentOneOnly)
{
    for (const OutputRow& row : kOutputs) {
        for (const KEP_AUDIO_SNDOUT_T current : kSelectable) {
            for (const bool fails : {false, true}) {
                for (const int volume : {0, 1, 40, 255}) {
                    const Situation situation{current, 25, volume == 40, fails};
                    const std::string what =
                        std::string{row.name} + testing::PrintToString(situation);
                    enter(situation);
                    expect(volumeRequest(row, volume, situation),
                           mBackend.setOutputVolume(row.name, static_cast<std::uint8_t>(volume)),
                           what);
                    EXPECT_EQ(kept(), std::to_string(row.output == current ? volume : 25) + " " +
                                          flag(situation.storedMute))
                        << what;
                }
            }
        }
    }
}

TEST_F(OutputVolume, LooksAtTheVolumeBefore)
{
    for (const OutputRow& row : kOutputs) {
        for (const int before : {0, 1, 255}) {
            for (const int volume : {0, 1, 255}) {
                for (const KEP_AUDIO_SNDOUT_T current : {row.output, KEP_AUDIO_WISA}) {
                    const Situation situation{current, before, false, false};
                    enter(situation);
                    expect(volumeRequest(row, volume, situation),
                           mBackend.setOutputVolume(row.name, static_cast<std::uint8_t>(volume)),
                           std::string{row.name} + testing::PrintToString(situation));
                }
            }
        }
    }
}

TEST_F(OutputVolume, OfZeroMutesTheAmplifierUntilTheCurrentSpeakerGetsAnother)
{
    enter({KEP_AUDIO_SPK, 25, false, false});
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 0), kDone);
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 10), kDone);
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 11), kDone);
    EXPECT_THAT(told(), ElementsAre("soundengine.setOSDVolume 0", "amplifier.setAmpMute true",
                                    "soundengine.setOSDVolume 10", "amplifier.setAmpMute false",
                                    "soundengine.setOSDVolume 11"));
}

TEST_F(OutputVolume, OfZeroForAnotherOutputLeavesTheAmplifierMuted)
{
    enter({KEP_AUDIO_ARC, 25, false, false});
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 0), kDone);
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 10), kDone);
    EXPECT_THAT(told(), ElementsAre("soundengine.setOSDVolume 0", "amplifier.setAmpMute true",
                                    "soundengine.setOSDVolume 10"));
}

TEST_F(OutputVolume, IsKeptWhenTheOutputChanges)
{
    for (const OutputRow& row : kOutputs) {
        enter({KEP_AUDIO_SPK, 25, false, false});
        mBackend.setSoundOutput(row.name);
        EXPECT_EQ(mBackend.mOutputVolume, 25) << row.name;
    }
}

TEST_F(OutputVolume, IsZeroAtFirst)
{
    EXPECT_EQ(kept(), "0 0");
}

TEST_F(OutputVolume, OfTheOpticalOutputIsNobodysBusiness)
{
    enter({KEP_AUDIO_SPDIF, 25, false, false});
    EXPECT_EQ(mBackend.setOutputVolume("external_optical", 30), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(logLines(),
                ElementsAre(volumeInfo("setOutputVolume", "Request to set volume 30 on output "
                                                          "external_optical")));
    EXPECT_EQ(kept(), "30 0");
}

TEST_F(OutputVolume, IsNotKeptForAnOutputThatNobodyKnows)
{
    for (const char* name : {"unknown", ""}) {
        enter({KEP_AUDIO_NO_OUTPUT, 25, false, false});
        EXPECT_EQ(mBackend.setOutputVolume(name, 30), kDone);
        EXPECT_THAT(told(), IsEmpty());
        EXPECT_EQ(kept(), "25 0") << name;
    }
    enter({KEP_AUDIO_ALSA, 25, false, false});
    EXPECT_EQ(mBackend.setOutputVolume("alsa", 30), kDone);
    EXPECT_EQ(kept(), "25 0");
}

TEST_F(OutputVolume, IsKeptUnderEitherNameOfTheCurrentOutput)
{
    enter({KEP_AUDIO_HP, 25, false, false});
    mBackend.setOutputVolume("lineout", 31);
    EXPECT_EQ(kept(), "31 0");
    enter({KEP_AUDIO_ARC, 25, false, false});
    mBackend.setOutputVolume("urcu_oss", 32);
    EXPECT_EQ(kept(), "32 0");
}

TEST_F(OutputVolume, CarriesTheMuteThatWasAskedForLast)
{
    enter({KEP_AUDIO_QN_SOUND_SYNC, 0, false, false});
    mBackend.setOutputMute("unknown", /*mute=*/true);
    EXPECT_EQ(mBackend.setOutputVolume("qnSoundSync", 12), kDone);
    mBackend.setOutputMute("external_arc", /*mute=*/false);
    EXPECT_EQ(mBackend.setOutputVolume("qnSoundSync", 13), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Optic QN 15747238 12 1 1", "Sndout Optic QN 15747238 13 0 1"));
}

TEST_F(OutputVolume, OfTheSpeakerIsSetEvenWhenTheAmplifierDoesNotAnswer)
{
    enter({KEP_AUDIO_SPK, 25, false, false});
    injectMiddleware("amplifier.setAmpMute", kBroken);
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 0), kDone);
    EXPECT_EQ(mBackend.setOutputVolume("tv_speaker", 9), kDone);
    EXPECT_THAT(told(),
                ElementsAre("soundengine.setOSDVolume 0", "amplifier.setAmpMute true -> 7",
                            "soundengine.setOSDVolume 9", "amplifier.setAmpMute false -> 7"));
}

TEST_F(OutputVolume, ThatFailedLeavesNoFurtherLine)
{
    for (const char* name : {"tv_speaker", "headphone"}) {
        enter({KEP_AUDIO_NO_OUTPUT, 25, false, true});
        EXPECT_EQ(mBackend.setOutputVolume(name, 8), kFailed);
        const LogLine last = logLines().back();
        EXPECT_EQ(last.id,
                  name == std::string{"headphone"} ? "GAIN_MWL_ERROR" : "SE_MIDDLEWARE_ERROR");
    }
}

TEST_F(OutputVolume, ThatIsNotAdmittedInTheLogIsSetAllTheSame)
{
    admit(kLogError);
    enter({KEP_AUDIO_QN_SOUND_SYNC, 25, true, false});
    EXPECT_EQ(mBackend.setOutputVolume("qnSoundSync", 8), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout Optic QN 15747238 8 1 1"));
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- The mechanisms

TEST_F(OutputVolume, OfTheSpeakerIsAlsoAnOperationOfItsOwn)
{
    for (const int before : {0, 25}) {
        for (const int volume : {0, 1, 255}) {
            enter({KEP_AUDIO_SPK, before, false, false});
            EXPECT_TRUE(
                mBackend.setSpeakerHeadphoneOutputVolume(static_cast<std::uint8_t>(volume)));
            Texts expected = {"soundengine.setOSDVolume " + std::to_string(volume)};
            if (volume == 0 || before == 0)
                expected.push_back("amplifier.setAmpMute " + word(volume == 0));
            EXPECT_EQ(told(), expected) << before << " " << volume;
            EXPECT_THAT(backendLines(), IsEmpty());
            EXPECT_EQ(kept(), std::to_string(before) + " 0"); // its caller keeps the volume
        }
        enter({KEP_AUDIO_SPK, before, false, true});
        EXPECT_FALSE(mBackend.setSpeakerHeadphoneOutputVolume(0));
        EXPECT_THAT(told(), ElementsAre("soundengine.setOSDVolume 0 -> 7"));
        EXPECT_THAT(backendLines(), ElementsAre(volumeError("SE_MIDDLEWARE_ERROR",
                                                            "setSpeakerHeadphoneOutputVolume",
                                                            "Failed to set speaker volume as 0")));
    }
}

TEST_F(OutputVolume, OfTheSoundBarIsAlsoAnOperationOfItsOwn)
{
    for (const int volume : {0, 1, 255}) {
        for (const bool mute : {false, true}) {
            for (const bool fails : {false, true}) {
                enter({KEP_AUDIO_QN_SOUND_SYNC, 25, !mute, fails});
                EXPECT_EQ(
                    mBackend.setQNSoundSyncOutputVolume(static_cast<std::uint8_t>(volume), mute),
                    !fails);
                EXPECT_THAT(told(),
                            ElementsAre("Sndout Optic QN 15747238 " + std::to_string(volume) + " " +
                                        flag(mute) + " 1" + statusText(fails, " -> -5")));
                Lines expected = {debug("keptvaudio:setQNSoundSyncOutputVolume",
                                        "Request to set volume " + std::to_string(volume) +
                                            " and muteStatus " + flag(mute))};
                if (fails)
                    expected.push_back(refusedByDriver());
                EXPECT_EQ(logLines(), expected);
                EXPECT_EQ(kept(), "25 " + flag(!mute));
            }
        }
    }
}

// --- Inputs

struct InputRow {
    const char* source;
    const char* sink;
    const char* address; // index and port; null: no such resource
    int gainNumber;
};

// clang-format off
constexpr InputRow kInputs[] = {
    // source     sink    address  gain
    {"ADEC",     "MAIN", "1 0",    0},
    {"ADEC",     "SUB",  "1 0",    0},
    {"ADEC0",    "MAIN", "1 0",    0},
    {"ADEC0",    "SUB",  "1 0",    0},
    {"ADEC1",    "MAIN", "1 1",    1},
    {"ADEC1",    "SUB",  "1 1",    1},
    {"AMIXER0",  "MAIN", "16 0",   2},
    {"AMIXER1",  "SUB",  "16 1",   3},
    {"AMIXER2",  "MAIN", "16 2",   4},
    {"AMIXER3",  "SUB",  "16 3",   5},
    {"AMIXER4",  "MAIN", "16 4",   6},
    {"AMIXER5",  "SUB",  "16 5",   7},
    {"AMIXER6",  "MAIN", "16 6",   8},
    {"AMIXER7",  "SUB",  "16 7",   9},
    {"AMIXER",   "ALSA", "16 0",   2},
    {"ADEC0",    "ALSA", nullptr,  0},
    {"AMIXER",   "MAIN", nullptr,  0},
    {"AMIXER0",  "ALSA", nullptr,  0},
    {"AMIXER8",  "MAIN", nullptr,  0},
    {"ADEC2",    "MAIN", nullptr,  0},
    {"adec0",    "MAIN", nullptr,  0},
    {"MAIN",     "ADEC0", nullptr, 0},
    {"",         "",     nullptr,  0},
};
// clang-format on

class Input : public VolumeTest
{
};

TEST_F(Input, IsMutedAtItsPortOfTheDriver)
{
    for (const InputRow& row : kInputs) {
        for (const bool mute : {true, false}) {
            for (const bool fails : {false, true}) {
                const std::string names =
                    std::string{row.source} + " and sink " + row.sink + " as " + flag(mute);
                Expected expected{
                    {}, {volumeInfo("setMute", "Request to set mute status of source " + names)}};
                if (row.address == nullptr) {
                    expected.result = kInvalidResource;
                } else {
                    expected.told.push_back(std::string{"Mute Input "} + row.address + " " +
                                            flag(mute) + statusText(fails, " -> -5"));
                    if (fails) {
                        expected.result = kFailed;
                        expected.logged.push_back(refusedByDriver());
                        expected.logged.push_back(volumeError(
                            "CONTROL_ELEMENT_SET_ERROR", "setMute",
                            std::string{"Did not able to set the element: Mute Input for source "} +
                                row.source + " and sink " + row.sink + " with status " +
                                flag(mute)));
                    }
                }
                enter({KEP_AUDIO_SPK, 25, false, fails});
                expect(expected, mBackend.setMute(row.source, row.sink, mute), names);
                EXPECT_EQ(kept(), "25 0") << names; // that of the output is another matter
            }
        }
    }
}

TEST_F(Input, HasAVolumeInTheGainMiddleware)
{
    for (const InputRow& row : kInputs) {
        for (const int volume : {0, 40, 255}) {
            for (const bool fails : {false, true}) {
                const std::string request = "Request to set input volume " +
                                            std::to_string(volume) + " on source " + row.source +
                                            " and sink " + row.sink;
                Expected expected{{}, {volumeInfo("setInputVolume", request)}};
                expected.result = row.address == nullptr || fails ? kFailed : kDone;
                if (row.address != nullptr)
                    expected.told.push_back("gain.setInputVolume " +
                                            std::to_string(row.gainNumber) + " " +
                                            std::to_string(volume) + statusText(fails));
                enter({KEP_AUDIO_SPK, 25, false, fails});
                expect(expected,
                       mBackend.setInputVolume(row.source, row.sink,
                                               static_cast<std::uint8_t>(volume)),
                       request);
                EXPECT_EQ(kept(), "25 0") << request;
            }
        }
    }
}

TEST_F(Input, ThatDoesNotExistIsRefusedWithTwoDifferentCodes)
{
    EXPECT_EQ(mBackend.setMute("ADEC0", "NOWHERE", /*mute=*/true), kInvalidResource);
    EXPECT_EQ(mBackend.setInputVolume("ADEC0", "NOWHERE", 5), kFailed);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(logLines(kLogError), IsEmpty());
}

// --- Reset

TEST_F(VolumeTest, AResetIsAskedForByATrueReset)
{
    const auto with = [](const JValue& value) {
        JValue object = JValue::object();
        object.put("pipelineId", "p");
        static_cast<void>(object.put("reset", value));
        return object;
    };
    JValue other = JValue::object();
    other.put("Reset", true);
    const struct {
        JValue value;
        bool expected;
    } rows[] = {
        {with(true), true},        {with(false), false},     {with("true"), false},
        {with(1), false},          {with(JValue{}), false},  {other, false},
        {JValue::object(), false}, {JValue::array(), false}, {JValue{true}, false},
        {JValue{"reset"}, false},  {JValue{}, false},        {JValue::invalid(), false},
    };
    for (const auto& row : rows) {
        forget();
        EXPECT_EQ(mBackend.checkForResetValue(row.value), row.expected) << row.value.stringify();
        EXPECT_THAT(logLines(), ElementsAre(debug("keptvaudio:checkForResetValue",
                                                  "checking for reset value")));
        EXPECT_THAT(told(), IsEmpty());
    }
}

} // namespace
