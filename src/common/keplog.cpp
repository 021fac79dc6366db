// SPDX-License-Identifier: Apache-2.0
// The library's log context and its one way to the platform's log.
#include "keplog.h"

#include <array>
#include <cstdarg>
#include <cstdio>

std::atomic<LogContext*> kepLogContext{nullptr};

namespace
{

[[gnu::format(printf, 4, 0)]] void emit(const kepLogOrigin& origin, int level, const char* id,
                                        const char* format, va_list arguments)
{
    std::array<char, 256> prefix; // NOLINT(*-member-init): written at once
    snprintf(prefix.data(), prefix.size(), "%.*s:%s(%d) ", static_cast<int>(origin.file.size()),
             origin.file.data(), origin.function, origin.line);
    LogMsgPrefixed(kepLogContext.load(std::memory_order_relaxed), level, id, nullptr, 0,
                   prefix.data(), format, arguments);
}

} // namespace

void kepLogEmit(const kepLogOrigin& origin, int level, const char* id, const char* format,
                ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    emit(origin, level, id, format, arguments);
    va_end(arguments);
}

bool kepSucceeded(const kepLogOrigin& origin, int status, const char* id, const char* format,
                  ...) noexcept
{
    if (status == 0)
        return true;
    if (kepLogAdmits(kLogError)) {
        va_list arguments;
        va_start(arguments, format);
        emit(origin, kLogError, id, format, arguments);
        va_end(arguments);
    }
    return false;
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
