// SPDX-License-Identifier: Apache-2.0
// The text of a line is what printf makes of its format, whatever conversions it has and however
// long it gets.
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "platformlog.h"

namespace
{

class PlatformLogText : public testing::Test
{
protected:
    PlatformLogText()
    {
        LogSetSink([this](const LogMessage& message) { mText = message.text; });
    }
    ~PlatformLogText() override { LogSetSink({}); }

    /// Logs, and expects what printf makes of the same.
    [[gnu::format(printf, 2, 3)]] void expectAsPrinted(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        va_list again;
        va_copy(again, arguments);
        char* wanted = nullptr;
        ASSERT_GE(vasprintf(&wanted, format, arguments), 0);
        mText = "nothing";
        LogMsgPrefixed(mContext, kLogError, "ID", nullptr, 0, "here ", format, again);
        EXPECT_EQ(mText, std::string{"here "} + wanted) << format;
        free(wanted);
        va_end(again);
        va_end(arguments);
    }

    LogContext* const mContext = LogGetContext("text");
    std::string mText;
};

} // namespace

TEST_F(PlatformLogText, HasTextsAndNumbersAmongItsWords)
{
    expectAsPrinted("no more than words");
    expectAsPrinted("%s", "");
    expectAsPrinted("%s", "a text");
    expectAsPrinted("%s%s", "one", "another");
    expectAsPrinted("volume %d on %s, mute %d.", 35, "tv_speaker", 0);
    for (const int number : {0, 1, -1, 10, -99, INT_MAX, INT_MIN})
        expectAsPrinted("<%d>", number);
    for (const unsigned int number : {0U, 9U, 10U, UINT_MAX})
        expectAsPrinted("%u resources", number);
}

TEST_F(PlatformLogText, HasAnyOtherConversion)
{
    expectAsPrinted("%5d|%-5d|%05d", 42, 42, 42);
    expectAsPrinted("%x %ld %zu %c", 255U, LONG_MIN, std::size_t{7}, 'c');
    expectAsPrinted("100 %% of %s", "it");
    expectAsPrinted("%s takes %.2f ms", "a write", 0.25);
    expectAsPrinted("%.3s of %s", "abcdef", "letters");
}

TEST_F(PlatformLogText, TakesANullForAText)
{
    const char* volatile none = nullptr; // not for the compiler to see
    expectAsPrinted("it is %s.", none);
}

TEST_F(PlatformLogText, IsWholeHoweverLong)
{
    for (std::size_t length = 1000; length < 1060; ++length) {
        const std::string text(length, 'x');
        expectAsPrinted("%s", text.c_str());
        expectAsPrinted("%s%d", text.c_str(), -12345);
        expectAsPrinted("%d, %s!", 7, text.c_str());
        expectAsPrinted("%s%u", text.c_str(), 10U);
    }
    expectAsPrinted("%s", std::string(100'000, 'y').c_str());
}
