// SPDX-License-Identifier: Apache-2.0
// The short form of script lines. Only the form is made here: whether the line is any good is
// checked by those who check scripts.
#include "shortform.h"

#include <algorithm>
#include <optional>

#include "badline.h"
#include "jdomparser.h"
#include "operations.h"
#include "scriptgrammar.h"

namespace
{

constexpr const char* kBlanks = " \t\r";

/// Where the JSON string that begins there ends.
std::size_t endOfString(const std::string& text, std::size_t begin)
{
    for (std::size_t i = begin + 1; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '"')
            return i + 1;
    }
    return std::string::npos;
}

/// Where the JSON array or object that begins there ends.
std::size_t endOfContainer(const std::string& text, std::size_t begin)
{
    int depth = 0;
    for (std::size_t i = begin; i < text.size(); ++i) {
        if (text[i] == '"') {
            i = endOfString(text, i);
            if (i == std::string::npos)
                return i;
            --i;
        } else if (text[i] == '{' || text[i] == '[') {
            ++depth;
        } else if ((text[i] == '}' || text[i] == ']') && --depth == 0) {
            return i + 1;
        }
    }
    return std::string::npos;
}

std::size_t endOfWord(const std::string& text, std::size_t begin)
{
    if (text[begin] == '"')
        return endOfString(text, begin);
    if (text[begin] == '{' || text[begin] == '[')
        return endOfContainer(text, begin);
    return std::min(text.find_first_of(kBlanks, begin), text.size());
}

std::optional<JValue> jsonOf(const std::string& text)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue value = parser.parse(text);
    return value.isValid() ? std::optional{value} : std::nullopt;
}

/// What a word stands for: JSON in quotes or brackets always, otherwise where JSON is wanted.
JValue valueOf(const TypedWord& word, bool wantsText, const std::string& line)
{
    const bool looksLikeJson = word.text.find_first_of("\"{[") == 0;
    const std::optional<JValue> json =
        wantsText && !looksLikeJson ? std::nullopt : jsonOf(word.text);
    if (json)
        return *json;
    if (looksLikeJson)
        parseJsonLine(
            line.substr(0, word.begin + word.text.size())
                .replace(0, word.begin, word.begin, ' ')); // throws, with the place of the mistake
    return word.text;
}

bool wantsText(ArgumentKind kind)
{
    return kind != ArgumentKind::Switch && kind != ArgumentKind::Volume &&
           kind != ArgumentKind::Payload;
}

/// Whether the values of that key are strings wherever it stands.
bool wantsText(const std::string& key)
{
    for (const KeyRow& row : keyRows())
        if (key == row.key && (row.kind == ValueKind::Text || row.kind >= ValueKind::Operation))
            return true;
    return false;
}

JValue callOf(const Operation& operation, const std::vector<TypedWord>& words,
              const std::string& typed)
{
    JValue arguments = JValue::array();
    for (std::size_t i = 1; i < words.size(); ++i)
        static_cast<void>(arguments.append(valueOf(
            words[i], i <= operation.argumentCount && wantsText(operation.arguments[i - 1].kind),
            typed)));
    JValue line = JValue::object();
    line.put("call", operation.name);
    if (arguments.size() > 0)
        static_cast<void>(line.put("args", arguments));
    return line;
}

/// `set logLevel 7`: the keys and their values in turn, where no object stands.
JValue objectOf(const std::vector<TypedWord>& words, const std::string& typed)
{
    JValue object = JValue::object();
    for (std::size_t i = 1; i < words.size(); i += 2) {
        if (i + 1 == words.size())
            throw BadLine("\"" + words[i].text + "\" lacks its value",
                          words[i].begin + words[i].text.size());
        static_cast<void>(
            object.put(words[i].text, valueOf(words[i + 1], wantsText(words[i].text), typed)));
    }
    return object;
}

JValue lineOf(const LineKind& kind, const std::vector<TypedWord>& words, const std::string& typed)
{
    JValue line = JValue::object();
    if (words.size() == 1)
        static_cast<void>(line.put(kind.key, true));
    else if (words.size() == 2)
        static_cast<void>(line.put(kind.key, valueOf(words[1], /*wantsText=*/false, typed)));
    else
        static_cast<void>(line.put(kind.key, objectOf(words, typed)));
    return line;
}

[[noreturn]] void rejectStart(const TypedWord& word)
{
    Names known = valuesOf(ValueKind::Operation);
    for (const LineKind& kind : lineKinds())
        if (kind.form != ObjectForm::CallLine)
            known.emplace_back(kind.key);
    const std::string hint = didYouMean(word.text, known);
    throw BadLine("unknown operation \"" + word.text + "\"", word.begin,
                  hint.empty() ? ":help tells what can be typed" : hint);
}

} // namespace

std::vector<TypedWord> wordsOf(const std::string& typed)
{
    std::vector<TypedWord> words;
    for (std::size_t begin = typed.find_first_not_of(kBlanks); begin != std::string::npos;) {
        const std::size_t end = endOfWord(typed, begin);
        words.push_back({typed.substr(begin, end - begin), begin, end != std::string::npos});
        begin = end == std::string::npos ? end : typed.find_first_not_of(kBlanks, end);
    }
    return words;
}

std::string scriptLineOf(const std::string& typed)
{
    const std::vector<TypedWord> words = wordsOf(typed);
    if (words.empty() || words.front().text.find_first_of("{[\"#") == 0)
        return typed;
    if (const Operation* operation = findOperation(words.front().text))
        return callOf(*operation, words, typed).stringify();
    for (const LineKind& kind : lineKinds())
        if (words.front().text == kind.key && kind.form != ObjectForm::CallLine)
            return lineOf(kind, words, typed).stringify();
    rejectStart(words.front());
}
