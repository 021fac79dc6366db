// SPDX-License-Identifier: Apache-2.0
// Settings: the categories of the sound engine.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "settingstest.h"

namespace
{

// --- Sound engine

struct StatusRow {
    const char* status;
    const char* on;
};
constexpr StatusRow kStatuses[] = {{"on", "true"}, {"off", "false"}};

TEST_F(SettingsTest, TheEqualizerIsSetInAmplifierThenSoundEngine)
{
    for (const auto& [status, on] : kStatuses) {
        const std::string payload = R"({"status":")" + std::string{status} + R"("})";
        const std::string amplifier = "amplifier.setAmpEQ " + std::string{on};
        const std::string sound = "soundengine.setInstartAudioEQ " + std::string{on};
        const LogLine amplifierRefused = kAmplifier.error(
            "setEqualizerStatus", "Failed to set amplifier equalizer as " + std::string{status});
        const LogLine soundRefused = kEngine.error(
            "setEqualizerStatus", "Failed to set audio equalizer as " + std::string{status});
        const LogLine start = engine("audioEQ");
        expect(
            {"audioEQ", payload, {start, eqStatus(status), audioEq(status)}, {amplifier, sound}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), amplifierRefused, audioEq(status)},
                {amplifier + " -> 7", sound},
                kFailed,
                {"amplifier.setAmpEQ"}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), audioEq(status), soundRefused},
                {amplifier, sound + " -> 7"},
                kFailed,
                {"soundengine.setInstartAudioEQ"}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), amplifierRefused, audioEq(status), soundRefused},
                {amplifier + " -> 7", sound + " -> 7"},
                kFailed,
                {"amplifier.setAmpEQ", "soundengine.setInstartAudioEQ"}});
    }
}

TEST_F(SettingsTest, TheSoundEngineIsSwitched)
{
    for (const auto& [status, on] : kStatuses) {
        const std::string payload = R"({"status":")" + std::string{status} + R"("})";
        const std::string call = "soundengine.setInstartSoundEngine " + std::string{on};
        const Lines lines = {engine("soundEngine"),
                             kEngine.info("setSoundEngineStatus",
                                          "Setting Instart SoundEngine " + std::string{status})};
        expect({"soundEngine", payload, lines, {call}});
        expect(
            {"soundEngine",
             payload,
             all({lines,
                  {kEngine.error("setSoundEngineStatus",
                                 "Failed to set sound engine status as " + std::string{status})}}),
             {call + " -> 7"},
             kFailed,
             {"soundengine.setInstartSoundEngine"}});
    }
}

TEST_F(SettingsTest, AStatusIsExactlyOnOrOff)
{
    struct Row {
        const char* category;
        const char* handler;
        const char* subject;
    };
    for (const Row& row : {Row{"audioEQ", "setEqualizerSettings", "setEqualizerStatus"},
                           Row{"soundEngine", "setSoundEngineStatus", "soundEngineStatus"}}) {
        const auto invalid = [&](const std::string& status) {
            return kSettings.error(row.handler,
                                   "Invalid status " + status + " for setting " + row.subject);
        };
        for (const char* status : {"On", "OFF", "", "on ", "true"})
            expect({row.category,
                    R"({"status":")" + std::string{status} + R"("})",
                    {engine(row.category), invalid(status)},
                    {},
                    kFailed});
        for (const char* status : {"true", "null", "1", R"(["on"])", R"({"on":1})"})
            expect({row.category,
                    member("status", status),
                    {engine(row.category), invalid("")},
                    {},
                    kFailed});
        for (const char* nothing : {"{}", "[]", R"("on")", "null", R"({"Status":"on"})"})
            expect({row.category,
                    nothing,
                    {engine(row.category),
                     kSettings.error(row.handler, "status value not present for " +
                                                      std::string{row.category} + " category")},
                    {},
                    kFailed});
    }
}

TEST_F(SettingsTest, MagicSpaceSoundIsPassedOn)
{
    const auto start = [](const std::string& payload) {
        return Lines{
            engine("magicSpaceSound"),
            kEngine.info("setMagicSpaceSound", "Setting MagicSpace SoundParams " + payload)};
    };
    const std::string payload = R"({"soundSettingValues":[1,2.9,"x"]})";
    expect({"magicSpaceSound",
            payload,
            all({start(payload),
                 {kEngine.debug("setMagicSpaceSound", "set magic space sound successfully")}}),
            {"soundengine.setMagicSpaceSoundParams [1,2,0] 3"}});
    expect({"magicSpaceSound",
            payload,
            all({start(payload),
                 {kEngine.error("setMagicSpaceSound", "Failed to set magic space sound")}}),
            {"soundengine.setMagicSpaceSoundParams [1,2,0] 3 -> 7"},
            kFailed,
            {"soundengine.setMagicSpaceSoundParams"}});
    for (const char* value : {"5", "null", "true", R"("x")", "{}", "[]"}) {
        const std::string empty = member("soundSettingValues", value);
        expect({"magicSpaceSound",
                empty,
                all({start(empty),
                     {kEngine.debug("setMagicSpaceSound", "set magic space sound successfully")}}),
                {"soundengine.setMagicSpaceSoundParams [] 0"}});
    }
    for (const char* nothing : {"{}", "[1]", R"("x")", "null"})
        expect({"magicSpaceSound",
                nothing,
                all({start(nothing),
                     {kEngine.error("setMagicSpaceSound", "No values to set magic space sound")}}),
                {},
                kFailed});
}

TEST_F(SettingsTest, DolbyAtmosIsOnForOnAlone)
{
    for (const auto& [text, on] :
         {std::pair{"on", "true"}, {"off", "false"}, {"On", "false"}, {"", "false"}}) {
        const std::string payload = R"({"atmosState":")" + std::string{text} + R"("})";
        const std::string call = "soundengine.setDolbyAtmos " + std::string{on};
        const Lines lines = {
            engine("dolbyAtmos"),
            kEngine.info("setDolbyAtmos", "Setting Dolby Atmos State " + std::string{text})};
        expect({"dolbyAtmos", payload, lines, {call}});
        expect({"dolbyAtmos",
                payload,
                all({lines,
                     {kEngine.error("setDolbyAtmos",
                                    "Failed to set Dolby Atmos as " + std::string{text})}}),
                {call + " -> 7"},
                kFailed,
                {"soundengine.setDolbyAtmos"}});
    }
    for (const char* nothing :
         {"{}", "[]", R"("on")", "null", R"({"atmosState":true})", R"({"atmosState":null})",
          R"({"atmosState":1})", R"({"atmosState":["on"]})", R"({"atmosState":{}})"})
        expect({"dolbyAtmos", nothing, {engine("dolbyAtmos")}, {}, kFailed});
}

TEST_F(SettingsTest, ForcedDolbyAtmosNeedsItsKeyAlone)
{
    for (const auto& [value, on] : {std::pair{"true", "1"}, {"false", "0"}}) {
        const std::string payload = member("forcedDolbyAtmos", value);
        const std::string call = "soundengine.setForcedDolbyAtmos " + std::string{value};
        const Lines lines = {
            engine("forcedDolbyAtmos"),
            kEngine.info("setForcedDolbyAtmos", "setForcedDolbyAtmos " + std::string{on})};
        expect({"forcedDolbyAtmos", payload, lines, {call}});
        expect({"forcedDolbyAtmos",
                payload,
                all({lines,
                     {kEngine.error("setForcedDolbyAtmos",
                                    "Failed to set forced Dolby Atmos as " + std::string{on})}}),
                {call + " -> 7"},
                kFailed,
                {"soundengine.setForcedDolbyAtmos"}});
    }
    for (const char* value : {R"("true")", "null", "1", "[]", "{}"})
        expect(
            {"forcedDolbyAtmos", member("forcedDolbyAtmos", value), {engine("forcedDolbyAtmos")}});
    for (const char* nothing : {"{}", "[]", R"("forcedDolbyAtmos")", "null"})
        expect({"forcedDolbyAtmos", nothing, {engine("forcedDolbyAtmos")}, {}, kFailed});
}

} // namespace
