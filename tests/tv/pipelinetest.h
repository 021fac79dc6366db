// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of the pipeline store.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

using Maps = std::vector<AudioVideoInfo>;

// Payloads that name no pipeline.
inline std::vector<JValue> notObjects()
{
    return {JValue::array(), JValue{"pipelineId"}, JValue{5}, JValue{true},
            JValue{},        JValue::invalid()};
}

inline LogLine inQuality(const std::string& function, const std::string& text)
{
    return info("keptvaudioquality:" + function, text);
}

inline LogLine inSettings(const std::string& function, const std::string& text)
{
    return info("keptvaudiosettings:" + function, text);
}

inline LogLine inUtil(const std::string& function, const std::string& text)
{
    return info("keptvaudioutil:" + function, text);
}

// --- What the log says of each step

inline Lines checking(const std::string& id)
{
    return {inUtil("isNewPipelineId", "Checking PipelineId is New or existing " + id)};
}

inline const Lines kEmptyStore = {inUtil(
    "isNewPipelineId", "Vector of AudioVideoInfo map is empty, so new pipelineId requested")};

inline LogLine matching(const std::string& function, const std::string& id)
{
    const std::string text = "PipelineId is matching, so need to update the map pipelineId " + id;
    return function == "isNewPipelineId" ? inUtil(function, text) : inSettings(function, text);
}

inline Lines dump(const Maps& maps)
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

inline LogLine storing(const std::string& report)
{
    return inQuality("storePipelineInfoParameters",
                     "storePipelineInfoParameters to store pipelineInfo " + report);
}

/// The question for the active state, and what follows from it.
inline Lines adopting(bool active)
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

inline const LogLine kNoArray =
    error("INVALID_PARAMETER", "keptvaudioquality:storePipelineInfoParameters",
          "pipelinePurpose is not an Array Element");

/// The two lines that open an update, and those of the maps that it changed.
inline Lines updating(const std::string& report, std::size_t size, const std::string& id,
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

    /// The pipelines, to be looked at or replaced.
    [[nodiscard]] Maps& maps()
    {
        mBackend.mPipelineIdHashes.clear(); // they are found anew
        return mBackend.AudioVideoInfoMapVector;
    }
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
