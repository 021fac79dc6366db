// SPDX-License-Identifier: Apache-2.0
// What kepctl tells of itself, and what happens when nobody can hear it.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepcatalogue.h"
#include "kepctltest.h"
#include "listcommand.h"
#include "operations.h"
#include "scriptgrammar.h"
#include "scriptline.h"
#include "traceevents.h"

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

namespace
{

/// The values of one key of all rows.
Texts column(const JValue& rows, const char* key)
{
    Texts values;
    for (const JValue& row : rows.elements())
        values.push_back(row[key].asString());
    return values;
}

/// An input line that is read from a pipe: who asks for it waits until somebody writes there.
std::filesystem::path makeSlowLine(const std::filesystem::path& folder)
{
    std::filesystem::create_directory(folder);
    setenv("KEP_VIRTUALTV_LINES", folder.c_str(), 1);
    std::filesystem::path line = folder / "GPIO_RD_HP_LINK";
    mkfifo(line.c_str(), 0600);
    return line;
}

} // namespace

// --- Help

TEST_F(Kepctl, TheVersionNamesToolAndLibrary)
{
    const Execution outcome = kepctl({"--version"});
    EXPECT_EQ(outcome.status, kPlayed);
    const char* const library =
        KEP_LINKED_IN ? "library linked in" : "library libkep[.]so[.0-9]* [(].*[)]";
    EXPECT_THAT(linesOf(outcome.output),
                testing::ElementsAre(testing::MatchesRegex("kepctl [0-9]+[.][0-9]+[.][0-9]+"),
                                     testing::MatchesRegex(library)));
}

TEST_F(Kepctl, UsageLinesBeginWithTheProgramAndTheCommand)
{
    const Execution outcome = kepctl({"help"});
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(linesOf(outcome.output), Contains(StartsWith("  kepctl run ")));
    EXPECT_THAT(kepctl({"run", "--help"}).output, StartsWith("Usage: kepctl run "));
    EXPECT_EQ(kepctl({"run", "--help"}).output, kepctl({"help", "run"}).output);
}

TEST_F(Kepctl, HelpOnScriptsShowsEveryKindAndKeyAndGoodExamples)
{
    const std::string text = kepctl({"help", "script"}).output;
    for (const LineKind& kind : lineKinds())
        EXPECT_THAT(text, HasSubstr("\n" + std::string{kind.key} + ": "));
    for (const KeyRow& key : keyRows())
        EXPECT_THAT(text, HasSubstr(key.key));
    for (const LineExample& example : lineExamples()) {
        EXPECT_THAT(text, HasSubstr(example.line));
        EXPECT_NO_THROW(parseScriptLine(example.line)) << example.line;
    }
}

TEST_F(Kepctl, HelpOnTracesShowsEveryEventWithAnExample)
{
    const std::string text = kepctl({"help", "trace"}).output;
    for (const TraceEvent& event : kTraceEvents) {
        EXPECT_THAT(text, HasSubstr("\n" + std::string{event.name} + ": "));
        EXPECT_EQ(json(event.example)["event"].asString(), event.name);
    }
}

TEST_F(Kepctl, HelpOnTheConfigurationShowsEveryKeyOfBothFiles)
{
    const std::string text = kepctl({"help", "config"}).output;
    EXPECT_THAT(text, HasSubstr("from /etc/orva/kep"));
    EXPECT_THAT(text, HasSubstr("\nkep-config.json, keys of \"Q27R5\":\n"));
    EXPECT_THAT(text, HasSubstr("\ndevice-cap.json, keys of \"audioMasterDefault\":\n"));
    for (const char* key :
         {"kepAudio", "kepDefaultVolume", "card", "muteControlName", "volumeControlName"})
        EXPECT_THAT(text, HasSubstr("\n  " + std::string{key} + " "));
}

TEST_F(Kepctl, HelpOnTheEnvironmentShowsWhatTheVirtualTelevisionReads)
{
    const std::string text = kepctl({"help", "environment"}).output;
    for (const char* variable :
         {"KEP_CONFIG_DIR", "KEP_VIRTUALTV_STATE", "KEP_VIRTUALTV_CARD", "KEP_VIRTUALTV_FAULTS",
          "KEP_VIRTUALTV_LINES", "KEP_VIRTUALTV_TRACE", "NO_COLOR"})
        EXPECT_THAT(text, HasSubstr("\n  " + std::string{variable} + " "));
}

TEST_F(Kepctl, HelpOnACommandShowsItsExitStatuses)
{
    EXPECT_THAT(kepctl({"help", "run"}).output, HasSubstr("\n  1  with --strict"));
    EXPECT_THAT(kepctl({"help", "list"}).output,
                AllOf(HasSubstr("\n  0  done\n"), Not(HasSubstr("--strict"))));
}

TEST_F(Kepctl, ThereIsAManualPageOfEachCommandAndFormat)
{
    const Texts pages = linesOf(kepctl({"help", "man-pages"}).output);
    EXPECT_THAT(pages, IsSupersetOf({"kepctl.1", "kepctl-run.1", "kepctl-shell.1", "kepctl-env.1",
                                     "kepctl-card.1", "kepctl-list.1", "kepctl-help.1",
                                     "kepctl-script.5", "kepctl-trace.5", "kep-config.json.5",
                                     "device-cap.json.5", "libkep.3"}));
    for (const std::string& page : pages)
        EXPECT_THAT(kepctl({"help", page}).output, HasSubstr("\n.Sh NAME\n")) << page;
}

// --- Lists

TEST_F(Kepctl, EveryListIsGivenInEveryFormat)
{
    for (const std::string& name : listNames()) {
        const Execution text = kepctl({"list", name});
        EXPECT_EQ(text.status, kPlayed) << name;
        EXPECT_GT(linesOf(text.output).size(), 1U) << name;
        EXPECT_EQ(text.errors, "") << name;
        const JValue rows = json(kepctl({"list", name, "--format", "json"}).output);
        EXPECT_GT(rows.size(), 0U) << name;
        EXPECT_THAT(kepctl({"list", "--format=markdown", name}).output, HasSubstr("|---|")) << name;
    }
}

TEST_F(Kepctl, TheListsHoldWhatTheLibraryKnows)
{
    const JValue operations = json(kepctl({"list", "operations", "--format", "json"}).output);
    EXPECT_EQ(operations.size(), operationRows().size());
    for (const JValue& row : operations.elements())
        if (row["operation"].asString() == "setOutputVolume") {
            EXPECT_EQ(row["arguments"].stringify(),
                      R"([{"name":"soundOutput","type":"a string"},)"
                      R"({"name":"volume","type":"a whole number from 0 to 255"}])");
        }
    const JValue outputs = json(kepctl({"list", "outputs", "--format", "json"}).output);
    EXPECT_EQ(outputs.size(), kepCatalogue::soundOutputs().size());
    const JValue sources = json(kepctl({"list", "sources", "--format", "json"}).output);
    EXPECT_EQ(sources.size(), kepCatalogue::inputSources().size());
    const JValue categories = json(kepctl({"list", "categories", "--format", "json"}).output);
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories())
        EXPECT_THAT(column(categories, "category"), Contains(category.name));
    const JValue elements = json(kepctl({"list", "elements", "--format", "json"}).output);
    for (const kepControlElement& element : kepCatalogue::controlElements())
        EXPECT_THAT(column(elements, "element"), Contains(element.name));
    EXPECT_THAT(column(elements, "card"), Contains("default"));
}

TEST_F(Kepctl, EveryMiddlewareOperationCanBeInjected)
{
    const JValue rows = json(kepctl({"list", "middleware", "--format", "json"}).output);
    for (const std::string& name : column(rows, "operation"))
        EXPECT_NO_THROW(
            parseScriptLine(R"({"inject": {"middleware": ")" + name + R"(", "status": 1}})"))
            << name;
}

TEST_F(Kepctl, TheReferencePageIsUpToDate)
{
    std::ostringstream page;
    page << std::ifstream{KEPCTL_REFERENCE}.rdbuf();
    EXPECT_TRUE(page.str() == kepctl({"list", "all", "--format", "markdown"}).output)
        << "write it anew: kepctl list all --format markdown > docs/reference.md";
}

// --- Output that cannot be written

TEST_F(Kepctl, OutputThatCannotBeWrittenIsAnErrorOfEveryCommand)
{
    setenv("SCRIPT", script(kInitialize + kVolume40).c_str(), 1);
    for (const char* command : {"run $SCRIPT", "run --format jsonl $SCRIPT", "env",
                                "list operations", "list all --format json", "help", "help script",
                                "help trace", "run --help", "--version"}) {
        for (const char* output : {">/dev/full", ">&-"}) {
            const Execution outcome = shell("\"$KEPCTL\" " + std::string{command} + " " + output);
            EXPECT_EQ(outcome.status, kUnusable) << command << " " << output;
            EXPECT_THAT(outcome.errors, StartsWith("kepctl: standard output: "))
                << command << " " << output;
        }
    }
}

TEST_F(Kepctl, AClosedStandardInputIsAnErrorOnlyWhereItIsRead)
{
    setenv("SCRIPT", script(kInitialize + kVolume40).c_str(), 1);
    const Execution read = shell("\"$KEPCTL\" run - <&-");
    EXPECT_EQ(read.status, kUnusable);
    EXPECT_EQ(read.errors, "kepctl: standard input: Bad file descriptor\n");
    EXPECT_EQ(shell("\"$KEPCTL\" run --backend ALSA $SCRIPT <&-").status, kPlayed);
    const Execution folder = shell("\"$KEPCTL\" run - < /");
    EXPECT_EQ(folder.status, kUnusable);
    EXPECT_EQ(folder.errors, "kepctl: standard input: Is a directory\n");
}

TEST_F(Kepctl, AReaderThatLeavesEndsItQuietly)
{
    setenv("SCRIPT", script(kInitialize + kVolume40).c_str(), 1);
    // Also where the shell lets its children ignore the signal.
    for (const char* before : {"", "trap '' PIPE; "}) {
        const Execution outcome = shell(
            std::string{before} + "{ \"$KEPCTL\" run --backend ALSA $SCRIPT || true; } | true");
        EXPECT_EQ(outcome.errors, "") << before;
        EXPECT_EQ(outcome.status, 0) << before;
    }
}

TEST_F(Kepctl, WhatHappenedInACallIsShownThoughASignalEndsTheProgramThere)
{
    setenv("SCRIPT", script(kInitialize + kHeadphone).c_str(), 1);
    setenv("SLOW", makeSlowLine(directory() / "lines").c_str(), 1);
    for (const auto& [name, number] :
         {std::pair{"TERM", SIGTERM}, std::pair{"HUP", SIGHUP}, std::pair{"ABRT", SIGABRT}}) {
        const Execution outcome =
            shell("\"$KEPCTL\" run --format jsonl $SCRIPT & exec 3>\"$SLOW\"; kill -" +
                  std::string{name} + " $!; wait $!");
        EXPECT_EQ(outcome.status, 128 + number) << name;
        EXPECT_THAT(eventsOf(outcome, "request"),
                    ElementsAre(HasSubstr("initialize"), kHeadphoneRequest))
            << name;
    }
}

#ifdef KEPCTL_ENDING_LIBRARY
TEST_F(Kepctl, WhatHappenedInACallIsShownThoughALibraryEndsTheProgramThere)
{
    setenv("SCRIPT", script(kInitialize).c_str(), 1);
    const Execution outcome =
        shell("LD_PRELOAD=" KEPCTL_ENDING_LIBRARY " \"$KEPCTL\" run --format jsonl $SCRIPT");
    EXPECT_EQ(outcome.status, 7);
    EXPECT_THAT(eventsOf(outcome, "request"), ElementsAre(HasSubstr("initialize")));
}
#endif

TEST_F(Kepctl, AClosedStandardErrorDoesNotSpoilTheCards)
{
    setenv("SCRIPT", script(kInitialize + kVolume40 + kHeadphone).c_str(), 1);
    EXPECT_EQ(shell("\"$KEPCTL\" run --backend ALSA $SCRIPT 2>&-").status, kPlayed);
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 40);
}
