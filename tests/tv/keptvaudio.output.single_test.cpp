// SPDX-License-Identifier: Apache-2.0
// Output selection: the operations that open, close and change single outputs.
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "outputtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Operations called one at a time

TEST_F(SingleOutput, IsOpenedAndClosedByItsIdentifier)
{
    const Situation situation{.from = KEP_AUDIO_WISA, .connected = kInputsOfTheStart};
    for (const KEP_AUDIO_SNDOUT_T output :
         {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_SPK, KEP_AUDIO_SPDIF, KEP_AUDIO_HP, KEP_AUDIO_ARC,
          KEP_AUDIO_QN_SOUND_SYNC, KEP_AUDIO_BT_SOUNDBAR, KEP_AUDIO_WISA, KEP_AUDIO_BLUETOOTH}) {
        enter(situation);
        const std::string number = std::to_string(output);
        const Expected expected{{callOf("+" + number, situation), callOf("-" + number, situation)},
                                situation.refusedWrite};
        EXPECT_TRUE(mBackend.connectOutput(output)) << output;
        EXPECT_TRUE(mBackend.disconnectOutput(output)) << output;
        EXPECT_EQ(told(), expected.told) << output;
        EXPECT_EQ(logLines(), expected.logged) << output;
    }
}

TEST_F(SingleOutput, OfAnotherIdentifierFailsSilently)
{
    for (const unsigned int number :
         {3U, 4U, 8U, 16U, 64U, 128U, 256U, 512U, 2048U, 32768U, 65536U, 262144U}) {
        const auto output = static_cast<KEP_AUDIO_SNDOUT_T>(number);
        forget();
        EXPECT_FALSE(mBackend.connectOutput(output)) << number;
        EXPECT_FALSE(mBackend.disconnectOutput(output)) << number;
        EXPECT_THAT(told(), IsEmpty()) << number;
        EXPECT_EQ(logLines(), (Lines{info("keptvaudio:connectOutput",
                                          "Connect outputType " + std::to_string(number)),
                                     info("keptvaudio:disconnectOutput",
                                          "disconnect outputType " + std::to_string(number))}));
    }
}

TEST_F(SingleOutput, HasOperationsOfItsOwn)
{
    struct Row {
        KEP_AUDIO_SNDOUT_T output;
        bool (kepTVAudio::*connect)(KEP_AUDIO_SNDOUT_T);
        bool (kepTVAudio::*disconnect)(KEP_AUDIO_SNDOUT_T);
    };
    // clang-format off
    const Row rows[] = {
        {KEP_AUDIO_SPK,           &kepTVAudio::connectTvSpeakerOutput,        &kepTVAudio::disconnectTvSpeakerOutput},
        {KEP_AUDIO_HP,            &kepTVAudio::connectHPOutput,               &kepTVAudio::disconnectHPOutput},
        {KEP_AUDIO_ARC,           &kepTVAudio::connectExternalArcOutput,      &kepTVAudio::disconnectExternalArcOutput},
        {KEP_AUDIO_SPDIF,         &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
        {KEP_AUDIO_QN_SOUND_SYNC, &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
        {KEP_AUDIO_BLUETOOTH,     &kepTVAudio::connectSpeakerBluetoothOutput, &kepTVAudio::disconnectSpeakerBluetoothOutput},
        {KEP_AUDIO_BT_SOUNDBAR,   &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
        {KEP_AUDIO_WISA,          &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
    };
    // clang-format on
    Situation situation{.from = KEP_AUDIO_SPK, .connected = kInputsOfTheStart};
    for (const Row& row : rows) {
        for (const bool opens : {true, false}) {
            const auto& table = opens ? kOpenings : kClosings;
            const auto sequence =
                std::find_if(table.begin(), table.end(),
                             [&](const Sequence& one) { return one.output == row.output; });
            for (int refused = -1, writes = 0; refused < writes; ++refused) {
                situation.refusedWrite = refused;
                enter(situation);
                const Expected expected{{{{}, stepsOf(*sequence, situation.connected)}}, refused};
                writes = refused < 0 ? expected.writes : writes;
                kepTVAudio& backend = mBackend;
                EXPECT_EQ((backend.*(opens ? row.connect : row.disconnect))(row.output),
                          expected.done)
                    << sequence->operation << " " << refused;
                EXPECT_EQ(told(), expected.told) << sequence->operation << " " << refused;
                EXPECT_EQ(logLines(), expected.logged) << sequence->operation << " " << refused;
            }
        }
    }
}

TEST_F(SingleOutput, OfTheArcOperationsIsAlwaysArc)
{
    mBackend.deinitAudio();
    EXPECT_TRUE(mBackend.connectExternalArcOutput(KEP_AUDIO_SPK));
    EXPECT_TRUE(mBackend.disconnectExternalArcOutput(KEP_AUDIO_SPK));
    EXPECT_THAT(told(), ElementsAre("Sndout Open 32", "Mute Output 32 0", "Sndout Close 32",
                                    "Mute Output 32 1"));
}

TEST_F(OutputTest, EachTransitionHasAnOperationOfItsOwn)
{
    using Kep = kepTVAudio;
    struct Row {
        const char* name;
        KEP_AUDIO_SNDOUT_T to;
        bool (*run)(Kep& backend, KEP_AUDIO_SNDOUT_T to);
        std::vector<KEP_AUDIO_SNDOUT_T> from;
    };
    const std::vector<KEP_AUDIO_SNDOUT_T> any = oldOutputs();
    // clang-format off
    const Row rows[] = {
        {"setSpeakerSpdifSoundOutput", KEP_AUDIO_SPK_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerSpdifSoundOutput(); }, any},
        {"setHPSoundOutput", KEP_AUDIO_HP,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setHPSoundOutput(); }, any},
        {"setSpeakerHPSoundOutput", KEP_AUDIO_SPK_HP,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerHPSoundOutput(); }, any},
        {"setSpeakerBluetoothSoundOutput", KEP_AUDIO_SPK_BLUETOOTH,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerBluetoothSoundOutput(); }, any},
        {"setSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPK_OPTICAL_ARC,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerOpticalArcSoundOutput(); }, any},
        {"setSingularSoundOutput", KEP_AUDIO_ARC,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setSingularSoundOutput(to); }, any},
        {"setSingularSoundOutput", KEP_AUDIO_WISA,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setSingularSoundOutput(to); }, any},
        {"setTvSpeakerSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSoundOutput(to); }, any},
        {"setTvSpeakerSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSoundOutput(to); }, any},
        {"setTvSpeakerSpdifSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSpdifSoundOutput(to); }, {KEP_AUDIO_SPK_SPDIF}},
        {"setTvSpeakerSpdifSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSpdifSoundOutput(to); }, {KEP_AUDIO_SPK_SPDIF}},
        {"setTvSpeakerHPSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerHPSoundOutput(to); }, {KEP_AUDIO_SPK_HP}},
        {"setTvSpeakerHPSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerHPSoundOutput(to); }, {KEP_AUDIO_SPK_HP}},
        {"setTvSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerOpticalArcSoundOutput(to); }, {KEP_AUDIO_SPK_OPTICAL_ARC}},
        {"setTvSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerOpticalArcSoundOutput(to); }, {KEP_AUDIO_SPK_OPTICAL_ARC}},
        {"setTvSpeakerBluetoothSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerBluetoothSoundOutput(to); }, {KEP_AUDIO_SPK_BLUETOOTH}},
        {"setTvSpeakerBluetoothSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerBluetoothSoundOutput(to); }, {KEP_AUDIO_SPK_BLUETOOTH}},
    };
    // clang-format on
    for (const Row& row : rows) {
        for (const KEP_AUDIO_SNDOUT_T from : row.from) {
            if (from == row.to)
                continue;
            const Situation situation{.from = from, .connected = kInputsOfTheStart};
            enter(situation);
            const Expected expected{transition(row.to, situation), situation.refusedWrite};
            EXPECT_TRUE(row.run(mBackend, row.to)) << row.name << " from " << from;
            EXPECT_EQ(told(), expected.told) << row.name << " from " << from;
            EXPECT_EQ(logLines(), expected.logged) << row.name << " from " << from;
            EXPECT_EQ(mBackend.getCurrentSoundout(), from) << row.name; // the caller's to change
        }
    }
}

} // namespace
