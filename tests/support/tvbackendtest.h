// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of the television backend: a started backend of its own, whose state
// lies open.
#pragma once

#include <cerrno>
#include <deque>
#include <string>
#include <vector>

#include "faults.h"
#include "keptvaudio.h"
#include "televisiontest.h"

// Result codes, as callers see them.
inline constexpr unsigned int kDone = 0;
inline constexpr unsigned int kFailed = 2;
inline constexpr unsigned int kInvalidResource = 3;
inline constexpr unsigned int kInvalidOutput = 4;

inline LogLine info(const std::string& origin, const std::string& text)
{
    return {kLogInfo, "INFO_LOG", origin, text};
}

inline LogLine debug(const std::string& origin, const std::string& text)
{
    return {kLogDebug, "", origin, text};
}

inline LogLine error(const std::string& id, const std::string& origin, const std::string& text)
{
    return {kLogError, id, origin, text};
}

/// What the driver's door logs for a write that `TvBackendTest::refuseWrite` refused.
inline LogLine refusedByDriver()
{
    return error("CONTROL_ELEMENT_WRITE_ERROR", "keptvaudio:setControlElement",
                 "Control element write error: Input/output error");
}

class OpenBackend : public kepTVAudio
{
public:
    using kepTVAudio::AudioVideoInfoMapVector;
    using kepTVAudio::mConnectedResources;
    using kepTVAudio::mCurrentSoundout;
    using kepTVAudio::mHeadphoneTimerMuteDone;
    using kepTVAudio::mHeadphoneUnmuteTimerID;
    using kepTVAudio::mOutputMuteStatus;
    using kepTVAudio::mOutputVolume;
    using kepTVAudio::mStoredSettings;
};

class TvBackendTest : public TelevisionTest
{
protected:
    static constexpr int kRefused = -EIO;

    TvBackendTest()
    {
        connectLog();
        mBackend.initAudio();
        forget();
    }
    ~TvBackendTest() override { clearInjections(); }

    /// Refuses one of the writes to come, counted from 0, whatever its element.
    static void refuseWrite(unsigned int number)
    {
        using virtualtv::FaultPoint;
        virtualtv::inject({FaultPoint::CardWrite, "*", "", 0, number});
        virtualtv::inject({FaultPoint::CardWrite, "*", "", kRefused, 1});
    }

    /// All that the television was told, in order: writes as "Mute Output 1 0", calls as
    /// "gain.setGainAsInput"; with " -> status" when that is not 0.
    [[nodiscard]] std::vector<std::string> told() const
    {
        std::vector<std::string> all;
        for (const JValue& event : events()) {
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
            all.push_back(text);
        }
        return all;
    }

    OpenBackend& mBackend = freshBackend();

private:
    /// A new backend, which outlives the test: a start-up worker that it launched may still hold
    /// it.
    static OpenBackend& freshBackend()
    {
        static auto* const all = new std::deque<OpenBackend>;
        return all->emplace_back();
    }
};
