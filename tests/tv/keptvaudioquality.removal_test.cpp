// SPDX-License-Identifier: Apache-2.0
// The pipeline store: resetting and removing, questions to it, and its dumps.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "pipelinetest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

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
