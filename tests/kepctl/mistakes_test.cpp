// SPDX-License-Identifier: Apache-2.0
// What careless people type, and what they are told: place, sentence, and what they meant.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "badline.h"
#include "closest.h"
#include "jdomparser.h"
#include "kepctltest.h"
#include "scriptline.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{

// --- Script lines

struct LineRow {
    const char* line;
    std::size_t column;
    const char* sentence;
    const char* hint; // part of it; "" for none
};
// clang-format off
constexpr LineRow kLines[] = {
    // misspelt names
    {R"({"call": "setoundOutput", "args": ["tv_speaker"]})",              10, R"(unknown operation "setoundOutput")",          R"(did you mean "setSoundOutput"?)"},
    {R"({"call": "SetMute", "args": ["ADEC0", "MAIN", true]})",           10, R"(unknown operation "SetMute")",                R"(did you mean "setMute"?)"},
    {R"({"call": "volumeUp"})",                                           10, R"(unknown operation "volumeUp")",               "kepctl list operations"},
    {R"({"cal": "initialize"})",                                           2, R"(unknown key "cal")",                          R"(did you mean "call"?)"},
    {R"({"initialize": []})",                                              2, R"(unknown key "initialize")",                   R"(did you mean {"call": "initialize"}?)"},
    {R"({"sleep": 100})",                                                  2, R"(unknown key "sleep")",                        "call, wait, set, inject or clear"},
    {R"({"call": "initialize", "arg": []})",                              24, R"(unknown key "arg" in the line)",              R"(did you mean "args"?)"},
    {R"({"set": {"loglevel": 7}})",                                       10, R"(unknown key "loglevel" in "set")",            R"(did you mean "logLevel"?)"},
    {R"({"set": {"gpio": {"GPIO_HP": 1}}})",                              19, R"(unknown input line "GPIO_HP")",               R"(did you mean "GPIO_RD_HP_LINK"?)"},
    {R"({"inject": {"control": "Sndout Opn", "status": -5}})",            24, R"(unknown element "Sndout Opn")",               R"(did you mean "Sndout Open"?)"},
    {R"({"inject": {"control": "Softmaster", "card": "hw:0", "status": -5}})", 24, R"(unknown element "Softmaster")",          "kepctl list elements"},
    {R"({"inject": {"control": "*", "card": "hw0", "status": -5}})",      37, R"(unknown card "hw0")",                         R"(did you mean "hw:0"?)"},
    {R"({"inject": {"control": "*", "stage": "wirte", "status": -5}})",   38, R"("stage" must be open, load, info or write)",  R"(did you mean "write"?)"},
    {R"({"inject": {"middleware": "gain.setInputVolum", "status": 1}})",  27, R"(unknown middleware operation)",               R"(did you mean "gain.setInputVolume"?)"},
    {R"({"inject": {"midleware": "gain.setInputVolume", "status": 1}})",  13, R"(unknown key "midleware" in "inject")",        R"(did you mean "middleware"?)"},
    {R"({"inject": {"gpio": "GPIO_RD_HP_LNK", "status": 1}})",            21, R"(unknown input line)",                         R"(did you mean "GPIO_RD_HP_LINK"?)"},
    {R"({"inject": {"subcpu": "subcpu_misc_Set_HPMute", "status": 1}})",  23, R"(unknown operation of the sub-micro)",         R"(did you mean "subcpu_misc_Set_HPMuteOnOff"?)"},
    {R"({"inject": {"control": "*", "stat": -5}})",                       29, R"(unknown key "stat" in "inject")",             R"(did you mean "status"?)"},
    // arguments
    {R"({"call": "setSoundOutput"})",                                     10, "takes 1 argument, not 0 (soundOutput)",         ""},
    {R"({"call": "setMuteExtSPK", "args": [true, false]})",               42, "takes 1 argument, not 2 (mute)",                ""},
    {R"({"call": "setOutputVolume", "args": ["tv_speaker"]})",            37, "takes 2 arguments, not 1",                      ""},
    {R"({"call": "setOutputVolume", "args": ["tv_speaker", 300]})",       52, "argument 2 must be a whole number from 0 to 255", ""},
    {R"({"call": "setOutputVolume", "args": "tv_speaker"})",              37, R"("args" must be an array)",                    ""},
    {R"({"call": "setMute", "args": ["ADEC0", "MAIN", 1]})",              47, "argument 3 must be true or false (mute)",       ""},
    // values
    {R"({"wait": "100"})",                                                10, R"("wait" must be a whole number from 0)",       ""},
    {R"({"wait": 1, "call": "initialize"})",                               2, R"(unknown key "wait" in the line)",             ""},
    {R"({"wait": 1, "wait": 2})",                                         13, R"(the key "wait" is given twice)",              ""},
    {R"({"set": {"logLevel": 5}})",                                       22, R"("logLevel" must be 3, 4, 6 or 7)",            ""},
    {R"({"clear": false})",                                               11, R"("clear" must be true)",                       ""},
    {R"({"inject": {"control": "Gain Input"}})",                          12, R"("inject" lacks "status")",                    ""},
    {R"({})",                                                              1, "must be an object with something to do",        "for example"},
    {R"(["initialize"])",                                                  1, "must be an object",                             "for example"},
    // no JSON
    {"\xEF\xBB\xBF{\"call\": \"initialize\"}",                             1, "byte order mark (BOM)",                         ""},
    {"// selects the speaker",                                             1, "a comment starts with # (not with //)",         ""},
    {"  # selects the speaker",                                            3, "# in the first column",                         ""},
    {R"({"call": "initialize"} # starts)",                                24, "# in the first column",                         ""},
    {R"({'call': 'initialize'})",                                          2, "double quotes (\"), not in single ones",        ""},
    {"{\xE2\x80\x9C" "call\xE2\x80\x9D: 1}",                               2, "straight double quotes",                        ""},
    {R"({call: "initialize"})",                                            2, "a key stands in double quotes",                 R"(did you mean "call"?)"},
    {R"({"call": initialize})",                                           10, "a string stands in double quotes",              R"(did you mean "initialize"?)"},
    {R"({"call": "initialize",})",                                        22, "no comma after the last member",                ""},
    {R"({"call": "setSoundOutput", "args": ["tv_speaker",]})",            49, "no comma after the last element",               ""},
    {R"({"call": "initialize"} {"wait": 1})",                             24, "one object a line",                             ""},
    {R"({"call": "initialize"},)",                                        23, "no comma between the lines",                    ""},
    {R"({"call": "initialize"}})",                                        23, "nothing is open that this } could close",       ""},
    {R"({)",                                                               2, "is not closed on this line (} is missing)",     ""},
    {R"({"call": "setSoundOutput", "args": ["tv_speaker"})",              49, "here a ] is expected, not a }",                 ""},
    {R"({"call": "initialize)",                                           10, "this string has no closing quote",              ""},
    {R"({"call" "initialize"})",                                           9, R"(a colon is missing after the key "call")",    ""},
    {R"({"call": "getDefaultVolume" "args": []})",                        29, "a comma is missing before this member",         ""},
    {R"({"clear": True})",                                                11, "no value",                                      "did you mean true?"},
    {R"({"wait": 0x10})",                                                 10, "no number as JSON writes them",                 ""},
    {R"({"wait": })",                                                     10, "a value is missing here",                       ""},
    {"setSoundOutput tv_speaker",                                          1, "a line must be an object",                      "for example {\"call\""},
    {"{\"call\": \"\xff\"}",                                              11, "no UTF-8",                                      ""},
};
// clang-format on

} // namespace

TEST_F(Kepctl, EachMistakeOfALineIsPointedAt)
{
    ASSERT_EQ(valueOf("default", "Softmaster"), 0); // from here on this process sees the cards
    for (const LineRow& row : kLines) {
        try {
            parseScriptLine(row.line);
            ADD_FAILURE() << "accepted: " << row.line;
        } catch (const BadLine& mistake) {
            EXPECT_EQ(columnOf(row.line, mistake.place()), row.column) << row.line;
            EXPECT_THAT(mistake.what(), HasSubstr(row.sentence)) << row.line;
            EXPECT_THAT(mistake.hint(), HasSubstr(row.hint)) << row.line;
            if (*row.hint == '\0') {
                EXPECT_EQ(mistake.hint(), "") << row.line;
            }
        }
    }
}

TEST_F(Kepctl, AMistakeIsShownWithItsLineAndACaret)
{
    const std::string path = script(R"({"call": "setoundOutput", "args": ["tv_speaker"]})");
    const Execution outcome = kepctl({"run", path});
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_THAT(linesOf(outcome.errors),
                ElementsAre("kepctl: " + path + R"(:1:10: unknown operation "setoundOutput")",
                            R"(    {"call": "setoundOutput", "args": ["tv_speaker"]})",
                            R"(             ^)",
                            StartsWith(R"(    did you mean "setSoundOutput"?)")));
}

TEST_F(Kepctl, TheCaretStandsUnderTheColumnOfATerminal)
{
    // Two columns for each of the wide characters, one for the tab, none that moves the cursor.
    const std::string line = "{\"\xE9\x9F\xB3\xE9\x9F\xB3\":\t\x1b}";
    const std::string shown = describe(BadLine("x", line.find('}')), line, "f:1");
    EXPECT_THAT(linesOf(shown), ElementsAre("f:1:9: x", "    {\"\xE9\x9F\xB3\xE9\x9F\xB3\": ?}",
                                            "              ^"));
}

TEST_F(Kepctl, OfALongLineThePartAroundThePlaceIsShown)
{
    const std::string line = "[" + std::string(500, ' ') + "x" + std::string(500, ' ');
    const Texts shown = linesOf(describe(BadLine("x", 501), line, ""));
    ASSERT_EQ(shown.size(), 3U);
    EXPECT_LT(shown[1].size(), 120U);
    EXPECT_EQ(shown[1].find('x'), shown[2].find('^'));
}

TEST_F(Kepctl, AllMistakesOfAFileAreToldAndNothingIsPlayed)
{
    const Execution outcome = play(kInitialize + "x\n" + kVolume40 + "y\n");
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors,
                AllOf(HasSubstr("script.jsonl:2:1: "), HasSubstr("script.jsonl:4:1: ")));
}

TEST_F(Kepctl, ManyMistakesAreCounted)
{
    std::string content;
    for (int i = 0; i < 100; ++i)
        content += "x\n";
    const Execution outcome = play(content);
    EXPECT_THAT(outcome.errors, HasSubstr("80 more bad lines"));
    EXPECT_LT(linesOf(outcome.errors).size(), 100U);
}

TEST_F(Kepctl, CheckOnlyChecks)
{
    const Execution good = play(kInitialize + kVolume40, {"--check"});
    EXPECT_EQ(good.status, kPlayed);
    EXPECT_EQ(good.output + good.errors, "");
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 0);
    EXPECT_EQ(play(kInitialize + "x", {"--check"}).status, kUnusable);
    const Execution input = kepctl({"run", "--check", "-"}, kHeadphone + "x\n");
    EXPECT_EQ(input.status, kUnusable);
    EXPECT_EQ(input.output, "");
    EXPECT_THAT(input.errors, StartsWith("kepctl: standard input:2:1: "));
}

TEST_F(Kepctl, ObjectsMayBeAsDeepAsTheLibraryTakesThem)
{
    constexpr std::size_t kDeepest = JDomParser::kMaxDepth - 2; // inside of what is around it
    const auto nested = [](std::size_t depth) {
        return R"({"call": "setSettings", "args": ["x", )" + std::string(depth, '[') +
               std::string(depth, ']') + "]}";
    };
    EXPECT_NO_THROW(parseScriptLine(nested(kDeepest)));
    EXPECT_THROW(parseScriptLine(nested(kDeepest + 1)), BadLine);
    EXPECT_THROW(parseScriptLine(std::string(100000, '[')), BadLine);
}

// --- The closest name

TEST(Closest, IsTheNameWithTheFewestDifferences)
{
    const Names names = {"setMute", "setOutputMute", "getSettings", "setSettings"};
    EXPECT_EQ(closest("setMuet", names), "setMute");
    EXPECT_EQ(closest("SETMUTE", names), "setMute");
    EXPECT_EQ(closest("setSetings", names), "setSettings");
    EXPECT_EQ(closest("OutputMute", names), "setOutputMute");
}

TEST(Closest, IsNoneWhenNothingIsClose)
{
    const Names names = {"setMute", "on", "MAIN"};
    for (const char* word : {"", "x", "volume", "off", "SUB"})
        EXPECT_EQ(closest(word, names), "") << word;
    EXPECT_EQ(closest(std::string(100000, 's'), names), "");
}

// --- The command line

namespace
{

struct CommandRow {
    Texts arguments;
    const char* told;
};
const CommandRow kCommandLines[] = {
    {{"rnu", "x"}, R"(unknown command "rnu"; did you mean "run"?)"},
    {{"lst"}, R"(did you mean "list"?)"},
    {{"play", "x"}, R"(unknown command "play")"},
    {{"run"}, "no script given"},
    {{"run", "--bakend", "TV", "x"}, R"(unknown option --bakend; did you mean "--backend"?)"},
    {{"run", "--strickt", "x"}, R"(did you mean "--strict"?)"},
    {{"run", "-s", "x"}, "unknown option -s"},
    {{"run", "--backend", "tv", "x"},
     R"(--backend must be TV or ALSA, not "tv"; did you mean "TV"?)"},
    {{"run", "--format=json", "x"}, R"(--format must be text or jsonl, not "json")"},
    {{"run", "--log-level", "debug", "x"}, R"(--log-level must be 3, 4, 6 or 7, not "debug")"},
    {{"run", "--config"}, "--config lacks its value DIR"},
    {{"run", "--strict=yes", "x"}, "--strict takes no value"},
    {{"run", "--color", "allways", "x"}, R"(did you mean "always"?)"},
    {{"--backend", "TV", "run", "x"}, "options stand behind the command: kepctl run --backend"},
    {{"--verson"}, R"(did you mean "--version"?)"},
    {{"help", "scrpt"}, R"(no help on "scrpt"; did you mean "script"?)"},
    {{"help", "run", "env"}, R"(help takes one topic, not also "env")"},
    {{"list"}, "list what? operations"},
    {{"list", "output"}, R"(unknown list "output"; did you mean "outputs"?)"},
    {{"list", "outputs", "sources"}, R"(list takes one word, not also "sources")"},
    {{"env", "x"}, R"(env takes no arguments, not "x")"},
    {{"run", "nosuch.jsonl"}, "kepctl: nosuch.jsonl: No such file or directory"},
    {{"run", "/"}, "kepctl: /: Is a directory"},
};

} // namespace

TEST_F(Kepctl, EachMistakeOfTheCommandLineIsNamed)
{
    for (const CommandRow& row : kCommandLines) {
        const Execution outcome = kepctl(row.arguments);
        EXPECT_EQ(outcome.status, kUnusable) << row.told;
        EXPECT_THAT(outcome.errors, AllOf(StartsWith("kepctl: "), HasSubstr(row.told)));
        EXPECT_EQ(outcome.output, "") << row.told;
    }
}
