// SPDX-License-Identifier: Apache-2.0
// What the tests of JSON values share.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "jsonvalues.h"
#include "jvalue.h"

using Int32 = std::numeric_limits<std::int32_t>;
using Int64 = std::numeric_limits<std::int64_t>;
using Uint64 = std::numeric_limits<std::uint64_t>;
using Double = std::numeric_limits<double>;

/// Arrays one in another, `depth` of them, with `innermost` in the last one.
inline JValue nestedArrays(int depth, const JValue& innermost = JValue::invalid())
{
    JValue value = JValue::array();
    if (innermost.isValid()) {
        EXPECT_TRUE(value.append(innermost));
    }
    for (int level = 1; level < depth; ++level) {
        JValue outer = JValue::array();
        EXPECT_TRUE(outer.append(value)) << "level " << level;
        value = outer;
    }
    return value;
}

/// The same with objects, each under the key "in".
inline JValue nestedObjects(int depth)
{
    JValue value = JValue::object();
    for (int level = 1; level < depth; ++level) {
        JValue outer = JValue::object();
        EXPECT_TRUE(outer.put("in", value)) << "level " << level;
        value = outer;
    }
    return value;
}

/// The array that stands `level` deep on the way along the first elements; 1 is the root itself.
inline JValue arrayAtLevel(const JValue& root, int level)
{
    JValue value = root;
    for (int at = 1; at < level; ++at)
        value = JValue{value[0]};
    EXPECT_TRUE(value.isArray());
    return value;
}

inline std::vector<std::string> keysOf(const JValue& value)
{
    std::vector<std::string> keys;
    for (const JValue::Member& member : value.members())
        keys.push_back(member.first);
    return keys;
}

inline std::vector<int> numbersOf(const JValue& value)
{
    std::vector<int> numbers;
    for (const JValue& element : value.elements())
        numbers.push_back(element.asNumber<std::int32_t>());
    return numbers;
}

// --- Values of every type, and what they are converted to

enum class Type { kInvalid, kNull, kBool, kNumber, kString, kArray, kObject };

struct Numbers {
    std::int32_t narrow;
    std::int64_t wide;
    double real;
};

/// One value and what it converts to; nothing where it is not of that type.
struct ConversionRow {
    std::string what;
    JValue value;
    Type type;
    std::optional<std::string> text;
    std::optional<bool> flag;
    std::optional<Numbers> number = std::nullopt;
};

inline constexpr auto kNo = std::nullopt;
inline constexpr std::int32_t kMin32 = Int32::min();
inline constexpr std::int32_t kMax32 = Int32::max();
inline constexpr std::int64_t kMin64 = Int64::min();
inline constexpr std::int64_t kMax64 = Int64::max();

struct ParsedNumberRow {
    const char* text;
    Numbers number;
};
// clang-format off
inline constexpr ParsedNumberRow kParsedNumberRows[] = {
    // text                             32 bits  64 bits           double
    {"0",                              {0,       0,                0.0}},
    {"1",                              {1,       1,                1.0}},
    {"42",                             {42,      42,               42.0}},
    {"-42",                            {-42,     -42,              -42.0}},
    {"2147483647",                     {kMax32,  2147483647,       2147483647.0}},
    {"2147483648",                     {kMax32,  2147483648,       2147483648.0}},
    {"-2147483648",                    {kMin32,  -2147483648,      -2147483648.0}},
    {"-2147483649",                    {kMin32,  -2147483649,      -2147483649.0}},
    {"4294967296",                     {kMax32,  4294967296,       4294967296.0}},
    {"9007199254740993",               {kMax32,  9007199254740993, 9007199254740992.0}}, // 2^53 + 1
    {"9223372036854775807",            {kMax32,  kMax64,           0x1p63}},
    {"9223372036854775808",            {kMax32,  kMax64,           0x1p63}},
    {"18446744073709551615",           {kMax32,  kMax64,           0x1p64}},
    {"18446744073709551616",           {kMax32,  kMax64,           0x1p64}},  // from here on cut
    {"123456789012345678901234567890", {kMax32,  kMax64,           0x1p64}},
    {"-9223372036854775808",           {kMin32,  kMin64,           -0x1p63}},
    {"-9223372036854775809",           {kMin32,  kMin64,           -0x1p63}}, // likewise
    {"-12345678901234567890123456789", {kMin32,  kMin64,           -0x1p63}},
    {"3.7",                            {3,       3,                3.7}},
    {"-3.7",                           {-3,      -3,               -3.7}},
    {"0.9",                            {0,       0,                0.9}},
    {"-0.9",                           {0,       0,                -0.9}},
    {"25e-1",                          {2,       2,                2.5}},
    {"5.0",                            {5,       5,                5.0}},
    {"2147483647.5",                   {kMax32,  2147483647,       2147483647.5}},
    {"-2147483648.5",                  {kMin32,  -2147483648,      -2147483648.5}},
    {"3e9",                            {kMax32,  3000000000,       3e9}},
    {"-3e9",                           {kMin32,  -3000000000,      -3e9}},
    {"9223372036854775808.0",          {kMax32,  kMax64,           0x1p63}},
    {"-9223372036854775808.0",         {kMin32,  kMin64,           -0x1p63}},
    {"1e300",                          {kMax32,  kMax64,           1e300}},
    {"-1e300",                         {kMin32,  kMin64,           -1e300}},
    {"1e400",                          {kMax32,  kMax64,           Double::max()}},
    {"-1e400",                         {kMin32,  kMin64,           Double::lowest()}},
    {"1e-400",                         {0,       0,                0.0}},
};
// clang-format on

struct MadeNumberRow {
    const char* what;
    JValue value;
    Numbers number;
};

inline std::vector<ConversionRow> conversionRows()
{
    const std::string inside{"a\0b", 3};
    const std::string alone{"\0", 1};
    const std::string_view insideView = inside;
    const std::string_view aloneView = alone;
    // clang-format off
    std::vector<ConversionRow> rows = {
        // what                   value                        type            string  bool
        {"invalid",               JValue::invalid(),           Type::kInvalid, kNo,    kNo},
        {"missing member",        json(R"({"a":1})")["b"],     Type::kInvalid, kNo,    kNo},
        {"missing element",       json("[1]")[1],              Type::kInvalid, kNo,    kNo},
        {"default",               JValue{},                    Type::kNull,    kNo,    kNo},
        {"null",                  json("null"),                Type::kNull,    kNo,    kNo},
        {"null member",           json(R"({"a":null})")["a"],  Type::kNull,    kNo,    kNo},
        {"true",                  json("true"),                Type::kBool,    kNo,    true},
        {"false",                 json("false"),               Type::kBool,    kNo,    false},
        {"true, made",            JValue{true},                Type::kBool,    kNo,    true},
        {"false, made",           JValue{false},               Type::kBool,    kNo,    false},
        {"string",                json(R"("text")"),           Type::kString,  "text", kNo},
        {"string, made",          JValue{"text"},              Type::kString,  "text", kNo},
        {"std::string, made",     JValue{std::string{"text"}}, Type::kString,  "text", kNo},
        {"empty string",          json(R"("")"),               Type::kString,  "",     kNo},
        {"empty string, made",    JValue{""},                  Type::kString,  "",     kNo},
        {"empty view, made",      JValue{std::string_view{}},  Type::kString,  "",     kNo},
        {"string with NUL",       json(R"("a\u0000b")"),       Type::kString,  inside, kNo},
        {"string with NUL, made", JValue{insideView},          Type::kString,  inside, kNo},
        {"string of NUL, made",   JValue{aloneView},           Type::kString,  alone,  kNo},
        {"number as string",      json(R"("42")"),             Type::kString,  "42",   kNo},
        {"bool as string",        json(R"("true")"),           Type::kString,  "true", kNo},
        {"empty array",           json("[]"),                  Type::kArray,   kNo,    kNo},
        {"array",                 json("[1]"),                 Type::kArray,   kNo,    kNo},
        {"array, made",           JValue::array(),             Type::kArray,   kNo,    kNo},
        {"empty object",          json("{}"),                  Type::kObject,  kNo,    kNo},
        {"object",                json(R"({"a":true})"),       Type::kObject,  kNo,    kNo},
        {"object, made",          JValue::object(),            Type::kObject,  kNo,    kNo},
    };
    const MadeNumberRow madeRows[] = {
        // what                    value                       32 bits  64 bits      double
        {"int, made",              JValue{42},                {42,      42,          42.0}},
        {"negative int, made",     JValue{-42},               {-42,     -42,         -42.0}},
        {"small int, made",        JValue{std::int8_t{-5}},   {-5,      -5,          -5.0}},
        {"small unsigned, made",   JValue{std::uint8_t{255}}, {255,     255,         255.0}},
        {"unsigned, made",         JValue{4294967295U},       {kMax32,  4294967295,  4294967295.0}},
        {"smallest, made",         JValue{kMin64},            {kMin32,  kMin64,      -0x1p63}},
        {"largest, made",          JValue{kMax64},            {kMax32,  kMax64,      0x1p63}},
        {"unsigned 64, made",      JValue{Uint64::max()},     {kMax32,  kMax64,      0x1p64}},
        {"fraction, made",         JValue{3.7},               {3,       3,           3.7}},
        {"-fraction, made",        JValue{-3.7},              {-3,      -3,          -3.7}},
        {"float, made",            JValue{0.5F},              {0,       0,           0.5}},
        {"largest double, made",   JValue{Double::max()},     {kMax32,  kMax64, Double::max()}},
        {"lowest double, made",    JValue{Double::lowest()},  {kMin32,  kMin64, Double::lowest()}},
    };
    // clang-format on
    for (const ParsedNumberRow& row : kParsedNumberRows)
        rows.push_back({row.text, json(row.text), Type::kNumber, kNo, kNo, row.number});
    for (const MadeNumberRow& row : madeRows)
        rows.push_back({row.what, row.value, Type::kNumber, kNo, kNo, row.number});
    return rows;
}
