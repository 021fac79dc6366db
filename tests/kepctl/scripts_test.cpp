// SPDX-License-Identifier: Apache-2.0
// kepctl as it is used: which scripts are played, and lines that keep all of them from it.
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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
