// SPDX-License-Identifier: Apache-2.0
// Start-up: the initial gains.
#include "keplog.h"
#include "keptvaudio.h"

namespace
{

constexpr std::int32_t kInitialGain = 0x800000;

} // namespace

void kepTVAudio::initGainAudio()
{
    KEP_INFO("INFO_LOG", "init Gain Audio");
    bool done = true;
    const auto connected =
        kepTvParser::getInstance()->guarded([this] { return mConnectedResources; });
    for (const KEP_AUDIO_RESOURCE_T resource : connected) {
        if (!write(kGainInput, {indexOf(resource), portOf(resource), kInitialGain})) {
            KEP_ERROR("CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element %s", // sic
                      kGainInput.name);
            done = false; // the other resources get theirs all the same
        }
    }
    if (!write(kGainOutput, {typeOf(KEP_AUDIO_SPK), kInitialGain})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element: %s", // sic
                  kGainOutput.name);
        return;
    }
    if (done)
        mIsInitGainAudioUpdate = true;
    KEP_INFO("INFO_LOG", "mIsInitGainAudioUpdate value is %d", mIsInitGainAudioUpdate.load());
}
