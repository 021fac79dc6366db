// SPDX-License-Identifier: Apache-2.0
// Headphone and power state: a television must not pop or hiss when it starts, resumes or changes
// output. Two gates stand before executeMuteHeadphone (headphonemute.h): the timer after power-on
// or resume, and the three reasons to stay muted. Not behind them are the driver's unmute when the
// output is opened, and executeMuteExtSpeaker, which uses the same line of the board.
#include <cstring>

#include <glib.h>

#include "controlwrites.h"
#include "headphonemute.h"
#include "hwiogpio.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "payloadkeys.h"
#include "soundoutputs.h"
#include "subcpu.h"

namespace
{

constexpr const char* kHeadphoneLine = "GPIO_RD_HP_LINK";
constexpr unsigned int kUnmuteDelayMs = 5000;
constexpr const char* kTimerStarted = // names the delay
    "Bootup, muting headphone to avoid noise. Timer is started for 5 sec";
constexpr unsigned int kClaimedTimer = ~0U; // pending, its GLib source not yet known
constexpr unsigned int kSoundSyncOffPauseUs = 50'000;

PowerStateMute powerStateMuteOf(KEP_AUDIO_SNDOUT_T output)
{
    const SoundOutput* row = findSoundOutput(output);
    return row != nullptr ? row->powerStateMute : PowerStateMute::None;
}

bool isSpeakerAndHeadphone(KEP_AUDIO_SNDOUT_T output)
{
    const OutputMembers members{output};
    return members.contains(KEP_AUDIO_SPK) && members.contains(KEP_AUDIO_HP);
}

} // namespace

std::atomic<unsigned int> kepTVAudio::mHeadphoneUnmuteTimerID{0};
std::atomic<bool> kepTVAudio::mHeadphoneTimerMuteDone{false};

unsigned int kepTVAudio::getHeadphoneStatus(bool* connected)
try {
    requireStarted();
    std::uint8_t level = 0;
    const int status = HWIO_GPIO_ReadInputPort(kHeadphoneLine, &level);
    if (status != 0) {
        KEP_ERROR("HWIO_GPIO_ERROR", "Received error from HWIO library Status: %d ", status); // sic
        return KEP_RESULT_FAILED;
    }
    if (connected != nullptr)
        *connected = level != 0;
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

// --- The mute decision

HeadphoneMute kepTVAudio::headphoneMute() const
{
    return {.byCaller = mHeadphoneMuteStatus,
            .byDetection = mHeadphoneDetectionMute,
            .byPowerState = mPowerStateHeadphoneMute,
            .timerIsPending = mHeadphoneUnmuteTimerID != 0,
            .timerHasRun = mHeadphoneTimerMuteDone};
}

bool kepTVAudio::isValidHeadphoneMute(bool mute) const
{
    const HeadphoneMute now = headphoneMute();
    KEP_INFO("%s check %d %d %d", __func__, now.byCaller, now.byDetection, now.byPowerState);
    return now.reasonsAllow(mute);
}

bool kepTVAudio::executeMuteHeadphone(bool mute)
{
    KEP_INFO("Called execute muteHeadphone muteStatus %d", mute);
    if (!isValidHeadphoneMute(mute)) {
        KEP_INFO("Headphone mute is not valid");
        return true;
    }
    bool done = true;
    if (subcpu_misc_Set_HPMuteOnOff(mute) != 0) {
        KEP_ERROR("SUBCPU_ERROR", "Failed to set headphone mute status %d", mute);
        done = false; // the driver is told all the same
    }
    return setMuteControlElement(KEP_AUDIO_HP, mute) && done;
}

bool kepTVAudio::startUnmuteTimer(int (*callback)(void*))
{
    // The caller's thread and the start-up worker may both want one: the first to claim it gets it.
    unsigned int pending = 0;
    if (!mHeadphoneUnmuteTimerID.compare_exchange_strong(pending, kClaimedTimer))
        return false;
    const unsigned int timer = g_timeout_add(kUnmuteDelayMs, callback, this);
    unsigned int claimed = kClaimedTimer; // unless it has fired already
    mHeadphoneUnmuteTimerID.compare_exchange_strong(claimed, timer);
    return true;
}

bool kepTVAudio::isUnmuteHeldBack(const kepLogOrigin& origin, bool mute) const
{
    switch (headphoneMute().askTimer(mute)) {
    case TimerAnswer::Passes:
        return false;
    case TimerAnswer::HeldBack:
        KEP_INFO_AS(origin, "To avoid noise Headphone timer is running, so skip headphone unmute");
        return true;
    case TimerAnswer::NeverRanOut:
        KEP_INFO_AS(origin,
                    "Headphone timer has not been make yet, so skip headphone unmute"); // sic
        return true;
    }
    return false;
}

void kepTVAudio::muteHeadphoneOnColdStart()
{
    const kepLogOrigin origin = KEP_HERE.as("startXmlParsing");
    if (!setMuteHeadphone(/*mute=*/true))
        return;
    KEP_INFO_AS(origin, "Snapshot Bootup, muting headphone to avoid noise during AC on");
    if (startUnmuteTimer(&_headphoneUnmuteAcOnCallback))
        KEP_INFO_AS(origin, "%s", kTimerStarted);
}

bool kepTVAudio::setMuteHeadphone(bool mute)
{
    KEP_INFO("Called setMuteHeadphone muteStatus %d", mute);
    mHeadphoneMuteStatus = mute;
    KEP_INFO("Called setMuteHeadphone mHeadphoneMuteStatus %d", mute);
    return isUnmuteHeldBack(KEP_HERE, mute) || executeMuteHeadphone(mute);
}

bool kepTVAudio::setHeadphoneDetectionMute(bool mute)
{
    KEP_INFO("Called setHeadphoneDetectionMute muteStatus %d", mute);
    mHeadphoneDetectionMute = mute;
    if (isUnmuteHeldBack(KEP_HERE, mute))
        return true;
    executeMuteExtSpeaker(mute);
    return executeMuteHeadphone(mute);
}

bool kepTVAudio::setHeadphoneDetectionMute(JValue payload)
{
    const bool mute = payload[key::kMute.name].asBool();
    KEP_INFO("Setting headphone detection mute to %d", mute);
    return payload.hasKey(key::kMute.name) && setHeadphoneDetectionMute(mute);
}

// --- Muting by power state

bool kepTVAudio::setPowerStateMute(JValue payload)
{
    if (!payload.hasKey(key::kMutedOutput.name) || !payload.hasKey(key::kMute.name))
        return true;
    const std::string name = payload[key::kMutedOutput.name].asString();
    const bool mute = payload[key::kMute.name].asBool();
    KEP_INFO("Setting powerState mute to %d on soundOutputType %s", mute, name.c_str());
    const KEP_AUDIO_SNDOUT_T output = getSoundOutputResourceId(name);
    mPowerStateHeadphoneMute = mute;
    switch (powerStateMuteOf(output)) {
    case PowerStateMute::None:
        return false;
    case PowerStateMute::Speaker:
        return setPowerStateTvSpeakerMute(output, mute);
    case PowerStateMute::Optical:
        // sic: by this name alone, not by its other one; callers rely on it
        return setMuteControlElement(getSoundOutputKey() == "external_arc" ? KEP_AUDIO_ARC : output,
                                     mute);
    case PowerStateMute::Headphone:
        return setPowerStateHeadphoneMute(output, mute);
    case PowerStateMute::Output:
        return setMuteControlElement(output, mute);
    }
    return false;
}

bool kepTVAudio::setPowerStateTvSpeakerMute(KEP_AUDIO_SNDOUT_T output, bool mute)
{
    KEP_INFO("setPowerStateTvSpeakerMute soundOutResourceId %d", output);
    bool done = setMuteControlElement(KEP_AUDIO_SPK, mute); // whatever the output
    if (done && mOutputVolume != 0)
        mPtrTVAmplifier->setAmplifierMute(mute);
    if (powerStateMuteOf(output) != PowerStateMute::Speaker)
        return done;
    for (const KEP_AUDIO_SNDOUT_T member : OutputMembers{output})
        if (member != KEP_AUDIO_SPK)
            done = setMuteControlElement(member, mute) && done;
    return done;
}

bool kepTVAudio::setPowerStateHeadphoneMute(KEP_AUDIO_SNDOUT_T output, bool mute)
{
    KEP_INFO("setPowerStateHeadphoneMute soundOutResourceId %d", output);
    if (mIsPrepareResume && !mute) {
        KEP_INFO("Prepare resume is in progress, so started headphone unmute timer");
        mPopNoiseSoundOutput = output;
        mIsPrepareResume = false;
        startUnmuteTimer(&_resetHeadphoneUnmuteTimerCallback);
        return true;
    }
    const bool withSpeaker = isSpeakerAndHeadphone(output);
    if (isUnmuteHeldBack(KEP_HERE, mute)) {
        if (withSpeaker)
            setMuteControlElement(KEP_AUDIO_SPK, mute); // the speaker need not wait
        return false; // sic: held back is a failure here, and a success elsewhere; callers rely on
                      // it
    }
    executeMuteExtSpeaker(mute);
    bool done = executeMuteHeadphone(mute);
    if (!withSpeaker)
        return done;
    done = setMuteControlElement(KEP_AUDIO_SPK, mute) && done;
    if (done && mOutputVolume != 0)
        mPtrTVAmplifier->setAmplifierMute(mute);
    return done;
}

// --- Timers

/// Ends the pending timer; false when there is none.
bool kepTVAudio::endUnmuteTimer(const kepLogOrigin& origin, const char* line)
{
    const unsigned int timer = mHeadphoneUnmuteTimerID;
    if (timer == 0)
        return false;
    KEP_INFO_AS(origin, "%s", line);
    if (timer != kClaimedTimer)
        g_source_remove(timer);
    mHeadphoneUnmuteTimerID = 0;
    mHeadphoneTimerMuteDone = true;
    return true;
}

int kepTVAudio::_resetHeadphoneUnmuteTimerCallback(void* backend)
try {
    KEP_INFO("In _resetHeadphoneUnmuteTimerCallback");
    auto* audio = static_cast<kepTVAudio*>(backend);
    if (endUnmuteTimer(KEP_HERE, "Headphone Unmute Timer will be removed while timeout") &&
        audio != nullptr)
        audio->setPowerStateHeadphoneMute(audio->getPopNoiseSoundOutput(), /*mute=*/false);
    return G_SOURCE_REMOVE;
} catch (...) {
    return kepCaught(KEP_HERE, G_SOURCE_REMOVE);
}

int kepTVAudio::_headphoneUnmuteAcOnCallback(void* backend)
try {
    KEP_INFO("In _headphoneUnmuteAcOnCallback");
    auto* audio = static_cast<kepTVAudio*>(backend);
    if (endUnmuteTimer(KEP_HERE, "Headphone Unmute Timer will be removed during AC On") &&
        audio != nullptr && OutputMembers{audio->mCurrentSoundout}.contains(KEP_AUDIO_HP))
        audio->setMuteHeadphone(/*mute=*/false);
    return G_SOURCE_REMOVE;
} catch (...) {
    return kepCaught(KEP_HERE, G_SOURCE_REMOVE);
}

// --- Sound bar, light and model

bool kepTVAudio::setQNSoundbarState(JValue payload)
{
    KEP_DEBUG("Set Qn Sound Bar status based on power state %s", payload.stringify().c_str());
    std::string state;
    if (!payload[key::kPowerState.name].asString(state)) {
        KEP_ERROR("INVALID_PARAMETER", "powerState key is not available");
        return false;
    }
    if (state == "on" || state == "off")
        return setPowerOnOffQNSoundSync(state);
    if (state == "opticLightOn" || state == "opticLightOff")
        return setOpticLightOnOff(state);
    KEP_ERROR("INVALID_PARAMETER", "Invalid power status: %s", state.c_str());
    return false;
}

bool kepTVAudio::setPowerOnOffQNSoundSync(std::string state)
{
    KEP_INFO("setPowerOnOffQNSoundSync, power state is %s", state.c_str());
    if (mCurrentSoundout != KEP_AUDIO_QN_SOUND_SYNC) {
        KEP_INFO(
            "SOUNDOUT_OPTICQN_POWER ON/OFF is not set, since QNSoundSync is not current soundout");
        return false;
    }
    const bool done =
        writeOrLog(KEP_HERE, kSndoutOpticQn,
                   {kOpticQnKey, mOutputVolume, mOutputMuteStatus ? 1 : 0, state == "on" ? 1 : 0},
                   " for QN SOUND SYNC");
    if (done)
        KEP_INFO("Set SOUNDOUT_OPTICQN_POWER ON/OFF is success");
    if (state == "off")
        g_usleep(kSoundSyncOffPauseUs); // the sound bar has to see it before the light goes
    return done;
}

bool kepTVAudio::setOpticLightOnOff(std::string state)
{
    KEP_INFO("setOpticLightOnOff, power state is %s", state.c_str());
    if (!hasOpticalLight(mCurrentSoundout)) {
        KEP_INFO("SPDIF_LIGHT ON/OFF is not set, since not supported soundout");
        return true;
    }
    if (!writeOrLog(KEP_HERE, kSndoutOpticLight, {state == "opticLightOn" ? 1 : 0}))
        return false;
    KEP_INFO("Set SPDIF_LIGHT ON/OFF is success");
    return true;
}

void kepTVAudio::setSupportBnoModel(bool supported)
{
    mSupportBnoModel = supported;
    KEP_INFO("Setting support bno model: %d", supported);
}

bool kepTVAudio::getSupportBnoModel() const
{
    KEP_INFO("Getting support bno model: %d", mSupportBnoModel);
    return mSupportBnoModel;
}

bool kepTVAudio::getPowerStateHeadphoneMute() const
{
    return mPowerStateHeadphoneMute;
}

bool kepTVAudio::getMuteHeadphoneDetection() const
{
    return mHeadphoneDetectionMute;
}

bool kepTVAudio::getMuteHeadphone() const
{
    return mHeadphoneMuteStatus;
}
