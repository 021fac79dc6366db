// SPDX-License-Identifier: Apache-2.0
// The television backend: its registration, its life and its active state, and the entry points of
// quality attributes and settings.
#include "keptvaudio.h"

#include <exception>
#include <iterator>

#include "kepcaught.h"
#include "kepfactory.h"
#include "keplog.h"
#include "payloadkeys.h"
#include "startupworker.h"
#include "threads.h"

namespace
{

constexpr const char* kBackendName = "TV";

// Connected from the start: the mixer inputs of the system's own sounds.
constexpr KEP_AUDIO_RESOURCE_T kInitialResources[] = {
    KEP_AUDIO_RESOURCE_AMIXER5,
    KEP_AUDIO_RESOURCE_AMIXER6,
    KEP_AUDIO_RESOURCE_AMIXER7,
};

} // namespace

kepTVAudio* kepTVAudio::getInstance()
{
    /// Destroyed at exit, unless a step of the start-up still works on it.
    struct Instance {
        Instance() { new (&backend) kepTVAudio; }
        ~Instance()
        {
            if (StartupWorker::isAbandoned())
                backend.leaveRegistry(KEP_HERE.as("~kepTVAudio"));
            else
                backend.~kepTVAudio();
        }
        union {
            kepTVAudio backend;
        };
    };
    static Instance instance;
    return &instance.backend;
}

kepAudio* kepTVAudio::createObject()
{
    return mIsObjRegistered ? getInstance() : nullptr;
}

kepTVAudio::~kepTVAudio()
{
    leaveRegistry(KEP_HERE);
}

void kepTVAudio::leaveRegistry(const kepLogOrigin& origin)
{
    kepFactory::getInstance()->UnRegister(kBackendName);
    KEP_DEBUG_AS(origin, "UnRegister kepTVAudio ...");
}

void kepTVAudio::requireStarted() const
{
    struct NotStarted : std::exception {
        [[nodiscard]] const char* what() const noexcept override
        {
            return "the backend has not been started";
        }
    };
    if (!mIsStarted)
        throw NotStarted{};
}

unsigned int kepTVAudio::initAudio()
try {
    const unsigned int status = initSpeaker();
    kepTvParser* parser = kepTvParser::getInstance();
    if (parser == nullptr)
        return KEP_STATUS_FAILED;
    bindAdapters(parser);
    {
        const std::lock_guard guard{threads::connectedResourcesGuard};
        mConnectedResources.insert(mConnectedResources.end(), std::begin(kInitialResources),
                                   std::end(kInitialResources));
    }
    initGainAudio();
    mPtrTVAmplifier->initAmplifier();
    mPtrTVDelay->initDelay();
    mPtrTVGain->initGain();
    mPtrTVSoundEngine->initSoundEngine();
    mPtrTVAmplifier->mIsBootup = true;
    mIsStarted = true;
    return status;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_STATUS_FAILED);
}

void kepTVAudio::bindAdapters(kepTvParser* parser)
{
    if (mPtrParserInstance != nullptr)
        return; // bound by an earlier initAudio: the start-up worker may be reading the pointers
    mPtrParserInstance = parser;
    mPtrTVAmplifier = kepTVAmplifier::getInstance();
    mPtrTVDelay = kepTVDelay::getInstance();
    mPtrTVGain = kepTVGain::getInstance();
    mPtrTVSoundEngine = kepTVSoundEngine::getInstance();
}

unsigned int kepTVAudio::deinitAudio()
{
    const std::lock_guard guard{threads::connectedResourcesGuard};
    mConnectedResources.clear();
    return KEP_STATUS_OK;
}

unsigned int kepTVAudio::initSpeaker()
{
    return KEP_STATUS_OK;
}

void kepTVAudio::setActiveState(bool active)
{
    mActiveState = active;
    KEP_INFO("Setting ActiveStatus: %d", active);
}

bool kepTVAudio::getActiveState() const
{
    KEP_INFO("Getting ActiveStatus: %d", mActiveState);
    return mActiveState;
}

// --- Quality attributes

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

unsigned int kepTVAudio::setAudioVideoCategoryInfo(JValue payload)
{
    if (!payload.hasKey(key::kRequestType.name)) {
        KEP_ERROR("INVALID_PARAMETER", "Json Value Input doesn't have request Type");
        return KEP_RESULT_FAILED;
    }
    const std::string type = payload[key::kRequestType.name].asString();
    KEP_INFO("setAudioVideoCategoryInfo::RequestType = %s ", type.c_str()); // sic
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

// --- Settings

unsigned int kepTVAudio::setSettings(std::string category, JValue payload)
try {
    requireStarted();
    KEP_INFO("category %s Payload received is %s", category.c_str(), payload.stringify().c_str());
    const SettingsRow* row = findSettings(category);
    return row != nullptr && applySettings(*row, payload) ? KEP_RESULT_OK : KEP_RESULT_FAILED;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

bool kepTVAudio::mIsObjRegistered =
    kepFactory::getInstance()->Register(kBackendName, &kepTVAudio::createObject);
