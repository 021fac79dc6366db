// SPDX-License-Identifier: Apache-2.0
// The one class that callers of the library use.
#pragma once

#include <cstdint>
#include <string>

#include "jvalue.h"
#include "kepaudio.h"
#include "kepexport.h"

/// The audio of the television: starts the configured backend and forwards every request to it.
///
/// What requests may carry (sound outputs, sources with their sinks, settings categories with their
/// payloads) and what they answer is listed in docs/reference.md; kepCatalogue tells it at run
/// time.
///
/// Calls are made one at a time, `initialize` before all others; timers of the television backend
/// run on the default GLib main context of the caller. Nothing thrown inside leaves the library: it
/// ends the request as a failure, which a backend logs and the client does not. Only the end of a
/// thread, by pthread_exit or cancellation, is passed on.
class KEP_EXPORT kepClient
{
public:
    static kepClient* getInstance();
    kepClient(const kepClient&) = delete;
    kepClient& operator=(const kepClient&) = delete;

    // --- Life cycle. Result: KEP_STATUS_OK or KEP_STATUS_FAILED.

    /// Reads the configuration and starts the backend that it names; one that was started before is
    /// started again when nobody registered that name. May be called again. A failure is logged,
    /// but for: a name that nobody registered, a backend that declines to be made, what a backend
    /// does not log itself, and what was thrown. Without a log context the reason goes to standard
    /// error.
    unsigned int initialize();
    /// Stops the backend, which stays in place; failed, without a log line, when there is none.
    unsigned int deinitialize();

    /// The volume, 0 to 255, that the configuration recommends to start with.
    [[nodiscard]] std::uint8_t getDefaultVolume() const;
    /// The backend that the last `initialize` found, whether or not it could be started; null
    /// before. The library keeps it.
    [[nodiscard]] kepAudio* getAudioObj() const;

    // --- Requests, as in kepAudio. Result: the backend's code, KEP_RESULT_FAILED when there is
    // none.

    unsigned int connectInput(std::string source, std::string sink, JValue pipelineAttribute);
    unsigned int disconnectInput(std::string source, std::string sink);
    unsigned int getHeadphoneStatus(bool* connected);
    unsigned int removePipelineInfo(std::string pipelineId);
    unsigned int setSoundOutput(std::string soundOutput);
    unsigned int setMute(std::string source, std::string sink, bool mute);
    unsigned int setOutputVolume(std::string soundOutput, std::uint8_t volume);
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume);
    unsigned int setOutputMute(std::string soundOutput, bool mute);
    unsigned int setMuteExtSPK(bool mute);
    unsigned int setQualityAttribute(JValue attribute);
    unsigned int setSettings(std::string category, JValue payload);
    /// The backend's answer; the JSON value true when there is no backend.
    JValue getSettings(const std::string& category, JValue request);

private:
    kepClient() = default;

    kepAudio* mAudioObject = nullptr; // owned by its own class
    std::uint8_t mDefaultVolume = 0;
};
