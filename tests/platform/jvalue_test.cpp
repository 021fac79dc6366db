// SPDX-License-Identifier: Apache-2.0
// JSON values: type and conversion, members and elements, change.
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "jsonvalues.h"
#include "jvaluetest.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- Type and conversion

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

TEST(JValueMembers, AreFoundAmongFewAndAmongMany)
{
    for (const int count : {1, 2, 15, 16, 17, 18, 100}) {
        JValue value = JValue::object();
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(value.put("key " + std::to_string(i), i));
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(value["key " + std::to_string(i)], JValue{i}) << count;
        for (const char* unknown : {"", "k", "key", "key 1000", "Key 0", "\x80"})
            EXPECT_FALSE(value.hasKey(unknown)) << count << " " << unknown;
    }
}

TEST(JValueWalk, ShowsTheMembersInOrder)
{
    const JValue value = json(R"({"z":1,"":null,"a":[true],"long enough not to fit":"x","b":{}})");
    std::vector<JValue::Member> shown;
    for (const auto& [key, member] : value.eachMember())
        shown.emplace_back(key, member);
    EXPECT_EQ(shown, value.members());
    EXPECT_THAT(shown, SizeIs(5));
    EXPECT_THAT(shown, Contains(JValue::Member{"a", json("[true]")}));
}

TEST(JValueWalk, ShowsNothingOfAnyOtherValue)
{
    for (const ConversionRow& row : conversionRows()) {
        if (row.type == Type::kObject)
            continue;
        for (const auto& [key, member] : row.value.eachMember())
            ADD_FAILURE() << row.what << " has " << key << " " << member.stringify();
    }
    for (const auto& [key, member] : JValue::object().eachMember())
        ADD_FAILURE() << "an empty object has " << key << " " << member.stringify();
}

TEST(JValueWalk, LendsValuesThatAreOfTheDocument)
{
    JValue value = json(R"({"a":{"b":1},"c":2})");
    JValue kept;
    for (const auto& [key, member] : value.eachMember())
        if (key == "a")
            kept = member;
    EXPECT_TRUE(kept.put("d", 3));
    EXPECT_EQ(value.stringify(), R"({"a":{"b":1,"d":3},"c":2})");
    EXPECT_TRUE(value.remove("a"));
    EXPECT_EQ(kept.stringify(), R"({"b":1,"d":3})");
}

TEST(JValueWalk, HoldsTheObjectThatNobodyElseHolds)
{
    std::string all;
    for (const auto& [key, member] : json(R"({"o":{"a":1,"b":[2]}})")["o"].eachMember())
        all.append(key).append(member.stringify());
    EXPECT_EQ(all, "a1b[2]");
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

} // namespace
