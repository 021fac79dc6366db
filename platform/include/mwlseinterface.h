// SPDX-License-Identifier: Apache-2.0
// What the television's sound-engine library must supply. All operations may be called from any
// thread and answer a status, 0 for success.
#pragma once

#include <string>

#include "mwlparams.h"

namespace mwl_se
{

/// The sound engine.
class MwlSeInterface
{
public:
    /// The one instance of the process, valid until the process ends; never null.
    static MwlSeInterface* getInstance();

    /// Takes the flattened quality parameters.
    int registerQualityParams(MwlParams* parameters);
    /// Takes the attributes of the current pipeline.
    int registerAvParams(MwlParams* parameters);
    /// Initialises the sound engine with the registered parameters.
    int initialize();

    /// Tells the volume that the screen shows.
    int setOSDVolume(int volume);
    int setImmersiveInfo(const std::string& format);
    int setInstartAudioEQ(bool on);
    int setInstartSoundEngine(bool on);
    int setDolbyAtmos(bool on);
    int setForcedDolbyAtmos(bool on);
    /// Takes `count` parameters; with 0 of them the pointer may be null.
    int setMagicSpaceSoundParams(const int* parameters, int count);
    int setStoreMode(const std::string& mode);
    int setSoundMode(const std::string& mode);
    int setVolumeMode(const std::string& mode);
    int setMagicSpaceSound(const std::string& mode);
    int setAISound(bool on);
    int setSmartSoundMode(bool on);
    int setAutoVolume(bool on);
    int setVirtualSurround(bool on);
    int setMagicSpaceSoundModified(bool modified);
    int setUserEQ(bool on);
    /// Takes the five bands of the user's equaliser.
    int setUserEQValues(const int* bands);
};

} // namespace mwl_se
