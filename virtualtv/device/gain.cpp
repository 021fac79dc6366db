// SPDX-License-Identifier: Apache-2.0
// Stands for the gain library.
#include "mwlgain.h"

#include "answer.h"
#include "television.h"

using virtualtv::answer;

namespace mwl_gain
{

MWLGain* MWLGain::getInstance()
{
    static MWLGain instance;
    return &instance;
}

int MWLGain::registerQualityParams(MwlParams* parameters)
{
    return answer("gain.registerQualityParams", *parameters);
}

int MWLGain::registerAvParams(MwlParams* parameters)
{
    return answer("gain.registerAvParams", *parameters);
}

int MWLGain::registerAencAvParams(MwlParams* parameters)
{
    return answer("gain.registerAencAvParams", *parameters);
}

int MWLGain::setGainInitialize()
{
    return answer("gain.setGainInitialize");
}

int MWLGain::parseGainParams()
{
    return answer("gain.parseGainParams");
}

int MWLGain::setVolumeInit()
{
    return answer("gain.setVolumeInit");
}

int MWLGain::setInputVolume(int resource, std::uint8_t volume)
{
    return answer("gain.setInputVolume", resource, volume);
}

int MWLGain::setOutputVolume(const std::string& soundOutput, std::uint8_t volume)
{
    return answer("gain.setOutputVolume", soundOutput, volume);
}

int MWLGain::setGainAsInput()
{
    return answer("gain.setGainAsInput");
}

int MWLGain::setAencVolume()
{
    return answer("gain.setAencVolume");
}

int MWLGain::setAudioDescriptionVolume(int volume)
{
    return answer("gain.setAudioDescriptionVolume", volume);
}

std::string MWLGain::getGainAsInput(MWL_GAIN_TYPE_T type, const std::string& soundOutput)
{
    return virtualtv::answerQuery("gain.getGainAsInput", virtualtv::gainValue(),
                                  static_cast<int>(type), soundOutput);
}

} // namespace mwl_gain
