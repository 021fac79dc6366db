// SPDX-License-Identifier: Apache-2.0
// The platform's gain library over the maker's unit "levels".
#include "mwlgain.h"

#include "unit.h"

namespace mwl_gain
{
namespace
{

const veltora::Unit& unit()
{
    static const veltora::Unit levels{"levels"};
    return levels;
}

} // namespace

MWLGain* MWLGain::getInstance()
{
    static MWLGain instance;
    return &instance;
}

int MWLGain::registerQualityParams(MwlParams* parameters)
{
    return unit().setAll("quality", *parameters);
}

int MWLGain::registerAvParams(MwlParams* parameters)
{
    return unit().setAll("av", *parameters);
}

int MWLGain::registerAencAvParams(MwlParams* parameters)
{
    return unit().setAll("recording", *parameters);
}

int MWLGain::setGainInitialize()
{
    return unit().perform("start");
}

int MWLGain::parseGainParams()
{
    return unit().perform("read-files");
}

int MWLGain::setVolumeInit()
{
    return unit().perform("reset");
}

int MWLGain::setInputVolume(int resource, std::uint8_t volume)
{
    return unit().set(("input." + std::to_string(resource)).c_str(), veltora::volumeOf(volume));
}

int MWLGain::setOutputVolume(const std::string& soundOutput, std::uint8_t volume)
{
    return unit().set(("output." + soundOutput).c_str(), veltora::volumeOf(volume));
}

int MWLGain::setGainAsInput()
{
    return unit().perform("input-gain");
}

int MWLGain::setAencVolume()
{
    return unit().perform("recording-gain");
}

int MWLGain::setAudioDescriptionVolume(int volume)
{
    return unit().set("description", veltora::volumeOf(volume));
}

std::string MWLGain::getGainAsInput(MWL_GAIN_TYPE_T, const std::string&)
{
    return unit().text("gain"); // one for all types and outputs
}

} // namespace mwl_gain
