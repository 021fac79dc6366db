// SPDX-License-Identifier: Apache-2.0
// A mistake of a script line as people read it.
#include "badline.h"

#include <algorithm>

#include <glib.h>

namespace
{

constexpr std::size_t kExcerptBefore = 60; // bytes of a long line that are shown around the place
constexpr std::size_t kExcerptAfter = 40;
constexpr const char* kIndent = "    ";

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// One character of the line as a terminal may see it, and how many columns it takes there.
struct Shown {
    std::string text;
    std::size_t width;
    std::size_t bytes; // of the line
};

Shown shownAt(const std::string& line, std::size_t at)
{
    const gunichar letter =
        g_utf8_get_char_validated(line.data() + at, static_cast<gssize>(line.size() - at));
    if (letter == static_cast<gunichar>(-1) || letter == static_cast<gunichar>(-2))
        return {"?", 1, 1};
    const auto bytes = static_cast<std::size_t>(g_unichar_to_utf8(letter, nullptr));
    if (g_unichar_isprint(letter) == FALSE) // a tab, an escape: it would move the caret
        return {letter == '\t' ? " " : "?", 1, bytes};
    const std::size_t width = g_unichar_iszerowidth(letter) != FALSE ? 0U
                              : g_unichar_iswide(letter) != FALSE    ? 2U
                                                                     : 1U;
    return {line.substr(at, bytes), width, bytes};
}

/// The part of the line around the place, and a caret under it.
std::string excerpt(const std::string& line, std::size_t place)
{
    std::size_t begin = place > kExcerptBefore ? place - kExcerptBefore : 0;
    while (begin > 0 && begin < line.size() && isContinuation(line[begin]))
        --begin;
    const std::size_t end = std::min(line.size(), place + kExcerptAfter);
    std::string text = begin > 0 ? "..." : "";
    std::size_t caret = text.size();
    for (std::size_t at = begin; at < end;) {
        const Shown shown = shownAt(line, at);
        if (at < place)
            caret += shown.width;
        text += shown.text;
        at += shown.bytes;
    }
    if (end < line.size())
        text += "...";
    return kIndent + text + "\n" + kIndent + std::string(caret, ' ') + "^\n";
}

} // namespace

std::size_t columnOf(const std::string& line, std::size_t place)
{
    std::size_t column = 1;
    for (std::size_t at = 0; at < std::min(place, line.size());) {
        at += shownAt(line, at).bytes;
        ++column;
    }
    return column;
}

std::string describe(const BadLine& mistake, const std::string& line, const std::string& where)
{
    const std::string place =
        where.empty() ? "" : where + ":" + std::to_string(columnOf(line, mistake.place())) + ": ";
    return place + mistake.what() + "\n" + excerpt(line, mistake.place()) +
           (mistake.hint().empty() ? "" : kIndent + mistake.hint() + "\n");
}
