// SPDX-License-Identifier: Apache-2.0
// kepctl help: all of it made from the tables of commands, options, script lines and trace events.
#pragma once

#include <string>

#include "options.h"

/// The usage lines of all commands.
std::string usage();

int help(const Options& options);
int printVersion();
