// SPDX-License-Identifier: Apache-2.0
// Completion files, made of the tables of commands and options.
#include "shellcompletion.h"

#include <algorithm>

#include "cardelements.h"
#include "closest.h"
#include "commands.h"
#include "help.h"
#include "listcommand.h"
#include "traceevents.h"

namespace
{

// --- What words may be

enum class WordKind { None, Script, Name };

struct WordsRow {
    CommandSet command;
    WordKind kind;
    const char* what; // one of them
    Names (*names)(); // of a Name
};
Names cardWords()
{
    Names words = {"dump"};
    words.insert(words.end(), cardNames().begin(), cardNames().end());
    return words;
}
// clang-format off
constexpr WordsRow kWords[] = {
    {kRun,  WordKind::Script, "script", nullptr},
    {kCard, WordKind::Name,   "card",   &cardWords},
    {kList, WordKind::Name,   "list",   &listNames},
    {kHelp, WordKind::Name,   "topic",  &helpTopics},
};
// clang-format on

WordsRow wordsOf(const Command& command)
{
    for (const WordsRow& row : kWords)
        if (row.command == command.bit)
            return row;
    return {command.bit, WordKind::None, "", nullptr};
}

std::string joined(const Names& names, const char* separator = " ")
{
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : separator) + name;
    return all;
}

Names eventNames()
{
    Names names;
    for (const TraceEvent& event : kTraceEvents)
        names.emplace_back(event.name);
    return names;
}

/// What an option's value is, by what its help calls it.
bool takes(const OptionRow& option, const char* argument)
{
    return option.argument != nullptr && option.argument == std::string{argument};
}

// --- bash

constexpr const char* kBashStart =
    R"sh(# bash completion for kepctl, made from its tables of commands and options.

_kepctl_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# The last of a list that commas separate.
_kepctl_list() {
    local before=
    [[ $2 == *,* ]] && before=${2%,*},
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$1" -- "${2##*,}")
    compopt -o nospace 2>/dev/null
}

_kepctl_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_kepctl_folders() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$1")
}

_kepctl_scripts() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$1"; compgen -f -X '!*.jsonl' -- "$1")
}

_kepctl() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=
    COMPREPLY=()
    # bash takes the = of --option=value for a word of its own.
    if [[ $current == = ]]; then
        current=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    ((COMP_CWORD > 1)) && command=${COMP_WORDS[1]}
    case $command:$before in
)sh";

constexpr const char* kBashEnd = R"sh(    esac
}

complete -F _kepctl kepctl
)sh";

/// The value of that option.
std::string bashValue(const OptionRow& option)
{
    const Names choices = choicesOf(option);
    if (!choices.empty())
        return "_kepctl_words \"" + joined(choices) + "\" \"$current\"";
    if (takes(option, "LIST"))
        return "_kepctl_list \"" + joined(eventNames()) + "\" \"$current\"";
    return takes(option, "DIR") ? "_kepctl_folders \"$current\"" : "_kepctl_files \"$current\"";
}

std::string bashOptions(unsigned commands)
{
    Names options;
    for (const OptionRow& option : optionRows())
        if ((option.commands & commands) != 0)
            options.push_back(std::string{"--"} + option.name);
    return joined(options);
}

std::string bashWords(const Command& command)
{
    const WordsRow words = wordsOf(command);
    const std::string options =
        "        if [[ $current == -* ]]; then\n            _kepctl_words \"" +
        bashOptions(command.bit) + "\" \"$current\"\n";
    if (words.kind == WordKind::Script)
        return options + "        else\n            _kepctl_scripts \"$current\"\n        fi ;;\n";
    const Names names = words.kind == WordKind::Name ? words.names() : Names{};
    // Where there is nothing else, an empty word may become an option.
    return names.empty()
               ? "        _kepctl_words \"" + bashOptions(command.bit) + "\" \"$current\" ;;\n"
               : options + "        else\n            _kepctl_words \"" + joined(names) +
                     "\" \"$current\"\n        fi ;;\n";
}

// --- zsh

constexpr const char* kZshStart = R"sh(#compdef kepctl
# zsh completion for kepctl, made from its tables of commands and options.

_kepctl() {
    local -a commands
    commands=(
)sh";

constexpr const char* kZshMiddle = R"sh(    )
    if (( CURRENT == 2 )); then
        if [[ $PREFIX == -* ]]; then
            compadd -- OPTIONS
        else
            _describe -t commands 'kepctl command' commands
        fi
        return
    fi
    local command=$words[2]
    shift words
    (( CURRENT-- ))
    case $command in
)sh";

constexpr const char* kZshEnd = R"sh(    esac
}

if [[ $funcstack[1] == _kepctl ]]; then
    _kepctl "$@"
else
    compdef _kepctl kepctl
fi
)sh";

/// Text in single quotes, in which `special` are taken as they are.
std::string zshQuoted(const std::string& text, const std::string& special)
{
    std::string quoted;
    for (const char character : text) {
        if (character == '\'')
            quoted += "'\\'";
        else if (special.find(character) != std::string::npos)
            quoted += '\\';
        quoted += character;
    }
    return quoted;
}

/// One argument of _arguments.
std::string zshOption(const OptionRow& option)
{
    std::string text = std::string{"'--"} + option.name + (option.argument != nullptr ? "=" : "") +
                       "[" + zshQuoted(option.help, "[]\\") + "]";
    const Names choices = choicesOf(option);
    if (option.argument != nullptr) {
        text += ":" + zshQuoted(option.name, ":") + ":";
        text += !choices.empty()        ? "(" + joined(choices) + ")"
                : takes(option, "LIST") ? "_sequence compadd - " + joined(eventNames())
                : takes(option, "DIR")  ? "_files -/"
                                        : "_files";
    }
    return text + "'";
}

std::string zshWords(const WordsRow& words)
{
    if (words.kind == WordKind::None)
        return "";
    return std::string{" \\\n            '*:"} + words.what + ":" +
           (words.kind == WordKind::Script ? "_files -g \"*.jsonl\""
                                           : "(" + zshQuoted(joined(words.names()), ":") + ")") +
           "'";
}

} // namespace

std::string bashCompletion()
{
    std::string text = kBashStart;
    for (const Command& command : commandRows())
        for (const OptionRow& option : optionRows())
            if ((option.commands & command.bit) != 0 && option.argument != nullptr)
                text += std::string{"    "} + command.name + ":--" + option.name + ")\n        " +
                        bashValue(option) + " ;;\n";
    for (const Command& command : commandRows())
        text += std::string{"    "} + command.name + ":*)\n" + bashWords(command);
    Names commands;
    for (const Command& command : commandRows())
        commands.emplace_back(command.name);
    return text + "    :*)\n        _kepctl_words \"" + joined(commands) + " " +
           bashOptions(kNoCommand) + "\" \"$current\" ;;\n" + kBashEnd;
}

std::string zshCompletion()
{
    std::string text = kZshStart;
    for (const Command& command : commandRows())
        text += std::string{"        '"} + command.name + ":" + zshQuoted(command.summary, ":\\") +
                "'\n";
    std::string middle = kZshMiddle;
    const std::string placeholder = "OPTIONS";
    middle.replace(middle.find(placeholder), placeholder.size(), bashOptions(kNoCommand));
    text += middle;
    for (const Command& command : commandRows()) {
        text += std::string{"    "} + command.name + ")\n        _arguments";
        for (const OptionRow& option : optionRows())
            if ((option.commands & command.bit) != 0)
                text += " \\\n            " + zshOption(option);
        text += zshWords(wordsOf(command)) + " ;;\n";
    }
    return text + kZshEnd;
}
