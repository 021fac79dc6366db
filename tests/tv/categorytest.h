// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of quality attributes.
#pragma once

#include <initializer_list>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "adaptertest.h"
#include "tvbackendtest.h"

inline constexpr FileLog kEntry{"keptvaudio", "INVALID_PARAMETER"};
inline constexpr FileLog kSettings{"keptvaudiosettings", "INVALID_PARAMETER"};
inline constexpr FileLog kQuality{"keptvaudioquality", "INVALID_PARAMETER"};
inline constexpr FileLog kUtil{"keptvaudioutil", "INVALID_PARAMETER"};
inline constexpr FileLog kVolume{"keptvaudio", ""};
inline constexpr FileLog kDigital{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
inline constexpr FileLog kDelay{"keptvdelay", "DELAY_MWL_ERROR"};
inline constexpr FileLog kGainLog{"keptvgain", "GAIN_MWL_ERROR"};
inline constexpr FileLog kEngine{"keptvsoundengine", "SOUND_ENGINE_MWL_ERROR"};

// --- Lines

inline const LogLine kResetChecked =
    kVolume.debug("checkForResetValue", "checking for reset value");
inline const LogLine kActive = kEntry.info("getActiveState", "Getting ActiveStatus: 1");
inline const LogLine kInactive = kEntry.info("getActiveState", "Getting ActiveStatus: 0");
inline const LogLine kFormatUpdated =
    kDigital.info("updateCodecImmersiveFormat",
                  "Called updateCodecImmersiveFormat to update codec and immersive format");
inline const LogLine kNotUpdated =
    kSettings.info("updateAudioCategoryInfo", "not update in map because activestate is false");
inline const LogLine kVideoNotUpdated = kQuality.info(
    "updateVideoCategoryInfo", "not update in local map because activestate is false");
inline const LogLine kNoPurposes =
    kSettings.error("updateAudioCategoryInfo", "pipelinePurpose is not an Array Element");
inline const LogLine kNoParams =
    kQuality.error("updateVideoCategoryInfo", "Param is not an Array Element");
inline const LogLine kAudioCalled = kSettings.info(
    "setAudioInputInfo",
    "setAudioInputInfo is called to update category values of existing pipelineInfo");
inline const LogLine kVideoCalled =
    kQuality.info("setVideoInputInfo",
                  "setVideoInputInfo is called to update category values of existing pipelineInfo");
inline const LogLine kPolicyCalled =
    kEntry.info("setAudioVideoCategoryInfo",
                "requestType is empty and Calling audio and video info for policy connection");
inline const LogLine kInvalidType =
    kEntry.error("setAudioVideoCategoryInfo", "Invalid requestType");

inline LogLine received(const std::string& payload)
{
    return kEntry.info("setQualityAttribute", "payload received is " + payload);
}

inline LogLine requestType(const std::string& type)
{
    return kEntry.info("setAudioVideoCategoryInfo",
                       "setAudioVideoCategoryInfo::RequestType = " + type + " ");
}

inline LogLine activating(const std::string& active)
{
    return kEntry.info("setActiveState", "Setting ActiveStatus: " + active);
}

inline LogLine audioUpdate(const std::string& category, const std::string& pipeline)
{
    return kSettings.info("updateAudioCategoryInfo",
                          "updateAudioCategoryInfo to update category values " + category +
                              " of existing pipelineInfo " + pipeline);
}

inline LogLine videoUpdate(const std::string& category, const std::string& pipeline)
{
    return kQuality.info("updateVideoCategoryInfo",
                         "updateVideoCategoryInfo to update category values " + category +
                             " of existing pipelineInfo " + pipeline);
}

inline LogLine resourceAsked(const std::string& resource)
{
    return kSettings.info("updateAudioCategoryInfo", "Resource ID values are " + resource);
}

inline const LogLine kResourceMissing =
    kSettings.info("updateAudioCategoryInfo", "resourceId not found in map");

inline LogLine paramLine(const std::string& key)
{
    return kQuality.debug("updateVideoCategoryInfo", " Param String = " + key + " ");
}

/// The values of a matched pipeline.
inline Lines valuesOf(const AudioVideoInfo& pipeline)
{
    Lines lines;
    for (const auto& [key, value] : pipeline)
        lines.push_back(kSettings.info("updateAudioCategoryInfo",
                                       "AudioVideoInfoMap Values " + key + " " + value));
    return lines;
}

inline Lines tableOf(const AudioVideoInfo& current)
{
    Lines lines = {kQuality.debug("printAudioVideoInfoTable", "printAudioVideoInfoTable")};
    for (const auto& [key, value] : current)
        lines.push_back(kQuality.debug("printAudioVideoInfoTable",
                                       "KeyValue = :" + key + "   and Value = " + value + " \n"));
    lines.push_back(kQuality.debug("printAudioVideoInfoTable",
                                   "Size of map:" + std::to_string(current.size())));
    return lines;
}

inline Lines all(std::initializer_list<Lines> parts)
{
    Lines whole;
    for (const Lines& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

inline void append(Lines& lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

inline std::string textOf(const AudioVideoInfo& map)
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
inline const Registration kDelayRegistration = {
    kDelay, "registerAudioVideoInfo", "calling registerAvParams", "delay.registerAvParams",
    "updateDelayValues", "calling setDelayUpdate", "delay.setDelayUpdate", "Failed to update delay values"};
inline const Registration kGainRegistration = {
    kGainLog, "registerAudioVideoInfo", "Calling registerAvParams", "gain.registerAvParams",
    "setInputGain", "calling setGainAsInput", "gain.setGainAsInput", "Failed to set input gain"};
inline const Registration kEncoderRegistration = {
    kGainLog, "registerAudioVideoInfoForEncoder", "Calling registerAencAvParams For Encoder", "gain.registerAencAvParams",
    "setAencGain", "calling setAencVolume", "gain.setAencVolume", "Failed to set AENC gain"};
inline const Registration kEngineRegistration = {
    kEngine, "registerAudioVideoInfo", "Calling registerAvParams", "soundengine.registerAvParams",
    nullptr, nullptr, nullptr, nullptr};
// clang-format on
inline const Texts kCalls = {"delay.registerAvParams",      "delay.setDelayUpdate",
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

inline const AudioVideoInfo kStored = {{"pipelineId", "p1"}, {"resource", "ADEC0"}};
inline const AudioVideoInfo kOld = {{"old", "value"}};
inline const AudioVideoInfo kOldRecording = {{"old", "recording"}};
inline const std::string kPipeline = R"({"pipelineId":"p1","resource":"ADEC0"})";

inline AudioVideoInfo with(AudioVideoInfo map, const AudioVideoInfo& more)
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

inline std::string request(const std::string& type, const std::string& pipeline,
                           const std::string& category, const std::string& more = "")
{
    return R"({"pipelineInfo":)" + pipeline + R"(,"categoryInfo":)" + category +
           R"(,"requestType":")" + type + R"(")" + more + "}";
}

inline Lines merged(const std::string& pipeline, const AudioVideoInfo& stored)
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
