// SPDX-License-Identifier: Apache-2.0
// The adapter of the gain middleware: log, call, turn the status into a bool.
#include "keptvgain.h"

#include <cstdint>

#include "kepmiddleware.h"
#include "mwlgain.h"
#include "payloadkeys.h"
#include "shortname.h"

using mwl_gain::MWLGain;

namespace
{

constexpr const char* kErrorId = "GAIN_MWL_ERROR";
constexpr kepKey kQualityKeys[] = {key::kAudioDescription, key::kAudioDescriptionVolume,
                                   key::kAutoVolume};

struct ResourceNumber {
    ShortName resource;
    int number = 0;
};
// clang-format off
// Behind the sinks "MAIN" and "SUB".
constexpr ResourceNumber kResourceNumbers[] = {
    {ShortName{"ADEC"},    0},
    {ShortName{"ADEC0"},   0},
    {ShortName{"ADEC1"},   1},
    {ShortName{"AMIXER0"}, 2},
    {ShortName{"AMIXER1"}, 3},
    {ShortName{"AMIXER2"}, 4},
    {ShortName{"AMIXER3"}, 5},
    {ShortName{"AMIXER4"}, 6},
    {ShortName{"AMIXER5"}, 7},
    {ShortName{"AMIXER6"}, 8},
    {ShortName{"AMIXER7"}, 9},
};
// clang-format on
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
    const bool registered = KEP_SUCCEEDED(registerParams<&MWLGain::registerQualityParams>(
                                              mPtrGainInstance, &kepTvParser::mQualityParamsMap),
                                          kErrorId, "Failed to register quality parameters");
    return KEP_SUCCEEDED(mPtrGainInstance->setGainInitialize(), kErrorId,
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
    const ShortName resourceName{resource};
    const ShortName sinkName{sink};
    if (sinkName == ShortName{"MAIN"} || sinkName == ShortName{"SUB"}) {
        for (const ResourceNumber& row : kResourceNumbers)
            if (resourceName == row.resource)
                return row.number;
    }
    return resourceName == ShortName{"AMIXER"} && sinkName == ShortName{"ALSA"}
               ? kGenericMixerNumber
               : kUnknownResource;
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
    return KEP_SUCCEEDED(
        mPtrGainInstance->setOutputVolume(soundOutput, static_cast<std::uint8_t>(volume)), kErrorId,
        "Failed to set output volume                   SoundOutput %s volume: %d",
        soundOutput.c_str(), volume);
}

bool kepTVGain::setInputGain()
{
    KEP_INFO("calling setGainAsInput");
    return KEP_SUCCEEDED(mPtrGainInstance->setGainAsInput(), kErrorId, "Failed to set input gain");
}

bool kepTVGain::registerAudioVideoInfo()
{
    KEP_INFO("Calling registerAvParams");
    return KEP_SUCCEEDED(registerParams<&MWLGain::registerAvParams>(mPtrGainInstance,
                                                                    &kepTvParser::mAvParamsMap),
                         kErrorId, "Failed to register audio video parameters") &&
           setInputGain();
}

bool kepTVGain::setAencGain()
{
    KEP_INFO("calling setAencVolume");
    return KEP_SUCCEEDED(mPtrGainInstance->setAencVolume(), kErrorId, "Failed to set AENC gain");
}

bool kepTVGain::registerAudioVideoInfoForEncoder()
{
    KEP_INFO("Calling registerAencAvParams For Encoder");
    return KEP_SUCCEEDED(registerParams<&MWLGain::registerAencAvParams>(
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
