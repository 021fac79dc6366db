// SPDX-License-Identifier: Apache-2.0
// The JSON parser: what it accepts, what it refuses, and which files it reads.
#include "jdomparser.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "jsonvalues.h"
#include "jvalue.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr int kMax = JValue::kMaxDepth;

struct Row {
    const char* what;
    std::string_view text;
};

void expectAccepted(std::string_view text, const std::string& what)
{
    JDomParser parser{JSchema::acceptAll()};
    EXPECT_TRUE(parser.parse(text).isValid()) << what << ": " << parser.errorText();
    EXPECT_EQ(parser.errorText(), "") << what;
}

void expectRefused(std::string_view text, const std::string& what)
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
std::string nested(int depth, const std::string& opening, const std::string& innermost,
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

// --- Texts that are none

TEST(JDomParserStrictness, RefusesEveryOtherFormOfNumber)
{
    // Each of them also inside containers, where the character that follows is another.
    for (const std::string text :
         {"01",    "-01",   "00",    "-00", "007", "1.",   "-1.",  "0.",   ".5",      "-.5",  "+1",
          "+",     "-",     "--1",   "-+1", "1e",  "1E",   "1e+",  "1e-",  "1.e5",    "1.5e", "e5",
          "1e5.5", "1.2.3", "1e5e5", "1-2", "1+2", "0x10", "0X1F", "0b1",  "1_000",   "1f",   "1L",
          "1a",    "0e",    "-e5",   "1,5", "1 5", "- 1",  "1.5.", "1e 5", "\xd9\xa1"}) {
        expectRefused(text, text);
        expectRefused("-" + text, "-" + text);
        expectRefused("{\"a\":" + text + "}", "member " + text);
        if (text != "1,5") // two numbers there
            expectRefused("[" + text + "]", "element " + text);
    }
}

TEST(JDomParserStrictness, RefusesWordsThatAreNoLiterals)
{
    for (const std::string text :
         {"TRUE",      "True",      "tRUE",      "FALSE", "False", "NULL",     "Null",
          "nul",       "tru",       "fals",      "t",     "n",     "truee",    "nulll",
          "true1",     "truefalse", "NaN",       "nan",   "-NaN",  "Infinity", "-Infinity",
          "+Infinity", "infinity",  "-infinity", "inf",   "Inf",   "-inf",     "INFINITY",
          "nil",       "none",      "undefined", "yes",   "abc"}) {
        expectRefused(text, text);
        expectRefused("[" + text + "]", "element " + text);
        expectRefused("{\"a\":" + text + "}", "member " + text);
        expectRefused("{" + text + ":1}", "key " + text);
    }
}

TEST(JDomParserStrictness, RefusesStringsThatAreNone)
{
    // clang-format off
    constexpr Row kRows[] = {
        // what                            text
        {"single quotes",                  "'a'"},
        {"single quotes, empty",           "''"},
        {"single quotes in an array",      "['a']"},
        {"single quotes around a key",     "{'a':1}"},
        {"single quotes, empty key",       "{'':1}"},
        {"single quotes, number as key",   "{'1':1}"},
        {"single quotes, literal as key",  "{'true':1}"},
        {"single quotes, number in them",  "'1'"},
        {"single quotes around a value",   R"({"a":'b'})"},
        {"backquotes",                     "`a`"},
        {"mixed quotes",                   "\"a'"},
        {"no quotes around a key",         "{a:1}"},
        {"number as a key",                "{1:2}"},
        {"literal as a key",               "{null:1}"},
        {"raw NUL in a string",            "\"a\0b\""sv},
        {"raw newline in a string",        "\"a\nb\""},
        {"raw return in a string",         "\"a\rb\""},
        {"raw tab in a string",            "\"a\tb\""},
        {"raw 0x01 in a string",           "\"\x01\""},
        {"raw 0x1f in a string",           "\"\x1f\""},
        {"raw newline in a key",           "{\"a\nb\":1}"},
        {"raw tab in a key",               "{\"\t\":1}"},
        {"escaped newline",                "\"a\\\nb\""},
        {"escape x",                       R"("\x41")"},
        {"escape a",                       R"("\a")"},
        {"escape v",                       R"("\v")"},
        {"escape e",                       R"("\e")"},
        {"escape 0",                       R"("\0")"},
        {"escape '",                       R"("\'")"},
        {"escape of a blank",              R"("\ ")"},
        {"escape U",                       R"("\U0041")"},
        {"escape N",                       R"("\N")"},
        {"escape of a NUL",                "\"\\\0\""sv},
        {"escape of a wide character",     "\"\\ä\""},
        {"no digits",                      R"("\u")"},
        {"three digits",                   R"("\u041")"},
        {"three digits, then no digit",    R"("\u004G")"},
        {"sign among the digits",          R"("\u+041")"},
        {"blank among the digits",         R"("\u 041")"},
        {"0x among the digits",            R"("\u0x41")"},
        {"half a pair, then no digits",    R"("\ud83d\u")"},
        {"half a pair, then a bad escape", R"("\ud83d\x")"},
        {"bad escape in a key",            R"({"\x":1})"},
        {"backslash outside a string",     R"(\"a")"},
        {"escape outside a string",        R"(\u0031)"},
    };
    // clang-format on
    expectAllRefused(kRows);
}

TEST(JDomParserStrictness, RefusesEveryRawControlCharacterInAString)
{
    for (char c = 0; c < 0x20; ++c) {
        const std::string what = "character " + std::to_string(c);
        expectRefused("\""s + c + "\"", what);
        expectRefused("{\"a"s + c + "\":1}", what + " in a key");
    }
}

TEST(JDomParserStrictness, RefusesABrokenStructure)
{
    // clang-format off
    constexpr Row kRows[] = {
        // what                        text
        {"trailing comma, array",      "[1,]"},
        {"trailing comma, blank",      "[1, ]"},
        {"trailing comma, object",     R"({"a":1,})"},
        {"trailing comma, inner",      R"({"a":[1,],"b":2})"},
        {"comma alone, array",         "[,]"},
        {"comma alone, object",        "{,}"},
        {"leading comma, array",       "[,1]"},
        {"leading comma, object",      R"({,"a":1})"},
        {"two commas, array",          "[1,,2]"},
        {"two commas, object",         R"({"a":1,,"b":2})"},
        {"no comma, array",            R"([1 "a"])"},
        {"no comma, numbers",          "[1 2]"},
        {"no comma, arrays",           "[[][]]"},
        {"no comma, object",           R"({"a":1 "b":2})"},
        {"no comma, strings",          R"(["a""b"])"},
        {"no colon",                   R"({"a" 1})"},
        {"two colons",                 R"({"a"::1})"},
        {"equals sign",                R"({"a"=1})"},
        {"colon in an array",          R"(["a":1])"},
        {"key alone",                  R"({"a"})"},
        {"no value",                   R"({"a":})"},
        {"no value, then a member",    R"({"a":,"b":1})"},
        {"no key",                     "{:1}"},
        {"array as a key",             "{[]:1}"},
        {"object as a key",            "{{}:1}"},
        {"mismatched, array",          "[1}"},
        {"mismatched, object",         R"({"a":1])"},
        {"crossed",                    R"([{"a":1]})"},
        {"closed, never opened",       "]"},
        {"object closed, not opened",  "}"},
        {"comma",                      ","},
        {"colon",                      ":"},
        {"round brackets",             "(1)"},
        {"semicolon",                  "[1;2]"},
        {"block comment before",       "/* a */ 1"},
        {"block comment after",        "1 /* a */"},
        {"block comment inside",       "[1, /* a */ 2]"},
        {"block comment as a value",   R"({"a":/**/1})"},
        {"line comment before",        "// a\n1"},
        {"line comment after",         "{} // a"},
        {"line comment inside",        "[1, // a\n2]"},
        {"hash comment",               "# a\n1"},
        {"form feed as a blank",       "[1,\f2]"},
        {"vertical tab as a blank",    "[1,\v2]"},
        {"no-break space as a blank",  "[1,\xc2\xa0" "2]"},
        {"line separator as a blank",  "[1,\xe2\x80\xa8" "2]"},
    };
    // clang-format on
    expectAllRefused(kRows);
}

TEST(JDomParserStrictness, RefusesTextAfterTheValue)
{
    // clang-format off
    constexpr Row kRows[] = {
        // what                          text
        {"word",                         "{} x"},
        {"word without a blank",         "{}x"},
        {"second object",                "{}{}"},
        {"second object after a line",   "{}\n{}"},
        {"second array",                 "[][]"},
        {"number after an object",       "{} 1"},
        {"literal after an array",       "[] null"},
        {"string after a string",        R"("a" "b")"},
        {"string after a string, tight", R"("a""b")"},
        {"number after a number",        "1 2"},
        {"array after a number",         "1[]"},
        {"array after a literal",        "true[]"},
        {"string after a literal",       R"(null"")"},
        {"comma",                        "{},"},
        {"comma after a number",         "1,"},
        {"colon after a string",         R"("a":)"},
        {"member without an object",     R"("a":1)"},
        {"bracket",                      "[]]"},
        {"brace",                        "{}}"},
        {"bracket after a number",       "1]"},
        {"brace after a blank",          "{} }"},
        {"quote",                        "{}\""},
        {"semicolon",                    "{};"},
        {"NUL",                          "{}\0"sv},
        {"NUL after a number",           "1\0"sv},
        {"NUL after a literal",          "true\0"sv},
        {"NUL after a string",           "\"a\"\0"sv},
        {"NUL after a blank",            "{} \0"sv},
        {"NUL, then a word",             "{}\0x"sv},
        {"NUL, then a value",            "{}\0{}"sv},
    };
    // clang-format on
    expectAllRefused(kRows);
}

TEST(JDomParserStrictness, RefusesANulCharacterAnywhere)
{
    const std::string text = R"( { "a" : [ 1 , true ] } )";
    for (std::size_t at = 0; at <= text.size(); ++at) {
        std::string broken = text;
        broken.insert(at, 1, '\0');
        expectRefused(broken, "NUL at " + std::to_string(at));
    }
    expectRefused("\0"sv, "NUL alone");
}

TEST(JDomParserStrictness, RefusesWhatIsNotUtf8)
{
    constexpr Row kRows[] = {
        // clang-format off
        // what                            bytes
        {"0xff alone",                     "\xff"},
        {"0xfe alone",                     "\xfe"},
        {"continuation byte alone",        "\x80"},
        {"Latin-1",                        "\xe4"},
        {"cut after one of two",           "\xc3"},
        {"cut after two of three",         "\xe2\x82"},
        {"cut after three of four",        "\xf0\x9f\x98"},
        {"overlong NUL",                   "\xc0\x80"},
        {"overlong slash in two",          "\xc0\xaf"},
        {"overlong slash in three",        "\xe0\x80\xaf"},
        {"overlong slash in four",         "\xf0\x80\x80\xaf"},
        {"overlong quote",                 "\xc0\xa2"},
        {"first surrogate",                "\xed\xa0\x80"},
        {"last surrogate",                 "\xed\xbf\xbf"},
        {"surrogate pair",                 "\xed\xa0\xbd\xed\xb8\x80"},
        {"U+110000",                       "\xf4\x90\x80\x80"},
        {"five bytes",                     "\xf8\x88\x80\x80\x80"},
        {"six bytes",                      "\xfc\x84\x80\x80\x80\x80"},
        // clang-format on
    };
    for (const Row& row : kRows) {
        const std::string bytes{row.text};
        expectRefused("\"" + bytes + "\"", row.what + " in a string"s);
        expectRefused("{\"" + bytes + "\":1}", row.what + " in a key"s);
        expectRefused("[1]" + bytes, row.what + " after the value"s);
        expectRefused(bytes, row.what);
    }
}

TEST(JDomParserStrictness, RefusesAByteOrderMark)
{
    expectRefused("\xef\xbb\xbf{}", "UTF-8 BOM");
    expectRefused("\xef\xbb\xbf", "UTF-8 BOM alone");
    expectRefused("\xff\xfe{\0}\0"sv, "UTF-16");
    expectRefused("{\0}\0"sv, "UTF-16 without a BOM");
}

TEST(JDomParserStrictness, RefusesTextsWithoutAValue)
{
    constexpr Row kRows[] = {
        {"empty", ""},     {"no text at all", std::string_view{}},
        {"blank", " "},    {"blanks", " \t\r\n "},
        {"newline", "\n"}, {"many blanks", "                                        "},
    };
    expectAllRefused(kRows);
}

TEST(JDomParserStrictness, RefusesEveryTruncation)
{
    for (const std::string text :
         {R"({"a":[1,-2.5e3,true,null,"x\u0041\n\\"],"b":{"c":false}})", R"([{"a":{}},[[]],"ä"])",
          R"("\ud83d\ude00")", "true", "null", "false"}) {
        expectAccepted(text, text);
        for (std::size_t length = 0; length < text.size(); ++length)
            expectRefused(text.substr(0, length), text.substr(0, length));
    }
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

TEST(JDomParserDepth, IsThatOfBuiltValues)
{
    EXPECT_EQ(JValue::kMaxDepth, 64);
    JValue built = JValue::array();
    for (int level = 1; level < kMax; ++level) {
        JValue outer = JValue::array();
        ASSERT_TRUE(outer.append(built)) << level;
        built = outer;
    }
    EXPECT_EQ(json(nested(kMax, "[", "", "]")), built);
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

// --- Files

/// A directory of its own for each test, gone after it.
class JDomParserFile : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "jdomparser_test_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr) << name;
        mDirectory = name;
        ASSERT_EQ(chmod(name.c_str(), 0755), 0); // reachable for a user without rights, too
        alarm(kDeadlineSeconds);                 // a read that waits ends the test program
    }

    void TearDown() override
    {
        alarm(0);
        if (!mDirectory.empty())
            std::filesystem::remove_all(mDirectory);
    }

    [[nodiscard]] std::string path(const std::string& name) const
    {
        return mDirectory + "/" + name;
    }

    [[nodiscard]] std::string fileWith(const std::string& name, std::string_view content) const
    {
        std::ofstream file{path(name), std::ios::binary};
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        file.close();
        EXPECT_TRUE(file.good()) << path(name);
        return path(name);
    }

    JValue parseFile(const std::string& file) { return mParser.parseFile(file); }

    void expectFileRefused(const std::string& file, const std::string& what)
    {
        const JValue value = parseFile(file);
        EXPECT_FALSE(value.isValid()) << what << " was read as " << value.stringify();
        EXPECT_NE(mParser.errorText(), "") << what;
        EXPECT_LE(mParser.errorText().size(), JDomParser::kMaxErrorBytes) << what;
    }

    static constexpr unsigned int kDeadlineSeconds = 60;

    std::string mDirectory;
    JDomParser mParser{JSchema::acceptAll()};
};

/// Takes root's rights from the process for a while, so that the permission bits count.
class WithoutRights
{
public:
    WithoutRights()
    {
        if (geteuid() != 0)
            return;
        mTaken = setegid(kNobody) == 0 && seteuid(kNobody) == 0;
        EXPECT_TRUE(mTaken);
    }
    ~WithoutRights()
    {
        if (!mTaken)
            return;
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_EQ(setegid(0), 0);
        EXPECT_EQ(prctl(PR_SET_DUMPABLE, 1),
                  0); // a leak check at exit needs what seteuid switched off
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    static constexpr unsigned int kNobody = 65534;
    bool mTaken = false;
};

/// A string as a JSON text of that many bytes.
std::string textOfSize(std::size_t bytes)
{
    return "\"" + std::string(bytes - 2, 'x') + "\"";
}

TEST_F(JDomParserFile, IsReadWhole)
{
    const std::string file = fileWith("good.json", "{\"a\": [1, \"ä\\u0000\"]}\n");
    EXPECT_EQ(parseFile(file).stringify(), R"({"a":[1,"ä\u0000"]})");
    EXPECT_EQ(mParser.errorText(), "");
}

TEST_F(JDomParserFile, MayHoldAnyValue)
{
    EXPECT_EQ(parseFile(fileWith("array", "[1,2]\n")).stringify(), "[1,2]");
    EXPECT_EQ(parseFile(fileWith("number", "12")), JValue{12});
    EXPECT_EQ(parseFile(fileWith("string", R"("x")")), JValue{"x"});
    EXPECT_TRUE(parseFile(fileWith("null", "null\n")).isNull());
    EXPECT_EQ(mParser.errorText(), "");
}

TEST_F(JDomParserFile, IsHeldToTheSameRulesAsAText)
{
    const Row rows[] = {
        // clang-format off
        // what             content
        {"empty",           ""},
        {"blanks",          " \n"},
        {"invalid",         "{\"a\":}"},
        {"truncated",       "{\"a\":1"},
        {"two values",      "{}\n{}\n"},
        {"comment",         "// a\n{}"},
        {"not UTF-8",       "\"\xe4\""},
        {"BOM",             "\xef\xbb\xbf{}"},
        {"NUL at the end",  "{}\0"sv},
        {"NUL in a key",    R"({"a\u0000":1})"},
        {"binary",          "\x7f" "ELF\x02\x01\x01\0\0"sv},
        // clang-format on
    };
    for (const Row& row : rows)
        expectFileRefused(fileWith("file", row.text), row.what);
    expectFileRefused(fileWith("deep", nested(kMax + 1, "[", "", "]")), "too deep");
    EXPECT_TRUE(parseFile(fileWith("deep", nested(kMax, "[", "", "]"))).isArray());
}

TEST_F(JDomParserFile, OfOneMebibyteIsAcceptedAndOneByteMoreRefused)
{
    EXPECT_EQ(JDomParser::kMaxFileBytes, 1048576U);
    EXPECT_EQ(parseFile(fileWith("limit", textOfSize(1048576))).asString().size(), 1048574U);
    EXPECT_EQ(mParser.errorText(), "");
    expectFileRefused(fileWith("above", textOfSize(1048577)), "one byte more");
    // Blanks count as well; a file that is cut at the limit would be a valid text here.
    EXPECT_TRUE(parseFile(fileWith("blanks", "{}" + std::string(1048574, ' '))).isObject());
    expectFileRefused(fileWith("blanks", "{}" + std::string(1048575, ' ')), "one blank more");
    expectFileRefused(fileWith("large", "{}" + std::string(3 * 1048576, ' ')), "three times that");
}

TEST_F(JDomParserFile, ThatIsMissingIsRefused)
{
    expectFileRefused(path("missing.json"), "missing file");
    expectFileRefused(path("missing/file.json"), "missing directory");
    expectFileRefused("", "empty path");
    expectFileRefused(fileWith("file", "{}") + "/", "file as a directory");
    expectFileRefused(path(std::string(10000, 'x')), "path too long");
}

TEST_F(JDomParserFile, PathsWithANulCharacterNameNoFile)
{
    const std::string file = fileWith("good.json", "{}");
    expectFileRefused(file + "\0"s, "NUL at the end");
    expectFileRefused(file + "\0.bak"s, "NUL in the middle");
}

TEST_F(JDomParserFile, IsFoundThroughASymlink)
{
    const std::string file = fileWith("good.json", "[1]");
    ASSERT_EQ(symlink(file.c_str(), path("link").c_str()), 0);
    EXPECT_EQ(parseFile(path("link")).stringify(), "[1]");

    ASSERT_EQ(symlink("nowhere", path("dangling").c_str()), 0);
    expectFileRefused(path("dangling"), "symlink to nothing");
    ASSERT_EQ(symlink("loop", path("loop").c_str()), 0);
    expectFileRefused(path("loop"), "symlink to itself");
}

TEST_F(JDomParserFile, ThatIsADirectoryIsRefused)
{
    expectFileRefused(mDirectory, "directory");
    expectFileRefused(mDirectory + "/", "directory with a slash");
    ASSERT_EQ(symlink(mDirectory.c_str(), path("link").c_str()), 0);
    expectFileRefused(path("link"), "symlink to a directory");
}

TEST_F(JDomParserFile, ThatIsAFifoIsRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    expectFileRefused(path("fifo"), "FIFO");
    ASSERT_EQ(symlink("fifo", path("link").c_str()), 0);
    expectFileRefused(path("link"), "symlink to a FIFO");
}

TEST_F(JDomParserFile, ThatIsAFifoIsRefusedEvenWithAValueWaitingInIt)
{
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    const int both = open(path("fifo").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(both, 0);
    ASSERT_EQ(write(both, "{}", 2), 2);
    expectFileRefused(path("fifo"), "FIFO with a value");
    char left[3] = {};
    EXPECT_EQ(read(both, left, sizeof left), 2) << "nothing was taken from it";
    close(both);
}

TEST_F(JDomParserFile, IsNotEvenOpenedUnlessItIsRegular)
{
    const std::string file = fileWith("file", "{}");
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    ASSERT_EQ(mkdir(path("directory").c_str(), 0755), 0);

    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(watch, 0);
    for (const std::string& watched : {file, path("fifo"), path("directory")})
        ASSERT_GE(inotify_add_watch(watch, watched.c_str(), IN_OPEN), 0) << watched;
    std::array<char, 4096> events{};
    expectFileRefused(path("fifo"), "FIFO");
    expectFileRefused(path("directory"), "directory");
    EXPECT_LT(read(watch, events.data(), events.size()), 0) << "something was opened";
    EXPECT_TRUE(parseFile(file).isObject());
    EXPECT_GT(read(watch, events.data(), events.size()), 0) << "an opening would not be seen";
    close(watch);
}

TEST_F(JDomParserFile, ThatIsADeviceIsRefused)
{
    expectFileRefused("/dev/null", "/dev/null");
    expectFileRefused("/dev/zero", "/dev/zero");
}

TEST_F(JDomParserFile, ThatMustNotBeReadIsRefused)
{
    const std::string readable = fileWith("readable.json", "{}");
    const std::string unreadable = fileWith("unreadable.json", "{}");
    ASSERT_EQ(mkdir(path("closed").c_str(), 0755), 0);
    const std::string inside = fileWith("closed/file.json", "{}");
    ASSERT_EQ(chmod(readable.c_str(), 0444), 0);
    ASSERT_EQ(chmod(unreadable.c_str(), 0000), 0);
    ASSERT_EQ(chmod(path("closed").c_str(), 0000), 0);
    {
        const WithoutRights withoutRights;
        EXPECT_TRUE(parseFile(readable).isObject()) << mParser.errorText();
        expectFileRefused(unreadable, "no right to read");
        expectFileRefused(inside, "no right to enter the directory");
    }
    ASSERT_EQ(chmod(path("closed").c_str(), 0755), 0); // to be removed
}

TEST_F(JDomParserFile, LeavesNoFileOpen)
{
    const auto openFiles = [] {
        const std::filesystem::directory_iterator entries{"/proc/self/fd"};
        return std::distance(begin(entries), end(entries));
    };
    const std::string good = fileWith("good", "{}");
    const std::string bad = fileWith("bad", "{");
    const std::string large = fileWith("large", textOfSize(1048577));
    const auto before = openFiles();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(parseFile(good).isValid());
        expectFileRefused(bad, "invalid");
        expectFileRefused(large, "too large");
        expectFileRefused(mDirectory, "directory");
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(JDomParserFile, AfterAFailureTheNextOneIsRead)
{
    expectFileRefused(path("missing"), "missing file");
    EXPECT_TRUE(parseFile(fileWith("good", "{}")).isObject());
    EXPECT_EQ(mParser.errorText(), "");
    expectFileRefused(fileWith("bad", "{"), "invalid");
    EXPECT_TRUE(mParser.parse("1").isNumber());
    EXPECT_EQ(mParser.errorText(), "");
}

} // namespace
