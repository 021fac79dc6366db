// SPDX-License-Identifier: Apache-2.0
// Cards from tables: kepctl card dump, and --card wherever the virtual cards are used.
// And answers that come late, from the cards and from everything else.
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace
{

constexpr const char* kTable =
    R"({"card":"Desk","elements":[
{"name":"Gain","iface":"mixer","index":0,"type":"integer","count":2,"min":-60,"max":12,"step":3,"access":"rw","values":[-60,12]},
{"name":"Mode","iface":"card","index":1,"device":2,"type":"enumerated","count":1,"items":["off","näher"],"access":"rwv","values":[1]},
{"name":"Clock","iface":"pcm","index":0,"type":"integer64","count":1,"min":0,"max":9000000000,"step":0,"access":"r","values":[8000000000]},
{"name":"Mute","iface":"mixer","index":0,"type":"boolean","count":1,"access":"rwi","values":[1]},
{"name":"Key","iface":"mixer","index":0,"type":"bytes","count":3,"access":"rw","values":[0,128,255]}
]}
)";

class KepctlCard : public Kepctl
{
protected:
    const std::string mTable = file("card.json", kTable);
};

} // namespace

TEST_F(KepctlCard, ADumpOfACardThatWasMadeFromATableIsThatTable)
{
    const Execution outcome = kepctl({"card", "dump", "--card", mTable});
    EXPECT_EQ(outcome.output, kTable);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.status, kPlayed);
}

#ifdef KEPCTL_TEST_AMIXER
TEST_F(KepctlCard, ADumpHoldsTheValuesAsTheyAre)
{
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -q -D default cset name=Softmaster1 40
        "$KEPCTL" card dump default)sh");
    const Texts lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 7U) << outcome.errors;
    EXPECT_EQ(lines[0], R"({"card":"Virtual mixer","elements":[)");
    EXPECT_EQ(
        lines[1],
        R"({"name":"Master Playback Switch","iface":"mixer","index":0,"type":"boolean","count":1,"access":"rw","values":[0]},)");
    EXPECT_EQ(
        lines[5],
        R"({"name":"Softmaster1","iface":"mixer","index":0,"type":"integer","count":1,"min":0,"max":100,"step":1,"access":"rw","values":[40]})");
}

TEST_F(KepctlCard, AmixerHearsOfTheWritesOfOthersAndOfNothingElse)
{
    setenv("EVENTS", (directory() / "events").c_str(), 1);
    const Execution outcome = shell(R"sh(
        until_seen() {
            for i in $(seq 200); do grep -q "$1" "$EVENTS" && return; sleep 0.05; done
            echo "never seen: $1"
        }
        eval "$("$KEPCTL" env)"
        stdbuf -oL amixer -D default events >"$EVENTS" & listener=$!
        until_seen Ready
        amixer -q -D default cset name=Softmaster1 40
        until_seen "event value.*'Softmaster1'"
        kill $listener
        sed '1,/Ready/d' "$EVENTS")sh");
    EXPECT_THAT(outcome.output, HasSubstr("event value: numid=5,iface=MIXER,name='Softmaster1'"))
        << outcome.errors;
    EXPECT_LE(linesOf(outcome.output).size(), 3U) << outcome.output;
}

TEST_F(KepctlCard, EachTableKeepsValuesOfItsOwn)
{
    setenv("TABLE", mTable.c_str(), 1);
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -q -D default cset name=Softmaster1 40
        eval "$("$KEPCTL" env --card "$TABLE")"
        amixer -q -D hw:0 cset name=Gain -- -3,-6
        unset KEP_VIRTUALTV_CARD
        amixer -D default cget name=Softmaster1
        eval "$("$KEPCTL" env --card "$TABLE")"
        amixer -D hw:0 cget name=Gain)sh");
    EXPECT_THAT(outcome.output, AllOf(HasSubstr(": values=40"), HasSubstr(": values=-3,-6")))
        << outcome.errors;
}
#endif

TEST_F(KepctlCard, AShellSeesTheCardOfItsTable)
{
    setenv("TABLE", mTable.c_str(), 1);
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env --card "$TABLE")"
        "$KEPCTL" card dump)sh");
    EXPECT_EQ(outcome.output, kTable);
}

TEST_F(KepctlCard, ThePathOfATableHoldsInEveryFolder)
{
    setenv("TABLE", mTable.c_str(), 1);
    const Execution outcome = shell(R"sh(
        cd "$(dirname "$TABLE")"
        eval "$("$KEPCTL" env --card card.json)"
        cd /
        "$KEPCTL" card dump)sh");
    EXPECT_EQ(outcome.output, kTable);
}

TEST_F(KepctlCard, ARunHasTheElementsOfItsTable)
{
    const std::string own = R"({"inject": {"control": "Gain", "status": -5}})";
    const std::string other = R"({"inject": {"control": "Sndout Open", "status": -5}})";
    EXPECT_EQ(kepctl({"run", "--card", mTable, "-"}, own).status, kPlayed);
    EXPECT_EQ(kepctl({"run", "-"}, own).status, kUnusable);
    EXPECT_EQ(kepctl({"run", "--card", mTable, "-"}, other).status, kUnusable);
    EXPECT_THAT(kepctl({"list", "--card", mTable, "elements"}).output, HasSubstr("Mode"));

    const std::string connect = file(
        "connect.json",
        R"({"card":"A","elements":[{"name":"Sndout Open","type":"integer","count":1,"min":0,"max":100}]})");
    const Execution outcome =
        kepctl({"run", "--card", connect, "--format", "jsonl", "-"},
               kInitialize + R"({"call": "setSoundOutput", "args": ["tv_speaker"]})");
    EXPECT_THAT(eventsOf(outcome, "control"),
                testing::Each(HasSubstr(R"("element":"Sndout Open")")));
}

TEST_F(KepctlCard, ATableThatIsNoneIsNamedAndNothingIsDone)
{
    const std::string bad =
        file("bad.json", R"({"card":"A","elements":[{"name":"B","type":"boolean","cuont":1}]})");
    const std::string message =
        "kepctl: " + bad + R"(: elements[0] ("B"): unknown key "cuont")" + "\n";
    for (const Texts& command :
         {Texts{"run", "--card", bad, "-"}, Texts{"env", "--card", bad},
          Texts{"card", "dump", "--card", bad}, Texts{"list", "elements", "--card", bad}}) {
        const Execution outcome = kepctl(command, kInitialize);
        EXPECT_EQ(outcome.errors, message) << command.front();
        EXPECT_EQ(outcome.output, "") << command.front();
        EXPECT_EQ(outcome.status, kUnusable) << command.front();
    }
    setenv("KEP_VIRTUALTV_CARD", bad.c_str(), 1);
    EXPECT_EQ(kepctl({"run", "-"}, kInitialize).errors, message);
}

TEST_F(KepctlCard, WhatIsWrongWithTheCommandIsSaid)
{
    EXPECT_THAT(kepctl({"card"}).errors, HasSubstr("card what? dump"));
    EXPECT_THAT(kepctl({"card", "drop"}).errors, HasSubstr("unknown word \"drop\""));
    EXPECT_THAT(kepctl({"card", "dump", "hw:0", "hw:1"}).errors, HasSubstr("not also \"hw:1\""));
    EXPECT_THAT(kepctl({"run", "--hardware", "--card", mTable, "-"}).errors,
                HasSubstr("--hardware"));
    const Execution outcome = kepctl({"card", "dump", "nosuch"});
    EXPECT_THAT(outcome.errors, HasSubstr("kepctl: nosuch: No such file or directory"));
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.status, kUnusable);
}

// --- Late answers

namespace
{

struct LateRow {
    const char* fault; // what the injection names
    const char* call;
    const char* event; // of the access
};
// clang-format off
constexpr LateRow kLateRows[] = {
    {R"("control": "Sndout Open")",                   R"("setSoundOutput", "args": ["tv_speaker"])",           "control"},
    {R"("control": "*", "stage": "info")",            R"("setSoundOutput", "args": ["tv_speaker"])",           "control"},
    {R"("stage": "open")",                            R"("setSoundOutput", "args": ["tv_speaker"])",           "control"},
    {R"("stage": "load")",                            R"("setSoundOutput", "args": ["tv_speaker"])",           "control"},
    {R"("middleware": "gain.setInputVolume")",        R"("setInputVolume", "args": ["ADEC0", "MAIN", 20])",    "middleware"},
    {R"("gpio": "GPIO_RD_HP_LINK")",                  R"("getHeadphoneStatus")",                               "gpio"},
    {R"("subcpu": "subcpu_misc_Set_HPMuteOnOff")",    R"("setOutputMute", "args": ["headphone", true])",       "subcpu"},
};
// clang-format on

} // namespace

TEST_F(KepctlCard, AnInjectionMakesTheAnswerLateAndLetsItThrough)
{
    constexpr int kDelayMs = 120;
    for (const LateRow& row : kLateRows) {
        const Execution outcome =
            kepctl({"run", "--time", "--format", "jsonl", "-"},
                   kInitialize + R"({"inject": {)" + row.fault + R"(, "times": 1, "delayMs": )" +
                       std::to_string(kDelayMs) + "}}\n" + R"({"call": )" + row.call + "}\n");
        ASSERT_EQ(outcome.status, kPlayed) << outcome.errors;
        const Texts requests = eventsOf(outcome, "request");
        const Texts results = eventsOf(outcome, "result");
        const auto late = json(results.back())["ms"].asNumber<std::int64_t>() -
                          json(requests.back())["ms"].asNumber<std::int64_t>();
        EXPECT_GE(late, kDelayMs) << row.fault;
        ASSERT_THAT(eventsOf(outcome, row.event), Not(IsEmpty())) << row.fault;
        EXPECT_EQ(json(eventsOf(outcome, row.event).back())["status"].asNumber<int>(), 0)
            << row.fault;
    }
}
