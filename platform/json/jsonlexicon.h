// SPDX-License-Identifier: Apache-2.0
// The check of a JSON text's words and depth that stands in front of json-c.
#pragma once

#include <string_view>

/// What is wrong with the words of the text, "" when nothing is. json-c, even when told to be
/// strict, lets pass: single quotes, NaN and Infinity, numbers such as -01 and 1., control
/// characters in strings, a NUL after the value; it counts depth differently for empty containers,
/// and cuts a key at a NUL. The grammar is left to json-c.
const char* findLexicalFault(std::string_view text, int maxDepth) noexcept;
