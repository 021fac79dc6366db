// SPDX-License-Identifier: Apache-2.0
// Pipelines, updates: new or known, and audio reports.
#include <utility>

#include "keplog.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"

bool kepTVAudio::updatePipelineInfo(JValue pipelineInfo)
{
    if (!pipelineInfo.hasKey(key::kPipelineId.name)) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid pipelineInfo");
        return false;
    }
    const std::string pipelineId = pipelineInfo[key::kPipelineId.name].asString();
    KEP_INFO("updatePipelineInfo : pipelineId = %s", pipelineId.c_str());
    if (pipelineInfo.hasKey(key::kSourceType.name) && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
    if (isNewPipelineId(pipelineId)) {
        KEP_INFO("Calling storePipelineInfoParameters");
        storePipelineInfoParameters(pipelineInfo);
    } else {
        KEP_INFO("Calling updateExistingPipelineInfo");
        updateExistingPipelineInfo(pipelineInfo);
    }
    return true;
}

void kepTVAudio::updateExistingPipelineInfo(JValue pipelineInfo)
{
    KEP_INFO("updateExistingPipelineInfo to update existing pipelineInfo %s",
             pipelineInfo.stringify().c_str());
    KEP_INFO("updateExistingPipelineInfo Vector of map values size %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    const std::string pipelineId = pipelineInfo[key::kPipelineId.name].asString();
    if (pipelineId.empty())
        return;
    for (std::size_t i = nextPipeline(pipelineId, 0); i < AudioVideoInfoMapVector.size();
         i = nextPipeline(pipelineId, i + 1)) {
        AudioVideoInfo& pipeline = AudioVideoInfoMapVector[i];
        KEP_INFO("PipelineId is matching, so need to update the map pipelineId %s",
                 pipelineId.c_str());
        for (const auto& [key, value] : pipelineInfo.members())
            if (value.isString())
                pipeline[key] = value.asString();
        for (const auto& [key, value] : pipeline)
            KEP_INFO("Updated exiting audio video info map and values are %s %s", // sic
                     key.c_str(), value.c_str());
    }
}

// --- Audio reports

bool kepTVAudio::setAudioInputInfo(JValue payload)
{
    KEP_INFO("setAudioInputInfo is called to update category values of existing pipelineInfo");
    const JValue category = payload[key::kCategoryInfo.name];
    if (!category.isObject()) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid CategoryInfo");
        return false;
    }
    const JValue pipelineInfo = payload[key::kPipelineInfo.name];
    const bool updated = pipelineInfo.isObject() && updateAudioCategoryInfo(pipelineInfo, category);
    const bool delay = mPtrTVDelay->registerAudioVideoInfo();
    if (delay)
        KEP_DEBUG("Successfully updated audio info to delay middleware");
    else
        KEP_ERROR("DELAY_MIDDLEWARE_ERROR", "Failed to register audio info to delay middleware");
    const bool gain = mPtrTVGain->registerAudioVideoInfo();
    if (gain)
        KEP_DEBUG("Successfully updated audio video info to gain middleware");
    const bool encoder = mPtrTVGain->registerAudioVideoInfoForEncoder();
    if (encoder)
        KEP_DEBUG("Successfully updated audio video info for encoder to gain middleware");
    else
        KEP_ERROR("GAIN_MIDDLEWARE_ERROR",
                  "Failed to register audio video info to gain middleware"); // sic
    mPtrTVSoundEngine->registerAudioVideoInfo();
    return encoder || gain || delay || updated;
}

std::optional<std::size_t> kepTVAudio::findAudioPipeline(const JValue& pipelineInfo) const
{
    const kepLogOrigin origin = KEP_HERE.as("updateAudioCategoryInfo");
    const std::string pipelineId = pipelineInfo[key::kPipelineId.name].asString();
    std::string resource;
    if (pipelineId.empty() || !pipelineInfo[key::kResource.name].asString(resource))
        return {};
    for (std::size_t i = nextPipeline(pipelineId, 0); i < AudioVideoInfoMapVector.size();
         i = nextPipeline(pipelineId, i + 1)) {
        const AudioVideoInfo& pipeline = AudioVideoInfoMapVector[i];
        KEP_INFO_AS(origin, "Resource ID values are %s", resource.c_str());
        const auto stored = pipeline.find("resource");
        if (stored == pipeline.end())
            KEP_INFO_AS(origin, "resourceId not found in map");
        else if (stored->second == resource)
            return i;
    }
    return {};
}

bool kepTVAudio::updateAudioCategoryInfo(JValue pipelineInfo, JValue categoryInfo)
{
    KEP_INFO("updateAudioCategoryInfo to update category values %s of existing pipelineInfo %s",
             categoryInfo.stringify().c_str(), pipelineInfo.stringify().c_str());
    const std::optional<std::size_t> position = findAudioPipeline(pipelineInfo);
    if (!position)
        return false;
    for (const auto& [key, value] : categoryInfo.members())
        AudioVideoInfoMapVector[*position][key] =
            value.isString() ? value.asString() : value.stringify();
    refreshPipelineIdHash(*position); // the category may have renamed it
    // A copy: the middleware called below may call back and remove the pipeline.
    const AudioVideoInfo pipeline = AudioVideoInfoMapVector[*position];

    const JValue purposes = pipelineInfo[key::kPipelinePurpose.name];
    if (!purposes.isValid()) {
        useAsCurrentPipeline(KEP_HERE, pipeline, /*handsOver=*/true);
    } else if (purposes.isArray()) {
        bool given[2] = {}; // the map is the same for all purposes: each kind gets it once
        for (const JValue& element : purposes.elements()) {
            const std::string purpose = element.asString();
            bool& already = given[isRecording(purpose) ? 1 : 0];
            applyPurpose(KEP_HERE, purpose, pipeline, !std::exchange(already, true));
        }
    } else if (getActiveState()) {
        KEP_ERROR("INVALID_PARAMETER", "pipelinePurpose is not an Array Element");
        adoptPipeline(pipeline, /*handsOver=*/true);
    } else {
        KEP_INFO("not update in map because activestate is false");
    }
    for (const auto& [key, value] : pipeline)
        KEP_INFO("AudioVideoInfoMap Values %s %s", key.c_str(), value.c_str());
    return true;
}
