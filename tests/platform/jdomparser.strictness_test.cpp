// SPDX-License-Identifier: Apache-2.0
// The JSON parser: the texts that it refuses.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "jdomparsertest.h"

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

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

} // namespace
