// SPDX-License-Identifier: Apache-2.0
// The beginning of a JSON text: where in it one is, for completion.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// What may come next.
enum class JsonNext { Key, Colon, Value, End };

/// A container that is still open.
struct JsonLevel {
    bool array = false;
    std::string key;                          // an object's last
    std::size_t index = 0;                    // an array's
    std::map<std::string, std::string> texts; // strings of an object so far, by key
    std::vector<std::string> elements;        // an array's so far; "" for what is no string
    JsonNext next = JsonNext::Value;
};

struct JsonPrefix {
    std::vector<JsonLevel> levels; // the outermost first
    std::string partial;           // the key or value that is being typed, with its quote
    JsonNext next = JsonNext::Value;
};

JsonPrefix jsonPrefixOf(const std::string& text);
