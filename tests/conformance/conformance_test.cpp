// SPDX-License-Identifier: Apache-2.0
// kep-conformance: passes on the virtual television, and on one that was made wrong names the way.
#include <cerrno>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "conformancetest.h"
#include "devicenames.h"
#include "faults.h"
#include "kepcatalogue.h"
#include "television.h"
#include "wrongcalls.h"

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using virtualtv::FaultPoint;

// --- A television that is right

TEST_F(Conformance, TheVirtualTelevisionPassesSilently)
{
    const Outcome outcome = run({});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr(" passed, 0 failed, "));
}

TEST_F(Conformance, TheVirtualTelevisionPassesAudibly)
{
    const Outcome outcome =
        tap({"--audible", "--register", "0x34:1:0x00"}, [] { virtualtv::setI2cData({"0x1f"}); });
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_THAT(outcome.output, Not(HasSubstr("SKIP")));
    EXPECT_THAT(outcome.output, AllOf(StartsWith("TAP version 13\n"), HasSubstr("\n1..166\n")));
}

TEST_F(Conformance, ACardThatTakesWhatIsWrittenAndNoMorePasses)
{
    choose(exactRows());
    const Outcome outcome = tap({"--audible"});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST_F(Conformance, ASilentRunWritesNoNewValueAndMakesNoAudibleCall)
{
    const Outcome outcome = tap({}, [] {
        // Whatever could be heard would fail.
        for (const char* command : {"Sndout Open", "Sndout Close", "Sndout Connect",
                                    "Sndout Disconnect", "Mute Output", "Gain Output"})
            plant(FaultPoint::CardWrite, command, -EIO);
        for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations)
            if (operation.name != std::string{"amplifier.getAmpState"})
                plant(FaultPoint::Middleware, operation.name, 1);
        plant(FaultPoint::SubMicro, "subcpu_misc_Set_HPMuteOnOff", 1);
    });
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST_F(Conformance, ASilentRunRepeatsNoCommand)
{
    const std::string output = tap({"card"}).output;
    for (const char* command :
         {"Sndout Open", "Sndout Close", "Sndout Connect", "Sndout Disconnect"})
        EXPECT_THAT(output, HasSubstr(std::string{"\""} + command +
                                      "\" can be written # SKIP writing it is a command; --audible "
                                      "writes it\n"));
}

TEST_F(Conformance, ASilentRunWritesBackWhatItReads)
{
    ASSERT_EQ(program({"--config", mConfig, "--audible", "card", "requests"}).status, 0);
    const std::string before = content("state");
    setenv("KEP_VIRTUALTV_TRACE", (folder() / "trace").c_str(), 1);
    const Outcome outcome = program({"--config", mConfig});
    unsetenv("KEP_VIRTUALTV_TRACE");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(content("state"), before);
    EXPECT_THAT(content("trace"), AllOf(HasSubstr("Gain Output"), HasSubstr("Mute Output"),
                                        Not(HasSubstr("Sndout Open"))));
}

TEST_F(Conformance, AnAudibleRunLeavesElementsAsTheyWere)
{
    const auto lastWrite = [&](const std::string& subject) {
        std::filesystem::remove(folder() / "trace");
        setenv("KEP_VIRTUALTV_TRACE", (folder() / "trace").c_str(), 1);
        program({"--config", mConfig, "--audible", subject});
        unsetenv("KEP_VIRTUALTV_TRACE");
        std::string last;
        std::istringstream lines{content("trace")};
        for (std::string line; std::getline(lines, line);)
            if (line.find("\"Mute Output\"") != std::string::npos)
                last = line.substr(line.find("\"values\""));
        return last;
    };
    const std::string before = lastWrite("requests");
    EXPECT_THAT(before, HasSubstr("[1,0]"));
    EXPECT_EQ(lastWrite("card"), before);
}

TEST_F(Conformance, ASilentRunLetsADriverRefuseWhatIsNeverWritten)
{
    const Outcome outcome =
        tap({"card"}, [] { plant(FaultPoint::CardWrite, "Gain Output", -EINVAL); });
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_THAT(
        outcome.output,
        HasSubstr("\"Gain Output\" can be written # SKIP it refuses what it holds, which is "
                  "never written; --audible writes other values\n"));
}

TEST_F(Conformance, EveryOperationElementAndLineIsChecked)
{
    const std::string output = tap({"--audible"}).output;
    for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations)
        EXPECT_THAT(output, HasSubstr(std::string{" - "} + operation.name + " answers"));
    for (const virtualtv::DeviceOperation& operation : virtualtv::kSubMicroOperations)
        EXPECT_THAT(output, HasSubstr(std::string{" - "} + operation.name + " answers"));
    for (const char* line : virtualtv::kInputLines)
        EXPECT_THAT(output, HasSubstr(std::string{" - "} + line + " can be read"));
    for (const kepControlElement& element : kepCatalogue::controlElements())
        EXPECT_THAT(output, HasSubstr(std::string{" - \""} + element.name + "\" can be written"));
}

// --- A card that was made wrong

TEST_F(Conformance, ACardThatIsNotThere)
{
    expectOnly(tap({}, [] { plant(FaultPoint::CardOpen, "*", -ENODEV); }),
               "the card can be opened: hw:0 cannot be opened: No such device (the virtual cards "
               "are seen after: eval \"$(kepctl env)\")");
}

TEST_F(Conformance, ACardThatDoesNotListItsElements)
{
    expectOnly(tap({}, [] { plant(FaultPoint::CardLoad, "*", -EIO); }),
               "the card can be opened: hw:0 does not list its elements: Input/output error");
}

TEST_F(Conformance, AnElementThatIsMissing)
{
    chooseWith("Sndout Open", [](Row& row) { row.name = "Sndout open"; });
    expectOnly(tap({}), "\"Sndout Open\" is there and takes 1 integer: the card has no element of "
                        "that name, but one named \"Sndout open\"");
}

TEST_F(Conformance, AnElementOfAnotherInterface)
{
    chooseWith("Mute Input", [](Row& row) { row.interface = "pcm"; });
    expectOnly(tap({}),
               "\"Mute Input\" is there and takes 3 integers: the card has it as interface "
               "PCM, index 0, not as interface MIXER, index 0");
}

TEST_F(Conformance, AnElementThatGivesNoInformation)
{
    expectOnly(
        tap({}, [] { plant(FaultPoint::CardInfo, "Gain Input", -EIO); }),
        "\"Gain Input\" is there and takes 3 integers: it gives no information: Input/output "
        "error");
}

TEST_F(Conformance, AnElementOfAnotherType)
{
    chooseWith("Sndout ARC OnOff", [](Row& row) { row.type = "boolean"; });
    expectOnly(tap({}), "\"Sndout ARC OnOff\" is there and takes 1 integer: it is of type BOOLEAN, "
                        "not INTEGER");
}

TEST_F(Conformance, AnElementOfAnotherCount)
{
    chooseWith("Sndout EARC Outputtype", [](Row& row) { row.count = 4; });
    expectOnly(tap({}), "\"Sndout EARC Outputtype\" is there and takes 5 integers: it takes 4 "
                        "integers, not 5");
}

TEST_F(Conformance, AnElementWithTooSmallARange)
{
    chooseWith("Gain Output", [](Row& row) { row.maximum = 100; });
    expectOnly(tap({}), "\"Gain Output\" is there and takes 2 integers: it takes 0 to 100, but "
                        "\"output type\" is written from 1 to 128");
    chooseWith("Gain Output", [](Row& row) { row.maximum = 200; });
    expectOnly(tap({}), "\"Gain Output\" is there and takes 2 integers: it takes 0 to 200, but "
                        "\"gain\" is written from 8388608 to 8388608");
    chooseWith("Mute Input", [](Row& row) { row.minimum = 1; });
    expectOnly(tap({}), "\"Mute Input\" is there and takes 3 integers: it takes 1 to 16, but "
                        "\"port\" is written from 0 to 7");
}

TEST_F(Conformance, AnElementThatMayNotBeWritten)
{
    chooseWith("Sndout EARC OnOff", [](Row& row) { row.access = "r"; });
    expectOnly(tap({}),
               "\"Sndout EARC OnOff\" can be written: the card does not let it be written");
}

TEST_F(Conformance, AnElementThatMayNotBeReadIsWrittenOnlyAudibly)
{
    chooseWith("Sndout EARC OnOff", [](Row& row) { row.access = "w"; });
    const Outcome silent = tap({});
    EXPECT_EQ(silent.status, 0) << silent.output;
    EXPECT_THAT(silent.output, HasSubstr("\"Sndout EARC OnOff\" can be written # SKIP it does not "
                                         "tell what it holds; --audible writes it\n"));
    const Outcome audible = tap({"--audible"});
    EXPECT_EQ(audible.status, 0) << audible.output;
    EXPECT_THAT(audible.output,
                HasSubstr("\"Sndout EARC OnOff\" reads back what was written # SKIP "
                          "the card does not let it be read\n"));
}

TEST_F(Conformance, AnElementThatRefusesAWrite)
{
    const auto refuse = [] { plant(FaultPoint::CardWrite, "Sndout ARC OnOff", -EIO); };
    expectOnly(tap({}, refuse),
               "\"Sndout ARC OnOff\" can be written: it refuses 0: Input/output error");
    expectOnly(
        tap({"--audible", "card"}, [] { plant(FaultPoint::CardWrite, "Sndout Open", -EBUSY); }),
        "\"Sndout Open\" can be written: it refuses 1: Device or resource busy");
}

TEST_F(Conformance, AnElementThatIsSlow)
{
    const Outcome outcome = tap({"--limit", "200", "card"},
                                [] { plant(FaultPoint::CardWrite, "Sndout ARC OnOff", 0, 300); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(failures(outcome), testing::Contains(testing::ContainsRegex(
                                       "\"Sndout ARC OnOff\" can be written: it took [0-9]+ ms, "
                                       "more than the 200 of --limit")));
}

TEST_F(Conformance, AnElementThatIsReadSlowly)
{
    std::vector<Row> rows = exactRows();
    std::erase_if(rows, [](const Row& row) { return row.name != "Mute Input"; });
    choose(rows); // read before it is written, and after
    for (const int before : {0, 1}) {
        const Outcome outcome = tap({"--limit", "200", "card"}, [&] { gReadsUntilSlow = before; });
        EXPECT_THAT(failures(outcome), testing::Contains(testing::ContainsRegex(
                                           "\"Mute Input\" reads back what was written: it took "
                                           "[0-9]+ ms, more than the 200 of --limit")));
    }
}

TEST_F(Conformance, ACardThatIsSlow)
{
    const Outcome outcome = tap({"--limit", "200", "card"}, [] {
        plant(FaultPoint::CardOpen, "*", 0, 300);
        plant(FaultPoint::CardInfo, "Mute Input", 0, 300);
    });
    EXPECT_EQ(outcome.status, 1);
    const auto took = [](const std::string& claim) {
        return testing::Contains(
            testing::ContainsRegex(claim + ": it took [0-9]+ ms, more than the 200 of"));
    };
    EXPECT_THAT(failures(outcome), AllOf(took("the card can be opened"),
                                         took("\"Mute Input\" is there and takes 3 integers")));
    EXPECT_THAT(outcome.output, HasSubstr("- \"Mute Output\" can be written\n"));
}

TEST_F(Conformance, AnElementThatDoesNotKeepWhatItIsWritten)
{
    const Outcome outcome = tap({"--audible", "card"}, [] { gForgetWrites = true; });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(
        failures(outcome),
        testing::Contains("\"Mute Input\" reads back what was written: it was written 1, 0, "
                          "0, and reads 0, 0, 0"));
}

// --- Middleware that was made wrong

TEST_F(Conformance, MiddlewareThatLacksAnOperation)
{
    const Outcome outcome = program({"--tap"}, CONFORMANCE_INCOMPLETE);
    EXPECT_EQ(outcome.status, 1);
    ASSERT_EQ(failures(outcome).size(), 1U) << outcome.output;
    EXPECT_THAT(failures(outcome).front(),
                testing::MatchesRegex("all operations are in the television's libraries: .* needs "
                                      "mwl_delay::MWLDelay::.*, which none of the television's "
                                      "libraries has"));
    EXPECT_THAT(
        program({}, CONFORMANCE_INCOMPLETE).output,
        AllOf(StartsWith("Libraries\n  FAIL  "), EndsWith("\n0 passed, 1 failed, 0 skipped\n")));
}

TEST_F(Conformance, MiddlewareThatFails)
{
    expectOnly(tap({"--audible"}, [] { plant(FaultPoint::Middleware, "delay.setUserDelay", 7); }),
               "delay.setUserDelay answers: delay.setUserDelay answered 7, not 0");
    expectOnly(tap({}, [] { plant(FaultPoint::Middleware, "amplifier.getAmpState", -2); }),
               "amplifier.getAmpState answers: amplifier.getAmpState answered -2, not 0");
}

TEST_F(Conformance, EveryOperationThatFailsIsTold)
{
    const Outcome outcome = tap({"--audible", "--register", "0x34:1:0x00", "middleware"}, [] {
        virtualtv::setI2cData({"0x1f"});
        plant(FaultPoint::Middleware, "*", 5);
    });
    EXPECT_EQ(outcome.status, 1);
    const Texts told = failures(outcome);
    for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations) {
        const std::string name = operation.name;
        if (name == "gain.getGainAsInput" || name == "amplifier.readI2cDataFromAmp")
            continue; // they have no status
        EXPECT_THAT(told, testing::Contains(name + " answers: " + name + " answered 5, not 0"));
    }
}

TEST_F(Conformance, MiddlewareWithoutAnInstance)
{
    expectOnly(tap({"middleware"}, [] { gNoDelay = true; }),
               "delay has an instance: delay answered -1, not 0");
}

TEST_F(Conformance, MiddlewareThatIsSlow)
{
    const Outcome outcome = tap({"--limit", "200", "middleware"}, [] {
        plant(FaultPoint::Middleware, "gain.getGainAsInput", 0, 300);
    });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(failures(outcome),
                testing::Contains(testing::ContainsRegex(
                    "gain.getGainAsInput answers: it took [0-9]+ ms, more than the 200")));
}

TEST_F(Conformance, MiddlewareThatHangs)
{
    const Outcome outcome = tap({"--limit", "50", "middleware"}, [] {
        plant(FaultPoint::Middleware, "gain.getGainAsInput", 0, 600'000);
    });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                EndsWith("Bail out! gain.getGainAsInput has not answered for 1000 ms\n"));
}

TEST_F(Conformance, ARegisterThatCannotBeRead)
{
    expectOnly(
        tap({"middleware", "--register=0x34:1:0x00"}),
        "amplifier.readI2cDataFromAmp answers: amplifier.readI2cDataFromAmp answered 0 bytes, "
        "not 1");
}

TEST_F(Conformance, AnInputLineThatIsMissing)
{
    expectOnly(tap({}, [] { plant(FaultPoint::Gpio, "GPIO_RD_HP_LINK", 3); }),
               "GPIO_RD_HP_LINK can be read: GPIO_RD_HP_LINK answered 3, not 0");
    expectOnly(
        tap({}, [] { gNoLevelFilledIn = true; }),
        "GPIO_RD_HP_LINK can be read: GPIO_RD_HP_LINK was read without a level being filled in");
}

TEST_F(Conformance, ASubMicrocontrollerThatDoesNotAnswer)
{
    expectOnly(
        tap({"--audible", "lines"},
            [] { plant(FaultPoint::SubMicro, "subcpu_misc_Set_HPMuteOnOff", 1); }),
        "subcpu_misc_Set_HPMuteOnOff answers: subcpu_misc_Set_HPMuteOnOff answered 1, not 0");
    expectOnly(
        tap({"--audible", "lines"}, [] { gThrow = true; }),
        "subcpu_misc_Set_HPMuteOnOff answers: subcpu_misc_Set_HPMuteOnOff threw: no such chip");
}

TEST_F(Conformance, ASubMicrocontrollerThatMutesAndDoesNotUnmute)
{
    expectOnly(tap({"--audible", "lines"},
                   [] {
                       virtualtv::inject({.point = FaultPoint::SubMicro,
                                          .name = "subcpu_misc_Set_HPMuteOnOff",
                                          .card = "",
                                          .status = 0,
                                          .times = 1});
                       plant(FaultPoint::SubMicro, "subcpu_misc_Set_HPMuteOnOff", 1);
                   }),
               "subcpu_misc_Set_HPMuteOnOff answers: subcpu_misc_Set_HPMuteOnOff answered 1, not "
               "0");
}

// --- A log that was made wrong

TEST_F(Conformance, ALogThatDropsItsLines)
{
    const Outcome outcome = tap({}, [] { gDropLog = true; });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(failures(outcome),
                testing::ElementsAre(
                    "a line of level error arrives: a line of level error does not arrive",
                    "a line of level warning arrives: a line of level warning does not arrive",
                    "a line of level info arrives: a line of level info does not arrive",
                    "a line of level debug arrives: a line of level debug does not arrive",
                    "the library's own lines arrive in the log: the error CONFIG_FILE_READ_FAILED "
                    "does not arrive"));
}

TEST_F(Conformance, ALogThatDropsKeysOrAdmitsEverything)
{
    EXPECT_THAT(
        failures(tap({"log"}, [] { gDropPairs = true; })),
        testing::Contains("a line of level info arrives: a line of level info arrives without "
                          "its key and value"));
    EXPECT_THAT(failures(tap({"log"}, [] { gLeaveNoLineOut = true; })),
                testing::ElementsAre(
                    "a line of level warning stays away when not admitted: it arrives all the same",
                    "a line of level info stays away when not admitted: it arrives all the same",
                    "a line of level debug stays away when not admitted: it arrives all the same"));
}

TEST_F(Conformance, ALogThatChangesItsLines)
{
    const auto told = [&](bool& wrong) {
        return failures(tap({"log"}, [&] { wrong = true; })).front();
    };
    EXPECT_EQ(told(gLogTwice),
              "a line of level error arrives: a line of level error arrives 2 times");
    EXPECT_EQ(told(gOtherLogId), "a line of level error arrives: a line of level error arrives "
                                 "with another context, level or id");
    EXPECT_EQ(told(gOtherLogText), "a line of level error arrives: a line of level error arrives "
                                   "with another text: otherwise, a line of level 7");
}

// --- A configuration that was made wrong

TEST_F(Conformance, AConfigurationThatIsMissing)
{
    mConfig = folder() / "nowhere";
    const Outcome outcome = tap({"configuration"});
    EXPECT_EQ(outcome.status, 1);
    ASSERT_EQ(failures(outcome).size(), 1U) << outcome.output;
    EXPECT_THAT(failures(outcome).front(),
                AllOf(StartsWith("kep-config.json can be read: "),
                      HasSubstr("/nowhere/kep-config.json is no JSON object that can be read")));
}

TEST_F(Conformance, ANumberSignIsEscapedForMachines)
{
    mConfig = folder() / "a#b";
    EXPECT_THAT(tap({"configuration"}).output, HasSubstr("/a\\#b/kep-config.json is no"));
    EXPECT_THAT(run({"configuration"}).output, HasSubstr("/a#b/kep-config.json is no"));
}

TEST_F(Conformance, AConfigurationOfAnotherTelevision)
{
    mConfig = folder();
    const std::string path = file("kep-config.json", R"({"Q27R6": {"kepAudio": "TV"}})");
    expectOnly(tap({"configuration"}), "kep-config.json names a backend: " + path +
                                           R"( lacks the section "Q27R5" (it has "Q27R6"))");
}

// --- Requests

TEST_F(Conformance, ARequestWithAnotherCode)
{
    const Outcome outcome =
        tap({"--audible", "requests"}, [] { plant(FaultPoint::CardWrite, "Mute Input", -EIO); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(failures(outcome),
                testing::Contains(
                    AllOf(StartsWith("setMute mutes the film: the code is 2, not 0; logged: "),
                          HasSubstr("Control element write error: Input/output error"))));
}

TEST_F(Conformance, ARequestThatIsSlow)
{
    const Outcome outcome = tap({"--audible", "--limit", "200", "requests"},
                                [] { plant(FaultPoint::CardWrite, "Mute Input", 0, 300); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(failures(outcome),
                testing::Contains(testing::ContainsRegex(
                    "setMute mutes the film: it took [0-9]+ ms, more than the 200 of --limit")));
}

TEST_F(Conformance, ARequestThatHangs)
{
    const Outcome outcome = tap({"--audible", "--limit", "50", "requests"},
                                [] { plant(FaultPoint::CardWrite, "Mute Input", 0, 600'000); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                EndsWith("Bail out! setMute mutes the film has not answered for 1000 ms\n"));
}

TEST_F(Conformance, EveryRequestIsRefusedWithoutABackend)
{
    const std::string output = tap({"requests"}).output;
    for (const char* request :
         {"connectInput", "disconnectInput", "getHeadphoneStatus", "removePipelineInfo",
          "setSoundOutput", "setMute", "setOutputVolume", "setInputVolume", "setOutputMute",
          "setMuteExtSPK", "setQualityAttribute", "setSettings", "getSettings", "deinitialize"})
        EXPECT_THAT(output, testing::ContainsRegex(std::string{"\nok [0-9]+ - "} + request +
                                                   " refuses without a backend\n"));
}

TEST_F(Conformance, TheEveningIsTheTelevisions)
{
    mConfig = CONFORMANCE_CONFIG "/ALSA";
    const Outcome outcome = tap({"--audible", "requests"});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("initialize starts the backend # SKIP it is the "
                                          "television's; the backend configured is ALSA"));
}
