// SPDX-License-Identifier: Apache-2.0
// The platform's amplifier library over the maker's unit "amp", which keeps its registers to
// itself.
#include "mwlamplifier.h"

#include "unit.h"

namespace mwl_amp
{
namespace
{

const veltora::Unit& unit()
{
    static const veltora::Unit amp{"amp"};
    return amp;
}

constexpr const char* kChip = "main";
constexpr int kNotOffered = 1;

} // namespace

MWLAmplifier* MWLAmplifier::getInstance()
{
    static MWLAmplifier instance;
    return &instance;
}

int MWLAmplifier::registerQualityParams(MwlParams* parameters)
{
    return unit().setAll("quality", *parameters);
}

int MWLAmplifier::setAmplifierInit()
{
    return unit().perform("start");
}

int MWLAmplifier::parseAmpParams()
{
    return unit().perform("read-files");
}

int MWLAmplifier::setAmpReset()
{
    return unit().perform("reset");
}

int MWLAmplifier::setAmpEQ(bool on)
{
    return unit().set("equalizer", on ? 1 : 0);
}

int MWLAmplifier::changeAmpEQ()
{
    return unit().perform("choose-equalizer");
}

int MWLAmplifier::setAmpBalance(int balance)
{
    return unit().set("balance", balance);
}

int MWLAmplifier::setAmpMute(bool mute)
{
    return unit().set("mute", mute ? 1 : 0);
}

int MWLAmplifier::setAmpResume()
{
    return unit().perform("resume");
}

int MWLAmplifier::setAmpSuspend()
{
    return unit().perform("suspend");
}

int MWLAmplifier::setAmpOnOff(std::string ampType, std::string status)
{
    return unit().set(ampType.c_str(), status);
}

int MWLAmplifier::getAmpState(std::string* type, std::vector<std::string>* states)
{
    *type = kChip;
    *states = {unit().text("power")};
    return states->front().empty() ? 1 : 0;
}

int MWLAmplifier::writeI2cDataToAmp(std::string, std::uint8_t, std::string, std::uint8_t,
                                    std::uint8_t, const std::vector<std::string>&)
{
    return kNotOffered;
}

std::vector<std::string> MWLAmplifier::readI2cDataFromAmp(std::string, std::uint8_t, std::string,
                                                          std::uint8_t, std::uint8_t)
{
    return {};
}

} // namespace mwl_amp
