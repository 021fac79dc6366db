// SPDX-License-Identifier: Apache-2.0
// The pipeline store: one map of attributes for each media pipeline, and the copy of the one that
// plays now, which the middleware is given.
#include "keplog.h"
#include "keptvaudio.h"

namespace
{

struct Field {
    const char* key;
    bool asText; // stored as its JSON text, not as a string
};
// In the order in which they are read.
constexpr Field kFields[] = {
    {"pipelineId", false},   {"streamType", false},      {"resource", false},
    {"sourceType", false},   {"sourceAttribute", false}, {"reset", true},
    {"pipelinetype", false},
};

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

void kepTVAudio::useAsCurrentPipeline(const AudioVideoInfo& pipeline, const kepLogOrigin& origin)
{
    if (!getActiveState()) {
        KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", "not update in map because activestate is false");
        return;
    }
    mPtrParserInstance->withMap(mPtrParserInstance->mAvParamsMap,
                                [&](kepTvParser::Map& map) { map = pipeline; });
    updateCodecImmersiveFormat(pipeline);
}

void kepTVAudio::storePipelineInfoParameters(JValue pipelineInfo)
{
    KEP_INFO("INFO_LOG", "storePipelineInfoParameters to store pipelineInfo %s",
             pipelineInfo.stringify().c_str());
    AudioVideoInfo pipeline = fieldsOf(pipelineInfo);
    const JValue purposes = pipelineInfo["pipelinePurpose"];
    if (purposes.isValid() && !purposes.isArray())
        KEP_ERROR("INVALID_PARAMETER", "pipelinePurpose is not an Array Element");
    if (!purposes.isArray())
        useAsCurrentPipeline(pipeline);

    int index = 0;
    for (const JValue& element : purposes.elements()) {
        const std::string purpose = element.asString();
        pipeline["pipelinePurpose" + std::to_string(index++)] = purpose;
        if (purpose == "RECORDING")
            mPtrParserInstance->withMap(mPtrParserInstance->mAencAvParamsMap,
                                        [&](kepTvParser::Map& map) { map = pipeline; });
        else
            useAsCurrentPipeline(pipeline);
    }
    AudioVideoInfoMapVector.push_back(std::move(pipeline));
    printSetQualityAttributeInfo();
}

unsigned int kepTVAudio::removePipelineInfo(std::string pipelineId)
{
    KEP_INFO("INFO_LOG", "Removing pipelineId %s", pipelineId.c_str());
    KEP_INFO("INFO_LOG", "Before removal Size of AudioVideoInfoMapVector: %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < AudioVideoInfoMapVector.size(); ++i)
        if (hasPipelineId(AudioVideoInfoMapVector[i], pipelineId))
            positions.push_back(i);
    KEP_INFO("INFO_LOG", "Size of indexVector to remove pipelineid: %d",
             static_cast<int>(positions.size()));
    // sic: a position is not corrected for what has been erased before it
    for (const std::size_t position : positions)
        if (position < AudioVideoInfoMapVector.size())
            AudioVideoInfoMapVector.erase(AudioVideoInfoMapVector.begin() +
                                          static_cast<std::ptrdiff_t>(position));
    KEP_INFO("INFO_LOG", "Size of AudioVideoInfoMapVector: %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    return KEP_RESULT_OK;
}

bool kepTVAudio::resetPipelineInfo(JValue pipelineInfo)
{
    KEP_INFO("INFO_LOG", "resetPipelineInfo:: audioVideoObject %s",
             pipelineInfo.stringify().c_str());
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    bool found = false;
    for (AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        if (!hasPipelineId(pipeline, pipelineId))
            continue;
        pipeline = {{"pipelineId", pipelineId}};
        KEP_INFO("INFO_LOG", "After Reset New values %s %s", "pipelineId", pipelineId.c_str());
        found = true;
    }
    return found;
}

void kepTVAudio::printAudioVideoInfoTable() const
{
    KEP_DEBUG("printAudioVideoInfoTable");
    const AudioVideoInfo current = mPtrParserInstance->copyOf(mPtrParserInstance->mAvParamsMap);
    for (const auto& [key, value] : current)
        KEP_DEBUG("KeyValue = :%s   and Value = %s \n", key.c_str(), value.c_str()); // sic
    KEP_DEBUG("Size of map:%d", static_cast<int>(current.size()));
}

void kepTVAudio::printSetQualityAttributeInfo() const
{
    KEP_INFO("INFO_LOG", "AudioVideoInfo map size %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    for (const AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        KEP_INFO("INFO_LOG", "AudioVideoInfo map values are");
        for (const auto& [key, value] : pipeline)
            KEP_INFO("INFO_LOG", "Map: Key and Values are %s %s", key.c_str(), value.c_str());
    }
}
