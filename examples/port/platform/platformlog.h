// SPDX-License-Identifier: Apache-2.0
// The platform's log over the maker's: the declarations are those of the tree's header of this
// name, in whose place this one is read, and installed.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <functional>

#include "platformexport.h"

enum LogLevel : int {
    kLogError = 3,
    kLogWarning = 4,
    kLogInfo = 6,
    kLogDebug = 7,
};

struct LogContext;

struct LogPair {
    const char* key;
    const char* value;
};

struct LogMessage {
    const char* context;
    int level;
    const char* id;
    const LogPair* pairs;
    std::size_t pairCount;
    const char* text;
};

extern "C" {

KEP_PLATFORM_EXPORT LogContext* LogGetContext(const char* name) noexcept;
KEP_PLATFORM_EXPORT int LogGetLevel(const LogContext* context) noexcept;
KEP_PLATFORM_EXPORT void LogSetLevel(LogContext* context, int level) noexcept;
[[gnu::format(printf, 6, 7)]] KEP_PLATFORM_EXPORT void
LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
         std::size_t pairCount, const char* format, ...) noexcept;
[[gnu::format(printf, 7, 0)]] KEP_PLATFORM_EXPORT void
LogMsgPrefixed(LogContext* context, int level, const char* id, const LogPair* pairs,
               std::size_t pairCount, const char* prefix, const char* format,
               va_list arguments) noexcept;
}

using LogSink = std::function<void(const LogMessage&)>;

KEP_PLATFORM_EXPORT void LogSetSink(LogSink sink);
