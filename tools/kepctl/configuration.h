// SPDX-License-Identifier: Apache-2.0
// What the configuration files lack: the library's lines do not say which file and which key.
#pragma once

#include <string>

/// Where kep-config.json is.
std::string configurationPath();

/// The backend that kep-config.json names; "" when it names none.
std::string configuredBackend();

/// What is wrong with kep-config.json, "" when nothing is, or when it cannot be read at all (the
/// library's line names the file then).
std::string configurationFault();

/// The card and the elements that device-cap.json names for the mixer backend.
struct MixerNames {
    std::string card;
    std::string mute;
    std::string volume;
};
MixerNames mixerNames();
std::string capabilityFault();
