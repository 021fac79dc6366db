// SPDX-License-Identifier: Apache-2.0
// The device capability file: the card of a plain mixer and its two master controls.
#pragma once

#include <string>

#include "jvalue.h"

/// What the mixer backend opens and writes. Read once from the file at the path given. A file that
/// cannot be read, or lacks one of the names, is logged and leaves the defaults in place; a name
/// that is no text becomes "".
struct DeviceCapability {
    explicit DeviceCapability(const std::string& path);

    void loadDeviceConfig(const std::string& path);
    /// Takes over all three names, or none.
    void parseAudioDefaults(JValue value);

    std::string card = "default";
    std::string muteControlName =
        "'Master Playback Switch'"; // the quotes are ALSA's identifier syntax
    std::string volumeControlName = "'Master Playback Volume'";
    // As identifiers, made once: they go into every write.
    std::string muteControl = identifierOf(muteControlName);
    std::string volumeControl = identifierOf(volumeControlName);

private:
    static std::string identifierOf(const std::string& name) { return "name=" + name; }
};
