// SPDX-License-Identifier: Apache-2.0
// kepctl as it is used: the built program with scripts, options, pipes and a terminal.
#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jdomparser.h"
#include "kepctltest.h"
#include "scriptline.h"

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::MatchesRegex;
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

// --- Which scripts

TEST_F(Kepctl, AMinusReadsStandardInput)
{
    const Execution outcome = kepctl({"run", "--format", "jsonl", "-"}, kHeadphone);
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(eventsOf(outcome, "request"), ElementsAre(kHeadphoneRequest));

    const Execution bad = kepctl({"run", "--format", "jsonl", "-"}, kHeadphone + "x\n");
    EXPECT_EQ(bad.status, kUnusable);
    EXPECT_THAT(bad.errors, StartsWith("kepctl: standard input:2:1: "));
}

TEST_F(Kepctl, SeveralScriptsArePlayedInOrderByOneProcess)
{
    const std::string first = file("first.jsonl", kInitialize);
    const std::string second = file("second.jsonl", kVolume40);
    const Execution outcome =
        kepctl({"run", "--backend", "ALSA", "--format", "jsonl", first, second, "-"}, kHeadphone);
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(
        eventsOf(outcome, "request"),
        ElementsAre(HasSubstr("initialize"), HasSubstr("setOutputVolume"), kHeadphoneRequest));
    EXPECT_THAT(eventsOf(outcome, "control"), ElementsAre(kVolumeWritten));
}

TEST_F(Kepctl, ABadLineKeepsAllScriptsFromBeingPlayed)
{
    const std::string good = file("good.jsonl", kInitialize);
    const std::string first = file("first.jsonl", kHeadphone + "x\n");
    const std::string second = file("second.jsonl", kInitialize);
    const Execution outcome = kepctl({"run", "--format", "jsonl", good, first, second});
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith("kepctl: " + first + ":2:1: "));
}

TEST_F(Kepctl, AScriptThatCannotBeReadIsNamedBeforeAnythingIsPlayed)
{
    const std::string good = script(kHeadphone);
    const std::string missing = directory() / "nosuch.jsonl";
    const Execution outcome = kepctl({"run", "--format", "jsonl", good, missing, good});
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_EQ(outcome.errors, "kepctl: " + missing + ": No such file or directory\n");
    EXPECT_EQ(outcome.output, "");

    const Execution folder = kepctl({"run", directory()});
    EXPECT_EQ(folder.status, kUnusable);
    EXPECT_EQ(folder.errors, "kepctl: " + directory().string() + ": Is a directory\n");
    EXPECT_EQ(folder.output, "");
}

TEST_F(Kepctl, AnEmptyScriptDoesNothing)
{
    for (const char* content : {"", "\n", "# only a comment", " \t\n\n\r\n"}) {
        const Execution outcome = play(content);
        EXPECT_EQ(outcome.status, kPlayed) << content;
        EXPECT_EQ(outcome.output + outcome.errors, "") << content;
    }
}

TEST_F(Kepctl, CommentsAndBlankLinesAreSkippedButCounted)
{
    const Execution outcome =
        play("# a comment\n\n" + kHeadphone + "  \n#{\"call\": 1}\n\t\r\nx\n");
    EXPECT_THAT(outcome.errors, HasSubstr("script.jsonl:7:1: "));
}

TEST_F(Kepctl, ALineMayEndLikeOnAnotherSystemOrNotAtAll)
{
    const Execution outcome = play("{\"call\": \"getHeadphoneStatus\"}\r\n"
                                   "{\"call\": \"getHeadphoneStatus\"}");
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(eventsOf(outcome, "request"), ElementsAre(kHeadphoneRequest, kHeadphoneRequest));
}

// --- Bad lines

namespace
{

struct BadLineRow {
    const char* line;
    const char* reason;
};
// clang-format off
constexpr BadLineRow kBadLines[] = {
    // not a line at all
    {R"(x)",                                                 "no JSON"},
    {R"({"call": "initialize")",                             "no JSON"},
    {R"({"call": "initialize"} {})",                         "no JSON"},
    {R"({'call': 'initialize'})",                            "no JSON"},
    {"{\"call\": \"\xff\"}",                                 "UTF-8"},
    {R"([{"call": "initialize"}])",                          "must be an object"},
    {R"("initialize")",                                      "must be an object"},
    {R"(null)",                                              "must be an object"},
    {R"({})",                                                "must be an object"},
    // unknown keys, or too many
    {R"({"play": "initialize"})",                            R"(unknown key "play")"},
    {R"({"args": []})",                                      R"(unknown key "args")"},
    {R"({"call": "initialize", "arg": []})",                 R"(unknown key "arg")"},
    {R"({"call": "initialize", "event": "x"})",              R"(unknown key "event")"},
    {R"({"call": "initialize", "wait": 1})",                 R"(unknown key "wait")"},
    {R"({"wait": 1, "clear": true})",                        "no other key"},
    {R"({"clear": true, "x": 1})",                           "no other key"},
    // calls
    {R"({"call": 1})",                                       R"("call" must be a string)"},
    {R"({"call": "Initialize"})",                            R"(unknown operation "Initialize")"},
    {R"({"call": "getAudioObj"})",                           R"(unknown operation "getAudioObj")"},
    {R"({"call": ""})",                                      R"(unknown operation "")"},
    {R"({"call": "initialize", "args": {}})",                R"("args" must be an array)"},
    {R"({"call": "initialize", "args": null})",              R"("args" must be an array)"},
    {R"({"call": "initialize", "args": [1]})",               "takes 0 arguments, not 1"},
    {R"({"call": "getDefaultVolume", "args": [1]})",         "takes 0 arguments, not 1"},
    {R"({"call": "getHeadphoneStatus", "args": [true]})",    "takes 0 arguments, not 1"},
    {R"({"call": "connectInput"})",                          "takes 3 arguments, not 0"},
    {R"({"call": "connectInput", "args": ["a", "b"]})",      "takes 3 arguments, not 2"},
    {R"({"call": "disconnectInput", "args": ["a"]})",        "takes 2 arguments, not 1"},
    {R"({"call": "setSettings", "args": ["a", {}, {}]})",    "takes 2 arguments, not 3"},
    {R"({"call": "connectInput", "args": [1, "b", {}]})",    "argument 1 must be a string"},
    {R"({"call": "connectInput", "args": ["a", null, {}]})", "argument 2 must be a string"},
    {R"({"call": "setSoundOutput", "args": [["tv"]]})",      "argument 1 must be a string"},
    {R"({"call": "removePipelineInfo", "args": [1]})",       "argument 1 must be a string"},
    {R"({"call": "getSettings", "args": [{}, {}]})",         "argument 1 must be a string"},
    {R"({"call": "setMute", "args": ["a", "b", 1]})",        "argument 3 must be true or false"},
    {R"({"call": "setMuteExtSPK", "args": ["true"]})",       "argument 1 must be true or false"},
    {R"({"call": "setOutputMute", "args": ["a", null]})",    "argument 2 must be true or false"},
    {R"({"call": "setOutputVolume", "args": ["a", -1]})",    "argument 2 must be a whole number from 0 to 255"},
    {R"({"call": "setOutputVolume", "args": ["a", 256]})",   "argument 2 must be a whole number from 0 to 255"},
    {R"({"call": "setOutputVolume", "args": ["a", 1.5]})",   "argument 2 must be a whole number from 0 to 255"},
    {R"({"call": "setOutputVolume", "args": ["a", "9"]})",   "argument 2 must be a whole number from 0 to 255"},
    {R"({"call": "setOutputVolume", "args": ["a", true]})",  "argument 2 must be a whole number from 0 to 255"},
    {R"({"call": "setInputVolume", "args": ["a","b",999]})", "argument 3 must be a whole number from 0 to 255"},
    // wait
    {R"({"wait": -1})",                                      R"("wait" must be a whole number)"},
    {R"({"wait": 0.5})",                                     R"("wait" must be a whole number)"},
    {R"({"wait": "10"})",                                    R"("wait" must be a whole number)"},
    {R"({"wait": null})",                                    R"("wait" must be a whole number)"},
    {R"({"wait": 99999999999})",                             R"("wait" must be a whole number)"},
    {R"({"wait": 99999999999999999999999})",                 R"("wait" must be a whole number)"},
    // set
    {R"({"set": 7})",                                        R"("set" must be an object)"},
    {R"({"set": {"loglevel": 7}})",                          R"(unknown key "loglevel")"},
    {R"({"set": {"logLevel": 5}})",                          R"("logLevel" must be)"},
    {R"({"set": {"logLevel": 8}})",                          R"("logLevel" must be)"},
    {R"({"set": {"logLevel": "7"}})",                        R"("logLevel" must be)"},
    {R"({"set": {"gpio": "GPIO_RD_HP_LINK"}})",              R"("gpio" must be an object)"},
    {R"({"set": {"gpio": {"GPIO_RD_HP_LINK": true}}})",      "GPIO_RD_HP_LINK must be a whole number"},
    {R"({"set": {"gainValue": -12}})",                       R"("gainValue" must be a string)"},
    {R"({"set": {"amplifierState": ["on"]}})",               R"("amplifierState" must be an object)"},
    {R"({"set": {"amplifierState": {"state": "on"}}})",      R"(unknown key "state")"},
    {R"({"set": {"amplifierState": {"type": 1}}})",          R"("type" must be a string)"},
    {R"({"set": {"amplifierState": {"states": "on"}}})",     R"("states" must be an array)"},
    {R"({"set": {"amplifierState": {"states": [1]}}})",      R"(element of "states" must be a string)"},
    {R"({"set": {"i2cData": "0x1f"}})",                      R"("i2cData" must be an array)"},
    {R"({"set": {"i2cData": [31]}})",                        R"(element of "i2cData" must be a string)"},
    // inject
    {R"({"inject": "write"})",                               R"("inject" must be an object)"},
    {R"({"inject": {}})",                                    R"("inject" lacks "control")"},
    {R"({"inject": {"status": -5}})",                        R"("inject" lacks "control")"},
    {R"({"inject": {"stage": "info", "status": -5}})",       R"("inject" lacks "control")"},
    {R"({"inject": {"control": "*"}})",                      R"("status" must be a whole number)"},
    {R"({"inject": {"control": "*", "status": "EIO"}})",     R"("status" must be a whole number)"},
    {R"({"inject": {"control": "*", "status": 5}})",         R"("status" must be a whole number)"},
    {R"({"inject": {"control": 1, "status": -5}})",          R"("control" must be a string)"},
    {R"({"inject": {"control": "*", "card": 0, "status": -5}})",
                                                             R"("card" must be a string)"},
    {R"({"inject": {"control": "*", "stage": "read", "status": -5}})",
                                                             R"("stage" must be open, load, info or write)"},
    {R"({"inject": {"control": "*", "stage": 1, "status": -5}})",
                                                             R"("stage" must be)"},
    {R"({"inject": {"control": "*", "status": -5, "times": 0}})",
                                                             R"("times" must be a whole number)"},
    {R"({"inject": {"control": "*", "status": -5, "times": "1"}})",
                                                             R"("times" must be a whole number)"},
    {R"({"inject": {"control": "*", "status": -5, "time": 1}})",
                                                             R"(unknown key "time")"},
    {R"({"inject": {"middleware": 1, "status": 1}})",        "must be a string"},
    {R"({"inject": {"middleware": "gain.setInputVolume"}})", R"("status" must be a whole number)"},
    {R"({"inject": {"middleware": "a", "stage": "open", "status": 1}})",
                                                             R"(unknown key "stage")"},
    {R"({"inject": {"middleware": "a", "gpio": "b", "status": 1}})",
                                                             R"(unknown key "gpio")"},
    {R"({"inject": {"gpio": [], "status": 1}})",             "must be a string"},
    {R"({"inject": {"gpio": "GPIO_RD_HP_LINK"}})",           R"("status" must be a whole number)"},
    {R"({"inject": {"subcpu": true, "status": 1}})",         "must be a string"},
    {R"({"inject": {"subcpu": "x", "status": 1.5}})",        R"("status" must be a whole number)"},
    // clear
    {R"({"clear": false})",                                  R"("clear" must be true)"},
    {R"({"clear": 1})",                                      R"("clear" must be true)"},
    {R"({"clear": "true"})",                                 R"("clear" must be true)"},
};
// clang-format on

} // namespace

TEST_F(Kepctl, ABadLineOfAFileIsNamedWithItsReasonAndNothingIsPlayed)
{
    for (const BadLineRow& row : kBadLines) {
        const Execution outcome = play("# what stands before\n" + kHeadphone + "\n" + row.line +
                                       "\n" + R"({"call": "getDefaultVolume"})");
        EXPECT_EQ(outcome.status, kUnusable) << row.line;
        EXPECT_THAT(outcome.errors, StartsWith("kepctl: " + script("") + ":4:")) << row.line;
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason)) << row.line;
        EXPECT_EQ(outcome.output, "") << row.line;
    }
}

TEST_F(Kepctl, ABadLineOfStandardInputEndsTheRun)
{
    for (const BadLineRow& row : kBadLines) {
        const Execution outcome =
            kepctl({"run", "--format", "jsonl", "-"},
                   kHeadphone + row.line + "\n" + R"({"call": "getDefaultVolume"})");
        EXPECT_EQ(outcome.status, kUnusable) << row.line;
        EXPECT_THAT(outcome.errors, StartsWith("kepctl: standard input:2:")) << row.line;
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason)) << row.line;
        EXPECT_THAT(
            linesOf(outcome.output),
            ElementsAre(
                kHeadphoneRequest,
                R"({"event":"result","call":"getHeadphoneStatus","result":2,"connected":false})"))
            << row.line;
    }
}

TEST_F(Kepctl, NothingOfABadLineIsDone)
{
    const std::string bad[] = {
        R"({"set": {"logLevel": 7, "gpio": 1}})",
        R"({"wait": 600000, "clear": true})",
    };
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& line : bad)
        EXPECT_EQ(play(kInitialize + line).status, kUnusable) << line;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes{1});
    // The backend that says good-bye would be heard at level 7.
    EXPECT_THAT(play(kInitialize + bad[0]).output, Not(HasSubstr("\"level\":7")));
}

// --- What a line does

TEST_F(Kepctl, NothingIsInitialisedBehindTheScriptsBack)
{
    const Execution outcome = play(kVolume40, {"--log-level", "7"});
    EXPECT_THAT(linesOf(outcome.output),
                ElementsAre(R"({"event":"request","call":"setOutputVolume","args":["speaker",40]})",
                            R"({"event":"result","call":"setOutputVolume","result":2})"));
}

TEST_F(Kepctl, AFailingInitializeIsReported)
{
    const std::string config = directory() / "nowhere";
    const Execution outcome = play(kInitialize + kVolume40, {"--config", config});
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(
        linesOf(outcome.output),
        ElementsAre(
            R"({"event":"request","call":"initialize"})",
            AllOf(StartsWith(R"({"event":"log","level":6,"id":"LOAD_CONFIG","text":"kepconfig:)"),
                  HasSubstr(config + "/kep-config.json")),
            StartsWith(R"({"event":"log","level":3,"id":"CONFIG_FILE_READ_FAILED","text":)"),
            StartsWith(R"({"event":"log","level":3,"id":"INVALID_KEP_TYPE","text":"kepclient:)"),
            R"({"event":"result","call":"initialize","result":0})",
            R"({"event":"request","call":"setOutputVolume","args":["speaker",40]})",
            R"({"event":"result","call":"setOutputVolume","result":2})"));
    EXPECT_EQ(play(kInitialize, {"--config", config, "--strict"}).status, kCallFailed);
}

TEST_F(Kepctl, EveryOperationReachesTheBackend)
{
    struct Row {
        const char* call;
        const char* result;
    };
    // clang-format off
    constexpr Row kRows[] = {
        {R"("initialize")",                                               R"("initialize","result":1)"},
        {R"("getDefaultVolume")",                                         R"("getDefaultVolume","result":15)"},
        {R"("connectInput", "args": ["AMIXER", "ALSA", {}])",             R"("connectInput","result":0)"},
        {R"("disconnectInput", "args": ["AMIXER", "ALSA"])",              R"("disconnectInput","result":0)"},
        {R"("getHeadphoneStatus")",                                       R"("getHeadphoneStatus","result":0,"connected":false)"},
        {R"("removePipelineInfo", "args": ["p1"])",                       R"("removePipelineInfo","result":0)"},
        {R"("setSoundOutput", "args": ["tv_speaker"])",                   R"("setSoundOutput","result":0)"},
        {R"("setMute", "args": ["AMIXER", "ALSA", true])",                R"("setMute","result":0)"},
        {R"("setOutputVolume", "args": ["tv_speaker", 255])",             R"("setOutputVolume","result":0)"},
        {R"("setInputVolume", "args": ["AMIXER", "ALSA", 0])",            R"("setInputVolume","result":0)"},
        {R"("setOutputMute", "args": ["tv_speaker", false])",             R"("setOutputMute","result":0)"},
        {R"("setMuteExtSPK", "args": [true])",                            R"("setMuteExtSPK","result":0)"},
        {R"("setQualityAttribute", "args": [{"a": [1]}])",                R"("setQualityAttribute","result":0)"},
        {R"("setSettings", "args": ["audioEQ", null])",                   R"("setSettings","result":0)"},
        {R"("getSettings", "args": ["audioEQ", 1])",                      R"("getSettings","result":true)"},
        {R"("deinitialize", "args": [])",                                 R"("deinitialize","result":1)"},
    };
    // clang-format on
    std::string content;
    Texts results;
    for (const Row& row : kRows) {
        content += std::string{R"({"call": )"} + row.call + "}\n";
        results.push_back(std::string{R"({"event":"result","call":)"} + row.result + "}");
    }
    const Execution outcome = play(content);
    EXPECT_EQ(outcome.status, kPlayed) << outcome.errors;
    EXPECT_EQ(eventsOf(outcome, "result"), results);
    EXPECT_EQ(eventsOf(outcome, "control").size(), 5U);
}

TEST_F(Kepctl, ARequestRepeatsItsLineCompactAndUnchanged)
{
    // clang-format off
    const std::string lines[] = {
        R"({"call":"setSettings","args":["x",{"b":1,"a":[true,null,{}],"n":1.50,"e":1e2,"big":9007199254740993}]})",
        R"({"call":"setSettings","args":["é/\"\\\u0001",""]})",
        R"({"args":[],"call":"getDefaultVolume"})",
        R"({"wait":1})",
        R"({"set":{"gpio":{"GPIO_RD_HP_LINK":1},"logLevel":7}})",
        R"({"set":{"gainValue":"-12"}})",
        R"({"set":{"amplifierState":{"type":"main","states":["on"]}}})",
        R"({"set":{"i2cData":["0x1f"]}})",
        R"({"set":{}})",
        R"({"inject":{"control":"Sndout Open","stage":"write","status":-5,"times":1}})",
        R"({"inject":{"card":"hw:0","control":"*","status":0}})",
        R"({"inject":{"stage":"open","status":-5}})",
        R"({"inject":{"stage":"load","status":-5}})",
        R"({"inject":{"middleware":"gain.setInputVolume","status":1,"times":1}})",
        R"({"inject":{"gpio":"GPIO_RD_HP_LINK","status":3}})",
        R"({"inject":{"subcpu":"subcpu_misc_Set_HPMuteOnOff","status":1}})",
        R"({"clear":true})",
    };
    // clang-format on
    std::string content;
    Texts requests;
    for (const std::string& line : lines) {
        content += line + "\n";
        requests.push_back(R"({"event":"request",)" + line.substr(1));
    }
    const Execution outcome = play(content);
    EXPECT_EQ(outcome.status, kPlayed) << outcome.errors;
    EXPECT_EQ(eventsOf(outcome, "request"), requests);
    EXPECT_THAT(eventsOf(play(R"(  { "call" :"getDefaultVolume" , "args": [ ] }  )"), "request"),
                ElementsAre(R"({"event":"request","call":"getDefaultVolume","args":[]})"));
}

TEST_F(Kepctl, EveryEventIsCompactJsonWithItsKeysInOrder)
{
    const Execution outcome = play(kInitialize + kVolume40 +
                                       R"({"inject": {"stage": "open", "status": -5}})"
                                       "\n" +
                                       kVolume40,
                                   {"--log-level", "7"});
    const std::string logForm =
        R"(\{"event":"log","level":[3467],"id":"[A-Z_]*","text":"[a-z]+:[A-Za-z~]+\([0-9]+\) .*"\})";
    for (const std::string& line : linesOf(outcome.output)) {
        JDomParser parser{JSchema::acceptAll()};
        const JValue event = parser.parse(line);
        ASSERT_TRUE(event.isObject()) << line;
        EXPECT_EQ(event.members().front().first, "event");
        EXPECT_EQ(event.stringify(), line);
    }
    EXPECT_THAT(eventsOf(outcome, "log"), Each(MatchesRegex(logForm)));
    EXPECT_THAT(eventsOf(outcome, "log"),
                Contains(HasSubstr(R"("level":7,"id":"","text":"kepclient:initialize()")));
    EXPECT_THAT(eventsOf(outcome, "control"),
                ElementsAre(kVolumeWritten,
                            R"({"event":"control","card":"default","stage":"open","status":-5})"));
    EXPECT_THAT(eventsOf(outcome, "result"),
                ElementsAre(R"({"event":"result","call":"initialize","result":1})",
                            R"({"event":"result","call":"setOutputVolume","result":0})",
                            R"({"event":"result","call":"setOutputVolume","result":2})"));
}

TEST_F(Kepctl, EffectsStandBetweenTheirRequestAndItsResult)
{
    const Execution outcome = play(kInitialize + kVolume40, {"--log-level", "3"});
    EXPECT_THAT(linesOf(outcome.output),
                ElementsAre(R"({"event":"request","call":"initialize"})",
                            R"({"event":"result","call":"initialize","result":1})",
                            R"({"event":"request","call":"setOutputVolume","args":["speaker",40]})",
                            kVolumeWritten,
                            R"({"event":"result","call":"setOutputVolume","result":0})"));
}

TEST_F(Kepctl, TheBackendIsHeardUntilTheProcessEnds)
{
    const Execution outcome = play(kInitialize, {"--log-level", "7"});
    EXPECT_THAT(linesOf(outcome.output).back(), HasSubstr("UnRegister kepAlsaAudio ..."));
}

TEST_F(Kepctl, ASetLineChangesTheLogLevelFromThereOn)
{
    const Execution outcome = play(R"({"set": {"logLevel": 3}})"
                                   "\n" +
                                   kInitialize + kVolume40 +
                                   R"({"set": {"logLevel": 7}})"
                                   "\n" +
                                   kVolume40 +
                                   R"({"set": {"logLevel": 6}})"
                                   "\n" +
                                   kVolume40);
    const Texts logs = eventsOf(outcome, "log");
    EXPECT_THAT(logs, ElementsAre(HasSubstr("In setVolume, setting volume to 40%"),
                                  HasSubstr("snd_ctl_open on card default")));
}

TEST_F(Kepctl, AnInjectLineHoldsUntilItIsClearedOrUsedUp)
{
    const Execution outcome =
        play(kInitialize +
             R"({"inject": {"control": "Master Playback Volume", "status": 0, "times": 1}})"
             "\n"
             R"({"inject": {"control": "Master Playback Volume", "status": -16, "times": 1}})"
             "\n"
             R"({"inject": {"control": "*", "card": "hw:0", "status": -19}})"
             "\n"
             R"({"inject": {"control": "*", "stage": "info", "card": "default", "status": -1}})"
             "\n"
             R"({"inject": {"control": "Softmaster", "status": -19}})"
             "\n"
             R"({"clear": true})"
             "\n"
             R"({"inject": {"control": "Master Playback Volume", "status": 0, "times": 1}})"
             "\n"
             R"({"inject": {"control": "Master Playback Volume", "status": -16, "times": 1}})"
             "\n"
             R"({"inject": {"control": "*", "card": "hw:0", "status": -19}})"
             "\n"
             R"({"inject": {"control": "*", "status": -5}})"
             "\n" +
             kVolume40 + kVolume40 + kVolume40 + kVolume40 +
             R"({"clear": true})"
             "\n" +
             kVolume40);
    const auto written = [](int status) {
        return R"({"event":"control","card":"default","element":"Master Playback Volume","values":[40],"status":)" +
               std::to_string(status) + "}";
    };
    EXPECT_THAT(eventsOf(outcome, "control"),
                ElementsAre(written(0), written(-16), written(-5), written(-5), written(0)));
}

TEST_F(Kepctl, AStageThatIsLeftOutIsTheWrite)
{
    const Execution outcome = play(kInitialize +
                                   R"({"inject": {"control": "*", "status": -5}})"
                                   "\n" +
                                   kVolume40);
    EXPECT_THAT(eventsOf(outcome, "control"),
                ElementsAre(AllOf(HasSubstr("\"element\""), HasSubstr("\"status\":-5}"))));
}

TEST_F(Kepctl, AWaitLastsAsLongAsItSays)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(play(R"({"wait": 200})"
                   "\n"
                   R"({"wait": 0})"
                   "\n"
                   R"({"wait": 100})")
                  .status,
              kPlayed);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds{300});
    EXPECT_LT(took, std::chrono::seconds{30});
}

TEST_F(Kepctl, AWaitRunsTheTimersThatFallIntoIt)
{
    int early = 0;
    int late = 0;
    const auto count = [](gpointer counter) -> gboolean {
        ++*static_cast<int*>(counter);
        return G_SOURCE_REMOVE;
    };
    g_timeout_add(20, count, &early);
    const guint pending = g_timeout_add(600000, count, &late);
    EXPECT_FALSE(parseScriptLine(R"({"clear": true})").run());
    const ScriptLine wait = parseScriptLine(R"({"wait": 100})");
    EXPECT_EQ(early, 0);
    EXPECT_FALSE(wait.run());
    EXPECT_EQ(early, 1);
    EXPECT_EQ(late, 0);
    g_source_remove(pending);
}

// --- Other programs

TEST_F(Kepctl, WhatItWroteIsReadFromTheCardAfterwards)
{
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 0);
    EXPECT_EQ(play(kInitialize + kVolume40).status, kPlayed);
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 40);
}

TEST_F(Kepctl, ItsEnvironmentPointsToFilesThatExist)
{
    setenv("KEP_VIRTUALTV_STATE", (directory() / "it's $HOME state").c_str(), 1);
    const Execution outcome = shell(R"sh(
        set -eu
        state=$KEP_VIRTUALTV_STATE
        environment=$("$KEPCTL" env)
        unset KEP_VIRTUALTV_STATE
        eval "$environment"
        test -f "$ALSA_CONFIG_PATH"
        test -f "$ALSA_PLUGIN_DIR/libasound_module_ctl_kepvirtual.so"
        test "$KEP_VIRTUALTV_STATE" = "$state"
        sh -c 'test -f "$ALSA_CONFIG_PATH" && test -d "$ALSA_PLUGIN_DIR"')sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(linesOf(kepctl({"env"}).output), Each(StartsWith("export ")));
}

TEST_F(Kepctl, ItsEnvironmentNamesAStateFileWhenNoneIsChosen)
{
    const Execution outcome = shell(R"sh(
        set -eu
        export XDG_RUNTIME_DIR="$(dirname "$KEP_VIRTUALTV_STATE")"
        unset KEP_VIRTUALTV_STATE
        eval "$("$KEPCTL" env)"
        test "$(dirname "$KEP_VIRTUALTV_STATE")" = "$XDG_RUNTIME_DIR")sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
}

// A program that is built without the sanitizer cannot load a plugin that is built with it.
#ifdef KEPCTL_TEST_AMIXER

TEST_F(Kepctl, WhatAmixerWritesIsReadFromTheCard)
{
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D default cset "name='Softmaster'" 40%)sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(valueOf("default", "Softmaster"), 40);
}

TEST_F(Kepctl, WhatItWritesIsSeenByAmixer)
{
    EXPECT_EQ(play(kInitialize + kVolume40).status, kPlayed);
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D default cget "name='Master Playback Volume'")sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr(": values=40"));
}

TEST_F(Kepctl, AmixerSeesEveryElementOfTheTelevision)
{
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D hw:0 contents)sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    Texts elements;
    for (const std::string& line : linesOf(outcome.output))
        if (line.find("iface=MIXER") != std::string::npos)
            elements.push_back(line);
    EXPECT_EQ(elements.size(), 19U) << outcome.output;
    EXPECT_THAT(elements,
                IsSupersetOf({HasSubstr("'Sndout Connect'"), HasSubstr("'Gain Output'")}));
}

#endif
