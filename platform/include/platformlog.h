// SPDX-License-Identifier: Apache-2.0
// The platform's log: named contexts with a level, messages with an id and key-value pairs. All of
// it may be called from any thread; nothing throws, but `LogSetSink` when there is no memory.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <functional>

#include "platformexport.h"

/// Levels are those of syslog; a message is written when its level is at most that of its context.
enum LogLevel : int {
    kLogError = 3,
    kLogWarning = 4,
    kLogInfo = 6,
    kLogDebug = 7,
};

struct LogContext;

/// One key with its value, already formatted as text.
struct LogPair {
    const char* key;
    const char* value;
};

/// A message as a sink sees it; the pointers hold during the call only.
struct LogMessage {
    const char* context; // "" when the message was written without one
    int level;
    const char* id; // "" when the message has none
    const LogPair* pairs;
    std::size_t pairCount;
    const char* text;
};

extern "C" {

/// The context of that name, made at its first request at level info, valid until the process ends.
/// Null for a null or an empty name, and when there is no memory for a new one.
KEP_PLATFORM_EXPORT LogContext* LogGetContext(const char* name) noexcept;

/// The level that the context admits; kLogError for a null context.
KEP_PLATFORM_EXPORT int LogGetLevel(const LogContext* context) noexcept;
KEP_PLATFORM_EXPORT void LogSetLevel(LogContext* context, int level) noexcept;

/// Writes a message if the context admits its level; without a context only errors are written.
/// `id` may be null. `format` is never a text from outside.
[[gnu::format(printf, 6, 7)]] KEP_PLATFORM_EXPORT void
LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
         std::size_t pairCount, const char* format, ...) noexcept;

/// The same for a text of two parts, `prefix`, cut at 1,020 bytes, and what is formatted, which is
/// done once. A text for which there is no memory is cut with "...".
[[gnu::format(printf, 7, 0)]] KEP_PLATFORM_EXPORT void
LogMsgPrefixed(LogContext* context, int level, const char* id, const LogPair* pairs,
               std::size_t pairCount, const char* prefix, const char* format,
               va_list arguments) noexcept;
}

using LogSink = std::function<void(const LogMessage&)>; // throws a std::exception at most

/// Sends all messages to `sink` instead of the journal or standard error; an empty one restores
/// those. The sink runs on the thread that logs; one that is replaced may still be running there.
KEP_PLATFORM_EXPORT void LogSetSink(LogSink sink);
