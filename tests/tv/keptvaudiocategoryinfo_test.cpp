// SPDX-License-Identifier: Apache-2.0
// Quality attributes: how a report is taken in, the active state, the reset, and the whole way.
#include <algorithm>
#include <string>

#include <gmock/gmock.h>

#include "categorytest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- The entry

TEST_F(CategoryTest, APayloadThatIsNoObjectIsRefused)
{
    for (const char* payload : {"[]", R"("x")", "null", "5", "true"}) {
        EXPECT_EQ(report(payload), kFailed) << payload;
        EXPECT_EQ(
            logLines(),
            (Lines{received(payload),
                   kEntry.info("setQualityAttribute",
                               "setQualityAttribute API call :attributesObject is not an Object")}))
            << payload;
    }
    EXPECT_EQ(mBackend->setQualityAttribute(JValue::invalid()), kFailed);
}

TEST_F(CategoryTest, AReportWithoutAPipelineIsRefused)
{
    restart();
    for (const char* payload :
         {"{}", R"({"pipelineInfo":[],"requestType":""})", R"({"pipelineInfo":"p1"})",
          R"({"pipelineInfo":null})", R"({"pipelineInfo":5,"activeState":false})",
          R"({"requestType":"setAudioInputInfo","categoryInfo":{}})"}) {
        EXPECT_EQ(report(payload), kFailed) << payload;
        EXPECT_EQ(logLines(), (Lines{received(payload), kResetChecked})) << payload;
        EXPECT_THAT(told(), IsEmpty()) << payload;
    }
    const std::string nameless = request("", R"({"resource":"ADEC0"})", "{}");
    EXPECT_EQ(report(nameless), kFailed);
    EXPECT_EQ(logLines(), (Lines{received(nameless), kResetChecked,
                                 kSettings.error("updatePipelineInfo", "Invalid pipelineInfo")}));
    EXPECT_TRUE(mBackend->mActiveState);
}

TEST_F(CategoryTest, ThePipelineIsRecordedBeforeARequestIsRefused)
{
    restart();
    const std::string untyped = R"({"pipelineInfo":{"pipelineId":"p1","streamType":"s"}})";
    const AudioVideoInfo stored = with(kStored, {{"streamType", "s"}});
    EXPECT_EQ(report(untyped), kFailed);
    EXPECT_EQ(logLines(), all({{received(untyped), kResetChecked},
                               merged(R"({"pipelineId":"p1","streamType":"s"})", stored),
                               {kEntry.error("setAudioVideoCategoryInfo",
                                             "Json Value Input doesn't have request Type")}}));
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(stored));
    EXPECT_THAT(told(), IsEmpty());

    EXPECT_EQ(report(request("", R"({"pipelineId":"p2","resource":"ADEC1"})", "{}")), kDone);
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector,
                ElementsAre(stored, AudioVideoInfo{{"pipelineId", "p2"}, {"resource", "ADEC1"}}));
}

TEST_F(CategoryTest, AnUnknownTypeIsRefused)
{
    for (const char* type : {"setAudioInputinfo", "setVideoInputInfo ", "x"}) {
        restart();
        const std::string payload = request(type, kPipeline, R"({"codec":"pcm"})");
        EXPECT_EQ(report(payload), kFailed) << type;
        EXPECT_EQ(logLines(), all({{received(payload), kResetChecked},
                                   merged(kPipeline, kStored),
                                   {requestType(type), kInvalidType}}))
            << type;
        EXPECT_THAT(told(), IsEmpty()) << type;
        EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(kStored));
    }
    for (const char* pipeline : {"[]", "null", R"("p1")", "5"}) {
        forget();
        EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(request("", pipeline, "{}"))), kFailed);
        EXPECT_EQ(logLines(), (Lines{requestType(""), kInvalidType})) << pipeline;
    }
    forget();
    EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(R"({"requestType":""})")), kFailed);
    EXPECT_EQ(logLines(), (Lines{requestType(""), kInvalidType}));
    for (const char* payload : {"{}", "[]", "null", R"("requestType")"})
        EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(payload)), kFailed) << payload;
}

TEST_F(CategoryTest, ATypeThatIsNoTextIsAnEmptyOne)
{
    for (const char* type : {"null", "5", "true", "[]", R"({"a":1})"}) {
        restart();
        const std::string payload =
            R"({"pipelineInfo":)" + kPipeline + R"(,"requestType":)" + std::string{type} + "}";
        EXPECT_EQ(mBackend->setAudioVideoCategoryInfo(json(payload)), kDone) << type;
        ASSERT_GE(logLines().size(), std::size_t{2});
        EXPECT_EQ(logLines()[0], requestType(""));
        EXPECT_EQ(logLines()[1], kPolicyCalled);
    }
}

TEST_F(CategoryTest, TheTableIsPrintedAfterSuccessAlone)
{
    for (const char* type : {"setAudioInputInfo", "setVideoInputInfo", ""}) {
        restart();
        const std::string payload = request(type, kPipeline, R"({"params":[]})");
        EXPECT_EQ(report(payload), kDone) << type;
        const Lines table = tableOf(store().mAvParamsMap);
        ASSERT_GE(logLines().size(), table.size());
        EXPECT_EQ(Lines(logLines().end() - static_cast<int>(table.size()), logLines().end()), table)
            << type;
        restart();
        refuse({kCalls.begin(), kCalls.end()});
        const std::string unknown = request(type, R"({"pipelineId":""})", R"({"params":[]})");
        const bool policy = std::string{type}.empty();
        EXPECT_EQ(report(unknown), policy ? kDone : kFailed) << type;
        EXPECT_EQ(logLines().back().origin == "keptvaudioquality:printAudioVideoInfoTable", policy)
            << type;
    }
}

// --- Active state

struct ActiveRow {
    const char* member;
    bool before;
    bool after;
};

TEST_F(CategoryTest, TheActiveStateIsTakenOverBeforeTheReport)
{
    // clang-format off
    constexpr ActiveRow rows[] = {
        {R"(,"activeState":true)",   false, true},
        {R"(,"activeState":true)",   true,  true},
        {R"(,"activeState":false)",  true,  false},
        {R"(,"activeState":null)",   true,  false},
        {R"(,"activeState":"true")", true,  false},
        {R"(,"activeState":1)",      true,  false},
        {R"(,"activeState":[true])", true,  false},
        {R"(,"activeState":{})",     true,  false},
        {"",                         true,  true},
        {"",                         false, false},
    };
    // clang-format on
    for (const ActiveRow& row : rows) {
        for (const char* type : {"setAudioInputInfo", "setVideoInputInfo", ""}) {
            restart(row.before);
            EXPECT_EQ(report(request(type, kPipeline, R"({"a":"b"})", row.member)), kDone);
            EXPECT_EQ(mBackend->mActiveState, row.after) << row.member << type;
            EXPECT_EQ(store().mAvParamsMap != kOld, row.after) << row.member << type;
            const auto line = std::find(logLines().begin(), logLines().end(), requestType(type));
            ASSERT_NE(line, logLines().end());
            EXPECT_EQ(*(line + 1) == activating(row.after ? "1" : "0"), row.member[0] != '\0')
                << row.member << type;
        }
    }
    restart();
    EXPECT_EQ(report(request("unknown", kPipeline, "{}", R"(,"activeState":false)")), kFailed);
    EXPECT_FALSE(mBackend->mActiveState); // it stays even then
    EXPECT_EQ(report(request("setAudioInputInfo", kPipeline, "{}")), kDone);
    EXPECT_EQ(store().mAvParamsMap, kOld);
}

// --- Reset

TEST_F(CategoryTest, AResetNeverReachesTheCategories)
{
    const std::string pipeline = R"({"pipelineId":"p1","resource":"ADEC0","reset":true})";
    const std::string payload =
        request("setAudioInputInfo", pipeline, R"({"codec":"pcm"})", R"(,"activeState":false)");
    restart();
    mBackend->AudioVideoInfoMapVector.clear();
    EXPECT_EQ(report(payload), kDone);
    EXPECT_EQ(logLines(), (Lines{received(payload), kResetChecked,
                                 kEntry.info("setQualityAttribute",
                                             "AudioVideoInfo Map is empty and reset is true")}));
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector, IsEmpty());
    EXPECT_THAT(told(), IsEmpty());

    restart();
    EXPECT_EQ(report(payload), kDone);
    EXPECT_EQ(logLines(),
              (Lines{received(payload), kResetChecked,
                     kQuality.info("resetPipelineInfo",
                                   "resetPipelineInfo:: audioVideoObject " + pipeline),
                     kQuality.info("resetPipelineInfo", "After Reset New values pipelineId p1"),
                     kEntry.debug("setQualityAttribute",
                                  "setQualityAttribute : resetPipelineInfo is success")}));
    EXPECT_THAT(mBackend->AudioVideoInfoMapVector,
                ElementsAre(AudioVideoInfo{{"pipelineId", "p1"}}));
    EXPECT_TRUE(mBackend->mActiveState);
    EXPECT_EQ(store().mAvParamsMap, kOld);
    EXPECT_THAT(told(), IsEmpty());

    for (const char* unknown : {R"({"pipelineId":"p2","reset":true})", R"({"reset":true})",
                                R"({"pipelineId":5,"reset":true})"}) {
        restart();
        const std::string other = request("setAudioInputInfo", unknown, "{}");
        EXPECT_EQ(report(other), kFailed) << unknown;
        EXPECT_EQ(
            logLines(),
            (Lines{received(other), kResetChecked,
                   kQuality.info("resetPipelineInfo",
                                 "resetPipelineInfo:: audioVideoObject " + std::string{unknown}),
                   kEntry.error("setQualityAttribute",
                                "resetPipelineInfo:: PipelineID is not present in map")}));
        EXPECT_THAT(mBackend->AudioVideoInfoMapVector, ElementsAre(kStored)) << unknown;
    }
}

TEST_F(CategoryTest, OnlyTheBoolTrueResets)
{
    for (const char* reset : {"false", "null", R"("true")", "1", "[true]", "{}"}) {
        restart();
        const std::string pipeline =
            R"({"pipelineId":"p1","resource":"ADEC0","reset":)" + std::string{reset} + "}";
        EXPECT_EQ(report(request("setAudioInputInfo", pipeline, R"({"a":"b"})")), kDone) << reset;
        EXPECT_EQ(store().mAvParamsMap["a"], "b") << reset;
    }
}

// --- The whole way

TEST_F(CategoryTest, AReportGoesFromThePayloadToTheMiddleware)
{
    restart();
    const std::string pipeline =
        R"({"pipelineId":"p1","resource":"ADEC0","pipelinePurpose":["RECORDING"]})";
    const std::string payload = request("setVideoInputInfo", pipeline, R"({"params":[]})");
    EXPECT_EQ(report(payload), kDone);
    Trace trace;
    trace.lines = all({{received(payload), kResetChecked},
                       merged(pipeline, kStored),
                       {requestType("setVideoInputInfo"), kVideoCalled,
                        videoUpdate(R"({"params":[]})", pipeline), kActive},
                       tableOf(kStored)});
    trace.registers(kDelayRegistration, kStored);
    append(trace.lines,
           all({{kQuality.debug("setVideoInputInfo",
                                "Successfully updated audio video info to delay middleware")},
                tableOf(kStored)}));
    expectTrace(trace, payload);
}

TEST_F(CategoryTest, APayloadIsLeftAsItWas)
{
    restart();
    const std::string text =
        request("", kPipeline, R"({"codec":"pcm","params":["Y"]})", R"(,"activeState":true)");
    JValue payload = json(text);
    EXPECT_EQ(mBackend->setQualityAttribute(payload), kDone);
    EXPECT_EQ(payload.stringify(), text);
    payload["categoryInfo"].put("codec", "changed");
    EXPECT_EQ(store().mAvParamsMap["codec"], "pcm");
    EXPECT_EQ(mBackend->AudioVideoInfoMapVector.front()["codec"], "pcm");
}

} // namespace
