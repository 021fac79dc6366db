// SPDX-License-Identifier: Apache-2.0
// Routing: connects input resources to every member of the current sound output.
// Members are written one after the other; a failure leaves the earlier ones connected (the driver
// has no undo).
#include <algorithm>

#include "controlwrites.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "keptvgain.h"
#include "payloadkeys.h"
#include "soundoutputs.h"
#include "threads.h"

namespace
{

using ForConnectedResources = std::lock_guard<threads::Guard>;

} // namespace

unsigned int kepTVAudio::connectInput(std::string source, std::string sink,
                                      JValue pipelineAttribute)
try {
    requireStarted();
    KEP_INFO(
        "Request to connect sourceName:%s sinkName:%s pipelineAttribute:%s mCurrentSoundout:%d",
        source.c_str(), sink.c_str(), pipelineAttribute.stringify().c_str(), mCurrentSoundout);
    const KEP_AUDIO_RESOURCE_T resource = getResourceId(source, sink);
    if (!isValidResource(resource)) {
        KEP_ERROR("INVALID_RESOURCEID", "Invalid resource ID %d to connect audio", resource);
        return KEP_RESULT_INVALID_RESOURCE;
    }
    if (!isValidSoundout()) {
        KEP_ERROR("INVALID_SOUNDOUTPUT",
                  "connectInput  call for resource %d failed as no valid sound out is set", // sic
                  resource);
        return KEP_RESULT_INVALID_OUTPUT;
    }
    KEP_DEBUG("connectInput call for resource %d", resource);

    const bool mainPipeline = isValidpipelinePurpose(pipelineAttribute);
    const std::string streamType = pipelineAttribute[key::kStreamType.name].asString();
    if (mainPipeline && streamType != "kepgame") {
        if (!writeOrLog(KEP_HERE, kSndoutMainAudioOutput, {indexOf(resource), portOf(resource)}))
            return KEP_RESULT_FAILED;
    } else {
        KEP_DEBUG(
            "Did not set %s,when pipelinePurpose = \"audiodescription\" and stream type \"%s\"",
            kSndoutMainAudioOutput.name, streamType.c_str());
    }
    if (checkConnectInputResource(resource) != KEP_RESULT_OK)
        return KEP_RESULT_FAILED;
    if (!mPtrTVGain->setInputGain())
        KEP_ERROR("GAIN_MIDDLEWARE_ERROR", "Failed to update Input Gain");
    const ForConnectedResources guard{threads::connectedResourcesGuard};
    mConnectedResources.push_back(resource);
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepTVAudio::disconnectInput(std::string source, std::string sink)
try {
    requireStarted();
    KEP_INFO("Request to disconnect source %s and sink %s mCurrentSoundout:%d", source.c_str(),
             sink.c_str(), mCurrentSoundout);
    const KEP_AUDIO_RESOURCE_T resource = getResourceId(source, sink);
    if (!isValidResource(resource))
        return KEP_RESULT_INVALID_RESOURCE;
    if (!isValidSoundout()) {
        KEP_ERROR(
            "INVALID_SOUNDOUTPUT",
            "disconnectInput  call for resource %d failed as no valid sound out is set", // sic
            resource);
        return KEP_RESULT_INVALID_OUTPUT;
    }
    const unsigned int result = checkDisconnectInputResource(resource);
    if (result != KEP_RESULT_OK)
        return result;
    const ForConnectedResources guard{threads::connectedResourcesGuard};
    const auto first = std::find(mConnectedResources.begin(), mConnectedResources.end(), resource);
    if (first != mConnectedResources.end())
        mConnectedResources.erase(first);
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

KEP_AUDIO_SNDOUT_T kepTVAudio::routedOutput() const
{
    return isValidSoundout() ? mCurrentSoundout : KEP_AUDIO_SPK_SPDIF;
}

unsigned int kepTVAudio::checkConnectInputResource(KEP_AUDIO_RESOURCE_T resource)
{
    const KEP_AUDIO_SNDOUT_T output = routedOutput();
    if (output == KEP_AUDIO_SPK_SPDIF)
        KEP_DEBUG("Inside tv speaker and external speaker connect Input");
    for (const KEP_AUDIO_SNDOUT_T member : OutputMembers{output})
        if (connectInputResource(resource, member) != KEP_RESULT_OK)
            return KEP_RESULT_FAILED;
    return KEP_RESULT_OK;
}

unsigned int kepTVAudio::checkDisconnectInputResource(KEP_AUDIO_RESOURCE_T resource)
{
    const KEP_AUDIO_SNDOUT_T output = routedOutput();
    if (output == KEP_AUDIO_SPK_SPDIF)
        KEP_DEBUG("Disconnect Input from tv speaker and externl speaker"); // sic
    for (const KEP_AUDIO_SNDOUT_T member : OutputMembers{output})
        if (disconnectInputResource(resource, member) != KEP_RESULT_OK)
            return KEP_RESULT_FAILED;
    return KEP_RESULT_OK;
}

unsigned int kepTVAudio::connectInputResource(KEP_AUDIO_RESOURCE_T resource,
                                              KEP_AUDIO_SNDOUT_T output)
{
    KEP_DEBUG("Connect audio resource %d to soundoutput %d", resource, output);
    const bool written =
        writeOrLog(KEP_HERE, kSndoutConnect, {typeOf(output), indexOf(resource), portOf(resource)});
    return written ? KEP_RESULT_OK : KEP_RESULT_FAILED;
}

unsigned int kepTVAudio::disconnectInputResource(KEP_AUDIO_RESOURCE_T resource,
                                                 KEP_AUDIO_SNDOUT_T output)
{
    KEP_DEBUG("Disconnect audio resource %d to soundoutput %d", resource, output); // sic
    const bool written = writeOrLog(KEP_HERE, kSndoutDisconnect,
                                    {typeOf(output), indexOf(resource), portOf(resource)});
    return written ? KEP_RESULT_OK : KEP_RESULT_FAILED;
}

bool kepTVAudio::connectDisconnectResources(int outputType, bool connect)
{
    KEP_INFO("Connect or disconnect status %d speakerType %d", connect, outputType);
    const ControlElement<3>& element = connect ? kSndoutConnect : kSndoutDisconnect;
    // By position: whoever is called by a write may connect or disconnect something.
    // NOLINTNEXTLINE(modernize-loop-convert): see above
    for (std::size_t i = 0; i < mConnectedResources.size(); ++i)
        if (!writeOrLog(
                KEP_HERE, element,
                {outputType, indexOf(mConnectedResources[i]), portOf(mConnectedResources[i])}))
            return false;
    return true;
}

std::vector<KEP_AUDIO_RESOURCE_T> kepTVAudio::connectedResources() const
{
    const std::lock_guard guard{threads::connectedResourcesGuard};
    return mConnectedResources;
}
