// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kUsual = "gain.setGainAsInput"; // what ends every successful connection

struct ResourceRow {
    const char* source;
    const char* sink;
    KEP_AUDIO_RESOURCE_T resource;
    const char* address; // index and port
};

// clang-format off
constexpr ResourceRow kResources[] = {
    // source     sink    resource                     address
    {"ADEC",     "MAIN", KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC",     "SUB",  KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC0",    "MAIN", KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC1",    "SUB",  KEP_AUDIO_RESOURCE_ADEC1,    "1 1"},
    {"AMIXER",   "ALSA", KEP_AUDIO_RESOURCE_AMIXER0,  "16 0"},
    {"AMIXER0",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER0,  "16 0"},
    {"AMIXER1",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER1,  "16 1"},
    {"AMIXER2",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER2,  "16 2"},
    {"AMIXER3",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER3,  "16 3"},
    {"AMIXER4",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER4,  "16 4"},
    {"AMIXER5",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER5,  "16 5"},
    {"AMIXER6",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER6,  "16 6"},
    {"AMIXER7",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER7,  "16 7"},
};

constexpr ResourceRow kNoResources[] = {
    {"ADEC",     "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"ADEC0",    "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER",   "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER3",  "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER8",  "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"adec0",    "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"",         "",     KEP_AUDIO_RESOURCE_INVALID, ""},
};
// clang-format on

struct Member {
    KEP_AUDIO_SNDOUT_T output;
    const char* type; // the driver's bit
};

struct OutputRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
    std::vector<Member> members;
};

// clang-format off
const std::vector<OutputRow> kOutputs = {
    {"tv_speaker",             KEP_AUDIO_SPK,             {{KEP_AUDIO_SPK, "1"}}},
    {"external_speaker",       KEP_AUDIO_SPDIF,           {{KEP_AUDIO_SPDIF, "2"}}},
    {"headphone",              KEP_AUDIO_HP,              {{KEP_AUDIO_HP, "16"}}},
    {"tv_speaker_external",    KEP_AUDIO_SPK_SPDIF,       {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}}},
    {"external_arc",           KEP_AUDIO_ARC,             {{KEP_AUDIO_ARC, "32"}}},
    {"tv_speaker_headphone",   KEP_AUDIO_SPK_HP,          {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_HP, "16"}}},
    {"qnSoundSync",            KEP_AUDIO_QN_SOUND_SYNC,   {{KEP_AUDIO_QN_SOUND_SYNC, "4"}}},
    {"bt_soundbar",            KEP_AUDIO_BT_SOUNDBAR,     {{KEP_AUDIO_BT_SOUNDBAR, "8"}}},
    {"wisa_speaker",           KEP_AUDIO_WISA,            {{KEP_AUDIO_WISA, "64"}}},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC, {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}, {KEP_AUDIO_ARC, "32"}}},
    {"tv_speaker_bluetooth",   KEP_AUDIO_SPK_BLUETOOTH,   {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_BLUETOOTH, "128"}}},
};
// clang-format on

constexpr KEP_AUDIO_SNDOUT_T kNotSelectable[] = {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_ALSA,
                                                 KEP_AUDIO_BLUETOOTH};

JValue purposes(const Texts& names)
{
    return with("pipelinePurpose", arrayOf(names));
}

JValue game()
{
    JValue attributes = purposes({"MAIN"});
    attributes.put("streamType", "kepgame");
    return attributes;
}

LogLine notSet(const std::string& function, const std::string& element)
{
    return error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:" + function,
                 "Did not able to set the element: " + element);
}

class RoutingTest : public TvBackendTest
{
protected:
    RoutingTest() { mBackend.deinitAudio(); } // no resource is connected

    void select(const std::string& output)
    {
        EXPECT_EQ(mBackend.setSoundOutput(output), kDone) << output;
        forget();
    }

    unsigned int connect(const std::string& source, const std::string& sink,
                         const JValue& request = purposes({"MAIN"}))
    {
        return mBackend.connectInput(source, sink, request);
    }
    unsigned int disconnect(const std::string& source, const std::string& sink)
    {
        return mBackend.disconnectInput(source, sink);
    }

    /// Addresses of all recorded resources, as a re-routing writes them.
    Texts recorded()
    {
        const std::string prefix = "Sndout Connect 77 ";
        forget();
        EXPECT_TRUE(mBackend.connectDisconnectResources(77, /*connect=*/true));
        Texts addresses;
        for (const std::string& text : told()) {
            EXPECT_EQ(text.substr(0, prefix.size()), prefix);
            addresses.push_back(text.substr(prefix.size()));
        }
        forget();
        return addresses;
    }
};

class ConnectInput : public RoutingTest
{
};
class DisconnectInput : public RoutingTest
{
};
class MainAudio : public RoutingTest
{
protected:
    static constexpr const char* kMainAudio = "Sndout MainAudio Output 1 0";
    static constexpr const char* kConnect = "Sndout Connect 1 1 0";

    MainAudio() { select("tv_speaker"); }
};
class Reroute : public RoutingTest
{
protected:
    static constexpr const char* kFunction = "connectDisconnectResources";
};

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
    notAnArray.put("pipelinePurpose", with("0", "EFFECT"));
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
    array.append(game());
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
