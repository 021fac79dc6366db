// SPDX-License-Identifier: Apache-2.0
// What the shell itself can do: its commands begin with a colon. One table, from which they are
// called, explained and completed.
#pragma once

#include <span>
#include <string>

#include "closest.h"
#include "player.h"

struct ShellCommand {
    const char* name;     // without the colon
    const char* argument; // as in its usage line
    const char* summary;
    Names (*arguments)(); // what the argument may be
    /// False leaves the shell. `argument` is empty when there is none; throws BadLine.
    bool (*run)(Player& player, const std::string& argument);
};

std::span<const ShellCommand> shellCommands();
/// Null for an unknown one; `word` has the colon.
const ShellCommand* findShellCommand(const std::string& word);

/// Runs a typed line that begins with a colon; false leaves the shell. Throws BadLine.
bool runShellCommand(Player& player, const std::string& typed);
