// SPDX-License-Identifier: Apache-2.0
// kepctl as it is used: exit status and command line.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// --- Exit status and command line

TEST_F(Kepctl, AScriptThatEndsGivesZero)
{
    const Execution outcome = play(kInitialize + kVolume40);
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(Kepctl, AFailedCallGivesZeroUnlessStrict)
{
    const std::string failing[] = {
        kVolume40,                     // no backend yet
        kHeadphone,                    // likewise
        R"({"call": "deinitialize"})", // likewise
        kInitialize +
            R"({"inject": {"stage": "open", "status": -5}})"
            "\n" +
            kVolume40,
        kVolume40 + kInitialize + kVolume40, // only the first call fails
    };
    for (const std::string& content : failing) {
        EXPECT_EQ(play(content).status, kPlayed) << content;
        EXPECT_EQ(play(content, {"--strict"}).status, kCallFailed) << content;
    }
}

TEST_F(Kepctl, StrictIsContentWithCallsThatSucceed)
{
    const Execution outcome = play(R"({"call": "getDefaultVolume"})"
                                   "\n"
                                   R"({"call": "getSettings", "args": ["x", {}]})"
                                   "\n" +
                                       kInitialize + kVolume40 + R"({"call": "deinitialize"})",
                                   {"--strict"});
    EXPECT_EQ(outcome.status, kPlayed) << outcome.output;
    EXPECT_EQ(eventsOf(outcome, "result").size(), 5U);
}

TEST_F(Kepctl, StrictPlaysTheScriptToItsEnd)
{
    const Execution outcome = play(kVolume40 + kInitialize + kVolume40, {"--strict"});
    EXPECT_THAT(eventsOf(outcome, "control"), ElementsAre(kVolumeWritten));
}

TEST_F(Kepctl, ABadLineGivesTwoEvenWhenStrict)
{
    EXPECT_EQ(play(kVolume40 + "x", {"--strict"}).status, kUnusable);
}

TEST_F(Kepctl, UnusableOptionsGiveTwoAndAReason)
{
    struct Row {
        Texts arguments;
        const char* reason;
    };
    const std::string path = script(kInitialize);
    const Row rows[] = {
        {{}, "Usage"},
        {{"play", path}, "Usage"},
        {{"env", "x"}, "env takes no arguments"},
        {{"run"}, "no script"},
        {{"run", "--strict"}, "no script"},
        {{"run", "--backend", "tv", path}, "--backend must be TV or ALSA"},
        {{"run", "--backend", "", path}, "--backend must be TV or ALSA"},
        {{"run", "--backend"}, "--backend"},
        {{"run", "--config"}, "--config"},
        {{"run", "--format", "json", path}, "--format must be text or jsonl"},
        {{"run", "--format=", path}, "--format must be text or jsonl"},
        {{"run", "--format"}, "--format"},
        {{"run", "--log-level", "5", path}, "--log-level must be 3, 4, 6 or 7"},
        {{"run", "--log-level", "0", path}, "--log-level must be 3, 4, 6 or 7"},
        {{"run", "--log-level", "-3", path}, "--log-level must be 3, 4, 6 or 7"},
        {{"run", "--log-level", "8", path}, "--log-level must be 3, 4, 6 or 7"},
        {{"run", "--log-level", "7x", path}, "7x"},
        {{"run", "--log-level", "debug", path}, "debug"},
        {{"run", "--log-level", "99999999999", path}, "99999999999"},
        {{"run", "--log-level"}, "--log-level"},
        {{"run", "--loud", path}, "--loud"},
        {{"run", "-x", path}, "-x"},
    };
    for (const Row& row : rows) {
        const Execution outcome = kepctl(row.arguments);
        EXPECT_EQ(outcome.status, kUnusable) << row.reason;
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason));
        EXPECT_EQ(outcome.output, "") << row.reason;
    }
}

TEST_F(Kepctl, ASwitchTakesNoValue)
{
    for (const char* option : {"--strict=no", "--hardware=no"}) {
        const Execution outcome = kepctl({"run", option, script(kHeadphone)});
        EXPECT_EQ(outcome.status, kUnusable) << option;
        EXPECT_EQ(outcome.output, "") << option;
    }
}

TEST_F(Kepctl, HelpNamesEveryCommandAndOption)
{
    for (const char* option : {"--help", "-h"}) {
        const Execution outcome = kepctl({option});
        EXPECT_EQ(outcome.status, kPlayed);
        EXPECT_THAT(outcome.output, AllOf(HasSubstr("kepctl run"), HasSubstr("kepctl env")));
    }
    const Execution outcome = kepctl({"run", "--help"});
    EXPECT_EQ(outcome.status, kPlayed);
    for (const char* option :
         {"--backend", "--config", "--format", "--log-level", "--strict", "--hardware"})
        EXPECT_THAT(outcome.output, HasSubstr(option));
}

TEST_F(Kepctl, TheBackendOptionChoosesTheShippedConfiguration)
{
    const std::string path = script(kInitialize);
    const std::string tv = "share/kep/TV/kep-config.json";
    const std::string alsa = "share/kep/ALSA/kep-config.json";
    EXPECT_THAT(kepctl({"run", path}).output, HasSubstr(tv));
    EXPECT_THAT(kepctl({"run", "--backend", "TV", path}).output, HasSubstr(tv));
    const Execution mixer = kepctl({"run", "--backend=ALSA", path});
    EXPECT_THAT(mixer.output, AllOf(HasSubstr(alsa), HasSubstr("In kepClient::initialize ALSA")));
}

TEST_F(Kepctl, TheConfigOptionReadsBothFilesFromThere)
{
    configureBackend("ALSA");
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": "hw:0",
        "muteControlName": "'Sndout Open'", "volumeControlName": "'Sndout Close'"}})");
    const Execution outcome =
        kepctl({"run", "--config", directory(), "--backend", "TV", "--format", "jsonl",
                script(kInitialize + kVolume40 + R"({"call": "getDefaultVolume"})")});
    EXPECT_THAT(outcome.output, HasSubstr(directory() / "kep-config.json"));
    EXPECT_THAT(outcome.output, HasSubstr(directory() / "device-cap.json"));
    EXPECT_THAT(eventsOf(outcome, "control"),
                ElementsAre(HasSubstr(R"("card":"hw:0","element":"Sndout Close")")));
    EXPECT_THAT(eventsOf(outcome, "result"),
                Contains(R"({"event":"result","call":"getDefaultVolume","result":15})"));
}

TEST_F(Kepctl, TheFormatIsTextUnlessJsonLinesAreAskedFor)
{
    const std::string path = script(kHeadphone);
    const Execution text = kepctl({"run", path});
    EXPECT_THAT(text.output, AllOf(HasSubstr("getHeadphoneStatus()"), Not(HasSubstr("{\"event"))));
    EXPECT_EQ(kepctl({"run", "--format", "text", path}).output, text.output);
    EXPECT_THAT(linesOf(kepctl({"run", "--format", "jsonl", path}).output),
                Each(StartsWith("{\"event\":")));
}

TEST_F(Kepctl, TheLogLevelOptionAdmitsUpToThatLevel)
{
    struct Row {
        Texts options;
        std::vector<int> levels;
    };
    const Row rows[] = {
        {{}, {6, 3}},
        {{"--log-level", "3"}, {3}},
        {{"--log-level", "4"}, {3}},
        {{"--log-level", "6"}, {6, 3}},
        {{"--log-level", "7"}, {7, 6, 3}},
    };
    const std::string failing = kInitialize +
                                R"({"inject": {"stage": "open", "status": -5}})"
                                "\n" +
                                kVolume40;
    for (const Row& row : rows) {
        const Execution outcome = play(failing, row.options);
        for (const int level : {3, 6, 7}) {
            const bool admitted =
                std::find(row.levels.begin(), row.levels.end(), level) != row.levels.end();
            const std::string start = R"({"event":"log","level":)" + std::to_string(level) + ",";
            EXPECT_EQ(outcome.output.find(start) != std::string::npos, admitted)
                << testing::PrintToString(row.options) << " " << level;
        }
    }
}

TEST_F(Kepctl, WithHardwareTheCardsOfTheMachineAreUsed)
{
    // A machine whose default card is none that could be opened.
    setenv("ALSA_CONFIG_PATH", file("asound.conf", "ctl.default { type nosuch }\n").c_str(), 1);
    const Execution real = play(kInitialize + kVolume40, {"--hardware"});
    EXPECT_EQ(real.status, kPlayed);
    EXPECT_THAT(eventsOf(real, "control"), IsEmpty());
    EXPECT_THAT(eventsOf(real, "result"),
                Contains(R"({"event":"result","call":"setOutputVolume","result":2})"));
    EXPECT_THAT(eventsOf(play(kInitialize + kVolume40), "control"), ElementsAre(kVolumeWritten));
}
