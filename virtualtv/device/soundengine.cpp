// SPDX-License-Identifier: Apache-2.0
// Stands for the sound-engine library.
#include "mwlseinterface.h"

#include "answer.h"

using virtualtv::answer;

namespace mwl_se
{
namespace
{

constexpr std::size_t kEqualizerBands = 5;

} // namespace

MwlSeInterface* MwlSeInterface::getInstance()
{
    static MwlSeInterface instance;
    return &instance;
}

int MwlSeInterface::registerQualityParams(MwlParams* parameters)
{
    return answer("soundengine.registerQualityParams", *parameters);
}

int MwlSeInterface::registerAvParams(MwlParams* parameters)
{
    return answer("soundengine.registerAvParams", *parameters);
}

int MwlSeInterface::initialize()
{
    return answer("soundengine.initialize");
}

int MwlSeInterface::setOSDVolume(int volume)
{
    return answer("soundengine.setOSDVolume", volume);
}

int MwlSeInterface::setImmersiveInfo(const std::string& format)
{
    return answer("soundengine.setImmersiveInfo", format);
}

int MwlSeInterface::setInstartAudioEQ(bool on)
{
    return answer("soundengine.setInstartAudioEQ", on);
}

int MwlSeInterface::setInstartSoundEngine(bool on)
{
    return answer("soundengine.setInstartSoundEngine", on);
}

int MwlSeInterface::setDolbyAtmos(bool on)
{
    return answer("soundengine.setDolbyAtmos", on);
}

int MwlSeInterface::setForcedDolbyAtmos(bool on)
{
    return answer("soundengine.setForcedDolbyAtmos", on);
}

int MwlSeInterface::setMagicSpaceSoundParams(const int* parameters, int count)
{
    return answer("soundengine.setMagicSpaceSoundParams",
                  std::span<const int>{parameters, static_cast<std::size_t>(count)}, count);
}

int MwlSeInterface::setStoreMode(const std::string& mode)
{
    return answer("soundengine.setStoreMode", mode);
}

int MwlSeInterface::setSoundMode(const std::string& mode)
{
    return answer("soundengine.setSoundMode", mode);
}

int MwlSeInterface::setVolumeMode(const std::string& mode)
{
    return answer("soundengine.setVolumeMode", mode);
}

int MwlSeInterface::setMagicSpaceSound(const std::string& mode)
{
    return answer("soundengine.setMagicSpaceSound", mode);
}

int MwlSeInterface::setAISound(bool on)
{
    return answer("soundengine.setAISound", on);
}

int MwlSeInterface::setSmartSoundMode(bool on)
{
    return answer("soundengine.setSmartSoundMode", on);
}

int MwlSeInterface::setAutoVolume(bool on)
{
    return answer("soundengine.setAutoVolume", on);
}

int MwlSeInterface::setVirtualSurround(bool on)
{
    return answer("soundengine.setVirtualSurround", on);
}

int MwlSeInterface::setMagicSpaceSoundModified(bool modified)
{
    return answer("soundengine.setMagicSpaceSoundModified", modified);
}

int MwlSeInterface::setUserEQ(bool on)
{
    return answer("soundengine.setUserEQ", on);
}

int MwlSeInterface::setUserEQValues(const int* bands)
{
    return answer("soundengine.setUserEQValues", std::span<const int>{bands, kEqualizerBands});
}

} // namespace mwl_se
