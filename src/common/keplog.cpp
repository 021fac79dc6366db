// SPDX-License-Identifier: Apache-2.0
// The library's log context and its one way to the platform's log.
#include "keplog.h"

#include <array>
#include <cstdarg>
#include <cstdio>

std::atomic<LogContext*> kepLogContext{nullptr};

void kepLogEmit(const kepLogOrigin& origin, int level, const char* id, const char* format,
                ...) noexcept
{
    const std::string_view stem = kepLogStem(origin.file);
    std::array<char, 256> prefix; // NOLINT(*-member-init): written at once
    snprintf(prefix.data(), prefix.size(), "%.*s:%s(%d) ", static_cast<int>(stem.size()),
             stem.data(), origin.function, origin.line);
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(kepLogContext.load(std::memory_order_relaxed), level, id, nullptr, 0,
                   prefix.data(), format, arguments);
    va_end(arguments);
}

void kepLogEmitPairs(int level, const char* id, std::span<const LogPair> pairs, const char* format,
                     ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(kepLogContext.load(std::memory_order_relaxed), level, id, pairs.data(),
                   pairs.size(), "", format, arguments);
    va_end(arguments);
}
