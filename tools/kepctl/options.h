// SPDX-License-Identifier: Apache-2.0
// kepctl's options: one table, from which they are read, explained and completed.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "commandset.h"

/// What the command line chose.
struct Options {
    std::string backend = "TV";
    std::string config; // empty: the shipped one of the backend
    std::string format = "text";
    std::string logLevel = "6";
    bool strict = false;
    bool hardware = false;
    std::string card;
    bool check = false;
    bool explain = false;
    bool time = false;
    bool noClocks = false;
    std::string only;
    std::string color = "auto";
    bool quiet = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> words; // what is no option, in order
};

struct OptionRow {
    const char* name;           // without its dashes
    const char* argument;       // what the help calls its value; "A|B" is a choice; null: none
    unsigned commands;          // CommandSet
    std::string Options::*text; // where the value goes, or
    bool Options::*flag;        // what is switched on
    const char* help;
};

std::span<const OptionRow> optionRows();

/// The values that an option's argument "A|B" allows; none when any will do.
std::vector<std::string> choicesOf(const OptionRow& option);

/// Reads the words of the command line behind the command into `options`. What is wrong with them,
/// "" when nothing is.
std::string readOptions(const std::vector<std::string>& arguments, CommandSet command,
                        Options& options);
