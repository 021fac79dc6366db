// SPDX-License-Identifier: Apache-2.0
// Pipelines, reports: a quality attribute names a pipeline and says what it carries. Here is the
// way in, and the choice by request type. The pipeline is then taken in by
// keptvaudiosettings.pipelines.cpp, which has audio reports as well; store, removal and video
// reports are in keptvaudioquality.pipelines.cpp.
#include "keptvaudio.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"

unsigned int kepTVAudio::setQualityAttribute(JValue attribute)
try {
    requireStarted();
    KEP_INFO("payload received is %s", attribute.stringify().c_str());
    if (!attribute.isObject()) {
        KEP_INFO("setQualityAttribute API call :attributesObject is not an Object");
        return KEP_RESULT_FAILED;
    }
    const JValue pipelineInfo = attribute[key::kPipelineInfo.name];
    if (checkForResetValue(pipelineInfo)) {
        if (AudioVideoInfoMapVector.empty()) {
            KEP_INFO("AudioVideoInfo Map is empty and reset is true");
            return KEP_RESULT_OK;
        }
        if (!resetPipelineInfo(pipelineInfo)) {
            KEP_ERROR("INVALID_PARAMETER", "resetPipelineInfo:: PipelineID is not present in map");
            return KEP_RESULT_FAILED;
        }
        KEP_DEBUG("setQualityAttribute : resetPipelineInfo is success");
        return KEP_RESULT_OK;
    }
    if (!pipelineInfo.isObject() || !updatePipelineInfo(pipelineInfo))
        return KEP_RESULT_FAILED;
    const unsigned int result = setAudioVideoCategoryInfo(attribute);
    if (result == KEP_RESULT_OK)
        printAudioVideoInfoTable();
    return result;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

bool kepTVAudio::checkForResetValue(JValue value) const
{
    KEP_DEBUG("checking for reset value");
    return value[key::kReset.name].asBool();
}

unsigned int kepTVAudio::setAudioVideoCategoryInfo(JValue payload)
{
    if (!payload.hasKey(key::kRequestType.name)) {
        KEP_ERROR("INVALID_PARAMETER", "Json Value Input doesn't have request Type");
        return KEP_RESULT_FAILED;
    }
    const std::string type = payload[key::kRequestType.name].asString();
    KEP_INFO("setAudioVideoCategoryInfo::RequestType = %s ", type.c_str()); // sic
    // Only now: the pipeline was taken in under the state before.
    if (payload.hasKey(key::kActiveState.name))
        setActiveState(payload[key::kActiveState.name].asBool());
    if (type == key::kAudioReport.name)
        return setAudioInputInfo(payload) ? KEP_RESULT_OK : KEP_RESULT_FAILED;
    if (type == key::kVideoReport.name)
        return setVideoInputInfo(payload) ? KEP_RESULT_OK : KEP_RESULT_FAILED;
    if (type == key::kConnectionReport.name && payload[key::kPipelineInfo.name].isObject()) {
        KEP_INFO("requestType is empty and Calling audio and video info for policy connection");
        updatePolicyConnectionCategoryInfo(payload);
        return KEP_RESULT_OK;
    }
    KEP_ERROR("INVALID_PARAMETER", "Invalid requestType");
    return KEP_RESULT_FAILED;
}

void kepTVAudio::updatePolicyConnectionCategoryInfo(JValue payload)
{
    const JValue category = payload[key::kCategoryInfo.name];
    const JValue pipelineInfo = payload[key::kPipelineInfo.name];
    if (category.hasKey(key::kImmersive.name)) {
        const std::string format = category[key::kImmersive.name].asString();
        if (!mPtrTVSoundEngine->setImmersiveFormat(format))
            KEP_ERROR("SE_MIDDLEWARE_ERROR", "Failed to set immersive format as %s",
                      format.c_str());
    }
    if (category.hasKey(key::kCodec.name) && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
    if (updateAudioCategoryInfo(pipelineInfo, category))
        KEP_INFO("Updating the category info for audio input successful");
    if (updateVideoCategoryInfo(pipelineInfo, category))
        KEP_INFO("Updating the video category info for audio input successful"); // sic
    if (mPtrTVGain->registerAudioVideoInfo())
        KEP_INFO("Successfully called registerAvParams of gain middleware");
    if (mPtrTVGain->registerAudioVideoInfoForEncoder())
        KEP_INFO("Successfully called registerAvParams for encoder of gain middleware");
    if (mPtrTVDelay->registerAudioVideoInfo())
        KEP_INFO("Successfully called registerAvParams of delay middleware");
    mPtrTVSoundEngine->registerAudioVideoInfo();
}
