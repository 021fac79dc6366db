// SPDX-License-Identifier: Apache-2.0
// The backend for boards that have a plain ALSA mixer, registered as "ALSA".
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "kepaudio.h"
#include "kepaudiotypes.h"
#include "kepexport.h"

struct DeviceCapability; // private to the library

/// Drives a master switch, a master volume and one software volume per stream, which connecting and
/// disconnecting an input set to 100 % and 0 %. Output changes, input volumes, the external
/// speaker, settings and quality have no meaning here: those operations do nothing and succeed, and
/// `getSettings` answers the JSON value true. Nothing thrown leaves a request: it fails, with an
/// error line.
class KEP_EXPORT kepAlsaAudio final : public kepAudio
{
public:
    /// Whether the backend could enter itself in the registry under its name.
    static bool mIsObjRegistered;

    /// The creator: the one instance, null when the backend is not registered.
    static kepAudio* createObject();
    /// Where the device capability file is.
    static std::string getConfigFilePath();

    ~kepAlsaAudio() override;
    kepAlsaAudio(const kepAlsaAudio&) = delete;
    kepAlsaAudio& operator=(const kepAlsaAudio&) = delete;

    // --- kepAudio

    unsigned int initAudio() override;
    unsigned int deinitAudio() override;
    unsigned int connectInput(std::string source, std::string sink,
                              JValue pipelineAttribute) override;
    unsigned int disconnectInput(std::string source, std::string sink) override;
    unsigned int getHeadphoneStatus(bool* connected) override;
    unsigned int removePipelineInfo(std::string pipelineId) override;
    unsigned int setSoundOutput(std::string soundOutput) override;
    unsigned int setMute(std::string source, std::string sink, bool mute) override;
    unsigned int setOutputVolume(std::string soundOutput, std::uint8_t volume) override;
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume) override;
    unsigned int setOutputMute(std::string soundOutput, bool mute) override;
    unsigned int setMuteExtSPK(bool mute) override;
    unsigned int setQualityAttribute(JValue attribute) override;
    unsigned int setSettings(std::string category, JValue payload) override;
    JValue getSettings(const std::string& category, JValue request) override;

    // --- The mixer

    unsigned int initSpeaker();
    /// AMIXER0 for the source "AMIXER" behind the sink "ALSA"; every other pair is invalid.
    static KEP_AUDIO_RESOURCE_T getResourceId(const std::string& source, const std::string& sink);
    /// Writes one control of a card; control and value in ALSA's ascii syntax, such as
    /// "name=Softmaster" and "35%". The card is open during the call only. Failures are logged at
    /// debug level; a control without name and number is one that the card does not have.
    static bool setControl(const std::string& card, const std::string& control,
                           const std::string& value);
    /// Sets the master volume in percent.
    bool setVolume(std::uint8_t volume);
    /// Sets the software volume of a resource to 0 % (mute) or 100 %. Result code; logs a failure.
    unsigned int resetMixerVolume(KEP_AUDIO_RESOURCE_T resource, bool mute);

private:
    kepAlsaAudio();

    const std::unique_ptr<const DeviceCapability> mCapability;
};
