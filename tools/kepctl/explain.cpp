// SPDX-License-Identifier: Apache-2.0
// What the integers of a driver write stand for, by the library's own tables.
#include "explain.h"

#include "kepcatalogue.h"

namespace
{

/// "speaker" where the number has a name, otherwise what it is and the number: "port 5"; the number
/// alone where it is always the same.
std::string inWords(const kepControlInteger& integer, std::int64_t value)
{
    if (integer.numbers != nullptr)
        for (const kepNamedNumber& named : *integer.numbers)
            if (named.number == value)
                return named.name;
    const std::string number = std::to_string(value);
    return integer.name == number ? number : std::string{integer.name} + " " + number;
}

} // namespace

std::string explained(std::string_view element, std::span<const std::int64_t> values)
{
    for (const kepControlElement& known : kepCatalogue::controlElements()) {
        if (element != known.name || values.size() != known.integers.size())
            continue;
        std::string words{element};
        for (std::size_t i = 0; i < values.size(); ++i)
            words += (i == 0 ? ": " : ", ") + inWords(known.integers[i], values[i]);
        return words;
    }
    return "";
}
