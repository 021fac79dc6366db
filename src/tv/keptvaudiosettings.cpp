// SPDX-License-Identifier: Apache-2.0
// Updates of the pipeline store: whether a report is a new pipeline or news of a known one.
#include "keplog.h"
#include "keptvaudio.h"

bool kepTVAudio::updatePipelineInfo(JValue pipelineInfo)
{
    if (!pipelineInfo.hasKey("pipelineId")) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid pipelineInfo");
        return false;
    }
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    KEP_INFO("INFO_LOG", "updatePipelineInfo : pipelineId = %s", pipelineId.c_str());
    if (pipelineInfo.hasKey("sourceType") && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
    if (isNewPipelineId(pipelineId)) {
        KEP_INFO("INFO_LOG", "Calling storePipelineInfoParameters");
        storePipelineInfoParameters(pipelineInfo);
    } else {
        KEP_INFO("INFO_LOG", "Calling updateExistingPipelineInfo");
        updateExistingPipelineInfo(pipelineInfo);
    }
    return true;
}

void kepTVAudio::updateExistingPipelineInfo(JValue pipelineInfo)
{
    KEP_INFO("INFO_LOG", "updateExistingPipelineInfo to update existing pipelineInfo %s",
             pipelineInfo.stringify().c_str());
    KEP_INFO("INFO_LOG", "updateExistingPipelineInfo Vector of map values size %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    if (pipelineId.empty())
        return;
    for (AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        if (!hasPipelineId(pipeline, pipelineId))
            continue;
        KEP_INFO("INFO_LOG", "PipelineId is matching, so need to update the map pipelineId %s",
                 pipelineId.c_str());
        for (const auto& [key, value] : pipelineInfo.members())
            if (value.isString())
                pipeline[key] = value.asString();
        for (const auto& [key, value] : pipeline)
            KEP_INFO("INFO_LOG", "Updated exiting audio video info map and values are %s %s", // sic
                     key.c_str(), value.c_str());
    }
}
