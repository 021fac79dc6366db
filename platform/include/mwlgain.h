// SPDX-License-Identifier: Apache-2.0
// What the television's gain library must supply. All operations may be called from any thread and
// answer a status, 0 for success, unless stated otherwise.
#pragma once

#include <cstdint>
#include <string>

#include "mwlparams.h"

/// Which gain is asked for.
enum MWL_GAIN_TYPE_T : std::uint32_t {
    MWL_GAIN_TYPE_INPUT = 0,
    MWL_GAIN_TYPE_OUTPUT = 1,
    MWL_GAIN_TYPE_OTHER = 2,
};

namespace mwl_gain
{

/// Gains and volumes.
class MWLGain
{
public:
    /// The one instance of the process, valid until the process ends; never null.
    static MWLGain* getInstance();

    /// Takes the flattened quality parameters.
    int registerQualityParams(MwlParams* parameters);
    /// Takes the attributes of the current pipeline.
    int registerAvParams(MwlParams* parameters);
    /// Takes the attributes of the recording pipeline.
    int registerAencAvParams(MwlParams* parameters);
    /// Initialises the gain processing.
    int setGainInitialize();
    /// Reads the gain parameter files.
    int parseGainParams();
    /// Resets all volumes to their initial values.
    int setVolumeInit();
    /// Sets an input's volume. Inputs: 0 and 1 the decoders, 2 to 9 the mixer inputs, -1 an unknown
    /// one.
    int setInputVolume(int resource, std::uint8_t volume);
    /// Sets the volume of the output of that name.
    int setOutputVolume(const std::string& soundOutput, std::uint8_t volume);
    /// Applies the input gain for the registered parameters.
    int setGainAsInput();
    /// Applies the encoder's gain.
    int setAencVolume();
    /// Sets the volume at which the audio description is mixed in.
    int setAudioDescriptionVolume(int volume);
    /// The gain as text; empty when there is none.
    std::string getGainAsInput(MWL_GAIN_TYPE_T type, const std::string& soundOutput);
};

} // namespace mwl_gain
