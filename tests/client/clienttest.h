// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of the client: a backend that records what reaches it.
#pragma once

#include <cstdint>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kepclient.h"
#include "kepfactory.h"
#include "televisiontest.h"

inline std::string shown(const std::string& text)
{
    return text;
}
inline std::string shown(bool value)
{
    return value ? "true" : "false";
}
inline std::string shown(std::uint8_t number)
{
    return std::to_string(number);
}
inline std::string shown(const JValue& value)
{
    return value.isValid() ? value.stringify() : "invalid";
}

/// A backend that writes down what it is asked, answers as told and throws on request.
class RecordingBackend final : public kepAudio
{
public:
    unsigned int initStatus = KEP_STATUS_OK;
    unsigned int deinitStatus = KEP_STATUS_OK;
    unsigned int answer = KEP_RESULT_OK;
    JValue reply = true;
    std::function<void()> raise;
    std::vector<std::string> calls;
    bool* headphonePointer = nullptr;

    unsigned int initAudio() override { return note(initStatus, "initAudio"); }
    unsigned int deinitAudio() override { return note(deinitStatus, "deinitAudio"); }
    unsigned int connectInput(std::string source, std::string sink, JValue attribute) override
    {
        return note(answer, "connectInput", source, sink, attribute);
    }
    unsigned int disconnectInput(std::string source, std::string sink) override
    {
        return note(answer, "disconnectInput", source, sink);
    }
    unsigned int getHeadphoneStatus(bool* connected) override
    {
        headphonePointer = connected;
        if (connected != nullptr)
            *connected = true;
        return note(answer, "getHeadphoneStatus");
    }
    unsigned int removePipelineInfo(std::string pipelineId) override
    {
        return note(answer, "removePipelineInfo", pipelineId);
    }
    unsigned int setSoundOutput(std::string output) override
    {
        return note(answer, "setSoundOutput", output);
    }
    unsigned int setMute(std::string source, std::string sink, bool mute) override
    {
        return note(answer, "setMute", source, sink, mute);
    }
    unsigned int setOutputVolume(std::string output, std::uint8_t volume) override
    {
        return note(answer, "setOutputVolume", output, volume);
    }
    unsigned int setInputVolume(std::string source, std::string sink, std::uint8_t volume) override
    {
        return note(answer, "setInputVolume", source, sink, volume);
    }
    unsigned int setOutputMute(std::string output, bool mute) override
    {
        return note(answer, "setOutputMute", output, mute);
    }
    unsigned int setMuteExtSPK(bool mute) override { return note(answer, "setMuteExtSPK", mute); }
    unsigned int setQualityAttribute(JValue attribute) override
    {
        return note(answer, "setQualityAttribute", attribute);
    }
    unsigned int setSettings(std::string category, JValue payload) override
    {
        return note(answer, "setSettings", category, payload);
    }
    JValue getSettings(const std::string& category, JValue request) override
    {
        return note(reply, "getSettings", category, request);
    }

private:
    template <typename Result, typename... Arguments>
    Result note(const Result& result, const std::string& operation, const Arguments&... arguments)
    {
        std::string call = operation;
        ((call += "|" + shown(arguments)), ...);
        calls.push_back(call);
        if (raise)
            raise();
        return result;
    }
};

inline RecordingBackend& backend()
{
    static RecordingBackend instance;
    return instance;
}

inline int gCreations = 0;

inline kepAudio* createBackend()
{
    ++gCreations;
    return &backend();
}

inline kepAudio* decline()
{
    return nullptr;
}

inline kepAudio* createAndThrow()
{
    throw std::runtime_error{"no backend today"};
}

inline kepClient& client()
{
    return *kepClient::getInstance();
}

inline bool gConnected = false;

struct Request {
    unsigned int (*send)();
    std::string received;
};
// clang-format off
inline const Request kRequests[] = {
    {[] { return client().connectInput("ADEC0", "tv_speaker", json(R"({"stream":"kepgame"})")); },
     R"(connectInput|ADEC0|tv_speaker|{"stream":"kepgame"})"},
    {[] { return client().connectInput("", "", JValue{}); },
     "connectInput|||null"},
    {[] { return client().connectInput("A", "B", JValue::invalid()); },
     "connectInput|A|B|invalid"},
    {[] { return client().disconnectInput("AMIXER", "ALSA"); },
     "disconnectInput|AMIXER|ALSA"},
    {[] { return client().disconnectInput("", "MAIN"); },
     "disconnectInput||MAIN"},
    {[] { return client().getHeadphoneStatus(&gConnected); },
     "getHeadphoneStatus"},
    {[] { return client().getHeadphoneStatus(nullptr); },
     "getHeadphoneStatus"},
    {[] { return client().removePipelineInfo("pipeline 7"); },
     "removePipelineInfo|pipeline 7"},
    {[] { return client().setSoundOutput("tv_speaker"); },
     "setSoundOutput|tv_speaker"},
    {[] { return client().setSoundOutput("no such \xc3\xb6utput"); },
     "setSoundOutput|no such \xc3\xb6utput"},
    {[] { return client().setMute("ADEC0", "MAIN", true); },
     "setMute|ADEC0|MAIN|true"},
    {[] { return client().setMute("ADEC1", "SUB", false); },
     "setMute|ADEC1|SUB|false"},
    {[] { return client().setOutputVolume("headphone", 0); },
     "setOutputVolume|headphone|0"},
    {[] { return client().setOutputVolume("headphone", 255); },
     "setOutputVolume|headphone|255"},
    {[] { return client().setInputVolume("AMIXER", "ALSA", 1); },
     "setInputVolume|AMIXER|ALSA|1"},
    {[] { return client().setInputVolume("ADEC", "MAIN", 255); },
     "setInputVolume|ADEC|MAIN|255"},
    {[] { return client().setOutputMute("external_arc", true); },
     "setOutputMute|external_arc|true"},
    {[] { return client().setOutputMute("external_arc", false); },
     "setOutputMute|external_arc|false"},
    {[] { return client().setMuteExtSPK(true); },
     "setMuteExtSPK|true"},
    {[] { return client().setMuteExtSPK(false); },
     "setMuteExtSPK|false"},
    {[] { return client().setQualityAttribute(json(R"({"id":"7","rates":[1,2.5]})")); },
     R"(setQualityAttribute|{"id":"7","rates":[1,2.5]})"},
    {[] { return client().setSettings("audioEQ", json(R"({"bands":[1,-2,3]})")); },
     R"(setSettings|audioEQ|{"bands":[1,-2,3]})"},
};
// clang-format on

struct VolumeRow {
    const char* json;
    std::uint8_t volume;
};
// clang-format off
inline constexpr VolumeRow kDefaultVolumes[] = {
    {"15",     15},
    {"0",      0},
    {"255",    255},
    {"256",    0},
    {"300",    44},
    {"-1",     255},
    {"12.9",   12},
    {"-0.5",   0},
    {"-1.9",   255},
    {"\"15\"", 0},
    {"true",   0},
    {"null",   0},
    {"{}",     0},
    {"[15]",   0},
};
// clang-format on

struct Thrower {
    const char* what;
    void (*raise)();
};
inline constexpr Thrower kThrowers[] = {
    {"an exception", [] { throw std::runtime_error{"broken"}; }},
    {"out of memory", [] { throw std::bad_alloc{}; }},
    {"a number", [] { throw 7; }},
    {"a text", [] { throw "broken"; }},
};

inline LogLine errorOf(const std::string& function, const std::string& id, const std::string& text)
{
    return {kLogError, id, "kepclient:" + function, text};
}

inline const LogLine kNotLoaded =
    errorOf("initialize", "INVALID_KEP_TYPE", "Failed to load KEP Config file");
inline const LogLine kNoBackendName =
    errorOf("initialize", "INVALID_KEP_TYPE", "Failed to get kep soc type from config");
inline const LogLine kNotStopped = errorOf("deinitialize", "ERROR_LOG", "Failed to deinitAudio");
inline const LogLine kWantsBackend{kLogDebug, "", "kepconfig:getValue",
                                   "Need value for soc type: Q27R5 & key type: kepAudio"};
inline const LogLine kWantsVolume{kLogDebug, "", "kepconfig:getDefaultVolume",
                                  "Need value for soc type: Q27R5 & key type: kepDefaultVolume"};

inline LogLine defaultVolume(int volume)
{
    return {kLogDebug, "", "kepclient:initialize", "Default volume " + std::to_string(volume)};
}

inline LogLine starting(const std::string& name)
{
    return {kLogInfo, "INFO_LOG", "kepclient:initialize", "In kepClient::initialize " + name};
}

class KepClient : public TelevisionTest
{
protected:
    KepClient()
    {
        kepFactory::getInstance()->Register("RECORDING", &createBackend);
        kepFactory::getInstance()->Register("DECLINING", &decline);
        kepFactory::getInstance()->Register("THROWING", &createAndThrow);
    }

    void configure(const std::string& content) const { writeConfig("kep-config.json", content); }
    void configureSection(const std::string& members) const
    {
        configure(R"({"Q27R5": {)" + members + "}}");
    }
    /// Starts the recording backend and forgets that.
    void start()
    {
        configureBackend("RECORDING");
        ASSERT_EQ(client().initialize(), KEP_STATUS_OK);
        backend().calls.clear();
        forget();
    }
    [[nodiscard]] LogLine loading() const
    {
        return {kLogInfo, "LOAD_CONFIG", "kepconfig:loadKEPConfig",
                "Loading kepConfig config from file " + (directory() / "kep-config.json").string()};
    }
    [[nodiscard]] LogLine unreadable(const std::string& reason) const
    {
        return {kLogError, "CONFIG_FILE_READ_FAILED", "kepconfig:loadKEPConfig",
                "Failed to parse kep config file, using defaults. File: " +
                    (directory() / "kep-config.json").string() + ". Error: " + reason};
    }
};
