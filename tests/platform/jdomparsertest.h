// SPDX-License-Identifier: Apache-2.0
// What the tests of the JSON parser share.
#pragma once

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "jdomparser.h"
#include "jsonvalues.h"
#include "jvalue.h"

inline constexpr int kMax = JDomParser::kMaxDepth;

struct Row {
    const char* what;
    std::string_view text;
};

inline void expectAccepted(std::string_view text, const std::string& what)
{
    JDomParser parser{JSchema::acceptAll()};
    EXPECT_TRUE(parser.parse(text).isValid()) << what << ": " << parser.errorText();
    EXPECT_EQ(parser.errorText(), "") << what;
}

inline void expectRefused(std::string_view text, const std::string& what)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue value = parser.parse(text);
    EXPECT_FALSE(value.isValid()) << what << " was read as " << value.stringify();
    EXPECT_NE(parser.errorText(), "") << what;
    EXPECT_LE(parser.errorText().size(), JDomParser::kMaxErrorBytes) << what;
}

template <std::size_t size>
void expectAllAccepted(const Row (&rows)[size])
{
    for (const Row& row : rows)
        expectAccepted(row.text, row.what);
}

template <std::size_t size>
void expectAllRefused(const Row (&rows)[size])
{
    for (const Row& row : rows)
        expectRefused(row.text, row.what);
}

/// `depth` opening texts, `innermost`, as many closing texts.
inline std::string nested(int depth, const std::string& opening, const std::string& innermost,
                          const std::string& closing)
{
    std::string text;
    for (int level = 0; level < depth; ++level)
        text += opening;
    text += innermost;
    for (int level = 0; level < depth; ++level)
        text += closing;
    return text;
}
