// SPDX-License-Identifier: Apache-2.0
// The facade: starts the configured backend and forwards to it.
// Nothing thrown behind it may reach the caller: every way in catches, and answers failure.
#include "kepclient.h"

#include <cstdio>
#include <utility>

#include "kepcaught.h"
#include "kepconfig.h"
#include "kepfactory.h"
#include "keplog.h"

namespace
{

constexpr const char* kLogContextName = "kep";

/// The backend's answer to the operation; `failed` when there is no backend, or when it throws.
template <typename Result, typename Operation, typename... Arguments>
Result forward(kepAudio* backend, Result failed, Operation operation, Arguments&&... arguments)
try {
    return backend != nullptr ? (backend->*operation)(std::forward<Arguments>(arguments)...)
                              : failed;
} catch (...) {
    kepPassOnThreadEnd();
    return failed;
}

} // namespace

kepClient* kepClient::getInstance()
{
    static kepClient instance;
    return &instance;
}

unsigned int kepClient::initialize()
try {
    kepLogContext = LogGetContext(kLogContextName);
    if (kepLogContext == nullptr) {
        std::fprintf(stderr, "[kep]Failed to setup up log context %s\n", kLogContextName); // sic
        std::fflush(stderr);
        return KEP_STATUS_FAILED;
    }

    kepConfig* config = kepConfig::getInstance();
    if (config == nullptr) {
        KEP_ERROR("INVALID_KEP_TYPE", "Falied to get kepConfig instance"); // sic
        return KEP_STATUS_FAILED;
    }
    if (!config->loadKEPConfig()) {
        KEP_ERROR("INVALID_KEP_TYPE", "Failed to load KEP Config file");
        return KEP_STATUS_FAILED;
    }
    const std::string backendName = config->getValue("kepAudio");
    if (backendName.empty()) {
        KEP_ERROR("INVALID_KEP_TYPE", "Failed to get kep soc type from config");
        return KEP_STATUS_FAILED;
    }
    mDefaultVolume = static_cast<std::uint8_t>(config->getDefaultVolume("kepDefaultVolume"));
    KEP_DEBUG("Default volume %d", mDefaultVolume);

    kepFactory* factory = kepFactory::getInstance();
    if (factory == nullptr) {
        KEP_ERROR("INVALID_KEP_FACTOY", "Falied to get kepFactory instance"); // sic, both
        return KEP_STATUS_FAILED;
    }
    // An unknown name keeps the backend of an earlier call.
    if (factory->getRegistry().count(backendName) != 0)
        mAudioObject = factory->createKEPAudioObj(backendName);
    if (mAudioObject == nullptr)
        return KEP_STATUS_FAILED;

    KEP_INFO("In kepClient::initialize %s", backendName.c_str());
    return mAudioObject->initAudio();
} catch (...) {
    kepPassOnThreadEnd();
    return KEP_STATUS_FAILED;
}

unsigned int kepClient::deinitialize()
try {
    if (mAudioObject == nullptr)
        return KEP_STATUS_FAILED;
    const unsigned int status = mAudioObject->deinitAudio();
    if (status == KEP_STATUS_FAILED)
        KEP_ERROR("ERROR_LOG", "Failed to deinitAudio");
    return status;
} catch (...) {
    kepPassOnThreadEnd();
    return KEP_STATUS_FAILED;
}

std::uint8_t kepClient::getDefaultVolume() const
{
    return mDefaultVolume;
}

kepAudio* kepClient::getAudioObj() const
{
    return mAudioObject;
}

unsigned int kepClient::connectInput(std::string source, std::string sink, JValue pipelineAttribute)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::connectInput, std::move(source),
                   std::move(sink), std::move(pipelineAttribute));
}

unsigned int kepClient::disconnectInput(std::string source, std::string sink)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::disconnectInput, std::move(source),
                   std::move(sink));
}

unsigned int kepClient::getHeadphoneStatus(bool* connected)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::getHeadphoneStatus, connected);
}

unsigned int kepClient::removePipelineInfo(std::string pipelineId)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::removePipelineInfo,
                   std::move(pipelineId));
}

unsigned int kepClient::setSoundOutput(std::string soundOutput)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setSoundOutput,
                   std::move(soundOutput));
}

unsigned int kepClient::setMute(std::string source, std::string sink, bool mute)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setMute, std::move(source),
                   std::move(sink), mute);
}

unsigned int kepClient::setOutputVolume(std::string soundOutput, std::uint8_t volume)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setOutputVolume,
                   std::move(soundOutput), volume);
}

unsigned int kepClient::setInputVolume(std::string source, std::string sink, std::uint8_t volume)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setInputVolume, std::move(source),
                   std::move(sink), volume);
}

unsigned int kepClient::setOutputMute(std::string soundOutput, bool mute)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setOutputMute,
                   std::move(soundOutput), mute);
}

unsigned int kepClient::setMuteExtSPK(bool mute)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setMuteExtSPK, mute);
}

unsigned int kepClient::setQualityAttribute(JValue attribute)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setQualityAttribute,
                   std::move(attribute));
}

unsigned int kepClient::setSettings(std::string category, JValue payload)
{
    return forward(mAudioObject, KEP_RESULT_FAILED, &kepAudio::setSettings, std::move(category),
                   std::move(payload));
}

JValue kepClient::getSettings(const std::string& category, JValue request)
{
    return forward(mAudioObject, JValue{true}, &kepAudio::getSettings, category,
                   std::move(request));
}
