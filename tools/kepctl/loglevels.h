// SPDX-License-Identifier: Apache-2.0
// The levels of the library's log context, as kepctl sets and shows them.
#pragma once

#include "platformlog.h"

/// True for 3, 4, 6 and 7.
bool isLogLevel(int level);
/// What the level is called in text output.
const char* logLevelName(int level);
/// Sets the level of the library's context, now and for the time after `initialize`.
void admitLogLevel(int level);
