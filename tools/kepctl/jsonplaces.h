// SPDX-License-Identifier: Apache-2.0
// A line of JSON with the place of each of its values, so that a mistake can be pointed at.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jvalue.h"

struct JsonMember;

/// One value of a line. It refers to the line, which has to live longer.
struct JsonNode {
    std::string_view text; // how it is written
    std::size_t begin = 0; // its first byte in the line
    bool plain = true;     // nothing in it has more than one way to be written, but blanks
    std::vector<JsonMember> members; // of an object, in order; a key given twice stands here twice
    std::vector<JsonNode> elements;  // of an array

    [[nodiscard]] bool isObject() const { return text.starts_with('{'); }
    [[nodiscard]] bool isArray() const { return text.starts_with('['); }
    [[nodiscard]] bool isString() const { return text.starts_with('"'); }

    /// The value, made anew.
    [[nodiscard]] JValue value() const;
    /// The text of a string, "" for every other value.
    [[nodiscard]] std::string asString() const;
    /// The JSON text as JValue::stringify writes it.
    [[nodiscard]] std::string json() const;
    /// The last member of that key; null when there is none.
    [[nodiscard]] const JsonNode* find(std::string_view key) const;
};

struct JsonMember {
    std::string key;
    std::size_t keyBegin = 0;
    JsonNode node;
};

/// Parses one line, which holds one JSON value; throws BadLine with the place of the mistake.
JsonNode parseJsonLine(const std::string& line);
