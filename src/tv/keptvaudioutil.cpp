// SPDX-License-Identifier: Apache-2.0
// Identifiers: names to resources and outputs, resources and outputs to the driver's numbers.
// Two tables hold all of it; the functions below only walk them.
#include <algorithm>
#include <iterator>

#include "keplog.h"
#include "keptvaudio.h"

namespace
{

/// The sinks behind which a source is reached.
enum class Sinks { MainOrSub, Alsa };

struct ResourceRow {
    KEP_AUDIO_RESOURCE_T resource;
    const char* source;
    Sinks sinks;
    unsigned int index; // block of the driver
    int port;           // within the block
};

// A resource that has two names has two rows.
// clang-format off
constexpr ResourceRow kResources[] = {
    // resource                    source     sinks             index  port
    {KEP_AUDIO_RESOURCE_ADEC0,    "ADEC",    Sinks::MainOrSub,  1,     0},
    {KEP_AUDIO_RESOURCE_ADEC0,    "ADEC0",   Sinks::MainOrSub,  1,     0},
    {KEP_AUDIO_RESOURCE_ADEC1,    "ADEC1",   Sinks::MainOrSub,  1,     1},
    {KEP_AUDIO_RESOURCE_AMIXER0,  "AMIXER0", Sinks::MainOrSub, 16,     0},
    {KEP_AUDIO_RESOURCE_AMIXER1,  "AMIXER1", Sinks::MainOrSub, 16,     1},
    {KEP_AUDIO_RESOURCE_AMIXER2,  "AMIXER2", Sinks::MainOrSub, 16,     2},
    {KEP_AUDIO_RESOURCE_AMIXER3,  "AMIXER3", Sinks::MainOrSub, 16,     3},
    {KEP_AUDIO_RESOURCE_AMIXER4,  "AMIXER4", Sinks::MainOrSub, 16,     4},
    {KEP_AUDIO_RESOURCE_AMIXER5,  "AMIXER5", Sinks::MainOrSub, 16,     5},
    {KEP_AUDIO_RESOURCE_AMIXER6,  "AMIXER6", Sinks::MainOrSub, 16,     6},
    {KEP_AUDIO_RESOURCE_AMIXER7,  "AMIXER7", Sinks::MainOrSub, 16,     7},
    {KEP_AUDIO_RESOURCE_AMIXER0,  "AMIXER",  Sinks::Alsa,      16,     0}, // the generic mixer
};
// clang-format on

bool isBehind(const std::string& sink, Sinks sinks)
{
    return sinks == Sinks::Alsa ? sink == "ALSA" : sink == "MAIN" || sink == "SUB";
}

const ResourceRow* findResource(KEP_AUDIO_RESOURCE_T resource)
{
    for (const ResourceRow& row : kResources)
        if (row.resource == resource)
            return &row;
    return nullptr;
}

struct OutputRow {
    KEP_AUDIO_SNDOUT_T output;
    const char* names[2]; // either is accepted
    bool selectable;
    unsigned int typeBit;          // 0: the driver does not know it as an output of its own
    KEP_AUDIO_SNDOUT_T members[3]; // of a combination, in the order in which they are opened
};

// clang-format off
constexpr OutputRow kOutputs[] = {
    // output                    names                                         selectable  bit  members
    {KEP_AUDIO_SPK,             {"tv_speaker"},                                 true,      1,  {KEP_AUDIO_SPK}},
    {KEP_AUDIO_SPDIF,           {"external_speaker", "external_optical"},       true,      2,  {KEP_AUDIO_SPDIF}},
    {KEP_AUDIO_SPK_SPDIF,       {"tv_speaker_external", "tv_external_speaker"}, true,      0,  {KEP_AUDIO_SPK, KEP_AUDIO_SPDIF}},
    {KEP_AUDIO_SPK_HP,          {"tv_speaker_headphone"},                       true,      0,  {KEP_AUDIO_SPK, KEP_AUDIO_HP}},
    {KEP_AUDIO_SPK_OPTICAL_ARC, {"tv_speaker_optical_arc"},                     true,      0,  {KEP_AUDIO_SPK, KEP_AUDIO_SPDIF, KEP_AUDIO_ARC}},
    {KEP_AUDIO_SPK_BLUETOOTH,   {"tv_speaker_bluetooth"},                       true,      0,  {KEP_AUDIO_SPK, KEP_AUDIO_BLUETOOTH}},
    {KEP_AUDIO_HP,              {"headphone", "lineout"},                       true,     16,  {KEP_AUDIO_HP}},
    {KEP_AUDIO_ARC,             {"external_arc", "urcu_oss"},                   true,     32,  {KEP_AUDIO_ARC}},
    {KEP_AUDIO_QN_SOUND_SYNC,   {"qnSoundSync"},                                true,      4,  {KEP_AUDIO_QN_SOUND_SYNC}},
    {KEP_AUDIO_BT_SOUNDBAR,     {"bt_soundbar"},                                true,      8,  {KEP_AUDIO_BT_SOUNDBAR}},
    {KEP_AUDIO_WISA,            {"wisa_speaker"},                               true,     64,  {KEP_AUDIO_WISA}},
    {KEP_AUDIO_ALSA,            {"alsa"},                                       false,     0,  {KEP_AUDIO_ALSA}},
    {KEP_AUDIO_BLUETOOTH,       {},                                             false,   128,  {KEP_AUDIO_BLUETOOTH}}, // a member only
};
// clang-format on

const OutputRow* findOutput(KEP_AUDIO_SNDOUT_T output)
{
    for (const OutputRow& row : kOutputs)
        if (row.output == output)
            return &row;
    return nullptr;
}

} // namespace

KEP_AUDIO_RESOURCE_T kepTVAudio::getResourceId(const std::string& source, const std::string& sink)
{
    for (const ResourceRow& row : kResources)
        if (source == row.source && isBehind(sink, row.sinks))
            return row.resource;
    return KEP_AUDIO_RESOURCE_INVALID;
}

KEP_AUDIO_SNDOUT_T kepTVAudio::getSoundOutputResourceId(const std::string& name)
{
    for (const OutputRow& row : kOutputs)
        for (const char* accepted : row.names)
            if (accepted != nullptr && name == accepted)
                return row.output;
    return KEP_AUDIO_NO_OUTPUT;
}

unsigned int kepTVAudio::audioResourceIdToIndex(KEP_AUDIO_RESOURCE_T resource)
{
    const ResourceRow* row = findResource(resource);
    return row != nullptr ? row->index : 0;
}

int kepTVAudio::audioResourceIdToPort(KEP_AUDIO_RESOURCE_T resource)
{
    const ResourceRow* row = findResource(resource);
    return row != nullptr ? row->port : -1;
}

unsigned int kepTVAudio::getSoundOutputCommonType(KEP_AUDIO_SNDOUT_T output)
{
    const OutputRow* row = findOutput(output);
    return row != nullptr ? row->typeBit : 0;
}

std::span<const KEP_AUDIO_SNDOUT_T> kepTVAudio::membersOf(KEP_AUDIO_SNDOUT_T output)
{
    static constexpr KEP_AUDIO_SNDOUT_T kNone[] = {KEP_AUDIO_NO_OUTPUT};
    const OutputRow* row = findOutput(output);
    if (row == nullptr)
        return kNone;
    const auto* end =
        std::find(std::begin(row->members), std::end(row->members), KEP_AUDIO_NO_OUTPUT);
    return {std::begin(row->members), end};
}

bool kepTVAudio::isValidResource(KEP_AUDIO_RESOURCE_T resource)
{
    return findResource(resource) != nullptr;
}

bool kepTVAudio::isValidSoundout() const
{
    const OutputRow* row = findOutput(mCurrentSoundout);
    return row != nullptr && row->selectable;
}

KEP_AUDIO_SNDOUT_T kepTVAudio::getPopNoiseSoundOutput() const
{
    KEP_INFO("INFO_LOG", "getPopNoiseSoundOutput soundOutput: %d", mPopNoiseSoundOutput);
    return mPopNoiseSoundOutput;
}

std::string kepTVAudio::getSoundOutputKey() const
{
    const auto entry = mStoredSettings.find("soundOutput");
    return entry != mStoredSettings.end() ? entry->second : "";
}

bool kepTVAudio::hasPipelineId(const AudioVideoInfo& pipeline, const std::string& pipelineId)
{
    const auto id = pipeline.find("pipelineId");
    return id != pipeline.end() && id->second == pipelineId;
}

bool kepTVAudio::isNewPipelineId(std::string pipelineId) const
{
    KEP_INFO("INFO_LOG", "Checking PipelineId is New or existing %s", pipelineId.c_str());
    if (AudioVideoInfoMapVector.empty()) {
        KEP_INFO("INFO_LOG", "Vector of AudioVideoInfo map is empty, so new pipelineId requested");
        return true;
    }
    for (const AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        if (hasPipelineId(pipeline, pipelineId)) {
            KEP_INFO("INFO_LOG", "PipelineId is matching, so need to update the map pipelineId %s",
                     pipelineId.c_str());
            return false;
        }
    }
    return true;
}

bool kepTVAudio::isValidPipelineId(std::string pipelineId) const
{
    const AudioVideoInfo current = mPtrParserInstance->copyOf(mPtrParserInstance->mAvParamsMap);
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
    const JValue purposes = attributes["pipelinePurpose"];
    KEP_INFO("INFO_LOG", "isValidpipelinePurpose purposeType: %s", purposes.stringify().c_str());
    for (const JValue& purpose : purposes.elements()) {
        const std::string name = purpose.asString();
        if (name == "AUDIO_DESC" || name == "EFFECT")
            return false;
    }
    return true;
}
