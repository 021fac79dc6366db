// SPDX-License-Identifier: Apache-2.0
// The television backend: its registration, its life, its active state, and the entry point of
// settings.
#include "keptvaudio.h"
#include "keptvamplifier.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvparser.h"
#include "keptvsoundengine.h"

#include <exception>
#include <iterator>

#include "kepcaught.h"
#include "kepfactory.h"
#include "keplog.h"
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

kepTVAudio::kepTVAudio() = default;

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
