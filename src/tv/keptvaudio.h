// SPDX-License-Identifier: Apache-2.0
// The backend of a television, registered as "TV".
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "controlelements.h"
#include "kepaudio.h"
#include "kepaudiotypes.h"
#include "kepexport.h"
#include "keptvamplifier.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvparser.h"
#include "keptvsoundengine.h"

struct _snd_hctl; // libasound's control handle

/// Routes the television's audio resources to its sound outputs and drives its audio middleware.
///
/// One class, because all of it works on one state; its definitions are divided over files, a room
/// each:
///   keptvaudio.cpp          registration, life cycle, active state
///   keptvaudiocontrol.cpp   the one door to the driver's control elements
///   keptvaudiostartup.cpp   the initial gains
///   keptvaudioutil.cpp      names to identifiers, identifiers to driver numbers
///
/// Calls come from one thread at a time. The start-up worker and GLib timers work on the same
/// object; what the worker shares with the caller is atomic, or behind the parameter store's guard.
class KEP_EXPORT kepTVAudio : public kepAudio
{
public:
    /// Whether the backend could enter itself in the registry under its name.
    static bool mIsObjRegistered;

    static kepTVAudio* getInstance();
    /// The creator: the one instance, null when the backend is not registered.
    static kepAudio* createObject();

    ~kepTVAudio() override;

    // --- kepAudio

    unsigned int initAudio() override;
    unsigned int deinitAudio() override;
    unsigned int connectInput(std::string source, std::string sink,
                              JValue pipelineAttribute) override;
    unsigned int disconnectInput(std::string source, std::string sink) override;
    unsigned int getHeadphoneStatus(bool* connected) override;
    unsigned int removePipelineInfo(std::string pipelineId) override;
    unsigned int setSoundOutput(std::string soundOutput) override;
    unsigned int setMute(std::string source, std::string sink, bool mute) override;
    unsigned int setOutputVolume(std::string soundOutput, std::uint8_t volume) override;
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume) override;
    unsigned int setOutputMute(std::string soundOutput, bool mute) override;
    unsigned int setMuteExtSPK(bool mute) override;
    unsigned int setQualityAttribute(JValue attribute) override;
    unsigned int setSettings(std::string category, JValue payload) override;
    JValue getSettings(const std::string& category, JValue request) override;

    // --- Life cycle (keptvaudio.cpp)

    unsigned int initSpeaker();
    /// Sets whether the backend is the active one; logged at info level, like the query.
    void setActiveState(bool active);
    bool getActiveState() const;

    // --- Identifiers (keptvaudioutil.cpp). Nothing fails: an unknown name has an identifier of its
    // own.

    /// The resource that source and sink name together; KEP_AUDIO_RESOURCE_INVALID when there is
    /// none.
    static KEP_AUDIO_RESOURCE_T getResourceId(const std::string& source, const std::string& sink);
    /// The output of that name; KEP_AUDIO_NO_OUTPUT when there is none.
    static KEP_AUDIO_SNDOUT_T getSoundOutputResourceId(const std::string& name);
    /// The driver's number for the resource's block; 0 when it has none.
    static unsigned int audioResourceIdToIndex(KEP_AUDIO_RESOURCE_T resource);
    /// The resource's port in its block; -1 when it has none.
    static int audioResourceIdToPort(KEP_AUDIO_RESOURCE_T resource);
    /// The driver's bit of a single output; 0 for combinations and for everything else.
    static unsigned int getSoundOutputCommonType(KEP_AUDIO_SNDOUT_T output);
    static bool isValidResource(KEP_AUDIO_RESOURCE_T resource);
    /// Whether the current sound output is one that can be selected.
    bool isValidSoundout() const;
    /// The output that waits for its noise guard to end; logged at info level.
    KEP_AUDIO_SNDOUT_T getPopNoiseSoundOutput() const;
    KEP_AUDIO_SNDOUT_T getCurrentSoundout() const { return mCurrentSoundout; }
    /// The stored setting "soundOutput"; "" when there is none.
    std::string getSoundOutputKey() const;

    // --- The driver (keptvaudiocontrol.cpp). False when the write failed, which has then been
    // logged.

    /// Writes the integers of the element of that name on the television's card.
    static bool setControlElement(const std::string& name, const std::int32_t* values, int count);
    /// Closes a handle; null is ignored.
    static void closeControlHandle(_snd_hctl* handle);
    /// Writes "Mute Output".
    static bool setMuteControlElement(KEP_AUDIO_SNDOUT_T output, bool mute);

    // --- Start-up (keptvaudiostartup.cpp)

    /// Writes the initial gain of every connected resource and of the speaker, and notes whether
    /// all of them went through. Failures are logged.
    void initGainAudio();

protected:
    kepTVAudio() = default;

    // What driver writes are made of, as the 32-bit integers that the elements hold.
    static std::int32_t typeOf(KEP_AUDIO_SNDOUT_T output)
    {
        return static_cast<std::int32_t>(getSoundOutputCommonType(output));
    }
    static std::int32_t indexOf(KEP_AUDIO_RESOURCE_T resource)
    {
        return static_cast<std::int32_t>(audioResourceIdToIndex(resource));
    }
    static std::int32_t portOf(KEP_AUDIO_RESOURCE_T resource)
    {
        return audioResourceIdToPort(resource);
    }
    /// Writes an element with exactly its number of integers.
    template <std::size_t Count>
    static bool write(const ControlElement<Count>& element, const std::int32_t (&values)[Count])
    {
        return setControlElement(element.name, values, static_cast<int>(Count));
    }

    // --- Life cycle
    void bindAdapters(kepTvParser* parser);

    bool mActiveState = true;

    // --- Adapters and store: singletons of their own, bound by initAudio, never deleted.
    kepTvParser* mPtrParserInstance = nullptr;
    kepTVAmplifier* mPtrTVAmplifier = nullptr;
    kepTVDelay* mPtrTVDelay = nullptr;
    kepTVGain* mPtrTVGain = nullptr;
    kepTVSoundEngine* mPtrTVSoundEngine = nullptr;

    // --- Routing
    KEP_AUDIO_SNDOUT_T mCurrentSoundout = KEP_AUDIO_NO_OUTPUT;
    std::vector<KEP_AUDIO_RESOURCE_T> mConnectedResources; // in order of connection

    // --- Headphone: state of all instances, for the timers' sake
    static unsigned int mHeadphoneUnmuteTimerID; // GLib source of the pending timer, 0 for none
    static bool mHeadphoneTimerMuteDone;
    KEP_AUDIO_SNDOUT_T mPopNoiseSoundOutput = KEP_AUDIO_NO_OUTPUT;

    // --- Digital outputs
    JValue mEarcCapability; // codecs that the connected eARC device announced

    // --- Start-up
    struct StartupConditions {
        bool contiConfigReceived = false;
        bool hardwareConfigApplied = false;
        bool modelConfigReceived = false;
    };
    StartupConditions mStartupConditions;            // the caller's thread only
    std::atomic<bool> mIsInitGainAudioUpdate{false}; // also written by the start-up worker

    // --- Pipelines and settings
    using AudioVideoInfo = std::map<std::string, std::string>;
    std::vector<AudioVideoInfo> AudioVideoInfoMapVector;
    std::vector<JValue> mSettingsList; // {"category", "value"}, at most one a category
    std::map<std::string, std::string> mStoredSettings;
};
