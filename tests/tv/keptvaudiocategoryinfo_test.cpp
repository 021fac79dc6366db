// SPDX-License-Identifier: Apache-2.0
// Quality attributes: what a report does to the pipelines, which of it the middleware's parameters
// become, and which registrations follow with which result.
#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileLog kEntry{"keptvaudio", "INVALID_PARAMETER"};
constexpr FileLog kSettings{"keptvaudiosettings", "INVALID_PARAMETER"};
constexpr FileLog kQuality{"keptvaudioquality", "INVALID_PARAMETER"};
constexpr FileLog kUtil{"keptvaudioutil", "INVALID_PARAMETER"};
constexpr FileLog kVolume{"keptvaudio", ""};
constexpr FileLog kDigital{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
constexpr FileLog kDelay{"keptvdelay", "DELAY_MWL_ERROR"};
constexpr FileLog kGain{"keptvgain", "GAIN_MWL_ERROR"};
constexpr FileLog kEngine{"keptvsoundengine", "SOUND_ENGINE_MWL_ERROR"};

// --- Lines

const LogLine kResetChecked = kVolume.debug("checkForResetValue", "checking for reset value");
const LogLine kActive = kEntry.info("getActiveState", "Getting ActiveStatus: 1");
const LogLine kInactive = kEntry.info("getActiveState", "Getting ActiveStatus: 0");
const LogLine kFormatUpdated =
    kDigital.info("updateCodecImmersiveFormat",
                  "Called updateCodecImmersiveFormat to update codec and immersive format");
const LogLine kNotUpdated =
    kSettings.info("updateAudioCategoryInfo", "not update in map because activestate is false");
const LogLine kVideoNotUpdated = kQuality.info(
    "updateVideoCategoryInfo", "not update in local map because activestate is false");
const LogLine kNoPurposes =
    kSettings.error("updateAudioCategoryInfo", "pipelinePurpose is not an Array Element");
const LogLine kNoParams =
    kQuality.error("updateVideoCategoryInfo", "Param is not an Array Element");
const LogLine kAudioCalled = kSettings.info(
    "setAudioInputInfo",
    "setAudioInputInfo is called to update category values of existing pipelineInfo");
const LogLine kVideoCalled =
    kQuality.info("setVideoInputInfo",
                  "setVideoInputInfo is called to update category values of existing pipelineInfo");
const LogLine kPolicyCalled =
    kEntry.info("setAudioVideoCategoryInfo",
                "requestType is empty and Calling audio and video info for policy connection");
const LogLine kInvalidType = kEntry.error("setAudioVideoCategoryInfo", "Invalid requestType");

LogLine received(const std::string& payload)
{
    return kEntry.info("setQualityAttribute", "payload received is " + payload);
}

LogLine requestType(const std::string& type)
{
    return kEntry.info("setAudioVideoCategoryInfo",
                       "setAudioVideoCategoryInfo::RequestType = " + type + " ");
}

LogLine activating(const std::string& active)
{
    return kEntry.info("setActiveState", "Setting ActiveStatus: " + active);
}

LogLine audioUpdate(const std::string& category, const std::string& pipeline)
{
    return kSettings.info("updateAudioCategoryInfo",
                          "updateAudioCategoryInfo to update category values " + category +
                              " of existing pipelineInfo " + pipeline);
}

LogLine videoUpdate(const std::string& category, const std::string& pipeline)
{
    return kQuality.info("updateVideoCategoryInfo",
                         "updateVideoCategoryInfo to update category values " + category +
                             " of existing pipelineInfo " + pipeline);
}

LogLine resourceAsked(const std::string& resource)
{
    return kSettings.info("updateAudioCategoryInfo", "Resource ID values are " + resource);
}

const LogLine kResourceMissing =
    kSettings.info("updateAudioCategoryInfo", "resourceId not found in map");

LogLine paramLine(const std::string& key)
{
    return kQuality.debug("updateVideoCategoryInfo", " Param String = " + key + " ");
}

/// The values of a matched pipeline.
Lines valuesOf(const AudioVideoInfo& pipeline)
{
    Lines lines;
    for (const auto& [key, value] : pipeline)
        lines.push_back(kSettings.info("updateAudioCategoryInfo",
                                       "AudioVideoInfoMap Values " + key + " " + value));
    return lines;
}

Lines tableOf(const AudioVideoInfo& current)
{
    Lines lines = {kQuality.debug("printAudioVideoInfoTable", "printAudioVideoInfoTable")};
    for (const auto& [key, value] : current)
        lines.push_back(kQuality.debug("printAudioVideoInfoTable",
                                       "KeyValue = :" + key + "   and Value = " + value + " \n"));
    lines.push_back(kQuality.debug("printAudioVideoInfoTable",
                                   "Size of map:" + std::to_string(current.size())));
    return lines;
}

Lines all(std::initializer_list<Lines> parts)
{
    Lines whole;
    for (const Lines& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

void append(Lines& lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

std::string textOf(const AudioVideoInfo& map)
{
    JValue object = JValue::object();
    for (const auto& [key, value] : map)
        object.put(key, value);
    return object.stringify();
}

// --- Registrations

/// One registration of an adapter: two calls, the second only after the first went through.
struct Registration {
    FileLog log;
    const char* operation;
    const char* opening;
    const char* call;
    const char* thenOperation;
    const char* thenOpening;
    const char* thenCall;
    const char* thenFailure;
};
// clang-format off
const Registration kDelayRegistration = {
    kDelay, "registerAudioVideoInfo", "calling registerAvParams", "delay.registerAvParams",
    "updateDelayValues", "calling setDelayUpdate", "delay.setDelayUpdate", "Failed to update delay values"};
const Registration kGainRegistration = {
    kGain, "registerAudioVideoInfo", "Calling registerAvParams", "gain.registerAvParams",
    "setInputGain", "calling setGainAsInput", "gain.setGainAsInput", "Failed to set input gain"};
const Registration kEncoderRegistration = {
    kGain, "registerAudioVideoInfoForEncoder", "Calling registerAencAvParams For Encoder", "gain.registerAencAvParams",
    "setAencGain", "calling setAencVolume", "gain.setAencVolume", "Failed to set AENC gain"};
const Registration kEngineRegistration = {
    kEngine, "registerAudioVideoInfo", "Calling registerAvParams", "soundengine.registerAvParams",
    nullptr, nullptr, nullptr, nullptr};
// clang-format on
const Texts kCalls = {"delay.registerAvParams",      "delay.setDelayUpdate",
                      "gain.registerAvParams",       "gain.setGainAsInput",
                      "gain.registerAencAvParams",   "gain.setAencVolume",
                      "soundengine.registerAvParams"};

/// What a request has to leave in log and journal.
struct Trace {
    std::set<std::string> refused = {};
    Lines lines = {};
    Texts told = {};

    /// Adds a registration that hands over `map`; whether it goes through.
    bool registers(const Registration& row, const AudioVideoInfo& map)
    {
        lines.push_back(row.log.info(row.operation, row.opening));
        if (!calls(row.call, " " + textOf(map))) {
            lines.push_back(
                row.log.error(row.operation, "Failed to register audio video parameters"));
            return false;
        }
        if (row.thenCall == nullptr)
            return true;
        lines.push_back(row.log.info(row.thenOperation, row.thenOpening));
        if (calls(row.thenCall, ""))
            return true;
        lines.push_back(row.log.error(row.thenOperation, row.thenFailure));
        return false;
    }

    bool calls(const std::string& call, const std::string& arguments)
    {
        const bool refuses = refused.count(call) != 0;
        told.push_back(call + arguments + (refuses ? " -> 7" : ""));
        return !refuses;
    }
};

const AudioVideoInfo kStored = {{"pipelineId", "p1"}, {"resource", "ADEC0"}};
const AudioVideoInfo kOld = {{"old", "value"}};
const AudioVideoInfo kOldRecording = {{"old", "recording"}};
const std::string kPipeline = R"({"pipelineId":"p1","resource":"ADEC0"})";

AudioVideoInfo with(AudioVideoInfo map, const AudioVideoInfo& more)
{
    for (const auto& [key, value] : more)
        map[key] = value;
    return map;
}

class CategoryTest : public TvRowsTest
{
protected:
    /// One pipeline, and parameters of another one.
    void restart(bool active = true)
    {
        TvRowsTest::restart();
        mBackend->mActiveState = active;
        mBackend->AudioVideoInfoMapVector = {kStored};
        store().mAvParamsMap = kOld;
        store().mAencAvParamsMap = kOldRecording;
    }

    void refuse(const std::set<std::string>& calls)
    {
        for (const std::string& call : calls)
            injectMiddleware(call, 7);
    }

    void expectTrace(const Trace& trace, const std::string& what)
    {
        EXPECT_EQ(logLines(), trace.lines) << what;
        EXPECT_EQ(told(), trace.told) << what;
    }

    unsigned int report(const std::string& payload)
    {
        forget();
        return mBackend->setQualityAttribute(json(payload));
    }

    bool update(const std::string& pipeline, const std::string& category)
    {
        forget();
        return mBackend->updateAudioCategoryInfo(json(pipeline), json(category));
    }

    bool updateVideo(const std::string& pipeline, const std::string& category)
    {
        forget();
        return mBackend->updateVideoCategoryInfo(json(pipeline), json(category));
    }
};

std::string request(const std::string& type, const std::string& pipeline,
                    const std::string& category, const std::string& more = "")
{
    return R"({"pipelineInfo":)" + pipeline + R"(,"categoryInfo":)" + category +
           R"(,"requestType":")" + type + R"(")" + more + "}";
}

Lines merged(const std::string& pipeline, const AudioVideoInfo& stored)
{
    Lines lines = {
        kSettings.info("updatePipelineInfo", "updatePipelineInfo : pipelineId = p1"),
        kUtil.info("isNewPipelineId", "Checking PipelineId is New or existing p1"),
        kUtil.info("isNewPipelineId",
                   "PipelineId is matching, so need to update the map pipelineId p1"),
        kSettings.info("updatePipelineInfo", "Calling updateExistingPipelineInfo"),
        kSettings.info("updateExistingPipelineInfo",
                       "updateExistingPipelineInfo to update existing pipelineInfo " + pipeline),
        kSettings.info("updateExistingPipelineInfo",
                       "updateExistingPipelineInfo Vector of map values size 1"),
        kSettings.info("updateExistingPipelineInfo",
                       "PipelineId is matching, so need to update the map pipelineId p1"),
    };
    for (const auto& [key, value] : stored)
        lines.push_back(kSettings.info("updateExistingPipelineInfo",
                                       "Updated exiting audio video info map and values are " +
                                           key + " " + value));
    return lines;
}

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
