// SPDX-License-Identifier: Apache-2.0
// Script files: read and checked whole before anything of them is played.
#pragma once

#include <string>
#include <vector>

#include "scriptline.h"

class BadLine;

/// What messages call standard input.
inline constexpr const char* kInputName = "standard input";

struct Script {
    std::string name;
    std::vector<std::string> lines;
    std::vector<ScriptLine> checked; // of the first lines; where one is to be skipped, nothing
};

/// Reads the file of that path; false, told on standard error, when it cannot be read.
bool readScript(const std::string& path, Script& script);

/// The same for standard input, to its end.
bool readInput(Script& script);

/// Checks all lines, and keeps the first thousands as they are checked: they need not be parsed
/// again when they are played. Every mistake is told on standard error. Whether there was none.
bool checkScript(Script& script);

/// Where that line stands: "file:4".
std::string originOf(const Script& script, std::size_t index);

/// Whether the line is there for people only: blank, or a comment.
bool isSkipped(const std::string& line);

/// Tells standard error about a bad line.
void tellMistake(const BadLine& mistake, const std::string& name, std::size_t number,
                 const std::string& line);
