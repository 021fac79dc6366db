// SPDX-License-Identifier: Apache-2.0
// Names as numbers: equal where the names are.
#include "shortname.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

using std::string_literals::operator""s;

TEST(ShortName, IsEqualToItselfOnly)
{
    const std::vector<std::string> names = {
        "",     "A",     "B",     "AB",      "BA",     "ABC",      "ADEC",    "adec",
        "BDEC", "ADEC0", "ADEC1", "AMIXER",  "AMIXES", "AMIXER0",  "AMIXER7", "XMIXER7",
        "A\0"s, "\0A"s,  "\0"s,   "ADEC\0"s, "\xff",   "\xff\xfe", "ADEC0 ",
    };
    for (const std::string& one : names)
        for (const std::string& other : names)
            EXPECT_EQ(ShortName{one} == ShortName{other}, one == other) << one << ", " << other;
}

TEST(ShortName, IsTheSameAtCompileTime)
{
    constexpr ShortName kNames[] = {ShortName{""}, ShortName{"SUB"}, ShortName{"MAIN"},
                                    ShortName{"ADEC0"}, ShortName{"AMIXER0"}};
    const std::vector<std::string> names = {"", "SUB", "MAIN", "ADEC0", "AMIXER0"};
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_TRUE(ShortName{names[i]} == kNames[i]) << names[i];
}

TEST(ShortName, ThatIsTooLongIsNoShortOne)
{
    for (const std::string name : {"AMIXER0", "AMIXER", ""})
        EXPECT_FALSE(ShortName{name} == ShortName{name + "longer by far"}) << name;
}
