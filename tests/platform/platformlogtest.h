// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of logging.
#pragma once

#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platformlog.h"

/// What a sink saw, copied: the pointers of a message hold during the call only.
struct Recorded {
    std::string context;
    int level;
    std::string id;
    std::vector<std::pair<std::string, std::string>> pairs;
    std::string text;
};

inline Recorded recordOf(const LogMessage& message)
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
        EXPECT_THAT(all, testing::SizeIs(1));
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

inline std::size_t timesIn(const std::string& text, std::string_view part)
{
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + part.size()))
        ++times;
    return times;
}
