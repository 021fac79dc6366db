// SPDX-License-Identifier: Apache-2.0
// The pipeline store: reports, and what storing and updating make of them.
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "pipelinetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

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

} // namespace
