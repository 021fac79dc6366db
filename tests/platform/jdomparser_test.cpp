// SPDX-License-Identifier: Apache-2.0
// The JSON parser: the texts that it accepts, and the depth up to which it does.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "jdomparser.h"
#include "jdomparsertest.h"
#include "jsonvalues.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

// --- Texts that are JSON

TEST(JDomParserText, AcceptsEveryScalarAtTheTop)
{
    struct ScalarRow {
        std::string_view text;
        JValue value;
    };
    const ScalarRow rows[] = {
        {"null", JValue{}},       {"true", JValue{true}},    {"false", JValue{false}},
        {"0", JValue{0}},         {"7", JValue{7}},          {"-7", JValue{-7}},
        {"1.5", JValue{1.5}},     {R"("x")", JValue{"x"}},   {R"("")", JValue{""}},
        {" 7 ", JValue{7}},       {"\t\r\n7\n", JValue{7}},  {" null ", JValue{}},
        {"\ntrue", JValue{true}}, {R"( "x" )", JValue{"x"}},
    };
    for (const ScalarRow& row : rows)
        EXPECT_EQ(json(row.text), row.value) << row.text;
}

TEST(JDomParserText, AcceptsEveryFormOfNumber)
{
    struct NumberRow {
        const char* text;
        double number;
    };
    // clang-format off
    constexpr NumberRow kRows[] = {
        // text      number
        {"0",        0.0},
        {"-0",       0.0},
        {"0.5",      0.5},
        {"-0.5",     -0.5},
        {"10",       10.0},
        {"1.05",     1.05},
        {"0e5",      0.0},
        {"1e5",      1e5},
        {"1E5",      1e5},
        {"1e+5",     1e5},
        {"1E-5",     1e-5},
        {"1e05",     1e5},          // a leading zero is allowed in the exponent
        {"-1.25e+2", -125.0},
    };
    // clang-format on
    for (const NumberRow& row : kRows) {
        EXPECT_EQ(json(row.text).asNumber<double>(), row.number) << row.text;
        EXPECT_EQ(json("["s + row.text + "]")[0].asNumber<double>(), row.number) << row.text;
        EXPECT_EQ(json(R"({"a":)"s + row.text + "}")["a"].asNumber<double>(), row.number)
            << row.text;
    }
}

TEST(JDomParserText, KeepsTheTextOfFractionsAndExponents)
{
    for (const char* text : {"1.10", "1e5", "1.0", "-2.500", "1E5", "1e+05", "0.10e-2"}) {
        EXPECT_EQ(json(text).stringify(), text);
        EXPECT_EQ(json("["s + text + ",1]").stringify(), "["s + text + ",1]");
    }
}

TEST(JDomParserText, ReadsEveryEscape)
{
    struct EscapeRow {
        std::string_view text;
        std::string_view string;
    };
    // clang-format off
    constexpr EscapeRow kRows[] = {
        // text                        string
        {R"("\"\\\/")",                R"("\/)"},
        {R"("\b\f\n\r\t")",            "\b\f\n\r\t"},
        {R"("\u0041\u00e4\u20ac")",    "Aä€"},
        {R"("\u00E4\u20AC")",          "ä€"},
        {R"("\ud83d\ude00")",          "😀"},
        {R"("\uD83D\uDE00")",          "😀"},
        {R"("\u001f\u007f")",          "\x1f\x7f"},
        {R"("\u0000")",                "\0"sv},
        {R"("a\u0000b\u0000")",        "a\0b\0"sv},
        {R"("\\u0000")",               R"(\u0000)"},
        {R"("\\\\n")",                 R"(\\n)"},
        {R"("'")",                     "'"},
        {R"("/* no comment */ //")",   "/* no comment */ //"},
        {R"("[{]},:")",                "[{]},:"},
        {"\"\x7f\"",                   "\x7f"},                 // DEL is allowed
        {"\"\xf4\x8f\xbf\xbf\"",       "\xf4\x8f\xbf\xbf"},     // U+10FFFF, the last one
        {"\"\xef\xbb\xbf\"",           "\xef\xbb\xbf"},         // here no BOM
    };
    // clang-format on
    for (const EscapeRow& row : kRows) {
        std::string string;
        EXPECT_TRUE(json(row.text).asString(string)) << row.text;
        EXPECT_EQ(string, row.string) << row.text;
    }
}

TEST(JDomParserText, ASurrogateAloneNeverBecomesInvalidUtf8)
{
    for (const char* text : {R"("\ud800")", R"("\udc00")", R"("\ud800x")", R"("\ud800\n")",
                             R"("\ud800\u0041")", R"("\ud800\ud800")", R"("\udc00\ud800")"}) {
        JDomParser parser{JSchema::acceptAll()};
        const JValue value = parser.parse(text);
        if (value.isValid()) {
            EXPECT_EQ(json(value.stringify()), value) << text;
        }
    }
}

TEST(JDomParserText, ReadsNestedValuesWithBlanksAnywhere)
{
    const JValue value =
        json("\r\n\t { \"a\" :\t[ 1 ,\n[ ] , { } ,null ] , \"b\" : { \"c\" : false } }\n ");
    EXPECT_EQ(value.stringify(), R"({"a":[1,[],{},null],"b":{"c":false}})");
}

TEST(JDomParserText, AKeyGivenTwiceKeepsItsFirstPlaceAndItsLastValue)
{
    EXPECT_EQ(json(R"({"a":1,"b":2,"a":3})").stringify(), R"({"a":3,"b":2})");
    EXPECT_EQ(json(R"({"a":1,"b":2,"\u0061":3})").stringify(), R"({"a":3,"b":2})");
    EXPECT_EQ(json(R"({"a":{"x":1},"b":2,"a":{"y":2},"a":null})").stringify(),
              R"({"a":null,"b":2})");
    EXPECT_EQ(json(R"({"o":{"a":1,"b":2,"a":[]}})").stringify(), R"({"o":{"a":[],"b":2}})");
}

TEST(JDomParserText, ATextMayBeLargerThanAFile)
{
    const std::string string(JDomParser::kMaxFileBytes, 'x');
    EXPECT_EQ(json("\"" + string + "\"").asString(), string);
}

TEST(JDomParserText, TheTextNeedNotEndInANulCharacter)
{
    const std::string text = "123456";
    EXPECT_EQ(json(std::string_view{text}.substr(0, 3)), JValue{123});
    EXPECT_EQ(json(std::string_view{"[1]]"}.substr(0, 3)).stringify(), "[1]");
    EXPECT_EQ(json(std::string_view{"truely"}.substr(0, 4)), JValue{true});
}

// --- Depth

struct NestingRow {
    const char* what;
    int limit; // how many openings the limit admits
    const char* opening;
    const char* innermost;
    const char* closing;
};
// clang-format off
constexpr NestingRow kNestingRows[] = {
    // what                      limit     opening                 innermost   closing
    {"arrays, empty",            kMax,     "[",                    "",         "]"},
    {"arrays, number",           kMax,     "[",                    "1",        "]"},
    {"arrays, fraction",         kMax,     "[",                    "-1.5",     "]"},
    {"arrays, string",           kMax,     "[",                    R"("x")",   "]"},
    {"arrays, empty string",     kMax,     "[",                    R"("")",    "]"},
    {"arrays, literal",          kMax,     "[",                    "null",     "]"},
    {"arrays, two scalars",      kMax,     "[",                    "true,1",   "]"},
    {"arrays with blanks",       kMax,     " [ ",                  " ",        " ] "},
    {"arrays around an object",  kMax - 1, "[",                    "{}",       "]"},
    {"arrays around a member",   kMax - 1, "[",                    R"({"a":1})", "]"},
    {"arrays after siblings",    kMax - 1, "[[],{},",              "1",        "]"},
    {"arrays before siblings",   kMax - 1, "[",                    "1",        ",{},[]]"},
    {"objects, empty",           kMax - 1, R"({"a":)",             "{}",       "}"},
    {"objects, number",          kMax,     R"({"a":)",             "1",        "}"},
    {"objects, string",          kMax,     R"({"a":)",             R"("x")",   "}"},
    {"objects, literal",         kMax,     R"({"a":)",             "false",    "}"},
    {"objects with blanks",      kMax,     " { \"a\" : ",          "1",        " } "},
    {"objects around an array",  kMax - 1, R"({"a":)",             "[]",       "}"},
    {"objects around elements",  kMax - 1, R"({"a":)",             "[1,2]",    "}"},
    {"objects after siblings",   kMax - 1, R"({"s":[],"t":{},"a":)", "1",      "}"},
    {"objects before siblings",  kMax - 1, R"({"a":)",             "1",        R"(,"s":{},"t":0})"},
    {"both in turn",             kMax / 2, R"([{"a":)",            "1",        "}]"},
};
// clang-format on

TEST(JDomParserDepth, TheLimitIsAcceptedAndOneMoreRefused)
{
    for (const NestingRow& row : kNestingRows) {
        expectAccepted(nested(row.limit, row.opening, row.innermost, row.closing), row.what);
        expectRefused(nested(row.limit + 1, row.opening, row.innermost, row.closing), row.what);
    }
}

TEST(JDomParserDepth, LeavesBuiltValuesRoomToWrapWhatWasParsed)
{
    EXPECT_EQ(JDomParser::kMaxDepth, 64);
    JValue built = JValue::array();
    for (int level = 1; level < kMax; ++level) {
        JValue outer = JValue::array();
        ASSERT_TRUE(outer.append(built)) << level;
        built = outer;
    }
    EXPECT_EQ(json(nested(kMax, "[", "", "]")), built);
    EXPECT_EQ(built.depth(), kMax);
    for (int level = kMax + 1; level <= kMax + 8; ++level) {
        JValue outer = JValue::array();
        ASSERT_TRUE(outer.append(built)) << level;
        built = outer;
    }
    EXPECT_EQ(built.stringify(), nested(kMax + 8, "[", "", "]"));
}

TEST(JDomParserDepth, SiblingsDoNotAddUp)
{
    std::string text = "[0";
    for (int i = 0; i < 3 * kMax; ++i)
        text += R"(,[],{},{"a":[[]]})";
    EXPECT_EQ(json(text + "]").size(), 3U * 3 * kMax + 1);
}

TEST(JDomParserDepth, BracketsInStringsAreNoContainers)
{
    const std::string brackets(2 * kMax, '[');
    EXPECT_EQ(json("[\"" + brackets + "\"]")[0].asString(), brackets);
    EXPECT_TRUE(json("{\"" + std::string(2 * kMax, '{') + "\\\"[[[\":1}").isObject());
    // A closing bracket in a string does not make room either.
    expectRefused(nested(kMax + 1, "[", R"("]")", "]"), "closing bracket in a string");
    expectRefused(nested(kMax, R"(["]]]]",)", "[]", "]"), "closing brackets on the way");
}

TEST(JDomParserDepth, IsRefusedBeforeTheTextIsUsedUp)
{
    expectRefused(std::string(1000000, '['), "a million openings");
    expectRefused(nested(1000000, "[", "", "]"), "a million arrays");
    expectRefused(nested(200000, R"({"a":)", "1", "}"), "200000 objects");
}

// --- NUL in keys

TEST(JDomParserKeys, ANulCharacterInAKeyIsRefused)
{
    constexpr Row kRows[] = {
        // clang-format off
        // what                  text
        {"key",                  R"({"\u0000":1})"},
        {"at the end",           R"({"a\u0000":1})"},
        {"at the start",         R"({"\u0000a":1})"},
        {"in the middle",        R"({"a\u0000b":1})"},
        {"in an inner object",   R"([{"x":{"a\u0000":1}}])"},
        {"second key",           R"({"a":1,"a\u0000":2})"},
        {"blanks before colon",  "{\"a\\u0000\" \t\r\n :1}"},
        {"after a backslash",    R"({"\\\u0000":1})"},
        {"after a quote",        R"({"\"\u0000":1})"},
        {"after a NUL as value", R"({"a":"\u0000","b\u0000":1})"},
        // clang-format on
    };
    expectAllRefused(kRows);
}

TEST(JDomParserKeys, ANulCharacterInAValueIsKept)
{
    EXPECT_EQ(json(R"({"a":"x\u0000y"})")["a"].asString(), "x\0y"s);
    EXPECT_EQ(json(R"({"a":"\u0000","b":1})").stringify(), R"({"a":"\u0000","b":1})");
    EXPECT_EQ(json(R"(["\u0000" , "b"])")[0].asString(), "\0"s);
    EXPECT_EQ(json(R"("\u0000")").asString(), "\0"s);
}

TEST(JDomParserKeys, AnEscapedBackslashBeforeU0000IsNoNul)
{
    const JValue value = json(R"({"\\u0000":1,"a\\\\u0000b":2})");
    EXPECT_EQ(value[R"(\u0000)"], JValue{1});
    EXPECT_EQ(value[R"(a\\u0000b)"], JValue{2});
}

TEST(JDomParserKeys, EveryOtherCharacterIsAllowed)
{
    const JValue value =
        json(R"({"":1," ":2,"\u0001":3,"a\"b":4,"\u00e4":5,"\u0030":6,"\\u0001":7,"/":8})");
    EXPECT_EQ(value.size(), 8U);
    for (const char* key : {"", " ", "\x01", "a\"b", "ä", "0", R"(\u0001)", "/"})
        EXPECT_TRUE(value.hasKey(key)) << key;
}

// --- The reason of a failure

TEST(JDomParserErrorText, IsEmptyAtFirstAndAfterASuccess)
{
    JDomParser parser{JSchema::acceptAll()};
    EXPECT_EQ(parser.errorText(), "");
    EXPECT_FALSE(parser.parse("[1").isValid());
    EXPECT_NE(parser.errorText(), "");
    EXPECT_TRUE(parser.parse("[1]").isValid());
    EXPECT_EQ(parser.errorText(), "");
}

TEST(JDomParserErrorText, IsEmptyAfterANullWasRead)
{
    JDomParser parser{JSchema::acceptAll()};
    EXPECT_FALSE(parser.parse("nul").isValid());
    EXPECT_TRUE(parser.parse("null").isNull());
    EXPECT_EQ(parser.errorText(), "");
}

TEST(JDomParserErrorText, StaysShortForLongTexts)
{
    const std::string filler(100000, 'x');
    for (const std::string& text : {filler, "\"" + filler, "{\"" + filler + "\"}", "[1]" + filler,
                                    "\"" + filler + "\\x\"", "[" + std::string(100000, '1') + "."})
        expectRefused(text, text.substr(0, 20));
}

TEST(JDomParserErrorText, DescribesTheLastFailure)
{
    JDomParser parser{JSchema::acceptAll()};
    EXPECT_FALSE(parser.parse("\"\xff\"").isValid());
    const std::string notUtf8 = parser.errorText();
    EXPECT_FALSE(parser.parse(nested(kMax + 1, "[", "", "]")).isValid());
    const std::string tooDeep = parser.errorText();
    EXPECT_FALSE(parser.parseFile("/nonexistent/file.json").isValid());
    const std::string missing = parser.errorText();
    EXPECT_NE(notUtf8, tooDeep);
    EXPECT_NE(tooDeep, missing);
    EXPECT_NE(missing, notUtf8);
}

TEST(JDomParserValues, OutliveTheParserAndTheNextParse)
{
    JValue first;
    {
        JDomParser parser{JSchema::acceptAll()};
        std::string text = R"({"a":["x"]})";
        first = parser.parse(text);
        text.assign(text.size(), ' ');
        EXPECT_TRUE(parser.parse("[]").isValid());
        EXPECT_FALSE(parser.parse("[").isValid());
    }
    EXPECT_EQ(first.stringify(), R"({"a":["x"]})");
}

} // namespace
