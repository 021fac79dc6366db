// SPDX-License-Identifier: Apache-2.0
// The adapter of the gain middleware: log, call, turn the status into a bool.
#include "keptvgain.h"

#include <cstdint>
#include <string_view>

#include "kepmiddleware.h"
#include "mwlgain.h"
#include "payloadkeys.h"

using mwl_gain::MWLGain;

namespace
{

constexpr const char* kErrorId = "GAIN_MWL_ERROR";
constexpr kepKey kQualityKeys[] = {key::kAudioDescription, key::kAudioDescriptionVolume,
                                   key::kAutoVolume};

struct ResourceNumber {
    std::string_view resource;
    int number;
};
// Behind the sinks "MAIN" and "SUB".
constexpr ResourceNumber kResourceNumbers[] = {
    {"ADEC", 0},    {"ADEC0", 0},   {"ADEC1", 1},   {"AMIXER0", 2}, {"AMIXER1", 3}, {"AMIXER2", 4},
    {"AMIXER3", 5}, {"AMIXER4", 6}, {"AMIXER5", 7}, {"AMIXER6", 8}, {"AMIXER7", 9},
};
constexpr int kGenericMixerNumber = 2; // "AMIXER" behind "ALSA" is mixer input 0
constexpr int kUnknownResource = -1;

MWL_GAIN_TYPE_T gainTypeOf(const std::string& name)
{
    if (name == "input")
        return MWL_GAIN_TYPE_INPUT;
    return name == "output" ? MWL_GAIN_TYPE_OUTPUT : MWL_GAIN_TYPE_OTHER;
}

} // namespace

kepList<kepKey> kepTVGain::qualityKeys()
{
    return listOf(kQualityKeys);
}

kepTVGain* kepTVGain::getInstance()
{
    static kepTVGain instance;
    return &instance;
}

bool kepTVGain::initGain()
{
    if (mPtrGainInstance == nullptr)
        mPtrGainInstance = MWLGain::getInstance();
    KEP_INFO("mPtrGainInstance is Initialised");
    return true;
}

bool kepTVGain::initGainAttributes()
{
    KEP_INFO("Parsing Gain values from xml");
    const bool registered = kepSucceeded(KEP_HERE,
                                         registerParams<&MWLGain::registerQualityParams>(
                                             mPtrGainInstance, &kepTvParser::mQualityParamsMap),
                                         kErrorId, "Failed to register quality parameters");
    return kepSucceeded(KEP_HERE, mPtrGainInstance->setGainInitialize(), kErrorId,
                        "Failed to initilize gain middleware API") && // sic
           registered;
}

void kepTVGain::parseGainXML()
{
    KEP_INFO("Calling registerQualityParams & parseGainParams for snapshot-boot");
    if (registerParams<&MWLGain::registerQualityParams>(mPtrGainInstance,
                                                        &kepTvParser::mQualityParamsMap) != 0)
        KEP_ERROR(kErrorId, "Failed to register quality parameters in parseGainXML");
    if (mPtrGainInstance->parseGainParams() != 0)
        KEP_ERROR(kErrorId, "Failed to call parseGainParams");
}

void kepTVGain::resetGainAttributes()
{
    KEP_INFO("Calling setVolumeInit of Gain middleware library");
    if (mPtrGainInstance->setVolumeInit() != 0)
        KEP_ERROR(kErrorId, "Failed to call setVolumeInit");
}

int kepTVGain::getResourceId(const std::string& resource, const std::string& sink)
{
    if (sink == "MAIN" || sink == "SUB") {
        for (const ResourceNumber& row : kResourceNumbers)
            if (resource == row.resource)
                return row.number;
    }
    return resource == "AMIXER" && sink == "ALSA" ? kGenericMixerNumber : kUnknownResource;
}

bool kepTVGain::setInputVolume(const std::string& resource, const std::string& sink,
                               unsigned char volume)
{
    const int number = getResourceId(resource, sink);
    KEP_INFO("Updating input volume %d to inputResource %d", volume, number);
    return mPtrGainInstance->setInputVolume(number, volume) == 0;
}

bool kepTVGain::setOutputVolume(const std::string& soundOutput, int volume)
{
    KEP_INFO("SoundOutput %s volume: %d", soundOutput.c_str(), volume);
    // sic: the run of blanks belongs to the text
    return kepSucceeded(
        KEP_HERE, mPtrGainInstance->setOutputVolume(soundOutput, static_cast<std::uint8_t>(volume)),
        kErrorId, "Failed to set output volume                   SoundOutput %s volume: %d",
        soundOutput.c_str(), volume);
}

bool kepTVGain::setInputGain()
{
    KEP_INFO("calling setGainAsInput");
    return kepSucceeded(KEP_HERE, mPtrGainInstance->setGainAsInput(), kErrorId,
                        "Failed to set input gain");
}

bool kepTVGain::registerAudioVideoInfo()
{
    KEP_INFO("Calling registerAvParams");
    return kepSucceeded(KEP_HERE,
                        registerParams<&MWLGain::registerAvParams>(mPtrGainInstance,
                                                                   &kepTvParser::mAvParamsMap),
                        kErrorId, "Failed to register audio video parameters") &&
           setInputGain();
}

bool kepTVGain::setAencGain()
{
    KEP_INFO("calling setAencVolume");
    return kepSucceeded(KEP_HERE, mPtrGainInstance->setAencVolume(), kErrorId,
                        "Failed to set AENC gain");
}

bool kepTVGain::registerAudioVideoInfoForEncoder()
{
    KEP_INFO("Calling registerAencAvParams For Encoder");
    return kepSucceeded(KEP_HERE,
                        registerParams<&MWLGain::registerAencAvParams>(
                            mPtrGainInstance, &kepTvParser::mAencAvParamsMap),
                        kErrorId, "Failed to register audio video parameters") &&
           setAencGain();
}

std::string kepTVGain::getGainAsInput(std::string gainType, std::string soundOutput)
{
    KEP_INFO("Calling getGainAsInput of Gain middleware library : type =%s, soundOutput =%s",
             gainType.c_str(), soundOutput.c_str());
    const MWL_GAIN_TYPE_T type = gainTypeOf(gainType);
    KEP_DEBUG("Calling getGainAsInput with - %u", type);
    std::string gain = mPtrGainInstance->getGainAsInput(type, soundOutput);
    if (gain.empty())
        KEP_ERROR(kErrorId, "Failed to get Gain Value");
    KEP_INFO("getGainAsInput returned gain value = %s", gain.c_str());
    return gain;
}

void kepTVGain::setAudioDescriptionVolume(int volume)
{
    if (mPtrGainInstance->setAudioDescriptionVolume(volume) != 0)
        KEP_ERROR_AS(KEP_HERE.as("setGainSettings"), kErrorId,
                     "Failed to set audioDescriptionVolume %d", volume);
}

void kepTVGain::setGainSettings(JValue settings)
{
    KEP_DEBUG("settingsKeyObject %s", settings.stringify().c_str());
    if (settings[key::kAudioDescription.name].asString() == "on") {
        kepTvParser* parser = kepTvParser::getInstance();
        const std::string stored =
            kepTvParser::find(parser->mQualityParamsMap, key::kAudioDescriptionVolume.name)
                .value_or("");
        if (stored.empty()) {
            KEP_ERROR(kErrorId, "audio description volume key not present in map");
        } else {
            const int volume = std::stoi(stored);
            KEP_INFO("setting audioDescription volume to gain middleware library is %d", volume);
            setAudioDescriptionVolume(volume);
        }
    }
    if (settings.hasKey(key::kAudioDescriptionVolume.name)) {
        const auto volume = settings[key::kAudioDescriptionVolume.name].asNumber<std::int32_t>();
        KEP_DEBUG("Set audioDescriptionVolume as %d", volume);
        setAudioDescriptionVolume(volume);
    }
    if (settings.hasKey(key::kAutoVolume.name)) {
        KEP_DEBUG("Calling setGainAsInput when autoVolume key changes");
        if (setInputGain())
            KEP_INFO("Call setGainAsInput is success when autoVolume key changes");
    }
}
