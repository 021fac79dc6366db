// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of the mixer backend.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "journal.h"
#include "kepalsaaudio.h"
#include "kepfactory.h"
#include "televisiontest.h"

inline constexpr const char* kSwitch = "name='Master Playback Switch'";
inline constexpr const char* kVolume = "name='Master Playback Volume'";

inline bool isRegistered()
{
    return kepFactory::getInstance()->getRegistry().count("ALSA") != 0;
}

inline kepAlsaAudio& backend()
{
    return static_cast<kepAlsaAudio&>(*kepAlsaAudio::createObject());
}

inline LogLine debugOf(const std::string& function, const std::string& text)
{
    return {kLogDebug, "", "kepalsaaudio:" + function, text};
}

inline LogLine volumeError(const std::string& function, const std::string& text)
{
    return {kLogError, "SET_VOLUME_ERROR", "kepalsaaudio:" + function, text};
}

inline LogLine writing(const std::string& card, const std::string& control,
                       const std::string& value)
{
    return debugOf("setControl", "snd_ctl_open on card " + card + ", control " + control +
                                     " value=" + value + "\n");
}

/// A request with what it has to write and to log, as far as it gets.
struct Request {
    unsigned int (*send)();
    const char* element;
    int value;
    std::vector<LogLine> before; // logged in front of the write
    std::string control;
    std::string text; // of the value
    LogLine failure;  // in case the write fails, on card "default"
};

inline Request softmaster(unsigned int (*send)(), const std::string& suffix, int resource,
                          bool mute, std::vector<LogLine> before = {})
{
    const std::string control = "name=Softmaster" + suffix;
    const std::string text = mute ? "0%" : "100%";
    before.push_back(
        debugOf("resetMixerVolume", "reset volume  resource=" + std::to_string(resource) +
                                        " mute=" + (mute ? "1" : "0")));
    const char* element = suffix.empty()  ? "Softmaster"
                          : suffix == "0" ? "Softmaster0"
                                          : "Softmaster1";
    return {send,
            element,
            mute ? 0 : 100,
            std::move(before),
            control,
            text,
            volumeError("resetMixerVolume",
                        "Failed to set control " + control + " to " + text + " for card:default")};
}

inline Request connected(unsigned int (*send)(), const std::string& suffix, int resource)
{
    return softmaster(send, suffix, resource, /*mute=*/false,
                      {debugOf("connectInput", "connectInput  " + std::to_string(resource))});
}

inline Request masterVolume(unsigned int (*send)(), int asked, int written)
{
    const std::string number = std::to_string(asked);
    return {send,
            "Master Playback Volume",
            written,
            {debugOf("setVolume", "In setVolume, setting volume to " + number + "%")},
            kVolume,
            number + "%",
            volumeError("setOutputVolume", "Failed setting volume to " + number)};
}

inline Request masterMute(unsigned int (*send)(), bool mute)
{
    const std::string text = mute ? "off" : "on";
    return {send,
            "Master Playback Switch",
            mute ? 0 : 1,
            {debugOf("setOutputMute",
                     std::string{"In setOutputMute, setting mute to "} + (mute ? "1" : "0"))},
            kSwitch,
            text,
            volumeError("setOutputMute", "Failed to set mute " + text + " for card:default" +
                                             ", control:" + kSwitch)};
}

inline JValue attribute()
{
    JValue value = JValue::object();
    value.put("stream", "kepgame");
    return value;
}

// clang-format off
inline const Request kRequests[] = {
    connected([] { return backend().connectInput("AMIXER", "ALSA", attribute()); }, "0", 20),
    connected([] { return backend().connectInput("AMIXER", "ALSA", JValue::invalid()); }, "0", 20),
    connected([] { return backend().connectInput("ADEC", "MAIN", attribute()); }, "", 255),
    connected([] { return backend().connectInput("AMIXER", "MAIN", JValue{}); }, "", 255),
    connected([] { return backend().connectInput("", "", JValue{}); }, "", 255),
    softmaster([] { return backend().disconnectInput("AMIXER", "ALSA"); }, "0", 20, true),
    softmaster([] { return backend().disconnectInput("ADEC", "MAIN"); }, "", 255, true),
    softmaster([] { return backend().setMute("AMIXER", "ALSA", true); }, "0", 20, true),
    softmaster([] { return backend().setMute("AMIXER", "ALSA", false); }, "0", 20, false),
    softmaster([] { return backend().setMute("ADEC", "MAIN", true); }, "", 255, true),
    softmaster([] { return backend().setMute("ADEC", "MAIN", false); }, "", 255, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER0, true); }, "0", 20, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER0, false); }, "0", 20, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER1, true); }, "1", 21, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER1, false); }, "1", 21, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER2, false); }, "", 22, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_AMIXER7, true); }, "", 27, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_ADEC0, false); }, "", 8, false),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_ADEC1, true); }, "", 9, true),
    softmaster([] { return backend().resetMixerVolume(KEP_AUDIO_RESOURCE_INVALID, false); }, "", 255, false),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 0); }, 0, 0),
    masterVolume([] { return backend().setOutputVolume("", 0); }, 0, 0),
    masterVolume([] { return backend().setOutputVolume("no such output", 1); }, 1, 1),
    masterVolume([] { return backend().setOutputVolume("headphone", 35); }, 35, 35),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 100); }, 100, 100),
    masterVolume([] { return backend().setOutputVolume("tv_speaker", 255); }, 255, 100), // no more than all
    masterMute([] { return backend().setOutputMute("tv_speaker", true); }, true),
    masterMute([] { return backend().setOutputMute("tv_speaker", false); }, false),
    masterMute([] { return backend().setOutputMute("", true); }, true),
};

struct FailureRow {
    const char* stage;
    int status;
    const char* text;
    int opened;
};
inline constexpr FailureRow kFailures[] = {
    {"open",  -19, "Control default open error: No such device\n",                                              0},
    {"open",  -13, "Control default open error: Permission denied\n",                                           0},
    {"info",   -6, "Cannot find the given element from control default, error No such device or address\n",     1},
    {"write",  -5, "Control default element write error: Input/output error\n",                                 1},
};

struct ResourceRow {
    const char* source;
    const char* sink;
    KEP_AUDIO_RESOURCE_T resource;
};
inline constexpr ResourceRow kResources[] = {
    {"AMIXER",  "ALSA",   KEP_AUDIO_RESOURCE_AMIXER0},
    {"amixer",  "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "alsa",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER0", "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "ALSA ",  KEP_AUDIO_RESOURCE_INVALID},
    {"AMIXER",  "MAIN",   KEP_AUDIO_RESOURCE_INVALID},
    {"ADEC",    "ALSA",   KEP_AUDIO_RESOURCE_INVALID},
    {"ADEC",    "MAIN",   KEP_AUDIO_RESOURCE_INVALID},
    {"ALSA",    "AMIXER", KEP_AUDIO_RESOURCE_INVALID},
    {"",        "",       KEP_AUDIO_RESOURCE_INVALID},
};
// clang-format on

class KepAlsaAudio : public TelevisionTest
{
protected:
    KepAlsaAudio() { connectLog(); }

    /// Creates the backend on the card and the control names of this file and forgets that.
    void create(const std::string& card = "default",
                const std::string& mute = "'Master Playback Switch'",
                const std::string& volume = "'Master Playback Volume'")
    {
        writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": ")" + card +
                                           R"(", "muteControlName": ")" + mute +
                                           R"(", "volumeControlName": ")" + volume + R"("}})");
        ASSERT_NE(kepAlsaAudio::createObject(), nullptr);
        forget();
        mStart = virtualtv::cardHandles();
    }
    /// Expects this many cards opened since `create`, and every one of them closed again.
    void expectHandles(int opened, const std::string& what)
    {
        const virtualtv::HandleCount now = virtualtv::cardHandles();
        EXPECT_EQ(now.opened - mStart.opened, opened) << what;
        EXPECT_EQ(now.closed - mStart.closed, opened) << what;
        mStart = now;
    }
    [[nodiscard]] LogLine path(const std::string& file) const
    {
        return debugOf("getConfigFilePath", "KEP Configuration file path: " + file);
    }

private:
    virtualtv::HandleCount mStart = virtualtv::cardHandles();
};

/// What a process that ends says, on standard error: each log message, with whether the backend is
/// still registered at that time.
inline void sayGoodbye()
{
    LogSetSink([](const LogMessage& message) {
        fprintf(stderr, "%d [%s] %s, registered: %d\n", message.level, message.id, message.text,
                isRegistered());
    });
    std::exit(0); // NOLINT: the static objects are to be destroyed
}
