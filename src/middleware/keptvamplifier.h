// SPDX-License-Identifier: Apache-2.0
// The adapter of the amplifier middleware.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "jvalue.h"
#include "kepcatalogue.h"

namespace mwl_amp
{
class MWLAmplifier;
}

/// The amplifier and its chip. False when a middleware call failed, which is then logged with
/// "AMPLIFIER_MWL_ERROR". `initAmplifier` comes before all others. Any thread for what the start-up
/// worker calls (`parseAmplifierXML`, `resetAmplifierAttributes`), the caller's for the rest.
class kepTVAmplifier
{
public:
    static kepTVAmplifier* getInstance();
    /// The keys of a quality payload that this adapter reads.
    static kepList<kepKey> qualityKeys();

    // --- Start-up

    /// Takes hold of the middleware; always true.
    bool initAmplifier();
    /// Registers the quality parameters, then initialises the chip, whatever came of the first.
    bool initAmplifierAttributes();
    /// Registers the quality parameters, then has the middleware read its files.
    void parseAmplifierXML();
    void resetAmplifierAttributes();
    /// Takes the chip type from "tv.model.ampChipType" and initialises the chip. The first one
    /// after boot is left to the reset that is still to come, which counts as success.
    bool updateAmplifierType(JValue payload);

    // --- Settings

    /// Applies "equalizerStatus", "audioBalance" and "tvSetupConfiguration".
    void setAmplifierSettings(JValue payload);
    /// Exactly "on" switches the equaliser on.
    bool setEqualizerStatus(const std::string& status);
    void setAmplifierMute(const bool& mute);
    bool setAmplifierResume();
    bool setAmplifierSuspend();
    /// Switches {"ampType", "status"}; false without a log line when one of them is missing.
    bool setAmplifierState(JValue payload);
    bool getAmplifierState(std::string& type, std::vector<std::string>& states);

    // --- The chip's registers. Texts are passed through as they are; numbers keep their low 8
    // bits.

    /// {"slaveAddress", "portNumber", "address", "numberOfByte", "sizeOfArray", "data"}, all
    /// needed; elements of "data" that are no strings are skipped.
    bool writeI2cDataToAmplifier(JValue payload);
    /// The same without "data". An array of strings, empty when something is missing.
    JValue readI2cDataFromAmplifier(JValue payload);

private:
    kepTVAmplifier() = default;

    mwl_amp::MWLAmplifier* mPtrAmplifierInstance = nullptr; // set once, read by the worker, too

public:
    /// The chip type has not arrived since boot. Set by the backend, cleared by the first chip
    /// type.
    bool mIsBootup = false;

private:
    std::atomic<bool> mIsAmpResetDone{false}; // set by the start-up worker, never cleared
};
