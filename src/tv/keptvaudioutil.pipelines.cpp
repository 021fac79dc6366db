// SPDX-License-Identifier: Apache-2.0
// Pipelines, questions: is one known, is it the current one, is it a main one?
#include "keplog.h"
#include "keptvaudio.h"
#include "keptvparser.h"
#include "payloadkeys.h"

bool kepTVAudio::isNewPipelineId(std::string pipelineId) const
{
    KEP_INFO("Checking PipelineId is New or existing %s", pipelineId.c_str());
    if (AudioVideoInfoMapVector.empty()) {
        KEP_INFO("Vector of AudioVideoInfo map is empty, so new pipelineId requested");
        return true;
    }
    if (nextPipeline(pipelineId, 0) == AudioVideoInfoMapVector.size())
        return true;
    KEP_INFO("PipelineId is matching, so need to update the map pipelineId %s", pipelineId.c_str());
    return false;
}

bool kepTVAudio::isValidPipelineId(std::string pipelineId) const
{
    const AudioVideoInfo& current = mPtrParserInstance->mAvParamsMap;
    if (current.empty()) {
        KEP_DEBUG("First time request is allowed  \n"); // sic
        return true;
    }
    if (hasPipelineId(current, pipelineId)) {
        KEP_DEBUG("Requested pipelineId %s is same as stored pipelineId in map",
                  pipelineId.c_str());
        return true;
    }
    KEP_ERROR("INVALID_PARAMETER", "Invalid pipelineId %s", pipelineId.c_str());
    return false;
}

bool kepTVAudio::isValidpipelinePurpose(JValue attributes) const
{
    const JValue purposes = attributes[key::kAttributePurpose.name];
    KEP_INFO("isValidpipelinePurpose purposeType: %s", purposes.stringify().c_str());
    for (const JValue& purpose : purposes.elements()) {
        const std::string name = purpose.asString();
        if (name == "AUDIO_DESC" || name == "EFFECT")
            return false;
    }
    return true;
}
