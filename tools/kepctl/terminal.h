// SPDX-License-Identifier: Apache-2.0
// What standard output is, for text that people read.
#pragma once

#include <cstddef>
#include <string>

/// Columns of the terminal that standard output is at this moment; 0 when it is none, or unknown.
std::size_t terminalWidth();

/// Whether to colour: `when` is "never", "always" or "auto", which means on a terminal, unless
/// NO_COLOR is set.
bool wantsColour(const std::string& when);
