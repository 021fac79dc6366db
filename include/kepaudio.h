// SPDX-License-Identifier: Apache-2.0
// The interface that every audio backend implements.
#pragma once

#include <cstdint>
#include <string>

#include "jvalue.h"
#include "kepexport.h"

/// Start/stop status: what initialising and deinitialising answer.
inline constexpr unsigned int KEP_STATUS_FAILED = 0;
inline constexpr unsigned int KEP_STATUS_OK = 1;

/// Result codes: what every other operation answers.
inline constexpr unsigned int KEP_RESULT_OK = 0;
inline constexpr unsigned int KEP_RESULT_UNKNOWN_OUTPUT = 1;   // television backend only
inline constexpr unsigned int KEP_RESULT_FAILED = 2;           // also: no backend
inline constexpr unsigned int KEP_RESULT_INVALID_RESOURCE = 3; // television backend only
inline constexpr unsigned int KEP_RESULT_INVALID_OUTPUT = 4;   // television backend only

/// An audio backend. Calls come one at a time; a backend takes no lock against its caller. A
/// failure is logged where it is seen and answered by the code. Names are exact and case-sensitive.
class KEP_EXPORT kepAudio
{
public:
    virtual ~kepAudio() = default;

    // --- Life cycle. Result: start/stop status.

    virtual unsigned int initAudio() = 0;
    virtual unsigned int deinitAudio() = 0;

    // --- Requests. Result: result code.

    /// Connects the source, reached through the sink, to the current sound output.
    virtual unsigned int connectInput(std::string source, std::string sink,
                                      JValue pipelineAttribute) = 0;
    virtual unsigned int disconnectInput(std::string source, std::string sink) = 0;
    /// Stores in `*connected` whether a headphone is plugged in.
    virtual unsigned int getHeadphoneStatus(bool* connected) = 0;
    virtual unsigned int removePipelineInfo(std::string pipelineId) = 0;
    virtual unsigned int setSoundOutput(std::string soundOutput) = 0;
    virtual unsigned int setMute(std::string source, std::string sink, bool mute) = 0;
    /// Volumes go from 0 to 255.
    virtual unsigned int setOutputVolume(std::string soundOutput, std::uint8_t volume) = 0;
    virtual unsigned int setInputVolume(std::string source, std::string sink,
                                        std::uint8_t volume) = 0;
    virtual unsigned int setOutputMute(std::string soundOutput, bool mute) = 0;
    virtual unsigned int setMuteExtSPK(bool mute) = 0;
    virtual unsigned int setQualityAttribute(JValue attribute) = 0;
    virtual unsigned int setSettings(std::string category, JValue payload) = 0;

    /// The answer to a query; the JSON value true where there is nothing to answer.
    virtual JValue getSettings(const std::string& category, JValue request) = 0;
};
