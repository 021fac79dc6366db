// SPDX-License-Identifier: Apache-2.0
// The room of a plain format; what it writes there is compared in platformlog.text_test.cpp.
#include "plainformat.h"

#include <cstdarg>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace
{

constexpr std::size_t kBeyond = 4;

/// What stands in so much room, and in the bytes after it, 'x' before; "no" when it does not fit.
[[gnu::format(printf, 2, 3)]] std::string written(std::size_t room, const char* format, ...)
{
    std::string text(room + kBeyond, 'x');
    va_list arguments;
    va_start(arguments, format);
    const bool fits = formatPlain({text.data(), room}, format, arguments);
    va_end(arguments);
    EXPECT_EQ(text.substr(room), std::string(kBeyond, 'x')) << "written beyond " << room;
    return fits ? text.substr(0, room) : "no";
}

} // namespace

TEST(PlainFormat, FitsWithItsEnd)
{
    using std::string_literals::operator""s;
    EXPECT_EQ(written(7, "%s %d", "abc", 42), "abc 42\0"s);
    EXPECT_EQ(written(6, "%s %d", "abc", 42), "no");
    EXPECT_EQ(written(5, "%s %d", "abc", 42), "no");
    EXPECT_EQ(written(4, "%s %d", "abc", 42), "no");
    EXPECT_EQ(written(3, "%s", "abc"), "no");
    EXPECT_EQ(written(3, "words"), "no");
}

TEST(PlainFormat, LeavesOtherConversionsToOthers)
{
    EXPECT_EQ(written(20, "%x", 255U), "no");
    EXPECT_EQ(written(20, "%5d", 1), "no");
    EXPECT_EQ(written(20, "100 %%"), "no");
}
