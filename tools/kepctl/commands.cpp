// SPDX-License-Identifier: Apache-2.0
// kepctl's commands.
#include "commands.h"

#include <iostream>

#include "cardcommand.h"
#include "closest.h"
#include "environmentcommand.h"
#include "help.h"
#include "listcommand.h"
#include "output.h"
#include "runcommand.h"
#include "shell.h"

namespace
{

// clang-format off
constexpr Command kCommands[] = {
    {"run", kRun, "[OPTION]... SCRIPT...", "play request scripts (\"-\" reads standard input)",
     "A script file is checked whole before anything is played, standard input line by line as it\n"
     "comes.\n"
     "\"kepctl help script\" explains the lines, \"kepctl help trace\" what comes out.",
     &runScripts},
    {"shell", kShell, "[OPTION]...", "the same, typed by hand, with history and completion",
     "Script lines in full, or short: setOutputVolume tv_speaker 12; wait 5100. Strings need no\n"
     "quotes, Tab completes, timers run while one types; :help tells the rest. The history is kept\n"
     "in kepctl/history in $XDG_STATE_HOME (~/.local/state). From a pipe, lines are taken as they\n"
     "come.",
     &runShell},
    {"env", kEnv, "[OPTION]...", "shell exports with which amixer, alsamixer and the like see the virtual cards",
     "Use it as in: eval \"$(kepctl env)\"; amixer -D hw:0 contents",
     &printEnvironment},
    {"card", kCard, "[OPTION]... dump [NAME]", "what a card offers, as a card table (JSON); default hw:0",
     "Any card that libasound opens will do: kepctl card dump hw:0 > card.json on one machine,\n"
     "kepctl run --card card.json, or eval \"$(kepctl env --card card.json)\", on another. Without\n"
     "--card the machine's own cards are asked, unless the environment says otherwise.",
     &card},
    {"list", kList, "[OPTION]... WHAT", "what there is by name, with arguments, types and ranges",
     nullptr,
     &list},
    {"help", kHelp, "[TOPIC]", "help on a command, or on script, trace, config, environment",
     nullptr,
     &help},
};
constexpr ExitMeaning kExitMeanings[] = {
    {kPlayed,     kRun | kShell,                "the scripts, or what was typed, ran to their end"},
    {kPlayed,     kEnv | kCard | kList | kHelp, "done"},
    {kCallFailed, kRun,                         "with --strict: a call of the script failed"},
    {kUnusable,   kRun | kShell,                "unusable options, a bad script line, or output that could not be written"},
    {kUnusable,   kEnv | kCard | kList | kHelp, "unusable options, or output that could not be written"},
};
// clang-format on

int unknownCommand(const std::string& word)
{
    Names names;
    for (const Command& command : kCommands)
        names.emplace_back(command.name);
    const std::string hint = didYouMean(word, names);
    unusable("unknown command \"" + word + "\"" + (hint.empty() ? "" : "; " + hint));
    if (hint.empty())
        std::cerr << usage();
    return kUnusable;
}

/// Without a command: only --help and --version mean something.
int runWithoutCommand(const std::vector<std::string>& arguments)
{
    Options options;
    const std::string reason = readOptions(arguments, kNoCommand, options);
    if (options.version)
        return printVersion();
    if (options.help)
        return help({});
    for (const Command& command : kCommands)
        for (const OptionRow& option : optionRows())
            if (("--" + std::string{option.name}) ==
                    arguments.front().substr(0, arguments.front().find('=')) &&
                (option.commands & command.bit) != 0)
                return unusable("options stand behind the command: kepctl " +
                                std::string{command.name} + " " + arguments.front() + " ...");
    return unusable(reason);
}

int runNamed(const Command& command, const std::vector<std::string>& arguments)
{
    Options options;
    const std::string reason = readOptions(arguments, command.bit, options);
    if (options.help) {
        options.words = {command.name};
        return help(options);
    }
    if (!reason.empty())
        return unusable(reason + " (\"kepctl help " + command.name + "\" lists the options)");
    return command.run(options);
}

} // namespace

std::span<const Command> commandRows()
{
    return kCommands;
}

std::span<const ExitMeaning> exitMeanings()
{
    return kExitMeanings;
}

const Command* findCommand(const std::string& name)
{
    for (const Command& command : kCommands)
        if (name == command.name)
            return &command;
    return nullptr;
}

int unusable(const std::string& reason)
{
    std::cerr << "kepctl: " << reason << "\n";
    return kUnusable;
}

int runCommand(int argc, char** argv)
{
    output::prepare();
    if (argc < 2) {
        std::cerr << usage();
        return kUnusable;
    }
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.front().starts_with('-'))
        return runWithoutCommand(arguments);
    const Command* command = findCommand(arguments.front());
    if (command == nullptr)
        return unknownCommand(arguments.front());
    return runNamed(*command, {arguments.begin() + 1, arguments.end()});
}
