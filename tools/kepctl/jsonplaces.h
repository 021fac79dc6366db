// SPDX-License-Identifier: Apache-2.0
// A line of JSON with the place of each of its values, so that a mistake can be pointed at.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "jvalue.h"

struct JsonMember;

/// One value of a line.
struct JsonNode {
    JValue value;
    std::size_t begin = 0;           // its first byte
    std::vector<JsonMember> members; // of an object, in order; a key given twice stands here twice
    std::vector<JsonNode> elements;  // of an array

    /// The last member of that key; null when there is none.
    [[nodiscard]] const JsonNode* find(const std::string& key) const;
};

struct JsonMember {
    std::string key;
    std::size_t keyBegin = 0;
    JsonNode node;
};

/// Parses one line, which holds one JSON value; throws BadLine with the place of the mistake.
JsonNode parseJsonLine(const std::string& line);
