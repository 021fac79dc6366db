// SPDX-License-Identifier: Apache-2.0
// The conformance checks: all subjects, or those that were asked for, one after the other.
#include "conformance.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "checks.h"
#include "closest.h"
#include "environmentvariables.h"
#include "options.h"

namespace
{

enum ExitStatus { kPassed = 0, kFailed = 1, kUnusable = 2 };

struct Subject {
    const char* name;
    void (*check)(Report& report, const Conditions& conditions);
    const char* help;
};

// In the order in which one would look for the reason of a failure.
// clang-format off
constexpr Subject kSubjects[] = {
    {"configuration", &checkConfiguration, "kep-config.json can be read and names a backend"},
    {"log",           &checkLog,           "lines of every level arrive, whole, when they are admitted"},
    {"card",          &checkCard,          "every control element is there, with type, count and range; can be written; reads back"},
    {"middleware",    &checkMiddleware,    "every operation answers, in time"},
    {"lines",         &checkLines,         "GPIO and sub-microcontroller answer, in time"},
    {"requests",      &checkRequests,      "a short evening's requests give the codes that they should"},
};
// clang-format on

int unusable(const std::string& reason)
{
    std::fprintf(stderr, "kep-conformance: %s (\"kep-conformance --help\" tells more)\n",
                 reason.c_str());
    return kUnusable;
}

int show(const std::string& text)
{
    return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? kPassed : kUnusable;
}

/// A line of two columns.
std::string row(const std::string& name, const std::string& text)
{
    constexpr std::size_t kColumn = 22; // wider than any name
    std::string head = name;
    head.resize(std::max(kColumn, head.size()), ' ');
    return "  " + head + text + "\n";
}

/// The television made wrong on purpose, to see the checks fail.
// clang-format off
constexpr const char* kWrongWays[][2] = {
    {"KEP_VIRTUALTV_CARD",   "a card table (\"kepctl card dump hw:0\") whose elements are changed: missing, of another type, count, range or access"},
    {"KEP_VIRTUALTV_FAULTS", "a file with lines of kepctl-script(5), as {\"inject\": {\"gpio\": \"GPIO_RD_HP_LINK\", \"status\": 3}}: what refuses, or is late (\"delayMs\")"},
    {"LD_LIBRARY_PATH",      "a folder with a libkepdevice.so.0 that lacks an operation"},
    {"LD_PRELOAD",           "a library that swallows the lines of the log"},
    {"--config",             "a folder with another configuration"},
};
// clang-format on

/// The manual page is made of it, too.
int help()
{
    std::string text =
        "Usage: kep-conformance [OPTION]... [SUBJECT]...\n\n"
        "Checks the card, the libraries and the configuration of this television, as the\n"
        "library needs them. Nothing can be heard of it without --audible: a silent run\n"
        "reads, writes elements with what they hold, asks, and makes requests that are\n"
        "refused; the end of its report counts what it left out, and why.\n\nOptions:\n" +
        optionsHelp() + "\nSubjects, all of them if none is named:\n";
    for (const Subject& subject : kSubjects)
        text += row(subject.name, subject.help);
    text +=
        "\nExit status:\n" + row("0", "nothing failed") +
        row("1", "something failed, or did not answer at all") +
        row("2", "unusable options, or a report that could not be written") +
        "\nThe report with --tap is TAP version 13:\n" + row("ok N - CLAIM", "it holds") +
        row("not ok N - CLAIM", "it does not; the line that follows, behind \"# \", says why") +
        row("ok N - CLAIM # SKIP", "it was not tried; behind it stands why") +
        row("1..N", "the number of claims, at the end; then their sum behind \"# \"") +
        row("Bail out! WHO", "has not answered for 20 times --limit; nothing was tried behind it") +
        "\nEnvironment:\n";
    for (const EnvironmentVariable& variable : kEnvironmentVariables)
        if (std::string{variable.name}.starts_with("KEP_"))
            text += row(variable.name, variable.meaning);
    text += "\nOn the virtual television (eval \"$(kepctl env)\" first) each check can be seen to\n"
            "fail; kep-porting(7) has the commands:\n";
    for (const auto& [name, meaning] : kWrongWays)
        text += row(name, meaning);
    return show(text);
}

/// Why a subject is unknown, "" when none is.
std::string unknownSubject(const std::vector<std::string>& wanted)
{
    Names names;
    for (const Subject& subject : kSubjects)
        names.emplace_back(subject.name);
    for (const std::string& name : wanted) {
        if (std::find(names.begin(), names.end(), name) != names.end())
            continue;
        const std::string hint = didYouMean(name, names);
        return "unknown subject \"" + name + "\"; " +
               (hint.empty() ? "there are " + anyOf(names) : hint);
    }
    return "";
}

bool isWanted(const Subject& subject, const std::vector<std::string>& wanted)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), subject.name) != wanted.end();
}

} // namespace

int kepConformance(int argc, char** argv)
{
    Options options;
    std::string reason = readOptions({argv + std::min(argc, 1), argv + argc}, options);
    if (options.help)
        return help();
    if (options.version)
        return show("kep-conformance " KEP_VERSION "\n");
    if (reason.empty())
        reason = unknownSubject(options.subjects);
    if (!reason.empty())
        return unusable(reason);
    if (!options.config.empty())
        setenv("KEP_CONFIG_DIR", options.config.c_str(), /*overwrite=*/1);
    Report report{options.tap};
    report.begin(kLibrariesSubject);
    report.tell(kLibrariesClaim, ""); // otherwise this module would not have been loaded
    for (const Subject& subject : kSubjects)
        if (isWanted(subject, options.subjects))
            subject.check(report, options.conditions);
    return report.finish() ? kPassed : kFailed;
}
