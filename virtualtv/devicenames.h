// SPDX-License-Identifier: Apache-2.0
// What the virtual television has by name: the operations of its middleware, its input lines, the
// operations of its sub-microcontroller. A fault can be planted in each.
#pragma once

#include <string_view>

namespace virtualtv
{

struct DeviceOperation {
    const char* name;      // as in an injection
    const char* arguments; // as a trace shows them
};

// clang-format off
inline constexpr DeviceOperation kMiddlewareOperations[] = {
    {"soundengine.registerQualityParams",      "parameters: object"},
    {"soundengine.registerAvParams",           "parameters: object"},
    {"soundengine.initialize",                 ""},
    {"soundengine.setOSDVolume",               "volume: number"},
    {"soundengine.setImmersiveInfo",           "format: string"},
    {"soundengine.setInstartAudioEQ",          "on: bool"},
    {"soundengine.setInstartSoundEngine",      "on: bool"},
    {"soundengine.setDolbyAtmos",              "on: bool"},
    {"soundengine.setForcedDolbyAtmos",        "on: bool"},
    {"soundengine.setMagicSpaceSoundParams",   "parameters: array of numbers, count: number"},
    {"soundengine.setStoreMode",               "mode: string"},
    {"soundengine.setSoundMode",               "mode: string"},
    {"soundengine.setVolumeMode",              "mode: string"},
    {"soundengine.setMagicSpaceSound",         "mode: string"},
    {"soundengine.setAISound",                 "on: bool"},
    {"soundengine.setSmartSoundMode",          "on: bool"},
    {"soundengine.setAutoVolume",              "on: bool"},
    {"soundengine.setVirtualSurround",         "on: bool"},
    {"soundengine.setMagicSpaceSoundModified", "modified: bool"},
    {"soundengine.setUserEQ",                  "on: bool"},
    {"soundengine.setUserEQValues",            "bands: array of numbers"},
    {"amplifier.registerQualityParams",        "parameters: object"},
    {"amplifier.setAmplifierInit",             ""},
    {"amplifier.parseAmpParams",               ""},
    {"amplifier.setAmpReset",                  ""},
    {"amplifier.setAmpEQ",                     "on: bool"},
    {"amplifier.changeAmpEQ",                  ""},
    {"amplifier.setAmpBalance",                "balance: number"},
    {"amplifier.setAmpMute",                   "mute: bool"},
    {"amplifier.setAmpResume",                 ""},
    {"amplifier.setAmpSuspend",                ""},
    {"amplifier.setAmpOnOff",                  "ampType: string, status: string"},
    {"amplifier.getAmpState",                  ""},
    {"amplifier.writeI2cDataToAmp",            "slaveAddress: string, portNumber: number, address: string, numberOfByte: number, sizeOfArray: number, data: array of strings"},
    {"amplifier.readI2cDataFromAmp",           "slaveAddress: string, portNumber: number, address: string, numberOfByte: number, sizeOfArray: number"},
    {"delay.registerQualityParams",            "parameters: object"},
    {"delay.registerAvParams",                 "parameters: object"},
    {"delay.setDelayInitialize",               ""},
    {"delay.setFactoryDelay",                  "correction: number"},
    {"delay.setDelayUpdate",                   ""},
    {"delay.setOffSetDelay",                   "value: number, operationType: string"},
    {"delay.setUserDelay",                     "settings: object"},
    {"gain.registerQualityParams",             "parameters: object"},
    {"gain.registerAvParams",                  "parameters: object"},
    {"gain.registerAencAvParams",              "parameters: object"},
    {"gain.setGainInitialize",                 ""},
    {"gain.parseGainParams",                   ""},
    {"gain.setVolumeInit",                     ""},
    {"gain.setInputVolume",                    "resource: number, volume: number 0 to 255"},
    {"gain.setOutputVolume",                   "soundOutput: string, volume: number 0 to 255"},
    {"gain.setGainAsInput",                    ""},
    {"gain.setAencVolume",                     ""},
    {"gain.setAudioDescriptionVolume",         "volume: number"},
    {"gain.getGainAsInput",                    "type: number, soundOutput: string"},
};
// clang-format on

inline constexpr DeviceOperation kSubMicroOperations[] = {
    {"subcpu_misc_Set_HPMuteOnOff", "mute: bool"},
};

inline constexpr const char* kInputLines[] = {
    "GPIO_RD_HP_LINK", // headphone plugged in
};

/// The name of a middleware operation: one that the table lacks does not compile.
class MiddlewareName
{
public:
    consteval MiddlewareName(const char* name) : mName(name)
    {
        for (const DeviceOperation& operation : kMiddlewareOperations)
            if (mName == operation.name)
                return;
        throw "no row in kMiddlewareOperations";
    }
    operator std::string_view() const { return mName; }

private:
    std::string_view mName;
};

} // namespace virtualtv
