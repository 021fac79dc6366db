// SPDX-License-Identifier: Apache-2.0
// What may come next in a line of the shell.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct Completion {
    std::size_t typed = 0;               // bytes at the end of the line that the candidates replace
    std::vector<std::string> candidates; // all begin with them, in the order to show them
    std::string suffix;                  // what follows when there is one candidate only
};

/// What may stand where the line ends.
Completion completionOf(const std::string& typed);
