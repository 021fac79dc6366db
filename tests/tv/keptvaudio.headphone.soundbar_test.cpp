// SPDX-License-Identifier: Apache-2.0
// Power state: sound bar and light, and the model.
#include <algorithm>
#include <iterator>
#include <string>

#include <gmock/gmock.h>

#include "headphonetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Sound bar and light

class SoundBar : public HeadphoneTest
{
protected:
    static Lines request(const JValue& payload)
    {
        return {debug(std::string{kFile} + "setQNSoundbarState",
                      "Set Qn Sound Bar status based on power state " + payload.stringify())};
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

const std::string kBar = "setPowerOnOffQNSoundSync";
const std::string kLight = "setOpticLightOnOff";

LogLine barAskedFor(const std::string& state)
{
    return said(kBar, "setPowerOnOffQNSoundSync, power state is " + state);
}
const LogLine kBarDone = said(kBar, "Set SOUNDOUT_OPTICQN_POWER ON/OFF is success");
const LogLine kBarNotCurrent = said(kBar, "SOUNDOUT_OPTICQN_POWER ON/OFF is not set, since "
                                          "QNSoundSync is not current soundout");
const Lines kBarRefused = {
    refusedByDriver(), error("CONTROL_ELEMENT_SET_ERROR", kFile + kBar,
                             "Did not able to set the element: Sndout Optic QN for QN SOUND SYNC")};

LogLine lightAskedFor(const std::string& state)
{
    return said(kLight, "setOpticLightOnOff, power state is " + state);
}
const LogLine kLightDone = said(kLight, "Set SPDIF_LIGHT ON/OFF is success");
const LogLine kNoLight =
    said(kLight, "SPDIF_LIGHT ON/OFF is not set, since not supported soundout");
const Lines kLightRefused = {refusedByDriver(),
                             error("CONTROL_ELEMENT_SET_ERROR", kFile + kLight,
                                   "Did not able to set the element: Sndout Optic LightOnOff")};

LogLine invalidState(const std::string& state)
{
    return error("INVALID_PARAMETER", kFile + std::string{"setQNSoundbarState"},
                 "Invalid power status: " + state);
}

TEST_F(SoundBar, StatesGoToTheBarOrToTheLight)
{
    struct Row {
        const char* state;
        KEP_AUDIO_SNDOUT_T current;
        bool refused;
        bool done;
        Texts told;
        Lines logged;
    };
    constexpr KEP_AUDIO_SNDOUT_T bar = KEP_AUDIO_QN_SOUND_SYNC;
    // clang-format off
    const Row rows[] = {
        {"on",            bar,             false, true,  {"Sndout Optic QN 15747238 33 0 1"},       {barAskedFor("on"), kBarDone}},
        {"off",           bar,             false, true,  {"Sndout Optic QN 15747238 33 0 0"},       {barAskedFor("off"), kBarDone}},
        {"on",            bar,             true,  false, {"Sndout Optic QN 15747238 33 0 1 -> -5"}, Lines{barAskedFor("on")} + kBarRefused},
        {"off",           bar,             true,  false, {"Sndout Optic QN 15747238 33 0 0 -> -5"}, Lines{barAskedFor("off")} + kBarRefused},
        {"on",            KEP_AUDIO_SPDIF, false, false, {},                                        {barAskedFor("on"), kBarNotCurrent}},
        {"off",           KEP_AUDIO_SPK,   false, false, {},                                        {barAskedFor("off"), kBarNotCurrent}},
        {"opticLightOn",  bar,             false, true,  {"Sndout Optic LightOnOff 1"},             {lightAskedFor("opticLightOn"), kLightDone}},
        {"opticLightOff", bar,             false, true,  {"Sndout Optic LightOnOff 0"},             {lightAskedFor("opticLightOff"), kLightDone}},
        {"opticLightOn",  KEP_AUDIO_SPDIF, true,  false, {"Sndout Optic LightOnOff 1 -> -5"},       Lines{lightAskedFor("opticLightOn")} + kLightRefused},
        {"opticLightOff", KEP_AUDIO_SPK,   false, true,  {},                                        {lightAskedFor("opticLightOff"), kNoLight}},
        {"",              bar,             false, false, {},                                        {invalidState("")}},
        {"ON",            bar,             false, false, {},                                        {invalidState("ON")}},
        {"standby",       KEP_AUDIO_SPK,   false, false, {},                                        {invalidState("standby")}},
    };
    // clang-format on
    for (const Row& row : rows) {
        enter({.volume = 33, .refusedWrite = row.refused ? 0 : -1});
        mBackend.mCurrentSoundout = row.current;
        const JValue payload = with("powerState", row.state);
        const std::string what = std::to_string(row.current) + " " + row.state;
        EXPECT_EQ(mBackend.setQNSoundbarState(payload), row.done) << what;
        expectPause(row.state == std::string{"off"} && row.current == bar, what);
        expect({row.told, request(payload) + row.logged}, what);
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
    struct Row {
        const char* state;
        int volume;
        bool mute;
        const char* told;
    };
    // clang-format off
    constexpr Row rows[] = {
        {"on",            0,   false, "Sndout Optic QN 15747238 0 0 1"},
        {"on",            0,   true,  "Sndout Optic QN 15747238 0 1 1"},
        {"on",            255, false, "Sndout Optic QN 15747238 255 0 1"},
        {"on",            255, true,  "Sndout Optic QN 15747238 255 1 1"},
        {"off",           0,   false, "Sndout Optic QN 15747238 0 0 0"},
        {"off",           255, true,  "Sndout Optic QN 15747238 255 1 0"},
        {"",              255, false, "Sndout Optic QN 15747238 255 0 0"}, // every other text is off
        {"ON",            0,   true,  "Sndout Optic QN 15747238 0 1 0"},
        {"opticLightOn",  0,   false, "Sndout Optic QN 15747238 0 0 0"},
        {"standby",       33,  false, "Sndout Optic QN 15747238 33 0 0"},
    };
    // clang-format on
    for (const Row& row : rows) {
        for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
            for (const bool refused : {false, true}) {
                enter({.volume = row.volume, .refusedWrite = refused ? 0 : -1});
                mBackend.mCurrentSoundout = current;
                mBackend.mOutputMuteStatus = row.mute;
                const bool bar = current == KEP_AUDIO_QN_SOUND_SYNC;
                const std::string what = std::to_string(current) + " " + row.state;
                Outcome outcome{.logged = {barAskedFor(row.state)}};
                if (!bar)
                    outcome.logged.push_back(kBarNotCurrent);
                else
                    outcome = {{row.told + std::string{refused ? " -> -5" : ""}},
                               outcome.logged + (refused ? kBarRefused : Lines{kBarDone})};
                EXPECT_EQ(mBackend.setPowerOnOffQNSoundSync(row.state), bar && !refused) << what;
                expectPause(bar && row.state == std::string{"off"}, what);
                expect(outcome, what);
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
    struct Row {
        const char* state;
        const char* told;
    };
    constexpr Row rows[] = {
        {"opticLightOn", "Sndout Optic LightOnOff 1"},
        {"opticLightOff", "Sndout Optic LightOnOff 0"},
        {"on", "Sndout Optic LightOnOff 0"}, // every other text is off
        {"", "Sndout Optic LightOnOff 0"},
    };
    constexpr KEP_AUDIO_SNDOUT_T lit[] = {KEP_AUDIO_SPK_OPTICAL_ARC, KEP_AUDIO_SPK_SPDIF,
                                          KEP_AUDIO_SPDIF, KEP_AUDIO_QN_SOUND_SYNC};
    for (const Row& row : rows) {
        for (const KEP_AUDIO_SNDOUT_T current : kAllOutputs) {
            for (const bool refused : {false, true}) {
                enter({.refusedWrite = refused ? 0 : -1});
                mBackend.mCurrentSoundout = current;
                const bool hasLight =
                    std::find(std::begin(lit), std::end(lit), current) != std::end(lit);
                const std::string what = std::to_string(current) + " " + row.state;
                Outcome outcome{.logged = {lightAskedFor(row.state)}};
                if (!hasLight)
                    outcome.logged.push_back(kNoLight);
                else
                    outcome = {{row.told + std::string{refused ? " -> -5" : ""}},
                               outcome.logged + (refused ? kLightRefused : Lines{kLightDone})};
                EXPECT_EQ(mBackend.setOpticLightOnOff(row.state), !(hasLight && refused)) << what;
                expect(outcome, what);
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
