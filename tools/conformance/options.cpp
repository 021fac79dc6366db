// SPDX-License-Identifier: Apache-2.0
// The command line of kep-conformance: one table, from which it is read and explained.
#include "options.h"

#include <algorithm>
#include <charconv>

#include "closest.h"

namespace
{

struct OptionRow {
    const char* name;
    const char* argument;                                            // null: none
    std::string (*take)(Options& options, const std::string& value); // what is wrong
    const char* help;
};

std::string takeLimit(Options& options, const std::string& value)
{
    constexpr unsigned int kLongest = 60'000;
    unsigned int& limit = options.conditions.limitMs;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), limit);
    const bool usable = error == std::errc{} && end == value.data() + value.size() && limit > 0 &&
                        limit <= kLongest;
    return usable ? "" : "--limit must be a whole number from 1 to 60000, not \"" + value + "\"";
}

std::string takeRegister(Options& options, const std::string& value)
{
    const std::size_t first = value.find(':');
    const std::size_t second = value.find(':', std::min(first, value.size() - 1) + 1);
    unsigned char port = 0;
    const char* begin = value.data() + std::min(first + 1, value.size());
    const char* end = value.data() + std::min(second, value.size());
    const bool usable = first != std::string::npos && second != std::string::npos && begin < end &&
                        std::from_chars(begin, end, port).ptr == end &&
                        std::from_chars(begin, end, port).ec == std::errc{};
    options.conditions.reg = value;
    return usable
               ? ""
               : "--register must be SLAVE:PORT:REGISTER, as in 0x34:1:0x00, not \"" + value + "\"";
}

// clang-format off
constexpr OptionRow kOptions[] = {
    {"--audible",  nullptr, [](Options& o, const std::string&) { o.conditions.audible = true; return std::string{}; }, "also try what could be heard: write every element, call every operation, play an evening"},
    {"--config",   "DIR",   [](Options& o, const std::string& v) { o.config = v; return std::string{}; },               "read kep-config.json from DIR instead"},
    {"--limit",    "MS",    &takeLimit,                                                                                 "within which every answer has to come (default 500)"},
    {"--register", "S:P:R", &takeRegister,                                                                              "a register of the amplifier's chip (slave, port, register) that may be read and written back"},
    {"--tap",      nullptr, [](Options& o, const std::string&) { o.tap = true; return std::string{}; },                 "report as TAP, for machines"},
    {"--help",     nullptr, [](Options& o, const std::string&) { o.help = true; return std::string{}; },                "show this help"},
    {"--version",  nullptr, [](Options& o, const std::string&) { o.version = true; return std::string{}; },             "show the version"},
};
// clang-format on

std::string unknownOption(const std::string& name)
{
    Names names;
    for (const OptionRow& row : kOptions)
        names.emplace_back(row.name);
    const std::string hint = didYouMean(name, names);
    return "unknown option " + name + (hint.empty() ? "" : "; " + hint);
}

} // namespace

std::string readOptions(const std::vector<std::string>& arguments, Options& options)
{
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (!word.starts_with('-')) {
            options.subjects.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto* row = std::find_if(std::begin(kOptions), std::end(kOptions),
                                       [&](const OptionRow& each) { return name == each.name; });
        if (row == std::end(kOptions))
            return unknownOption(name);
        if (row->argument == nullptr && equals != std::string::npos)
            return name + " takes no value";
        if (row->argument != nullptr && equals == std::string::npos && i + 1 == arguments.size())
            return name + " lacks its value " + row->argument;
        const std::string value = row->argument == nullptr      ? ""
                                  : equals == std::string::npos ? arguments[++i]
                                                                : word.substr(equals + 1);
        if (std::string reason = row->take(options, value); !reason.empty())
            return reason;
    }
    return "";
}

std::string optionsHelp()
{
    constexpr std::size_t kColumn = 20;
    std::string text;
    for (const OptionRow& row : kOptions) {
        std::string head = std::string{row.name} +
                           (row.argument != nullptr ? std::string{" "} + row.argument : "");
        head.resize(std::max(kColumn, head.size()), ' ');
        text += "  " + head + row.help + "\n";
    }
    return text;
}
