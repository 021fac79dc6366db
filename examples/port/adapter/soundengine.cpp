// SPDX-License-Identifier: Apache-2.0
// The platform's sound engine over the maker's unit "dsp".
#include "mwlseinterface.h"

#include "unit.h"

namespace mwl_se
{
namespace
{

const veltora::Unit& unit()
{
    static const veltora::Unit dsp{"dsp"};
    return dsp;
}

constexpr int kEqualizerBands = 5;

} // namespace

MwlSeInterface* MwlSeInterface::getInstance()
{
    static MwlSeInterface instance;
    return &instance;
}

int MwlSeInterface::registerQualityParams(MwlParams* parameters)
{
    return unit().setAll("quality", *parameters);
}

int MwlSeInterface::registerAvParams(MwlParams* parameters)
{
    return unit().setAll("av", *parameters);
}

int MwlSeInterface::initialize()
{
    return unit().perform("start");
}

int MwlSeInterface::setOSDVolume(int volume)
{
    return unit().set("screen-volume", veltora::volumeOf(volume));
}

int MwlSeInterface::setImmersiveInfo(const std::string& format)
{
    return unit().set("immersive", format);
}

int MwlSeInterface::setInstartAudioEQ(bool on)
{
    return unit().set("service.equalizer", on ? 1 : 0);
}

int MwlSeInterface::setInstartSoundEngine(bool on)
{
    return unit().set("service.engine", on ? 1 : 0);
}

int MwlSeInterface::setDolbyAtmos(bool on)
{
    return unit().set("atmos", on ? 1 : 0);
}

int MwlSeInterface::setForcedDolbyAtmos(bool on)
{
    return unit().set("atmos.forced", on ? 1 : 0);
}

int MwlSeInterface::setMagicSpaceSoundParams(const int* parameters, int count)
{
    return unit().set("room", parameters, count);
}

int MwlSeInterface::setStoreMode(const std::string& mode)
{
    return unit().set("store", mode);
}

int MwlSeInterface::setSoundMode(const std::string& mode)
{
    return unit().set("mode", mode);
}

int MwlSeInterface::setVolumeMode(const std::string& mode)
{
    return unit().set("volume-mode", mode);
}

int MwlSeInterface::setMagicSpaceSound(const std::string& mode)
{
    return unit().set("room.mode", mode);
}

int MwlSeInterface::setAISound(bool on)
{
    return unit().set("adaptive", on ? 1 : 0);
}

int MwlSeInterface::setSmartSoundMode(bool on)
{
    return unit().set("smart", on ? 1 : 0);
}

int MwlSeInterface::setAutoVolume(bool on)
{
    return unit().set("levelling", on ? 1 : 0);
}

int MwlSeInterface::setVirtualSurround(bool on)
{
    return unit().set("surround", on ? 1 : 0);
}

int MwlSeInterface::setMagicSpaceSoundModified(bool modified)
{
    return unit().set("room.modified", modified ? 1 : 0);
}

int MwlSeInterface::setUserEQ(bool on)
{
    return unit().set("equalizer", on ? 1 : 0);
}

int MwlSeInterface::setUserEQValues(const int* bands)
{
    return unit().set("equalizer.bands", bands, kEqualizerBands);
}

} // namespace mwl_se
