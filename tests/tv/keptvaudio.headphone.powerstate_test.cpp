// SPDX-License-Identifier: Apache-2.0
// Headphone and power state: muting by the name of the output.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "headphonetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

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

    /// The writes of all members, of which one is refused, and the lines that tell of it.
    static Outcome writesOf(const PowerRow& row, bool mute, int volume, int refused)
    {
        Outcome outcome;
        if (row.isSpeaker)
            outcome.logged = {said("setPowerStateTvSpeakerMute",
                                   "setPowerStateTvSpeakerMute soundOutResourceId " +
                                       std::to_string(row.output))};
        int number = 0;
        for (const auto& [output, type] : row.writes) {
            const bool fails = number++ == refused;
            outcome.told.push_back(std::string{"Mute Output "} + type + " " + flag(mute) +
                                   (fails ? " -> -5" : ""));
            if (fails)
                outcome.logged = outcome.logged + Lines{refusedByDriver(), muteNotSet(output)};
            else if (output == KEP_AUDIO_SPK && volume != 0)
                outcome.told.push_back("amplifier.setAmpMute " + word(mute));
        }
        return outcome;
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
                    Outcome outcome = writesOf(row, mute, volume, refused);
                    outcome.logged = opening(row.name, mute) + outcome.logged;
                    EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(row.name, mute)),
                              refused < 0)
                        << what;
                    expect(outcome, what);
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
                EXPECT_EQ(mBackend.setPowerStateTvSpeakerMute(row.output, mute), refused < 0);
                expect(writesOf(row, mute, situation.volume, refused),
                       row.name + testing::PrintToString(situation));
                EXPECT_TRUE(mBackend.getPowerStateHeadphoneMute()); // its caller notes the reason
            }
        }
    }
}

TEST_F(PowerStateMute, OfTheSpeakerWritesTheSpeakerWhateverItIsGiven)
{
    for (const KEP_AUDIO_SNDOUT_T output : {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_HP, KEP_AUDIO_SPK_HP,
                                            KEP_AUDIO_ARC, KEP_AUDIO_BLUETOOTH}) {
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
                    Outcome outcome{{arc ? "Mute Output 32 1" : "Mute Output 2 1"},
                                    opening(name, true)};
                    if (refused == 0) {
                        outcome.told.front() += " -> -5";
                        outcome.logged = outcome.logged +
                                         Lines{refusedByDriver(),
                                               muteNotSet(arc ? KEP_AUDIO_ARC : KEP_AUDIO_SPDIF)};
                    }
                    EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(name, true)), refused < 0);
                    expect(outcome, setting);
                }
            }
        }
    }
}

TEST_F(PowerStateMute, OfTheHeadphoneIsOneOfItsReasons)
{
    struct Row {
        bool mute;
        bool resumes;
        Gate gate;
        bool done;
        const char* told; // External speaker, headphone (H, W), Speaker of the pair, its Amplifier
    };
    // clang-format off
    const Row rows[] = {
        // mute  resumes gate                done   told
        {true,   false,  Gate::NotYet,       true,  "EHWSA"},
        {true,   false,  Gate::Pending,      true,  "EHWSA"},
        {true,   true,   Gate::Done,         true,  "EHWSA"},
        {false,  false,  Gate::Done,         true,  "EHWSA"},
        {false,  false,  Gate::NotYet,       false, "S"},
        {false,  false,  Gate::Pending,      false, "S"},
        {false,  false,  Gate::PendingAgain, false, "S"},
        {false,  true,   Gate::NotYet,       true,  ""}, // the timer's matter
        {false,  true,   Gate::Pending,      true,  ""},
        {false,  true,   Gate::Done,         true,  ""},
    };
    // clang-format on
    for (const std::string name : {"headphone", "lineout", "tv_speaker_headphone"}) {
        for (const Row& row : rows) {
            const Situation situation{.powerState = !row.mute,
                                      .gate = row.gate,
                                      .prepareResume = row.resumes,
                                      .volume = 25};
            enter(situation);
            const std::string what = name + testing::PrintToString(situation);
            const bool pair = name == "tv_speaker_headphone";
            const std::map<char, std::string> steps = {
                {'E', "subcpu_misc_Set_HPMuteOnOff " + word(row.mute)},
                {'H', "subcpu_misc_Set_HPMuteOnOff " + word(row.mute)},
                {'W', "Mute Output 16 " + flag(row.mute)},
                {'S', "Mute Output 1 " + flag(row.mute)},
                {'A', "amplifier.setAmpMute " + word(row.mute)},
            };
            Texts expected;
            for (const char step : std::string{row.told})
                if (pair || (step != 'S' && step != 'A'))
                    expected.push_back(steps.at(step));
            EXPECT_EQ(mBackend.setPowerStateMute(powerStateMute(name, row.mute)), row.done) << what;
            EXPECT_EQ(told(), expected) << what;
            EXPECT_EQ(logLines().front(), opening(name, row.mute).front()) << what;
            EXPECT_EQ(logLines().at(1), byPowerState(pair ? KEP_AUDIO_SPK_HP : KEP_AUDIO_HP));
            EXPECT_EQ(mBackend.getPowerStateHeadphoneMute(), row.mute) << what;
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

} // namespace
