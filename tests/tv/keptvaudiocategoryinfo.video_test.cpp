// SPDX-License-Identifier: Apache-2.0
// Quality attributes: video reports, and reports of policy connections.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "categorytest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Video reports

TEST_F(CategoryTest, AVideoReportTellsTheDelayMiddlewareAlone)
{
    const std::string category = R"({"codec":"X","params":["Y","Z"]})";
    const AudioVideoInfo matched =
        with(kStored, {{"videoCodec", "X"}, {"params0", "Y"}, {"params1", "Z"}});
    for (unsigned int mask = 0; mask < 4; ++mask) {
        for (const char* id : {"p1", "p2"}) {
            const bool matches = std::string{id} == "p1";
            const std::string pipeline = R"({"pipelineId":")" + std::string{id} + R"("})";
            const AudioVideoInfo& current = matches ? matched : kOld;
            Trace trace;
            for (std::size_t i = 0; i < 2; ++i)
                if ((mask >> i & 1U) != 0)
                    trace.refused.insert(kCalls[i]);
            trace.lines = {requestType("setVideoInputInfo"), kVideoCalled,
                           videoUpdate(category, pipeline)};
            if (matches)
                append(trace.lines, all({{paramLine("params0"), paramLine("params1"), kActive},
                                         tableOf(matched)}));
            const bool delay = trace.registers(kDelayRegistration, current);
            trace.lines.push_back(
                delay
                    ? kQuality.debug("setVideoInputInfo",
                                     "Successfully updated audio video info to delay middleware")
                    : kQuality.refusal("DELAY_MIDDLEWARE_ERROR", "setVideoInputInfo",
                                       "Failed to register audio video info to delay middleware"));
            restart();
            refuse(trace.refused);
            const unsigned int result = mBackend->setAudioVideoCategoryInfo(
                json(request("setVideoInputInfo", pipeline, category)));
            const std::string what = id + testing::PrintToString(trace.refused);
            EXPECT_EQ(result, delay || matches ? kDone : kFailed) << what;
            expectTrace(trace, what);
            EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(matches ? matched : kStored))
                << what;
            EXPECT_EQ(store().mAvParamsMap, current) << what;
            EXPECT_EQ(store().mAencAvParamsMap, kOldRecording) << what;
        }
    }
}

struct VideoRow {
    const char* category;
    AudioVideoInfo added;
    Lines lines;
};

TEST_F(CategoryTest, CodecAndParamsOfAVideoAreTaken)
{
    const std::vector<VideoRow> rows = {
        {"{}", {}, {kNoParams}},
        {R"({"codec":"X","other":"o"})", {{"videoCodec", "X"}}, {kNoParams}},
        {R"({"codec":5,"params":[]})", {{"videoCodec", ""}}, {}},
        {R"({"codec":null,"params":[]})", {{"videoCodec", ""}}, {}},
        {R"({"codec":["X"],"params":[]})", {{"videoCodec", ""}}, {}},
        {R"({"params":["a"]})", {{"params0", "a"}}, {paramLine("params0")}},
        {R"({"params":["a",5,null,["b"],true,{}]})",
         {{"params0", "a"},
          {"params1", ""},
          {"params2", ""},
          {"params3", ""},
          {"params4", ""},
          {"params5", ""}},
         {paramLine("params0"), paramLine("params1"), paramLine("params2"), paramLine("params3"),
          paramLine("params4"), paramLine("params5")}},
        {R"({"params":"a"})", {}, {kNoParams}},
        {R"({"params":null})", {}, {kNoParams}},
        {R"({"params":5})", {}, {kNoParams}},
        {R"({"params":true})", {}, {kNoParams}},
        {R"({"params":{"0":"a"}})", {}, {kNoParams}},
        {"[]", {}, {kNoParams}},
        {"null", {}, {kNoParams}},
    };
    for (const VideoRow& row : rows) {
        for (const bool active : {true, false}) {
            restart(active);
            EXPECT_TRUE(updateVideo(kPipeline, row.category)) << row.category;
            const AudioVideoInfo matched = with(kStored, row.added);
            const AudioVideoInfo& current = active ? matched : kOld;
            EXPECT_EQ(logLines(), all({{videoUpdate(row.category, kPipeline)},
                                       row.lines,
                                       active ? Lines{kActive} : Lines{kInactive, kVideoNotUpdated},
                                       tableOf(current)}))
                << row.category;
            EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(matched)) << row.category;
            EXPECT_EQ(store().mAvParamsMap, current) << row.category;
            EXPECT_THAT(told(), IsEmpty()) << row.category;
        }
    }
    restart();
    EXPECT_TRUE(updateVideo(kPipeline, R"({"codec":"X","params":["a","b"]})"));
    EXPECT_TRUE(updateVideo(kPipeline, R"({"codec":"Y","params":["c"]})"));
    EXPECT_THAT(
        mBackend->AudioVideoInfoMapVector,
        ElementsAre(with(kStored, {{"videoCodec", "Y"}, {"params0", "c"}, {"params1", "b"}})));
}

TEST_F(CategoryTest, TheFirstPipelineOfTheIdTakesAVideo)
{
    const AudioVideoInfo other = {{"pipelineId", "p2"}};
    const AudioVideoInfo elsewhere = {{"pipelineId", "p1"}, {"resource", "ADEC1"}};
    const AudioVideoInfo nameless = {{"resource", "ADEC0"}};
    restart();
    mBackend->AudioVideoInfoMapVector = {other, nameless, elsewhere, kStored};
    EXPECT_TRUE(updateVideo(kPipeline, R"({"codec":"X","params":[]})"));
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector,
                ElementsAre(other, nameless, with(elsewhere, {{"videoCodec", "X"}}), kStored));
    for (const char* pipeline :
         {"{}", "[]", "null", R"("p1")", R"({"pipelineId":""})", R"({"pipelineId":5})",
          R"({"pipelineId":null})", R"({"pipelineId":["p1"]})", R"({"pipelineId":"p3"})"}) {
        restart();
        mBackend->AudioVideoInfoMapVector.push_back({{"pipelineId", ""}});
        const std::vector<AudioVideoInfo> before = mBackend->AudioVideoInfoMapVector;
        EXPECT_FALSE(updateVideo(pipeline, R"({"codec":"X"})")) << pipeline;
        EXPECT_EQ(logLines(), (Lines{videoUpdate(R"({"codec":"X"})", pipeline)})) << pipeline;
        EXPECT_EQ(mBackend->AudioVideoInfoMapVector, before) << pipeline;
        EXPECT_EQ(store().mAvParamsMap, kOld) << pipeline;
    }
    mBackend->AudioVideoInfoMapVector.clear();
    EXPECT_FALSE(updateVideo(kPipeline, R"({"codec":"X"})"));
}

// --- Policy connections

TEST_F(CategoryTest, APolicyConnectionUpdatesBothThenRegistersEverywhere)
{
    const std::string category = R"({"immersive":"atmos","codec":"eac3","params":["Y"]})";
    const AudioVideoInfo heard =
        with(kStored, {{"immersive", "atmos"}, {"codec", "eac3"}, {"params", R"(["Y"])"}});
    const AudioVideoInfo seen = with(heard, {{"videoCodec", "eac3"}, {"params0", "Y"}});
    const char* const kImmersive = "soundengine.setImmersiveInfo";
    Texts refusable = kCalls;
    refusable.push_back(kImmersive);
    for (unsigned int mask = 0; mask < 1U << refusable.size(); ++mask) {
        Trace trace;
        for (std::size_t i = 0; i < refusable.size(); ++i)
            if ((mask >> i & 1U) != 0)
                trace.refused.insert(refusable[i]);
        const auto setsFormat = [&] {
            trace.lines.push_back(kEngine.info("setImmersiveFormat",
                                               "Setting immersive info  immersiveFormat atmos"));
            if (trace.calls(kImmersive, R"( "atmos")"))
                return true;
            trace.lines.push_back(
                kEngine.error("setImmersiveFormat", "Failed to set Immersive Format atmos"));
            return false;
        };
        const auto says = [&](const std::string& text) {
            trace.lines.push_back(kEntry.info("updatePolicyConnectionCategoryInfo", text));
        };
        trace.lines = {requestType(""), kPolicyCalled};
        if (!setsFormat())
            trace.lines.push_back(kEntry.refusal("SE_MIDDLEWARE_ERROR",
                                                 "updatePolicyConnectionCategoryInfo",
                                                 "Failed to set immersive format as atmos"));
        append(trace.lines,
               {audioUpdate(category, kPipeline), resourceAsked("ADEC0"), kActive, kFormatUpdated});
        setsFormat();
        append(trace.lines, valuesOf(heard));
        says("Updating the category info for audio input successful");
        append(trace.lines, all({{videoUpdate(category, kPipeline), paramLine("params0"), kActive},
                                 tableOf(seen)}));
        says("Updating the video category info for audio input successful");
        if (trace.registers(kGainRegistration, seen))
            says("Successfully called registerAvParams of gain middleware");
        if (trace.registers(kEncoderRegistration, kOldRecording))
            says("Successfully called registerAvParams for encoder of gain middleware");
        if (trace.registers(kDelayRegistration, seen))
            says("Successfully called registerAvParams of delay middleware");
        trace.registers(kEngineRegistration, seen);

        restart();
        refuse(trace.refused);
        EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(request("", kPipeline, category))),
                  kDone);
        expectTrace(trace, testing::PrintToString(trace.refused));
        EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(seen));
        EXPECT_EQ(store().mAvParamsMap, seen);
    }
}

TEST_F(CategoryTest, APolicyConnectionOfAnUnknownPipelineStillRegisters)
{
    const std::string unknown = R"({"pipelineId":"p2","resource":"ADEC0"})";
    for (const char* category : {"{}", "[]", "null", R"("x")", "5"}) {
        for (const bool refused : {false, true}) {
            restart();
            if (refused)
                refuse({kCalls.begin(), kCalls.end()});
            EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(request("", unknown, category))),
                      kDone)
                << category;
            EXPECT_EQ(logLines()[2], audioUpdate(category, unknown));
            EXPECT_EQ(logLines()[3], videoUpdate(category, unknown));
            EXPECT_EQ(told().size(), refused ? std::size_t{4} : kCalls.size()) << category;
            EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(kStored)) << category;
        }
    }
    restart();
    mBackend->updatePolicyConnectionCategoryInfo(json("{}"));
    EXPECT_EQ(logLines()[0], audioUpdate("null", "null"));
    EXPECT_EQ(logLines()[1], videoUpdate("null", "null"));
}

struct PolicyFormat {
    const char* category;
    KEP_AUDIO_SNDOUT_T output;
    Texts told; // before the registrations
};

TEST_F(CategoryTest, APolicyConnectionAppliesFormatAndDigitalModeFirst)
{
    const std::string earc = "Sndout EARC Outputtype 2 1 0 0 1";
    const std::string none = R"(soundengine.setImmersiveInfo "")";
    const std::string atmos = R"(soundengine.setImmersiveInfo "atmos")";
    const std::vector<PolicyFormat> rows = {
        {R"({"codec":"pcm"})", KEP_AUDIO_ARC, {earc}},
        {R"({"codec":null})", KEP_AUDIO_ARC, {earc}},
        {R"({"codec":"pcm"})", KEP_AUDIO_SPDIF, {}},
        {R"({"codec":"pcm"})", KEP_AUDIO_SPK_OPTICAL_ARC, {}},
        {R"({"codec":"pcm"})", KEP_AUDIO_NO_OUTPUT, {}},
        {R"({"other":"pcm"})", KEP_AUDIO_ARC, {}},
        {R"({"codec":"pcm","immersive":"atmos"})", KEP_AUDIO_ARC, {atmos, earc}},
        {R"({"immersive":""})", KEP_AUDIO_NO_OUTPUT, {none}},
        {R"({"immersive":5})", KEP_AUDIO_NO_OUTPUT, {none}},
        {R"({"immersive":null})", KEP_AUDIO_NO_OUTPUT, {none}},
    };
    for (const PolicyFormat& row : rows) {
        restart();
        mBackend->mCurrentSoundout = row.output;
        mBackend->AudioVideoInfoMapVector.clear(); // nothing is updated
        store().mQualityParamsMap["soundOutputDigital"] = "pcm";
        EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(request("", kPipeline, row.category))),
                  kDone);
        Texts before = told();
        ASSERT_GE(before.size(), kCalls.size());
        before.resize(before.size() - kCalls.size());
        EXPECT_EQ(before, row.told) << row.category << row.output;
    }
}

TEST_F(CategoryTest, ARefusedDigitalModeDoesNotStopAPolicyConnection)
{
    restart();
    mBackend->mCurrentSoundout = KEP_AUDIO_ARC;
    mBackend->AudioVideoInfoMapVector.clear();
    store().mQualityParamsMap["soundOutputDigital"] = "pcm";
    injectCard("write", kRefused, "Sndout EARC Outputtype");
    EXPECT_EQ(
        mBackend->setAudioVideoCategoryInfo(json(request("", kPipeline, R"({"codec":"pcm"})"))),
        kDone);
    EXPECT_EQ(told().size(), kCalls.size() + 1);
}

} // namespace
