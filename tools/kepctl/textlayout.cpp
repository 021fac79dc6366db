// SPDX-License-Identifier: Apache-2.0
// Text that fits. A character is a code point: one column each, which holds for what kepctl writes.
#include "textlayout.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace
{

constexpr std::size_t kLeastRoom = 20; // columns beside the indentation that are worth folding for

bool isPrintable(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return (byte >= 0x20 && byte != 0x7F) || character == '\n';
}

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

/// Where the first `count` characters from `start` end.
std::size_t after(std::string_view text, std::size_t start, std::size_t count)
{
    std::size_t end = start;
    for (; count > 0 && end < text.size(); --count)
        do
            ++end;
        while (end < text.size() && continuesCharacter(text[end]));
    return end;
}

/// Where the line that starts there ends when it may hold `count` characters.
std::size_t breakOf(std::string_view text, std::size_t start, std::size_t count)
{
    const std::size_t end = after(text, start, count);
    if (end == text.size() || text[end] == ' ')
        return end;
    const std::size_t ink = text.find_first_not_of(' ', start);
    const std::size_t blank = text.rfind(' ', end);
    return blank != std::string_view::npos && blank > ink ? blank : end;
}

void fold(std::string_view line, std::size_t width, std::size_t indent,
          std::vector<std::string>& lines)
{
    std::size_t start = 0;
    do {
        const bool first = lines.empty();
        const std::size_t room = first ? width : width - indent;
        const std::size_t end = width == 0 ? line.size() : breakOf(line, start, room);
        const std::size_t ink = line.find_last_not_of(' ', end == 0 ? 0 : end - 1);
        const std::size_t length =
            ink == std::string_view::npos || ink < start ? 0 : ink + 1 - start;
        lines.emplace_back(first ? 0 : indent, ' ').append(line.substr(start, length));
        start = line.find_first_not_of(' ', end);
    } while (start < line.size());
}

} // namespace

std::string printable(std::string text)
{
    if (std::all_of(text.begin(), text.end(), [](char each) { return isPrintable(each); }))
        return text;
    std::string result;
    for (const char character : text) {
        if (isPrintable(character)) {
            result += character;
            continue;
        }
        char escape[8];
        snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(character));
        result += escape;
    }
    return result;
}

std::vector<std::string> folded(const std::string& text, std::size_t width, std::size_t indent)
{
    if (width < indent + kLeastRoom)
        width = 0;
    std::vector<std::string> lines;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        fold(std::string_view{text}.substr(start, end - start), width, indent, lines);
        start = end + 1;
    }
    return lines;
}
