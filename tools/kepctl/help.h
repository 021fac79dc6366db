// SPDX-License-Identifier: Apache-2.0
// kepctl help: all of it made from the tables of commands, options, script lines and trace events.
#pragma once

#include <string>

#include "closest.h"
#include "options.h"

/// The usage lines of all commands.
std::string usage();

/// What there is help on.
Names helpTopics();

int help(const Options& options);
int printVersion();
