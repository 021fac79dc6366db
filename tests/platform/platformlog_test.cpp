// SPDX-License-Identifier: Apache-2.0
// The platform's log: contexts, levels, what a sink sees, what happens without one, threads.
#include "platformlog.h"

#include <atomic>
#include <cstdio>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

/// What a sink saw, copied: the pointers of a message hold during the call only.
struct Recorded {
    std::string context;
    int level;
    std::string id;
    std::vector<std::pair<std::string, std::string>> pairs;
    std::string text;
};

Recorded recordOf(const LogMessage& message)
{
    Recorded record{message.context, message.level, message.id, {}, message.text};
    for (std::size_t i = 0; i < message.pairCount; ++i)
        record.pairs.emplace_back(message.pairs[i].key, message.pairs[i].value);
    return record;
}

/// Messages reach `messages()` after `record()`; standard error is back after the test.
class Log : public testing::Test
{
protected:
    void TearDown() override { LogSetSink({}); }

    void record()
    {
        LogSetSink([this](const LogMessage& message) {
            const std::lock_guard lock{mGuard};
            mMessages.push_back(recordOf(message));
        });
    }

    [[nodiscard]] std::vector<Recorded> messages() const
    {
        const std::lock_guard lock{mGuard};
        return mMessages;
    }

    [[nodiscard]] std::vector<std::string> texts() const
    {
        std::vector<std::string> all;
        for (const Recorded& message : messages())
            all.push_back(message.text);
        return all;
    }

    /// The one message that was recorded.
    [[nodiscard]] Recorded message() const
    {
        const std::vector<Recorded> all = messages();
        EXPECT_THAT(all, SizeIs(1));
        return all.empty() ? Recorded{} : all.front();
    }

    static void write(LogContext* context, int level, const std::string& text)
    {
        LogMsgKV(context, level, nullptr, nullptr, 0, "%s", text.c_str());
    }

private:
    mutable std::mutex mGuard;
    std::vector<Recorded> mMessages;
};

/// Standard error and output while it lives.
class Captured
{
public:
    Captured()
    {
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
    }
    ~Captured() { end(); }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    void end()
    {
        if (mEnded)
            return;
        mEnded = true;
        fflush(stdout);
        fflush(stderr);
        mOut = testing::internal::GetCapturedStdout();
        mErr = testing::internal::GetCapturedStderr();
    }
    [[nodiscard]] const std::string& out()
    {
        end();
        return mOut;
    }
    [[nodiscard]] const std::string& err()
    {
        end();
        return mErr;
    }

private:
    bool mEnded = false;
    std::string mOut;
    std::string mErr;
};

std::size_t timesIn(const std::string& text, std::string_view part)
{
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + part.size()))
        ++times;
    return times;
}

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

// --- What a sink sees

using LogSinks = Log;

TEST_F(LogSinks, SeeContextLevelIdPairsAndText)
{
    LogContext* context = LogGetContext("seen");
    constexpr LogPair kPairs[] = {{"volume", "11"}, {"output", "tv_speaker"}, {"empty", ""}};
    record();
    LogMsgKV(context, kLogWarning, "VOLUME_SET", kPairs, std::size(kPairs), "%s is %d of %5.1f",
             "volume", 11, 12.25);
    const Recorded seen = message();
    EXPECT_EQ(seen.context, "seen");
    EXPECT_EQ(seen.level, kLogWarning);
    EXPECT_EQ(seen.id, "VOLUME_SET");
    EXPECT_THAT(seen.pairs,
                ElementsAre(Pair("volume", "11"), Pair("output", "tv_speaker"), Pair("empty", "")));
    EXPECT_EQ(seen.text, "volume is 11 of  12.2");
}

TEST_F(LogSinks, SeeEveryLevelAsItWasGiven)
{
    LogContext* context = LogGetContext("levels as given");
    LogSetLevel(context, kLogDebug);
    record();
    for (const int level : {kLogError, kLogWarning, kLogInfo, kLogDebug})
        write(context, level, "text");
    std::vector<int> levels;
    for (const Recorded& seen : messages())
        levels.push_back(seen.level);
    EXPECT_THAT(levels, ElementsAre(kLogError, kLogWarning, kLogInfo, kLogDebug));
}

TEST_F(LogSinks, SeeAnEmptyIdWhereThereIsNone)
{
    record();
    LogMsgKV(LogGetContext("no id"), kLogError, nullptr, nullptr, 0, "text");
    EXPECT_EQ(message().id, "");
    EXPECT_THAT(message().pairs, IsEmpty());
    EXPECT_EQ(message().text, "text");
}

TEST_F(LogSinks, SeeMessagesInTheirOrder)
{
    LogContext* context = LogGetContext("order");
    record();
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back("message " + std::to_string(i));
        LogMsgKV(context, kLogInfo, "", nullptr, 0, "message %d", i);
    }
    EXPECT_EQ(texts(), expected);
}

TEST_F(LogSinks, SeeTextsOfEveryLengthWhole)
{
    LogContext* context = LogGetContext("long texts");
    record();
    std::vector<std::string> expected;
    for (const std::size_t length :
         {0U, 1U, 127U, 128U, 255U, 256U, 1023U, 1024U, 1025U, 4095U, 4096U, 65536U, 1000000U}) {
        std::string text(length, 'x');
        for (std::size_t i = 0; i < length; ++i)
            text[i] = static_cast<char>('a' + i % 26);
        expected.push_back("<" + text + ">");
        LogMsgKV(context, kLogError, "", nullptr, 0, "<%s>", text.c_str());
    }
    EXPECT_EQ(texts(), expected);
}

TEST_F(LogSinks, SeeAnEmptyTextToo)
{
    record();
    write(nullptr, kLogError, "");
    EXPECT_THAT(texts(), ElementsAre(""));
}

TEST_F(LogSinks, SeeATextFromOutsideUnharmed)
{
    LogContext* context = LogGetContext("from outside");
    record();
    const std::vector<std::string> hostile = {
        "100%",        "%s%s%s%s", "%n",       "%d %x %p",     "%%",       "%1000000d",
        "line\nbreak", "tab\t",    "\x1b[31m", "Lautstärke €", "\xff\xfe",
    };
    for (const std::string& text : hostile)
        LogMsgKV(context, kLogError, "", nullptr, 0, "%s", text.c_str());
    EXPECT_EQ(texts(), hostile);
}

TEST_F(LogSinks, SeePairsFromOutsideUnharmed)
{
    constexpr LogPair kPairs[] = {{"percent", "%s%n"}, {"quote", "\"x\"=\n"}};
    record();
    LogMsgKV(LogGetContext("pairs from outside"), kLogError, "ID", kPairs, std::size(kPairs), "x");
    EXPECT_THAT(message().pairs, ElementsAre(Pair("percent", "%s%n"), Pair("quote", "\"x\"=\n")));
}

TEST_F(LogSinks, RunOnTheThreadThatLogs)
{
    std::thread::id ranOn;
    LogSetSink([&ranOn](const LogMessage&) { ranOn = std::this_thread::get_id(); });
    write(nullptr, kLogError, "text");
    EXPECT_EQ(ranOn, std::this_thread::get_id());

    std::thread::id other;
    std::thread thread{[&other] {
        other = std::this_thread::get_id();
        write(nullptr, kLogError, "text");
    }};
    thread.join();
    EXPECT_EQ(ranOn, other);
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST_F(LogSinks, ReplaceOneAnother)
{
    int first = 0;
    int second = 0;
    LogSetSink([&first](const LogMessage&) { ++first; });
    write(nullptr, kLogError, "text");
    LogSetSink([&second](const LogMessage&) { ++second; });
    write(nullptr, kLogError, "text");
    write(nullptr, kLogError, "text");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
}

TEST_F(LogSinks, MayLogThemselves)
{
    LogContext* inner = LogGetContext("inner");
    std::vector<std::string> seen;
    LogSetSink([&seen, inner](const LogMessage& message) {
        seen.push_back(message.context + std::string{": "} + message.text);
        if (message.context != std::string_view{"inner"})
            LogMsgKV(inner, kLogError, "", nullptr, 0, "about %s", message.text);
        seen.push_back("end of " + std::string{message.text});
    });
    write(LogGetContext("outer"), kLogError, "text");
    EXPECT_THAT(
        seen, ElementsAre("outer: text", "inner: about text", "end of about text", "end of text"));
}

TEST_F(LogSinks, MayReplaceThemselves)
{
    const auto calls = std::make_shared<int>(0);
    LogSetSink([calls](const LogMessage&) {
        LogSetSink([calls](const LogMessage&) { *calls += 100; });
        ++*calls; // what this sink holds is still there
    });
    write(nullptr, kLogError, "text");
    EXPECT_EQ(*calls, 1);
    write(nullptr, kLogError, "text");
    EXPECT_EQ(*calls, 101);
}

TEST_F(LogSinks, ThatThrowDoNotHarmTheOneWhoLogs)
{
    LogSetSink([](const LogMessage&) { throw std::runtime_error{"out of order"}; });
    write(nullptr, kLogError, "lost");
    record();
    write(nullptr, kLogError, "seen");
    EXPECT_THAT(texts(), ElementsAre("seen"));
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

// --- Threads

constexpr int kThreads = 8;
constexpr int kMessages = 300; // of each thread

/// Runs `work(thread)` on all threads at once, started together, and waits for them.
template <typename Work>
void onAllThreads(const Work& work)
{
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&waiting, &work, thread] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            work(thread);
        });
    for (std::thread& thread : threads)
        thread.join();
}

using LogThreads = Log;

TEST_F(LogThreads, EveryMessageArrivesOnceAndWhole)
{
    LogContext* context = LogGetContext("threads");
    record();
    onAllThreads([context](int thread) {
        for (int i = 0; i < kMessages; ++i) {
            const std::string value = std::to_string(i);
            const LogPair pair{"number", value.c_str()};
            LogMsgKV(context, kLogInfo, "ID", &pair, 1, "thread %d message %d", thread, i);
        }
    });

    std::vector<int> next(kThreads, 0); // a thread's messages arrive in their order
    for (const Recorded& seen : messages()) {
        int thread = -1;
        int number = -1;
        ASSERT_EQ(sscanf(seen.text.c_str(), "thread %d message %d", &thread, &number), 2)
            << seen.text;
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << seen.text;
        EXPECT_EQ(number, next[static_cast<std::size_t>(thread)]++) << seen.text;
        EXPECT_EQ(seen.context, "threads");
        EXPECT_THAT(seen.pairs, ElementsAre(Pair("number", std::to_string(number))));
    }
    EXPECT_THAT(next, testing::Each(kMessages));
}

TEST_F(LogThreads, EachMessageReachesOneSinkWhileTheyAreReplaced)
{
    std::atomic<int> first{0};
    std::atomic<int> second{0};
    std::atomic<bool> finished{false};
    LogSetSink([&first](const LogMessage&) { ++first; });
    std::thread replacing{[&first, &second, &finished] {
        while (!finished) {
            const std::string held(100, 'x'); // freed with the sink
            LogSetSink([&second, held](const LogMessage&) { second += held[99] == 'x' ? 1 : 0; });
            LogSetSink([&first, held](const LogMessage&) { first += held[99] == 'x' ? 1 : 0; });
        }
    }};
    onAllThreads([](int thread) {
        for (int i = 0; i < kMessages; ++i)
            LogMsgKV(nullptr, kLogError, "ID", nullptr, 0, "thread %d message %d", thread, i);
    });
    finished = true;
    replacing.join();
    EXPECT_EQ(first + second, kThreads * kMessages);
}

TEST_F(LogThreads, NoMessageIsLostWhileASinkComesAndGoes)
{
    Captured captured;
    std::atomic<int> toSink{0};
    std::atomic<bool> finished{false};
    std::thread replacing{[&toSink, &finished] {
        while (!finished) {
            LogSetSink([&toSink](const LogMessage&) { ++toSink; });
            LogSetSink({});
        }
    }};
    onAllThreads([](int) {
        for (int i = 0; i < kMessages; ++i)
            LogMsgKV(nullptr, kLogError, "ID", nullptr, 0, "<%s>", "marker");
    });
    finished = true;
    replacing.join();
    const std::size_t toStandardError = timesIn(captured.err(), "<marker>  ID\n");
    EXPECT_EQ(toStandardError + static_cast<std::size_t>(toSink),
              static_cast<std::size_t>(kThreads * kMessages));
    EXPECT_EQ(captured.out(), "");
}

TEST_F(LogThreads, AskForContextsAtOnceAndGetTheSame)
{
    std::vector<std::vector<LogContext*>> contexts(kThreads);
    onAllThreads([&contexts](int thread) {
        for (int i = 0; i < 50; ++i)
            contexts[static_cast<std::size_t>(thread)].push_back(
                LogGetContext(("asked at once " + std::to_string(i)).c_str()));
    });
    for (const std::vector<LogContext*>& ofThread : contexts)
        EXPECT_EQ(ofThread, contexts.front());
    const std::set<LogContext*> different(contexts.front().begin(), contexts.front().end());
    EXPECT_THAT(different, SizeIs(50));
    EXPECT_EQ(different.count(nullptr), 0U);
}

TEST_F(LogThreads, ChangeALevelWhileOthersLog)
{
    LogContext* context = LogGetContext("level changed at once");
    record();
    onAllThreads([context](int thread) {
        for (int i = 0; i < kMessages; ++i) {
            if (thread == 0)
                LogSetLevel(context, i % 2 == 0 ? kLogDebug : kLogInfo);
            write(context, kLogInfo, "always"); // admitted by either level
            LogMsgKV(context, kLogDebug + 1, "", nullptr, 0, "never");
            static_cast<void>(LogGetLevel(context));
        }
    });
    EXPECT_THAT(texts(), SizeIs(kThreads * kMessages));
    EXPECT_THAT(texts(), testing::Each("always"));
}

} // namespace
