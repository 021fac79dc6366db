// SPDX-License-Identifier: Apache-2.0
// kepctl's options.
#include "options.h"

#include <algorithm>
#include <cstring>

#include "closest.h"

namespace
{

constexpr unsigned kPlaying = kRun | kShell;
constexpr unsigned kWithCards = kPlaying | kEnv | kCard | kList;

// clang-format off
constexpr OptionRow kOptions[] = {
    // name         argument              commands             value                flag                what
    {"backend",    "TV|ALSA",             kPlaying,            &Options::backend,  nullptr,            "use the shipped configuration for that backend (default TV)"},
    {"config",     "DIR",                 kPlaying,            &Options::config,   nullptr,            "read kep-config.json and device-cap.json from DIR instead"},
    {"format",     "text|jsonl",          kPlaying,            &Options::format,   nullptr,            "text for people (default); jsonl for tools, one event a line"},
    {"format",     "text|json|markdown",  kList,               &Options::format,   nullptr,            "text for people (default), json for tools, markdown for pages"},
    {"log-level",  "3|4|6|7",             kPlaying,            &Options::logLevel, nullptr,            "level that the log admits: error, warning, info (default), debug"},
    {"strict",     nullptr,               kRun,                nullptr,            &Options::strict,   "exit 1 when a call of the script gave a failure code"},
    {"hardware",   nullptr,               kPlaying,            nullptr,            &Options::hardware, "use the machine's own cards instead of the virtual ones"},
    {"card",       "FILE",                kWithCards,          &Options::card,     nullptr,            "the virtual hw:0 has the elements of that card table"},
    {"check",      nullptr,               kRun,                nullptr,            &Options::check,    "only check the scripts, play nothing"},
    {"explain",    nullptr,               kPlaying,            nullptr,            &Options::explain,  "text: name the integers of driver writes"},
    {"time",       nullptr,               kPlaying,            nullptr,            &Options::time,     "show the milliseconds since the start"},
    {"no-clocks",  nullptr,               kPlaying,            nullptr,            &Options::noClocks, "clocks and thread ids read 0, so that two runs are equal"},
    {"only",       "LIST",                kPlaying,            &Options::only,     nullptr,            "show only these events: request, result, control, middleware, gpio, subcpu, log, log:N"},
    {"color",      "never|always|auto",   kPlaying,            &Options::color,    nullptr,            "colours; auto (default): on a terminal, unless NO_COLOR is set"},
    {"quiet",      nullptr,               kPlaying,            nullptr,            &Options::quiet,    "text: no hints, nothing of libasound's own messages"},
    {"help",       nullptr,               kEveryCommand,       nullptr,            &Options::help,     "show this help"},
    {"version",    nullptr,               kNoCommand,          nullptr,            &Options::version,  "show the versions of library and tool"},
};
// clang-format on

const OptionRow* findOption(const std::string& name, CommandSet command)
{
    for (const OptionRow& option : kOptions)
        if (name == option.name && (option.commands & command) != 0)
            return &option;
    return nullptr;
}

std::string unknownOption(const std::string& name, CommandSet command)
{
    Names known;
    for (const OptionRow& option : kOptions)
        if ((option.commands & command) != 0)
            known.push_back(std::string{"--"} + option.name);
    const std::string hint = didYouMean(name, known);
    return "unknown option " + name + (hint.empty() ? "" : "; " + hint);
}

std::string store(const OptionRow& option, const std::string& value, Options& options)
{
    const Names choices = choicesOf(option);
    if (!choices.empty() && std::find(choices.begin(), choices.end(), value) == choices.end()) {
        const std::string hint = didYouMean(value, choices);
        return std::string{"--"} + option.name + " must be " + anyOf(choices) + ", not \"" + value +
               "\"" + (hint.empty() ? "" : "; " + hint);
    }
    options.*option.text = value;
    return "";
}

} // namespace

std::span<const OptionRow> optionRows()
{
    return kOptions;
}

std::vector<std::string> choicesOf(const OptionRow& option)
{
    Names choices;
    if (option.argument == nullptr || std::strchr(option.argument, '|') == nullptr)
        return choices;
    const std::string all = option.argument;
    for (std::size_t begin = 0; begin <= all.size();) {
        const std::size_t end = std::min(all.find('|', begin), all.size());
        choices.push_back(all.substr(begin, end - begin));
        begin = end + 1;
    }
    return choices;
}

std::string readOptions(const std::vector<std::string>& arguments, CommandSet command,
                        Options& options)
{
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--") { // all that follows are words, even with a dash in front
            options.words.insert(options.words.end(),
                                 arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                 arguments.end());
            return "";
        }
        if (word == "-" || !word.starts_with('-')) {
            options.words.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string given = word == "-h" ? "--help" : word.substr(0, equals);
        const OptionRow* option =
            given.starts_with("--") ? findOption(given.substr(2), command) : nullptr;
        if (option == nullptr)
            return unknownOption(given, command);
        if (option->flag != nullptr) {
            if (equals != std::string::npos)
                return given + " takes no value";
            options.*option->flag = true;
            continue;
        }
        if (equals == std::string::npos && i + 1 == arguments.size())
            return given + " lacks its value " + option->argument;
        const std::string value =
            equals == std::string::npos ? arguments[++i] : word.substr(equals + 1);
        const std::string reason = store(*option, value, options);
        if (!reason.empty())
            return reason;
    }
    return "";
}
