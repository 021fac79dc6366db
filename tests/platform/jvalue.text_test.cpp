// SPDX-License-Identifier: Apache-2.0
// JSON values: their text, and when two of them are equal.
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "jsonvalues.h"
#include "jvaluetest.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ElementsAre;

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
