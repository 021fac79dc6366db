// SPDX-License-Identifier: Apache-2.0
// The middleware: every operation answers 0, in time. That each is there at all is seen when the
// program is loaded, as all of them are named here.
#include <cstdint>
#include <string>
#include <vector>

#include "answers.h"
#include "checks.h"
#include "mwlamplifier.h"
#include "mwldelay.h"
#include "mwlgain.h"
#include "mwlseinterface.h"

namespace
{

using mwl_amp::MWLAmplifier;
using mwl_delay::MWLDelay;
using mwl_gain::MWLGain;
using mwl_se::MwlSeInterface;

MwlSeInterface& soundEngine()
{
    return *MwlSeInterface::getInstance();
}

MWLAmplifier& amplifier()
{
    return *MWLAmplifier::getInstance();
}

MWLDelay& delay()
{
    return *MWLDelay::getInstance();
}

MWLGain& gain()
{
    return *MWLGain::getInstance();
}

/// What an operation of registers is given.
MwlParams& parameters()
{
    static MwlParams none;
    return none;
}

constexpr const char* kOutput = "tv_speaker";
constexpr std::uint8_t kQuiet = 10;
constexpr int kFlatBands[] = {0, 0, 0, 0, 0};

/// Switches the amplifier to the state that it is in.
int switchAmplifier()
{
    std::string type;
    std::vector<std::string> states;
    const int status = amplifier().getAmpState(&type, &states);
    return status != 0 ? status
                       : amplifier().setAmpOnOff(type, states.empty() ? "on" : states.front());
}

int askAmplifierState()
{
    std::string type;
    std::vector<std::string> states;
    return amplifier().getAmpState(&type, &states);
}

int askGain()
{
    static_cast<void>(gain().getGainAsInput(MWL_GAIN_TYPE_INPUT, kOutput));
    return 0;
}

// --- The library of each class

template <typename Library>
int hasInstance()
{
    return Library::getInstance() != nullptr ? 0 : -1;
}

struct Library {
    const char* name;
    int (*find)();
};
constexpr Library kLibraries[] = {
    {"soundengine", &hasInstance<MwlSeInterface>},
    {"amplifier", &hasInstance<MWLAmplifier>},
    {"delay", &hasInstance<MWLDelay>},
    {"gain", &hasInstance<MWLGain>},
};

// --- Its operations

enum Effect { Silent, Audible };

struct Operation {
    const char* name;
    Effect effect;
    int (*call)();
};

// In an order in which a television could be started: what is set at last is on, and quiet.
// clang-format off
constexpr Operation kOperations[] = {
    {"soundengine.registerQualityParams",      Audible, [] { return soundEngine().registerQualityParams(&parameters()); }},
    {"soundengine.registerAvParams",           Audible, [] { return soundEngine().registerAvParams(&parameters()); }},
    {"soundengine.initialize",                 Audible, [] { return soundEngine().initialize(); }},
    {"soundengine.setOSDVolume",               Audible, [] { return soundEngine().setOSDVolume(kQuiet); }},
    {"soundengine.setImmersiveInfo",           Audible, [] { return soundEngine().setImmersiveInfo("none"); }},
    {"soundengine.setInstartAudioEQ",          Audible, [] { return soundEngine().setInstartAudioEQ(true); }},
    {"soundengine.setInstartSoundEngine",      Audible, [] { return soundEngine().setInstartSoundEngine(true); }},
    {"soundengine.setDolbyAtmos",              Audible, [] { return soundEngine().setDolbyAtmos(false); }},
    {"soundengine.setForcedDolbyAtmos",        Audible, [] { return soundEngine().setForcedDolbyAtmos(false); }},
    {"soundengine.setMagicSpaceSoundParams",   Audible, [] { return soundEngine().setMagicSpaceSoundParams(kFlatBands, 0); }},
    {"soundengine.setStoreMode",               Audible, [] { return soundEngine().setStoreMode("home"); }},
    {"soundengine.setSoundMode",               Audible, [] { return soundEngine().setSoundMode("standard"); }},
    {"soundengine.setVolumeMode",              Audible, [] { return soundEngine().setVolumeMode("low"); }},
    {"soundengine.setMagicSpaceSound",         Audible, [] { return soundEngine().setMagicSpaceSound("off"); }},
    {"soundengine.setAISound",                 Audible, [] { return soundEngine().setAISound(false); }},
    {"soundengine.setSmartSoundMode",          Audible, [] { return soundEngine().setSmartSoundMode(false); }},
    {"soundengine.setAutoVolume",              Audible, [] { return soundEngine().setAutoVolume(false); }},
    {"soundengine.setVirtualSurround",         Audible, [] { return soundEngine().setVirtualSurround(false); }},
    {"soundengine.setMagicSpaceSoundModified", Audible, [] { return soundEngine().setMagicSpaceSoundModified(false); }},
    {"soundengine.setUserEQ",                  Audible, [] { return soundEngine().setUserEQ(false); }},
    {"soundengine.setUserEQValues",            Audible, [] { return soundEngine().setUserEQValues(kFlatBands); }},
    {"amplifier.getAmpState",                  Silent,  &askAmplifierState},
    {"amplifier.registerQualityParams",        Audible, [] { return amplifier().registerQualityParams(&parameters()); }},
    {"amplifier.setAmplifierInit",             Audible, [] { return amplifier().setAmplifierInit(); }},
    {"amplifier.parseAmpParams",               Audible, [] { return amplifier().parseAmpParams(); }},
    {"amplifier.setAmpReset",                  Audible, [] { return amplifier().setAmpReset(); }},
    {"amplifier.setAmpEQ",                     Audible, [] { return amplifier().setAmpEQ(true); }},
    {"amplifier.changeAmpEQ",                  Audible, [] { return amplifier().changeAmpEQ(); }},
    {"amplifier.setAmpBalance",                Audible, [] { return amplifier().setAmpBalance(0); }},
    {"amplifier.setAmpSuspend",                Audible, [] { return amplifier().setAmpSuspend(); }},
    {"amplifier.setAmpResume",                 Audible, [] { return amplifier().setAmpResume(); }},
    {"amplifier.setAmpOnOff",                  Audible, &switchAmplifier},
    {"amplifier.setAmpMute",                   Audible, [] { return amplifier().setAmpMute(false); }},
    {"delay.registerQualityParams",            Audible, [] { return delay().registerQualityParams(&parameters()); }},
    {"delay.registerAvParams",                 Audible, [] { return delay().registerAvParams(&parameters()); }},
    {"delay.setDelayInitialize",               Audible, [] { return delay().setDelayInitialize(); }},
    {"delay.setFactoryDelay",                  Audible, [] { return delay().setFactoryDelay(0); }},
    {"delay.setDelayUpdate",                   Audible, [] { return delay().setDelayUpdate(); }},
    {"delay.setOffSetDelay",                   Audible, [] { return delay().setOffSetDelay(0, "set"); }},
    {"delay.setUserDelay",                     Audible, [] { MWL_DELAY_USER_PARAM_LIST_T none = {}; return delay().setUserDelay(&none); }},
    {"gain.getGainAsInput",                    Silent,  &askGain},
    {"gain.registerQualityParams",             Audible, [] { return gain().registerQualityParams(&parameters()); }},
    {"gain.registerAvParams",                  Audible, [] { return gain().registerAvParams(&parameters()); }},
    {"gain.registerAencAvParams",              Audible, [] { return gain().registerAencAvParams(&parameters()); }},
    {"gain.setGainInitialize",                 Audible, [] { return gain().setGainInitialize(); }},
    {"gain.parseGainParams",                   Audible, [] { return gain().parseGainParams(); }},
    {"gain.setVolumeInit",                     Audible, [] { return gain().setVolumeInit(); }},
    {"gain.setInputVolume",                    Audible, [] { return gain().setInputVolume(0, kQuiet); }},
    {"gain.setOutputVolume",                   Audible, [] { return gain().setOutputVolume(kOutput, kQuiet); }},
    {"gain.setGainAsInput",                    Audible, [] { return gain().setGainAsInput(); }},
    {"gain.setAencVolume",                     Audible, [] { return gain().setAencVolume(); }},
    {"gain.setAudioDescriptionVolume",         Audible, [] { return gain().setAudioDescriptionVolume(0); }},
};
// clang-format on

void checkOperation(Report& report, const Conditions& conditions, const Operation& operation)
{
    const std::string claim = std::string{operation.name} + " answers";
    if (operation.effect == Audible && !conditions.audible)
        report.skip(claim, kCouldBeHeard);
    else
        report.tell(claim, answerFault(operation.name, conditions.limitMs, operation.call));
}

// --- Registers of the amplifier's chip, of which only the integrator knows one that may be touched

struct Register {
    std::string slave;
    std::uint8_t port;
    std::string address;
};
constexpr std::uint8_t kAddressBytes = 1;
constexpr std::uint8_t kDataBytes = 1;

Register registerOf(const std::string& text)
{
    const std::size_t first = text.find(':');
    const std::size_t second = text.find(':', first + 1);
    return {text.substr(0, first),
            static_cast<std::uint8_t>(std::stoi(text.substr(first + 1, second - first - 1))),
            text.substr(second + 1)};
}

void checkRegisters(Report& report, const Conditions& conditions)
{
    const std::string read = "amplifier.readI2cDataFromAmp";
    const std::string write = "amplifier.writeI2cDataToAmp";
    if (conditions.reg.empty()) {
        for (const std::string& operation : {read, write})
            report.skip(operation + " answers", "no register was named; --register tries one");
        return;
    }
    const Register place = registerOf(conditions.reg);
    std::vector<std::string> data;
    std::string fault = answerFault(read, conditions.limitMs, [&] {
        data = amplifier().readI2cDataFromAmp(place.slave, place.port, place.address, kAddressBytes,
                                              kDataBytes);
        return 0;
    });
    if (fault.empty() && data.size() != kDataBytes)
        fault = read + " answered " + std::to_string(data.size()) + " bytes, not 1";
    report.tell(read + " answers", fault);
    if (!fault.empty())
        return report.skip(write + " answers", "the register cannot be read");
    report.tell(write + " answers", answerFault(write, conditions.limitMs, [&] {
                    return amplifier().writeI2cDataToAmp(place.slave, place.port, place.address,
                                                         kAddressBytes, kDataBytes, data);
                }));
}

} // namespace

void checkMiddleware(Report& report, const Conditions& conditions)
{
    report.begin("Middleware");
    for (const Library& library : kLibraries) {
        const std::string claim = std::string{library.name} + " has an instance";
        const std::string fault = answerFault(library.name, conditions.limitMs, library.find);
        report.tell(claim, fault);
        if (!fault.empty())
            return;
    }
    for (const Operation& operation : kOperations)
        checkOperation(report, conditions, operation);
    checkRegisters(report, conditions);
}
