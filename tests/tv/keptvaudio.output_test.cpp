// SPDX-License-Identifier: Apache-2.0
// Output selection: every output to every name, down to the log, and what outlives the change.
#include <cstdint>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "outputtest.h"

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// --- All pairs

TEST_F(OutputSelection, GoesFromAnyOutputToAnyNameWithoutResources)
{
    mBackend.deinitAudio();
    expectAllSelections({});
}

TEST_F(OutputSelection, GoesFromAnyOutputToAnyNameWithOneResource)
{
    connectOnly("ADEC1");
    expectAllSelections({.connected = {"1 1"}});
}

TEST_F(OutputSelection, GoesFromAnyOutputToAnyNameWithThreeResources)
{
    expectAllSelections({.connected = kInputsOfTheStart});
}

TEST_F(OutputSelection, GoesFromAnyOutputToAnyNameWhileTheHeadphoneHasToStayMuted)
{
    expectAllSelections({.connected = kInputsOfTheStart, .unmuteWaits = true});
}

TEST_F(OutputSelection, RoutesEveryResourceHoweverManyOutputsItHasSeen)
{
    Situation situation{.connected = kInputsOfTheStart};
    situation.connected.emplace_back("1 0");
    select("tv_speaker");
    EXPECT_EQ(mBackend.connectInput("ADEC0", "MAIN", JValue::object()), kDone);
    for (const NameRow& from : kOutputs) {
        for (const NameRow& to : kOutputs) {
            select(from.name);
            situation.from = from.output;
            const Selection expected = selectionOf(to, situation);
            EXPECT_EQ(mBackend.setSoundOutput(to.name), kDone) << from.name << " " << to.name;
            EXPECT_EQ(told(), expected.told) << from.name << " " << to.name;
            EXPECT_EQ(logLines(), expected.logged) << from.name << " " << to.name;
            EXPECT_EQ(mBackend.getCurrentSoundout(), to.output);
            EXPECT_EQ(mBackend.getSoundOutputKey(), to.name);
        }
    }
}

// --- Selections

TEST_F(OutputSelection, IsNoneAtFirst)
{
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_NO_OUTPUT);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
}

TEST_F(OutputSelection, OfAnUnknownNameChangesNothing)
{
    select("bt_soundbar");
    EXPECT_EQ(mBackend.setSoundOutput("loudspeaker"), kFailed);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(logLines(),
              (Lines{info("keptvaudio:setSoundOutput", "Request to set soundOutput loudspeaker"),
                     error("SOUNDOUTPUT_NOT_SUPPORTED", "keptvaudio:setSoundOutput",
                           "Not supported soundoutput")}));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "bt_soundbar");
}

TEST_F(OutputSelection, OfAnUnknownNameStoresNothing)
{
    EXPECT_EQ(mBackend.setSoundOutput("loudspeaker"), kFailed);
    EXPECT_THAT(mBackend.mStoredSettings, IsEmpty());
}

TEST_F(OutputSelection, OfTheCurrentOneOnlyTakesOverItsName)
{
    select("headphone");
    EXPECT_EQ(mBackend.setSoundOutput("lineout"), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(
        logLines(),
        ElementsAre(info("keptvaudio:setSoundOutput", "Request to set soundOutput lineout"),
                    debug("keptvaudio:setSoundOutput",
                          "Request for setting the existing setSoundOut lineout- Ignore!!!")));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "lineout");
}

TEST_F(OutputSelection, WithTheHeadphoneLeavesTheSpeakerUntouched)
{
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Open 16", "Sndout Connect 16 16 5", "Sndout Connect 16 16 6",
                            "Sndout Connect 16 16 7", "Mute Output 16 0",
                            "subcpu_misc_Set_HPMuteOnOff false", "Mute Output 16 0",
                            "Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1",
                            "delay.setDelayUpdate", "gain.setGainAsInput"));
}

TEST_F(OutputSelection, OfArcAloneClosesArcAndOpensItAgain)
{
    mBackend.deinitAudio();
    select("tv_speaker_optical_arc");
    EXPECT_EQ(mBackend.setSoundOutput("external_arc"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Close 1", "Mute Output 1 1", "Mute Output 2 1",
                            "Sndout Optic LightOnOff 0", "Sndout Close 2", "Sndout Close 32",
                            "Mute Output 32 1", "Sndout Open 32", "Mute Output 32 0",
                            "Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1",
                            "delay.setDelayUpdate", "gain.setGainAsInput"));
}

TEST_F(OutputSelection, OfAnIdentifierThatNoOutputHasIsRefused)
{
    mBackend.deinitAudio();
    select("external_arc");
    forget();
    for (const unsigned int number : {3u, 64u, 256u, 262144u})
        EXPECT_FALSE(mBackend.handleSetSoundOutput(static_cast<KEP_AUDIO_SNDOUT_T>(number)))
            << number;
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_ARC);
    // What was open is closed all the same, as for every output that then fails to open.
    EXPECT_THAT(controlEvents(), Contains(ControlEvent{"hw:0", "Sndout Close", {32}, 0}).Times(4));
}

TEST_F(OutputSelection, IsLoggedFromRequestToSuccess)
{
    mBackend.deinitAudio();
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_optical_arc"), kDone);
    EXPECT_EQ(
        logLines(),
        (Lines{
            info("keptvaudio:setSoundOutput", "Request to set soundOutput tv_speaker_optical_arc"),
            info("keptvaudio:handleSetSoundOutput",
                 "Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC"),
            info("keptvaudio:connectOutput", "Connect outputType 2"),
            info("keptvaudio:connectOutput", "Connect outputType 1024"),
            info("keptvaudio:getSoundOutputDigitalMode",
                 "Setting digital mode as pcm, since its not optical or arc"),
            info("keptvaudio:setSoundOutputDigital", "Request to set digital mode as pcm"),
            info("keptvaudio:getSoundOutputOpticMode",
                 "Get SoundOutputMode for Optic digitalMode pcm "),
            debug("keptvaudio:getSoundOutputOpticMode", "Optic digital mode 1"),
            info("keptvaudio:getSoundOutputArcMode",
                 "Get SoundOutputMode for ARC digitalMode pcm "),
            debug("keptvaudio:getSoundOutputArcMode", "Arc digital mode 1"),
            info("keptvaudio:setEArcOutputType",
                 "set codec type: 1 for earc output type and mixer value is 1"),
            info("keptvdelay:updateDelayValues", "calling setDelayUpdate"),
            info("keptvgain:setInputGain", "calling setGainAsInput"),
            info("keptvaudio:setSoundOutput",
                 "successfully set soundoutput tv_speaker_optical_arc"),
        }));
}

TEST_F(OutputSelection, AppliesTheUsersDigitalModeOfTheNewOutput)
{
    mBackend.deinitAudio();
    kepTvParser::getInstance()->mQualityParamsMap["soundOutputDigital"] = "auto";
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("external_optical"), kDone);
    EXPECT_THAT(told(), Contains("Sndout Spdif OutputType 2 2"));
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker"), kDone);
    EXPECT_THAT(told(), Contains("Sndout Spdif OutputType 1 1"));
}

// --- Volume and mute that outlive the change

TEST_F(OutputSelection, LeavesTheSpeakerMutedThatTheUserMuted)
{
    mBackend.deinitAudio();
    for (const char* output : {"tv_speaker", "tv_speaker_external", "tv_speaker_headphone",
                               "tv_speaker_optical_arc", "tv_speaker_bluetooth"}) {
        for (const bool muted : {true, false}) {
            select("wisa_speaker");
            mBackend.setOutputMute("tv_speaker", muted);
            forget();
            EXPECT_EQ(mBackend.setSoundOutput(output), kDone);
            EXPECT_THAT(told(), Contains("Sndout Open 1")) << output;
            EXPECT_THAT(told(), Contains("Mute Output 1 0").Times(muted ? 0 : 1)) << output;
        }
    }
}

TEST_F(OutputSelection, UnmutesEveryOtherOutputWhateverTheUserMuted)
{
    mBackend.deinitAudio();
    const std::pair<const char*, const char*> rows[] = {
        {"external_optical", "Mute Output 2 0"},
        {"qnSoundSync", "Mute Output 4 0"},
        {"external_arc", "Mute Output 32 0"},
        {"headphone", "Mute Output 16 0"},
    };
    for (const auto& [output, unmute] : rows) {
        select("wisa_speaker");
        mBackend.setOutputMute("tv_speaker", true);
        forget();
        EXPECT_EQ(mBackend.setSoundOutput(output), kDone);
        EXPECT_THAT(told(), Contains(unmute)) << output;
    }
}

TEST_F(OutputSelection, TellsTheSoundBarVolumeAndMute)
{
    mBackend.deinitAudio();
    for (const int volume : {0, 37, 255}) {
        for (const bool muted : {false, true}) {
            select("tv_speaker");
            mBackend.setOutputVolume("tv_speaker", static_cast<std::uint8_t>(volume));
            mBackend.setOutputMute("tv_speaker", muted);
            forget();
            EXPECT_EQ(mBackend.setSoundOutput("qnSoundSync"), kDone);
            EXPECT_THAT(told(), ElementsAre("Sndout Close 1", "Mute Output 1 1", "Sndout Open 4",
                                            "Mute Output 4 1", "Sndout Optic LightOnOff 1",
                                            "Sndout Optic QN 1 " + std::to_string(volume) +
                                                (muted ? " 1 1" : " 0 1"),
                                            "Mute Output 4 0", "Sndout Spdif OutputType 1 1",
                                            "Sndout EARC Outputtype 2 1 0 0 1",
                                            "delay.setDelayUpdate", "gain.setGainAsInput"));
        }
    }
}

// --- Headphone

TEST_F(HeadphoneSelection, IsTheFirstSincePowerOnAndMutesBeforeItOpens)
{
    mBackend.deinitAudio();
    mBackend.mHeadphoneTimerMuteDone = false;
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1",
                            "Sndout Open 16", "Mute Output 16 0", "Sndout Spdif OutputType 1 1",
                            "Sndout EARC Outputtype 2 1 0 0 1", "delay.setDelayUpdate",
                            "gain.setGainAsInput"));
    Lines first = logLines();
    first.resize(9);
    EXPECT_EQ(
        first,
        (Lines{
            info("keptvaudio:setSoundOutput", "Request to set soundOutput headphone"),
            info("keptvaudio:disconnectOutput", "disconnect outputType 0"),
            info("keptvaudio:connectOutput", "Connect outputType 32"),
            info("keptvaudio:connectHPOutput", "connectHPOutput:: Connect soundoutput 32"),
            info("keptvaudio:connectHPOutput",
                 "AC On headphone is selected, so muting to avoid noise"),
            info("keptvaudio:setMuteHeadphone", "Called setMuteHeadphone muteStatus 1"),
            info("keptvaudio:setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus 1"),
            info("keptvaudio:executeMuteHeadphone", "Called execute muteHeadphone muteStatus 1"),
            info("keptvaudio:isValidHeadphoneMute", "isValidHeadphoneMute check 1 0 0"),
        }));
    EXPECT_THAT(logLines(),
                Contains(info("keptvaudio:connectHPOutput",
                              "During AC ON, headphone selected timer running, so skipping "
                              "unmute")));
    EXPECT_TRUE(mBackend.getMuteHeadphone());
}

TEST_F(HeadphoneSelection, SurvivesARefusedGuardAgainstNoise)
{
    mBackend.deinitAudio();
    refuseWrite(0);
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    Texts first = told();
    first.resize(3);
    EXPECT_THAT(first, ElementsAre("subcpu_misc_Set_HPMuteOnOff true -> 1",
                                   "Mute Output 16 1 -> -5", "Sndout Open 16"));
    EXPECT_EQ(logLines(kLogError).size(), 3U); // line, write, element
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
}

TEST_F(HeadphoneSelection, FailsWhenItsClosingUnmuteFails)
{
    select("tv_speaker");
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kFailed);
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK);
}

TEST_F(HeadphoneSelection, EndsInFailureWhenItsMuteFails)
{
    select("headphone");
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("wisa_speaker"), kFailed);
    EXPECT_THAT(told(), Contains("Sndout Open 64")); // all the same
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
}

TEST_F(HeadphoneSelection, WaitsForAPendingTimer)
{
    mBackend.deinitAudio();
    select("tv_speaker");
    mBackend.mHeadphoneUnmuteTimerID = 1;
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    mBackend.mHeadphoneUnmuteTimerID = 0;
    EXPECT_THAT(told(), Not(Contains("subcpu_misc_Set_HPMuteOnOff false")));
    EXPECT_THAT(logLines(), Contains(info("keptvaudio:setMuteHeadphone",
                                          "To avoid noise Headphone timer is running, so skip "
                                          "headphone unmute")));
}

TEST_F(HeadphoneSelection, IsUnmutedWhenTheSpeakerJoins)
{
    mBackend.deinitAudio();
    select("headphone");
    mBackend.setOutputMute("headphone", true);
    mBackend.setOutputMute("external_arc", false); // the user's status, with the headphone left
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kDone);
    Texts first = told();
    first.resize(4);
    EXPECT_THAT(first, ElementsAre("subcpu_misc_Set_HPMuteOnOff false", "Mute Output 16 0",
                                   "Sndout Open 1", "Mute Output 1 0"));
    EXPECT_FALSE(mBackend.getMuteHeadphone());
}

TEST_F(HeadphoneSelection, IsMutedWhenItIsLeft)
{
    select("tv_speaker");
    select("tv_speaker_headphone");
    EXPECT_FALSE(mBackend.getMuteHeadphone());
    select("tv_speaker");
    EXPECT_TRUE(mBackend.getMuteHeadphone());
}

} // namespace
