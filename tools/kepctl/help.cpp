// SPDX-License-Identifier: Apache-2.0
// kepctl help.
#include "help.h"

#include <algorithm>
#include <filesystem>

#include <dlfcn.h>

#include "closest.h"
#include "commands.h"
#include "configurationkeys.h"
#include "environmentvariables.h"
#include "kepcatalogue.h"
#include "kepclient.h"
#include "listcommand.h"
#include "manpages.h"
#include "output.h"
#include "scriptgrammar.h"
#include "shellcompletion.h"
#include "traceevents.h"

namespace
{

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string usageOf(const Command& command)
{
    return std::string{"kepctl "} + command.name + (*command.arguments != '\0' ? " " : "") +
           command.arguments;
}

/// "--format text|jsonl" as it stands in a list of options.
std::string headOf(const OptionRow& option)
{
    return std::string{"--"} + option.name +
           (option.argument != nullptr ? std::string{" "} + option.argument : "");
}

std::string optionsOf(CommandSet command)
{
    std::size_t width = 0;
    for (const OptionRow& option : optionRows())
        if ((option.commands & command) != 0)
            width = std::max(width, headOf(option).size());
    std::string text = "Options:\n";
    for (const OptionRow& option : optionRows())
        if ((option.commands & command) != 0)
            text += "  " + padded(headOf(option), width + 2) + option.help + "\n";
    return text;
}

std::string exitStatusesOf(CommandSet command)
{
    std::string text = "Exit status:\n";
    for (const ExitMeaning& row : exitMeanings())
        if ((row.commands & command) != 0)
            text += "  " + std::to_string(row.status) + "  " + row.meaning + "\n";
    return text;
}

void helpOverview()
{
    output::print(
        "kepctl plays request scripts against the library on a virtual television and\n"
        "shows what it would do.\n\n" +
        usage() + "\n" + optionsOf(kNoCommand) +
        "\n\"kepctl help COMMAND\" and \"kepctl help TOPIC\" tell more: script, trace, config, environment.\n");
}

void helpCommand(const Command& command)
{
    output::print("Usage: " + usageOf(command) + "\n\n" + command.summary + "\n\n" +
                  optionsOf(command.bit) +
                  (command.help != nullptr ? std::string{"\n"} + command.help + "\n" : "") +
                  (command.bit == kList ? "\nWHAT is " + anyOf(listNames()) + ".\n" : "") + "\n" +
                  exitStatusesOf(command.bit));
}

constexpr FormTitle kFormTitles[] = {
    {ObjectForm::CallLine, "a call"},
    {ObjectForm::Settings, "\"set\""},
    {ObjectForm::AmplifierState, "\"amplifierState\""},
    {ObjectForm::CardFault, "\"inject\" (a card)"},
    {ObjectForm::MiddlewareFault, "\"inject\" (the middleware)"},
    {ObjectForm::GpioFault, "\"inject\" (an input line)"},
    {ObjectForm::SubMicroFault, "\"inject\" (the sub-microcontroller)"},
};

void helpScript()
{
    std::string text = scriptIntroduction();
    for (const LineKind& kind : lineKinds()) {
        text += "\n" + std::string{kind.key} + ": " + kind.summary + "\n";
        for (const LineExample& example : lineExamples())
            if (kind.key == std::string{example.kind})
                text += "  " + std::string{example.line} + "\n      " + example.effect + "\n";
    }
    for (const FormTitle& row : kFormTitles) {
        text += "\nKeys of " + std::string{row.title} + ":\n";
        for (const KeyRow& key : keyRows())
            if (key.form == row.form)
                text += "  " + padded(key.key, 16) + typeOf(key) +
                        (key.required ? "" : ", optional") + ": " + key.help + "\n";
    }
    output::print(text + "\n" + injectionRule());
}

void helpTrace()
{
    std::string text = traceIntroduction();
    for (const TraceEvent& event : kTraceEvents)
        text += "\n" + std::string{event.name} + ": " + event.meaning + "\n  keys: " + event.keys +
                "\n  " + event.example + "\n";
    output::print(text);
}

void helpConfig()
{
    std::string text = std::string{"The library reads two JSON files from "} +
                       kepCatalogue::build().configurationFolder +
                       ",\nor from the folder that KEP_CONFIG_DIR names.\n";
    const char* file = "";
    for (const ConfigurationKey& row : kConfigurationKeys) {
        if (file != std::string{row.file})
            text += std::string{"\n"} + row.file + ", keys of \"" +
                    (row.section != nullptr ? row.section : kepCatalogue::build().socKey) + "\":\n";
        file = row.file;
        text += "  " + padded(row.key, 18) + row.type + ": " + row.meaning + "\n      such as " +
                row.example + "\n";
    }
    output::print(text);
}

void helpEnvironment()
{
    std::string text = "Environment variables:\n";
    for (const EnvironmentVariable& variable : kEnvironmentVariables)
        text += "  " + padded(variable.name, 22) + variable.meaning + "\n";
    output::print(text);
}

void listManPages()
{
    std::string text;
    for (const std::string& name : manPageNames())
        text += name + "\n";
    output::print(text);
}

struct Topic {
    const char* name;
    void (*print)();
    bool shown; // among the topics; the others are for those who build
};
constexpr Topic kTopics[] = {
    {"script", &helpScript, true},
    {"trace", &helpTrace, true},
    {"config", &helpConfig, true},
    {"environment", &helpEnvironment, true},
    {"man-pages", &listManPages, false},
    {"completion-bash", [] { output::print(bashCompletion()); }, false},
    {"completion-zsh", [] { output::print(zshCompletion()); }, false},
};

int unknownTopic(const std::string& word)
{
    const Names names = helpTopics();
    const std::string hint = didYouMean(word, names);
    return unusable("no help on \"" + word + "\"; " +
                    (hint.empty() ? "there is help on " + anyOf(names) : hint));
}

/// The library that this process runs, its version in the name: not the one that was built with it.
std::string libraryFile()
{
    if (KEP_LINKED_IN)
        return "linked in";
    Dl_info library = {};
    if (dladdr(reinterpret_cast<const void*>(&kepClient::getInstance), &library) == 0)
        return "unknown";
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(library.dli_fname, error);
    return file.filename().string() + " (" + file.parent_path().string() + ")";
}

} // namespace

const char* scriptIntroduction()
{
    return "A script has one JSON object a line. Blank lines, and lines with # in the first\n"
           "column, are skipped. Nothing is initialised behind its back: a script that wants\n"
           "a backend calls initialize.\n";
}

const char* injectionRule()
{
    return "An injection without \"times\" holds until cleared. Of several that match, the oldest "
           "still\n"
           "in force is used; a status of 0 lets the access through.\n";
}

const char* traceIntroduction()
{
    return "With --format jsonl every event is one JSON object a line, \"event\" first, in the "
           "order\n"
           "in which things happen. Events of another thread than the main one carry\n"
           "\"thread\": \"worker\". Keys with nothing to say are left out.\n";
}

std::span<const FormTitle> formTitles()
{
    return kFormTitles;
}

std::string usage()
{
    std::size_t width = 0;
    for (const Command& command : commandRows())
        width = std::max(width, usageOf(command).size());
    std::string text = "Usage:\n";
    for (const Command& command : commandRows())
        text += "  " + padded(usageOf(command), width + 2) + command.summary + "\n";
    return text;
}

Names helpTopics()
{
    Names names;
    for (const Command& command : commandRows())
        names.emplace_back(command.name);
    for (const Topic& topic : kTopics)
        if (topic.shown)
            names.emplace_back(topic.name);
    return names;
}

int help(const Options& options)
{
    if (options.words.size() > 1)
        return unusable("help takes one topic, not also \"" + options.words[1] + "\"");
    if (options.words.empty()) {
        helpOverview();
        return kPlayed;
    }
    const std::string& word = options.words.front();
    if (const Command* command = findCommand(word)) {
        helpCommand(*command);
        return kPlayed;
    }
    for (const Topic& topic : kTopics) {
        if (word != topic.name)
            continue;
        topic.print();
        return kPlayed;
    }
    const std::string page = manPage(word); // "kepctl.1": for those who build
    if (page.empty())
        return unknownTopic(word);
    output::print(page);
    return kPlayed;
}

int printVersion()
{
    output::print("kepctl " KEP_VERSION "\nlibrary " + libraryFile() + "\n");
    return kPlayed;
}
