// SPDX-License-Identifier: Apache-2.0
// What kepctl throws at itself when a script line is no good; who reads the script reports it with
// file, line and column.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

class BadLine : public std::runtime_error
{
public:
    /// `place` is a byte of the line; `hint`, what was most likely meant, may be empty.
    BadLine(const std::string& what, std::size_t place, std::string hint = "")
        : std::runtime_error(what), mPlace(place), mHint(std::move(hint))
    {
    }

    [[nodiscard]] std::size_t place() const { return mPlace; }
    [[nodiscard]] const std::string& hint() const { return mHint; }

private:
    std::size_t mPlace;
    std::string mHint;
};

/// The column, from 1 in characters, of a byte of the line.
std::size_t columnOf(const std::string& line, std::size_t place);

/// The mistake as people read it: the sentence after `where`, the line with a caret under the
/// place, and the hint. `where` is "file:4" or empty.
std::string describe(const BadLine& mistake, const std::string& line, const std::string& where);
