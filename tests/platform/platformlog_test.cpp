// SPDX-License-Identifier: Apache-2.0
// Logging: contexts, levels, and what is written without a sink.
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platformlog.h"
#include "platformlogtest.h"

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

// --- Contexts

using LogContexts = Log;

TEST_F(LogContexts, TheSameNameIsTheSameContext)
{
    LogContext* first = LogGetContext("same");
    const std::string equalName = "same";
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(LogGetContext(equalName.c_str()), first);
    EXPECT_NE(LogGetContext("Same"), first);
    EXPECT_NE(LogGetContext("same "), first);
    EXPECT_NE(LogGetContext("sam"), first);
}

TEST_F(LogContexts, NoNameIsNoContext)
{
    EXPECT_EQ(LogGetContext(nullptr), nullptr);
    EXPECT_EQ(LogGetContext(""), nullptr);
}

TEST_F(LogContexts, StartAtLevelInfo)
{
    EXPECT_EQ(LogGetLevel(LogGetContext("new")), kLogInfo);
}

TEST_F(LogContexts, KeepTheirLevelWhenAskedForAgain)
{
    LogSetLevel(LogGetContext("kept"), kLogDebug);
    EXPECT_EQ(LogGetLevel(LogGetContext("kept")), kLogDebug);
    LogSetLevel(LogGetContext("kept"), kLogError);
    EXPECT_EQ(LogGetLevel(LogGetContext("kept")), kLogError);
}

TEST_F(LogContexts, HaveLevelsOfTheirOwn)
{
    LogContext* quiet = LogGetContext("quiet");
    LogContext* chatty = LogGetContext("chatty");
    LogSetLevel(quiet, kLogError);
    LogSetLevel(chatty, kLogDebug);
    EXPECT_EQ(LogGetLevel(quiet), kLogError);
    EXPECT_EQ(LogGetLevel(chatty), kLogDebug);
}

TEST_F(LogContexts, StayValidWhenManyOthersAreMade)
{
    LogContext* first = LogGetContext("first of many");
    LogSetLevel(first, kLogDebug);
    std::set<LogContext*> all{first};
    for (int i = 0; i < 1000; ++i)
        all.insert(LogGetContext(("one of many " + std::to_string(i)).c_str()));
    EXPECT_THAT(all, SizeIs(1001));
    EXPECT_EQ(LogGetContext("first of many"), first);
    EXPECT_EQ(LogGetLevel(first), kLogDebug);
}

TEST_F(LogContexts, KeepACopyOfTheirName)
{
    std::string name = "borrowed name";
    LogContext* context = LogGetContext(name.c_str());
    name.assign(name.size(), 'x');
    record();
    write(context, kLogError, "text");
    EXPECT_EQ(message().context, "borrowed name");
    EXPECT_EQ(LogGetContext("borrowed name"), context);
}

TEST_F(LogContexts, NullAdmitsErrorsAndHasNoLevelToSet)
{
    EXPECT_EQ(LogGetLevel(nullptr), kLogError);
    LogSetLevel(nullptr, kLogDebug);
    EXPECT_EQ(LogGetLevel(nullptr), kLogError);
}

// --- Levels

struct AdmissionRow {
    int contextLevel;
    int messageLevel;
    bool admitted;
};
// clang-format off
constexpr AdmissionRow kAdmissionRows[] = {
    // context     message      admitted
    {kLogError,   kLogError,   true},
    {kLogError,   kLogWarning, false},
    {kLogError,   kLogInfo,    false},
    {kLogError,   kLogDebug,   false},
    {kLogWarning, kLogError,   true},
    {kLogWarning, kLogWarning, true},
    {kLogWarning, kLogInfo,    false},
    {kLogWarning, kLogDebug,   false},
    {kLogInfo,    kLogError,   true},
    {kLogInfo,    kLogWarning, true},
    {kLogInfo,    kLogInfo,    true},
    {kLogInfo,    kLogDebug,   false},
    {kLogDebug,   kLogError,   true},
    {kLogDebug,   kLogWarning, true},
    {kLogDebug,   kLogInfo,    true},
    {kLogDebug,   kLogDebug,   true},
};
// clang-format on

std::string nameOf(const AdmissionRow& row)
{
    return "context " + std::to_string(row.contextLevel) + " message " +
           std::to_string(row.messageLevel);
}

using LogLevels = Log;

TEST_F(LogLevels, AreThoseOfSyslog)
{
    EXPECT_EQ(kLogError, 3);
    EXPECT_EQ(kLogWarning, 4);
    EXPECT_EQ(kLogInfo, 6);
    EXPECT_EQ(kLogDebug, 7);
}

TEST_F(LogLevels, AMessageIsWrittenWhenItsLevelIsAtMostThatOfItsContext)
{
    LogContext* context = LogGetContext("levels");
    record();
    std::vector<std::string> expected;
    for (const AdmissionRow& row : kAdmissionRows) {
        LogSetLevel(context, row.contextLevel);
        write(context, row.messageLevel, nameOf(row));
        if (row.admitted)
            expected.push_back(nameOf(row));
    }
    EXPECT_EQ(texts(), expected);
}

TEST_F(LogLevels, ANewContextAdmitsInfoAndNoDebug)
{
    LogContext* context = LogGetContext("new and untouched");
    record();
    for (const int level : {kLogError, kLogWarning, kLogInfo, kLogDebug})
        write(context, level, std::to_string(level));
    EXPECT_THAT(texts(), ElementsAre("3", "4", "6"));
}

TEST_F(LogLevels, WithoutAContextOnlyErrorsAreWritten)
{
    record();
    for (const int level : {kLogDebug, kLogInfo, kLogWarning, kLogError})
        write(nullptr, level, std::to_string(level));
    EXPECT_THAT(texts(), ElementsAre("3"));
    EXPECT_EQ(message().context, "");
    EXPECT_EQ(message().level, kLogError);
}

TEST_F(LogLevels, HoldWithoutASinkToo)
{
    LogContext* context = LogGetContext("levels without a sink");
    for (const AdmissionRow& row : kAdmissionRows) {
        LogSetLevel(context, row.contextLevel);
        Captured captured;
        write(context, row.messageLevel, "marker");
        EXPECT_EQ(timesIn(captured.err(), "marker"), row.admitted ? 1U : 0U) << nameOf(row);
        EXPECT_EQ(captured.out(), "") << nameOf(row);
    }
}

TEST_F(LogLevels, HoldWithoutASinkAndWithoutAContextToo)
{
    Captured captured;
    write(nullptr, kLogWarning, "a warning");
    write(nullptr, kLogError, "an error");
    EXPECT_THAT(captured.err(), Not(HasSubstr("a warning")));
    EXPECT_THAT(captured.err(), HasSubstr("an error"));
    EXPECT_EQ(captured.out(), "");
}

// --- Without a sink

using LogWithoutSink = Log;

TEST_F(LogWithoutSink, MessagesGoToStandardErrorOnly)
{
    LogContext* context = LogGetContext("without a sink");
    Captured captured;
    LogMsgKV(context, kLogInfo, "ID", nullptr, 0, "value %d of %s", 42, "many");
    EXPECT_EQ(timesIn(captured.err(), "value 42 of many"), 1U);
    EXPECT_THAT(captured.err(), HasSubstr("without a sink"));
    EXPECT_THAT(captured.err(), testing::EndsWith("\n"));
    EXPECT_EQ(captured.out(), "");
}

TEST_F(LogWithoutSink, EveryAdmittedLevelIsWritten)
{
    LogContext* context = LogGetContext("all levels without a sink");
    LogSetLevel(context, kLogDebug);
    Captured captured;
    for (const int level : {kLogError, kLogWarning, kLogInfo, kLogDebug})
        write(context, level, "level-" + std::to_string(level));
    for (const char* text : {"level-3", "level-4", "level-6", "level-7"})
        EXPECT_EQ(timesIn(captured.err(), text), 1U) << text;
    EXPECT_EQ(captured.out(), "");
}

TEST_F(LogWithoutSink, LongTextsAreWrittenWhole)
{
    const std::string text(100000, 'x');
    Captured captured;
    write(nullptr, kLogError, "<" + text + ">");
    EXPECT_EQ(timesIn(captured.err(), "<" + text + ">"), 1U);
}

TEST_F(LogWithoutSink, ATextFromOutsideIsUnharmed)
{
    Captured captured;
    write(LogGetContext("%s%n"), kLogError, "100%s %n %d%%");
    EXPECT_THAT(captured.err(), HasSubstr("100%s %n %d%%"));
    EXPECT_THAT(captured.err(), HasSubstr("%s%n"));
    EXPECT_EQ(captured.out(), "");
}

TEST_F(LogWithoutSink, MessagesWithPairsAreWritten)
{
    constexpr LogPair kPairs[] = {{"KEY", "value"}, {"OTHER", "%s"}};
    Captured captured;
    LogMsgKV(nullptr, kLogError, "ID", kPairs, std::size(kPairs), "text with pairs");
    EXPECT_THAT(captured.err(), HasSubstr("text with pairs"));
}

TEST_F(LogWithoutSink, AnEmptySinkRestoresStandardError)
{
    record();
    {
        Captured captured;
        write(nullptr, kLogError, "to the sink");
        EXPECT_EQ(captured.err(), "");
        EXPECT_EQ(captured.out(), "");
    }
    EXPECT_THAT(texts(), ElementsAre("to the sink"));

    LogSetSink({});
    {
        Captured captured;
        write(nullptr, kLogError, "to standard error");
        EXPECT_EQ(timesIn(captured.err(), "to standard error"), 1U);
        EXPECT_THAT(captured.err(), Not(HasSubstr("to the sink")));
        EXPECT_EQ(captured.out(), "");
    }
    EXPECT_THAT(texts(), ElementsAre("to the sink"));

    record();
    LogSetSink(nullptr);
    Captured captured;
    write(nullptr, kLogError, "there again");
    EXPECT_THAT(captured.err(), HasSubstr("there again"));
}

} // namespace
