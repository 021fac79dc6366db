// SPDX-License-Identifier: Apache-2.0
// The conformance checks: all subjects, or those that were asked for, one after the other.
#include "conformance.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "checks.h"
#include "closest.h"
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

int help()
{
    std::string text =
        "Usage: kep-conformance [OPTION]... [SUBJECT]...\n\n"
        "Checks the card, the libraries and the configuration of this television, as the\n"
        "library needs them. Nothing can be heard of it without --audible.\n\nOptions:\n" +
        optionsHelp() + "\nSubjects, all of them if none is named:\n";
    for (const Subject& subject : kSubjects) {
        std::string head = subject.name;
        head.resize(std::max<std::size_t>(15, head.size()), ' ');
        text += "  " + head + subject.help + "\n";
    }
    return show(
        text +
        "\nExit status: 0 all passed; 1 something failed; 2 unusable options, or a report that\n"
        "could not be written. On the virtual television: eval \"$(kepctl env)\" first.\n");
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
    for (const Subject& subject : kSubjects)
        if (isWanted(subject, options.subjects))
            subject.check(report, options.conditions);
    return report.finish() ? kPassed : kFailed;
}
