// SPDX-License-Identifier: Apache-2.0
// Lines on standard error are those that GLib makes, also where they are made without it; and what
// happens to a line for which there is no memory.
#include <clocale>
#include <iterator>
#include <regex>
#include <string>

#include <glib.h>
#include <gmock/gmock.h>

#include "platformlog.h"
#include "platformlogtest.h"

// The sanitizers have a malloc of their own.
#ifndef KEP_SANITIZED
#define KEP_OWN_MALLOC

namespace
{

bool gNoMemory = false; // for what is large; set by one test

} // namespace

extern "C" {
void* __libc_malloc(std::size_t size) noexcept;

// Stands in front of the C library's, for this program and all of its libraries.
[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept
{
    return gNoMemory && size >= 1024 ? nullptr : __libc_malloc(size);
}
}
#endif

namespace
{

/// The line without its time of day.
std::string timeless(const std::string& line)
{
    static const std::regex kTime{"[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}"};
    return std::regex_replace(line, kTime, "TIME");
}

struct LevelRow {
    int level;
    GLogLevelFlags glib;
};
constexpr LevelRow kLevelRows[] = {
    {kLogError, G_LOG_LEVEL_CRITICAL},
    {kLogWarning, G_LOG_LEVEL_WARNING},
    {kLogInfo, G_LOG_LEVEL_INFO},
    {kLogDebug, G_LOG_LEVEL_DEBUG},
};

std::string lineOfGlib(const char* context, const LevelRow& row, const std::string& text)
{
    const GLogField fields[] = {{"GLIB_DOMAIN", context, -1}, {"MESSAGE", text.c_str(), -1}};
    char* line = g_log_writer_format_fields(row.glib, fields, std::size(fields), FALSE);
    const std::string copy = line;
    g_free(line);
    return copy;
}

using LogLinesOnStandardError = Log;

TEST_F(LogLinesOnStandardError, AreThoseOfGlib)
{
    LogContext* context = LogGetContext("lines");
    LogSetLevel(context, kLogDebug);
    constexpr LogPair kPairs[] = {{"KEY", "value"}, {"OTHER", "%s"}};
    for (const char* locale : {"C", "C.UTF-8"}) {
        setlocale(LC_ALL, locale);
        for (const LevelRow& row : kLevelRows) {
            for (const std::string& text :
                 {std::string{}, std::string{"plain ~"}, std::string{"a\nb\tc\n"},
                  std::string{"cr\r\nx\ry"}, std::string{"Lautst\xc3\xa4rke \xe2\x82\xac"},
                  std::string{"\xff\xfe"}, std::string{"\x1b[31m\x7f"}, std::string(5000, 'x')}) {
                Captured captured;
                LogMsgKV(context, row.level, "ID", kPairs, std::size(kPairs), "%s", text.c_str());
                LogMsgKV(context, row.level, nullptr, nullptr, 0, "%s", text.c_str());
                const std::string expected = lineOfGlib("lines", row, text);
                EXPECT_EQ(timeless(captured.err()),
                          timeless(expected + "  ID\n" + expected + "\n"));
            }
        }
    }
}

TEST_F(LogLinesOnStandardError, BearNamesOfEveryLengthWhole)
{
    for (const std::size_t length : {1U, 900U, 1024U, 1025U, 2048U, 2100U, 9000U}) {
        const std::string name(length, 'n');
        LogContext* context = LogGetContext(name.c_str());
        for (const LevelRow& row : kLevelRows) {
            LogSetLevel(context, row.level);
            Captured captured;
            LogMsgKV(context, row.level, "ID", nullptr, 0, "text");
            EXPECT_EQ(timeless(captured.err()),
                      timeless(lineOfGlib(name.c_str(), row, "text") + "  ID\n"))
                << length;
        }
    }
}

TEST_F(LogLinesOnStandardError, BearNoNameWithoutAContext)
{
    Captured captured;
    LogMsgKV(nullptr, kLogError, "", nullptr, 0, "text");
    EXPECT_EQ(timeless(captured.err()), timeless(lineOfGlib("", kLevelRows[0], "text") + "\n"));
}

#ifdef KEP_OWN_MALLOC
TEST_F(LogLinesOnStandardError, ThatAreLongAreCutWhenThereIsNoMemory)
{
    const std::string text(2000, 'x');
    std::string seen;
    LogSetSink([&seen](const LogMessage& message) {
        gNoMemory = false;
        seen = message.text;
    });
    gNoMemory = true;
    LogMsgKV(nullptr, kLogError, "", nullptr, 0, "%s", text.c_str());
    gNoMemory = false;
    ASSERT_GT(seen.size(), 900U);
    EXPECT_EQ(seen, text.substr(0, seen.size() - 3) + "...");
}
#endif

} // namespace
