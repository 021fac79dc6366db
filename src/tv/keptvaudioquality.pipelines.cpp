// SPDX-License-Identifier: Apache-2.0
// Pipelines, the store: one map of attributes for each media pipeline, and the copy of the last
// one reported while active, which the middleware is given; and video reports.
#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "kepcaught.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvparser.h"
#include "payloadkeys.h"

namespace
{

struct Field {
    const char* key;
    bool asText; // stored as its JSON text, not as a string
};
// In the order in which they are read.
constexpr Field kFields[] = {
    {key::kPipelineId.name, false},      {key::kPipelineStreamType.name, false},
    {key::kResource.name, false},        {key::kSourceType.name, false},
    {key::kSourceAttribute.name, false}, {key::kReset.name, true},
    {key::kPipelineType.name, false},
};

/// Needs no memory, so that all of the hashes are there once there is room for them.
std::size_t hashOf(std::string_view text) noexcept
{
    return std::hash<std::string_view>{}(text);
}

AudioVideoInfo fieldsOf(const JValue& report)
{
    AudioVideoInfo pipeline;
    for (const Field& field : kFields) {
        if (!report.hasKey(field.key))
            continue;
        const JValue value = report[field.key];
        pipeline[field.key] = field.asText ? value.stringify() : value.asString();
    }
    return pipeline;
}

} // namespace

// --- Finding a pipeline

bool kepTVAudio::hasPipelineId(const AudioVideoInfo& pipeline, const std::string& pipelineId)
{
    const auto id = pipeline.find("pipelineId");
    return id != pipeline.end() && id->second == pipelineId;
}

void kepTVAudio::refreshPipelineIdHash(std::size_t position) const
{
    const AudioVideoInfo& pipeline = AudioVideoInfoMapVector[position];
    const auto id = pipeline.find("pipelineId");
    mPipelineIdHashes[position] = hashOf(id != pipeline.end() ? std::string_view{id->second} : "");
}

std::size_t kepTVAudio::nextPipeline(const std::string& pipelineId, std::size_t from) const
{
    if (mPipelineIdHashes.size() != AudioVideoInfoMapVector.size()) { // one has been added
        const std::size_t known =
            std::min(mPipelineIdHashes.size(), AudioVideoInfoMapVector.size());
        mPipelineIdHashes.resize(AudioVideoInfoMapVector.size());
        for (std::size_t i = known; i < mPipelineIdHashes.size(); ++i)
            refreshPipelineIdHash(i);
    }
    const std::size_t hash = hashOf(pipelineId);
    const auto begin = mPipelineIdHashes.begin();
    for (auto candidate = begin + static_cast<std::ptrdiff_t>(from);; ++candidate) {
        candidate = std::find(candidate, mPipelineIdHashes.end(), hash);
        const auto position = static_cast<std::size_t>(candidate - begin);
        if (candidate == mPipelineIdHashes.end() ||
            hasPipelineId(AudioVideoInfoMapVector[position], pipelineId))
            return position;
    }
}

// --- What the middleware is given

bool kepTVAudio::isRecording(const std::string& purpose)
{
    return purpose == "RECORDING";
}

void kepTVAudio::useAsCurrentPipeline(const kepLogOrigin& origin, const AudioVideoInfo& pipeline,
                                      bool handsOver)
{
    if (!getActiveState()) {
        KEP_INFO_AS(origin, "not update in map because activestate is false");
        return;
    }
    adoptPipeline(pipeline, handsOver);
}

void kepTVAudio::adoptPipeline(const AudioVideoInfo& pipeline, bool handsOver)
{
    if (handsOver)
        mPtrParserInstance->replace(mPtrParserInstance->mAvParamsMap, pipeline);
    updateCodecImmersiveFormat(pipeline);
}

void kepTVAudio::applyPurpose(const kepLogOrigin& origin, const std::string& purpose,
                              const AudioVideoInfo& pipeline, bool handsOver)
{
    if (!isRecording(purpose))
        useAsCurrentPipeline(origin, pipeline, handsOver);
    else if (handsOver)
        mPtrParserInstance->replace(mPtrParserInstance->mAencAvParamsMap, pipeline);
}

void kepTVAudio::storePipelineInfoParameters(JValue pipelineInfo)
{
    KEP_INFO("storePipelineInfoParameters to store pipelineInfo %s",
             pipelineInfo.stringify().c_str());
    AudioVideoInfo pipeline = fieldsOf(pipelineInfo);
    const JValue purposes = pipelineInfo[key::kPipelinePurpose.name];
    if (purposes.isValid() && !purposes.isArray())
        KEP_ERROR("INVALID_PARAMETER", "pipelinePurpose is not an Array Element");
    if (!purposes.isArray())
        useAsCurrentPipeline(KEP_HERE, pipeline, /*handsOver=*/true);

    // Each purpose hands the map over as it stands then; of each kind (recording or
    // not) only the last one is seen.
    std::vector<std::string> names;
    std::size_t last[2] = {};
    for (const JValue& element : purposes.elements()) {
        names.push_back(element.asString());
        last[isRecording(names.back()) ? 1 : 0] = names.size() - 1;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        pipeline["pipelinePurpose" + std::to_string(i)] = names[i];
        applyPurpose(KEP_HERE, names[i], pipeline, i == last[isRecording(names[i]) ? 1 : 0]);
    }
    AudioVideoInfoMapVector.push_back(std::move(pipeline));
    printSetQualityAttributeInfo();
}

unsigned int kepTVAudio::removePipelineInfo(std::string pipelineId)
try {
    requireStarted();
    KEP_INFO("Removing pipelineId %s", pipelineId.c_str());
    KEP_INFO("Before removal Size of AudioVideoInfoMapVector: %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    std::vector<std::size_t> positions;
    for (std::size_t i = nextPipeline(pipelineId, 0); i < AudioVideoInfoMapVector.size();
         i = nextPipeline(pipelineId, i + 1))
        positions.push_back(i);
    KEP_INFO("Size of indexVector to remove pipelineid: %d", static_cast<int>(positions.size()));
    // sic: positions are not corrected after an erasure, so a second one removes whatever has moved
    // into it; callers rely on it
    for (const std::size_t position : positions) {
        if (position >= AudioVideoInfoMapVector.size())
            continue;
        const auto offset = static_cast<std::ptrdiff_t>(position);
        AudioVideoInfoMapVector.erase(AudioVideoInfoMapVector.begin() + offset);
        mPipelineIdHashes.erase(mPipelineIdHashes.begin() + offset);
    }
    KEP_INFO("Size of AudioVideoInfoMapVector: %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

bool kepTVAudio::resetPipelineInfo(JValue pipelineInfo)
{
    KEP_INFO("resetPipelineInfo:: audioVideoObject %s", pipelineInfo.stringify().c_str());
    const std::string pipelineId = pipelineInfo[key::kPipelineId.name].asString();
    bool found = false;
    for (std::size_t i = nextPipeline(pipelineId, 0); i < AudioVideoInfoMapVector.size();
         i = nextPipeline(pipelineId, i + 1)) {
        AudioVideoInfoMapVector[i] = {{"pipelineId", pipelineId}};
        KEP_INFO("After Reset New values %s %s", "pipelineId", pipelineId.c_str());
        found = true;
    }
    return found;
}

void kepTVAudio::printAudioVideoInfoTable() const
{
    KEP_DEBUG("printAudioVideoInfoTable");
    if (!kepLogAdmits(kLogDebug))
        return;
    const AudioVideoInfo& current = mPtrParserInstance->mAvParamsMap;
    for (const auto& [key, value] : current)
        KEP_DEBUG("KeyValue = :%s   and Value = %s \n", key.c_str(), value.c_str()); // sic
    KEP_DEBUG("Size of map:%d", static_cast<int>(current.size()));
}

void kepTVAudio::printSetQualityAttributeInfo() const
{
    KEP_INFO("AudioVideoInfo map size %d", static_cast<int>(AudioVideoInfoMapVector.size()));
    if (!kepLogAdmits(kLogInfo))
        return; // the walk alone takes long when there are many
    for (const AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        KEP_INFO("AudioVideoInfo map values are");
        for (const auto& [key, value] : pipeline)
            KEP_INFO("Map: Key and Values are %s %s", key.c_str(), value.c_str());
    }
}

// --- Video reports

bool kepTVAudio::setVideoInputInfo(JValue payload)
{
    KEP_INFO("setVideoInputInfo is called to update category values of existing pipelineInfo");
    const JValue category = payload[key::kCategoryInfo.name];
    if (!category.isObject()) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid CategoryInfo");
        return false;
    }
    const JValue pipelineInfo = payload[key::kPipelineInfo.name];
    const bool updated = pipelineInfo.isObject() && updateVideoCategoryInfo(pipelineInfo, category);
    const bool registered = mPtrTVDelay->registerAudioVideoInfo();
    if (registered)
        KEP_DEBUG("Successfully updated audio video info to delay middleware");
    else
        KEP_ERROR("DELAY_MIDDLEWARE_ERROR",
                  "Failed to register audio video info to delay middleware");
    return registered || updated;
}

bool kepTVAudio::updateVideoCategoryInfo(JValue pipelineInfo, JValue categoryInfo)
{
    KEP_INFO("updateVideoCategoryInfo to update category values %s of existing pipelineInfo %s",
             categoryInfo.stringify().c_str(), pipelineInfo.stringify().c_str());
    const std::string pipelineId = pipelineInfo[key::kPipelineId.name].asString();
    if (pipelineId.empty())
        return false;
    const std::size_t position = nextPipeline(pipelineId, 0);
    if (position == AudioVideoInfoMapVector.size())
        return false;

    AudioVideoInfo& pipeline = AudioVideoInfoMapVector[position];
    if (categoryInfo.hasKey(key::kCodec.name))
        pipeline["videoCodec"] = categoryInfo[key::kCodec.name].asString();
    const JValue params = categoryInfo[key::kParams.name];
    if (!params.isArray())
        KEP_ERROR("INVALID_PARAMETER", "Param is not an Array Element");
    int index = 0;
    for (const JValue& param : params.elements()) {
        const std::string key = "params" + std::to_string(index++);
        KEP_DEBUG(" Param String = %s ", key.c_str()); // sic
        pipeline[key] = param.asString();
    }
    if (getActiveState())
        mPtrParserInstance->replace(mPtrParserInstance->mAvParamsMap, pipeline);
    else
        KEP_INFO("not update in local map because activestate is false");
    printAudioVideoInfoTable();
    return true;
}
