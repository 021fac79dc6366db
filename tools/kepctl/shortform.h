// SPDX-License-Identifier: Apache-2.0
// The short form of script lines, for those who type them: setOutputVolume tv_speaker 12.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// One word of a typed line: up to a blank, or a JSON string, array or object, blanks included.
struct TypedWord {
    std::string text;
    std::size_t begin = 0;
    bool closed = true; // false: a JSON value that goes on behind the end of the line
};
std::vector<TypedWord> wordsOf(const std::string& typed);

/// The script line that is meant: the line itself when it is one already. A word is JSON where the
/// operation or the key wants JSON; a string needs quotes only when it holds a blank or begins like
/// JSON. Throws BadLine when it begins with nothing known.
std::string scriptLineOf(const std::string& typed);
