// SPDX-License-Identifier: Apache-2.0
// The pipeline store: what each report leaves in it, in the parameters that the middleware is
// given, and in the log.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

using Maps = std::vector<AudioVideoInfo>;

// Payloads that name no pipeline.
std::vector<JValue> notObjects()
{
    return {JValue::array(), JValue{"pipelineId"}, JValue{5}, JValue{true},
            JValue{},        JValue::invalid()};
}

LogLine inQuality(const std::string& function, const std::string& text)
{
    return info("keptvaudioquality:" + function, text);
}

LogLine inSettings(const std::string& function, const std::string& text)
{
    return info("keptvaudiosettings:" + function, text);
}

LogLine inUtil(const std::string& function, const std::string& text)
{
    return info("keptvaudioutil:" + function, text);
}

// --- What the log says of each step

Lines checking(const std::string& id)
{
    return {inUtil("isNewPipelineId", "Checking PipelineId is New or existing " + id)};
}

const Lines kEmptyStore = {inUtil(
    "isNewPipelineId", "Vector of AudioVideoInfo map is empty, so new pipelineId requested")};

LogLine matching(const std::string& function, const std::string& id)
{
    const std::string text = "PipelineId is matching, so need to update the map pipelineId " + id;
    return function == "isNewPipelineId" ? inUtil(function, text) : inSettings(function, text);
}

Lines dump(const Maps& maps)
{
    const std::string function = "printSetQualityAttributeInfo";
    Lines lines = {inQuality(function, "AudioVideoInfo map size " + std::to_string(maps.size()))};
    for (const AudioVideoInfo& map : maps) {
        lines.push_back(inQuality(function, "AudioVideoInfo map values are"));
        for (const auto& [key, value] : map)
            lines.push_back(inQuality(function, "Map: Key and Values are " + key + " " + value));
    }
    return lines;
}

LogLine storing(const std::string& report)
{
    return inQuality("storePipelineInfoParameters",
                     "storePipelineInfoParameters to store pipelineInfo " + report);
}

/// The question for the active state, and what follows from it.
Lines adopting(bool active)
{
    Lines lines = {info("keptvaudio:getActiveState",
                        std::string{"Getting ActiveStatus: "} + (active ? "1" : "0"))};
    if (active)
        lines.push_back(info("keptvaudio:updateCodecImmersiveFormat",
                             "Called updateCodecImmersiveFormat to update codec and immersive "
                             "format"));
    else
        lines.push_back(inQuality("storePipelineInfoParameters",
                                  "not update in map because activestate is false"));
    return lines;
}

const LogLine kNoArray = error("INVALID_PARAMETER", "keptvaudioquality:storePipelineInfoParameters",
                               "pipelinePurpose is not an Array Element");

/// The two lines that open an update, and those of the maps that it changed.
Lines updating(const std::string& report, std::size_t size, const std::string& id,
               const Maps& changed)
{
    const std::string function = "updateExistingPipelineInfo";
    Lines lines = {
        inSettings(function,
                   "updateExistingPipelineInfo to update existing pipelineInfo " + report),
        inSettings(function,
                   "updateExistingPipelineInfo Vector of map values size " + std::to_string(size))};
    for (const AudioVideoInfo& map : changed) {
        lines.push_back(matching(function, id));
        for (const auto& [key, value] : map)
            lines.push_back(
                inSettings(function, "Updated exiting audio video info map and values are " + key +
                                         " " + value));
    }
    return lines;
}

/// What only other rooms of the backend write.
class PipelineTest : public TvBackendTest
{
protected:
    using TvBackendTest::store;

    [[nodiscard]] Maps& maps() { return mBackend.AudioVideoInfoMapVector; }
    static kepTvParser::Map& current() { return store().mAvParamsMap; }
    static kepTvParser::Map& recording() { return store().mAencAvParamsMap; }

    bool update(const std::string& report) { return mBackend.updatePipelineInfo(json(report)); }
    void store(const std::string& report) { mBackend.storePipelineInfoParameters(json(report)); }
    void setActive(bool active)
    {
        mBackend.setActiveState(active);
        forget();
    }
};

// --- Reports

const LogLine kStores = inSettings("updatePipelineInfo", "Calling storePipelineInfoParameters");
const LogLine kUpdates = inSettings("updatePipelineInfo", "Calling updateExistingPipelineInfo");

class Report : public PipelineTest
{
protected:
    static Lines asked(const std::string& id)
    {
        return Lines{inSettings("updatePipelineInfo", "updatePipelineInfo : pipelineId = " + id)} +
               checking(id);
    }
};

TEST_F(Report, ThatNamesNoPipelineIsRefused)
{
    std::vector<JValue> reports = notObjects();
    for (const char* text : {"{}", R"({"PipelineId":"p"})", R"({"streamType":"pipelineId"})"})
        reports.push_back(json(text));
    for (const JValue& report : reports) {
        forget();
        EXPECT_FALSE(mBackend.updatePipelineInfo(report)) << report.stringify();
        EXPECT_THAT(logLines(),
                    ElementsAre(error("INVALID_PARAMETER", "keptvaudiosettings:updatePipelineInfo",
                                      "Invalid pipelineInfo")));
        EXPECT_THAT(maps(), IsEmpty());
        EXPECT_THAT(current(), IsEmpty());
        EXPECT_THAT(told(), IsEmpty());
    }
}

TEST_F(Report, OfANewPipelineIsStored)
{
    const std::string report = R"({"pipelineId":"p1","streamType":"movie","resource":"ADEC0"})";
    const AudioVideoInfo expected = {
        {"pipelineId", "p1"}, {"resource", "ADEC0"}, {"streamType", "movie"}};
    EXPECT_TRUE(update(report));
    EXPECT_THAT(maps(), ElementsAre(expected));
    EXPECT_EQ(current(), expected);
    EXPECT_THAT(recording(), IsEmpty());
    EXPECT_THAT(told(), IsEmpty());
    const Lines lines = asked("p1") + kEmptyStore + Lines{kStores, storing(report)} +
                        adopting(true) + dump({expected});
    EXPECT_EQ(logLines(), lines);
}

TEST_F(Report, OfAnotherPipelineIsAppended)
{
    EXPECT_TRUE(update(R"({"pipelineId":"p2"})"));
    EXPECT_TRUE(update(R"({"pipelineId":"p1","streamType":"movie"})"));
    forget();
    EXPECT_TRUE(update(R"({"pipelineId":"p10"})"));
    const Maps expected = {{{"pipelineId", "p2"}},
                           {{"pipelineId", "p1"}, {"streamType", "movie"}},
                           {{"pipelineId", "p10"}}};
    EXPECT_EQ(maps(), expected);
    EXPECT_EQ(current(), expected.back());
    const Lines lines = asked("p10") + Lines{kStores, storing(R"({"pipelineId":"p10"})")} +
                        adopting(true) + dump(expected);
    EXPECT_EQ(logLines(), lines);
}

TEST_F(Report, OfAKnownPipelineIsMergedIntoIt)
{
    EXPECT_TRUE(update(R"({"pipelineId":"p1","streamType":"movie","resource":"ADEC0"})"));
    const AudioVideoInfo before = current();
    forget();
    const std::string report =
        R"({"streamType":"game","pipelineId":"p1","codec":"eac3","volume":5,"reset":false,)"
        R"("resource":null,"pipelinePurpose":["EFFECT"],"sub":{"a":"b"},"immersive":""})";
    EXPECT_TRUE(update(report));
    const AudioVideoInfo expected = {{"codec", "eac3"},
                                     {"immersive", ""},
                                     {"pipelineId", "p1"},
                                     {"resource", "ADEC0"},
                                     {"streamType", "game"}};
    EXPECT_THAT(maps(), ElementsAre(expected));
    EXPECT_EQ(current(), before); // the middleware is told by the category reports
    EXPECT_THAT(told(), IsEmpty());
    const Lines lines = asked("p1") + Lines{matching("isNewPipelineId", "p1"), kUpdates} +
                        updating(report, 1, "p1", {expected});
    EXPECT_EQ(logLines(), lines);
}

TEST_F(Report, WithANumberForAnIdIsThatOfTheEmptyOne)
{
    EXPECT_TRUE(update(R"({"pipelineId":5,"streamType":"movie"})"));
    const AudioVideoInfo expected = {{"pipelineId", ""}, {"streamType", "movie"}};
    EXPECT_THAT(maps(), ElementsAre(expected));
    forget();
    EXPECT_TRUE(update(R"({"pipelineId":6,"streamType":"game"})"));
    EXPECT_THAT(maps(), ElementsAre(expected)); // no update without an id
    const Lines lines = asked("") + Lines{matching("isNewPipelineId", ""), kUpdates} +
                        updating(R"({"pipelineId":6,"streamType":"game"})", 1, "", {});
    EXPECT_EQ(logLines(), lines);
}

TEST_F(Report, WithASourceAppliesTheFormatOfEarcWhileArcIsCurrent)
{
    for (const KEP_AUDIO_SNDOUT_T output : kAllOutputs) {
        for (const char* report :
             {R"({"pipelineId":"p","sourceType":"HDMI"})", R"({"pipelineId":"p","sourceType":5})",
              R"({"pipelineId":"p","sourceAttribute":"HDMI"})"}) {
            for (const bool refused : {false, true}) {
                clearInjections();
                maps().clear();
                mBackend.mCurrentSoundout = output;
                store().mQualityParamsMap["soundOutputDigital"] = "pcm";
                if (refused)
                    refuseWrite(0);
                forget();
                EXPECT_TRUE(update(report)) << report;
                Texts expected;
                if (output == KEP_AUDIO_ARC &&
                    std::string{report}.find("sourceType") != std::string::npos)
                    expected.push_back(std::string{"Sndout EARC Outputtype 2 1 0 0 1"} +
                                       (refused ? " -> -5" : ""));
                EXPECT_EQ(told(), expected) << report << " " << output;
                EXPECT_EQ(maps().size(), 1U);
            }
        }
    }
}

TEST_F(Report, WithASourceAppliesTheFormatBeforeItIsStored)
{
    JValue capability = JValue::array();
    capability.append("AAC");
    mBackend.mEarcCapability = capability;
    mBackend.mCurrentSoundout = KEP_AUDIO_ARC;
    store().mQualityParamsMap = {{"soundOutputDigital", "auto"}, {"tv.hw.countryType", "JP"}};
    EXPECT_TRUE(update(R"({"pipelineId":"p","sourceType":"HDMI"})"));
    EXPECT_TRUE(update(R"({"pipelineId":"p","sourceType":"USB"})")); // a known one does so, too
    EXPECT_THAT(told(), ElementsAre("Sndout EARC Outputtype 2 1 0 0 1",
                                    "Sndout EARC Outputtype 2 3 0 0 1"));
    EXPECT_EQ(current()["sourceType"], "HDMI");
}

TEST_F(Report, IsNotLoggedUnlessThatIsAdmitted)
{
    admit(kLogError);
    EXPECT_TRUE(update(R"({"pipelineId":"p1","streamType":"movie"})"));
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(maps().size(), 1U);
    EXPECT_EQ(current()["streamType"], "movie");
}

// --- Storing

class Storing : public PipelineTest
{
};

TEST_F(Storing, TakesTheNamedFieldsAndNoOther)
{
    const std::string report =
        R"({"unknown":"x","pipelinetype":"t","reset":false,"sourceAttribute":"a","codec":"eac3",)"
        R"("sourceType":"HDMI","resource":"ADEC0","streamType":"movie","pipelineId":"p"})";
    store(report);
    const AudioVideoInfo expected = {{"pipelineId", "p"},      {"streamType", "movie"},
                                     {"resource", "ADEC0"},    {"sourceType", "HDMI"},
                                     {"sourceAttribute", "a"}, {"reset", "false"},
                                     {"pipelinetype", "t"}};
    EXPECT_THAT(maps(), ElementsAre(expected));
    EXPECT_EQ(current(), expected);
    EXPECT_EQ(logLines(), Lines{storing(report)} + adopting(true) + dump({expected}));
}

TEST_F(Storing, TakesAFieldOfAnotherTypeForEmpty)
{
    for (const std::string key : {"pipelineId", "streamType", "resource", "sourceType",
                                  "sourceAttribute", "pipelinetype"}) {
        for (const std::string value : {"5", "true", "null", "[\"a\"]", R"({"a":"b"})"}) {
            maps().clear();
            store("{\"" + key + "\":" + value + "}");
            EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{key, ""}})) << key << value;
        }
    }
}

TEST_F(Storing, KeepsResetAsItsText)
{
    for (const std::string value :
         {"true", "false", "null", "5", R"("true")", R"(["a"])", R"({"a":"b"})"}) {
        maps().clear();
        store(R"({"reset":)" + value + "}");
        EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"reset", value}}));
    }
}

TEST_F(Storing, OfAReportWithoutAnythingAppendsAnEmptyMap)
{
    store("{}");
    store("{}");
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{}, AudioVideoInfo{}));
}

TEST_F(Storing, DoesNotAskWhetherThePipelineIsKnown)
{
    store(R"({"pipelineId":"p","resource":"ADEC0"})");
    store(R"({"pipelineId":"p","resource":"ADEC1"})");
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"pipelineId", "p"}, {"resource", "ADEC0"}},
                                    AudioVideoInfo{{"pipelineId", "p"}, {"resource", "ADEC1"}}));
    EXPECT_EQ(current(), maps().back());
}

struct PurposeRow {
    const char* purposes; // JSON; null: no such key
    AudioVideoInfo stored;
    bool adopts;            // replaces the current pipeline, while the backend is active
    AudioVideoInfo current; // what with
    bool records;
    AudioVideoInfo recording;
    int asked; // how often the active state is asked for
    bool complains = false;
};

// A pipeline with these purposes, by their index.
AudioVideoInfo mapOf(const std::map<std::string, std::string>& purposes)
{
    AudioVideoInfo map = {{"pipelineId", "p"}};
    for (const auto& [index, purpose] : purposes)
        map["pipelinePurpose" + index] = purpose;
    return map;
}

const std::vector<PurposeRow>& purposeRows()
{
    const AudioVideoInfo none = mapOf({});
    // clang-format off
    static const std::vector<PurposeRow> rows = {
        {nullptr,                   none, true,  none, false, {}, 1},
        {R"("MAIN")",               none, true,  none, false, {}, 1, true},
        {R"("RECORDING")",          none, true,  none, false, {}, 1, true},
        {"null",                    none, true,  none, false, {}, 1, true},
        {"5",                       none, true,  none, false, {}, 1, true},
        {"true",                    none, true,  none, false, {}, 1, true},
        {R"({"0":"RECORDING"})",    none, true,  none, false, {}, 1, true},
        {"[]",                      none, false, {},   false, {}, 0},
        {R"(["MAIN"])",
         mapOf({{"0", "MAIN"}}), true, mapOf({{"0", "MAIN"}}), false, {}, 1},
        {R"(["RECORDING"])",
         mapOf({{"0", "RECORDING"}}), false, {}, true, mapOf({{"0", "RECORDING"}}), 0},
        {R"(["MAIN","RECORDING"])",
         mapOf({{"0", "MAIN"}, {"1", "RECORDING"}}), true, mapOf({{"0", "MAIN"}}),
         true, mapOf({{"0", "MAIN"}, {"1", "RECORDING"}}), 1},
        {R"(["RECORDING","MAIN"])",
         mapOf({{"0", "RECORDING"}, {"1", "MAIN"}}), true, mapOf({{"0", "RECORDING"}, {"1", "MAIN"}}),
         true, mapOf({{"0", "RECORDING"}}), 1},
        {R"(["AUDIO_DESC","EFFECT"])",
         mapOf({{"0", "AUDIO_DESC"}, {"1", "EFFECT"}}), true, mapOf({{"0", "AUDIO_DESC"}, {"1", "EFFECT"}}),
         false, {}, 2},
        {R"(["RECORDING","RECORDING"])",
         mapOf({{"0", "RECORDING"}, {"1", "RECORDING"}}), false, {},
         true, mapOf({{"0", "RECORDING"}, {"1", "RECORDING"}}), 0},
        {R"(["MAIN","RECORDING","OTHER"])",
         mapOf({{"0", "MAIN"}, {"1", "RECORDING"}, {"2", "OTHER"}}), true,
         mapOf({{"0", "MAIN"}, {"1", "RECORDING"}, {"2", "OTHER"}}),
         true, mapOf({{"0", "MAIN"}, {"1", "RECORDING"}}), 2},
        {R"([5,"recording"])",
         mapOf({{"0", ""}, {"1", "recording"}}), true, mapOf({{"0", ""}, {"1", "recording"}}), false, {}, 2},
        {R"([["RECORDING"]])",
         mapOf({{"0", ""}}), true, mapOf({{"0", ""}}), false, {}, 1},
        {R"(["a","b","c","d","e","f","g","h","i","j","k"])",
         mapOf({{"0", "a"}, {"1", "b"}, {"2", "c"}, {"3", "d"}, {"4", "e"}, {"5", "f"}, {"6", "g"},
                {"7", "h"}, {"8", "i"}, {"9", "j"}, {"10", "k"}}), true,
         mapOf({{"0", "a"}, {"1", "b"}, {"2", "c"}, {"3", "d"}, {"4", "e"}, {"5", "f"}, {"6", "g"},
                {"7", "h"}, {"8", "i"}, {"9", "j"}, {"10", "k"}}), false, {}, 11},
    };
    // clang-format on
    return rows;
}

TEST_F(Storing, HandsOnWhatThePurposesSay)
{
    const AudioVideoInfo old = {{"old", "1"}};
    for (const PurposeRow& row : purposeRows()) {
        for (const bool active : {true, false}) {
            maps().clear();
            current() = old;
            recording() = old;
            setActive(active);
            const std::string report =
                R"({"pipelineId":"p")" +
                (row.purposes != nullptr ? std::string{R"(,"pipelinePurpose":)"} + row.purposes
                                         : "") +
                "}";
            store(report);
            EXPECT_THAT(maps(), ElementsAre(row.stored)) << report;
            EXPECT_EQ(current(), row.adopts && active ? row.current : old) << report;
            EXPECT_EQ(recording(), row.records ? row.recording : old) << report;
            Lines expected = {storing(report)};
            if (row.complains)
                expected.push_back(kNoArray);
            for (int i = 0; i < row.asked; ++i)
                expected = expected + adopting(active);
            EXPECT_EQ(logLines(), expected + dump({row.stored})) << report;
            EXPECT_THAT(told(), IsEmpty());
        }
    }
}

TEST_F(Storing, KeepsTheMapAsItStoodAfterEachPurpose)
{
    store(R"({"pipelineId":"p","pipelinePurpose":["MAIN","RECORDING"]})");
    EXPECT_EQ(current(), mapOf({{"0", "MAIN"}}));
    EXPECT_EQ(recording(), mapOf({{"0", "MAIN"}, {"1", "RECORDING"}}));
    EXPECT_THAT(maps(), ElementsAre(recording()));
}

TEST_F(Storing, FollowsTheLastPipelineThatWasActive)
{
    EXPECT_TRUE(update(R"({"pipelineId":"a"})"));
    setActive(false);
    EXPECT_TRUE(update(R"({"pipelineId":"b"})"));
    EXPECT_EQ(current()["pipelineId"], "a");
    EXPECT_TRUE(update(R"({"pipelineId":"r","pipelinePurpose":["RECORDING"]})"));
    EXPECT_EQ(current()["pipelineId"], "a");
    EXPECT_EQ(recording()["pipelineId"], "r");
    setActive(true);
    EXPECT_TRUE(update(R"({"pipelineId":"c"})"));
    EXPECT_EQ(current()["pipelineId"], "c");
    EXPECT_EQ(recording()["pipelineId"], "r");
    EXPECT_EQ(maps().size(), 4U);
}

// --- Updating

class Updating : public PipelineTest
{
};

TEST_F(Updating, ChangesEveryMapOfThePipeline)
{
    maps() = {{{"pipelineId", "p"}, {"resource", "ADEC0"}},
              {{"pipelineId", "q"}, {"resource", "ADEC1"}},
              {{"pipelineId", "p"}, {"streamType", "movie"}}};
    const std::string report = R"({"pipelineId":"p","streamType":"game","n":1})";
    mBackend.updateExistingPipelineInfo(json(report));
    const AudioVideoInfo first = {
        {"pipelineId", "p"}, {"resource", "ADEC0"}, {"streamType", "game"}};
    const AudioVideoInfo third = {{"pipelineId", "p"}, {"streamType", "game"}};
    EXPECT_THAT(
        maps(),
        ElementsAre(first, AudioVideoInfo{{"pipelineId", "q"}, {"resource", "ADEC1"}}, third));
    EXPECT_EQ(logLines(), updating(report, 3, "p", {first, third}));
    EXPECT_THAT(current(), IsEmpty());
}

TEST_F(Updating, NeedsAnIdThatIsKnown)
{
    const Maps before = {{{"pipelineId", "p"}, {"a", "1"}}, {{"pipelineId", ""}}, {{"a", "2"}}};
    for (const std::string report :
         {R"({"a":"9"})", R"({"pipelineId":"","a":"9"})", R"({"pipelineId":1,"a":"9"})",
          R"({"pipelineId":"P","a":"9"})", R"({"pipelineId":"p ","a":"9"})",
          R"({"pipelineId":"2","a":"9"})", R"({"pipelineId":null,"a":"9"})"}) {
        maps() = before;
        forget();
        mBackend.updateExistingPipelineInfo(json(report));
        EXPECT_EQ(maps(), before) << report;
        EXPECT_EQ(logLines(), updating(report, 3, "", {})) << report;
    }
}

TEST_F(Updating, OfAnEmptyStoreDoesNothing)
{
    mBackend.updateExistingPipelineInfo(json(R"({"pipelineId":"p"})"));
    EXPECT_THAT(maps(), IsEmpty());
    EXPECT_EQ(logLines(), updating(R"({"pipelineId":"p"})", 0, "p", {}));
}

TEST_F(Updating, DoesNotApplyCodecAndImmersiveFormat)
{
    mBackend.mCurrentSoundout = KEP_AUDIO_ARC;
    maps() = {{{"pipelineId", "p"}}};
    mBackend.updateExistingPipelineInfo(
        json(R"({"pipelineId":"p","codec":"eac3","immersive":"ATMOS"})"));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(maps().front().size(), 3U);
}

// --- Resetting

class Resetting : public PipelineTest
{
protected:
    static Lines opening(const std::string& report)
    {
        return {inQuality("resetPipelineInfo", "resetPipelineInfo:: audioVideoObject " + report)};
    }
    static LogLine left(const std::string& id)
    {
        return inQuality("resetPipelineInfo", "After Reset New values pipelineId " + id);
    }
};

TEST_F(Resetting, LeavesOnlyTheIdInEveryMapOfThePipeline)
{
    maps() = {{{"pipelineId", "p"}, {"resource", "ADEC0"}, {"a", "1"}, {"z", "1"}},
              {{"pipelineId", "q"}, {"resource", "ADEC1"}},
              {{"pipelineId", "p"}}};
    current() = maps()[0];
    recording() = maps()[0];
    const AudioVideoInfo before = maps()[0];
    const std::string report = R"({"pipelineId":"p","reset":true})";
    EXPECT_TRUE(mBackend.resetPipelineInfo(json(report)));
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"pipelineId", "p"}},
                                    AudioVideoInfo{{"pipelineId", "q"}, {"resource", "ADEC1"}},
                                    AudioVideoInfo{{"pipelineId", "p"}}));
    EXPECT_EQ(logLines(), (opening(report) + Lines{left("p"), left("p")}));
    EXPECT_EQ(current(), before);
    EXPECT_EQ(recording(), before);
}

TEST_F(Resetting, OfAnUnknownPipelineFails)
{
    const Maps before = {{{"pipelineId", "p"}, {"a", "1"}}, {{"a", "q"}}};
    for (const std::string report :
         {R"({"pipelineId":"q"})", R"({"pipelineId":"P"})", R"({"pipelineId":5})", "{}"}) {
        maps() = before;
        forget();
        EXPECT_FALSE(mBackend.resetPipelineInfo(json(report))) << report;
        EXPECT_EQ(maps(), before) << report;
        EXPECT_EQ(logLines(), opening(report));
        maps().clear();
        forget();
        EXPECT_FALSE(mBackend.resetPipelineInfo(json(report))) << report;
        EXPECT_EQ(logLines(), opening(report));
    }
}

TEST_F(Resetting, WithoutAnIdIsThatOfTheEmptyOne)
{
    for (const std::string report : {"{}", R"({"pipelineId":5})", R"({"pipelineId":""})"}) {
        maps() = {{{"a", "1"}}, {{"pipelineId", ""}, {"a", "1"}}};
        forget();
        EXPECT_TRUE(mBackend.resetPipelineInfo(json(report))) << report;
        EXPECT_THAT(maps(),
                    ElementsAre(AudioVideoInfo{{"a", "1"}}, AudioVideoInfo{{"pipelineId", ""}}));
        EXPECT_EQ(logLines(), opening(report) + Lines{left("")});
    }
}

TEST_F(Resetting, KeepsThePipelineKnown)
{
    EXPECT_TRUE(update(R"({"pipelineId":"p","streamType":"movie"})"));
    EXPECT_TRUE(mBackend.resetPipelineInfo(json(R"({"pipelineId":"p","reset":true})")));
    EXPECT_TRUE(update(R"({"pipelineId":"p","resource":"ADEC1"})"));
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"pipelineId", "p"}, {"resource", "ADEC1"}}));
    EXPECT_EQ(current(), (AudioVideoInfo{{"pipelineId", "p"}, {"streamType", "movie"}}));
}

// --- Removing

class Removing : public PipelineTest
{
protected:
    /// One map for each letter, its id; a dot is a map without one. Each has a number of its own.
    static Maps mapsOf(const std::string& letters)
    {
        Maps all;
        int number = 0;
        for (const char letter : letters) {
            AudioVideoInfo map = {{"number", std::to_string(number++)}};
            if (letter != '.')
                map["pipelineId"] = std::string(1, letter);
            all.push_back(map);
        }
        return all;
    }
    /// The numbers of the maps that are left.
    std::string left()
    {
        std::string numbers;
        for (const AudioVideoInfo& map : maps())
            numbers += map.at("number");
        return numbers;
    }
};

TEST_F(Removing, ErasesPositionsThatItDoesNotCorrect)
{
    struct Row {
        const char* before;
        int found;
        const char* left; // after the removal of "a"
    };
    constexpr Row rows[] = {
        {"", 0, ""},       {"b", 0, "0"},       {"a", 1, ""},      {"ab", 1, "1"},
        {"ba", 1, "0"},    {"bac", 1, "02"},    {"aa", 2, "1"},    {"aab", 2, "1"},
        {"aabc", 2, "13"}, {"aba", 2, "12"},    {"abac", 2, "12"}, {"baa", 2, "02"},
        {"baac", 2, "02"}, {"aaa", 3, "1"},     {"aaab", 3, "13"}, {"aaaa", 4, "13"},
        {"abab", 2, "12"}, {"aabaa", 4, "134"}, {".a.", 1, "02"},  {"...", 0, "012"},
        {"Aab", 1, "02"},
    };
    for (const Row& row : rows) {
        maps() = mapsOf(row.before);
        current() = {{"pipelineId", "a"}};
        recording() = {{"pipelineId", "a"}};
        forget();
        EXPECT_EQ(mBackend.removePipelineInfo("a"), kDone) << row.before;
        EXPECT_EQ(left(), row.left) << row.before;
        const std::string function = "removePipelineInfo";
        EXPECT_THAT(
            logLines(),
            ElementsAre(inQuality(function, "Removing pipelineId a"),
                        inQuality(function, "Before removal Size of AudioVideoInfoMapVector: " +
                                                std::to_string(std::string{row.before}.size())),
                        inQuality(function, "Size of indexVector to remove pipelineid: " +
                                                std::to_string(row.found)),
                        inQuality(function, "Size of AudioVideoInfoMapVector: " +
                                                std::to_string(std::string{row.left}.size()))))
            << row.before;
        EXPECT_EQ(current().size(), 1U);
        EXPECT_EQ(recording().size(), 1U);
        EXPECT_THAT(told(), IsEmpty());
    }
}

TEST_F(Removing, OfTheEmptyIdLeavesMapsWithoutOne)
{
    maps() = {{{"number", "0"}}, {{"number", "1"}, {"pipelineId", ""}}};
    EXPECT_EQ(mBackend.removePipelineInfo(""), kDone);
    EXPECT_EQ(left(), "0");
}

TEST_F(Removing, MakesThePipelineUnknown)
{
    EXPECT_TRUE(update(R"({"pipelineId":"p","streamType":"movie"})"));
    EXPECT_EQ(mBackend.removePipelineInfo("p"), kDone);
    EXPECT_THAT(maps(), IsEmpty());
    EXPECT_TRUE(mBackend.isNewPipelineId("p"));
    EXPECT_TRUE(update(R"({"pipelineId":"p","resource":"ADEC1"})"));
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"pipelineId", "p"}, {"resource", "ADEC1"}}));
    EXPECT_EQ(current(), maps().front());
}

TEST_F(Removing, OfOneOfTwoMapsOfAPipelineLeavesTheOther)
{
    store(R"({"pipelineId":"p","resource":"ADEC0"})");
    store(R"({"pipelineId":"p","resource":"ADEC1"})");
    EXPECT_EQ(mBackend.removePipelineInfo("p"), kDone);
    EXPECT_THAT(maps(), ElementsAre(AudioVideoInfo{{"pipelineId", "p"}, {"resource", "ADEC1"}}));
    EXPECT_FALSE(mBackend.isNewPipelineId("p"));
    EXPECT_EQ(mBackend.removePipelineInfo("p"), kDone);
    EXPECT_THAT(maps(), IsEmpty());
}

// --- Questions

class PipelineId : public PipelineTest
{
};

TEST_F(PipelineId, IsNewUnlessAMapHasExactlyThatOne)
{
    EXPECT_TRUE(mBackend.isNewPipelineId("p1"));
    EXPECT_EQ(logLines(), checking("p1") + kEmptyStore);
    maps() = {
        {{"a", "p9"}}, {{"pipelineId", "p1"}}, {{"PipelineId", "p8"}}, {{"pipelineId", "p1"}}};
    for (const char* id : {"p9", "p8", "p", "p10", "P1", "p1 ", ""}) {
        forget();
        EXPECT_TRUE(mBackend.isNewPipelineId(id)) << id;
        EXPECT_EQ(logLines(), checking(id));
    }
    forget();
    EXPECT_FALSE(mBackend.isNewPipelineId("p1"));
    EXPECT_EQ(logLines(), checking("p1") + Lines{matching("isNewPipelineId", "p1")});
    EXPECT_FALSE(mBackend.isNewPipelineId(std::string{"p1"}));
    EXPECT_TRUE(mBackend.isNewPipelineId(std::string{"p1\0", 3}));
}

TEST_F(PipelineId, IsValidWhileTheMiddlewareHasNone)
{
    maps() = {{{"pipelineId", "p1"}}}; // not asked
    for (const char* id : {"p1", "p2", ""}) {
        forget();
        EXPECT_TRUE(mBackend.isValidPipelineId(id)) << id;
        EXPECT_THAT(logLines(), ElementsAre(debug("keptvaudioutil:isValidPipelineId",
                                                  "First time request is allowed  \n")));
    }
}

TEST_F(PipelineId, IsOtherwiseValidWhenTheMiddlewareHasIt)
{
    for (const AudioVideoInfo& parameters :
         {AudioVideoInfo{{"pipelineId", "p1"}, {"a", "p2"}}, AudioVideoInfo{{"a", "p1"}}}) {
        current() = parameters;
        for (const std::string id : {"p1", "p2", "", "p10"}) {
            const bool valid = id == "p1" && parameters.count("pipelineId") != 0;
            forget();
            EXPECT_EQ(mBackend.isValidPipelineId(id), valid) << id;
            EXPECT_THAT(
                logLines(),
                ElementsAre(valid ? debug("keptvaudioutil:isValidPipelineId",
                                          "Requested pipelineId p1 is same as stored "
                                          "pipelineId in map")
                                  : error("INVALID_PARAMETER", "keptvaudioutil:isValidPipelineId",
                                          "Invalid pipelineId " + id)));
        }
    }
}

TEST_F(PipelineId, IsValidForAnyUntilAnActivePipelineIsStored)
{
    setActive(false);
    update(R"({"pipelineId":"p1"})");
    EXPECT_TRUE(mBackend.isValidPipelineId("p2"));
    setActive(true);
    update(R"({"pipelineId":"p3"})");
    EXPECT_FALSE(mBackend.isValidPipelineId("p2"));
    EXPECT_TRUE(mBackend.isValidPipelineId("p3"));
}

TEST_F(PipelineTest, IsAMainOneUnlessAPurposeSaysOtherwise)
{
    struct Row {
        const char* purposes; // JSON
        bool main;
    };
    constexpr Row rows[] = {
        {R"([])", true},
        {R"(["MAIN"])", true},
        {R"(["RECORDING","MAIN"])", true},
        {R"(["EFFECT"])", false},
        {R"(["AUDIO_DESC"])", false},
        {R"(["MAIN","EFFECT"])", false},
        {R"(["MAIN","AUDIO_DESC"])", false},
        {R"(["EFFECT","AUDIO_DESC","MAIN"])", false},
        {R"(["effect","AUDIO_DESCRIPTION"])", true},
        {R"([5,null,["EFFECT"]])", true},
        {R"("EFFECT")", true},
        {R"({"0":"EFFECT"})", true},
        {"null", true},
        {"5", true},
    };
    for (const Row& row : rows) {
        forget();
        EXPECT_EQ(mBackend.isValidpipelinePurpose(
                      json(std::string{R"({"pipelinePurpose":)"} + row.purposes + "}")),
                  row.main)
            << row.purposes;
        EXPECT_THAT(logLines(), ElementsAre(inUtil("isValidpipelinePurpose",
                                                   std::string{"isValidpipelinePurpose "
                                                               "purposeType: "} +
                                                       row.purposes)));
    }
    std::vector<JValue> others = notObjects();
    others.push_back(JValue::object());
    others.push_back(json(R"({"PipelinePurpose":["EFFECT"]})"));
    for (const JValue& attributes : others) {
        forget();
        EXPECT_TRUE(mBackend.isValidpipelinePurpose(attributes)) << attributes.stringify();
        EXPECT_THAT(logLines(), ElementsAre(inUtil("isValidpipelinePurpose",
                                                   "isValidpipelinePurpose purposeType: null")));
    }
    EXPECT_THAT(told(), IsEmpty());
}

// --- Dumps

class Dump : public PipelineTest
{
};

TEST_F(Dump, OfAllPipelinesFollowsTheOrderOfKeys)
{
    mBackend.printSetQualityAttributeInfo();
    EXPECT_THAT(logLines(), ElementsAre(inQuality("printSetQualityAttributeInfo",
                                                  "AudioVideoInfo map size 0")));
    forget();
    maps() = {{{"b", "2"}, {"B", "1"}, {"a", ""}}, {}, {{"pipelineId", "100%s"}}};
    mBackend.printSetQualityAttributeInfo();
    const auto line = [](const std::string& text) {
        return inQuality("printSetQualityAttributeInfo", text);
    };
    EXPECT_THAT(
        logLines(),
        ElementsAre(line("AudioVideoInfo map size 3"), line("AudioVideoInfo map values are"),
                    line("Map: Key and Values are B 1"), line("Map: Key and Values are a "),
                    line("Map: Key and Values are b 2"), line("AudioVideoInfo map values are"),
                    line("AudioVideoInfo map values are"),
                    line("Map: Key and Values are pipelineId 100%s")));
}

TEST_F(Dump, OfTheMiddlewaresParametersIsDebug)
{
    const auto line = [](const std::string& text) {
        return debug("keptvaudioquality:printAudioVideoInfoTable", text);
    };
    maps() = {{{"pipelineId", "p"}}}; // not shown
    recording() = {{"pipelineId", "r"}};
    mBackend.printAudioVideoInfoTable();
    EXPECT_THAT(logLines(), ElementsAre(line("printAudioVideoInfoTable"), line("Size of map:0")));
    forget();
    current() = {{"pipelineId", "p"}, {"codec", "eac3"}};
    mBackend.printAudioVideoInfoTable();
    EXPECT_THAT(logLines(), ElementsAre(line("printAudioVideoInfoTable"),
                                        line("KeyValue = :codec   and Value = eac3 \n"),
                                        line("KeyValue = :pipelineId   and Value = p \n"),
                                        line("Size of map:2")));
    admit(kLogInfo);
    forget();
    mBackend.printAudioVideoInfoTable();
    EXPECT_THAT(logLines(), IsEmpty());
}

} // namespace
