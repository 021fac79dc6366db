// SPDX-License-Identifier: Apache-2.0
// The backend of a television, registered as "TV".
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kepaudio.h"
#include "kepaudiotypes.h"
#include "kepexport.h"

// Private to the library.
struct _snd_hctl; // libasound's control handle
struct kepLogOrigin;
class kepCatalogue;
class kepTvParser;
class kepTVAmplifier;
class kepTVDelay;
class kepTVGain;
class kepTVSoundEngine;
enum class OutputStep : std::uint8_t;
struct OutputSequence;
struct DigitalFormats;
struct HeadphoneMute;

/// The attributes of one media pipeline.
using AudioVideoInfo = std::map<std::string, std::string>;

/// Routes the television's audio resources to its sound outputs and drives its audio middleware.
///
// clang-format off
/// One class, because all of it works on one state; its definitions are divided over files, a room each, and
/// below a banner each, in this order (a file is called a room elsewhere):
///
///   keptvaudio.cpp                    registration, life cycle, active state, entry point of settings
///   keptvaudioutil.cpp                names to identifiers, identifiers to driver numbers, predicates
///   keptvaudio.control.cpp            the one door to the driver's control elements
///   keptvaudio.routing.cpp            inputs: connecting resources to the current output
///   keptvaudio.output.cpp             output selection
///   keptvaudio.volume.cpp             volume and mute
///   keptvaudio.headphone.cpp          headphone, and muting by power state
///   keptvaudio.digital.cpp            formats of optical, ARC and eARC
///   keptvaudio.startup.cpp            the initial gains, the start-up worker
///   *.pipelines.cpp                   pipelines: their store, their reports, what the middleware is given of them
///   keptvaudiosettings.cpp            settings categories, and the store of settings
///   keptvaudioquality.queries.cpp     queries of settings
///
/// What is a fact and not a rule stands in tables beside them: outputs, control elements, settings categories.
///
/// A log line names its file, up to the first dot, and its operation, and both are as fixed as its text. So some
/// operations stand where their lines have always said, some only forward, and pipelines have four files.
// clang-format on
///
/// Calls come from one thread at a time, the caller's; GLib timers run on it, too. The start-up
/// worker works beside it on the same object, with copies and atomics only. Nothing thrown leaves
/// an operation of `kepAudio`: it fails, with an error line. The other operations are what those
/// are made of, and do not catch.
class KEP_EXPORT kepTVAudio : public kepAudio
{
    // --- keptvaudio.cpp: life cycle
public:
    /// Whether the backend could enter itself in the registry under its name.
    static bool mIsObjRegistered;

    static kepTVAudio* getInstance();
    /// The creator: the one instance, null when the backend is not registered.
    static kepAudio* createObject();
    ~kepTVAudio() override;

    unsigned int initAudio() override;
    unsigned int deinitAudio() override;
    unsigned int initSpeaker();
    /// Sets whether the backend is the active one; logged at info level, like the query.
    void setActiveState(bool active);
    bool getActiveState() const;
    unsigned int setSettings(std::string category, JValue payload) override;

protected:
    kepTVAudio();

    void bindAdapters(kepTvParser* parser);
    void leaveRegistry(const kepLogOrigin& origin);
    /// Throws until initAudio has come to its end: the adapters have nothing to talk to before.
    void requireStarted() const;

    // --- keptvaudioutil.cpp: identifiers. Nothing fails: an unknown name has an identifier of its
    // own.
public:
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
    KEP_AUDIO_SNDOUT_T getCurrentSoundout() const;
    /// The name that setSoundOutput was last given and knew, carried out or not; "" before.
    std::string getSoundOutputKey() const;

    // --- keptvaudio.control.cpp: the driver. False when the write failed, which has then been
    // logged.

    /// Writes the integers of the element of that name on the television's card.
    static bool setControlElement(const std::string& name, const std::int32_t* values, int count);
    /// Closes a handle; null is ignored.
    static void closeControlHandle(_snd_hctl* handle);
    /// Writes "Mute Output".
    static bool setMuteControlElement(KEP_AUDIO_SNDOUT_T output, bool mute);

    // --- keptvaudio.routing.cpp: inputs. Result: KEP_RESULT_OK or KEP_RESULT_FAILED. Members of a
    // combination are written one after the other up to the first failure; nothing is undone.

    unsigned int connectInput(std::string source, std::string sink,
                              JValue pipelineAttribute) override;
    unsigned int disconnectInput(std::string source, std::string sink) override;
    /// Connects or disconnects a resource and every member of the current sound output.
    unsigned int checkConnectInputResource(KEP_AUDIO_RESOURCE_T resource);
    unsigned int checkDisconnectInputResource(KEP_AUDIO_RESOURCE_T resource);
    /// Connects or disconnects a resource and one single output.
    unsigned int connectInputResource(KEP_AUDIO_RESOURCE_T resource, KEP_AUDIO_SNDOUT_T output);
    unsigned int disconnectInputResource(KEP_AUDIO_RESOURCE_T resource, KEP_AUDIO_SNDOUT_T output);
    /// Connects or disconnects all connected resources and the output of that driver bit; false at
    /// the first failure.
    bool connectDisconnectResources(int outputType, bool connect);

protected:
    /// The current output; whatever cannot be one counts as speaker and optical.
    KEP_AUDIO_SNDOUT_T routedOutput() const;
    /// A copy, for whatever thread.
    std::vector<KEP_AUDIO_RESOURCE_T> connectedResources() const;

    // --- keptvaudio.output.cpp: output selection. False when a step failed, which has then been
    // logged; a transition makes its other steps all the same.
public:
    unsigned int setSoundOutput(std::string soundOutput) override;
    bool handleSetSoundOutput(KEP_AUDIO_SNDOUT_T output);
    // Fixed names of transitions, for callers from outside. Nothing tells them apart but what their
    // names say they lead to or come from: the table of outputs (soundoutputs.cpp) knows what
    // differs.
    bool setSingularSoundOutput(KEP_AUDIO_SNDOUT_T output);
    bool setSpeakerSpdifSoundOutput();
    bool setHPSoundOutput();
    bool setSpeakerHPSoundOutput();
    bool setSpeakerBluetoothSoundOutput();
    bool setSpeakerOpticalArcSoundOutput();
    bool setTvSpeakerSoundOutput(KEP_AUDIO_SNDOUT_T output);
    bool setTvSpeakerSpdifSoundOutput(KEP_AUDIO_SNDOUT_T output);
    bool setTvSpeakerHPSoundOutput(KEP_AUDIO_SNDOUT_T output);
    bool setTvSpeakerOpticalArcSoundOutput(KEP_AUDIO_SNDOUT_T output);
    bool setTvSpeakerBluetoothSoundOutput(KEP_AUDIO_SNDOUT_T output);

    /// Opens or closes one single output; false for one that the driver does not know.
    bool connectOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectOutput(KEP_AUDIO_SNDOUT_T output);
    // Fixed names, for callers from outside: each runs the steps that the table has for the output
    // it is named after.
    bool connectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectTvSpeakerOutput(KEP_AUDIO_SNDOUT_T output);
    bool connectHPOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectHPOutput(KEP_AUDIO_SNDOUT_T output);
    bool connectExternalArcOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectExternalArcOutput(KEP_AUDIO_SNDOUT_T output);
    bool connectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectSpdifOrQNSndSyncOutput(KEP_AUDIO_SNDOUT_T output);
    bool connectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectSpeakerBluetoothOutput(KEP_AUDIO_SNDOUT_T output);
    bool connectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output);
    bool disconnectBTSndBarOrWisaOutput(KEP_AUDIO_SNDOUT_T output);

protected:
    /// Closes the members that the output lacks, then opens those that it has in addition.
    bool moveTo(KEP_AUDIO_SNDOUT_T output);
    /// Closes all members, then opens the output.
    bool openAfresh(KEP_AUDIO_SNDOUT_T output);
    /// What the current output, alone so far, does when it stays open as a member of this one.
    bool joinInto(KEP_AUDIO_SNDOUT_T output);
    /// Makes the steps in order, up to the first failure.
    bool runSteps(const OutputSequence& sequence, KEP_AUDIO_SNDOUT_T output);
    bool runStep(OutputStep step, KEP_AUDIO_SNDOUT_T output, const OutputSequence& sequence);
    void guardHeadphone(KEP_AUDIO_SNDOUT_T output);
    bool unguardHeadphone();

    // --- keptvaudio.volume.cpp: volume, 0 to 255, and mute
public:
    unsigned int setOutputVolume(std::string soundOutput, std::uint8_t volume) override;
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume) override;
    unsigned int setOutputMute(std::string soundOutput, bool mute) override;
    unsigned int setMute(std::string source, std::string sink, bool mute) override;
    unsigned int setMuteExtSPK(bool mute) override;
    /// Sets the volume of the speaker family; 0 mutes the amplifier, leaving 0 unmutes it.
    bool setSpeakerHeadphoneOutputVolume(std::uint8_t volume);
    bool setQNSoundSyncOutputVolume(std::uint8_t volume, bool mute);
    /// Mutes the speaker and, unless the volume is 0, the amplifier. Result code.
    unsigned int setSpeakerOutputMute(const bool& mute);
    /// Mutes the external speaker, through the line of the headphone amplifier.
    bool executeMuteExtSpeaker(const bool& mute);

    // --- keptvaudio.headphone.cpp: headphone and power state. Three reasons may hold the
    // headphone's amplifier muted; it is unmuted when none is left. After power-on and resume a
    // timer holds unmutes back: they succeed, and the timer makes up for them; by power state alone
    // they fail.

    unsigned int getHeadphoneStatus(bool* connected) override;
    bool setMuteHeadphone(bool mute);
    /// Mutes or unmutes the hardware, if the three reasons allow it.
    bool executeMuteHeadphone(bool mute);
    /// Whether the request may reach the hardware.
    bool isValidHeadphoneMute(bool mute) const;
    bool setHeadphoneDetectionMute(bool mute);
    /// The same for {"mute"}; false without it.
    bool setHeadphoneDetectionMute(JValue payload);
    /// Mutes what {"soundOutput", "mute"} names; true, with nothing done, when one of them is
    /// missing.
    bool setPowerStateMute(JValue payload);
    bool setPowerStateTvSpeakerMute(KEP_AUDIO_SNDOUT_T output, bool mute);
    bool setPowerStateHeadphoneMute(KEP_AUDIO_SNDOUT_T output, bool mute);
    /// One-shot GLib timers after resume and after power-on; `backend` is a kepTVAudio, or null.
    static int _resetHeadphoneUnmuteTimerCallback(void* backend);
    static int _headphoneUnmuteAcOnCallback(void* backend);
    /// Acts on {"powerState"}: "on" and "off" the sound bar, "opticLightOn" and "opticLightOff" the
    /// light.
    bool setQNSoundbarState(JValue payload);
    bool setPowerOnOffQNSoundSync(std::string state);
    bool setOpticLightOnOff(std::string state);
    void setSupportBnoModel(bool supported);
    bool getSupportBnoModel() const;
    bool getPowerStateHeadphoneMute() const;
    bool getMuteHeadphoneDetection() const;
    bool getMuteHeadphone() const;

protected:
    /// Starts the timer that lets the headphone be unmuted; false when one is pending already.
    bool startUnmuteTimer(int (*callback)(void*));
    static bool endUnmuteTimer(const kepLogOrigin& origin, const char* line);
    /// All that decides about a mute, as it stands now.
    HeadphoneMute headphoneMute() const;
    bool isUnmuteHeldBack(const kepLogOrigin& origin, bool mute) const;
    void muteHeadphoneOnColdStart();

    // --- keptvaudio.digital.cpp: digital outputs. Digital modes: "pcm", "auto", "passThrough".
    // False when an element could not be written, which has then been logged.
public:
    /// Writes the formats of optical and ARC for the mode, then that of eARC.
    bool setSoundOutputDigital(std::string mode);
    /// The mode of the current output: the user's for optical and ARC, "pcm" for every other one.
    std::string getSoundOutputDigitalMode() const;
    /// The driver's format numbers; 0 for an unknown mode.
    int getSoundOutputOpticMode(std::string mode) const;
    int getSoundOutputArcMode(std::string mode) const;
    int getPassThroughOpticMode() const;
    int getAutoOpticMode() const;
    int getPassThroughArcMode() const;
    int getAutoArcMode() const;
    bool setEarcSoundOutputDigital(std::string mode);
    bool setEArcOutputType(sndout_earc_output_codec_type codec, sndout_earc_output_mix_option mix);
    bool setEArcOutputTypeForPassThrough();
    bool checkReEncodePriority();
    bool setDolbyForJP();
    bool setDolbyForNonJP();
    bool setEArcOutputTypeForDTS();
    /// The codec of the current pipeline; "" when it is not known.
    std::string getInputCodecType() const;
    bool isInputCodecPCM() const;
    bool isEarcCapabilityAvailable(std::string codec) const;
    /// Takes over the codecs that the eARC device announces, and applies the digital mode anew.
    bool updateEarcCapability(JValue capability);
    /// Applies "immersive" and "codec" of a pipeline.
    void updateCodecImmersiveFormat(const AudioVideoInfo& pipeline);
    bool isCountryCodeJP() const;
    /// Switches ARC, then eARC, which is left alone when the first failed.
    bool setArcOnOff(int arc, int earc);
    void setAtmosEncode(bool on);
    void setAtmosEncodeForARCProfile(std::string profile, std::string activation);
    void setAtmosEncodeForEARCProfile(bool atmos, std::string activation);
    bool setOTTAdecMode(bool ott, bool atmosLock);
    /// Writes the category code of the broadcast system that the settings named.
    void setBroadcastSystem();
    /// The driver's numbers of a copyright: "free", "no_more", "once", "never"; 0 for any other
    /// text.
    int getSoundOutOpticCopyValue(std::string copyright) const;
    int getSoundOutArcCopyValue(std::string copyright) const;
    bool isValidCopyright(std::string copyright) const;
    bool setSpdifSecurity(std::string copyright);

protected:
    /// A parameter of the settings, or of the current pipeline; empty when there is none.
    std::optional<std::string> qualityParam(const char* key) const;
    std::optional<std::string> avParam(const char* key) const;
    bool reapplyDigitalMode();
    /// What the formats follow from, as it stands now.
    DigitalFormats digitalFormats() const;

    // --- keptvaudio.startup.cpp
public:
    /// Writes the initial gain of every connected resource and of the speaker, and notes whether
    /// all of them went through. Failures are logged.
    void initGainAudio();
    /// The start-up worker's whole life: has the middleware read its files, covers the cold start's
    /// noise and writes what initAudio could not. It ends early when the process does.
    void startXmlParsing();

protected:
    /// Whether the three conditions of the start-up hold; they are to be met anew then.
    bool beginsStartup();
    void retryInitialGains();

    // --- Pipelines: keptvaudio.pipelines.cpp (the way in), keptvaudiosettings.pipelines.cpp
    // (updates, audio reports), keptvaudioquality.pipelines.cpp (the store, removal, video
    // reports), keptvaudioutil.pipelines.cpp (questions)
public:
    unsigned int setQualityAttribute(JValue attribute) override;
    unsigned int removePipelineInfo(std::string pipelineId) override;
    /// Whether the payload's "reset" is true.
    bool checkForResetValue(JValue value) const;
    /// Takes in what a pipeline carries, by "requestType". Result code.
    unsigned int setAudioVideoCategoryInfo(JValue payload);
    void updatePolicyConnectionCategoryInfo(JValue payload);
    bool setAudioInputInfo(JValue payload);
    bool setVideoInputInfo(JValue payload);
    /// Merge "categoryInfo" into the pipeline's attributes; false when the pipeline is unknown.
    bool updateAudioCategoryInfo(JValue pipelineInfo, JValue categoryInfo);
    bool updateVideoCategoryInfo(JValue pipelineInfo, JValue categoryInfo);
    /// Takes in a pipeline report: a new pipeline, or an update of a known one. False when it names
    /// none.
    bool updatePipelineInfo(JValue pipelineInfo);
    void storePipelineInfoParameters(JValue pipelineInfo);
    void updateExistingPipelineInfo(JValue pipelineInfo);
    /// Strips the pipeline's entries down to its id; false when it is unknown.
    bool resetPipelineInfo(JValue pipelineInfo);
    bool isNewPipelineId(std::string pipelineId) const;
    /// Whether the parameters that the middleware has are of that pipeline, or of none.
    bool isValidPipelineId(std::string pipelineId) const;
    /// Whether the pipeline is a main one: neither audio description nor an effect.
    bool isValidpipelinePurpose(JValue attributes) const;
    /// Dumps to the log: the middleware's parameters (debug), all pipelines (info).
    void printAudioVideoInfoTable() const;
    void printSetQualityAttributeInfo() const;

protected:
    static bool hasPipelineId(const AudioVideoInfo& pipeline, const std::string& pipelineId);
    /// The position of the next pipeline of that id, counted from `from`; the store's size when
    /// there is none.
    std::size_t nextPipeline(const std::string& pipelineId, std::size_t from) const;
    void refreshPipelineIdHash(std::size_t position) const;
    std::optional<std::size_t> findAudioPipeline(const JValue& pipelineInfo) const;
    static bool isRecording(const std::string& purpose);
    // `handsOver`: whether the map becomes the middleware's parameters; not where another purpose
    // of the same report sees to it.
    void adoptPipeline(const AudioVideoInfo& pipeline, bool handsOver);
    void applyPurpose(const kepLogOrigin& origin, const std::string& purpose,
                      const AudioVideoInfo& pipeline, bool handsOver);
    void useAsCurrentPipeline(const kepLogOrigin& origin, const AudioVideoInfo& pipeline,
                              bool handsOver);

    // --- keptvaudiosettings.cpp: settings categories. False when the payload lacks something, or a
    // step failed, which has then been logged where it was seen.
public:
    /// Remembers the payload as the category's value, in the place of an earlier one, at the list's
    /// end.
    bool storeSettings(const std::string& category, JValue payload);
    bool setSoundConfigSettings(std::string category, JValue payload);
    /// Also launches the start-up worker once its three conditions hold.
    bool setSoundSettings(JValue payload);
    bool setHwConfig(JValue payload);
    bool setSoundOutputDigitalSettings(std::string category, JValue payload);
    bool setforceOutputSettings(JValue payload);
    bool setMixerSettings(JValue payload);
    bool setSoundOutputModeSettings(JValue payload);
    bool setAlsaDriverSettings(std::string category, JValue payload);
    bool setExternalArcSettings(JValue payload);
    bool setOtherCategorySettings(std::string category, JValue payload);
    bool setOtherSettings(JValue payload);
    bool setActivateWisa(JValue payload);
    bool setSoundEngineSettings(std::string category, JValue payload);
    bool setEqualizerSettings(JValue payload);
    bool setSoundEngineStatus(JValue payload);
    bool setDolbyAtmosSettings(std::string category, JValue payload);
    bool setAmplifierSettings(std::string category, JValue payload);
    bool setDelaySettings(std::string category, JValue payload);
    bool setPictureSettings(JValue payload);
    /// Hands a quality payload to all four adapters.
    bool setQualityAttributeSettings(JValue payload);

protected:
    static bool isOfCategory(const JValue& stored, const std::string& category);

    friend class kepCatalogue; // shows the categories

    struct SettingsRow;
    using SettingsGroup = bool (kepTVAudio::*)(const SettingsRow& row, const JValue& payload);
    using SettingsHandler = bool (kepTVAudio::*)(JValue payload);

    /// Null for a category that nobody knows.
    static const SettingsRow* findSettings(const std::string& category);
    bool applySettings(const SettingsRow& row, const JValue& payload);
    /// Runs the category's own handler, and remembers the payload if that is wanted.
    bool handle(const SettingsRow& row, const JValue& payload);
    /// The same by name, for a group that was called directly.
    bool handleInGroup(SettingsGroup group, const std::string& category, const JValue& payload);

    bool setSoundConfigSettings(const SettingsRow& row, const JValue& payload);
    bool setSoundOutputDigitalSettings(const SettingsRow& row, const JValue& payload);
    bool setAlsaDriverSettings(const SettingsRow& row, const JValue& payload);
    bool setSoundEngineSettings(const SettingsRow& row, const JValue& payload);
    bool setAmplifierSettings(const SettingsRow& row, const JValue& payload);
    bool setDelaySettings(const SettingsRow& row, const JValue& payload);
    bool setOtherCategorySettings(const SettingsRow& row, const JValue& payload);

    bool setModelConfig(JValue payload);
    bool setContiConfig(JValue payload);
    bool setScmsSettings(JValue payload);
    bool setOttAdecModeSettings(JValue payload);
    bool setOptionSettings(JValue payload);
    bool acceptSettings(JValue payload);
    bool setMagicSpaceSound(JValue payload);
    bool setDolbyAtmosState(JValue payload);
    bool setForcedDolbyAtmos(JValue payload);
    bool setAmplifierType(JValue payload);
    bool prepareResume(JValue payload);
    bool prepareAmplifierSuspend(JValue payload);
    bool setAmplifierState(JValue payload);
    bool writeI2cDataToAmplifier(JValue payload);
    bool setAudioVideoSync(JValue payload);
    bool setOffsetDelay(JValue payload);

    // --- keptvaudioquality.queries.cpp
public:
    JValue getSettings(const std::string& category, JValue request) override;
    /// The stored settings of one category as an array of at most one, or the amplifier's state.
    JValue getSettingsObject(const std::string& category);

protected:
    // --- State, in its fixed order. The caller's thread alone reads and writes it, unless a line
    // says otherwise (src/tv/threads.h).

    // Class-wide: the unmute timer, any thread
    static std::atomic<unsigned int> mHeadphoneUnmuteTimerID; // GLib source, 0 when none is pending
    static std::atomic<bool> mHeadphoneTimerMuteDone;         // a timer has run; never cleared

    // Digital outputs
    JValue mEarcCapability; // codecs that the connected eARC device announced

    // Start-up
    struct StartupConditions {
        bool contiConfigReceived = false;
        bool hardwareConfigApplied = false;
        bool modelConfigReceived = false;
    };
    StartupConditions mStartupConditions;
    std::atomic<bool> mIsInitGainAudioUpdate{false}; // any thread

    // Life cycle
    bool mActiveState = true;
    bool mIsStarted = false; // initAudio has come to its end

    // Volume and mute
    bool mOutputMuteStatus = false; // last one requested, for whatever output
    std::uint8_t mOutputVolume = 0; // last one requested for the output that was current

    // Headphone: the reasons to mute, any thread
    std::atomic<bool> mPowerStateHeadphoneMute{false}; // asked for by the power state
    std::atomic<bool> mHeadphoneDetectionMute{false};  // asked for by headphone detection
    std::atomic<bool> mHeadphoneMuteStatus{
        false};                    // by the caller, a change of output, the cold start
    bool mIsPrepareResume = false; // the next unmute is the first after resume
    KEP_AUDIO_SNDOUT_T mPopNoiseSoundOutput = KEP_AUDIO_NO_OUTPUT; // unmuted when the timer fires

    // Digital outputs and settings
    bool mSupportBnoModel = false; // setting "supportBnoModel"
    bool mMixerFlag = false;       // setting "mix"
    bool mForcedDDPlus = false;    // setting "forceOutputDDPLUS"
    bool mOttEnabled = false;      // last pair that the driver took
    bool mAtmosLocked = false;
    bool mWisaActivated = false; // setting "activateWisa"
    std::string mArcProfile;     // setting "arcProfile"

    // Output selection, routing
    KEP_AUDIO_SNDOUT_T mCurrentSoundout = KEP_AUDIO_NO_OUTPUT;
    // In order of connection; changed behind its guard, the worker copies it.
    std::vector<KEP_AUDIO_RESOURCE_T> mConnectedResources;

    // Settings, pipelines
    std::vector<JValue> mSettingsList; // {"category", "value"}, at most one a category
    std::vector<AudioVideoInfo> AudioVideoInfoMapVector; // in order of arrival

    // Store and adapters: singletons of their own, never deleted. Bound by the first initAudio,
    // then read by any thread.
    kepTvParser* mPtrParserInstance = nullptr;
    kepTVAmplifier* mPtrTVAmplifier = nullptr;
    kepTVDelay* mPtrTVDelay = nullptr;
    kepTVGain* mPtrTVGain = nullptr;
    kepTVSoundEngine* mPtrTVSoundEngine = nullptr;

    // Beside the fixed order
    std::map<std::string, std::string> mStoredSettings;
    mutable std::vector<std::size_t>
        mPipelineIdHashes; // of AudioVideoInfoMapVector, looked up first
};
