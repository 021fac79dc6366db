// SPDX-License-Identifier: Apache-2.0
// The one way into the television backend for tests: its state lies open here, and nowhere else,
// and each test, or each row of a table, gets a backend of its own.
#pragma once

#include <cerrno>
#include <deque>
#include <string>

#include "controlwrites.h"
#include "faults.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvparser.h"
#include "keptvsoundengine.h"
#include "televisiontest.h"

// Result codes, as callers see them.
inline constexpr unsigned int kDone = 0;
inline constexpr unsigned int kFailed = 2;
inline constexpr unsigned int kInvalidResource = 3;
inline constexpr unsigned int kInvalidOutput = 4;

/// All identifiers of outputs, those included that cannot be selected.
inline constexpr KEP_AUDIO_SNDOUT_T kAllOutputs[] = {
    KEP_AUDIO_NO_OUTPUT,     KEP_AUDIO_SPK,         KEP_AUDIO_SPDIF, KEP_AUDIO_HP,
    KEP_AUDIO_ALSA,          KEP_AUDIO_SPK_SPDIF,   KEP_AUDIO_ARC,   KEP_AUDIO_SPK_HP,
    KEP_AUDIO_QN_SOUND_SYNC, KEP_AUDIO_BT_SOUNDBAR, KEP_AUDIO_WISA,  KEP_AUDIO_SPK_OPTICAL_ARC,
    KEP_AUDIO_SPK_BLUETOOTH, KEP_AUDIO_BLUETOOTH,
};

/// A bool as log lines and driver writes show it.
inline std::string flag(bool value)
{
    return value ? "1" : "0";
}

/// A bool as calls of the middleware show it.
inline std::string word(bool value)
{
    return value ? "true" : "false";
}

/// What the driver's door logs for a write that `TvTest::refuseWrite` refused.
inline LogLine refusedByDriver()
{
    return error("CONTROL_ELEMENT_WRITE_ERROR", "keptvaudio:setControlElement",
                 "Control element write error: Input/output error");
}

/// An event in a line: writes as "Mute Output 1 0", calls as "gain.setGainAsInput"; with
/// " -> status" when that is not 0.
inline std::string toldText(const JValue& event)
{
    const std::string library = event["library"].asString();
    std::string text = library + (library.empty() ? "" : ".");
    for (const char* name : {"element", "stage", "operation", "line"})
        text += event[name].asString();
    for (const char* values : {"values", "args"})
        for (const JValue& value : event[values].elements())
            text += " " + value.stringify();
    if (event.hasKey("card") && event["card"].asString() != "hw:0")
        text += " on " + event["card"].asString();
    if (const int status = event["status"].asNumber<int>(); status != 0)
        text += " -> " + std::to_string(status);
    return text;
}

/// The backend with all that tests look at or put into a state.
class OpenBackend : public kepTVAudio
{
public:
    using kepTVAudio::AudioVideoInfoMapVector;
    using kepTVAudio::mActiveState;
    using kepTVAudio::mArcProfile;
    using kepTVAudio::mAtmosLocked;
    using kepTVAudio::mConnectedResources;
    using kepTVAudio::mCurrentSoundout;
    using kepTVAudio::mEarcCapability;
    using kepTVAudio::mForcedDDPlus;
    using kepTVAudio::mHeadphoneDetectionMute;
    using kepTVAudio::mHeadphoneTimerMuteDone;
    using kepTVAudio::mHeadphoneUnmuteTimerID;
    using kepTVAudio::mIsInitGainAudioUpdate;
    using kepTVAudio::mIsPrepareResume;
    using kepTVAudio::mMixerFlag;
    using kepTVAudio::mOttEnabled;
    using kepTVAudio::mOutputMuteStatus;
    using kepTVAudio::mOutputVolume;
    using kepTVAudio::mPipelineIdHashes;
    using kepTVAudio::mPopNoiseSoundOutput;
    using kepTVAudio::mPowerStateHeadphoneMute;
    using kepTVAudio::mPtrParserInstance;
    using kepTVAudio::mPtrTVAmplifier;
    using kepTVAudio::mPtrTVDelay;
    using kepTVAudio::mPtrTVGain;
    using kepTVAudio::mPtrTVSoundEngine;
    using kepTVAudio::mSettingsList;
    using kepTVAudio::mStartupConditions;
    using kepTVAudio::mStoredSettings;
    using kepTVAudio::mSupportBnoModel;
    using kepTVAudio::mWisaActivated;
    using kepTVAudio::startUnmuteTimer;
};

/// What all tests of a started backend share.
class TvTest : public TelevisionTest
{
protected:
    static constexpr int kRefused = -EIO;

    TvTest() { connectLog(); }
    ~TvTest() override { clearInjections(); }

    static kepTvParser& store() { return *kepTvParser::getInstance(); }

    /// A started backend that was told nothing yet, and an empty store. It outlives the test: a
    /// start-up worker that it launched may still hold it.
    OpenBackend& freshBackend()
    {
        static auto* const all = new std::deque<OpenBackend>;
        clearInjections();
        store().mQualityParamsMap.clear();
        store().mAvParamsMap.clear();
        store().mAencAvParamsMap.clear();
        OpenBackend& backend = all->emplace_back();
        backend.initAudio();
        forget();
        return backend;
    }

    /// Refuses one of the writes to come, counted from 0, whatever its element.
    static void refuseWrite(unsigned int number)
    {
        using virtualtv::FaultPoint;
        virtualtv::inject({FaultPoint::CardWrite, "*", "", 0, number});
        virtualtv::inject({FaultPoint::CardWrite, "*", "", kRefused, 1});
    }

    /// All that the television was told, in order.
    [[nodiscard]] Texts told() const
    {
        Texts all;
        for (const JValue& event : events())
            all.push_back(toldText(event));
        return all;
    }
};

/// One backend a test.
class TvBackendTest : public TvTest
{
protected:
    OpenBackend& mBackend = freshBackend();
};

/// One backend a row: `restart` gives the next one.
class TvRowsTest : public TvTest
{
protected:
    TvRowsTest() { restart(); }

    void restart() { mBackend = &freshBackend(); }

    OpenBackend* mBackend = nullptr;
};
