// SPDX-License-Identifier: Apache-2.0
// The configuration file: which backend to start, and with which default volume.
#pragma once

#include <string>

#include "jvalue.h"
#include "keplog.h"

/// The section of the library's SoC type, KEP_SOC_KEY of the build, in kep-config.json.
class kepConfig
{
public:
    static kepConfig* getInstance();
    kepConfig(const kepConfig&) = delete;
    kepConfig& operator=(const kepConfig&) = delete;

    /// Reads the file, anew at each call; false, with an error logged, when it is not a JSON
    /// object.
    bool loadKEPConfig();
    /// The text under the key; "" when it is missing or no text.
    std::string getValue(std::string key);
    /// The number under the key, a fraction cut toward zero; 0 when it is missing or no number.
    int getDefaultVolume(std::string key);

private:
    kepConfig() = default;

    /// The value under the key; invalid, with a debug line, when it is missing. Logs for its
    /// caller.
    JValue find(kepLogOrigin origin, const std::string& key) const;

    JValue mRoot;
};
