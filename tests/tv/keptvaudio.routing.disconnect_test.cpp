// SPDX-License-Identifier: Apache-2.0
// Routing: disconnecting an input, the members of the current output, and re-routing.
#include <string>

#include <gmock/gmock.h>

#include "routingtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Disconnecting

TEST_F(DisconnectInput, ReachesEveryMemberOfEveryOutputWithEveryResource)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        for (const ResourceRow& row : kResources) {
            connect(row.source, row.sink);
            forget();
            Texts expected;
            for (const Member& member : output.members)
                expected.push_back(std::string{"Sndout Disconnect "} + member.type + " " +
                                   row.address);
            EXPECT_EQ(disconnect(row.source, row.sink), kDone) << row.source << " " << output.name;
            EXPECT_EQ(told(), expected) << row.source << " " << output.name;
            EXPECT_THAT(logLines(kLogError), IsEmpty());
            EXPECT_THAT(recorded(), IsEmpty()) << row.source << " " << output.name;
        }
    }
}

TEST_F(DisconnectInput, NamesEachMemberInTheLog)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        disconnect("ADEC1", "MAIN");
        Lines expected = {
            info("keptvaudio:disconnectInput", "Request to disconnect source ADEC1 and sink MAIN "
                                               "mCurrentSoundout:" +
                                                   std::to_string(output.output))};
        if (output.output == KEP_AUDIO_SPK_SPDIF)
            expected.push_back(debug("keptvaudio:checkDisconnectInputResource",
                                     "Disconnect Input from tv speaker and externl speaker"));
        for (const Member& member : output.members)
            expected.push_back(debug("keptvaudio:disconnectInputResource",
                                     "Disconnect audio resource 9 to soundoutput " +
                                         std::to_string(member.output)));
        EXPECT_EQ(logLines(), expected) << output.name;
    }
}

TEST_F(DisconnectInput, RefusesAnUnknownResourceWithoutAnError)
{
    for (const ResourceRow& row : kNoResources) {
        forget();
        EXPECT_EQ(disconnect(row.source, row.sink), kInvalidResource) << row.source;
        EXPECT_THAT(told(), IsEmpty()) << row.source;
        EXPECT_THAT(logLines(),
                    ElementsAre(info("keptvaudio:disconnectInput",
                                     std::string{"Request to disconnect source "} + row.source +
                                         " and sink " + row.sink + " mCurrentSoundout:0")));
    }
}

TEST_F(DisconnectInput, NeedsASelectableOutput)
{
    select("tv_speaker");
    connect("AMIXER7", "MAIN");
    for (const KEP_AUDIO_SNDOUT_T output : kNotSelectable) {
        mBackend.mCurrentSoundout = output;
        forget();
        EXPECT_EQ(disconnect("AMIXER7", "SUB"), kInvalidOutput) << output;
        EXPECT_THAT(told(), IsEmpty()) << output;
        EXPECT_THAT(
            logLines(),
            ElementsAre(info("keptvaudio:disconnectInput",
                             "Request to disconnect source AMIXER7 and sink SUB mCurrentSoundout:" +
                                 std::to_string(output)),
                        error("INVALID_SOUNDOUTPUT", "keptvaudio:disconnectInput",
                              "disconnectInput  call for resource 27 failed as no valid sound "
                              "out is set")));
    }
    EXPECT_THAT(recorded(), ElementsAre("16 7"));
}

TEST_F(DisconnectInput, StopsAtTheMemberThatFailsAndKeepsTheRecord)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        mBackend.deinitAudio();
        connect("AMIXER4", "MAIN");
        for (std::size_t failing = 0; failing < output.members.size(); ++failing) {
            Texts expected;
            for (std::size_t i = 0; i <= failing; ++i)
                expected.push_back(std::string{"Sndout Disconnect "} + output.members[i].type +
                                   " 16 4" + (i == failing ? " -> -5" : ""));
            forget();
            refuseWrite(static_cast<unsigned int>(failing));
            EXPECT_EQ(disconnect("AMIXER4", "MAIN"), kFailed) << output.name << " " << failing;
            clearInjections();
            EXPECT_EQ(told(), expected) << output.name << " " << failing;
            EXPECT_THAT(logLines(kLogError),
                        ElementsAre(refusedByDriver(),
                                    notSet("disconnectInputResource", "Sndout Disconnect")))
                << output.name << " " << failing;
            EXPECT_THAT(recorded(), ElementsAre("16 4")) << output.name << " " << failing;
        }
    }
}

TEST_F(DisconnectInput, TakesOutTheFirstOccurrenceOnly)
{
    select("tv_speaker");
    for (const char* source : {"AMIXER1", "ADEC0", "AMIXER2", "ADEC0"})
        connect(source, "MAIN");
    EXPECT_EQ(disconnect("ADEC0", "MAIN"), kDone);
    EXPECT_THAT(recorded(), ElementsAre("16 1", "16 2", "1 0"));
    EXPECT_EQ(disconnect("ADEC", "SUB"), kDone);
    EXPECT_THAT(recorded(), ElementsAre("16 1", "16 2"));
}

TEST_F(DisconnectInput, WritesForAResourceThatWasNeverConnected)
{
    select("tv_speaker_optical_arc");
    connect("AMIXER1", "MAIN");
    forget();
    EXPECT_EQ(disconnect("ADEC1", "MAIN"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout Disconnect 1 1 1", "Sndout Disconnect 2 1 1",
                                    "Sndout Disconnect 32 1 1"));
    EXPECT_THAT(recorded(), ElementsAre("16 1"));
}

TEST_F(DisconnectInput, TakesOutAnInputOfTheStart)
{
    mBackend.initAudio();
    select("tv_speaker");
    EXPECT_EQ(disconnect("AMIXER6", "MAIN"), kDone);
    EXPECT_THAT(recorded(), ElementsAre("16 5", "16 7"));
}

// --- The members of the current output

TEST_F(RoutingTest, MembersAreReachedWithoutMainAudioGainOrRecord)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        Texts connects;
        Texts disconnects;
        for (const Member& member : output.members) {
            connects.push_back(std::string{"Sndout Connect "} + member.type + " 16 3");
            disconnects.push_back(std::string{"Sndout Disconnect "} + member.type + " 16 3");
        }
        EXPECT_EQ(mBackend.checkConnectInputResource(KEP_AUDIO_RESOURCE_AMIXER3), kDone);
        EXPECT_EQ(told(), connects) << output.name;
        EXPECT_THAT(recorded(), IsEmpty()) << output.name;
        EXPECT_EQ(mBackend.checkDisconnectInputResource(KEP_AUDIO_RESOURCE_AMIXER3), kDone);
        EXPECT_EQ(told(), disconnects) << output.name;
    }
}

TEST_F(RoutingTest, EveryOtherValueOfTheOutputMeansSpeakerAndOptical)
{
    for (const KEP_AUDIO_SNDOUT_T output : kNotSelectable) {
        mBackend.mCurrentSoundout = output;
        forget();
        EXPECT_EQ(mBackend.checkConnectInputResource(KEP_AUDIO_RESOURCE_ADEC0), kDone);
        EXPECT_EQ(mBackend.checkDisconnectInputResource(KEP_AUDIO_RESOURCE_ADEC0), kDone);
        EXPECT_THAT(told(), ElementsAre("Sndout Connect 1 1 0", "Sndout Connect 2 1 0",
                                        "Sndout Disconnect 1 1 0", "Sndout Disconnect 2 1 0"))
            << output;
        EXPECT_THAT(logLines(),
                    ElementsAre(debug("keptvaudio:checkConnectInputResource",
                                      "Inside tv speaker and external speaker connect Input"),
                                debug("keptvaudio:connectInputResource",
                                      "Connect audio resource 8 to soundoutput 1"),
                                debug("keptvaudio:connectInputResource",
                                      "Connect audio resource 8 to soundoutput 2"),
                                debug("keptvaudio:checkDisconnectInputResource",
                                      "Disconnect Input from tv speaker and externl speaker"),
                                debug("keptvaudio:disconnectInputResource",
                                      "Disconnect audio resource 8 to soundoutput 1"),
                                debug("keptvaudio:disconnectInputResource",
                                      "Disconnect audio resource 8 to soundoutput 2")))
            << output;
    }
}

TEST_F(RoutingTest, OneOutputIsReachedWhateverIsCurrent)
{
    select("headphone");
    EXPECT_EQ(mBackend.connectInputResource(KEP_AUDIO_RESOURCE_ADEC1, KEP_AUDIO_BLUETOOTH), kDone);
    EXPECT_EQ(mBackend.disconnectInputResource(KEP_AUDIO_RESOURCE_ADEC1, KEP_AUDIO_ARC), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout Connect 128 1 1", "Sndout Disconnect 32 1 1"));
    refuseWrite(0);
    EXPECT_EQ(mBackend.connectInputResource(KEP_AUDIO_RESOURCE_ADEC1, KEP_AUDIO_SPK), kFailed);
    clearInjections();
    refuseWrite(0);
    EXPECT_EQ(mBackend.disconnectInputResource(KEP_AUDIO_RESOURCE_ADEC1, KEP_AUDIO_SPK), kFailed);
}

// --- Re-routing

TEST_F(Reroute, WritesEveryResourceInOrder)
{
    select("tv_speaker");
    for (const char* source : {"AMIXER7", "ADEC1", "AMIXER7"})
        connect(source, "MAIN");
    forget();
    EXPECT_TRUE(mBackend.connectDisconnectResources(128, /*connect=*/true));
    EXPECT_TRUE(mBackend.connectDisconnectResources(4, /*connect=*/false));
    EXPECT_THAT(told(), ElementsAre("Sndout Connect 128 16 7", "Sndout Connect 128 1 1",
                                    "Sndout Connect 128 16 7", "Sndout Disconnect 4 16 7",
                                    "Sndout Disconnect 4 1 1", "Sndout Disconnect 4 16 7"));
    EXPECT_THAT(logLines(), ElementsAre(info("keptvaudio:connectDisconnectResources",
                                             "Connect or disconnect status 1 speakerType 128"),
                                        info("keptvaudio:connectDisconnectResources",
                                             "Connect or disconnect status 0 speakerType 4")));
}

TEST_F(Reroute, HasNothingToDoWithoutResources)
{
    EXPECT_TRUE(mBackend.connectDisconnectResources(16, /*connect=*/true));
    EXPECT_TRUE(mBackend.connectDisconnectResources(16, /*connect=*/false));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(logLines(), ElementsAre(info("keptvaudio:connectDisconnectResources",
                                             "Connect or disconnect status 1 speakerType 16"),
                                        info("keptvaudio:connectDisconnectResources",
                                             "Connect or disconnect status 0 speakerType 16")));
}

TEST_F(Reroute, StopsAtTheFirstFailure)
{
    mBackend.initAudio();
    for (const bool connecting : {true, false}) {
        const std::string element = connecting ? "Sndout Connect" : "Sndout Disconnect";
        for (unsigned int failing = 0; failing < 3; ++failing) {
            Texts expected;
            for (unsigned int i = 0; i <= failing; ++i)
                expected.push_back(element + " 2 16 " + std::to_string(5 + i) +
                                   (i == failing ? " -> -5" : ""));
            forget();
            refuseWrite(failing);
            EXPECT_FALSE(mBackend.connectDisconnectResources(2, connecting));
            clearInjections();
            EXPECT_EQ(told(), expected);
            EXPECT_THAT(logLines(kLogError),
                        ElementsAre(refusedByDriver(), notSet(kFunction, element)));
        }
    }
}

} // namespace
