// SPDX-License-Identifier: Apache-2.0
// kepctl as it is used: what each kind of script line does.
#include <chrono>
#include <string>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "badline.h"
#include "jdomparser.h"
#include "jsonplaces.h"
#include "kepctltest.h"
#include "scriptline.h"

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

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
        const JValue event = json(line);
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
    const std::string usedUpAndElsewhere =
        R"({"inject": {"control": "Master Playback Volume", "status": 0, "times": 1}})"
        "\n"
        R"({"inject": {"control": "Master Playback Volume", "status": -16, "times": 1}})"
        "\n"
        R"({"inject": {"control": "*", "card": "hw:0", "status": -19}})"
        "\n";
    const std::string ofOtherAccesses =
        R"({"inject": {"control": "*", "stage": "info", "card": "default", "status": -1}})"
        "\n"
        R"({"inject": {"control": "Softmaster", "status": -19}})"
        "\n";
    const std::string ofAll = R"({"inject": {"control": "*", "status": -5}})"
                              "\n";
    const std::string clear = R"({"clear": true})"
                              "\n";
    const Execution outcome =
        play(kInitialize + usedUpAndElsewhere + ofOtherAccesses + clear + usedUpAndElsewhere +
             ofAll + kVolume40 + kVolume40 + kVolume40 + kVolume40 + clear + kVolume40);
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

// --- How lines are written

constexpr const char* kWays[] = {
    R"({"a":1})",
    R"( { "a" : [ 1 , "b c" , true , null , { } , [ ] ] , "d" : -12 } )",
    R"({"a":"\u0041\/\"\n","b":"\\"})",
    R"({"\u0061":1})",
    R"({"a":1.50,"b":1e2,"c":-0,"d":0,"e":123456789012345678,"f":12345678901234567890})",
    R"({"a":1,"b":2,"a":{"c":1,"c":2}})",
    R"(["ü€😀"," , : ] } [ { "])",
    R"({"1":1,"2":1,"3":1,"4":1,"5":1,"6":1,"7":1,"8":1,"9":1,"1":2})",
    R"("text")",
    "false",
};

TEST(JsonLine, IsUnderstoodAsThePlatformsParserDoesItHoweverItIsWritten)
{
    for (const std::string line : kWays) {
        JDomParser parser{JSchema::acceptAll()};
        const JValue expected = parser.parse(line);
        const JsonNode node = parseJsonLine(line);
        EXPECT_EQ(node.json(), expected.stringify());
        EXPECT_EQ(node.value(), expected) << line;
        for (const JsonMember& member : node.members) {
            EXPECT_EQ(node.find(member.key)->value(), expected[member.key]) << line;
            EXPECT_EQ(node.find(member.key)->json(), expected[member.key].stringify()) << line;
        }
        for (std::size_t i = 0; i < node.elements.size(); ++i)
            EXPECT_EQ(node.elements[i].value(), expected[i]) << line;
    }
}

TEST(JsonLine, IsAsDeepAsThePlatformsParserAllows)
{
    const auto nested = [](int depth) {
        const auto length = static_cast<std::size_t>(depth);
        return std::string(length, '[') + std::string(length, ']');
    };
    const std::string deep = nested(JDomParser::kMaxDepth);
    const std::string deeper = nested(JDomParser::kMaxDepth + 1);
    EXPECT_EQ(parseJsonLine(deep).json(), deep);
    EXPECT_THROW(parseJsonLine(deeper), BadLine);
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
