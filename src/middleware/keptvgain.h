// SPDX-License-Identifier: Apache-2.0
// The adapter of the gain middleware.
#pragma once

#include <string>

#include "jvalue.h"
#include "kepcatalogue.h"
#include "keplog.h"

namespace mwl_gain
{
class MWLGain;
}

/// Volumes and gains. Every operation is one or two middleware calls; false when one of them
/// failed, which is then logged with "GAIN_MWL_ERROR". `initGain` comes before all others. Any
/// thread, as far as the middleware allows it.
class kepTVGain
{
public:
    static kepTVGain* getInstance();
    /// The keys of a quality payload that this adapter reads.
    static kepList<kepKey> qualityKeys();

    // --- Start-up

    /// Takes hold of the middleware; always true.
    bool initGain();
    /// Registers the quality parameters, then initialises the middleware, whatever came of the
    /// first.
    bool initGainAttributes();
    /// Registers the quality parameters, then has the middleware read its files.
    void parseGainXML();
    void resetGainAttributes();

    // --- Volumes

    /// The middleware's number of an input: 0 and 1 the decoders, 2 to 9 the mixer inputs, -1
    /// unknown.
    static int getResourceId(const std::string& resource, const std::string& sink);
    /// Unknown inputs are passed on as -1; a failure is not logged.
    bool setInputVolume(const std::string& resource, const std::string& sink, unsigned char volume);
    /// The volume's low 8 bits are passed on.
    bool setOutputVolume(const std::string& soundOutput, int volume);

    // --- Gains that follow the pipelines

    bool setInputGain();
    /// Registers the current pipeline, then applies the input gain.
    bool registerAudioVideoInfo();
    bool setAencGain();
    /// Registers the recording pipeline, then applies the encoder's gain.
    bool registerAudioVideoInfoForEncoder();

    // --- Settings and queries

    /// The gain as text, "" when there is none; `gainType` is "input", "output" or anything else.
    std::string getGainAsInput(std::string gainType, std::string soundOutput);
    /// Applies "audioDescription", "audioDescriptionVolume" and "autoVolume". A stored
    /// audio-description volume that is no number throws std::invalid_argument, one beyond int
    /// std::out_of_range.
    void setGainSettings(JValue settings);

private:
    kepTVGain() = default;

    void setAudioDescriptionVolume(int volume);

    mwl_gain::MWLGain* mPtrGainInstance = nullptr; // set once, read by the worker, too
};
