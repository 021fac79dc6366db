// SPDX-License-Identifier: Apache-2.0
// Stands for the amplifier library.
#include "mwlamplifier.h"

#include "answer.h"
#include "television.h"

using virtualtv::answer;

namespace mwl_amp
{

MWLAmplifier* MWLAmplifier::getInstance()
{
    static MWLAmplifier instance;
    return &instance;
}

int MWLAmplifier::registerQualityParams(MwlParams* parameters)
{
    return answer("amplifier.registerQualityParams", *parameters);
}

int MWLAmplifier::setAmplifierInit()
{
    return answer("amplifier.setAmplifierInit");
}

int MWLAmplifier::parseAmpParams()
{
    return answer("amplifier.parseAmpParams");
}

int MWLAmplifier::setAmpReset()
{
    return answer("amplifier.setAmpReset");
}

int MWLAmplifier::setAmpEQ(bool on)
{
    return answer("amplifier.setAmpEQ", on);
}

int MWLAmplifier::changeAmpEQ()
{
    return answer("amplifier.changeAmpEQ");
}

int MWLAmplifier::setAmpBalance(int balance)
{
    return answer("amplifier.setAmpBalance", balance);
}

int MWLAmplifier::setAmpMute(bool mute)
{
    return answer("amplifier.setAmpMute", mute);
}

int MWLAmplifier::setAmpResume()
{
    return answer("amplifier.setAmpResume");
}

int MWLAmplifier::setAmpSuspend()
{
    return answer("amplifier.setAmpSuspend");
}

int MWLAmplifier::setAmpOnOff(std::string ampType, std::string status)
{
    return answer("amplifier.setAmpOnOff", ampType, status);
}

int MWLAmplifier::getAmpState(std::string* type, std::vector<std::string>* states)
{
    const virtualtv::AmplifierState state = virtualtv::amplifierState();
    *type = state.type;
    *states = state.states;
    const int status =
        virtualtv::injectedStatus(virtualtv::FaultPoint::Middleware, "amplifier.getAmpState");
    if (virtualtv::listening()) {
        JValue returned = JValue::object();
        returned.put("type", state.type);
        static_cast<void>(returned.put("states", virtualtv::toJson(state.states)));
        const JValue given = virtualtv::listOf();
        virtualtv::Event event = virtualtv::middlewareEvent("amplifier.getAmpState", given);
        event.put("returned", returned);
        event.put("status", status);
        virtualtv::report(event);
    }
    return status;
}

int MWLAmplifier::writeI2cDataToAmp(std::string slaveAddress, std::uint8_t portNumber,
                                    std::string address, std::uint8_t numberOfByte,
                                    std::uint8_t sizeOfArray, const std::vector<std::string>& data)
{
    return answer("amplifier.writeI2cDataToAmp", slaveAddress, portNumber, address, numberOfByte,
                  sizeOfArray, data);
}

std::vector<std::string> MWLAmplifier::readI2cDataFromAmp(std::string slaveAddress,
                                                          std::uint8_t portNumber,
                                                          std::string address,
                                                          std::uint8_t numberOfByte,
                                                          std::uint8_t sizeOfArray)
{
    return virtualtv::answerQuery("amplifier.readI2cDataFromAmp", virtualtv::i2cData(),
                                  slaveAddress, portNumber, address, numberOfByte, sizeOfArray);
}

} // namespace mwl_amp
