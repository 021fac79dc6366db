// SPDX-License-Identifier: Apache-2.0
// The keys of the library's two configuration files: one table, from which they are explained.
#pragma once

struct ConfigurationKey {
    const char* file;
    const char* section; // null: that of the television's SoC
    const char* key;
    const char* type;
    const char* example; // as JSON
    const char* meaning;
};

inline constexpr const char* kConfigFile = "kep-config.json";
inline constexpr const char* kCapabilityFile = "device-cap.json";

// clang-format off
inline constexpr ConfigurationKey kConfigurationKeys[] = {
    {kConfigFile,     nullptr,              "kepAudio",          "a string",                      R"("TV")",
     "the backend to start: TV, ALSA, or one that the service registered; without it nothing starts"},
    {kConfigFile,     nullptr,              "kepDefaultVolume",  "a whole number from 0 to 255",  "15",
     "the volume that is recommended to start with (0 when left out); the service asks for it and sets it"},
    {kCapabilityFile, "audioMasterDefault", "card",              "a string",                      R"("default")",
     "the card of the backend ALSA, by the name that libasound opens"},
    {kCapabilityFile, "audioMasterDefault", "muteControlName",   "a string",                      R"("'Master Playback Switch'")",
     "its master switch; a name with blanks stands in single quotes"},
    {kCapabilityFile, "audioMasterDefault", "volumeControlName", "a string",                      R"("'Master Playback Volume'")",
     "its master volume, likewise. Unless all three are there, those of the example hold"},
};
// clang-format on
