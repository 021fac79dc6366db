// SPDX-License-Identifier: Apache-2.0
// The command line of kep-conformance.
#pragma once

#include <string>
#include <vector>

#include "checks.h"

struct Options {
    Conditions conditions;
    std::string config; // folder; empty: the library's own choice
    bool tap = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> subjects; // empty: all
};

/// Reads the command line. What is wrong with it, "" when nothing is.
std::string readOptions(const std::vector<std::string>& arguments, Options& options);

/// A line for each option.
std::string optionsHelp();
