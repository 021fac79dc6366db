// SPDX-License-Identifier: Apache-2.0
// The check of a JSON text's words and depth that stands in front of json-c.
#include "jsonlexicon.h"

#include <algorithm>
#include <cstddef>

namespace
{

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// True for a character that can stand in a number or a literal.
bool isWordCharacter(char c) noexcept
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' || c == '-' ||
           c == '.';
}

std::size_t skipDigits(std::string_view word, std::size_t at) noexcept
{
    while (at < word.size() && isDigit(word[at]))
        ++at;
    return at;
}

/// [-] (0 | 1-9 digits) [. digits] [e [+-] digits]
bool isNumber(std::string_view word) noexcept
{
    std::size_t at = word.front() == '-' ? 1 : 0;
    std::size_t end = skipDigits(word, at);
    if (end == at || (word[at] == '0' && end > at + 1))
        return false;
    if (end < word.size() && word[end] == '.') {
        at = end + 1;
        end = skipDigits(word, at);
        if (end == at)
            return false;
    }
    if (end < word.size() && (word[end] == 'e' || word[end] == 'E')) {
        at = end + 1;
        if (at < word.size() && (word[at] == '+' || word[at] == '-'))
            ++at;
        end = skipDigits(word, at);
        if (end == at)
            return false;
    }
    return end == word.size();
}

bool isLiteral(std::string_view word) noexcept
{
    return word == "true" || word == "false" || word == "null";
}

/// Walks one text; `at` is the next character to look at.
struct Scanner {
    std::string_view text;
    int maxDepth;
    std::size_t at = 0;
    int depth = 0;

    const char* scanString() noexcept;
    const char* scanWord() noexcept;
    const char* scanNext() noexcept;
    [[nodiscard]] bool atColon() const noexcept;
};

bool Scanner::atColon() const noexcept
{
    const auto* next = std::find_if_not(text.begin() + at, text.end(), isBlank);
    return next != text.end() && *next == ':';
}

const char* Scanner::scanString() noexcept
{
    bool holdsNul = false;
    for (++at; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            ++at;
            return holdsNul && atColon() ? "NUL character in a key" : "";
        }
        if (static_cast<unsigned char>(c) < 0x20)
            return "control character in a string";
        if (c == '\\') {
            ++at;
            holdsNul = holdsNul || text.substr(at, 5) == "u0000";
        }
    }
    return "unterminated string";
}

const char* Scanner::scanWord() noexcept
{
    const std::size_t start = at;
    while (at < text.size() && isWordCharacter(text[at]))
        ++at;
    const std::string_view word = text.substr(start, at - start);
    return isLiteral(word) || isNumber(word) ? "" : "neither a number nor true, false or null";
}

const char* Scanner::scanNext() noexcept
{
    const char c = text[at];
    if (c == '"')
        return scanString();
    if (isWordCharacter(c))
        return scanWord();
    ++at;
    if (c == '{' || c == '[')
        return ++depth > maxDepth ? "nesting too deep" : "";
    if (c == '}' || c == ']') {
        --depth;
        return "";
    }
    return c == ',' || c == ':' || isBlank(c) ? "" : "unexpected character";
}

} // namespace

const char* findLexicalFault(std::string_view text, int maxDepth) noexcept
{
    Scanner scanner{text, maxDepth};
    const char* fault = "";
    while (*fault == '\0' && scanner.at < text.size())
        fault = scanner.scanNext();
    return fault;
}
