// SPDX-License-Identifier: Apache-2.0
// kepctl's commands: one table, from which they are called, explained and completed.
#pragma once

#include <span>
#include <string>

#include "options.h"

enum ExitStatus { kPlayed = 0, kCallFailed = 1, kUnusable = 2 };

struct Command {
    const char* name;
    CommandSet bit;
    const char* arguments;              // as in its usage line
    const char* summary;                // half a line
    const char* help;                   // the rest that one has to know
    int (*run)(const Options& options); // its exit status
};

/// What an exit status means for these commands.
struct ExitMeaning {
    ExitStatus status;
    unsigned commands; // CommandSet
    const char* meaning;
};

std::span<const Command> commandRows();
std::span<const ExitMeaning> exitMeanings();
/// Null for an unknown name.
const Command* findCommand(const std::string& name);

/// Tells standard error what is wrong; the exit status for it.
int unusable(const std::string& reason);

/// Finds the command, reads its options, runs it: what `main` does.
int runCommand(int argc, char** argv);
