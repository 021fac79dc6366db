// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of routing.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tvbackendtest.h"

inline constexpr const char* kUsual =
    "gain.setGainAsInput"; // what ends every successful connection

struct ResourceRow {
    const char* source;
    const char* sink;
    KEP_AUDIO_RESOURCE_T resource;
    const char* address; // index and port
};

// clang-format off
inline constexpr ResourceRow kResources[] = {
    // source     sink    resource                     address
    {"ADEC",     "MAIN", KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC",     "SUB",  KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC0",    "MAIN", KEP_AUDIO_RESOURCE_ADEC0,    "1 0"},
    {"ADEC1",    "SUB",  KEP_AUDIO_RESOURCE_ADEC1,    "1 1"},
    {"AMIXER",   "ALSA", KEP_AUDIO_RESOURCE_AMIXER0,  "16 0"},
    {"AMIXER0",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER0,  "16 0"},
    {"AMIXER1",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER1,  "16 1"},
    {"AMIXER2",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER2,  "16 2"},
    {"AMIXER3",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER3,  "16 3"},
    {"AMIXER4",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER4,  "16 4"},
    {"AMIXER5",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER5,  "16 5"},
    {"AMIXER6",  "MAIN", KEP_AUDIO_RESOURCE_AMIXER6,  "16 6"},
    {"AMIXER7",  "SUB",  KEP_AUDIO_RESOURCE_AMIXER7,  "16 7"},
};

inline constexpr ResourceRow kNoResources[] = {
    {"ADEC",     "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"ADEC0",    "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER",   "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER3",  "ALSA", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"AMIXER8",  "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"adec0",    "MAIN", KEP_AUDIO_RESOURCE_INVALID, ""},
    {"",         "",     KEP_AUDIO_RESOURCE_INVALID, ""},
};
// clang-format on

struct Member {
    KEP_AUDIO_SNDOUT_T output;
    const char* type; // the driver's bit
};

struct OutputRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
    std::vector<Member> members;
};

// clang-format off
inline const std::vector<OutputRow> kOutputs = {
    {"tv_speaker",             KEP_AUDIO_SPK,             {{KEP_AUDIO_SPK, "1"}}},
    {"external_speaker",       KEP_AUDIO_SPDIF,           {{KEP_AUDIO_SPDIF, "2"}}},
    {"headphone",              KEP_AUDIO_HP,              {{KEP_AUDIO_HP, "16"}}},
    {"tv_speaker_external",    KEP_AUDIO_SPK_SPDIF,       {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}}},
    {"external_arc",           KEP_AUDIO_ARC,             {{KEP_AUDIO_ARC, "32"}}},
    {"tv_speaker_headphone",   KEP_AUDIO_SPK_HP,          {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_HP, "16"}}},
    {"qnSoundSync",            KEP_AUDIO_QN_SOUND_SYNC,   {{KEP_AUDIO_QN_SOUND_SYNC, "4"}}},
    {"bt_soundbar",            KEP_AUDIO_BT_SOUNDBAR,     {{KEP_AUDIO_BT_SOUNDBAR, "8"}}},
    {"wisa_speaker",           KEP_AUDIO_WISA,            {{KEP_AUDIO_WISA, "64"}}},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC, {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_SPDIF, "2"}, {KEP_AUDIO_ARC, "32"}}},
    {"tv_speaker_bluetooth",   KEP_AUDIO_SPK_BLUETOOTH,   {{KEP_AUDIO_SPK, "1"}, {KEP_AUDIO_BLUETOOTH, "128"}}},
};
// clang-format on

inline constexpr KEP_AUDIO_SNDOUT_T kNotSelectable[] = {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_ALSA,
                                                        KEP_AUDIO_BLUETOOTH};

inline JValue purposes(const Texts& names)
{
    return with("pipelinePurpose", arrayOf(names));
}

inline JValue game()
{
    JValue attributes = purposes({"MAIN"});
    attributes.put("streamType", "kepgame");
    return attributes;
}

inline LogLine notSet(const std::string& function, const std::string& element)
{
    return error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:" + function,
                 "Did not able to set the element: " + element);
}

class RoutingTest : public TvBackendTest
{
protected:
    RoutingTest() { mBackend.deinitAudio(); } // no resource is connected

    void select(const std::string& output)
    {
        EXPECT_EQ(mBackend.setSoundOutput(output), kDone) << output;
        forget();
    }

    unsigned int connect(const std::string& source, const std::string& sink,
                         const JValue& request = purposes({"MAIN"}))
    {
        return mBackend.connectInput(source, sink, request);
    }
    unsigned int disconnect(const std::string& source, const std::string& sink)
    {
        return mBackend.disconnectInput(source, sink);
    }

    /// Addresses of all recorded resources, as a re-routing writes them.
    Texts recorded()
    {
        const std::string prefix = "Sndout Connect 77 ";
        forget();
        EXPECT_TRUE(mBackend.connectDisconnectResources(77, /*connect=*/true));
        Texts addresses;
        for (const std::string& text : told()) {
            EXPECT_EQ(text.substr(0, prefix.size()), prefix);
            addresses.push_back(text.substr(prefix.size()));
        }
        forget();
        return addresses;
    }
};

class ConnectInput : public RoutingTest
{
};
class DisconnectInput : public RoutingTest
{
};
class MainAudio : public RoutingTest
{
protected:
    static constexpr const char* kMainAudio = "Sndout MainAudio Output 1 0";
    static constexpr const char* kConnect = "Sndout Connect 1 1 0";

    MainAudio() { select("tv_speaker"); }
};
class Reroute : public RoutingTest
{
protected:
    static constexpr const char* kFunction = "connectDisconnectResources";
};
