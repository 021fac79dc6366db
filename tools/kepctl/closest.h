// SPDX-License-Identifier: Apache-2.0
// What somebody who mistyped a name most likely meant.
#pragma once

#include <string>
#include <vector>

using Names = std::vector<std::string>;

/// The name that is most like `word`, "" when none is close: few letters differ, or letters are
/// only left out. The first of several that are equally close.
std::string closest(const std::string& word, const Names& names);

/// `did you mean "name"?`, or "" when no name is close.
std::string didYouMean(const std::string& word, const Names& names);

/// "a, b or c".
std::string anyOf(const Names& names);
