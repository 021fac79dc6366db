// SPDX-License-Identifier: Apache-2.0
// The mixer backend: a write and the failures of its stages.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "alsaaudiotest.h"
#include "kepalsaaudio.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

// --- Failures

TEST_F(KepAlsaAudio, EachFailedStageIsToldOnceAndTheCardIsClosed)
{
    create();
    for (const FailureRow& row : kFailures) {
        for (const Request& request : kRequests) {
            clearInjections();
            injectCard(row.stage, row.status);
            forget();
            EXPECT_EQ(request.send(), KEP_RESULT_FAILED) << row.text << request.failure;
            std::vector<LogLine> expected = request.before;
            expected.push_back(writing("default", request.control, request.text));
            expected.push_back(debugOf("setControl", row.text));
            expected.push_back(request.failure);
            EXPECT_THAT(logLines(), ElementsAreArray(expected));
            EXPECT_EQ(controlEvents().size(), 1U) << row.text;
            EXPECT_EQ(controlEvents().back().status, row.status) << row.text;
            expectHandles(row.opened, row.text);
        }
    }
}

TEST_F(KepAlsaAudio, TheWriteAfterAFailureStartsAfresh)
{
    create();
    for (const FailureRow& row : kFailures) {
        injectCard(row.stage, row.status);
        EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED) << row.text;
        clearInjections();
        forget();
        EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_OK) << row.text;
        EXPECT_THAT(controlEvents(),
                    ElementsAre(ControlEvent{"default", "Master Playback Volume", {35}, 0}));
        expectHandles(row.opened + 1, row.text);
    }
}

TEST_F(KepAlsaAudio, ACardThatDoesNotExistFails)
{
    create("hw:9");
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("setOutputMute", "In setOutputMute, setting mute to 1"),
                    writing("hw:9", kSwitch, "off"),
                    debugOf("setControl", "Control hw:9 open error: No such file or directory\n"),
                    volumeError("setOutputMute", std::string{"Failed to set mute off for "
                                                             "card:hw:9, control:"} +
                                                     kSwitch)));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(0, "hw:9");
}

TEST_F(KepAlsaAudio, ACardWithoutANameIsNotOpened)
{
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": 0,
        "muteControlName": "'Master Playback Switch'", "volumeControlName": "Softmaster"}})");
    ASSERT_NE(kepAlsaAudio::createObject(), nullptr);
    forget();
    EXPECT_EQ(backend().connectInput("AMIXER", "ALSA", JValue{}), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("connectInput", "connectInput  20"),
                    debugOf("resetMixerVolume", "reset volume  resource=20 mute=0"),
                    debugOf("setControl", "Wrong input parameter\n"),
                    volumeError("resetMixerVolume",
                                "Failed to set control name=Softmaster0 to 100% for card:")));
    expectHandles(0, "no name");
}

TEST_F(KepAlsaAudio, AControlNameThatIsNoIdentifierIsNotWritten)
{
    create("default", "x,bogus=1", "x,numid=none");
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("setOutputMute", "In setOutputMute, setting mute to 1"),
                    debugOf("setControl", "Wrong control identifier: name=x,bogus=1\n"),
                    volumeError("setOutputMute",
                                "Failed to set mute off for card:default, control:name=x,bogus=1"),
                    debugOf("setVolume", "In setVolume, setting volume to 35%"),
                    debugOf("setControl", "Wrong control identifier: name=x,numid=none\n"),
                    volumeError("setOutputVolume", "Failed setting volume to 35")));
    expectHandles(0, "no identifier");
}

TEST_F(KepAlsaAudio, AtLevelErrorAFailureIsOneLine)
{
    create();
    admit(kLogError);
    for (const Request& request : kRequests) {
        clearInjections();
        forget();
        request.send();
        EXPECT_THAT(logLines(), IsEmpty()) << request.failure;
        injectCard("open", -19);
        request.send();
        EXPECT_THAT(logLines(), ElementsAre(request.failure));
    }
}

// --- setControl

TEST_F(KepAlsaAudio, SetControlWritesOnceAndClosesTheCard)
{
    EXPECT_TRUE(kepAlsaAudio::setControl("default", kSwitch, "on"));
    EXPECT_TRUE(kepAlsaAudio::setControl("default", "name=Softmaster1", "35%"));
    EXPECT_TRUE(kepAlsaAudio::setControl("hw:0", "name='Sndout Connect'", "1,2,3"));
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Switch", {1}, 0},
                            ControlEvent{"default", "Softmaster1", {35}, 0},
                            ControlEvent{"hw:0", "Sndout Connect", {1, 2, 3}, 0}));
    EXPECT_THAT(logLines(), ElementsAre(writing("default", kSwitch, "on"),
                                        writing("default", "name=Softmaster1", "35%"),
                                        writing("hw:0", "name='Sndout Connect'", "1,2,3")));
    expectHandles(3, "three writes");
}

TEST_F(KepAlsaAudio, SetControlTakesNoEmptyString)
{
    const LogLine wrong = debugOf("setControl", "Wrong input parameter\n");
    EXPECT_FALSE(kepAlsaAudio::setControl("", kSwitch, "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "", "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", kSwitch, ""));
    EXPECT_FALSE(kepAlsaAudio::setControl("", "", ""));
    EXPECT_THAT(logLines(), ElementsAre(wrong, wrong, wrong, wrong));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(0, "empty");
}

TEST_F(KepAlsaAudio, SetControlTakesNoWrongIdentifier)
{
    for (const char* control : {"Master Playback Switch", "numid=", "numid=0",
                                "iface=BOGUS,name=Softmaster", " ", "%s"}) {
        forget();
        EXPECT_FALSE(kepAlsaAudio::setControl("default", control, "on")) << control;
        EXPECT_THAT(logLines(),
                    ElementsAre(debugOf("setControl", std::string{"Wrong control identifier: "} +
                                                          control + "\n")));
    }
    expectHandles(0, "wrong identifier");
}

TEST_F(KepAlsaAudio, SetControlFindsNoUnknownElement)
{
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "name=Nobody", "on"));
    EXPECT_THAT(logLines(),
                ElementsAre(writing("default", "name=Nobody", "on"),
                            debugOf("setControl", "Cannot find the given element from control "
                                                  "default, error No such file or directory\n")));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(1, "unknown element");
}

TEST_F(KepAlsaAudio, AnIdentifierWithoutNameAndNumberIsAnElementThatIsNotFound)
{
    for (const char* control : {"name=", "name=''", "name=\"\"", "name=,index=1", "index=1",
                                "iface=CARD", "device=2,name="}) {
        forget();
        EXPECT_FALSE(kepAlsaAudio::setControl("default", control, "on")) << control;
        EXPECT_THAT(logLines(), ElementsAre(writing("default", control, "on"),
                                            debugOf("setControl",
                                                    "Cannot find the given element from control "
                                                    "default, error No such file or directory\n")))
            << control;
    }
    // The card is opened first: what is wrong with it is told first.
    forget();
    EXPECT_FALSE(kepAlsaAudio::setControl("hw:9", "name=", "on"));
    EXPECT_THAT(
        logLines(),
        ElementsAre(writing("hw:9", "name=", "on"),
                    debugOf("setControl", "Control hw:9 open error: No such file or directory\n")));
    EXPECT_EQ(virtualtv::cardHandles().opened, virtualtv::cardHandles().closed);
}

TEST_F(KepAlsaAudio, NamesFromACapabilityFileThatNameNothingFailTheRequest)
{
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": "default",
        "muteControlName": "\u0000m", "volumeControlName": 7}})");
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setOutputVolume("", 1), KEP_RESULT_FAILED);
    EXPECT_EQ(logLines(kLogError).size(), 2U);
}

TEST_F(KepAlsaAudio, NoTextEndsTheProcess)
{
    const std::string x300(300, 'x');
    const std::string deep = [] {
        std::string text = "hw:{";
        for (int i = 0; i < 100000; ++i)
            text += "a{";
        return text;
    }();
    const std::vector<std::string> cards = {
        "",
        "hw",
        "hw:",
        "hw:-1",
        "hw:99999999999",
        "hw:CARD=",
        "hw:'",
        "hw:'\\",
        "hw:\"",
        "hw:{",
        "hw:{}",
        "hw:{CARD 0}",
        "a.b.c",
        ".",
        "@",
        "hw:@",
        "default:0",
        "_ucm",
        "_ucm0000.hw:0",
        "%s%n",
        "\xff\xfe",
        x300,
        "hw:" + x300,
        "hw:" + x300 + "=0",
        deep,
        std::string(1000000, 'x'),
        std::string{"\0hw:0", 5},
        std::string{"hw:0\0x", 6},
    };
    const std::vector<std::string> controls = {
        "name=",
        "name='",
        "name=" + x300,
        "name='" + x300 + "'",
        "numid=0",
        "numid=-1",
        "numid=1",
        "numid=4294967295",
        "numid=9999999999999",
        "name=a,index=-1",
        "name=a,index=4294967296",
        "name=a,device=99999999999",
        "iface=SEQUENCER",
        "iface=x",
        "name=" + std::string(43, 'n'),
        "name=" + std::string(44, 'n'),
        "name=" + std::string(64, 'n'),
        std::string{"name=\0x", 7},
        "name=a,name=",
        ",",
        " ",
        "=",
        "\xff",
    };
    const std::vector<std::string> values = {
        "on", "-1%", "9999999999999999999%", "1,2,3,4", std::string(1000, ','), "'", "\xff", "%n",
    };
    for (const std::string& card : cards)
        static_cast<void>(kepAlsaAudio::setControl(card, kSwitch, "on"));
    for (const std::string& control : controls)
        for (const std::string& value : values)
            static_cast<void>(kepAlsaAudio::setControl("default", control, value));
    for (const std::string& value : values)
        static_cast<void>(kepAlsaAudio::setControl("default", kVolume, value));
    EXPECT_EQ(virtualtv::cardHandles().opened, virtualtv::cardHandles().closed);
    EXPECT_TRUE(kepAlsaAudio::setControl("default", kSwitch, "on"));
}

TEST_F(KepAlsaAudio, SetControlLogsFailuresAtDebugLevelOnly)
{
    admit(kLogInfo);
    for (const FailureRow& row : kFailures) {
        clearInjections();
        injectCard(row.stage, row.status);
        EXPECT_FALSE(kepAlsaAudio::setControl("default", kSwitch, "on")) << row.text;
    }
    EXPECT_FALSE(kepAlsaAudio::setControl("", kSwitch, "on"));
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "bogus", "on"));
    EXPECT_THAT(logLines(), IsEmpty());
}
