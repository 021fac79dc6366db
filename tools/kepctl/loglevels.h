// SPDX-License-Identifier: Apache-2.0
// The levels of the log: their names, and which of them the library's context admits.
#pragma once

#include <span>

#include "platformlog.h"

struct LogLevelName {
    LogLevel level;
    const char* name;
};
/// All levels, the most urgent first.
std::span<const LogLevelName> logLevels();
/// True for 3, 4, 6 and 7.
bool isLogLevel(int level);
/// What the level is called in text output.
const char* logLevelName(int level);
/// Sets the level of the library's context, now and for the time after `initialize`.
void admitLogLevel(int level);
