// SPDX-License-Identifier: Apache-2.0
// A line of JSON with the place of each of its values. The platform's parser decides what is JSON;
// the scanner here only knows where things stand, and finds words for what that parser refused.
#include "jsonplaces.h"

#include <cctype>
#include <cstring>

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
        while (!atEnd() && std::strchr(" \t\r\n", peek()) != nullptr)
            ++mAt;
    }

    void rejectStray() const
    {
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
        JDomParser parser{JSchema::acceptAll()};
        if (!parser.parse(first).isValid())
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
        if (peek() == '"')
            string();
        else
            scalar();
        return node;
    }

    /// Over a string; its closing quote is there.
    void string()
    {
        const std::size_t begin = mAt;
        for (++mAt; !atEnd() && peek() != '"'; ++mAt)
            if (peek() == '\\')
                escape();
        if (atEnd())
            reject("this string has no closing quote (\")", begin);
        ++mAt;
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

    /// Over a number, true, false or null.
    void scalar()
    {
        rejectStray();
        const std::string text = word();
        if (text.empty())
            reject(peek() == ',' || peek() == '}' || peek() == ']' || peek() == ':'
                       ? "a value is missing here"
                       : "no value can start like this",
                   mAt);
        const bool literal = text == "true" || text == "false" || text == "null";
        if (!literal && !JDomParser{JSchema::acceptAll()}.parse(text).isValid())
            rejectWord(text);
        mAt += text.size();
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
        JsonNode node;
        node.begin = mAt++;
        skipBlanks();
        if (!atEnd() && peek() == '}') {
            ++mAt;
            return node;
        }
        if (atEnd())
            rejectOpen('}', node.begin);
        do
            node.members.push_back(member(depth));
        while (another('}', "member", node.begin));
        return node;
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
        string();
        member.key = unquoted(member.keyBegin);
        skipBlanks();
        if (atEnd() || peek() != ':')
            reject("a colon is missing after the key \"" + member.key + "\"", mAt);
        ++mAt;
        member.node = value(depth + 1);
        return member;
    }

    /// The string that was just passed over.
    [[nodiscard]] std::string unquoted(std::size_t begin) const
    {
        JDomParser parser{JSchema::acceptAll()};
        const JValue text = parser.parse(mText.substr(begin, mAt - begin));
        return text.asString();
    }

    JsonNode array(int depth)
    {
        JsonNode node;
        node.begin = mAt++;
        skipBlanks();
        if (!atEnd() && peek() == ']') {
            ++mAt;
            return node;
        }
        if (atEnd())
            rejectOpen(']', node.begin);
        do
            node.elements.push_back(value(depth + 1));
        while (another(']', "element", node.begin));
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

/// Gives each node its value.
void attach(JsonNode& node, const JValue& value)
{
    node.value = value;
    for (JsonMember& member : node.members)
        attach(member.node, value[member.key]);
    for (std::size_t i = 0; i < node.elements.size(); ++i)
        attach(node.elements[i], value[i]);
}

} // namespace

const JsonNode* JsonNode::find(const std::string& key) const
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
    JDomParser parser{JSchema::acceptAll()};
    const JValue value = parser.parse(line);
    JsonNode node = Scanner{line}.line();
    if (!value.isValid())
        reject(parser.errorText(), 0);
    attach(node, value);
    return node;
}
