// SPDX-License-Identifier: Apache-2.0
// Text that fits: control characters made harmless, long lines folded.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The text with control characters written as \x1b and the like; a line feed stays.
std::string printable(std::string text);

/// The text as lines of at most `width` characters (0: as long as they are), broken at blanks where
/// there are any; every line but the first is indented by `indent`. A line feed begins a new line.
/// A width that leaves no room beside the indentation counts as 0.
std::vector<std::string> folded(const std::string& text, std::size_t width, std::size_t indent);
