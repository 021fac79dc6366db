// SPDX-License-Identifier: Apache-2.0
// Volume and mute: which mechanism carries the request is a matter of the output.
// What was asked for is kept even when it could not be carried out: other rooms apply it again
// later.
#include "keptvaudio.h"

#include "controlwrites.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvamplifier.h"
#include "keptvgain.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"
#include "soundoutputs.h"
#include "subcpu.h"

namespace
{

/// What carries the volume, or the mute, of an output.
Mechanism mechanismOf(KEP_AUDIO_SNDOUT_T output, Mechanism SoundOutput::*column)
{
    const SoundOutput* row = findSoundOutput(output);
    return row != nullptr ? row->*column : Mechanism::None;
}

unsigned int resultOf(bool done)
{
    return done ? KEP_RESULT_OK : KEP_RESULT_FAILED;
}

} // namespace

unsigned int kepTVAudio::setOutputVolume(std::string soundOutput, std::uint8_t volume)
try {
    requireStarted();
    KEP_INFO("Request to set volume %d on output %s", volume, soundOutput.c_str());
    const KEP_AUDIO_SNDOUT_T output = getSoundOutputResourceId(soundOutput);
    bool done = true;
    switch (mechanismOf(output, &SoundOutput::volume)) {
    case Mechanism::None:
        break;
    case Mechanism::Unsupported:
        KEP_INFO("Volume Operation wont be supported for soundoutput %s", // sic
                 soundOutput.c_str());
        break;
    case Mechanism::Speaker:
        done = setSpeakerHeadphoneOutputVolume(volume);
        break;
    case Mechanism::Headphone:
        done = mPtrTVGain->setOutputVolume("headphone", volume);
        break;
    case Mechanism::SoundSync:
        KEP_DEBUG("setOutputVolume for QN sound sync - Volume = %d, Mute = %d", volume,
                  mOutputMuteStatus);
        done = setQNSoundSyncOutputVolume(volume, mOutputMuteStatus);
        if (!done)
            KEP_ERROR("SET_VOLUME_ERROR", "Failed to set volume %d for element: %s on %s", volume,
                      kSndoutOpticQn.name, soundOutput.c_str());
        break;
    }
    if (output == mCurrentSoundout && isValidSoundout())
        mOutputVolume = volume; // only now: the mechanisms look at the volume before
    return resultOf(done);
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepTVAudio::setOutputMute(std::string soundOutput, bool mute)
try {
    requireStarted();
    KEP_INFO("Setting mute to %d on soundOutputType %s", mute, soundOutput.c_str());
    mOutputMuteStatus = mute;
    switch (mechanismOf(getSoundOutputResourceId(soundOutput), &SoundOutput::mute)) {
    case Mechanism::None:
        return KEP_RESULT_UNKNOWN_OUTPUT;
    case Mechanism::Unsupported:
        KEP_INFO("Mute Operation wont be supported for soundoutput %s", // sic
                 soundOutput.c_str());
        break;
    case Mechanism::Speaker:
        return setSpeakerOutputMute(mute);
    case Mechanism::Headphone:
        return resultOf(setMuteHeadphone(mute));
    case Mechanism::SoundSync:
        if (!setQNSoundSyncOutputVolume(mOutputVolume, mute)) {
            KEP_ERROR("AUDIO_DRIVER_ERROR",
                      "Failed to set soundoutput mute for element: %s on QN sound sync",
                      kSndoutOpticQn.name);
            return KEP_RESULT_FAILED;
        }
        break;
    }
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepTVAudio::setMute(std::string source, std::string sink, bool mute)
try {
    requireStarted();
    KEP_INFO("Request to set mute status of source %s and sink %s as %d", source.c_str(),
             sink.c_str(), mute);
    const KEP_AUDIO_RESOURCE_T resource = getResourceId(source, sink);
    if (!isValidResource(resource))
        return KEP_RESULT_INVALID_RESOURCE;
    if (!writeElement(kMuteInput, {indexOf(resource), portOf(resource), mute ? 1 : 0})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "Did not able to set the element: %s for source %s and sink %s with status %d",
                  kMuteInput.name, source.c_str(), sink.c_str(), mute); // sic
        return KEP_RESULT_FAILED;
    }
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepTVAudio::setInputVolume(std::string source, std::string sink, std::uint8_t volume)
try {
    requireStarted();
    KEP_INFO("Request to set input volume %d on source %s and sink %s", volume, source.c_str(),
             sink.c_str());
    if (getResourceId(source, sink) == KEP_AUDIO_RESOURCE_INVALID)
        // sic: 2, where setMute answers 3 for the same names; callers rely on either
        return KEP_RESULT_FAILED;
    return resultOf(mPtrTVGain->setInputVolume(source, sink, volume));
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepTVAudio::setMuteExtSPK(bool mute)
try {
    requireStarted();
    KEP_INFO("Setting mute to %d on External Speaker", mute);
    return resultOf(executeMuteExtSpeaker(mute));
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

bool kepTVAudio::setSpeakerHeadphoneOutputVolume(std::uint8_t volume)
{
    if (!mPtrTVSoundEngine->setSoundOutputVolume(volume)) {
        KEP_ERROR("SE_MIDDLEWARE_ERROR", "Failed to set speaker volume as %d", volume);
        return false;
    }
    if (volume == 0)
        mPtrTVAmplifier->setAmplifierMute(true);
    else if (mOutputVolume == 0)
        mPtrTVAmplifier->setAmplifierMute(false);
    return true;
}

bool kepTVAudio::setQNSoundSyncOutputVolume(std::uint8_t volume, bool mute)
{
    KEP_DEBUG("Request to set volume %d and muteStatus %d", volume, mute);
    return writeElement(kSndoutOpticQn, {kOpticQnKey, volume, mute ? 1 : 0, 1});
}

unsigned int kepTVAudio::setSpeakerOutputMute(const bool& mute)
{
    if (!writeOrLog(KEP_HERE, kMuteOutput, {typeOf(KEP_AUDIO_SPK), mute ? 1 : 0}, " on tv speaker"))
        return KEP_RESULT_FAILED;
    if (mOutputVolume != 0) // at volume 0 the amplifier is muted anyway
        mPtrTVAmplifier->setAmplifierMute(mute);
    return KEP_RESULT_OK;
}

bool kepTVAudio::executeMuteExtSpeaker(const bool& mute)
{
    KEP_INFO("executeMuteExtSpeaker is called / muteStatus = %d", mute);
    // sic: the headphone amplifier's line mutes the external speaker, too; boards rely on it
    if (subcpu_misc_Set_HPMuteOnOff(mute) != 0) {
        KEP_ERROR("SUBCPU_ERROR", "Failed to set external speaker mute status %d", mute);
        return false;
    }
    return true;
}
