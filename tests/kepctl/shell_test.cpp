// SPDX-License-Identifier: Apache-2.0
// kepctl shell: typed at a terminal, fed by a pipe, and its parts (the short form, completion).
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "badline.h"
#include "completion.h"
#include "kepctltest.h"
#include "shortform.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

// --- The short form

TEST(ShortForm, AnOperationTakesItsArgumentsAsWords)
{
    struct Row {
        const char* typed;
        const char* line;
    };
    // clang-format off
    const Row rows[] = {
        {"initialize",                             R"({"call":"initialize"})"},
        {"  setSoundOutput   tv_speaker ",         R"({"call":"setSoundOutput","args":["tv_speaker"]})"},
        {R"(setSoundOutput "tv speaker")",         R"({"call":"setSoundOutput","args":["tv speaker"]})"},
        {"setSoundOutput 12",                      R"({"call":"setSoundOutput","args":["12"]})"},
        {"setSoundOutput true",                    R"({"call":"setSoundOutput","args":["true"]})"},
        {"setOutputVolume tv_speaker 12",          R"({"call":"setOutputVolume","args":["tv_speaker",12]})"},
        {"setOutputVolume tv_speaker twelve",      R"({"call":"setOutputVolume","args":["tv_speaker","twelve"]})"},
        {"setMute ADEC0 MAIN true",                R"({"call":"setMute","args":["ADEC0","MAIN",true]})"},
        {R"(connectInput ADEC0 MAIN {"a": "b } c", "d": [1, {}]})",
                                                   R"({"call":"connectInput","args":["ADEC0","MAIN",{"a":"b } c","d":[1,{}]}]})"},
        {"setSettings sound {}",                   R"({"call":"setSettings","args":["sound",{}]})"},
        {"setSettings sound 5 6",                  R"({"call":"setSettings","args":["sound",5,6]})"},
        {"wait 5100",                              R"({"wait":5100})"},
        {"clear",                                  R"({"clear":true})"},
        {"set logLevel 7",                         R"({"set":{"logLevel":7}})"},
        {"set gainValue -12",                      R"({"set":{"gainValue":"-12"}})"},
        {R"(set {"i2cData": ["0x1f"]})",           R"({"set":{"i2cData":["0x1f"]}})"},
        {R"(inject control "Sndout Open" status -5 times 1)",
                                                   R"({"inject":{"control":"Sndout Open","status":-5,"times":1}})"},
        {R"({"call": "initialize"})",              R"({"call": "initialize"})"},
        {"# a comment",                            "# a comment"},
        {"",                                       ""},
    };
    // clang-format on
    for (const Row& row : rows)
        EXPECT_EQ(scriptLineOf(row.typed), row.line) << row.typed;
}

TEST(ShortForm, AMistakeIsPointedAt)
{
    struct Row {
        const char* typed;
        std::size_t place;
        const char* hint;
    };
    const Row rows[] = {
        {" setsoundOutput x", 1, "did you mean \"setSoundOutput\"?"},
        {"connectInput ADEC0 MAIN {\"a\": b}", 30, ""},
        {"set logLevel 7 gainValue", 24, ""},
        {"call initialize", 0, ":help"},
    };
    for (const Row& row : rows) {
        try {
            EXPECT_EQ(scriptLineOf(row.typed), "") << row.typed;
        } catch (const BadLine& mistake) {
            EXPECT_EQ(mistake.place(), row.place) << row.typed << ": " << mistake.what();
            EXPECT_THAT(mistake.hint(), HasSubstr(row.hint)) << row.typed;
        }
    }
}

// --- Completion

namespace
{

Texts candidatesFor(const std::string& typed)
{
    return completionOf(typed).candidates;
}

} // namespace

TEST(Completion, ALineBeginsWithAnOperationAKindOfLineOrACommand)
{
    EXPECT_THAT(candidatesFor(""), IsSupersetOf({"initialize", "getSettings", "wait", "inject"}));
    EXPECT_THAT(candidatesFor("setS"), ElementsAre("setSoundOutput", "setSettings"));
    EXPECT_THAT(candidatesFor(":"), IsSupersetOf({":help", ":log", ":faults", ":state", ":quit"}));
    EXPECT_THAT(candidatesFor("x"), IsEmpty());
    EXPECT_EQ(completionOf("ini").suffix, " ");
    EXPECT_EQ(completionOf("ini").typed, 3U);
}

TEST(Completion, AnArgumentIsOneOfTheNamesThatTheOperationKnows)
{
    EXPECT_THAT(candidatesFor("setSoundOutput tv_speaker_o"),
                ElementsAre("tv_speaker_optical_arc"));
    EXPECT_THAT(candidatesFor("setSoundOutput \"tv_speaker_o"),
                ElementsAre("\"tv_speaker_optical_arc\""));
    EXPECT_THAT(candidatesFor("setSoundOutput "),
                AllOf(Contains("headphone"), Not(Contains("alsa"))));
    EXPECT_THAT(candidatesFor("setOutputVolume "), Contains("tv_speaker"));
    EXPECT_THAT(candidatesFor("connectInput AD"), ElementsAre("ADEC", "ADEC0", "ADEC1"));
    EXPECT_THAT(candidatesFor("connectInput ADEC0 "), ElementsAre("MAIN", "SUB"));
    EXPECT_THAT(candidatesFor("connectInput AMIXER "), ElementsAre("ALSA"));
    EXPECT_THAT(candidatesFor("setMute ADEC0 MAIN "), ElementsAre("true", "false"));
    EXPECT_THAT(candidatesFor("setSettings soundOutput"), ElementsAre("soundOutputMode"));
    EXPECT_THAT(candidatesFor("setSoundOutput tv_speaker "), IsEmpty());
    EXPECT_THAT(candidatesFor("initialize "), IsEmpty());
}

TEST(Completion, AScriptLineIsCompletedAsJson)
{
    EXPECT_THAT(candidatesFor("{"), Contains("\"inject\""));
    EXPECT_THAT(candidatesFor(R"({"ca)"), ElementsAre("\"call\""));
    EXPECT_EQ(completionOf(R"({"ca)").suffix, ": ");
    EXPECT_THAT(candidatesFor(R"({"call": "setSo)"), ElementsAre("\"setSoundOutput\""));
    EXPECT_THAT(candidatesFor(R"({"call": "connectInput", )"), ElementsAre("\"args\""));
    EXPECT_THAT(candidatesFor(R"({"call": "connectInput", "args": ["ADEC0", )"),
                ElementsAre("\"MAIN\"", "\"SUB\""));
    EXPECT_THAT(candidatesFor(R"({"call": "initialize"})"), IsEmpty());
    EXPECT_THAT(candidatesFor(R"({"set": {"g)"), ElementsAre("\"gpio\"", "\"gainValue\""));
    EXPECT_THAT(candidatesFor(R"({"set": {"logLevel": )"), ElementsAre("3", "4", "6", "7"));
    EXPECT_THAT(candidatesFor(R"({"inject": {"middleware": "gain.setI)"),
                ElementsAre("\"gain.setInputVolume\""));
    EXPECT_THAT(candidatesFor(R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "st)"),
                ElementsAre("\"status\""));
}

TEST(Completion, ACommandOfTheShellKnowsItsArgument)
{
    EXPECT_THAT(candidatesFor(":log "), IsSupersetOf({"3", "error", "7", "debug"}));
    EXPECT_THAT(candidatesFor(":help setMute"), ElementsAre("setMute", "setMuteExtSPK"));
    EXPECT_THAT(candidatesFor(":quit "), IsEmpty());
}

// --- From a pipe

TEST_F(Kepctl, TheShellTakesFullAndShortLinesFromAPipe)
{
    const Execution outcome = kepctl({"shell", "--backend", "ALSA", "--format", "jsonl"},
                                     "# a comment\n\ninitialize\n" + kVolume40 +
                                         "setOutputVolume speaker 40\n:quit\ninitialize\n");
    EXPECT_EQ(outcome.status, kPlayed) << outcome.errors;
    EXPECT_THAT(eventsOf(outcome, "control"), ElementsAre(kVolumeWritten, kVolumeWritten));
    EXPECT_THAT(eventsOf(outcome, "result"),
                ElementsAre(HasSubstr("\"initialize\""), HasSubstr("\"setOutputVolume\""),
                            HasSubstr("\"setOutputVolume\"")));
}

TEST_F(Kepctl, TheShellTellsAMistakeAndGoesOn)
{
    const Execution outcome =
        kepctl({"shell", "--backend", "ALSA", "--format", "jsonl"},
               "setoundOutput x\nsetOutputVolume speaker 256\n:stat\n:quit now\ngetDefaultVolume");
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_THAT(outcome.errors,
                AllOf(HasSubstr("did you mean \"setSoundOutput\"?"),
                      HasSubstr("argument 2 must be a whole number from 0 to 255"),
                      HasSubstr("did you mean \":state\"?"), HasSubstr(":quit takes no argument")));
    EXPECT_THAT(eventsOf(outcome, "request"), ElementsAre(HasSubstr("getDefaultVolume")));
}

TEST_F(Kepctl, TheShellShowsFaultsAndStateWithoutUsingAFaultUp)
{
    const Execution outcome =
        kepctl({"shell", "--backend", "ALSA", "--only", "result,control"},
               "initialize\nsetOutputVolume speaker 40\ninject stage open status -5 times 1\n"
               "inject middleware gain.setInputVolume status 1 delayMs 3\n"
               "set gpio {\"GPIO_RD_HP_LINK\": 1}\n:state\n:faults\n"
               "setOutputVolume speaker 41\n:faults\nclear\n:faults\n:log\n");
    EXPECT_EQ(outcome.status, kPlayed) << outcome.errors;
    const std::string delayed =
        R"({"inject":{"middleware":"gain.setInputVolume","status":1,"delayMs":3}})";
    const Texts lines = linesOf(outcome.output);
    EXPECT_THAT(lines, IsSupersetOf({"default     Master Playback Volume = 40",
                                     "gpio        GPIO_RD_HP_LINK = 1", "6 info"}));
    const auto faults = std::find(lines.begin(), lines.end(),
                                  R"({"inject":{"stage":"open","status":-5,"times":1}})");
    ASSERT_NE(faults, lines.end()) << outcome.output;
    EXPECT_THAT(Texts(faults + 1, lines.end()),
                ElementsAre(delayed, HasSubstr("failed: Input/output error"), "  = 2 failed",
                            delayed, "none", "6 info"));
}

TEST_F(Kepctl, TheShellTakesNoScript)
{
    const Execution outcome = kepctl({"shell", script(kInitialize)});
    EXPECT_EQ(outcome.status, kUnusable);
    EXPECT_THAT(outcome.errors, HasSubstr("shell takes no script"));
}

// --- At a terminal

namespace
{

class Shell : public Kepctl
{
protected:
    Shell() { setenv("XDG_STATE_HOME", (directory() / "state").c_str(), 1); }

    [[nodiscard]] std::filesystem::path history() const
    {
        return directory() / "state" / "kepctl" / "history";
    }
};

const std::string kCtrlC = "\x03";
const std::string kCtrlD = "\x04";
const std::string kUp = "\033[A";

/// kepctl shell that is typed at; shows requests and results unless told otherwise.
class TypedShell : public Terminal
{
public:
    explicit TypedShell(const std::string& only = "request,result")
        : Terminal({kProgram, "shell", "--only", only, "--color", "never"}, "kepctl> ")
    {
    }

    /// Types a line and waits for what it gives, and for the next prompt: before it, the terminal
    /// itself would show what is typed.
    std::string request(const std::string& line, const std::string& wanted)
    {
        const std::string shown = type(line + "\r", wanted);
        const bool prompted = shown.find("kepctl> ", shown.rfind(wanted)) != std::string::npos;
        return prompted ? shown : shown + awaitText("kepctl> ");
    }
};

} // namespace

TEST_F(Shell, WhatIsTypedIsDone)
{
    TypedShell shell;
    shell.request("setSoundOutput tv_speaker", "  = 2 failed");
    shell.request("initialize", "  = 1 started");
    shell.request("setSoundOutput tv_speaker", "  = 0 done");
    shell.request(R"({"call": "getDefaultVolume"})", "  = 15");
    shell.request("setSoundOutput tv_speeker\x7f\x7f\x7f\x7f"
                  "aker",
                  "  = 0 done");
    shell.request("setoundOutput tv_speaker", "did you mean \"setSoundOutput\"?");
    shell.type(":quit\r", "");
    EXPECT_EQ(shell.end(), kPlayed);
}

TEST_F(Shell, CtrlDOnAnEmptyLineLeaves)
{
    TypedShell shell;
    shell.type(kCtrlD, "\n");
    EXPECT_EQ(shell.end(), kPlayed);
}

TEST_F(Shell, CtrlCClearsTheLine)
{
    TypedShell shell;
    shell.type("setSoundOutput ", "setSoundOutput ");
    shell.type(kCtrlC, "kepctl> ");
    const std::string shown = shell.request("getHeadphoneStatus", "  = 2 failed");
    EXPECT_THAT(shown, AllOf(HasSubstr("getHeadphoneStatus()"), Not(HasSubstr("setSoundOutput"))));
}

TEST_F(Shell, CtrlCEndsAWait)
{
    TypedShell shell;
    shell.type("wait 600000\r", "\nwait 600000");
    shell.type(kCtrlC, "kepctl> ");
    shell.request("getHeadphoneStatus", "  = 2 failed");
}

TEST_F(Shell, TabCompletes)
{
    TypedShell shell;
    shell.request("ini\t", "  = 1 started");
    shell.request("setSoundO\ttv_speaker_o\t",
                  "setSoundOutput(\"tv_speaker_optical_arc\")\r\n  = 0 done");
    const std::string listed = shell.type("connectInput ADEC0 \t", "SUB");
    EXPECT_THAT(listed, HasSubstr("MAIN  SUB"));
    shell.type("S\t{\"st\t", "\"st");
}

TEST_F(Shell, TheHistoryIsKeptForTheNextTime)
{
    {
        TypedShell shell;
        shell.request("initialize", "  = 1 started");
        shell.request("getDefaultVolume", "  = 15");
        shell.request(kUp + kUp, "  = 1 started");
        shell.type(kCtrlD, "\n");
        EXPECT_EQ(shell.end(), kPlayed);
    }
    EXPECT_TRUE(std::filesystem::is_regular_file(history()));
    EXPECT_EQ(std::filesystem::status(history()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    TypedShell shell;
    shell.request(kUp + kUp, "getDefaultVolume()");
}

TEST_F(Shell, WithoutAPlaceForTheHistoryItSaysSoOnceAndGoesOn)
{
    setenv("XDG_STATE_HOME", file("state", "no folder").c_str(), 1);
    TypedShell shell;
    EXPECT_THAT(shell.request("initialize", "  = 1 started"), HasSubstr("the history is not kept"));
    EXPECT_THAT(shell.request("getDefaultVolume", "  = 15"),
                Not(HasSubstr("the history is not kept")));
}

TEST_F(Shell, TimersRunWhileOneTypes)
{
    // After a resume the headphone is unmuted by a timer of five seconds.
    TypedShell shell{"result,subcpu"};
    shell.request("initialize", "  = 1 started");
    shell.request("setSoundOutput headphone", "  = 0 done");
    shell.request("setSettings prepareResume {}", "  = 0 done");
    shell.request(R"(setSettings powerStateMute {"soundOutput": "headphone", "mute": false})",
                  "  = 0 done");
    shell.type("getDefault", "getDefault");
    EXPECT_THAT(shell.awaitText("kepctl> getDefault"),
                HasSubstr("\r\033[K    subcpu      subcpu_misc_Set_HPMuteOnOff(false)"));
    shell.request("Volume", "  = 15");
}
