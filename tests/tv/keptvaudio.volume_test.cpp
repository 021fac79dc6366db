// SPDX-License-Identifier: Apache-2.0
// Volume and mute: the table of outputs is written down here a second time, with what the
// television is told and what is logged for each mechanism. What is kept for later is read from
// later requests.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "faults.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int kUnknownOutput = 1;
constexpr int kBroken = 7; // any status but 0

enum class Way { Nothing, Unsupported, Speaker, Headphone, SoundSync, Unknown };

struct OutputRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
    Way volume;
    Way mute;
};

// clang-format off
constexpr OutputRow kOutputs[] = {
    // name                     output                     volume            mute
    {"tv_speaker",             KEP_AUDIO_SPK,             Way::Speaker,     Way::Speaker},
    {"tv_speaker_external",    KEP_AUDIO_SPK_SPDIF,       Way::Speaker,     Way::Speaker},
    {"tv_external_speaker",    KEP_AUDIO_SPK_SPDIF,       Way::Speaker,     Way::Speaker},
    {"tv_speaker_headphone",   KEP_AUDIO_SPK_HP,          Way::Speaker,     Way::Speaker},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC, Way::Speaker,     Way::Speaker},
    {"tv_speaker_bluetooth",   KEP_AUDIO_SPK_BLUETOOTH,   Way::Speaker,     Way::Speaker},
    {"headphone",              KEP_AUDIO_HP,              Way::Headphone,   Way::Headphone},
    {"lineout",                KEP_AUDIO_HP,              Way::Headphone,   Way::Headphone},
    {"qnSoundSync",            KEP_AUDIO_QN_SOUND_SYNC,   Way::SoundSync,   Way::SoundSync},
    {"external_arc",           KEP_AUDIO_ARC,             Way::Unsupported, Way::Unsupported},
    {"urcu_oss",               KEP_AUDIO_ARC,             Way::Unsupported, Way::Unsupported},
    {"bt_soundbar",            KEP_AUDIO_BT_SOUNDBAR,     Way::Unsupported, Way::Unsupported},
    {"wisa_speaker",           KEP_AUDIO_WISA,            Way::Unsupported, Way::Unsupported},
    {"external_speaker",       KEP_AUDIO_SPDIF,           Way::Nothing,     Way::Unsupported},
    {"external_optical",       KEP_AUDIO_SPDIF,           Way::Nothing,     Way::Unsupported},
    {"alsa",                   KEP_AUDIO_ALSA,            Way::Nothing,     Way::Unknown},
    {"unknown",                KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
    {"TV_SPEAKER",             KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
    {"",                       KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
};

constexpr KEP_AUDIO_SNDOUT_T kSelectable[] = {
    KEP_AUDIO_SPK,           KEP_AUDIO_SPDIF,        KEP_AUDIO_HP,   KEP_AUDIO_SPK_SPDIF,
    KEP_AUDIO_ARC,           KEP_AUDIO_SPK_HP,       KEP_AUDIO_WISA, KEP_AUDIO_SPK_OPTICAL_ARC,
    KEP_AUDIO_QN_SOUND_SYNC, KEP_AUDIO_BT_SOUNDBAR,  KEP_AUDIO_SPK_BLUETOOTH,
};
constexpr KEP_AUDIO_SNDOUT_T kSpeakerFamily[] = {
    KEP_AUDIO_SPK, KEP_AUDIO_SPK_SPDIF, KEP_AUDIO_SPK_HP, KEP_AUDIO_SPK_OPTICAL_ARC, KEP_AUDIO_SPK_BLUETOOTH,
};
// clang-format on

LogLine volumeInfo(const std::string& function, const std::string& text)
{
    return info("keptvaudio:" + function, text);
}

LogLine volumeError(const std::string& id, const std::string& function, const std::string& text)
{
    return error(id, "keptvaudio:" + function, text);
}

/// What a request is expected to do.
struct Expected {
    Texts told;
    Lines logged;
    unsigned int result = kDone;
};

/// What a request finds.
struct Situation {
    KEP_AUDIO_SNDOUT_T current = KEP_AUDIO_NO_OUTPUT;
    int storedVolume = 0;
    bool storedMute = false;
    bool fails = false; // whatever carries the request
};

std::ostream& operator<<(std::ostream& stream, const Situation& situation)
{
    return stream << " (current " << situation.current << ", volume " << situation.storedVolume
                  << ", mute " << situation.storedMute << (situation.fails ? ", failing)" : ")");
}

class VolumeTest : public TvBackendTest
{
protected:
    VolumeTest()
    {
        mBackend.mHeadphoneUnmuteTimerID = 0;
        mBackend.mHeadphoneTimerMuteDone = true; // no guard against noise stands in the way
    }

    void enter(const Situation& situation)
    {
        clearInjections();
        mBackend.mCurrentSoundout = situation.current;
        mBackend.mOutputVolume = static_cast<std::uint8_t>(situation.storedVolume);
        mBackend.mOutputMuteStatus = situation.storedMute;
        if (situation.fails) {
            injectMiddleware("soundengine.setOSDVolume", kBroken);
            injectMiddleware("gain.setOutputVolume", kBroken);
            injectMiddleware("gain.setInputVolume", kBroken);
            injectCard("write", kRefused);
        }
        forget();
    }

    /// What the backend itself logged; the adapters are not looked at.
    [[nodiscard]] Lines backendLines() const
    {
        Lines lines;
        std::copy_if(logLines().begin(), logLines().end(), std::back_inserter(lines),
                     [](const LogLine& line) { return line.origin.rfind("keptvaudio", 0) == 0; });
        return lines;
    }

    void expect(const Expected& expected, unsigned int result, const std::string& what)
    {
        EXPECT_EQ(result, expected.result) << what;
        EXPECT_EQ(told(), expected.told) << what;
        EXPECT_EQ(backendLines(), expected.logged) << what;
    }

    /// "volume mute" as a later request for the sound bar uses them.
    std::string kept()
    {
        clearInjections();
        const bool mute = mBackend.mOutputMuteStatus;
        forget();
        EXPECT_EQ(mBackend.setOutputMute("qnSoundSync", mute), kDone);
        const std::string prefix = "Sndout Optic QN 15747238 ";
        const std::string text = told().empty() ? "" : told().front();
        EXPECT_EQ(text.substr(0, prefix.size()), prefix);
        return text.size() > prefix.size() + 2
                   ? text.substr(prefix.size(), text.size() - prefix.size() - 2)
                   : text;
    }
};

// --- Expectations

std::string statusText(bool fails, const char* status = " -> 7")
{
    return fails ? status : "";
}

Expected volumeRequest(const OutputRow& row, int volume, const Situation& situation)
{
    const std::string number = std::to_string(volume);
    Expected expected;
    expected.logged.push_back(volumeInfo("setOutputVolume", "Request to set volume " + number +
                                                                " on output " + row.name));
    switch (row.volume) {
    case Way::Speaker:
        expected.told.push_back("soundengine.setOSDVolume " + number + statusText(situation.fails));
        if (situation.fails) {
            expected.logged.push_back(volumeError("SE_MIDDLEWARE_ERROR",
                                                  "setSpeakerHeadphoneOutputVolume",
                                                  "Failed to set speaker volume as " + number));
            expected.result = kFailed;
        } else if (volume == 0) {
            expected.told.emplace_back("amplifier.setAmpMute true");
        } else if (situation.storedVolume == 0) {
            expected.told.emplace_back("amplifier.setAmpMute false");
        }
        break;
    case Way::Headphone:
        expected.told.push_back("gain.setOutputVolume \"headphone\" " + number +
                                statusText(situation.fails));
        expected.result = situation.fails ? kFailed : kDone;
        break;
    case Way::SoundSync:
        expected.logged.push_back(debug("keptvaudio:setOutputVolume",
                                        "setOutputVolume for QN sound sync - Volume = " + number +
                                            ", Mute = " + flag(situation.storedMute)));
        expected.logged.push_back(debug("keptvaudio:setQNSoundSyncOutputVolume",
                                        "Request to set volume " + number + " and muteStatus " +
                                            flag(situation.storedMute)));
        expected.told.push_back("Sndout Optic QN 15747238 " + number + " " +
                                flag(situation.storedMute) + " 1" +
                                statusText(situation.fails, " -> -5"));
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(volumeError(
                "SET_VOLUME_ERROR", "setOutputVolume",
                "Failed to set volume " + number + " for element: Sndout Optic QN on " + row.name));
            expected.result = kFailed;
        }
        break;
    case Way::Unsupported:
        expected.logged.push_back(volumeInfo(
            "setOutputVolume",
            std::string{"Volume Operation wont be supported for soundoutput "} + row.name));
        break;
    case Way::Nothing:
    case Way::Unknown:
        break;
    }
    return expected;
}

Expected muteRequest(const OutputRow& row, bool mute, const Situation& situation)
{
    const std::string number = flag(mute);
    const std::string failed = statusText(situation.fails, " -> -5");
    Expected expected;
    expected.logged.push_back(volumeInfo("setOutputMute", "Setting mute to " + number +
                                                              " on soundOutputType " + row.name));
    expected.result = situation.fails ? kFailed : kDone;
    switch (row.mute) {
    case Way::Speaker:
        expected.told.push_back("Mute Output 1 " + number + failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(
                volumeError("CONTROL_ELEMENT_SET_ERROR", "setSpeakerOutputMute",
                            "Did not able to set the element: Mute Output on tv speaker"));
        } else if (situation.storedVolume != 0) {
            expected.told.push_back("amplifier.setAmpMute " + word(mute));
        }
        break;
    case Way::Headphone: {
        const std::string file = "keptvaudio:";
        for (const char* name : {"muteStatus ", "mHeadphoneMuteStatus "})
            expected.logged.push_back(
                info(file + "setMuteHeadphone",
                     std::string{"Called setMuteHeadphone "} + name + number));
        expected.logged.push_back(info(file + "executeMuteHeadphone",
                                       "Called execute muteHeadphone muteStatus " + number));
        expected.logged.push_back(
            info(file + "isValidHeadphoneMute", "isValidHeadphoneMute check " + number + " 0 0"));
        expected.told.push_back("subcpu_misc_Set_HPMuteOnOff " + word(mute));
        expected.told.push_back("Mute Output 16 " + number + failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(error("CONTROL_ELEMENT_SET_ERROR",
                                            "keptvaudio:setMuteControlElement",
                                            "Did not able to set the element: Mute Output on 32"));
        }
        break;
    }
    case Way::SoundSync: {
        const std::string volume = std::to_string(situation.storedVolume);
        expected.logged.push_back(
            debug("keptvaudio:setQNSoundSyncOutputVolume",
                  "Request to set volume " + volume + " and muteStatus " + number));
        expected.told.push_back("Sndout Optic QN 15747238 " + volume + " " + number + " 1" +
                                failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(volumeError(
                "AUDIO_DRIVER_ERROR", "setOutputMute",
                "Failed to set soundoutput mute for element: Sndout Optic QN on QN sound sync"));
        }
        break;
    }
    case Way::Unsupported:
        expected.logged.push_back(volumeInfo(
            "setOutputMute",
            std::string{"Mute Operation wont be supported for soundoutput "} + row.name));
        expected.result = kDone;
        break;
    case Way::Nothing:
    case Way::Unknown:
        expected.result = kUnknownOutput;
        break;
    }
    return expected;
}

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

// --- Reset

TEST_F(VolumeTest, AResetIsAskedForByATrueReset)
{
    const auto with = [](const JValue& value) {
        JValue object = JValue::object();
        object.put("pipelineId", "p");
        object.put("reset", value);
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
