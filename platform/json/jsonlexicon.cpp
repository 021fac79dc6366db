// SPDX-License-Identifier: Apache-2.0
// The check of a JSON text's words and depth that stands in front of json-c.
#include "jsonlexicon.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{

enum class Kind : unsigned char { Other, Blank, Separator, Open, Close, Quote, Word };

/// What each character can begin, or go on with, outside of strings.
constexpr std::array<Kind, 256> kKinds = [] {
    std::array<Kind, 256> kinds{};
    const auto mark = [&kinds](std::string_view characters, Kind kind) {
        for (const char c : characters)
            kinds[static_cast<unsigned char>(c)] = kind;
    };
    mark(" \t\n\r", Kind::Blank);
    mark(",:", Kind::Separator);
    mark("{[", Kind::Open);
    mark("}]", Kind::Close);
    mark("\"", Kind::Quote);
    // Whatever can stand in a number or a literal, right or wrong.
    mark("0123456789+-.", Kind::Word);
    mark("abcdefghijklmnopqrstuvwxyz", Kind::Word);
    mark("ABCDEFGHIJKLMNOPQRSTUVWXYZ", Kind::Word);
    return kinds;
}();

constexpr Kind kindOf(char c) noexcept
{
    return kKinds[static_cast<unsigned char>(c)];
}

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c) noexcept
{
    return kindOf(c) == Kind::Blank;
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
    while (at < text.size() && kindOf(text[at]) == Kind::Word)
        ++at;
    const std::string_view word = text.substr(start, at - start);
    return isLiteral(word) || isNumber(word) ? "" : "neither a number nor true, false or null";
}

const char* Scanner::scanNext() noexcept
{
    const Kind kind = kindOf(text[at]);
    if (kind == Kind::Quote)
        return scanString();
    if (kind == Kind::Word)
        return scanWord();
    ++at;
    switch (kind) {
    case Kind::Open:
        return ++depth > maxDepth ? "nesting too deep" : "";
    case Kind::Close:
        --depth;
        return "";
    case Kind::Blank:
    case Kind::Separator:
        return "";
    default:
        return "unexpected character";
    }
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
