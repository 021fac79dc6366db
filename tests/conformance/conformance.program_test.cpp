// SPDX-License-Identifier: Apache-2.0
// kep-conformance as a program: with a television that is made wrong from outside, and its command
// line.
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "conformancetest.h"
#include "faults.h"

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using virtualtv::FaultPoint;

// --- The program, on a television that is made wrong from outside

TEST_F(Conformance, AFileOfFaultsMakesTheTelevisionWrong)
{
    struct Wrong {
        const char* line;
        Texts arguments;
        const char* told;
    };
    for (
        const auto& [line, arguments, told] : std::vector<Wrong>{
            {R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "status": 3}})",
             {"lines"},
             "GPIO_RD_HP_LINK can be read: GPIO_RD_HP_LINK answered 3, not 0"},
            {R"({"inject": {"subcpu": "subcpu_misc_Set_HPMuteOnOff", "status": -1}})",
             {"--audible", "lines"},
             "subcpu_misc_Set_HPMuteOnOff answers: subcpu_misc_Set_HPMuteOnOff answered -1, not "
             "0"},
            {R"({"inject": {"middleware": "amplifier.getAmpState", "status": 7, "times": 1}})",
             {"middleware"},
             "amplifier.getAmpState answers: amplifier.getAmpState answered 7, not 0"},
            {R"({"inject": {"control": "Sndout ARC OnOff", "status": -5}})",
             {"card"},
             "\"Sndout ARC OnOff\" can be written: it refuses 0: Input/output error"},
            {R"({"inject": {"control": "Gain Input", "stage": "info", "card": "hw:0", "status": -5}})",
             {"card"},
             "\"Gain Input\" is there and takes 3 integers: it gives no information: "
             "Input/output error"},
            {R"({"inject": {"stage": "load", "status": -5}})",
             {"card"},
             "the card can be opened: hw:0 does not list its elements: Input/output error"},
        }) {
        setenv("KEP_VIRTUALTV_FAULTS",
               file("faults", "# wrong on purpose\n\n" + std::string{line}).c_str(), 1);
        Texts words = {"--tap"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        expectOnly(program(words), told);
    }
    unsetenv("KEP_VIRTUALTV_FAULTS");
}

TEST_F(Conformance, AFaultCanBeLateOrUsedUp)
{
    setenv("KEP_VIRTUALTV_FAULTS",
           file("faults", R"({"inject": {"middleware": "gain.getGainAsInput", "delayMs": 300}})")
               .c_str(),
           1);
    EXPECT_THAT(failures(program({"--tap", "--limit", "200", "middleware"})),
                testing::Contains(testing::ContainsRegex(
                    "gain.getGainAsInput answers: it took [0-9]+ ms, more than the 200")));
    file("faults", R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "status": 0, "times": 1}})"
                   "\n"
                   R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "status": 3}})");
    EXPECT_EQ(program({"--tap", "lines"}).status, 0); // the line is read once
    unsetenv("KEP_VIRTUALTV_FAULTS");
}

TEST_F(Conformance, AFileOfFaultsSaysWhatItCannotUse)
{
    struct Mistake {
        const char* line;
        const char* told;
    };
    for (const auto& [line, told] : std::vector<Mistake>{
             {"rubbish", R"(not {"inject": {...}})"},
             {R"({"wait": 5})", R"(not {"inject": {...}})"},
             {R"({"inject": {"status": 1}})",
              R"("inject" lacks "control", "middleware", "gpio" or "subcpu")"},
             {R"({"inject": {"gpio": "GPIO_RD_HP_LINK"}})",
              R"("inject" lacks "status" or "delayMs")"},
             {R"({"inject": {"gpio": "LINK", "status": 1}})", R"("gpio" knows no "LINK")"},
             {R"({"inject": {"subcpu": "mute", "status": 1}})", R"("subcpu" knows no "mute")"},
             {R"({"inject": {"middleware": "gain.set", "status": 1}})",
              R"("middleware" knows no "gain.set")"},
             {R"({"inject": {"control": 7, "status": 1}})", R"("control" must be a string)"},
             {R"({"inject": {"stage": "shut", "status": 1}})", R"(there is no stage "shut")"},
             {R"({"inject": {"control": "*", "status": "1"}})",
              R"("status" must be a whole number)"},
             {R"({"inject": {"control": "*", "status": -5, "times": 0}})",
              R"("times" must be a whole number, 1 at least)"},
             {R"({"inject": {"control": "*", "delayMs": -1}})",
              R"("delayMs" must be a whole number, 0 at least)"},
         }) {
        const std::string path = file("faults", "\n" + std::string{line} + "\n");
        setenv("KEP_VIRTUALTV_FAULTS", path.c_str(), 1);
        const Outcome outcome = program({"lines"});
        EXPECT_EQ(outcome.status, 0) << line;
        EXPECT_THAT(outcome.output, StartsWith("kep-virtualtv: " + path + ":2: " + told + "\n"));
    }
    setenv("KEP_VIRTUALTV_FAULTS", "/nowhere/faults", 1);
    EXPECT_THAT(program({"lines"}).output,
                StartsWith("kep-virtualtv: /nowhere/faults: No such file or directory\n"));
    unsetenv("KEP_VIRTUALTV_FAULTS");
}

// --- The program

TEST_F(Conformance, TheProgramRunsTheSameChecks)
{
    const Outcome outcome = program({"--tap", "--config", mConfig, "lines"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
              "TAP version 13\n# Libraries\n"
              "ok 1 - all operations are in the television's libraries\n"
              "# GPIO and sub-microcontroller\n"
              "ok 2 - GPIO_RD_HP_LINK can be read\n"
              "ok 3 - subcpu_misc_Set_HPMuteOnOff answers # SKIP it could be heard; "
              "--audible tries it\n1..3\n# 2 passed, 0 failed, 1 skipped\n"
              "# 1 skipped: it could be heard; --audible tries it\n");
}

TEST_F(Conformance, TheTextIsForPeople)
{
    const Outcome outcome =
        run({"lines", "middleware"}, [] { plant(FaultPoint::Gpio, "GPIO_RD_HP_LINK", 3); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(
        outcome.output,
        AllOf(
            HasSubstr("GPIO and sub-microcontroller\n"
                      "  FAIL  GPIO_RD_HP_LINK can be read:\n"
                      "        GPIO_RD_HP_LINK answered 3, not 0\n"),
            HasSubstr(
                "  skip  soundengine.registerQualityParams answers (and 20 more): it could be heard; --audible tries it\n"),
            EndsWith("\n7 passed, 1 failed, 53 skipped\n"
                     "51 skipped: it could be heard; --audible tries it\n"
                     "2 skipped: no register was named; --register tries one\n")));
}

TEST_F(Conformance, MistypedWordsAreHintedAt)
{
    struct Mistake {
        Texts words;
        const char* told;
    };
    for (const auto& [words, told] : std::vector<Mistake>{
             {{"--audble"}, "unknown option --audble; did you mean \"--audible\"?"},
             {{"crad"}, "unknown subject \"crad\"; did you mean \"card\"?"},
             {{"xyz"}, "there are configuration, log, card, middleware, lines or requests"},
             {{"--limit"}, "--limit lacks its value MS"},
             {{"--limit", "0"}, "--limit must be a whole number from 1 to 60000, not \"0\""},
             {{"--limit", "60001"}, "not \"60001\""},
             {{"--limit=1x"}, "not \"1x\""},
             {{"--tap=1"}, "--tap takes no value"},
             {{"--register", "0x34"}, "--register must be SLAVE:PORT:REGISTER"},
             {{"--register", "0x34:256:1"}, "not \"0x34:256:1\""},
             {{"--register", ""}, "not \"\""},
         }) {
        const Outcome outcome = program(words);
        EXPECT_EQ(outcome.status, 2) << told;
        EXPECT_THAT(outcome.output, AllOf(StartsWith("kep-conformance: "), HasSubstr(told)));
    }
}

TEST_F(Conformance, HelpAndVersionAreTold)
{
    EXPECT_THAT(program({"--help"}).output,
                AllOf(HasSubstr("Usage: kep-conformance"), HasSubstr("--audible"),
                      HasSubstr("requests"), HasSubstr("\n  1         "), HasSubstr("Bail out!"),
                      HasSubstr("\n  KEP_CONFIG_DIR "), HasSubstr("\n  KEP_VIRTUALTV_FAULTS ")));
    EXPECT_THAT(program({"--version"}).output, StartsWith("kep-conformance "));
    EXPECT_EQ(program({"--help"}).status, 0);
}

TEST_F(Conformance, AReportThatCannotBeWrittenIsNoReport)
{
    const Outcome outcome = run({"lines"}, [] {
        const int full = open("/dev/full", O_WRONLY);
        dup2(full, STDOUT_FILENO);
    });
    EXPECT_EQ(outcome.status, 2);
}
