// SPDX-License-Identifier: Apache-2.0
// The adapter of the sound-engine middleware.
#pragma once

#include <string>

#include "jvalue.h"
#include "kepcatalogue.h"
#include "keplog.h"

namespace mwl_se
{
class MwlSeInterface;
}

/// Equaliser, surround, Dolby Atmos, sound modes. Every value is passed through at once. A
/// middleware call that fails is logged with "SOUND_ENGINE_MWL_ERROR" and, where there is a result,
/// answered by false. `initSoundEngine` comes before all others. Any thread, as far as the
/// middleware allows it.
class kepTVSoundEngine
{
public:
    static kepTVSoundEngine* getInstance();
    /// The keys of a quality payload that this adapter reads.
    static kepList<kepKey> qualityKeys();

    // --- Start-up and registration

    /// Takes hold of the middleware; always true.
    bool initSoundEngine();
    /// Registers the quality parameters, then initialises the middleware, whatever came of the
    /// first.
    bool initSoundEngineAttributes();
    /// Registers the current pipeline.
    void registerAudioVideoInfo();

    // --- Single values. Of a text, exactly "on" switches on.

    /// Tells the volume that the screen shows.
    bool setSoundOutputVolume(const int& volume);
    bool setImmersiveFormat(const std::string& format);
    bool setEqualizerStatus(const std::string& status);
    bool setSoundEngineStatus(const std::string& status);
    bool setDolbyAtmos(const std::string& status);
    bool setForcedDolbyAtmos(const bool& on);

    // --- Settings

    /// Passes on {"soundSettingValues": [numbers]}; what is no number counts as 0.
    bool setMagicSpaceSound(JValue payload);
    /// Passes on {"storeMode"}; does nothing without it.
    void setOptionCategorySettings(JValue payload);
    /// Passes on every key of a quality payload that it knows, each for itself.
    void setSoundEngineSettings(JValue payload);

private:
    kepTVSoundEngine() = default;

    // The two status keys are taken from objects only: anything else is refused with a log line.
    using StatusSetter = bool (kepTVSoundEngine::*)(const std::string&);
    void setEqualizerStatus(JValue payload);
    void setSoundEngineStatus(JValue payload);
    void applyStatus(kepLogOrigin origin, const JValue& payload, const char* key, StatusSetter set);

    // Set once; the start-up worker reads it, too.
    mwl_se::MwlSeInterface* mPtrSoundEngineInstance = nullptr;
};
