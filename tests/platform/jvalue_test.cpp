// SPDX-License-Identifier: Apache-2.0
// JSON values: conversion, members and elements, what copies share, depth, text and equality.
#include "jvalue.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jdomparser.h"
#include "jsonvalues.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

using Int32 = std::numeric_limits<std::int32_t>;
using Int64 = std::numeric_limits<std::int64_t>;
using Uint64 = std::numeric_limits<std::uint64_t>;
using Double = std::numeric_limits<double>;

/// Arrays one in another, `depth` of them, with `innermost` in the last one.
JValue nestedArrays(int depth, const JValue& innermost = JValue::invalid())
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
JValue nestedObjects(int depth)
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
JValue arrayAtLevel(const JValue& root, int level)
{
    JValue value = root;
    for (int at = 1; at < level; ++at)
        value = JValue{value[0]};
    EXPECT_TRUE(value.isArray());
    return value;
}

std::vector<std::string> keysOf(const JValue& value)
{
    std::vector<std::string> keys;
    for (const JValue::Member& member : value.members())
        keys.push_back(member.first);
    return keys;
}

std::vector<int> numbersOf(const JValue& value)
{
    std::vector<int> numbers;
    for (const JValue& element : value.elements())
        numbers.push_back(element.asNumber<std::int32_t>());
    return numbers;
}

// --- Type and conversion

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

constexpr auto kNo = std::nullopt;
constexpr std::int32_t kMin32 = Int32::min();
constexpr std::int32_t kMax32 = Int32::max();
constexpr std::int64_t kMin64 = Int64::min();
constexpr std::int64_t kMax64 = Int64::max();

struct ParsedNumberRow {
    const char* text;
    Numbers number;
};
// clang-format off
constexpr ParsedNumberRow kParsedNumberRows[] = {
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

std::vector<ConversionRow> conversionRows()
{
    // clang-format off
    std::vector<ConversionRow> rows = {
        // what                   value                            type            string    bool
        {"invalid",               JValue::invalid(),               Type::kInvalid, kNo,      kNo},
        {"missing member",        json(R"({"a":1})")["b"],       Type::kInvalid, kNo,      kNo},
        {"missing element",       json("[1]")[1],                Type::kInvalid, kNo,      kNo},
        {"default",               JValue{},                        Type::kNull,    kNo,      kNo},
        {"null",                  json("null"),                  Type::kNull,    kNo,      kNo},
        {"null member",           json(R"({"a":null})")["a"],    Type::kNull,    kNo,      kNo},
        {"true",                  json("true"),                  Type::kBool,    kNo,      true},
        {"false",                 json("false"),                 Type::kBool,    kNo,      false},
        {"true, made",            JValue{true},                    Type::kBool,    kNo,      true},
        {"false, made",           JValue{false},                   Type::kBool,    kNo,      false},
        {"string",                json(R"("text")"),             Type::kString,  "text",   kNo},
        {"string, made",          JValue{"text"},                  Type::kString,  "text",   kNo},
        {"std::string, made",     JValue{"text"s},                 Type::kString,  "text",   kNo},
        {"empty string",          json(R"("")"),                 Type::kString,  "",       kNo},
        {"empty string, made",    JValue{""},                      Type::kString,  "",       kNo},
        {"empty view, made",      JValue{std::string_view{}},      Type::kString,  "",       kNo},
        {"string with NUL",       json(R"("a\u0000b")"),         Type::kString,  "a\0b"s,  kNo},
        {"string with NUL, made", JValue{"a\0b"sv},                Type::kString,  "a\0b"s,  kNo},
        {"string of NUL, made",   JValue{"\0"sv},                  Type::kString,  "\0"s,    kNo},
        {"number as string",      json(R"("42")"),               Type::kString,  "42",     kNo},
        {"bool as string",        json(R"("true")"),             Type::kString,  "true",   kNo},
        {"empty array",           json("[]"),                    Type::kArray,   kNo,      kNo},
        {"array",                 json("[1]"),                   Type::kArray,   kNo,      kNo},
        {"array, made",           JValue::array(),                 Type::kArray,   kNo,      kNo},
        {"empty object",          json("{}"),                    Type::kObject,  kNo,      kNo},
        {"object",                json(R"({"a":true})"),         Type::kObject,  kNo,      kNo},
        {"object, made",          JValue::object(),                Type::kObject,  kNo,      kNo},
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

TEST(JValueType, ExactlyOneAnswerIsTrueForAValidValueAndNoneForAnInvalidOne)
{
    for (const ConversionRow& row : conversionRows()) {
        EXPECT_EQ(row.value.isValid(), row.type != Type::kInvalid) << row.what;
        EXPECT_EQ(row.value.isNull(), row.type == Type::kNull) << row.what;
        EXPECT_EQ(row.value.isBool(), row.type == Type::kBool) << row.what;
        EXPECT_EQ(row.value.isNumber(), row.type == Type::kNumber) << row.what;
        EXPECT_EQ(row.value.isString(), row.type == Type::kString) << row.what;
        EXPECT_EQ(row.value.isArray(), row.type == Type::kArray) << row.what;
        EXPECT_EQ(row.value.isObject(), row.type == Type::kObject) << row.what;
    }
}

TEST(JValueConversion, WhatIsNoStringReadsEmpty)
{
    for (const ConversionRow& row : conversionRows()) {
        std::string text = "kept";
        EXPECT_EQ(row.value.asString(text), row.text.has_value()) << row.what;
        EXPECT_EQ(text, row.text.value_or("")) << row.what;
        EXPECT_EQ(row.value.asString(), row.text.value_or("")) << row.what;
    }
}

TEST(JValueConversion, WhatIsNoBoolReadsFalse)
{
    for (const ConversionRow& row : conversionRows()) {
        const bool expected = row.flag.value_or(false);
        bool flag = !expected;
        EXPECT_EQ(row.value.asBool(flag), row.flag.has_value()) << row.what;
        EXPECT_EQ(flag, expected) << row.what;
        EXPECT_EQ(row.value.asBool(), expected) << row.what;
    }
}

TEST(JValueConversion, To32BitsCutsTowardZeroAndSaturates)
{
    for (const ConversionRow& row : conversionRows()) {
        const std::int32_t expected = row.number.value_or(Numbers{}).narrow;
        std::int32_t number = 77;
        EXPECT_EQ(row.value.asNumber(number), row.number.has_value()) << row.what;
        EXPECT_EQ(number, expected) << row.what;
        EXPECT_EQ(row.value.asNumber<std::int32_t>(), expected) << row.what;
    }
}

TEST(JValueConversion, To64BitsCutsTowardZeroAndSaturates)
{
    for (const ConversionRow& row : conversionRows()) {
        const std::int64_t expected = row.number.value_or(Numbers{}).wide;
        std::int64_t number = 77;
        EXPECT_EQ(row.value.asNumber(number), row.number.has_value()) << row.what;
        EXPECT_EQ(number, expected) << row.what;
        EXPECT_EQ(row.value.asNumber<std::int64_t>(), expected) << row.what;
    }
}

TEST(JValueConversion, ToADoubleKeepsTheFractionAndSaturates)
{
    for (const ConversionRow& row : conversionRows()) {
        const double expected = row.number.value_or(Numbers{}).real;
        double number = 77.0;
        EXPECT_EQ(row.value.asNumber(number), row.number.has_value()) << row.what;
        EXPECT_EQ(number, expected) << row.what;
        EXPECT_EQ(row.value.asNumber<double>(), expected) << row.what;
    }
}

TEST(JValueMaking, ADefaultValueIsNull)
{
    const JValue value;
    EXPECT_TRUE(value.isValid());
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(value.stringify(), "null");
    EXPECT_EQ(value, json("null"));
}

TEST(JValueMaking, ANumberThatIsNotFiniteBecomesNull)
{
    for (const double number :
         {Double::infinity(), -Double::infinity(), Double::quiet_NaN(), -Double::quiet_NaN()}) {
        EXPECT_TRUE(JValue{number}.isNull()) << number;
        EXPECT_EQ(JValue{number}.stringify(), "null") << number;
        JValue object = JValue::object();
        EXPECT_TRUE(object.put("number", number));
        EXPECT_EQ(object.stringify(), R"({"number":null})") << number;
    }
}

TEST(JValueMaking, TheTextIsCopied)
{
    std::string text = "before";
    const JValue value{text};
    text = "after!";
    EXPECT_EQ(value.asString(), "before");
}

// --- Members of an object, elements of an array

TEST(JValueMembers, AKeyReachesItsMember)
{
    const JValue value = json(R"({"a":1,"":2,"a b":{"c":3},"ä":4})");
    EXPECT_EQ(value["a"], JValue{1});
    EXPECT_EQ(value[""], JValue{2});
    EXPECT_EQ(value["a b"s]["c"], JValue{3});
    EXPECT_EQ(value["ä"], JValue{4});
    for (const char* key : {"a", "", "a b", "ä"})
        EXPECT_TRUE(value.hasKey(key)) << key;
}

TEST(JValueMembers, AMissingKeyIsInvalid)
{
    const JValue value = json(R"({"a":1,"":2,"ab":3})");
    for (const std::string& key : {"b"s, "A"s, "abc"s, " a"s, "a\0"s, "a\0b"s, "\0"s, "\0a"s}) {
        EXPECT_FALSE(value.hasKey(key)) << testing::PrintToString(key);
        EXPECT_FALSE(value[key].isValid()) << testing::PrintToString(key);
    }
}

TEST(JValueMembers, ANullMemberIsThereAndAMissingOneIsNot)
{
    const JValue value = json(R"({"a":null})");
    EXPECT_TRUE(value.hasKey("a"));
    EXPECT_TRUE(value["a"].isValid());
    EXPECT_TRUE(value["a"].isNull());
    EXPECT_FALSE(value.hasKey("b"));
    EXPECT_FALSE(value["b"].isValid());
    EXPECT_FALSE(value["b"].isNull());
}

TEST(JValueMembers, OnlyAnObjectHasKeys)
{
    for (const ConversionRow& row : conversionRows()) {
        if (row.type == Type::kObject)
            continue;
        for (const char* key : {"", "0", "a", "length"}) {
            EXPECT_FALSE(row.value.hasKey(key)) << row.what << " " << key;
            EXPECT_FALSE(row.value[key].isValid()) << row.what << " " << key;
        }
        EXPECT_THAT(row.value.members(), IsEmpty()) << row.what;
    }
}

TEST(JValueMembers, StandInTheOrderOfTheirInsertion)
{
    JValue value = json(R"({"z":1,"a":2,"m":3})");
    EXPECT_TRUE(value.put("b", 4));
    EXPECT_EQ(value.size(), 4U);
    EXPECT_THAT(value.members(), ElementsAre(JValue::Member{"z", 1}, JValue::Member{"a", 2},
                                             JValue::Member{"m", 3}, JValue::Member{"b", 4}));
}

TEST(JValueMembers, KeepTheirOrderWhenThereAreMany)
{
    JValue value = JValue::object();
    std::vector<std::string> keys;
    for (int i = 0; i < 500; ++i) {
        keys.push_back("key" + std::to_string(i * 7919 % 500));
        ASSERT_TRUE(value.put(keys.back(), i));
    }
    EXPECT_EQ(keysOf(value), keys);
    EXPECT_EQ(value.size(), keys.size());
}

TEST(JValueMembers, AreASnapshot)
{
    JValue value = json(R"({"a":1,"b":2,"c":3})");
    const std::vector<JValue::Member> before = value.members();
    std::vector<std::string> walked;
    for (const JValue::Member& member : before) {
        walked.push_back(member.first);
        EXPECT_TRUE(value.remove(member.first));
        EXPECT_TRUE(value.put("new " + member.first, member.second));
    }
    EXPECT_THAT(walked, ElementsAre("a", "b", "c"));
    EXPECT_THAT(before, ElementsAre(JValue::Member{"a", 1}, JValue::Member{"b", 2},
                                    JValue::Member{"c", 3}));
    EXPECT_EQ(value.stringify(), R"({"new a":1,"new b":2,"new c":3})");
}

TEST(JValueElements, AnIndexReachesItsElement)
{
    const JValue value = json(R"([1,null,"x",[2]])");
    EXPECT_EQ(value.size(), 4U);
    EXPECT_EQ(value[0], JValue{1});
    EXPECT_TRUE(value[1U].isNull());
    EXPECT_EQ(value[std::size_t{2}], JValue{"x"});
    EXPECT_EQ(value[std::int64_t{3}][0], JValue{2});
}

TEST(JValueElements, AnIndexOutsideIsInvalid)
{
    const JValue value = json("[1,2,3]");
    EXPECT_FALSE(value[3].isValid());
    EXPECT_FALSE(value[4].isValid());
    EXPECT_FALSE(value[-1].isValid());
    EXPECT_FALSE(value[-3].isValid());
    EXPECT_FALSE(value[Int32::min()].isValid());
    EXPECT_FALSE(value[Int64::min()].isValid());
    EXPECT_FALSE(value[Int64::max()].isValid());
    EXPECT_FALSE(value[Uint64::max()].isValid());
    EXPECT_FALSE(value[std::int64_t{1} << 32].isValid()) << "must not wrap around to 0";
    EXPECT_FALSE(JValue::array()[0].isValid());
}

TEST(JValueElements, OnlyAnArrayHasThem)
{
    for (const ConversionRow& row : conversionRows()) {
        if (row.type == Type::kArray)
            continue;
        EXPECT_FALSE(row.value[0].isValid()) << row.what;
        EXPECT_FALSE(row.value[-1].isValid()) << row.what;
        EXPECT_THAT(row.value.elements(), IsEmpty()) << row.what;
    }
}

TEST(JValueElements, AreASnapshot)
{
    JValue value = json("[1,2,3]");
    const std::vector<JValue> before = value.elements();
    for (const JValue& element : before) {
        EXPECT_TRUE(value.remove(0));
        EXPECT_TRUE(value.append(element.asNumber<std::int32_t>() * 10));
    }
    EXPECT_THAT(before, ElementsAre(JValue{1}, JValue{2}, JValue{3}));
    EXPECT_THAT(numbersOf(value), ElementsAre(10, 20, 30));
}

TEST(JValueSize, CountsMembersAndElementsAndIsZeroOtherwise)
{
    struct SizeRow {
        const char* text;
        std::size_t size;
    };
    constexpr SizeRow kRows[] = {
        {"{}", 0},      {R"({"a":1})", 1}, {R"({"a":{"b":1,"c":2},"d":null})", 2},
        {"[]", 0},      {"[null]", 1},     {"[[1,2,3],{}]", 2},
        {"\"abc\"", 0}, {"7", 0},          {"null", 0},
    };
    for (const SizeRow& row : kRows)
        EXPECT_EQ(json(row.text).size(), row.size) << row.text;
    EXPECT_EQ(JValue::invalid().size(), 0U);
}

// --- Change

TEST(JValuePut, AddsAtTheEndAndReplacesInPlace)
{
    JValue value = JValue::object();
    EXPECT_TRUE(value.put("a", 1));
    EXPECT_TRUE(value.put("b", "two"));
    EXPECT_TRUE(value.put("c", true));
    EXPECT_TRUE(value.put("a", JValue::array()));
    EXPECT_TRUE(value.put("b", JValue{}));
    EXPECT_EQ(value.stringify(), R"({"a":[],"b":null,"c":true})");
}

TEST(JValuePut, ARemovedKeyComesBackAtTheEnd)
{
    JValue value = json(R"({"a":1,"b":2})");
    EXPECT_TRUE(value.remove("a"));
    EXPECT_TRUE(value.put("a", 3));
    EXPECT_EQ(value.stringify(), R"({"b":2,"a":3})");
}

TEST(JValuePut, IsForObjectsOnly)
{
    for (ConversionRow& row : conversionRows()) {
        if (row.type == Type::kObject)
            continue;
        const std::string before = row.value.stringify();
        EXPECT_FALSE(row.value.put("a", 1)) << row.what;
        EXPECT_EQ(row.value.stringify(), before) << row.what;
    }
}

TEST(JValuePut, RefusesAnInvalidValue)
{
    JValue value = json(R"({"a":1})");
    EXPECT_FALSE(value.put("a", JValue::invalid()));
    EXPECT_FALSE(value.put("b", JValue::invalid()));
    EXPECT_FALSE(value.put("b", value["missing"]));
    EXPECT_EQ(value.stringify(), R"({"a":1})");
}

TEST(JValuePut, RefusesAKeyWithANulCharacter)
{
    JValue value = json(R"({"a":1})");
    for (const std::string& key : {"\0"s, "a\0"s, "a\0b"s, "\0a"s, "b\0"s})
        EXPECT_FALSE(value.put(key, 2)) << testing::PrintToString(key);
    EXPECT_EQ(value.stringify(), R"({"a":1})");
}

TEST(JValueAppend, AddsAtTheEnd)
{
    JValue value = JValue::array();
    EXPECT_TRUE(value.append(1));
    EXPECT_TRUE(value.append(JValue{}));
    EXPECT_TRUE(value.append("x"));
    EXPECT_TRUE(value.append(JValue::object()));
    EXPECT_EQ(value.stringify(), R"([1,null,"x",{}])");
}

TEST(JValueAppend, IsForArraysOnly)
{
    for (ConversionRow& row : conversionRows()) {
        if (row.type == Type::kArray)
            continue;
        const std::string before = row.value.stringify();
        EXPECT_FALSE(row.value.append(1)) << row.what;
        EXPECT_EQ(row.value.stringify(), before) << row.what;
    }
}

TEST(JValueAppend, RefusesAnInvalidValue)
{
    JValue value = json("[1]");
    EXPECT_FALSE(value.append(JValue::invalid()));
    EXPECT_FALSE(value.append(value[7]));
    EXPECT_EQ(value.stringify(), "[1]");
}

TEST(JValueRemove, TakesOutAMemberOnce)
{
    JValue value = json(R"({"a":1,"b":null,"c":3})");
    EXPECT_TRUE(value.remove("b"));
    EXPECT_EQ(value.stringify(), R"({"a":1,"c":3})");
    EXPECT_FALSE(value.hasKey("b"));
    EXPECT_FALSE(value.remove("b"));
    EXPECT_TRUE(value.remove("a"));
    EXPECT_TRUE(value.remove("c"));
    EXPECT_EQ(value.stringify(), "{}");
}

TEST(JValueRemove, TakesOutAnElementAndClosesTheGap)
{
    JValue value = json("[10,20,30,40]");
    EXPECT_TRUE(value.remove(1));
    EXPECT_THAT(numbersOf(value), ElementsAre(10, 30, 40));
    EXPECT_TRUE(value.remove(2));
    EXPECT_THAT(numbersOf(value), ElementsAre(10, 30));
    EXPECT_TRUE(value.remove(0));
    EXPECT_TRUE(value.remove(0));
    EXPECT_EQ(value.stringify(), "[]");
    EXPECT_FALSE(value.remove(0));
}

TEST(JValueRemove, IsFalseWhenThereIsNothingToRemove)
{
    JValue object = json(R"({"a":1})");
    for (const std::string& key : {"b"s, ""s, "a\0"s, "a\0b"s})
        EXPECT_FALSE(object.remove(key)) << testing::PrintToString(key);
    EXPECT_FALSE(object.remove(0));
    EXPECT_EQ(object.stringify(), R"({"a":1})");

    JValue array = json("[1]");
    EXPECT_FALSE(array.remove(1));
    EXPECT_FALSE(array.remove(std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(array.remove("0"));
    EXPECT_EQ(array.stringify(), "[1]");

    for (ConversionRow& row : conversionRows()) {
        if (row.type == Type::kObject || row.type == Type::kArray)
            continue;
        EXPECT_FALSE(row.value.remove("a")) << row.what;
        EXPECT_FALSE(row.value.remove(0)) << row.what;
    }
}

// --- What handles share

TEST(JValueSharing, CopiesShareOneDocument)
{
    JValue first = json(R"({"a":1})");
    JValue second = first;
    JValue third;
    third = second;
    EXPECT_TRUE(second.put("b", 2));
    EXPECT_TRUE(third.remove("a"));
    EXPECT_EQ(first.stringify(), R"({"b":2})");
    EXPECT_EQ(second.stringify(), R"({"b":2})");
    EXPECT_EQ(third.stringify(), R"({"b":2})");
}

TEST(JValueSharing, AssigningAHandleLeavesTheDocumentAlone)
{
    JValue first = json(R"({"a":1})");
    JValue second = first;
    second = JValue{"other"};
    EXPECT_EQ(first.stringify(), R"({"a":1})");
    const JValue& itself = first;
    first = itself;
    EXPECT_EQ(first.stringify(), R"({"a":1})");
}

TEST(JValueSharing, ADeepCopySharesNothing)
{
    JValue original = json(R"({"a":{"b":[1,null]},"text":"x\u0000y","number":1.10})");
    JValue copy = original.deepCopy();
    EXPECT_EQ(copy, original);
    EXPECT_EQ(copy.stringify(), original.stringify());

    const std::string before = original.stringify();
    EXPECT_TRUE(copy.put("c", 1));
    EXPECT_TRUE(copy["a"].put("d", 2));
    EXPECT_TRUE(copy["a"]["b"].append(3));
    EXPECT_EQ(original.stringify(), before);

    const std::string copied = copy.stringify();
    EXPECT_TRUE(original["a"]["b"].remove(0));
    EXPECT_TRUE(original.remove("text"));
    EXPECT_EQ(copy.stringify(), copied);
}

TEST(JValueSharing, ADeepCopyKeepsEveryTypeInvalidIncluded)
{
    for (const ConversionRow& row : conversionRows()) {
        const JValue copy = row.value.deepCopy();
        EXPECT_EQ(copy.isValid(), row.value.isValid()) << row.what;
        EXPECT_EQ(copy.isNull(), row.value.isNull()) << row.what;
        EXPECT_EQ(copy, row.value) << row.what;
        EXPECT_EQ(copy.stringify(), row.value.stringify()) << row.what;
    }
}

TEST(JValueSharing, AMemberStaysConnectedAfterItsParentHandleIsGone)
{
    JValue root = json(R"({"a":{"b":{"c":1}}})");
    JValue inner;
    {
        const JValue parent = root["a"];
        inner = parent["b"];
    }
    EXPECT_TRUE(inner.put("d", 2));
    EXPECT_EQ(root.stringify(), R"({"a":{"b":{"c":1,"d":2}}})");
    EXPECT_TRUE(root["a"]["b"].put("e", 3));
    EXPECT_EQ(inner.stringify(), R"({"c":1,"d":2,"e":3})");
}

TEST(JValueSharing, AnElementStaysConnectedAfterItsParentHandleIsGone)
{
    JValue root = json("[[[1]]]");
    JValue inner;
    {
        const JValue parent = root[0];
        inner = parent[0];
    }
    EXPECT_TRUE(inner.append(2));
    EXPECT_EQ(root.stringify(), "[[[1,2]]]");
}

TEST(JValueSharing, SnapshotsHoldConnectedValues)
{
    JValue root = json(R"({"a":{"x":1},"b":[]})");
    std::vector<JValue::Member> members = root.members();
    EXPECT_TRUE(members.at(0).second.put("y", 2));
    EXPECT_TRUE(members.at(1).second.append(JValue::array()));
    std::vector<JValue> elements = root["b"].elements();
    EXPECT_TRUE(elements.at(0).append(3));
    EXPECT_EQ(root.stringify(), R"({"a":{"x":1,"y":2},"b":[[3]]})");
}

TEST(JValueSharing, AValueOutlivesTheRestOfItsDocument)
{
    JValue inner = json(R"({"a":{"b":[1,2]}})")["a"]["b"];
    EXPECT_EQ(inner.stringify(), "[1,2]");
    EXPECT_TRUE(inner.append(3));
    EXPECT_EQ(inner.stringify(), "[1,2,3]");
}

TEST(JValueSharing, AValueOutlivesItsRemovalAndItsReplacement)
{
    JValue root = json(R"({"a":{"x":1},"b":{"y":2},"c":[[3]]})");
    JValue removed = root["a"];
    JValue replaced = root["b"];
    JValue element = root["c"][0];
    EXPECT_TRUE(root.remove("a"));
    EXPECT_TRUE(root.put("b", 5));
    EXPECT_TRUE(root["c"].remove(0));
    EXPECT_TRUE(removed.put("z", 9));
    EXPECT_TRUE(replaced.put("z", 9));
    EXPECT_TRUE(element.append(9));
    EXPECT_EQ(removed.stringify(), R"({"x":1,"z":9})");
    EXPECT_EQ(replaced.stringify(), R"({"y":2,"z":9})");
    EXPECT_EQ(element.stringify(), "[3,9]");
    EXPECT_EQ(root.stringify(), R"({"b":5,"c":[]})");
}

TEST(JValueSharing, PutAndAppendStoreADeepCopy)
{
    JValue member = json(R"({"x":[1]})");
    JValue object = JValue::object();
    JValue array = JValue::array();
    EXPECT_TRUE(object.put("a", member));
    EXPECT_TRUE(object.put("b", member));
    EXPECT_TRUE(array.append(member));
    EXPECT_TRUE(member["x"].append(2));
    EXPECT_EQ(object.stringify(), R"({"a":{"x":[1]},"b":{"x":[1]}})");
    EXPECT_EQ(array.stringify(), R"([{"x":[1]}])");

    EXPECT_TRUE(object["a"].put("y", 3));
    EXPECT_EQ(member.stringify(), R"({"x":[1,2]})");
    EXPECT_EQ(object["b"].stringify(), R"({"x":[1]})");
}

TEST(JValueSharing, AContainerPutIntoItselfIsCopiedAsItWas)
{
    JValue object = json(R"({"a":1})");
    EXPECT_TRUE(object.put("self", object));
    EXPECT_EQ(object.stringify(), R"({"a":1,"self":{"a":1}})");
    EXPECT_TRUE(object["self"].put("root", object));
    EXPECT_EQ(object.stringify(), R"({"a":1,"self":{"a":1,"root":{"a":1,"self":{"a":1}}}})");

    JValue array = json("[1]");
    EXPECT_TRUE(array.append(array));
    EXPECT_EQ(array.stringify(), "[1,[1]]");
}

TEST(JValueSharing, AMemberCanBeReplacedByAPartOfItself)
{
    JValue object = json(R"({"a":{"b":{"c":1}}})");
    EXPECT_TRUE(object.put("a", object["a"]["b"]));
    EXPECT_EQ(object.stringify(), R"({"a":{"c":1}})");
    EXPECT_TRUE(object.put("a", object["a"]));
    EXPECT_EQ(object.stringify(), R"({"a":{"c":1}})");
}

TEST(JValueSharing, AMovedFromHandleIsUsable)
{
    JValue source = json(R"({"a":1})");
    JValue target = std::move(source);
    EXPECT_FALSE(source.put("b", 2));
    EXPECT_FALSE(source.hasKey("a"));
    EXPECT_FALSE(source["a"].isValid());
    EXPECT_EQ(source.size(), 0U);
    EXPECT_EQ(source.asString(), "");
    EXPECT_EQ(source.deepCopy().stringify(), source.stringify());
    EXPECT_EQ(target.stringify(), R"({"a":1})");

    source = json("[1]");
    EXPECT_TRUE(source.append(2));
    EXPECT_EQ(source.stringify(), "[1,2]");

    target = std::move(source);
    EXPECT_EQ(target.stringify(), "[1,2]");
    EXPECT_FALSE(source.append(3));
    EXPECT_EQ(target.stringify(), "[1,2]");
}

TEST(JValueSharing, AssigningCarriesValidityOver)
{
    JValue value{1};
    value = JValue::invalid();
    EXPECT_FALSE(value.isValid());
    EXPECT_FALSE(value.isNull());
    value = JValue{};
    EXPECT_TRUE(value.isNull());
    value = json("[1]")[7];
    EXPECT_FALSE(value.isValid());
    value = JValue{2};
    EXPECT_EQ(value, JValue{2});
}

TEST(JValueSharing, MovingKeepsInvalidInvalid)
{
    JValue source = JValue::invalid();
    const JValue target = std::move(source);
    EXPECT_FALSE(target.isValid());
}

// --- Depth

constexpr int kMax = JValue::kMaxDepth;

TEST(JValueDepth, TheLimitIs64Containers)
{
    EXPECT_EQ(JValue::kMaxDepth, 64);
}

TEST(JValueDepth, AppendAcceptsTheLimitAndRefusesOneMore)
{
    JValue value = json("[1]");
    EXPECT_FALSE(value.append(nestedArrays(kMax)));
    EXPECT_EQ(value.stringify(), "[1]");
    EXPECT_FALSE(value.append(nestedObjects(kMax)));
    EXPECT_EQ(value.stringify(), "[1]");
    EXPECT_TRUE(value.append(nestedArrays(kMax - 1)));
    EXPECT_TRUE(value.append(nestedObjects(kMax - 1)));
    EXPECT_EQ(value.size(), 3U);
}

TEST(JValueDepth, PutAcceptsTheLimitAndRefusesOneMore)
{
    JValue value = json(R"({"a":1})");
    EXPECT_FALSE(value.put("a", nestedObjects(kMax)));
    EXPECT_FALSE(value.put("b", nestedObjects(kMax)));
    EXPECT_FALSE(value.put("b", nestedArrays(kMax)));
    EXPECT_EQ(value.stringify(), R"({"a":1})");
    EXPECT_TRUE(value.put("a", nestedObjects(kMax - 1)));
    EXPECT_TRUE(value.put("b", nestedArrays(kMax - 1)));
    EXPECT_THAT(keysOf(value), ElementsAre("a", "b"));
}

TEST(JValueDepth, AScalarIsNoLevel)
{
    const JValue value = nestedArrays(kMax, "text");
    JValue innermost = arrayAtLevel(value, kMax);
    EXPECT_TRUE(innermost.append(1));
    EXPECT_TRUE(innermost.append(JValue{}));
    EXPECT_EQ(innermost.stringify(), R"(["text",1,null])");
}

TEST(JValueDepth, ABuiltDocumentOfTheLimitParsesAgain)
{
    const std::string arrays = nestedArrays(kMax, 1).stringify();
    EXPECT_EQ(arrays, std::string(kMax, '[') + "1" + std::string(kMax, ']'));
    EXPECT_EQ(json(arrays).stringify(), arrays);
    const JValue objects = nestedObjects(kMax);
    EXPECT_EQ(json(objects.stringify()), objects);
    EXPECT_EQ(objects.deepCopy(), objects);
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughAnElement)
{
    JValue root = nestedArrays(kMax - 1);
    JValue last = arrayAtLevel(root, kMax - 1);
    EXPECT_FALSE(last.append(nestedArrays(2)));
    EXPECT_EQ(last.size(), 0U);
    EXPECT_TRUE(last.append(JValue::array()));
    JValue innermost = last[0];
    EXPECT_FALSE(innermost.append(JValue::array()));
    EXPECT_FALSE(innermost.append(JValue::object()));
    EXPECT_EQ(root.stringify(), std::string(kMax, '[') + std::string(kMax, ']'));
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughAMember)
{
    const JValue root = nestedObjects(kMax);
    JValue innermost = root;
    for (int level = 1; level < kMax; ++level)
        innermost = JValue{innermost["in"]};
    const std::string before = root.stringify();
    EXPECT_FALSE(innermost.put("in", JValue::object()));
    EXPECT_FALSE(innermost.put("in", JValue::array()));
    EXPECT_EQ(root.stringify(), before);
    EXPECT_TRUE(innermost.put("in", "scalar"));
    EXPECT_NE(root.stringify(), before);
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughSnapshots)
{
    JValue object = JValue::object();
    EXPECT_TRUE(object.put("a", JValue::array()));
    JValue member = object.members().at(0).second;
    EXPECT_FALSE(member.append(nestedArrays(kMax - 1)));
    EXPECT_TRUE(member.append(nestedArrays(kMax - 2)));

    JValue array = JValue::array();
    EXPECT_TRUE(array.append(JValue::object()));
    JValue element = array.elements().at(0);
    EXPECT_FALSE(element.put("a", nestedObjects(kMax - 1)));
    EXPECT_TRUE(element.put("a", nestedObjects(kMax - 2)));
}

TEST(JValueDepth, CountsFromTheRootOfAParsedDocument)
{
    const JValue root = json(std::string(kMax, '[') + std::string(kMax, ']'));
    JValue innermost = arrayAtLevel(root, kMax);
    EXPECT_FALSE(innermost.append(JValue::object()));
    EXPECT_TRUE(innermost.append(1));
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughACopiedHandle)
{
    const JValue root = nestedArrays(kMax);
    JValue copied = arrayAtLevel(root, kMax);
    JValue moved = std::move(copied);
    JValue assigned;
    assigned = moved;
    EXPECT_FALSE(moved.append(JValue::array()));
    EXPECT_FALSE(assigned.append(JValue::array()));
    EXPECT_EQ(moved.size(), 0U);
}

TEST(JValueDepth, TheDeepestBranchCountsWhereverItStands)
{
    for (std::size_t place = 0; place < 3; ++place) {
        JValue array = JValue::array();
        JValue object = JValue::object();
        for (std::size_t i = 0; i < 3; ++i) {
            const JValue branch = i == place ? nestedArrays(kMax - 1) : JValue::array();
            ASSERT_TRUE(array.append(branch));
            ASSERT_TRUE(object.put("key" + std::to_string(i), branch));
        }
        JValue outer = JValue::array();
        EXPECT_FALSE(outer.append(array)) << place;
        EXPECT_FALSE(outer.append(object)) << place;
        EXPECT_EQ(outer.size(), 0U) << place;
    }
}

TEST(JValueDepth, SiblingsDoNotAddUp)
{
    JValue value = JValue::array();
    for (int i = 0; i < 3 * kMax; ++i)
        ASSERT_TRUE(value.append(i % 2 == 0 ? JValue::array() : JValue::object())) << i;
    JValue outer = JValue::object();
    EXPECT_TRUE(outer.put("a", value));
}

TEST(JValueDepth, APartThatIsPutElsewhereCountsOnlyItself)
{
    const JValue deep = nestedArrays(kMax);
    JValue other = JValue::object();
    EXPECT_TRUE(other.put("a", arrayAtLevel(deep, 2)));
    EXPECT_FALSE(other.put("b", deep));
    EXPECT_THAT(keysOf(other), ElementsAre("a"));
}

TEST(JValueDepth, ADeepCopyOfAPartIsADocumentOfItsOwn)
{
    const JValue deep = nestedArrays(kMax);
    JValue copy = arrayAtLevel(deep, kMax).deepCopy();
    EXPECT_TRUE(copy.append(nestedArrays(kMax - 1)));
    EXPECT_FALSE(copy.append(nestedArrays(kMax)));
}

TEST(JValueDepth, AContainerPutIntoItselfStopsAtTheLimit)
{
    JValue object = JValue::object();
    int accepted = 0;
    while (accepted < 2 * kMax && object.put("self", object))
        ++accepted;
    EXPECT_EQ(accepted, kMax - 1) << "each put adds one level to the one at the start";
    EXPECT_EQ(object, json(object.stringify()));
}

// --- Text

struct TextRow {
    const char* what;
    JValue value;
    std::string text;
};

TEST(JValueText, IsCompactAndUnescapedWherePossible)
{
    // clang-format off
    const TextRow rows[] = {
        // what             value                                   text
        {"null",            JValue{},                               "null"},
        {"true",            JValue{true},                           "true"},
        {"false",           JValue{false},                          "false"},
        {"int",             JValue{-42},                            "-42"},
        {"smallest",        JValue{Int64::min()},                   "-9223372036854775808"},
        {"largest",         JValue{Uint64::max()},                  "18446744073709551615"},
        {"cut when parsed", json("18446744073709551616"),         "18446744073709551615"},
        {"cut below",       json("-9223372036854775809"),         "-9223372036854775808"},
        {"string",          JValue{"text"},                         R"("text")"},
        {"empty string",    JValue{""},                             R"("")"},
        {"slash",           JValue{"/usr/bin"},                     R"("/usr/bin")"},
        {"escaped slash",   json(R"("\/")"),                      R"("/")"},
        {"quote",           JValue{R"(say "no")"},                  R"("say \"no\"")"},
        {"backslash",       JValue{R"(a\b)"},                       R"("a\\b")"},
        {"UTF-8",           JValue{"Lautstärke € 😀"},              R"("Lautstärke € 😀")"},
        {"escaped UTF-8",   json(R"("\u20ac \ud83d\ude00")"),     R"("€ 😀")"},
        {"empty array",     JValue::array(),                        "[]"},
        {"empty object",    JValue::object(),                       "{}"},
        {"no blanks",       json("\t{ \"a\" : [ 1 , 2 ] }\r\n"),  R"({"a":[1,2]})"},
        {"insertion order", json(R"({"z":1,"a":2,"m":3})"),       R"({"z":1,"a":2,"m":3})"},
        {"keys as strings", json(R"({"/\"\\ä":1})"),              R"({"/\"\\ä":1})"},
        {"invalid",         JValue::invalid(),                      "null"},
    };
    // clang-format on
    for (const TextRow& row : rows)
        EXPECT_EQ(row.value.stringify(), row.text) << row.what;
}

TEST(JValueText, ADoublePrintsItsShortestForm)
{
    struct DoubleRow {
        double number;
        const char* text;
    };
    constexpr DoubleRow kRows[] = {
        {0.1, "0.1"},     {-0.1, "-0.1"}, {1.5, "1.5"},
        {-2.25, "-2.25"}, {3.7, "3.7"},   {0.1 + 0.2, "0.30000000000000004"},
    };
    for (const DoubleRow& row : kRows) {
        EXPECT_EQ(JValue{row.number}.stringify(), row.text);
        JValue object = JValue::object();
        EXPECT_TRUE(object.put("a", row.number));
        EXPECT_EQ(object.stringify(), R"({"a":)"s + row.text + "}");
        EXPECT_EQ(object.deepCopy()["a"].stringify(), row.text);
    }
}

TEST(JValueText, ADoubleReadsBackAsTheSameNumber)
{
    for (const double number :
         {0.0, 1.0, -1.0, 1.0 / 3.0, 1e22, 1e23, -1e-7, 123456789.125, Double::max(),
          Double::lowest(), Double::min(), Double::denorm_min()}) {
        const JValue back = json(JValue{number}.stringify());
        EXPECT_TRUE(back.isNumber()) << number;
        EXPECT_EQ(back.asNumber<double>(), number);
    }
}

TEST(JValueText, ControlCharactersAreEscapedInStringsAndKeys)
{
    std::string text;
    for (char c = 0; c < 0x20; ++c)
        text += c;
    JValue value = JValue::array();
    EXPECT_TRUE(value.append(text));
    JValue object = JValue::object();
    EXPECT_TRUE(object.put(text.substr(1), 1)); // a key holds no NUL
    EXPECT_TRUE(value.append(object));

    const std::string printed = value.stringify();
    for (const char c : printed)
        EXPECT_GE(static_cast<unsigned char>(c), 0x20) << printed;
    EXPECT_EQ(json(printed), value);
    EXPECT_EQ(json(printed)[0].asString(), text);
    EXPECT_THAT(keysOf(json(printed)[1]), ElementsAre(text.substr(1)));
}

TEST(JValueText, ANulCharacterIsEscaped)
{
    EXPECT_EQ(JValue{"a\0b"sv}.stringify(), R"("a\u0000b")");
}

TEST(JValueText, FollowsEveryChange)
{
    JValue value = json(R"({"a":{"b":1}})");
    EXPECT_EQ(value.stringify(), R"({"a":{"b":1}})");
    EXPECT_TRUE(value["a"].put("b", 2));
    EXPECT_EQ(value.stringify(), R"({"a":{"b":2}})");
    const std::string kept = value.stringify();
    EXPECT_TRUE(value.remove("a"));
    EXPECT_EQ(value.stringify(), "{}");
    EXPECT_EQ(kept, R"({"a":{"b":2}})");
}

// --- Equality

struct EqualityRow {
    const char* left;
    const char* right;
    bool equal;
};
// clang-format off
constexpr EqualityRow kEqualityRows[] = {
    // left                        right                          equal
    {"null",                       "null",                        true},
    {"true",                       "true",                        true},
    {"true",                       "false",                       false},
    {"null",                       "false",                       false},
    {"null",                       "0",                           false},
    {"null",                       R"("")",                       false},
    {"1",                          "1",                           true},
    {"1",                          "2",                           false},
    {"1",                          "1.0",                         false},
    {"1",                          "true",                        false},
    {"1",                          R"("1")",                      false},
    {"-1",                         "18446744073709551615",        false},
    {"18446744073709551615",       "18446744073709551615",        true},
    {"1.5",                        "1.5",                         true},
    {"1.5",                        "1.50",                        true},     // a number, not a text
    {"1.5",                        "15e-1",                       true},
    {"1.5",                        "1.6",                         false},
    {R"("a")",                     R"("a")",                      true},
    {R"("a")",                     R"("\u0061")",                 true},
    {R"("a")",                     R"("A")",                      false},
    {R"("a")",                     R"("a\u0000")",                false},
    {R"("a\u0000b")",              R"("a\u0000c")",               false},
    {"[]",                         "[]",                          true},
    {"[]",                         "{}",                          false},
    {"[]",                         "null",                        false},
    {"[1,2]",                      "[1,2]",                       true},
    {"[1,2]",                      "[2,1]",                       false},
    {"[1,2]",                      "[1]",                         false},
    {"[null]",                     "[]",                          false},
    {"[1]",                        "[1.0]",                       false},
    {"{}",                         "{}",                          true},
    {R"({"a":1,"b":2})",           R"({"b":2,"a":1})",            true},
    {R"({"a":1,"b":2})",           R"({"a":2,"b":1})",            false},
    {R"({"a":1,"b":2})",           R"({"a":1})",                  false},
    {R"({"a":1})",                 R"({"b":1})",                  false},
    {R"({"a":null})",              "{}",                          false},
    {R"({"a":null})",              R"({"b":null})",               false},
    {R"({"a":null})",              R"({"a":0})",                  false},
    {R"({"a":[{"x":1,"y":2}]})",   R"({"a":[{"y":2,"x":1}]})",    true},
    {R"({"a":[{"x":1,"y":2}]})",   R"({"a":[{"y":2,"x":3}]})",    false},
};
// clang-format on

TEST(JValueEquality, IsThatOfTypeAndContentInBothDirections)
{
    for (const EqualityRow& row : kEqualityRows) {
        const JValue left = json(row.left);
        const JValue right = json(row.right);
        EXPECT_EQ(left == right, row.equal) << row.left << " / " << row.right;
        EXPECT_EQ(right == left, row.equal) << row.right << " / " << row.left;
        EXPECT_EQ(left != right, !row.equal) << row.left << " / " << row.right;
    }
}

TEST(JValueEquality, MadeAndParsedValuesAreEqual)
{
    EXPECT_EQ(JValue{1}, json("1"));
    EXPECT_EQ(JValue{1U}, json("1")) << "whether the integer was signed does not matter";
    EXPECT_EQ(JValue{1U}, JValue{1});
    EXPECT_EQ(JValue{Uint64::max()}, json("18446744073709551615"));
    EXPECT_EQ(JValue{1.0}, json("1.0"));
    EXPECT_NE(JValue{1.0}, JValue{1});
    EXPECT_EQ(JValue{"a\0b"sv}, json(R"("a\u0000b")"));
    JValue object = JValue::object();
    EXPECT_TRUE(object.put("b", JValue{}));
    EXPECT_TRUE(object.put("a", 0.5));
    EXPECT_EQ(object, json(R"({"a":0.5,"b":null})"));
}

TEST(JValueEquality, InvalidEqualsOnlyInvalid)
{
    EXPECT_TRUE(JValue::invalid() == JValue::invalid());
    EXPECT_FALSE(JValue::invalid() != JValue::invalid());
    for (const ConversionRow& row : conversionRows()) {
        EXPECT_EQ(row.value == JValue::invalid(), row.type == Type::kInvalid) << row.what;
        EXPECT_EQ(JValue::invalid() == row.value, row.type == Type::kInvalid) << row.what;
    }
}

TEST(JValueEquality, AHandleEqualsItsCopies)
{
    for (const ConversionRow& row : conversionRows()) {
        const JValue copy = row.value;
        EXPECT_TRUE(copy == row.value) << row.what;
    }
}

} // namespace
