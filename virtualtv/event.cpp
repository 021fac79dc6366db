// SPDX-License-Identifier: Apache-2.0
// An event, as it is reported and written down.
#include "event.h"

#include <charconv>
#include <stdexcept>
#include <utility>

#include "jdomparser.h"

namespace virtualtv
{
namespace
{

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>; // clang 14 would not deduce it

void appendNumber(std::string& text, std::int64_t number)
{
    std::array<char, 20> digits; // NOLINT(*-member-init): only what is written is read
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

/// What stands behind the backslash for that character, 0 when it needs none or has a number.
char shortEscape(char character)
{
    switch (character) {
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    case '"':
    case '\\':
        return character;
    default:
        return 0;
    }
}

bool needsEscape(char character)
{
    return static_cast<unsigned char>(character) < ' ' || character == '"' || character == '\\';
}

void appendText(std::string& text, std::string_view content)
{
    constexpr const char* kDigits = "0123456789abcdef";
    text += '"';
    std::size_t written = 0;
    for (std::size_t at = 0; at < content.size(); ++at) {
        if (!needsEscape(content[at]))
            continue;
        text.append(content, written, at - written);
        written = at + 1;
        const auto byte = static_cast<unsigned char>(content[at]);
        if (const char letter = shortEscape(content[at]); letter != 0)
            text.append({'\\', letter});
        else
            text.append({'\\', 'u', '0', '0', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
    }
    text.append(content, written);
    text += '"';
}

void appendNumbers(std::string& text, std::span<const std::int64_t> numbers)
{
    char before = '[';
    for (const std::int64_t number : numbers) {
        text += std::exchange(before, ',');
        appendNumber(text, number);
    }
    text += numbers.empty() ? "[]" : "]";
}

void append(std::string& text, const Event::Value& value)
{
    std::visit(Overloaded{[&](std::int64_t number) { appendNumber(text, number); },
                          [&](bool truth) { text += truth ? "true" : "false"; },
                          [&](std::string_view content) { appendText(text, content); },
                          [&](std::span<const std::int64_t> all) { appendNumbers(text, all); },
                          [&](Event::Json json) { text += json.text; },
                          [&](const JValue* whole) { text += whole->stringify(); }},
               value);
}

JValue toJson(const Event::Value& value)
{
    return std::visit(Overloaded{[](std::int64_t number) { return JValue{number}; },
                                 [](bool truth) { return JValue{truth}; },
                                 [](std::string_view content) { return JValue{content}; },
                                 [](std::span<const std::int64_t> numbers) {
                                     JValue array = JValue::array();
                                     for (const std::int64_t number : numbers)
                                         array.append(number);
                                     return array;
                                 },
                                 [](Event::Json json) {
                                     JDomParser parser{JSchema::acceptAll()};
                                     return parser.parse(json.text);
                                 },
                                 [](const JValue* whole) { return *whole; }},
                      value);
}

} // namespace

const Event::Value* Event::find(std::string_view key) const
{
    for (const Field& field : fields())
        if (field.key == key)
            return &field.value;
    return nullptr;
}

void Event::add(std::string_view key, Value value)
{
    if (mCount == mFields.size())
        throw std::length_error{"an event has no room for more"};
    mFields[mCount++] = {key, value};
}

void Event::set(std::string_view key, Value value)
{
    for (std::size_t i = 0; i < mCount; ++i)
        if (mFields[i].key == key) {
            mFields[i].value = value;
            return;
        }
    add(key, value);
}

std::string_view Event::text(std::string_view key) const
{
    const Value* found = find(key);
    const auto* text = found != nullptr ? std::get_if<std::string_view>(found) : nullptr;
    return text != nullptr ? *text : std::string_view{};
}

std::int64_t Event::number(std::string_view key) const
{
    const Value* found = find(key);
    const auto* number = found != nullptr ? std::get_if<std::int64_t>(found) : nullptr;
    return number != nullptr ? *number : 0;
}

std::span<const std::int64_t> Event::numbers(std::string_view key) const
{
    const Value* found = find(key);
    const auto* numbers =
        found != nullptr ? std::get_if<std::span<const std::int64_t>>(found) : nullptr;
    return numbers != nullptr ? *numbers : std::span<const std::int64_t>{};
}

const JValue* Event::value(std::string_view key) const
{
    const Value* found = find(key);
    const auto* value = found != nullptr ? std::get_if<const JValue*>(found) : nullptr;
    return value != nullptr ? *value : nullptr;
}

std::string Event::json(std::string_view key) const
{
    constexpr std::size_t kUsualLength = 40; // of a value: room for it is made once
    const Value* found = find(key);
    if (found == nullptr)
        return "null";
    std::string text;
    text.reserve(kUsualLength);
    append(text, *found);
    return text;
}

void Event::appendTo(std::string& text) const
{
    char before = '{';
    for (const Field& field : fields()) {
        text += std::exchange(before, ',');
        appendText(text, field.key);
        text += ':';
        append(text, field.value);
    }
    text += '}';
}

JValue Event::toValue() const
{
    JValue object = JValue::object();
    for (const Field& field : fields()) // no NUL in a key, and as deep as it was reported
        static_cast<void>(object.put(std::string{field.key}, toJson(field.value)));
    return object;
}

} // namespace virtualtv
