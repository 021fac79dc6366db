// SPDX-License-Identifier: Apache-2.0
// Output selection. A transition closes the members of the old output that the new one lacks, then
// opens those that the old one lacks; the few that differ are named below. Every step of a
// transition is made even when an earlier one failed; a single output's own sequence stops at its
// first failure.
#include <algorithm>

#include "keplog.h"
#include "keptvaudio.h"

/// A step of opening or closing a single output: a driver write, or the re-routing of all connected
/// resources.
enum class OutputStep : std::uint8_t {
    Open,
    Close,
    Connect,
    Disconnect,
    Mute,
    Unmute,
    UnmuteUnlessMuted, // the user's mute outlives the change
    LightOn,
    LightOff,
    SoundSync, // sound bar only: volume and mute as they are stored
};

namespace
{

using enum OutputStep;

constexpr const char* kSoundSyncSuffix = " for QN SOUND SYNC";

// The one combination that is closed in another order than it is opened, on the way to a single
// output.
constexpr KEP_AUDIO_SNDOUT_T kOpticalFirst[] = {KEP_AUDIO_SPDIF, KEP_AUDIO_SPK};

bool contains(std::span<const KEP_AUDIO_SNDOUT_T> members, KEP_AUDIO_SNDOUT_T output)
{
    return std::find(members.begin(), members.end(), output) != members.end();
}

} // namespace

unsigned int kepTVAudio::setSoundOutput(std::string soundOutput)
{
    const KEP_AUDIO_SNDOUT_T output = getSoundOutputResourceId(soundOutput);
    KEP_INFO("INFO_LOG", "Request to set soundOutput %s", soundOutput.c_str());
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
    KEP_INFO("INFO_LOG", "successfully set soundoutput %s", soundOutput.c_str());
    return KEP_RESULT_OK;
}

// --- Transitions, from mCurrentSoundout

bool kepTVAudio::moveTo(KEP_AUDIO_SNDOUT_T output)
{
    const auto before = membersOf(mCurrentSoundout);
    const auto after = membersOf(output);
    bool done = true;
    for (const KEP_AUDIO_SNDOUT_T member : before)
        if (!contains(after, member))
            done = disconnectOutput(member) && done;
    for (const KEP_AUDIO_SNDOUT_T member : after)
        if (!contains(before, member))
            done = connectOutput(member) && done;
    return done;
}

bool kepTVAudio::handleSetSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    switch (output) {
    case KEP_AUDIO_SPK_SPDIF:
        return setSpeakerSpdifSoundOutput();
    case KEP_AUDIO_HP:
        return setHPSoundOutput();
    case KEP_AUDIO_ARC:
    case KEP_AUDIO_QN_SOUND_SYNC:
    case KEP_AUDIO_BT_SOUNDBAR:
    case KEP_AUDIO_WISA:
        return setSingularSoundOutput(output);
    case KEP_AUDIO_SPK_HP:
        return setSpeakerHPSoundOutput();
    case KEP_AUDIO_SPK_BLUETOOTH:
        return setSpeakerBluetoothSoundOutput();
    case KEP_AUDIO_SPK_OPTICAL_ARC:
        KEP_INFO("INFO_LOG", "Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC");
        return setSpeakerOpticalArcSoundOutput();
    default:
        return setTvSpeakerSoundOutput(output);
    }
}

bool kepTVAudio::setSingularSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    // Everything is closed, the new output included: the driver wants it opened afresh.
    const bool optical = mCurrentSoundout == KEP_AUDIO_SPK_SPDIF;
    bool done = true;
    for (const KEP_AUDIO_SNDOUT_T member :
         optical ? std::span<const KEP_AUDIO_SNDOUT_T>{kOpticalFirst} : membersOf(mCurrentSoundout))
        done = disconnectOutput(member) && done;
    return connectOutput(output) && done;
}

bool kepTVAudio::setSpeakerSpdifSoundOutput()
{
    return moveTo(KEP_AUDIO_SPK_SPDIF);
}

bool kepTVAudio::setHPSoundOutput()
{
    return moveTo(KEP_AUDIO_HP);
}

bool kepTVAudio::setSpeakerHPSoundOutput()
{
    // The headphone stays open, but a mute of it alone must not outlive the change.
    const bool unmuted = mCurrentSoundout != KEP_AUDIO_HP || setMuteHeadphone(/*mute=*/false);
    return moveTo(KEP_AUDIO_SPK_HP) && unmuted;
}

bool kepTVAudio::setSpeakerBluetoothSoundOutput()
{
    return moveTo(KEP_AUDIO_SPK_BLUETOOTH);
}

bool kepTVAudio::setSpeakerOpticalArcSoundOutput()
{
    return moveTo(KEP_AUDIO_SPK_OPTICAL_ARC);
}

bool kepTVAudio::setTvSpeakerSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    switch (mCurrentSoundout) {
    case KEP_AUDIO_SPK_SPDIF:
        return setTvSpeakerSpdifSoundOutput(output);
    case KEP_AUDIO_SPK_HP:
        return setTvSpeakerHPSoundOutput(output);
    case KEP_AUDIO_SPK_OPTICAL_ARC:
        return setTvSpeakerOpticalArcSoundOutput(output);
    case KEP_AUDIO_SPK_BLUETOOTH:
        return setTvSpeakerBluetoothSoundOutput(output);
    default:
        return moveTo(output);
    }
}

bool kepTVAudio::setTvSpeakerSpdifSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    return moveTo(output);
}

bool kepTVAudio::setTvSpeakerHPSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    return moveTo(output);
}

bool kepTVAudio::setTvSpeakerOpticalArcSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    return moveTo(output);
}

bool kepTVAudio::setTvSpeakerBluetoothSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    return moveTo(output);
}

// --- Single outputs

struct kepTVAudio::OutputPair {
    using Operation = bool (kepTVAudio::*)(KEP_AUDIO_SNDOUT_T);

    KEP_AUDIO_SNDOUT_T output;
    Operation connect;
    Operation disconnect;
};

// clang-format off
const kepTVAudio::OutputPair kepTVAudio::kOutputPairs[] = {
    {KEP_AUDIO_SPK,           &kepTVAudio::connectTvSpeakerOutput,        &kepTVAudio::disconnectTvSpeakerOutput},
    {KEP_AUDIO_SPDIF,         &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
    {KEP_AUDIO_HP,            &kepTVAudio::connectHPOutput,               &kepTVAudio::disconnectHPOutput},
    {KEP_AUDIO_ARC,           &kepTVAudio::connectExternalArcOutput,      &kepTVAudio::disconnectExternalArcOutput},
    {KEP_AUDIO_QN_SOUND_SYNC, &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
    {KEP_AUDIO_BT_SOUNDBAR,   &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
    {KEP_AUDIO_WISA,          &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
    {KEP_AUDIO_BLUETOOTH,     &kepTVAudio::connectSpeakerBluetoothOutput, &kepTVAudio::disconnectSpeakerBluetoothOutput},
};
// clang-format on

bool kepTVAudio::connectOutput(KEP_AUDIO_SNDOUT_T output)
{
    KEP_INFO("INFO_LOG", "Connect outputType %d", output);
    for (const OutputPair& pair : kOutputPairs)
        if (pair.output == output)
            return (this->*pair.connect)(output);
    return output == KEP_AUDIO_NO_OUTPUT; // nothing to open
}

bool kepTVAudio::disconnectOutput(KEP_AUDIO_SNDOUT_T output)
{
    KEP_INFO("INFO_LOG", "disconnect outputType %d", output);
    for (const OutputPair& pair : kOutputPairs)
        if (pair.output == output)
            return (this->*pair.disconnect)(output);
    return output == KEP_AUDIO_NO_OUTPUT;
}

bool kepTVAudio::runStep(OutputStep step, KEP_AUDIO_SNDOUT_T output, const char* suffix,
                         const kepLogOrigin& origin)
{
    const std::int32_t type = typeOf(output);
    switch (step) {
    case Open:
        return writeOrLog(kSndoutOpen, {type}, suffix, origin);
    case Close:
        return writeOrLog(kSndoutClose, {type}, suffix, origin);
    case Connect:
    case Disconnect:
        return mConnectedResources.empty() || connectDisconnectResources(type, step == Connect);
    case UnmuteUnlessMuted:
        return mOutputMuteStatus || runStep(Unmute, output, suffix, origin);
    case Mute:
    case Unmute:
        return writeOrLog(kMuteOutput, {type, step == Mute ? 1 : 0}, suffix, origin);
    case LightOn:
    case LightOff:
        return writeOrLog(kSndoutOpticLight, {step == LightOn ? 1 : 0}, suffix, origin);
    case SoundSync:
        return output != KEP_AUDIO_QN_SOUND_SYNC ||
               writeOrLog(kSndoutOpticQn, {1, mOutputVolume, mOutputMuteStatus ? 1 : 0, 1},
                          kSoundSyncSuffix, origin);
    }
    return false;
}

bool kepTVAudio::runSteps(std::initializer_list<OutputStep> steps, KEP_AUDIO_SNDOUT_T output,
                          const char* suffix, const kepLogOrigin& origin)
{
    return std::all_of(steps.begin(), steps.end(),
                       [&](OutputStep step) { return runStep(step, output, suffix, origin); });
}

bool kepTVAudio::connectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Open, Connect, UnmuteUnlessMuted}, output, " for tv speaker");
}

bool kepTVAudio::disconnectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Disconnect, Close, Mute}, output, " for tv speaker");
}

bool kepTVAudio::connectExternalArcOutput(KEP_AUDIO_SNDOUT_T)
{
    return runSteps({Open, Connect, Unmute}, KEP_AUDIO_ARC);
}

bool kepTVAudio::disconnectExternalArcOutput(KEP_AUDIO_SNDOUT_T)
{
    return runSteps({Disconnect, Close, Mute}, KEP_AUDIO_ARC);
}

bool kepTVAudio::connectHPOutput(KEP_AUDIO_SNDOUT_T output)
{
    KEP_INFO("INFO_LOG", "connectHPOutput:: Connect soundoutput %d", output);
    const bool firstSinceAcOn = mCurrentSoundout == KEP_AUDIO_NO_OUTPUT;
    if (firstSinceAcOn) {
        KEP_INFO("INFO_LOG", "AC On headphone is selected, so muting to avoid noise");
        setMuteHeadphone(/*mute=*/true); // at worst there is a noise
    }
    if (!runSteps({Open, Connect, Unmute}, output, " for Headphone"))
        return false;
    if (firstSinceAcOn) {
        KEP_INFO("INFO_LOG", "During AC ON, headphone selected timer running, so skipping unmute");
        return true;
    }
    return setMuteHeadphone(/*mute=*/false);
}

bool kepTVAudio::disconnectHPOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Disconnect, Close, Mute}, output, " for Headphone") &&
           setMuteHeadphone(/*mute=*/true);
}

bool kepTVAudio::connectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Open, Mute, Connect, LightOn, SoundSync, Unmute}, output,
                    " for external speaker/QN SOUND SYNC");
}

bool kepTVAudio::disconnectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Disconnect, Mute, LightOff, Close}, output,
                    " for external speaker/QN sound sync"); // sic
}

bool kepTVAudio::connectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Open, Connect}, output);
}

bool kepTVAudio::disconnectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Disconnect, Close}, output);
}

bool kepTVAudio::connectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Open, Connect}, output);
}

bool kepTVAudio::disconnectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output)
{
    return runSteps({Disconnect, Close}, output);
}
