// SPDX-License-Identifier: Apache-2.0
// What people see: the text format, colours, widths, and the options that choose what is shown.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "eventfilters.h"
#include "kepctltest.h"
#include "textlayout.h"

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

// --- The text format

TEST_F(Kepctl, ARequestIsABlockWithItsEffectsIndented)
{
    const Execution outcome =
        playAsText(kInitialize + kVolume40 +
                   R"({"inject": {"stage": "open", "status": -5, "times": 1}})"
                   "\n" +
                   kVolume40 + kHeadphone);
    std::vector<Texts> blocks;
    for (const std::string& line : linesOf(outcome.output)) {
        if (line.empty()) {
            blocks.emplace_back();
            continue;
        }
        ASSERT_FALSE(blocks.empty()) << outcome.output;
        EXPECT_EQ(line.front() == ' ', !blocks.back().empty()) << line;
        blocks.back().push_back(line);
    }
    ASSERT_EQ(blocks.size(), 5U) << outcome.output;
    EXPECT_EQ(blocks[0].front(), "initialize()");
    EXPECT_THAT(blocks[0], Contains(HasSubstr("In kepClient::initialize ALSA")));
    EXPECT_THAT(blocks[0].back(), MatchesRegex(" *= 1 started"));
    EXPECT_THAT(blocks[1], ElementsAre(R"(setOutputVolume("speaker", 40))",
                                       MatchesRegex(" +default +Master Playback Volume = 40"),
                                       MatchesRegex(" *= 0 done")));
    EXPECT_THAT(blocks[2], ElementsAre(R"(inject {"stage":"open","status":-5,"times":1})"));
    EXPECT_THAT(blocks[3], ElementsAre(R"(setOutputVolume("speaker", 40))",
                                       MatchesRegex(" +default +open +failed: Input/output error"),
                                       AllOf(HasSubstr("error"), HasSubstr("SET_VOLUME_ERROR"),
                                             HasSubstr("Failed setting volume to 40")),
                                       MatchesRegex(" *= 2 failed")));
    EXPECT_THAT(blocks[4],
                ElementsAre("getHeadphoneStatus()", MatchesRegex(" *= 0 done, not connected")));
}

TEST_F(Kepctl, TheScriptsCommentsAreShownToPeopleOnly)
{
    EXPECT_EQ(playAsText("# Good evening.\n# Good night.\n").output,
              "\n# Good evening.\n# Good night.\n");
    EXPECT_EQ(play("# Good evening.\n").output, "");
}

TEST_F(Kepctl, ALogTextTakesOneLineEach)
{
    const Execution outcome = playAsText(kInitialize + kVolume40, {"--log-level", "7"});
    EXPECT_THAT(linesOf(outcome.output),
                Contains(AllOf(StartsWith("    debug "), HasSubstr("snd_ctl_open on card"))));
    EXPECT_THAT(outcome.output, Not(HasSubstr("value=40%\n\n    ")));
}

TEST_F(Kepctl, EveryStatusCanBeShown)
{
    for (const int status : {-1, -99999, INT_MIN + 1, INT_MIN}) {
        const Execution outcome =
            playAsText(kInitialize + R"({"inject": {"control": "*", "status": )" +
                       std::to_string(status) + "}}\n" + kVolume40);
        EXPECT_EQ(outcome.status, kPlayed) << status;
        EXPECT_THAT(outcome.output, HasSubstr("Master Playback Volume = 40  failed")) << status;
        EXPECT_EQ(outcome.errors, "") << status;
    }
}

TEST_F(Kepctl, WithoutATerminalThereIsNoColour)
{
    EXPECT_THAT(playAsText(kVolume40 + kInitialize + kVolume40).output, Not(HasSubstr("\033")));
}

TEST_F(Kepctl, OnATerminalThereIsColour)
{
    const std::string shown = shownOnTerminal(kVolume40 + kInitialize + kVolume40);
    EXPECT_THAT(shown, HasSubstr("\033[1m"));
    EXPECT_THAT(shown, HasSubstr("\033[0m"));
    EXPECT_THAT(shown, HasSubstr("setOutputVolume(\"speaker\", 40)"));
}

TEST_F(Kepctl, OnATerminalFailuresLookDifferent)
{
    const std::string bad = "\033[1;31m";
    EXPECT_THAT(shownOnTerminal(kVolume40), HasSubstr(bad));
    EXPECT_THAT(shownOnTerminal(kInitialize + kVolume40), Not(HasSubstr(bad)));
}

TEST_F(Kepctl, OnATerminalThereIsNoColourForThoseWhoDoNotWantIt)
{
    setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(shownOnTerminal(kVolume40 + kInitialize),
                AllOf(Not(HasSubstr("\033")), HasSubstr("setOutputVolume")));
}

// --- Results in words

TEST_F(Kepctl, TextTellsResultsInWords)
{
    struct Row {
        const char* call;
        const char* result;
    };
    // clang-format off
    const Row rows[] = {
        {R"("deinitialize")",                                  "  = 0 failed"},
        {R"("setMuteExtSPK", "args": [true])",                 "  = 2 failed"},
        {R"("initialize")",                                    "  = 1 started"},
        {R"("setOutputVolume", "args": ["tv_speaker", 3])",    "  = 0 done"},
        {R"("setOutputMute", "args": ["radio", true])",        "  = 1 failed: unknown output"},
        {R"("setSoundOutput", "args": ["radio"])",             "  = 2 failed"},
        {R"("connectInput", "args": ["ADEC7", "MAIN", {}])",   "  = 3 failed: invalid resource"},
        {R"("connectInput", "args": ["ADEC0", "MAIN", {}])",   "  = 4 failed: invalid output"},
        {R"("getDefaultVolume")",                              "  = 15"},
        {R"("getHeadphoneStatus")",                            "  = 0 done, not connected"},
        {R"("getSettings", "args": ["x", {}])",                "  = true"},
        {R"("deinitialize")",                                  "  = 1 stopped"},
    };
    // clang-format on
    std::string content;
    Texts expected;
    for (const Row& row : rows) {
        content += std::string{R"({"call": )"} + row.call + "}\n";
        expected.emplace_back(row.result);
    }
    Texts results;
    for (const std::string& line : linesOf(kepctl({"run", script(content)}).output))
        if (line.starts_with("  = "))
            results.push_back(line);
    EXPECT_EQ(results, expected);
}

// --- Colour

TEST_F(Kepctl, ColourIsGivenOrRefusedOnRequest)
{
    EXPECT_THAT(playAsText(kInitialize, {"--color", "always"}).output, HasSubstr("\033[1m"));
    setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(playAsText(kInitialize, {"--color=always"}).output, HasSubstr("\033[1m"));
    unsetenv("NO_COLOR");
    EXPECT_THAT(shownOnTerminal(kInitialize, {"--color=never"}), Not(HasSubstr("\033")));
    EXPECT_THAT(shownOnTerminal(kInitialize, {"--color=auto"}), HasSubstr("\033[1m"));
    EXPECT_THAT(play(kInitialize, {"--color=always"}).output, Not(HasSubstr("\033")));
}

TEST_F(Kepctl, AnEscapeInATextFromOutsideDoesNotReachTheTerminal)
{
    const std::string shown =
        kepctl({"run", script(kInitialize +
                              R"({"call": "setSoundOutput", "args": ["\u001b[31mred\u007f"]})")})
            .output;
    EXPECT_THAT(shown, AllOf(Not(HasSubstr("\033")), HasSubstr("soundOutput \\x1b[31mred\\x7f")));
}

// --- Width

TEST_F(Kepctl, OnATerminalLinesAreFoldedToItsWidth)
{
    for (const unsigned short columns :
         {std::uint16_t{50}, std::uint16_t{80}, std::uint16_t{132}}) {
        const std::string shown =
            shownOnTerminal(kInitialize + kVolume40, {"--color=never", "--time"}, columns);
        std::size_t longest = 0;
        for (std::string line : linesOf(shown)) {
            line.erase(line.find_last_not_of("\r") + 1);
            longest = std::max(longest, line.size());
        }
        EXPECT_LE(longest, columns);
        EXPECT_GT(longest, columns - 20U);
    }
}

TEST_F(Kepctl, WithoutATerminalLinesAreAsLongAsTheyAre)
{
    const Texts lines = linesOf(playAsText(kInitialize).output);
    EXPECT_THAT(lines, Contains(AllOf(StartsWith("    info        LOAD_CONFIG  kepconfig:"),
                                      EndsWith("share/kep/ALSA/kep-config.json"))));
}

TEST(TextLayout, ALongLineIsFoldedAtBlanks)
{
    EXPECT_THAT(folded("to be or not to be, that is the question", 26, 4),
                ElementsAre("to be or not to be, that", "    is the question"));
}

TEST(TextLayout, AWordThatFitsNoLineIsCut)
{
    EXPECT_THAT(folded("  abcdefghijklmnopqrstuvwxyz", 24, 2),
                ElementsAre("  abcdefghijklmnopqrstuv", "  wxyz"));
}

TEST(TextLayout, ACharacterIsOneColumnHoweverManyBytesItHas)
{
    const std::string twenty = "\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9"
                               "\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac";
    EXPECT_THAT(folded(twenty + twenty, 20, 0), ElementsAre(twenty, twenty));
}

TEST(TextLayout, AWidthWithoutRoomFoldsNothing)
{
    const std::string text(300, 'a');
    EXPECT_THAT(folded(text, 0, 16), ElementsAre(text));
    EXPECT_THAT(folded(text, 30, 16), ElementsAre(text));
}

TEST(TextLayout, ALineFeedBeginsAnIndentedLine)
{
    EXPECT_THAT(folded("a\n\nb", 0, 2), ElementsAre("a", "  ", "  b"));
    EXPECT_THAT(folded("", 80, 2), ElementsAre(""));
}

TEST(TextLayout, ControlCharactersAreSpelledOut)
{
    EXPECT_EQ(printable("a\tb\033[1m\x7f\n\u00e9"), "a\\x09b\\x1b[1m\\x7f\n\u00e9");
}

// --- Driver writes in words

TEST_F(Kepctl, ExplainNamesTheIntegersOfDriverWrites)
{
    const std::string content = kInitialize +
                                R"({"call": "setSoundOutput", "args": ["tv_speaker"]})"
                                "\n"
                                R"({"call": "setSoundOutput", "args": ["external_arc"]})"
                                "\n"
                                R"({"call": "connectInput", "args": ["ADEC1", "MAIN", {}]})"
                                "\n";
    const Execution outcome = kepctl({"run", "--explain", "--only=control", script(content)});
    EXPECT_THAT(linesOf(outcome.output),
                IsSupersetOf({
                    "    hw:0        Sndout Connect: speaker, mixer block, port 5  (1 16 5)",
                    "    hw:0        Mute Output: speaker, unmuted  (1 0)",
                    "    hw:0        Sndout MainAudio Output: decoder block, port 1  (1 1)",
                }));
    const std::string plain = kepctl({"run", "--only=control", script(content)}).output;
    EXPECT_THAT(linesOf(plain), Contains("    hw:0        Sndout Connect = 1 16 5"));
    EXPECT_EQ(
        kepctl({"run", "--explain", "--format=jsonl", "--only=control", script(content)}).output,
        kepctl({"run", "--format=jsonl", "--only=control", script(content)}).output);
}

TEST_F(Kepctl, AnElementWithoutExplanationIsShownAsItIs)
{
    EXPECT_THAT(playAsText(kInitialize + kVolume40, {"--explain"}).output,
                HasSubstr("    default     Master Playback Volume = 40\n"));
}

// --- Which events

TEST_F(Kepctl, OnlyShowsTheEventsThatItNames)
{
    const std::string content = kInitialize +
                                R"({"inject": {"stage": "open", "status": -5, "times": 1}})"
                                "\n" +
                                kVolume40 + kVolume40;
    const auto kindsOf = [&](const std::string& list) {
        Texts kinds;
        for (const std::string& line :
             linesOf(play(content, {"--log-level", "7", "--only", list}).output)) {
            const std::string kind = line.substr(10, line.find('"', 10) - 10);
            if (kinds.empty() || kinds.back() != kind)
                kinds.push_back(kind);
        }
        return kinds;
    };
    EXPECT_THAT(kindsOf("request"), ElementsAre("request"));
    EXPECT_THAT(kindsOf("requests,results"),
                ElementsAre("request", "result", "request", "result", "request", "result"));
    EXPECT_THAT(kindsOf("control"), ElementsAre("control"));
    EXPECT_THAT(kindsOf("log:3,control"), ElementsAre("control", "log", "control"));
    EXPECT_THAT(kindsOf("gpio,subcpu,middleware"), IsEmpty());
    EXPECT_THAT(eventsOf(play(content, {"--log-level", "7", "--only", "log:6"}), "log"),
                AllOf(Contains(HasSubstr(R"("level":6)")), Contains(HasSubstr(R"("level":3)")),
                      Each(Not(HasSubstr(R"("level":7)")))));
    EXPECT_THAT(eventsOf(play(content, {"--log-level", "7", "--only", "log"}), "log"),
                Contains(HasSubstr(R"("level":7)")));
}

TEST_F(Kepctl, OnlyLeavesCommentsToThoseWhoSeeRequests)
{
    const std::string content = "# Good evening.\n" + kHeadphone;
    EXPECT_EQ(playAsText(content, {"--only", "request"}).output,
              "\n# Good evening.\n\ngetHeadphoneStatus()\n");
    EXPECT_EQ(playAsText(content, {"--only", "result"}).output, "  = 2 failed, not connected\n");
}

TEST_F(Kepctl, AListThatNamesNoEventIsRefused)
{
    for (const char* list : {"requestss", "request,", ",", "log:5", "log:", "log:33", "log:x",
                             "control:3", "Request", "request control"}) {
        const Execution outcome = play(kHeadphone, {"--only", list});
        EXPECT_EQ(outcome.status, kUnusable) << list;
        EXPECT_EQ(outcome.output, "") << list;
        EXPECT_THAT(outcome.errors, HasSubstr("middleware, gpio, subcpu, log or log:N")) << list;
    }
}

// --- Time

TEST_F(Kepctl, TimeIsTheLastKeyOfEveryEvent)
{
    const Execution outcome = play(kInitialize + "{\"wait\": 60}\n" + kVolume40, {"--time"});
    std::int64_t latest = 0;
    for (const std::string& line : linesOf(outcome.output)) {
        const auto [key, value] = json(line).members().back();
        EXPECT_EQ(key, "ms") << line;
        EXPECT_TRUE(value.isNumber()) << line;
        EXPECT_GE(value.asNumber<std::int64_t>(), latest) << line;
        latest = value.asNumber<std::int64_t>();
    }
    EXPECT_GE(latest, 60);
    EXPECT_LT(latest, 30000);
}

TEST_F(Kepctl, TimeIsAColumnOfTheText)
{
    const Texts lines =
        linesOf(playAsText("# A comment.\n" + kInitialize + "{\"wait\": 60}\n" + kVolume40,
                           {"--time", "--only", "request,result"})
                    .output);
    EXPECT_THAT(lines, ElementsAre("", "        # A comment.", "",
                                   MatchesRegex(" *[0-9]+ initialize\\(\\)"),
                                   MatchesRegex(" *[0-9]+   = 1 started"), "",
                                   MatchesRegex(" *[0-9]+ wait 60"), "",
                                   MatchesRegex(" *[1-9][0-9]+ setOutputVolume.*"),
                                   MatchesRegex(" *[1-9][0-9]+   = 0 done")));
    for (const std::string& line : lines)
        EXPECT_TRUE(line.empty() || line[7] == ' ') << line;
}

// --- Clocks

namespace
{

/// A start-up, whose log lines carry clocks and thread ids.
const std::string kStartup =
    R"({"call": "initialize"}
{"call": "setSettings", "args": ["hardwareConfig", {"tv.hw.countryType": "KR"}]}
{"call": "setSettings", "args": ["modelConfig", {"tv.model.ampChipType": "chipA"}]}
{"call": "setSettings", "args": ["contiConfig", {"tv.zib.tvBroadcastSystem": "DVB"}]}
{"wait": 2000}
)";

} // namespace

TEST_F(Kepctl, WithoutClocksTwoRunsAreEqual)
{
    const auto runOf = [&](const Texts& options) {
        Texts arguments = {"run", script(kStartup)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return kepctl(arguments).output;
    };
    const std::string lines = runOf({"--no-clocks", "--time", "--format", "jsonl"});
    EXPECT_EQ(runOf({"--no-clocks", "--time", "--format", "jsonl"}), lines);
    EXPECT_THAT(lines, AllOf(HasSubstr(R"("text":"{\"CLOCK\":0,\"PerfType\")"),
                             HasSubstr(R"("pairs":{"CLOCK":"0","PerfType")"),
                             HasSubstr(R"(Inside main Thread :: ID  = 0x0")"),
                             HasSubstr(R"(respective Thread :: ID  = 0x0")")));
    EXPECT_THAT(linesOf(lines), Each(EndsWith(R"("ms":0})")));
}
