// SPDX-License-Identifier: Apache-2.0
// Logging: what a sink sees, and what threads may do at once.
#include <atomic>
#include <cstdio>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "platformlog.h"
#include "platformlogtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

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
