// SPDX-License-Identifier: Apache-2.0
// An event, as it is reported and written down: named values that lie where they are. To make one
// costs next to nothing, and its JSON is written in one go.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "jvalue.h"
#include "virtualtvexport.h"

namespace virtualtv
{

/// Refers to keys and values, which have to live longer. The kind, under "event", comes first.
class VIRTUALTV_EXPORT Event
{
public:
    /// A value that is JSON text already.
    struct Json {
        std::string_view text;
    };
    using Value = std::variant<std::int64_t, bool, std::string_view, std::span<const std::int64_t>,
                               Json, const JValue*>;
    struct Field {
        std::string_view key;
        Value value;
    };

    explicit Event(std::string_view kind) { add("event", kind); }

    /// Sets a value; a key that is there keeps its place. There is room for twelve.
    void put(std::string_view key, std::string_view text) { set(key, text); }
    void put(std::string_view key, std::span<const std::int64_t> numbers) { set(key, numbers); }
    void put(std::string_view key, Json json) { set(key, json); }
    void put(std::string_view key, const JValue& value) { set(key, &value); }
    void put(std::string_view, JValue&&) = delete; // would be gone
    void put(std::string_view key, const char* text) { set(key, std::string_view{text}); }
    void put(std::string_view key, const std::string& text) { set(key, std::string_view{text}); }
    void put(std::string_view, std::string&&) = delete;
    template <std::integral Integer>
    void put(std::string_view key, Integer number)
    {
        if constexpr (std::same_as<Integer, bool>)
            set(key, number);
        else
            set(key, static_cast<std::int64_t>(number));
    }

    [[nodiscard]] std::string_view kind() const { return text("event"); }
    [[nodiscard]] std::span<const Field> fields() const { return {mFields.data(), mCount}; }
    [[nodiscard]] bool has(std::string_view key) const { return find(key) != nullptr; }
    /// "" where there is no such text.
    [[nodiscard]] std::string_view text(std::string_view key) const;
    /// 0 where there is no such number.
    [[nodiscard]] std::int64_t number(std::string_view key) const;
    /// Empty where there are none.
    [[nodiscard]] std::span<const std::int64_t> numbers(std::string_view key) const;
    /// Null where there is no value, or one of another kind.
    [[nodiscard]] const JValue* value(std::string_view key) const;
    /// The JSON text of a value; "null" where there is none.
    [[nodiscard]] std::string json(std::string_view key) const;

    /// Appends the whole event as JSON: compact, keys in order, texts escaped as JValue does it.
    void appendTo(std::string& text) const;
    /// The whole event as a value.
    [[nodiscard]] JValue toValue() const;

private:
    [[nodiscard]] const Value* find(std::string_view key) const;
    void add(std::string_view key, Value value);
    void set(std::string_view key, Value value);

    std::array<Field, 12> mFields;
    std::size_t mCount = 0;
};

} // namespace virtualtv
