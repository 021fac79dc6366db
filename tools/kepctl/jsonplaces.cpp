// SPDX-License-Identifier: Apache-2.0
// A line of JSON with the place of each of its values. The scanner here knows where things stand
// and finds words for mistakes. What is written plainly it understands alone; whether anything else
// is JSON, and what it means, the platform's parser decides.
#include "jsonplaces.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <unordered_set>

#include <glib.h>

#include "badline.h"
#include "jdomparser.h"

namespace
{

struct Stray {
    const char* text;
    const char* sentence;
};
// What people write where a value, a key or the end should be.
// clang-format off
constexpr Stray kStrays[] = {
    {"'",            "strings and keys stand in double quotes (\"), not in single ones"},
    {"\xE2\x80\x9C", "strings and keys stand in straight double quotes (\"), not in typographic ones"},
    {"\xE2\x80\x9D", "strings and keys stand in straight double quotes (\"), not in typographic ones"},
    {"\xE2\x80\x98", "strings and keys stand in straight double quotes (\"), not in typographic ones"},
    {"\xE2\x80\x99", "strings and keys stand in straight double quotes (\"), not in typographic ones"},
    {"`",            "strings and keys stand in double quotes (\")"},
    {"//",           "a comment starts with # (not with //) and has a line of its own"},
    {"/*",           "a comment starts with # (not with /*) and has a line of its own"},
    {"#",            "a comment has a line of its own, with # in the first column"},
    {";",            "there is no ; in JSON"},
    {"\xEF\xBB\xBF", "a byte order mark (BOM); save the file as UTF-8 without one"},
};
struct Word {
    const char* text;
    const char* meant;
};
constexpr Word kWords[] = {
    {"True",      "true"},
    {"TRUE",      "true"},
    {"False",     "false"},
    {"FALSE",     "false"},
    {"None",      "null"},
    {"NULL",      "null"},
    {"nil",       "null"},
    {"undefined", "null"},
    {"yes",       "true"},
    {"on",        "true"},
    {"no",        "false"},
    {"off",       "false"},
};
// clang-format on

constexpr const char* kExample = R"({"call": "setSoundOutput", "args": ["tv_speaker"]})";

[[noreturn]] void reject(const std::string& sentence, std::size_t place, std::string hint = "")
{
    throw BadLine("no JSON: " + sentence, place, std::move(hint));
}

JValue parsed(std::string_view text)
{
    JDomParser parser{JSchema::acceptAll()};
    return parser.parse(text);
}

bool isLiteral(std::string_view word)
{
    return word == "true" || word == "false" || word == "null";
}

/// An integer that has one way to be written, and fits 64 bits whatever its digits are.
bool isPlainInteger(std::string_view word)
{
    constexpr std::size_t kMostDigits = 18;
    const std::string_view digits = word.substr(word.starts_with('-') ? 1 : 0);
    return word == "0" ||
           (!digits.empty() && digits.size() <= kMostDigits && digits.front() != '0' &&
            std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }));
}

/// Whether a key stands twice: the value that counts is the last, the place the first.
bool hasKeyTwice(const std::vector<JsonMember>& members)
{
    constexpr std::size_t kFew = 8; // are compared with each other
    if (members.size() > kFew) {
        std::unordered_set<std::string_view> keys;
        return !std::all_of(members.begin(), members.end(), [&](const JsonMember& member) {
            return keys.insert(member.key).second;
        });
    }
    for (std::size_t i = 1; i < members.size(); ++i)
        for (std::size_t before = 0; before < i; ++before)
            if (members[i].key == members[before].key)
                return true;
    return false;
}

bool isBlank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

bool isWordLetter(char letter)
{
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_' ||
           letter == '-' || letter == '+' || letter == '.';
}

class Scanner
{
public:
    explicit Scanner(const std::string& text) : mText(text) {}

    /// The whole line.
    JsonNode line()
    {
        skipBlanks();
        rejectStray();
        if (!atEnd() && isWordLetter(peek()))
            rejectLineOfWords();
        JsonNode node = value(1);
        skipBlanks();
        if (atEnd())
            return node;
        rejectStray();
        if (peek() == '{')
            reject("one object a line; a second one starts here", mAt);
        if (peek() == ',')
            reject("no comma between the lines", mAt);
        if (peek() == '}' || peek() == ']')
            reject(std::string{"nothing is open that this "} + peek() + " could close", mAt);
        reject("nothing may follow the object", mAt);
    }

private:
    [[nodiscard]] bool atEnd() const { return mAt >= mText.size(); }
    [[nodiscard]] char peek() const { return mText[mAt]; }
    [[nodiscard]] bool at(const char* text) const
    {
        return mText.compare(mAt, std::strlen(text), text) == 0;
    }

    void skipBlanks()
    {
        while (!atEnd() && isBlank(peek()))
            ++mAt;
    }

    void rejectStray() const
    {
        if (!atEnd() && (peek() == '"' || isWordLetter(peek())))
            return; // none starts like this
        for (const Stray& stray : kStrays)
            if (!atEnd() && at(stray.text))
                reject(stray.sentence, mAt);
    }

    [[nodiscard]] std::string word() const
    {
        std::size_t end = mAt;
        while (end < mText.size() && isWordLetter(mText[end]))
            ++end;
        return mText.substr(mAt, end - mAt);
    }

    /// A line such as "initialize": not the numbers, true, false and null, which are JSON.
    void rejectLineOfWords() const
    {
        const std::string first = word();
        if (!parsed(first).isValid())
            reject("a line must be an object", mAt, std::string{"for example "} + kExample);
    }

    JsonNode value(int depth)
    {
        if (depth > JValue::kMaxDepth)
            reject("objects and arrays stand in one another more than " +
                       std::to_string(JValue::kMaxDepth) + " deep",
                   mAt);
        skipBlanks();
        if (atEnd())
            reject("a value is missing at the end of the line", mAt);
        if (peek() == '{')
            return object(depth);
        if (peek() == '[')
            return array(depth);
        JsonNode node;
        node.begin = mAt;
        node.plain = peek() == '"' ? string() : scalar();
        node.text = textFrom(node.begin);
        return node;
    }

    /// What was just passed over.
    [[nodiscard]] std::string_view textFrom(std::size_t begin) const
    {
        return std::string_view{mText}.substr(begin, mAt - begin);
    }

    /// Over a string; its closing quote is there. Whether it is plain.
    bool string()
    {
        const std::size_t begin = mAt;
        bool plain = true;
        for (++mAt; !atEnd() && peek() != '"'; ++mAt) {
            plain = plain && peek() != '\\' && static_cast<unsigned char>(peek()) >= ' ';
            if (peek() == '\\')
                escape();
        }
        if (atEnd())
            reject("this string has no closing quote (\")", begin);
        ++mAt;
        return plain;
    }

    void escape()
    {
        ++mAt;
        if (atEnd())
            return; // then the closing quote is missing, too
        if (std::strchr("\"\\/bfnrtu", peek()) == nullptr)
            reject(std::string{"no escape in JSON; a backslash itself is written twice (\\\\)"},
                   mAt - 1);
    }

    /// Over a number, true, false or null. Whether it is plain.
    bool scalar()
    {
        rejectStray();
        const std::string text = word();
        if (text.empty())
            reject(peek() == ',' || peek() == '}' || peek() == ']' || peek() == ':'
                       ? "a value is missing here"
                       : "no value can start like this",
                   mAt);
        const bool plain = isLiteral(text) || isPlainInteger(text);
        if (!plain && !parsed(text).isValid())
            rejectWord(text);
        mAt += text.size();
        return plain;
    }

    void rejectWord(const std::string& text) const
    {
        for (const Word& word : kWords)
            if (text == word.text)
                reject("no value", mAt, std::string{"did you mean "} + word.meant + "?");
        if (std::strchr("+-.0123456789", text.front()) != nullptr)
            reject("no number as JSON writes them (12, -5, 0.5; no sign +, no leading zero, not "
                   "hexadecimal)",
                   mAt);
        reject("a string stands in double quotes", mAt, "did you mean \"" + text + "\"?");
    }

    /// Over the comma behind a member or an element, up to the next or to the closing bracket.
    /// False at that bracket.
    bool another(char closing, const char* what, std::size_t opening)
    {
        skipBlanks();
        if (atEnd())
            rejectOpen(closing, opening);
        if (peek() == closing) {
            ++mAt;
            return false;
        }
        if (peek() != ',') {
            rejectStray();
            if (peek() == '}' || peek() == ']')
                reject(std::string{"here a "} + closing + " is expected, not a " + peek(), mAt);
            reject(std::string{"a comma is missing before this "} + what, mAt);
        }
        const std::size_t comma = mAt++;
        skipBlanks();
        if (atEnd())
            rejectOpen(closing, opening);
        if (peek() == closing)
            reject(std::string{"no comma after the last "} + what, comma);
        return true;
    }

    [[noreturn]] void rejectOpen(char closing, std::size_t opening) const
    {
        reject(std::string{"the "} + (closing == '}' ? "object" : "array") +
                   " that starts in column " + std::to_string(columnOf(mText, opening)) +
                   " is not closed on this line (" + closing +
                   " is missing); a line holds one whole object",
               mText.size());
    }

    JsonNode object(int depth)
    {
        JsonNode node = container(depth);
        if (opens('}', node.begin))
            do {
                const JsonMember& added = node.members.emplace_back(member(depth));
                node.plain = node.plain && added.node.plain;
            } while (another('}', "member", node.begin));
        node.plain = node.plain && !hasKeyTwice(node.members);
        node.text = textFrom(node.begin);
        return node;
    }

    /// Begins one, over its opening bracket.
    JsonNode container(int depth)
    {
        JsonNode node;
        node.begin = mAt++;
        node.plain = depth <= JDomParser::kMaxDepth;
        return node;
    }

    /// Over the blanks behind an opening bracket. False when the closing one follows, which is
    /// passed over.
    bool opens(char closing, std::size_t opening)
    {
        skipBlanks();
        if (atEnd())
            rejectOpen(closing, opening);
        if (peek() != closing)
            return true;
        ++mAt;
        return false;
    }

    JsonMember member(int depth)
    {
        JsonMember member;
        member.keyBegin = mAt;
        rejectStray();
        if (peek() != '"') {
            const std::string key = word();
            if (key.empty())
                reject("a key in double quotes is expected here", mAt);
            reject("a key stands in double quotes", mAt, "did you mean \"" + key + "\"?");
        }
        const bool plain = string();
        const std::string_view quoted = textFrom(member.keyBegin);
        member.key = plain ? quoted.substr(1, quoted.size() - 2) : parsed(quoted).asString();
        skipBlanks();
        if (atEnd() || peek() != ':')
            reject("a colon is missing after the key \"" + member.key + "\"", mAt);
        ++mAt;
        member.node = value(depth + 1);
        member.node.plain = member.node.plain && plain;
        return member;
    }

    JsonNode array(int depth)
    {
        JsonNode node = container(depth);
        if (opens(']', node.begin))
            do {
                const JsonNode& added = node.elements.emplace_back(value(depth + 1));
                node.plain = node.plain && added.plain;
            } while (another(']', "element", node.begin));
        node.text = textFrom(node.begin);
        return node;
    }

    const std::string& mText;
    std::size_t mAt = 0;
};

void requireUtf8(const std::string& line)
{
    const gchar* end = nullptr;
    if (g_utf8_validate(line.data(), static_cast<gssize>(line.size()), &end) != FALSE)
        return;
    const auto place = static_cast<std::size_t>(end - line.data());
    const bool utf16 = line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF");
    reject(utf16 || line[place] == '\0' ? "no UTF-8 text (UTF-16?); save the file as UTF-8"
                                        : "no UTF-8 from here on",
           place);
}

/// JSON without the blanks between its words.
std::string withoutBlanks(std::string_view text)
{
    std::string all;
    all.reserve(text.size());
    bool inString = false; // of a plain text: no quote is escaped
    for (const char letter : text) {
        if (letter == '"')
            inString = !inString;
        if (inString || !isBlank(letter))
            all += letter;
    }
    return all;
}

} // namespace

JValue JsonNode::value() const
{
    if (!plain || isObject() || isArray())
        return parsed(text);
    if (isString())
        return text.substr(1, text.size() - 2);
    if (text == "null")
        return {};
    if (isLiteral(text))
        return text == "true";
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string JsonNode::asString() const
{
    return isString() && plain ? std::string{text.substr(1, text.size() - 2)} : value().asString();
}

std::string JsonNode::json() const
{
    return plain ? withoutBlanks(text) : parsed(text).stringify();
}

const JsonNode* JsonNode::find(std::string_view key) const
{
    const JsonNode* found = nullptr;
    for (const JsonMember& member : members)
        if (member.key == key)
            found = &member.node;
    return found;
}

JsonNode parseJsonLine(const std::string& line)
{
    requireUtf8(line);
    JsonNode node = Scanner{line}.line();
    if (node.plain)
        return node;
    JDomParser parser{JSchema::acceptAll()};
    if (!parser.parse(line).isValid())
        reject(parser.errorText(), 0);
    return node;
}
