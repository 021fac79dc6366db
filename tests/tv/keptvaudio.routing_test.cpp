// SPDX-License-Identifier: Apache-2.0
// Routing: connecting an input, and the main audio.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "routingtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- Connecting

TEST_F(ConnectInput, ReachesEveryMemberOfEveryOutputWithEveryResource)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        for (const ResourceRow& row : kResources) {
            mBackend.deinitAudio();
            forget();
            const std::string address = row.address;
            Texts expected = {"Sndout MainAudio Output " + address};
            for (const Member& member : output.members)
                expected.push_back(std::string{"Sndout Connect "} + member.type + " " + address);
            expected.emplace_back(kUsual);
            EXPECT_EQ(connect(row.source, row.sink), kDone) << row.source << " " << output.name;
            EXPECT_EQ(told(), expected) << row.source << " " << output.name;
            EXPECT_THAT(logLines(kLogError), IsEmpty());
            EXPECT_THAT(recorded(), ElementsAre(address)) << row.source << " " << output.name;
        }
    }
}

TEST_F(ConnectInput, NamesEachMemberInTheLog)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        connect("AMIXER2", "SUB");
        Lines expected = {
            info("keptvaudio:connectInput",
                 "Request to connect sourceName:AMIXER2 sinkName:SUB "
                 "pipelineAttribute:{\"pipelinePurpose\":[\"MAIN\"]} mCurrentSoundout:" +
                     std::to_string(output.output)),
            debug("keptvaudio:connectInput", "connectInput call for resource 22"),
            info("keptvaudioutil:isValidpipelinePurpose",
                 "isValidpipelinePurpose purposeType: [\"MAIN\"]"),
        };
        if (output.output == KEP_AUDIO_SPK_SPDIF)
            expected.push_back(debug("keptvaudio:checkConnectInputResource",
                                     "Inside tv speaker and external speaker connect Input"));
        for (const Member& member : output.members)
            expected.push_back(
                debug("keptvaudio:connectInputResource",
                      "Connect audio resource 22 to soundoutput " + std::to_string(member.output)));
        expected.push_back(info("keptvgain:setInputGain", "calling setGainAsInput"));
        EXPECT_EQ(logLines(), expected) << output.name;
    }
}

TEST_F(ConnectInput, RefusesAnUnknownResourceBeforeAnythingElse)
{
    for (const char* output : {"", "tv_speaker"}) {
        if (*output != '\0')
            select(output);
        for (const ResourceRow& row : kNoResources) {
            forget();
            EXPECT_EQ(connect(row.source, row.sink), kInvalidResource) << row.source;
            EXPECT_THAT(told(), IsEmpty()) << row.source;
            EXPECT_THAT(logLines(),
                        ElementsAre(info("keptvaudio:connectInput",
                                         std::string{"Request to connect sourceName:"} +
                                             row.source + " sinkName:" + row.sink +
                                             " pipelineAttribute:{\"pipelinePurpose\":[\"MAIN\"]} "
                                             "mCurrentSoundout:" +
                                             (*output != '\0' ? "1" : "0")),
                                    error("INVALID_RESOURCEID", "keptvaudio:connectInput",
                                          "Invalid resource ID 255 to connect audio")));
        }
    }
    EXPECT_THAT(recorded(), IsEmpty());
}

TEST_F(ConnectInput, NeedsASelectableOutput)
{
    for (const KEP_AUDIO_SNDOUT_T output : kNotSelectable) {
        mBackend.mCurrentSoundout = output;
        forget();
        EXPECT_EQ(connect("ADEC1", "MAIN"), kInvalidOutput) << output;
        EXPECT_THAT(told(), IsEmpty()) << output;
        EXPECT_THAT(logLines(),
                    ElementsAre(info("keptvaudio:connectInput",
                                     "Request to connect sourceName:ADEC1 sinkName:MAIN "
                                     "pipelineAttribute:{\"pipelinePurpose\":[\"MAIN\"]} "
                                     "mCurrentSoundout:" +
                                         std::to_string(output)),
                                error("INVALID_SOUNDOUTPUT", "keptvaudio:connectInput",
                                      "connectInput  call for resource 9 failed as no valid sound "
                                      "out is set")));
    }
    EXPECT_THAT(recorded(), IsEmpty());
}

TEST_F(ConnectInput, StopsAtTheMemberThatFailsAndRecordsNothing)
{
    for (const OutputRow& output : kOutputs) {
        select(output.name);
        for (std::size_t failing = 0; failing < output.members.size(); ++failing) {
            Texts expected = {"Sndout MainAudio Output 16 4"};
            for (std::size_t i = 0; i <= failing; ++i)
                expected.push_back(std::string{"Sndout Connect "} + output.members[i].type +
                                   " 16 4" + (i == failing ? " -> -5" : ""));
            forget();
            refuseWrite(static_cast<unsigned int>(failing + 1));
            EXPECT_EQ(connect("AMIXER4", "MAIN"), kFailed) << output.name << " " << failing;
            clearInjections();
            EXPECT_EQ(told(), expected) << output.name << " " << failing;
            EXPECT_THAT(
                logLines(kLogError),
                ElementsAre(refusedByDriver(), notSet("connectInputResource", "Sndout Connect")))
                << output.name << " " << failing;
            EXPECT_THAT(recorded(), IsEmpty()) << output.name << " " << failing;
        }
    }
}

TEST_F(ConnectInput, IsNotRoutedAgainAfterItsSecondMemberFailed)
{
    select("tv_speaker_bluetooth");
    refuseWrite(2);
    EXPECT_EQ(connect("ADEC0", "MAIN"), kFailed);
    clearInjections();
    EXPECT_EQ(connect("ADEC1", "MAIN"), kDone);
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker"), kDone);
    Texts first = told();
    first.resize(2);
    EXPECT_THAT(first, ElementsAre("Sndout Disconnect 128 1 1", "Sndout Close 128"));
}

TEST_F(ConnectInput, GoesOnWithoutTheInputGain)
{
    select("headphone");
    injectMiddleware("gain.setGainAsInput", 3);
    EXPECT_EQ(connect("ADEC0", "MAIN"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout MainAudio Output 1 0", "Sndout Connect 16 1 0",
                                    "gain.setGainAsInput -> 3"));
    EXPECT_THAT(
        logLines(kLogError),
        ElementsAre(error("GAIN_MWL_ERROR", "keptvgain:setInputGain", "Failed to set input gain"),
                    error("GAIN_MIDDLEWARE_ERROR", "keptvaudio:connectInput",
                          "Failed to update Input Gain")));
    EXPECT_THAT(recorded(), ElementsAre("1 0"));
}

TEST_F(ConnectInput, RecordsInOrderAndTwiceWhatIsConnectedTwice)
{
    select("tv_speaker");
    connect("ADEC0", "MAIN");
    connect("AMIXER1", "MAIN");
    connect("ADEC0", "SUB");
    EXPECT_THAT(recorded(), ElementsAre("1 0", "16 1", "1 0"));
}

TEST_F(ConnectInput, AppendsToTheInputsOfTheStart)
{
    mBackend.initAudio();
    select("tv_speaker");
    connect("ADEC0", "MAIN");
    EXPECT_THAT(recorded(), ElementsAre("16 5", "16 6", "16 7", "1 0"));
}

TEST_F(ConnectInput, LeavesThePipelineStoreAlone)
{
    select("tv_speaker");
    const kepTvParser& store = *kepTvParser::getInstance();
    const auto quality = store.mQualityParamsMap;
    JValue request = purposes({"MAIN"});
    request.put("pipelineId", "pipeline1");
    request.put("streamType", "kepmedia");
    connect("ADEC0", "MAIN", request);
    EXPECT_THAT(mBackend.AudioVideoInfoMapVector, IsEmpty());
    EXPECT_THAT(store.mAvParamsMap, IsEmpty());
    EXPECT_THAT(store.mAencAvParamsMap, IsEmpty());
    EXPECT_EQ(store.mQualityParamsMap, quality);
}

// --- The main audio

TEST_F(MainAudio, IsWrittenUnlessAPurposeSpeaksAgainstIt)
{
    struct Row {
        JValue attributes;
        bool main;
    };
    JValue notAnArray = JValue::object();
    static_cast<void>(notAnArray.put("pipelinePurpose", with("0", "EFFECT")));
    JValue mixed = JValue::array();
    mixed.append(5);
    mixed.append("EFFECT");
    const std::vector<Row> rows = {
        {purposes({"MAIN"}), true},
        {purposes({}), true},
        {purposes({"AUDIO_DESC"}), false},
        {purposes({"EFFECT"}), false},
        {purposes({"MAIN", "RECORDING", "EFFECT"}), false},
        {purposes({"MAIN", "AUDIO_DESC"}), false},
        {purposes({"audio_desc", "EFFECTS", "effect", ""}), true},
        {with("pipelinePurpose", mixed), false},
        {with("pipelinePurpose", "EFFECT"), true},
        {with("pipelinePurpose", JValue{}), true},
        {with("purpose", "EFFECT"), true},
        {notAnArray, true},
        {JValue::object(), true},
    };
    for (const Row& row : rows) {
        const std::string text = row.attributes.stringify();
        forget();
        EXPECT_EQ(connect("ADEC0", "MAIN", row.attributes), kDone) << text;
        EXPECT_EQ(told(),
                  row.main ? (Texts{kMainAudio, kConnect, kUsual}) : (Texts{kConnect, kUsual}))
            << text;
        Lines expected = {debug("keptvaudio:connectInput", "connectInput call for resource 8")};
        if (!row.main)
            expected.push_back(debug("keptvaudio:connectInput",
                                     "Did not set Sndout MainAudio Output,when pipelinePurpose = "
                                     "\"audiodescription\" and stream type \"\""));
        expected.push_back(
            debug("keptvaudio:connectInputResource", "Connect audio resource 8 to soundoutput 1"));
        EXPECT_EQ(logLines(kLogDebug), expected) << text;
    }
    EXPECT_THAT(recorded(), SizeIs(rows.size()));
}

TEST_F(MainAudio, IsNotTakenByAGame)
{
    EXPECT_EQ(connect("ADEC0", "MAIN", game()), kDone);
    EXPECT_THAT(told(), ElementsAre(kConnect, kUsual));
    EXPECT_THAT(
        logLines(),
        ElementsAre(
            info("keptvaudio:connectInput",
                 "Request to connect sourceName:ADEC0 sinkName:MAIN pipelineAttribute:"
                 "{\"pipelinePurpose\":[\"MAIN\"],\"streamType\":\"kepgame\"} mCurrentSoundout:1"),
            debug("keptvaudio:connectInput", "connectInput call for resource 8"),
            info("keptvaudioutil:isValidpipelinePurpose",
                 "isValidpipelinePurpose purposeType: [\"MAIN\"]"),
            debug("keptvaudio:connectInput",
                  "Did not set Sndout MainAudio Output,when pipelinePurpose = "
                  "\"audiodescription\" and stream type \"kepgame\""),
            debug("keptvaudio:connectInputResource", "Connect audio resource 8 to soundoutput 1"),
            info("keptvgain:setInputGain", "calling setGainAsInput")));
    EXPECT_THAT(recorded(), ElementsAre("1 0"));
}

TEST_F(MainAudio, IsTakenByEveryOtherStreamType)
{
    JValue list = JValue::array();
    list.append("kepgame");
    for (const JValue& type : {JValue{""}, JValue{"kepmedia"}, JValue{"kepgames"},
                               JValue{"KEPGAME"}, JValue{5}, JValue{}, list}) {
        forget();
        EXPECT_EQ(connect("ADEC0", "MAIN", with("streamType", type)), kDone);
        EXPECT_THAT(told(), ElementsAre(kMainAudio, kConnect, kUsual)) << type.stringify();
    }
}

TEST_F(MainAudio, NamesTheStreamTypeOfARefusedPurpose)
{
    JValue description = purposes({"AUDIO_DESC"});
    description.put("streamType", "kepmedia");
    EXPECT_EQ(connect("ADEC0", "MAIN", description), kDone);
    EXPECT_THAT(told(), ElementsAre(kConnect, kUsual));
    EXPECT_THAT(logLines(kLogDebug),
                testing::Contains(debug("keptvaudio:connectInput",
                                        "Did not set Sndout MainAudio Output,when pipelinePurpose "
                                        "= \"audiodescription\" and stream type \"kepmedia\"")));
}

TEST_F(MainAudio, IsTakenWhenTheAttributesAreNoObject)
{
    JValue array = JValue::array();
    static_cast<void>(array.append(game()));
    for (const JValue& request : {JValue{}, JValue{"kepgame"}, JValue{7}, JValue{true}, array,
                                  JValue::array(), JValue::invalid()}) {
        forget();
        EXPECT_EQ(connect("ADEC0", "MAIN", request), kDone);
        EXPECT_THAT(told(), ElementsAre(kMainAudio, kConnect, kUsual)) << request.stringify();
    }
}

TEST_F(MainAudio, FailureConnectsNothing)
{
    refuseWrite(0);
    EXPECT_EQ(connect("ADEC0", "MAIN"), kFailed);
    EXPECT_THAT(told(), ElementsAre("Sndout MainAudio Output 1 0 -> -5"));
    EXPECT_THAT(logLines(kLogError),
                ElementsAre(refusedByDriver(), notSet("connectInput", "Sndout MainAudio Output")));
    EXPECT_EQ(logLines().size(), 5U); // request, call, purpose and the two errors
    EXPECT_THAT(recorded(), IsEmpty());
}

} // namespace
