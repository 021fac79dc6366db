// SPDX-License-Identifier: Apache-2.0
// Output selection. A transition closes the members of the old output that the new one lacks, then
// opens those that the old one lacks; the table of outputs says where that differs. Every step of a
// transition is made even when an earlier one failed; a single output's own sequence stops at its
// first failure.
#include <algorithm>

#include "controlwrites.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "soundoutputs.h"

namespace
{

using enum OutputStep;

constexpr const char* kSoundSyncSuffix = " for QN SOUND SYNC";

/// Of an output that has one.
const OutputSwitch& switchOf(KEP_AUDIO_SNDOUT_T output)
{
    return *findSoundOutput(output)->single;
}

const OutputSwitch& opticalSwitchOf(KEP_AUDIO_SNDOUT_T output)
{
    return switchOf(output == KEP_AUDIO_QN_SOUND_SYNC ? output : KEP_AUDIO_SPDIF);
}

} // namespace

unsigned int kepTVAudio::setSoundOutput(std::string soundOutput)
try {
    requireStarted();
    const KEP_AUDIO_SNDOUT_T output = getSoundOutputResourceId(soundOutput);
    KEP_INFO("Request to set soundOutput %s", soundOutput.c_str());
    if (output == KEP_AUDIO_NO_OUTPUT) {
        KEP_ERROR("SOUNDOUTPUT_NOT_SUPPORTED", "Not supported soundoutput");
        return KEP_RESULT_FAILED;
    }
    mStoredSettings["soundOutput"] = soundOutput;
    if (output == mCurrentSoundout) {
        KEP_DEBUG("Request for setting the existing setSoundOut %s- Ignore!!!",
                  soundOutput.c_str());
        return KEP_RESULT_OK;
    }
    if (!handleSetSoundOutput(output)) {
        KEP_ERROR("SOUNDOUTPUT_SET_ERROR", "Failed to set sound out %s", soundOutput.c_str());
        return KEP_RESULT_FAILED;
    }
    mCurrentSoundout = output;

    const std::string mode = getSoundOutputDigitalMode();
    if (!setSoundOutputDigital(mode))
        KEP_ERROR("SET_SOUNDOUTPUT_DIGITAL_ERROR",
                  "Failed to set SoundOutput Digital %s during soundout change", mode.c_str());
    if (!mPtrTVDelay->updateDelayValues())
        KEP_ERROR("DELAY_MIDDLEWARE_ERROR", "Failed to update delay value to middleware");
    if (!mPtrTVGain->setInputGain()) {
        KEP_ERROR("GAIN_MIDDLEWARE_ERROR", "Failed to update Input Gain");
        return KEP_RESULT_OK; // the output has changed all the same
    }
    KEP_INFO("successfully set soundoutput %s", soundOutput.c_str());
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

// --- Transitions, from mCurrentSoundout

bool kepTVAudio::handleSetSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    if (output == KEP_AUDIO_SPK_OPTICAL_ARC)
        KEP_INFO("Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC");
    const SoundOutput* row = findSoundOutput(output);
    return row != nullptr && row->openedAfresh ? openAfresh(output) : moveTo(output);
}

bool kepTVAudio::moveTo(KEP_AUDIO_SNDOUT_T output)
{
    const OutputMembers before{mCurrentSoundout};
    const OutputMembers after{output};
    bool done = joinInto(output);
    for (const KEP_AUDIO_SNDOUT_T member : before)
        if (!after.contains(member))
            done = disconnectOutput(member) && done;
    for (const KEP_AUDIO_SNDOUT_T member : after)
        if (!before.contains(member))
            done = connectOutput(member) && done;
    return done;
}

bool kepTVAudio::openAfresh(KEP_AUDIO_SNDOUT_T output)
{
    OutputMembers before{mCurrentSoundout};
    const SoundOutput* row = findSoundOutput(mCurrentSoundout);
    if (row != nullptr && row->closedLastFirst)
        before.reverse();
    bool done = true;
    for (const KEP_AUDIO_SNDOUT_T member : before)
        done = disconnectOutput(member) && done;
    return connectOutput(output) && done;
}

bool kepTVAudio::joinInto(KEP_AUDIO_SNDOUT_T output)
{
    const SoundOutput* row = findSoundOutput(mCurrentSoundout);
    const bool joins =
        output != mCurrentSoundout && OutputMembers{output}.contains(mCurrentSoundout);
    if (!joins || row == nullptr || row->single == nullptr)
        return true;
    return runStep(row->single->joined, mCurrentSoundout, row->single->open);
}

// Fixed names. Nothing tells them apart: one rule, moveTo, stands behind all but the first, and it
// is the table that knows where outputs differ.
// clang-format off
bool kepTVAudio::setSingularSoundOutput(KEP_AUDIO_SNDOUT_T output)            { return openAfresh(output); }
bool kepTVAudio::setSpeakerSpdifSoundOutput()                                 { return moveTo(KEP_AUDIO_SPK_SPDIF); }
bool kepTVAudio::setHPSoundOutput()                                           { return moveTo(KEP_AUDIO_HP); }
bool kepTVAudio::setSpeakerHPSoundOutput()                                    { return moveTo(KEP_AUDIO_SPK_HP); }
bool kepTVAudio::setSpeakerBluetoothSoundOutput()                             { return moveTo(KEP_AUDIO_SPK_BLUETOOTH); }
bool kepTVAudio::setSpeakerOpticalArcSoundOutput()                            { return moveTo(KEP_AUDIO_SPK_OPTICAL_ARC); }
bool kepTVAudio::setTvSpeakerSoundOutput(KEP_AUDIO_SNDOUT_T output)           { return moveTo(output); }
bool kepTVAudio::setTvSpeakerSpdifSoundOutput(KEP_AUDIO_SNDOUT_T output)      { return moveTo(output); }
bool kepTVAudio::setTvSpeakerHPSoundOutput(KEP_AUDIO_SNDOUT_T output)         { return moveTo(output); }
bool kepTVAudio::setTvSpeakerOpticalArcSoundOutput(KEP_AUDIO_SNDOUT_T output) { return moveTo(output); }
bool kepTVAudio::setTvSpeakerBluetoothSoundOutput(KEP_AUDIO_SNDOUT_T output)  { return moveTo(output); }
// clang-format on

// --- Single outputs

bool kepTVAudio::connectOutput(KEP_AUDIO_SNDOUT_T output)
{
    KEP_INFO("Connect outputType %d", output);
    const SoundOutput* row = findSoundOutput(output);
    if (row == nullptr || row->single == nullptr)
        return output == KEP_AUDIO_NO_OUTPUT; // nothing to open
    return runSteps(row->single->open, output);
}

bool kepTVAudio::disconnectOutput(KEP_AUDIO_SNDOUT_T output)
{
    KEP_INFO("disconnect outputType %d", output);
    const SoundOutput* row = findSoundOutput(output);
    if (row == nullptr || row->single == nullptr)
        return output == KEP_AUDIO_NO_OUTPUT;
    return runSteps(row->single->close, output);
}

bool kepTVAudio::runSteps(const OutputSequence& sequence, KEP_AUDIO_SNDOUT_T output)
{
    const auto& steps = sequence.steps;
    return std::all_of(std::begin(steps), std::find(std::begin(steps), std::end(steps), None),
                       [&](OutputStep step) { return runStep(step, output, sequence); });
}

bool kepTVAudio::runStep(OutputStep step, KEP_AUDIO_SNDOUT_T output, const OutputSequence& sequence)
{
    const kepLogOrigin origin = KEP_HERE.as(sequence.operation);
    const std::int32_t type = typeOf(output);
    switch (step) {
    case None:
        return true;
    case Open:
        return writeOrLog(origin, kSndoutOpen, {type}, sequence.suffix);
    case Close:
        return writeOrLog(origin, kSndoutClose, {type}, sequence.suffix);
    case Connect:
    case Disconnect:
        return mConnectedResources.empty() || connectDisconnectResources(type, step == Connect);
    case UnmuteUnlessMuted:
        return mOutputMuteStatus || runStep(Unmute, output, sequence);
    case Mute:
    case Unmute:
        return writeOrLog(origin, kMuteOutput, {type, step == Mute ? 1 : 0}, sequence.suffix);
    case LightOn:
    case LightOff:
        return writeOrLog(origin, kSndoutOpticLight, {step == LightOn ? 1 : 0}, sequence.suffix);
    case SoundSync:
        return writeOrLog(origin, kSndoutOpticQn, {1, mOutputVolume, mOutputMuteStatus ? 1 : 0, 1},
                          kSoundSyncSuffix);
    case GuardHeadphone:
        guardHeadphone(output);
        return true;
    case UnguardHeadphone:
        return unguardHeadphone();
    case MuteHeadphone:
    case UnmuteHeadphone:
        return setMuteHeadphone(step == MuteHeadphone);
    }
    return false;
}

void kepTVAudio::guardHeadphone(KEP_AUDIO_SNDOUT_T output)
{
    const kepLogOrigin origin = KEP_HERE.as("connectHPOutput");
    KEP_INFO_AS(origin, "connectHPOutput:: Connect soundoutput %d", output);
    if (mCurrentSoundout != KEP_AUDIO_NO_OUTPUT)
        return;
    KEP_INFO_AS(origin, "AC On headphone is selected, so muting to avoid noise");
    setMuteHeadphone(/*mute=*/true); // at worst there is a noise
}

bool kepTVAudio::unguardHeadphone()
{
    if (mCurrentSoundout != KEP_AUDIO_NO_OUTPUT)
        return setMuteHeadphone(/*mute=*/false);
    KEP_INFO_AS(KEP_HERE.as("connectHPOutput"),
                "During AC ON, headphone selected timer running, so skipping unmute");
    return true;
}

// Fixed names, for callers from outside: each runs the steps that the table has for the output it
// is named after. ARC is opened and closed as itself, whatever the name is given.
// clang-format off
bool kepTVAudio::connectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output)           { return runSteps(switchOf(KEP_AUDIO_SPK).open, output); }
bool kepTVAudio::disconnectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output)        { return runSteps(switchOf(KEP_AUDIO_SPK).close, output); }
bool kepTVAudio::connectHPOutput(KEP_AUDIO_SNDOUT_T output)                  { return runSteps(switchOf(KEP_AUDIO_HP).open, output); }
bool kepTVAudio::disconnectHPOutput(KEP_AUDIO_SNDOUT_T output)               { return runSteps(switchOf(KEP_AUDIO_HP).close, output); }
bool kepTVAudio::connectExternalArcOutput(KEP_AUDIO_SNDOUT_T)                { return runSteps(switchOf(KEP_AUDIO_ARC).open, KEP_AUDIO_ARC); }
bool kepTVAudio::disconnectExternalArcOutput(KEP_AUDIO_SNDOUT_T)             { return runSteps(switchOf(KEP_AUDIO_ARC).close, KEP_AUDIO_ARC); }
bool kepTVAudio::connectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output)    { return runSteps(opticalSwitchOf(output).open, output); }
bool kepTVAudio::disconnectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output) { return runSteps(opticalSwitchOf(output).close, output); }
bool kepTVAudio::connectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output)    { return runSteps(switchOf(KEP_AUDIO_BLUETOOTH).open, output); }
bool kepTVAudio::disconnectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output) { return runSteps(switchOf(KEP_AUDIO_BLUETOOTH).close, output); }
bool kepTVAudio::connectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output)      { return runSteps(switchOf(KEP_AUDIO_BT_SOUNDBAR).open, output); }
bool kepTVAudio::disconnectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output)   { return runSteps(switchOf(KEP_AUDIO_BT_SOUNDBAR).close, output); }
// clang-format on
