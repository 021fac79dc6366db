// SPDX-License-Identifier: Apache-2.0
// What the television's amplifier library must supply. All operations may be called from any thread
// and answer a status, 0 for success, unless stated otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mwlparams.h"

namespace mwl_amp
{

/// The amplifier of the speakers.
class MWLAmplifier
{
public:
    /// The one instance of the process, valid until the process ends; never null.
    static MWLAmplifier* getInstance();

    /// Takes the flattened quality parameters.
    int registerQualityParams(MwlParams* parameters);
    /// Initialises the amplifier chip that the registered parameters name.
    int setAmplifierInit();
    /// Reads the amplifier parameter files.
    int parseAmpParams();
    int setAmpReset();
    int setAmpEQ(bool on);
    /// Chooses the equaliser anew after the television's set-up has changed.
    int changeAmpEQ();
    int setAmpBalance(int balance);
    int setAmpMute(bool mute);
    int setAmpResume();
    int setAmpSuspend();
    int setAmpOnOff(std::string ampType, std::string status);
    /// Fills in the amplifier's type and states.
    int getAmpState(std::string* type, std::vector<std::string>* states);
    /// Writes registers of the chip. The texts are passed on as the caller gave them.
    int writeI2cDataToAmp(std::string slaveAddress, std::uint8_t portNumber, std::string address,
                          std::uint8_t numberOfByte, std::uint8_t sizeOfArray,
                          const std::vector<std::string>& data);
    /// The registers read; no status.
    std::vector<std::string> readI2cDataFromAmp(std::string slaveAddress, std::uint8_t portNumber,
                                                std::string address, std::uint8_t numberOfByte,
                                                std::uint8_t sizeOfArray);
};

} // namespace mwl_amp
