// SPDX-License-Identifier: Apache-2.0
// The television backend: its registration, its life and its active state.
#include "keptvaudio.h"

#include "kepfactory.h"
#include "keplog.h"

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
    static kepTVAudio instance;
    return &instance;
}

kepAudio* kepTVAudio::createObject()
{
    return mIsObjRegistered ? getInstance() : nullptr;
}

kepTVAudio::~kepTVAudio()
{
    kepFactory::getInstance()->UnRegister(kBackendName);
    KEP_DEBUG("UnRegister kepTVAudio ...");
}

unsigned int kepTVAudio::initAudio()
{
    const unsigned int status = initSpeaker();
    kepTvParser* parser = kepTvParser::getInstance();
    if (parser == nullptr)
        return KEP_STATUS_FAILED;
    bindAdapters(parser);
    parser->guarded([this] {
        mConnectedResources.insert(mConnectedResources.end(), std::begin(kInitialResources),
                                   std::end(kInitialResources));
    });
    initGainAudio();
    mPtrTVAmplifier->initAmplifier();
    mPtrTVDelay->initDelay();
    mPtrTVGain->initGain();
    mPtrTVSoundEngine->initSoundEngine();
    mPtrTVAmplifier->mIsBootup = true;
    return status;
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
    kepTvParser::getInstance()->guarded([this] { mConnectedResources.clear(); });
    return KEP_STATUS_OK;
}

unsigned int kepTVAudio::initSpeaker()
{
    return KEP_STATUS_OK;
}

void kepTVAudio::setActiveState(bool active)
{
    mActiveState = active;
    KEP_INFO("INFO_LOG", "Setting ActiveStatus: %d", active);
}

bool kepTVAudio::getActiveState() const
{
    KEP_INFO("INFO_LOG", "Getting ActiveStatus: %d", mActiveState);
    return mActiveState;
}

// TODO: these answer failure until settings and quality attributes are here.

unsigned int kepTVAudio::setQualityAttribute(JValue)
{
    return KEP_RESULT_FAILED;
}

unsigned int kepTVAudio::setSettings(std::string, JValue)
{
    return KEP_RESULT_FAILED;
}

JValue kepTVAudio::getSettings(const std::string&, JValue)
{
    return true;
}

bool kepTVAudio::mIsObjRegistered =
    kepFactory::getInstance()->Register(kBackendName, &kepTVAudio::createObject);
