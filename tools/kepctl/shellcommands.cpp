// SPDX-License-Identifier: Apache-2.0
// What the shell itself can do.
#include "shellcommands.h"

#include <algorithm>
#include <memory>

#include <alsa/asoundlib.h>

#include "badline.h"
#include "cardelements.h"
#include "faultnames.h"
#include "faults.h"
#include "loglevels.h"
#include "names.h"
#include "operations.h"
#include "output.h"
#include "scriptgrammar.h"
#include "shortform.h"
#include "television.h"

namespace
{

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

// --- :log

Names levelNames()
{
    Names all;
    for (const std::string& level : valuesOf(ValueKind::LogLevel)) {
        all.push_back(level);
        all.emplace_back(logLevelName(std::stoi(level)));
    }
    return all;
}

int currentLevel()
{
    return LogGetLevel(LogGetContext("kep"));
}

bool log(Player& player, const std::string& argument)
{
    if (argument.empty()) {
        const int level = currentLevel();
        output::print(std::to_string(level) + " " + logLevelName(level) + "\n");
        return true;
    }
    for (const std::string& level : valuesOf(ValueKind::LogLevel)) {
        if (argument != level && argument != logLevelName(std::stoi(level)))
            continue;
        player.playLine(R"({"set": {"logLevel": )" + level + "}}");
        return true;
    }
    throw BadLine("unknown log level \"" + argument + "\"", 0, "known: " + anyOf(levelNames()));
}

// --- :faults

JValue lineOf(const virtualtv::Injection& injection)
{
    const char* key = "control";
    for (const virtualtv::FaultTarget& target : virtualtv::kFaultTargets)
        if (injection.point == target.point)
            key = target.key;
    JValue fault = JValue::object();
    static_cast<void>(fault.put(key, injection.name));
    for (const virtualtv::FaultStage& stage : virtualtv::kFaultStages) {
        if (stage.point != injection.point)
            continue;
        if (!stage.ofAnElement)
            fault.remove(key);
        fault.put("stage", stage.name);
        if (!injection.card.empty())
            fault.put("card", injection.card);
    }
    fault.put("status", injection.status);
    if (injection.times)
        fault.put("times", *injection.times);
    if (injection.delayMs > 0)
        fault.put("delayMs", injection.delayMs);
    JValue line = JValue::object();
    static_cast<void>(line.put("inject", fault));
    return line;
}

bool faults(Player&, const std::string&)
{
    std::string text;
    for (const virtualtv::Injection& injection : virtualtv::injectionsInForce())
        text += lineOf(injection).stringify() + "\n";
    output::print(text.empty() ? "none\n" : text);
    return true;
}

// --- :state

using Card = std::unique_ptr<snd_ctl_t, decltype(&snd_ctl_close)>;

Card opened(const std::string& name)
{
    snd_ctl_t* card = nullptr;
    return {snd_ctl_open(&card, name.c_str(), SND_CTL_READONLY) < 0 ? nullptr : card,
            &snd_ctl_close};
}

/// What the element holds, "?" when it cannot be read.
std::string valuesOf(snd_ctl_t* card, const CardElement& element)
{
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_ctl_elem_value_set_interface(value, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_value_set_name(value, element.name.c_str());
    if (card == nullptr || snd_ctl_elem_read(card, value) < 0)
        return " ?";
    std::string text;
    for (unsigned int i = 0; i < element.count; ++i)
        text += " " + std::to_string(element.type == "boolean"
                                         ? snd_ctl_elem_value_get_boolean(value, i)
                                         : snd_ctl_elem_value_get_integer(value, i));
    return text;
}

std::string cardState()
{
    std::string text;
    Card card{nullptr, &snd_ctl_close};
    std::string name;
    for (const CardElement& element : cardElements()) {
        if (element.card != name)
            card = opened(name = element.card);
        text += padded(name, 12) + element.name + " =" + valuesOf(card.get(), element) + "\n";
    }
    return text;
}

std::string listed(const std::vector<std::string>& texts)
{
    JValue list = JValue::array();
    for (const std::string& text : texts)
        list.append(text);
    return list.stringify();
}

bool state(Player&, const std::string&)
{
    const virtualtv::WithoutInjections looking; // must not use one up
    std::string text = cardState();
    for (const std::string& line : names::inputLines())
        text +=
            padded("gpio", 12) + line + " = " + std::to_string(virtualtv::lineLevel(line)) + "\n";
    const virtualtv::AmplifierState amplifier = virtualtv::amplifierState();
    text += padded("gain", 12) + "value = " + virtualtv::gainValue() + "\n";
    text += padded("amplifier", 12) + "type = " + amplifier.type +
            ", states = " + listed(amplifier.states) +
            ", registers = " + listed(virtualtv::i2cData()) + "\n";
    text += padded("log", 12) + "level = " + std::to_string(currentLevel()) + " " +
            logLevelName(currentLevel()) + "\n";
    output::print(text);
    return true;
}

// --- :help and :quit

std::string usageOf(const Operation& operation)
{
    std::string usage = operation.name;
    for (const Argument& argument : operation.takes())
        usage += std::string{" "} + argument.name;
    return usage;
}

std::string usageOf(const ShellCommand& command)
{
    return std::string{":"} + command.name + (*command.argument != '\0' ? " " : "") +
           command.argument;
}

std::string row(const std::string& usage, const char* summary)
{
    return "  " + padded(usage, 36) + " " + summary + "\n";
}

Names operationNames()
{
    return valuesOf(ValueKind::Operation);
}

void helpOperation(const Operation& operation)
{
    std::string text = usageOf(operation) + "\n  " + operation.summary + "\n";
    for (const Argument& argument : operation.takes())
        text += row(argument.name, typeOf(argument.kind));
    output::print(text);
}

void helpAll()
{
    std::string text = "Operations; a string needs no quotes, Tab completes:\n";
    for (const Operation& operation : operationRows())
        text += row(usageOf(operation), operation.summary);
    text += "Script lines, as JSON or as \"wait 5100\", \"set logLevel 7\", \"inject gpio "
            "GPIO_RD_HP_LINK status 3\":\n";
    for (const LineKind& kind : lineKinds())
        text += row(kind.key, kind.summary);
    text += "The shell itself:\n";
    for (const ShellCommand& command : shellCommands())
        text += row(usageOf(command), command.summary);
    output::print(text);
}

bool help(Player&, const std::string& argument)
{
    if (argument.empty())
        helpAll();
    else if (const Operation* operation = findOperation(argument))
        helpOperation(*operation);
    else
        throw BadLine("no help on \"" + argument + "\"", 0, didYouMean(argument, operationNames()));
    return true;
}

bool quit(Player&, const std::string&)
{
    return false;
}

Names nothing()
{
    return {};
}

// clang-format off
constexpr ShellCommand kShellCommands[] = {
    {"help",   "[OPERATION]", "what can be typed",                                    &operationNames, &help},
    {"log",    "[LEVEL]",     "the log level, or another one: 3, 4, 6, 7 or its name", &levelNames,    &log},
    {"faults", "",            "the injections that are in force",                     &nothing,        &faults},
    {"state",  "",            "what the virtual television holds and answers",        &nothing,        &state},
    {"quit",   "",            "leaves (Ctrl-D does, too)",                            &nothing,        &quit},
};
// clang-format on

} // namespace

std::span<const ShellCommand> shellCommands()
{
    return kShellCommands;
}

const ShellCommand* findShellCommand(const std::string& word)
{
    for (const ShellCommand& command : kShellCommands)
        if (word == std::string{":"} + command.name)
            return &command;
    return nullptr;
}

bool runShellCommand(Player& player, const std::string& typed)
{
    const std::vector<TypedWord> words = wordsOf(typed);
    const ShellCommand* command = findShellCommand(words.front().text);
    if (command == nullptr) {
        Names known;
        for (const ShellCommand& row : kShellCommands)
            known.push_back(std::string{":"} + row.name);
        const std::string hint = didYouMean(words.front().text, known);
        throw BadLine("unknown command \"" + words.front().text + "\"", words.front().begin,
                      hint.empty() ? "known: " + anyOf(known) : hint);
    }
    const std::size_t allowed = *command->argument != '\0' ? 2 : 1;
    if (words.size() > allowed)
        throw BadLine(std::string{":"} + command->name + " takes " +
                          (allowed == 1 ? "no argument" : "one argument"),
                      words[allowed].begin);
    try {
        return command->run(player, words.size() > 1 ? words[1].text : "");
    } catch (const BadLine& mistake) {
        throw BadLine(mistake.what(), words.back().begin, mistake.hint());
    }
}
