// SPDX-License-Identifier: Apache-2.0
// The texts and JSON values that tests are written in.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "jdomparser.h"
#include "jvalue.h"

using Texts = std::vector<std::string>;

/// Found by GoogleTest through the class: a failed comparison shows the text of both values.
inline void PrintTo(const JValue& value, std::ostream* out)
{
    *out << (value.isValid() ? value.stringify() : "(invalid)");
}

/// The value of a JSON text, which has to be one.
inline JValue json(std::string_view text)
{
    JDomParser parser{JSchema::acceptAll()};
    JValue value = parser.parse(text);
    EXPECT_TRUE(value.isValid()) << text << ": " << parser.errorText();
    return value;
}

/// {"key": value}
inline JValue with(const std::string& key, const JValue& value)
{
    JValue object = JValue::object();
    static_cast<void>(object.put(key, value));
    return object;
}

inline JValue arrayOf(const Texts& texts)
{
    JValue array = JValue::array();
    for (const std::string& text : texts)
        array.append(text);
    return array;
}

/// The text {"key":value} for the text of a JSON value.
inline std::string member(const std::string& key, const std::string& value)
{
    return R"({")" + key + R"(":)" + value + "}";
}
