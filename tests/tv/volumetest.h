// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of volume and mute, with what each mechanism tells and logs.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "tvbackendtest.h"

inline constexpr unsigned int kUnknownOutput = 1;
inline constexpr int kBroken = 7; // any status but 0

enum class Way { Nothing, Unsupported, Speaker, Headphone, SoundSync, Unknown };

struct OutputRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
    Way volume;
    Way mute;
};

// clang-format off
inline constexpr OutputRow kOutputs[] = {
    // name                     output                     volume            mute
    {"tv_speaker",             KEP_AUDIO_SPK,             Way::Speaker,     Way::Speaker},
    {"tv_speaker_external",    KEP_AUDIO_SPK_SPDIF,       Way::Speaker,     Way::Speaker},
    {"tv_external_speaker",    KEP_AUDIO_SPK_SPDIF,       Way::Speaker,     Way::Speaker},
    {"tv_speaker_headphone",   KEP_AUDIO_SPK_HP,          Way::Speaker,     Way::Speaker},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC, Way::Speaker,     Way::Speaker},
    {"tv_speaker_bluetooth",   KEP_AUDIO_SPK_BLUETOOTH,   Way::Speaker,     Way::Speaker},
    {"headphone",              KEP_AUDIO_HP,              Way::Headphone,   Way::Headphone},
    {"lineout",                KEP_AUDIO_HP,              Way::Headphone,   Way::Headphone},
    {"qnSoundSync",            KEP_AUDIO_QN_SOUND_SYNC,   Way::SoundSync,   Way::SoundSync},
    {"external_arc",           KEP_AUDIO_ARC,             Way::Unsupported, Way::Unsupported},
    {"urcu_oss",               KEP_AUDIO_ARC,             Way::Unsupported, Way::Unsupported},
    {"bt_soundbar",            KEP_AUDIO_BT_SOUNDBAR,     Way::Unsupported, Way::Unsupported},
    {"wisa_speaker",           KEP_AUDIO_WISA,            Way::Unsupported, Way::Unsupported},
    {"external_speaker",       KEP_AUDIO_SPDIF,           Way::Nothing,     Way::Unsupported},
    {"external_optical",       KEP_AUDIO_SPDIF,           Way::Nothing,     Way::Unsupported},
    {"alsa",                   KEP_AUDIO_ALSA,            Way::Nothing,     Way::Unknown},
    {"unknown",                KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
    {"TV_SPEAKER",             KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
    {"",                       KEP_AUDIO_NO_OUTPUT,       Way::Nothing,     Way::Unknown},
};

inline constexpr KEP_AUDIO_SNDOUT_T kSelectable[] = {
    KEP_AUDIO_SPK,           KEP_AUDIO_SPDIF,        KEP_AUDIO_HP,   KEP_AUDIO_SPK_SPDIF,
    KEP_AUDIO_ARC,           KEP_AUDIO_SPK_HP,       KEP_AUDIO_WISA, KEP_AUDIO_SPK_OPTICAL_ARC,
    KEP_AUDIO_QN_SOUND_SYNC, KEP_AUDIO_BT_SOUNDBAR,  KEP_AUDIO_SPK_BLUETOOTH,
};
inline constexpr KEP_AUDIO_SNDOUT_T kSpeakerFamily[] = {
    KEP_AUDIO_SPK, KEP_AUDIO_SPK_SPDIF, KEP_AUDIO_SPK_HP, KEP_AUDIO_SPK_OPTICAL_ARC, KEP_AUDIO_SPK_BLUETOOTH,
};
// clang-format on

inline LogLine volumeInfo(const std::string& function, const std::string& text)
{
    return info("keptvaudio:" + function, text);
}

inline LogLine volumeError(const std::string& id, const std::string& function,
                           const std::string& text)
{
    return error(id, "keptvaudio:" + function, text);
}

/// What a request is expected to do.
struct Expected {
    Texts told;
    Lines logged;
    unsigned int result = kDone;
};

/// What a request finds.
struct Situation {
    KEP_AUDIO_SNDOUT_T current = KEP_AUDIO_NO_OUTPUT;
    int storedVolume = 0;
    bool storedMute = false;
    bool fails = false; // whatever carries the request
};

inline std::ostream& operator<<(std::ostream& stream, const Situation& situation)
{
    return stream << " (current " << situation.current << ", volume " << situation.storedVolume
                  << ", mute " << situation.storedMute << (situation.fails ? ", failing)" : ")");
}

class VolumeTest : public TvBackendTest
{
protected:
    VolumeTest()
    {
        mBackend.mHeadphoneUnmuteTimerID = 0;
        mBackend.mHeadphoneTimerMuteDone = true; // no guard against noise stands in the way
    }

    void enter(const Situation& situation)
    {
        clearInjections();
        mBackend.mCurrentSoundout = situation.current;
        mBackend.mOutputVolume = static_cast<std::uint8_t>(situation.storedVolume);
        mBackend.mOutputMuteStatus = situation.storedMute;
        if (situation.fails) {
            injectMiddleware("soundengine.setOSDVolume", kBroken);
            injectMiddleware("gain.setOutputVolume", kBroken);
            injectMiddleware("gain.setInputVolume", kBroken);
            injectCard("write", kRefused);
        }
        forget();
    }

    /// What the backend itself logged; the adapters are not looked at.
    [[nodiscard]] Lines backendLines() const
    {
        Lines lines;
        std::copy_if(logLines().begin(), logLines().end(), std::back_inserter(lines),
                     [](const LogLine& line) { return line.origin.rfind("keptvaudio", 0) == 0; });
        return lines;
    }

    void expect(const Expected& expected, unsigned int result, const std::string& what)
    {
        EXPECT_EQ(result, expected.result) << what;
        EXPECT_EQ(told(), expected.told) << what;
        EXPECT_EQ(backendLines(), expected.logged) << what;
    }

    /// "volume mute" as a later request for the sound bar uses them.
    std::string kept()
    {
        clearInjections();
        const bool mute = mBackend.mOutputMuteStatus;
        forget();
        EXPECT_EQ(mBackend.setOutputMute("qnSoundSync", mute), kDone);
        const std::string prefix = "Sndout Optic QN 15747238 ";
        const std::string text = told().empty() ? "" : told().front();
        EXPECT_EQ(text.substr(0, prefix.size()), prefix);
        return text.size() > prefix.size() + 2
                   ? text.substr(prefix.size(), text.size() - prefix.size() - 2)
                   : text;
    }
};

// --- Expectations

inline std::string statusText(bool fails, const char* status = " -> 7")
{
    return fails ? status : "";
}

inline Expected volumeRequest(const OutputRow& row, int volume, const Situation& situation)
{
    const std::string number = std::to_string(volume);
    Expected expected;
    expected.logged.push_back(volumeInfo("setOutputVolume", "Request to set volume " + number +
                                                                " on output " + row.name));
    switch (row.volume) {
    case Way::Speaker:
        expected.told.push_back("soundengine.setOSDVolume " + number + statusText(situation.fails));
        if (situation.fails) {
            expected.logged.push_back(volumeError("SE_MIDDLEWARE_ERROR",
                                                  "setSpeakerHeadphoneOutputVolume",
                                                  "Failed to set speaker volume as " + number));
            expected.result = kFailed;
        } else if (volume == 0) {
            expected.told.emplace_back("amplifier.setAmpMute true");
        } else if (situation.storedVolume == 0) {
            expected.told.emplace_back("amplifier.setAmpMute false");
        }
        break;
    case Way::Headphone:
        expected.told.push_back("gain.setOutputVolume \"headphone\" " + number +
                                statusText(situation.fails));
        expected.result = situation.fails ? kFailed : kDone;
        break;
    case Way::SoundSync:
        expected.logged.push_back(debug("keptvaudio:setOutputVolume",
                                        "setOutputVolume for QN sound sync - Volume = " + number +
                                            ", Mute = " + flag(situation.storedMute)));
        expected.logged.push_back(debug("keptvaudio:setQNSoundSyncOutputVolume",
                                        "Request to set volume " + number + " and muteStatus " +
                                            flag(situation.storedMute)));
        expected.told.push_back("Sndout Optic QN 15747238 " + number + " " +
                                flag(situation.storedMute) + " 1" +
                                statusText(situation.fails, " -> -5"));
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(volumeError(
                "SET_VOLUME_ERROR", "setOutputVolume",
                "Failed to set volume " + number + " for element: Sndout Optic QN on " + row.name));
            expected.result = kFailed;
        }
        break;
    case Way::Unsupported:
        expected.logged.push_back(volumeInfo(
            "setOutputVolume",
            std::string{"Volume Operation wont be supported for soundoutput "} + row.name));
        break;
    case Way::Nothing:
    case Way::Unknown:
        break;
    }
    return expected;
}

inline Expected muteRequest(const OutputRow& row, bool mute, const Situation& situation)
{
    const std::string number = flag(mute);
    const std::string failed = statusText(situation.fails, " -> -5");
    Expected expected;
    expected.logged.push_back(volumeInfo("setOutputMute", "Setting mute to " + number +
                                                              " on soundOutputType " + row.name));
    expected.result = situation.fails ? kFailed : kDone;
    switch (row.mute) {
    case Way::Speaker:
        expected.told.push_back("Mute Output 1 " + number + failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(
                volumeError("CONTROL_ELEMENT_SET_ERROR", "setSpeakerOutputMute",
                            "Did not able to set the element: Mute Output on tv speaker"));
        } else if (situation.storedVolume != 0) {
            expected.told.push_back("amplifier.setAmpMute " + word(mute));
        }
        break;
    case Way::Headphone: {
        const std::string file = "keptvaudio:";
        for (const char* name : {"muteStatus ", "mHeadphoneMuteStatus "})
            expected.logged.push_back(
                info(file + "setMuteHeadphone",
                     std::string{"Called setMuteHeadphone "} + name + number));
        expected.logged.push_back(info(file + "executeMuteHeadphone",
                                       "Called execute muteHeadphone muteStatus " + number));
        expected.logged.push_back(
            info(file + "isValidHeadphoneMute", "isValidHeadphoneMute check " + number + " 0 0"));
        expected.told.push_back("subcpu_misc_Set_HPMuteOnOff " + word(mute));
        expected.told.push_back("Mute Output 16 " + number + failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(error("CONTROL_ELEMENT_SET_ERROR",
                                            "keptvaudio:setMuteControlElement",
                                            "Did not able to set the element: Mute Output on 32"));
        }
        break;
    }
    case Way::SoundSync: {
        const std::string volume = std::to_string(situation.storedVolume);
        expected.logged.push_back(
            debug("keptvaudio:setQNSoundSyncOutputVolume",
                  "Request to set volume " + volume + " and muteStatus " + number));
        expected.told.push_back("Sndout Optic QN 15747238 " + volume + " " + number + " 1" +
                                failed);
        if (situation.fails) {
            expected.logged.push_back(refusedByDriver());
            expected.logged.push_back(volumeError(
                "AUDIO_DRIVER_ERROR", "setOutputMute",
                "Failed to set soundoutput mute for element: Sndout Optic QN on QN sound sync"));
        }
        break;
    }
    case Way::Unsupported:
        expected.logged.push_back(volumeInfo(
            "setOutputMute",
            std::string{"Mute Operation wont be supported for soundoutput "} + row.name));
        expected.result = kDone;
        break;
    case Way::Nothing:
    case Way::Unknown:
        expected.result = kUnknownOutput;
        break;
    }
    return expected;
}
