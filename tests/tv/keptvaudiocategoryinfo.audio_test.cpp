// SPDX-License-Identifier: Apache-2.0
// Quality attributes: what an audio report does to the pipelines, which of it the middleware's
// parameters become, and which registrations follow with which result.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "categorytest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Audio reports

TEST_F(CategoryTest, AnAudioReportMergesThenRegistersEverywhere)
{
    const std::string category = R"({"codec":"eac3"})";
    const AudioVideoInfo matched = with(kStored, {{"codec", "eac3"}});
    for (unsigned int mask = 0; mask < 1U << kCalls.size(); ++mask) {
        for (const char* resource : {"ADEC0", "ADEC1"}) {
            const bool matches = std::string{resource} == "ADEC0";
            const std::string pipeline =
                R"({"pipelineId":"p1","resource":")" + std::string{resource} + R"("})";
            const AudioVideoInfo& current = matches ? matched : kOld;
            Trace trace;
            for (std::size_t i = 0; i < kCalls.size(); ++i)
                if ((mask >> i & 1U) != 0)
                    trace.refused.insert(kCalls[i]);
            trace.lines = {requestType("setAudioInputInfo"), kAudioCalled,
                           audioUpdate(category, pipeline), resourceAsked(resource)};
            if (matches)
                append(trace.lines, all({{kActive, kFormatUpdated}, valuesOf(matched)}));
            const bool delay = trace.registers(kDelayRegistration, current);
            trace.lines.push_back(
                delay ? kSettings.debug("setAudioInputInfo",
                                        "Successfully updated audio info to delay middleware")
                      : kSettings.refusal("DELAY_MIDDLEWARE_ERROR", "setAudioInputInfo",
                                          "Failed to register audio info to delay middleware"));
            const bool gain = trace.registers(kGainRegistration, current);
            if (gain)
                trace.lines.push_back(
                    kSettings.debug("setAudioInputInfo",
                                    "Successfully updated audio video info to gain middleware"));
            const bool encoder = trace.registers(kEncoderRegistration, kOldRecording);
            trace.lines.push_back(
                encoder
                    ? kSettings.debug(
                          "setAudioInputInfo",
                          "Successfully updated audio video info for encoder to gain middleware")
                    : kSettings.refusal("GAIN_MIDDLEWARE_ERROR", "setAudioInputInfo",
                                        "Failed to register audio video info to gain middleware"));
            trace.registers(kEngineRegistration, current);

            restart();
            refuse(trace.refused);
            const unsigned int result = mBackend->setAudioVideoCategoryInfo(
                json(request("setAudioInputInfo", pipeline, category)));
            const std::string what = resource + testing::PrintToString(trace.refused);
            EXPECT_EQ(result, delay || gain || encoder || matches ? kDone : kFailed) << what;
            expectTrace(trace, what);
            EXPECT_EQ(store().mAvParamsMap, current) << what;
        }
    }
}

TEST_F(CategoryTest, AReportWithoutACategoryIsRefused)
{
    for (const char* type : {"setAudioInputInfo", "setVideoInputInfo"}) {
        const bool audio = std::string{type} == "setAudioInputInfo";
        for (const char* category : {R"(,"categoryInfo":[])", R"(,"categoryInfo":null)",
                                     R"(,"categoryInfo":"x")", R"(,"categoryInfo":5)", ""}) {
            restart();
            const std::string payload = R"({"pipelineInfo":)" + kPipeline + R"(,"requestType":")" +
                                        type + R"(")" + category + "}";
            EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(payload)), kFailed) << payload;
            EXPECT_EQ(logLines(),
                      (Lines{requestType(type), audio ? kAudioCalled : kVideoCalled,
                             audio ? kSettings.error("setAudioInputInfo", "Invalid CategoryInfo")
                                   : kQuality.error("setVideoInputInfo", "Invalid CategoryInfo")}))
                << payload;
            EXPECT_THAT(told(), IsEmpty()) << payload;
        }
    }
}

TEST_F(CategoryTest, WithoutAPipelineTheRegistrationsDecide)
{
    for (const char* pipeline : {R"("pipelineInfo":[],)", R"("pipelineInfo":null,)",
                                 R"("pipelineInfo":"p1",)", R"("pipelineInfo":5,)", ""}) {
        const JValue payload = json("{" + std::string{pipeline} + R"("categoryInfo":{"a":"b"}})");
        restart();
        EXPECT_TRUE(mBackend->setAudioInputInfo(payload)) << pipeline;
        Texts names;
        for (const std::string& call : told())
            names.push_back(call.substr(0, call.find(' ')));
        EXPECT_EQ(names, kCalls) << pipeline;
        EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(kStored)) << pipeline;
        forget();
        EXPECT_TRUE(mBackend->setVideoInputInfo(payload)) << pipeline;
        EXPECT_THAT(told(),
                    ElementsAre("delay.registerAvParams " + textOf(kOld), "delay.setDelayUpdate"))
            << pipeline;
        refuse({kCalls.begin(), kCalls.end()});
        EXPECT_FALSE(mBackend->setAudioInputInfo(payload)) << pipeline;
        EXPECT_FALSE(mBackend->setVideoInputInfo(payload)) << pipeline;
    }
}

// --- The audio update

TEST_F(CategoryTest, AllMembersAreMergedAsTextOrJson)
{
    restart();
    const std::string category =
        R"({"codec":"eac3","resource":"new","a":5,"b":1.5,"c":true,"d":null,"e":[1,"x"],)"
        R"("f":{"g":"h"},"":""})";
    EXPECT_TRUE(update(kPipeline, category));
    const AudioVideoInfo matched = {{"pipelineId", "p1"},  {"resource", "new"},
                                    {"codec", "eac3"},     {"a", "5"},
                                    {"b", "1.5"},          {"c", "true"},
                                    {"d", "null"},         {"e", R"([1,"x"])"},
                                    {"f", R"({"g":"h"})"}, {"", ""}};
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(matched));
    EXPECT_EQ(store().mAvParamsMap, matched);
    EXPECT_EQ(logLines(), all({{audioUpdate(category, kPipeline), resourceAsked("ADEC0"), kActive,
                                kFormatUpdated},
                               valuesOf(matched)}));
}

struct MatchRow {
    const char* what;
    std::vector<AudioVideoInfo> pipelines;
    const char* report;
    int matched; // position, or -1
    Lines lines; // of the search
};

TEST_F(CategoryTest, IdAndResourceTogetherChooseThePipeline)
{
    const AudioVideoInfo bare = {{"pipelineId", "p1"}};
    const AudioVideoInfo elsewhere = {{"pipelineId", "p1"}, {"resource", "ADEC1"}};
    const AudioVideoInfo stranger = {{"pipelineId", "p2"}, {"resource", "ADEC0"}};
    const AudioVideoInfo nameless = {{"resource", "ADEC0"}};
    const AudioVideoInfo empty = {{"pipelineId", "p1"}, {"resource", ""}};
    const char* const good = R"({"pipelineId":"p1","resource":"ADEC0"})";
    const LogLine asked = resourceAsked("ADEC0");
    const std::vector<MatchRow> rows = {
        {"the only one", {kStored}, good, 0, {asked}},
        {"behind others", {stranger, nameless, kStored}, good, 2, {asked}},
        {"the first of two", {kStored, kStored}, good, 0, {asked}},
        {"behind one with another resource", {elsewhere, kStored}, good, 1, {asked, asked}},
        {"behind one without a resource",
         {bare, kStored},
         good,
         1,
         {asked, kResourceMissing, asked}},
        {"another resource", {elsewhere}, good, -1, {asked}},
        {"no resource stored", {bare}, good, -1, {asked, kResourceMissing}},
        {"another id", {stranger, nameless}, good, -1, {}},
        {"no pipelines", {}, good, -1, {}},
        {"an empty resource",
         {empty},
         R"({"pipelineId":"p1","resource":""})",
         0,
         {resourceAsked("")}},
        {"no resource reported", {kStored, empty}, R"({"pipelineId":"p1"})", -1, {}},
        {"resource is a number", {kStored, empty}, R"({"pipelineId":"p1","resource":5})", -1, {}},
        {"resource is null", {kStored, empty}, R"({"pipelineId":"p1","resource":null})", -1, {}},
        {"resource is an array", {kStored}, R"({"pipelineId":"p1","resource":["ADEC0"]})", -1, {}},
        {"resource is an object", {empty}, R"({"pipelineId":"p1","resource":{}})", -1, {}},
        {"resource is a bool", {empty}, R"({"pipelineId":"p1","resource":true})", -1, {}},
        {"no id", {kStored}, R"({"resource":"ADEC0"})", -1, {}},
        {"an empty id",
         {{{"pipelineId", ""}, {"resource", "ADEC0"}}},
         R"({"pipelineId":"","resource":"ADEC0"})",
         -1,
         {}},
        {"id is a number",
         {{{"pipelineId", "5"}, {"resource", "ADEC0"}}},
         R"({"pipelineId":5,"resource":"ADEC0"})",
         -1,
         {}},
        {"id is null", {kStored}, R"({"pipelineId":null,"resource":"ADEC0"})", -1, {}},
        {"no object", {kStored}, "[]", -1, {}},
        {"a text", {kStored}, R"("p1")", -1, {}},
    };
    for (const MatchRow& row : rows) {
        restart();
        mBackend->AudioVideoInfoMapVector = row.pipelines;
        mBackend->mPipelineIdHashes.clear(); // they are found anew
        EXPECT_EQ(update(row.report, R"({"a":"b"})"), row.matched >= 0) << row.what;
        Lines lines = all({{audioUpdate(R"({"a":"b"})", row.report)}, row.lines});
        std::vector<AudioVideoInfo> expected = row.pipelines;
        if (row.matched >= 0) {
            AudioVideoInfo& matched = expected[static_cast<std::size_t>(row.matched)];
            matched["a"] = "b";
            append(lines, all({{kActive, kFormatUpdated}, valuesOf(matched)}));
            EXPECT_EQ(store().mAvParamsMap, matched) << row.what;
        } else {
            EXPECT_EQ(store().mAvParamsMap, kOld) << row.what;
        }
        EXPECT_EQ(mBackend->AudioVideoInfoMapVector, expected) << row.what;
        EXPECT_EQ(logLines(), lines) << row.what;
        EXPECT_EQ(store().mAencAvParamsMap, kOldRecording) << row.what;
    }
}

struct PurposeRow {
    const char* purposes; // JSON; "" for none
    bool active;
    bool current;   // becomes the current pipeline
    bool recording; // becomes the recording one
    Lines lines;
};

TEST_F(CategoryTest, ThePurposesDecideWhatTheMiddlewareGets)
{
    const Lines adopted = {kActive, kFormatUpdated};
    const Lines passed = {kInactive, kNotUpdated};
    // clang-format off
    std::vector<PurposeRow> rows = {
        {"",                          true,  true,  false, adopted},
        {"",                          false, false, false, passed},
        {R"(["RECORDING"])",          true,  false, true,  {}},
        {R"(["RECORDING"])",          false, false, true,  {}},
        {R"(["MAIN"])",               true,  true,  false, adopted},
        {R"(["MAIN"])",               false, false, false, passed},
        {R"(["recording"])",          true,  true,  false, adopted},
        {R"(["MAIN","RECORDING"])",   true,  true,  true,  adopted},
        {R"(["RECORDING","MAIN"])",   true,  true,  true,  adopted},
        {R"(["RECORDING","MAIN"])",   false, false, true,  passed},
        {R"(["MAIN","EFFECT"])",      true,  true,  false, all({adopted, adopted})},
        {R"(["MAIN","EFFECT"])",      false, false, false, all({passed, passed})},
        {R"([5,null])",               true,  true,  false, all({adopted, adopted})},
        {R"([["RECORDING"]])",        true,  true,  false, adopted},
        {"[]",                        true,  false, false, {}},
        {"[]",                        false, false, false, {}},
    };
    // clang-format on
    for (const char* noArray : {R"("RECORDING")", "null", "5", "true", R"({"0":"RECORDING"})"}) {
        rows.push_back({noArray, true, true, false, {kActive, kNoPurposes, kFormatUpdated}});
        rows.push_back({noArray, false, false, false, passed});
    }
    const AudioVideoInfo matched = with(kStored, {{"a", "b"}});
    for (const PurposeRow& row : rows) {
        const std::string purposes = row.purposes;
        const std::string what = purposes + (row.active ? " active" : " inactive");
        const std::string pipeline = R"({"pipelineId":"p1","resource":"ADEC0")" +
                                     (purposes.empty() ? "" : R"(,"pipelinePurpose":)" + purposes) +
                                     "}";
        restart(row.active);
        EXPECT_TRUE(update(pipeline, R"({"a":"b"})")) << what;
        EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(matched)) << what;
        EXPECT_EQ(store().mAvParamsMap, row.current ? matched : kOld) << what;
        EXPECT_EQ(store().mAencAvParamsMap, row.recording ? matched : kOldRecording) << what;
        EXPECT_EQ(logLines(), all({{audioUpdate(R"({"a":"b"})", pipeline), resourceAsked("ADEC0")},
                                   row.lines,
                                   valuesOf(matched)}))
            << what;
    }
}

TEST_F(CategoryTest, CodecAndFormatOfTheNewPipelineAreApplied)
{
    const std::string category = R"({"codec":"eac3","immersive":"atmos"})";
    restart();
    EXPECT_TRUE(update(kPipeline, category));
    EXPECT_THAT(told(), ElementsAre(R"(soundengine.setImmersiveInfo "atmos")"));
    restart(/*active=*/false);
    EXPECT_TRUE(update(kPipeline, category));
    EXPECT_THAT(told(), IsEmpty());
    restart();
    mBackend->mCurrentSoundout = KEP_AUDIO_ARC;
    mBackend->mEarcCapability = json(R"(["DD+"])");
    store().mQualityParamsMap["soundOutputDigital"] = "passThrough";
    EXPECT_TRUE(update(kPipeline, category)); // by the codec that it brings itself
    EXPECT_THAT(told(), ElementsAre(R"(soundengine.setImmersiveInfo "atmos")",
                                    "Sndout EARC Outputtype 2 5 0 0 0"));
    EXPECT_TRUE(updateVideo(kPipeline, R"({"codec":"hevc","params":[]})"));
    EXPECT_THAT(told(), IsEmpty());
}

} // namespace
