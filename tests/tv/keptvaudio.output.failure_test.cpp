// SPDX-License-Identifier: Apache-2.0
// Output selection: each single write refused, and the other failures on the way.
#include <string>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "outputtest.h"

namespace
{

using testing::Contains;
using testing::ElementsAre;

// --- Failures

TEST_F(SoundOutputFailure, OfAnyWriteWithoutResources)
{
    mBackend.deinitAudio();
    expectAllRefusals({});
}

TEST_F(SoundOutputFailure, OfAnyWriteWithOneResource)
{
    connectOnly("AMIXER0");
    expectAllRefusals({.connected = {"16 0"}});
}

TEST_F(SoundOutputFailure, OfAnyWriteWithThreeResources)
{
    expectAllRefusals({.connected = kInputsOfTheStart});
}

TEST_F(SoundOutputFailure, OfAnyWriteWhileTheHeadphoneHasToStayMuted)
{
    mBackend.deinitAudio();
    expectAllRefusals({.unmuteWaits = true});
}

TEST_F(SoundOutputFailure, OfTheHeadphonesLine)
{
    struct Row {
        KEP_AUDIO_SNDOUT_T from;
        NameRow to;
        unsigned int result;
        Texts told; // of the transition
    };
    const std::string muted = "subcpu_misc_Set_HPMuteOnOff true -> 1";
    const std::string unmuted = "subcpu_misc_Set_HPMuteOnOff false -> 1";
    // clang-format off
    const Row rows[] = {
        {KEP_AUDIO_NO_OUTPUT, {"headphone", KEP_AUDIO_HP},                kDone, // at worst there is a noise
         {muted, "Mute Output 16 1", "Sndout Open 16", "Mute Output 16 0"}},
        {KEP_AUDIO_SPK,       {"headphone", KEP_AUDIO_HP},                kFailed,
         {"Sndout Close 1", "Mute Output 1 1", "Sndout Open 16", "Mute Output 16 0", unmuted, "Mute Output 16 0"}},
        {KEP_AUDIO_SPK,       {"tv_speaker_headphone", KEP_AUDIO_SPK_HP}, kFailed,
         {"Sndout Open 16", "Mute Output 16 0", unmuted, "Mute Output 16 0"}},
        {KEP_AUDIO_HP,        {"tv_speaker_headphone", KEP_AUDIO_SPK_HP}, kFailed,
         {unmuted, "Mute Output 16 0", "Sndout Open 1", "Mute Output 1 0"}},
        {KEP_AUDIO_HP,        {"tv_speaker", KEP_AUDIO_SPK},              kFailed,
         {"Sndout Close 16", "Mute Output 16 1", muted, "Mute Output 16 1", "Sndout Open 1", "Mute Output 1 0"}},
        {KEP_AUDIO_SPK_HP,    {"bt_soundbar", KEP_AUDIO_BT_SOUNDBAR},     kFailed,
         {"Sndout Close 1", "Mute Output 1 1", "Sndout Close 16", "Mute Output 16 1", muted, "Mute Output 16 1", "Sndout Open 8"}},
        {KEP_AUDIO_SPK_HP,    {"headphone", KEP_AUDIO_HP},                kDone, // nothing asks for the line
         {"Sndout Close 1", "Mute Output 1 1"}},
    };
    // clang-format on
    mBackend.deinitAudio();
    for (const Row& row : rows) {
        enter({.from = row.from});
        virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
        const std::string what = std::string{nameOf(row.from)} + " to " + row.to.name;
        EXPECT_EQ(mBackend.setSoundOutput(row.to.name), row.result) << what;
        Texts expected = row.told;
        if (row.result == kDone)
            expected.insert(expected.end(), kToldAfter.begin(), kToldAfter.end());
        EXPECT_EQ(told(), expected) << what;
        Lines errors;
        for (const std::string& text : row.told)
            if (text == muted || text == unmuted)
                errors.push_back(
                    error("SUBCPU_ERROR", "keptvaudio:executeMuteHeadphone",
                          "Failed to set headphone mute status " + flag(text == muted)));
        if (row.result != kDone)
            errors.push_back(error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                                   std::string{"Failed to set sound out "} + row.to.name));
        EXPECT_EQ(logLines(kLogError), errors) << what;
        EXPECT_EQ(mBackend.getCurrentSoundout(), row.result == kDone ? row.to.output : row.from);
    }
}

TEST_F(SoundOutputFailure, OfTheWholeDriverStillTriesEveryOutput)
{
    mBackend.deinitAudio();
    select("tv_speaker_optical_arc");
    injectCard("write", kRefused);
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kFailed);
    EXPECT_THAT(told(), ElementsAre("Mute Output 2 1 -> -5", "Sndout Close 32 -> -5",
                                    "Sndout Open 16 -> -5"));
    EXPECT_EQ(
        logLines(kLogError),
        (Lines{
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:disconnectSpdifOrQNSndSyncOutput",
                  "Did not able to set the element: Mute Output for external speaker/QN sound "
                  "sync"),
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:disconnectExternalArcOutput",
                  "Did not able to set the element: Sndout Close"),
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:connectHPOutput",
                  "Did not able to set the element: Sndout Open for Headphone"),
            error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                  "Failed to set sound out tv_speaker_headphone"),
        }));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK_OPTICAL_ARC);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "tv_speaker_headphone");
}

TEST_F(SoundOutputFailure, LeavesTheOldOutputForTheNextRequest)
{
    mBackend.deinitAudio();
    select("tv_speaker_external");
    refuseWrite(0);
    EXPECT_EQ(mBackend.setSoundOutput("wisa_speaker"), kFailed);
    clearInjections();
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    EXPECT_EQ(
        told(),
        selectionOf({"bt_soundbar", KEP_AUDIO_BT_SOUNDBAR}, {.from = KEP_AUDIO_SPK_SPDIF}).told);
}

TEST_F(SoundOutputFailure, OfAlsaComesAfterTheOldOutputIsClosed)
{
    mBackend.deinitAudio();
    select("tv_speaker_bluetooth");
    EXPECT_EQ(mBackend.setSoundOutput("alsa"), kFailed);
    EXPECT_THAT(told(), ElementsAre("Sndout Close 1", "Mute Output 1 1", "Sndout Close 128"));
    EXPECT_EQ(logLines(),
              (Lines{info("keptvaudio:setSoundOutput", "Request to set soundOutput alsa"),
                     info("keptvaudio:disconnectOutput", "disconnect outputType 1"),
                     info("keptvaudio:disconnectOutput", "disconnect outputType 131072"),
                     info("keptvaudio:connectOutput", "Connect outputType 256"),
                     error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                           "Failed to set sound out alsa")}));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK_BLUETOOTH);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "alsa");
}

TEST_F(SoundOutputFailure, OfTheDigitalModeChangesTheOutputAllTheSame)
{
    mBackend.deinitAudio();
    kepTvParser::getInstance()->mQualityParamsMap["soundOutputDigital"] = "loud";
    EXPECT_EQ(mBackend.setSoundOutput("external_arc"), kDone);
    EXPECT_THAT(
        logLines(kLogError),
        ElementsAre(error("SET_SOUNDOUTPUT_DIGITAL_ERROR", "keptvaudio:setSoundOutput",
                          "Failed to set SoundOutput Digital loud during soundout change")));
    EXPECT_EQ(logLines().back(),
              info("keptvaudio:setSoundOutput", "successfully set soundoutput external_arc"));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_ARC);
}

TEST_F(SoundOutputFailure, OfTheDelayChangesTheOutputAllTheSame)
{
    injectMiddleware("delay.setDelayUpdate", 4);
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    EXPECT_THAT(told(), Contains("gain.setGainAsInput"));
    EXPECT_THAT(logLines(kLogError),
                ElementsAre(error("DELAY_MWL_ERROR", "keptvdelay:updateDelayValues",
                                  "Failed to update delay values"),
                            error("DELAY_MIDDLEWARE_ERROR", "keptvaudio:setSoundOutput",
                                  "Failed to update delay value to middleware")));
    EXPECT_EQ(logLines().back(),
              info("keptvaudio:setSoundOutput", "successfully set soundoutput bt_soundbar"));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
}

TEST_F(SoundOutputFailure, OfTheInputGainIsTheLastThingLogged)
{
    injectMiddleware("gain.setGainAsInput", 4);
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    const LogLine last =
        error("GAIN_MIDDLEWARE_ERROR", "keptvaudio:setSoundOutput", "Failed to update Input Gain");
    EXPECT_THAT(logLines(kLogError), ElementsAre(error("GAIN_MWL_ERROR", "keptvgain:setInputGain",
                                                       "Failed to set input gain"),
                                                 last));
    EXPECT_EQ(logLines().back(), last);
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "bt_soundbar");
}

} // namespace
