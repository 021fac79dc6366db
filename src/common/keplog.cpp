// SPDX-License-Identifier: Apache-2.0
// The library's log context and its one way to the platform's log.
#include "keplog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdarg>
#include <iterator>

std::atomic<LogContext*> kepLogContext{nullptr};

namespace
{

[[gnu::format(printf, 4, 0)]] void emit(kepLogOrigin origin, int level, const char* id,
                                        const char* format, va_list arguments)
{
    // By hand: for so little, printf costs more than all the rest of a line.
    std::array<char, 256> prefix; // NOLINT(*-member-init): written at once
    char* at = prefix.data();
    const auto append = [&at, end = prefix.data() + prefix.size() - 1](std::string_view part) {
        at = std::copy_n(part.data(), std::min<std::ptrdiff_t>(std::ssize(part), end - at), at);
    };
    std::array<char, 12> line; // NOLINT(*-member-init): the same
    const char* const lineEnd =
        std::to_chars(line.data(), line.data() + line.size(), origin.line).ptr;
    append(origin.file);
    append(":");
    append(origin.function);
    append("(");
    append({line.data(), lineEnd});
    append(") ");
    *at = '\0';
    LogMsgPrefixed(kepLogContext.load(std::memory_order_relaxed), level, id, nullptr, 0,
                   prefix.data(), format, arguments);
}

} // namespace

void kepLogEmit(kepLogOrigin origin, int level, const char* id, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    emit(origin, level, id, format, arguments);
    va_end(arguments);
}

bool kepFailed(kepLogOrigin origin, const char* id, const char* format, ...) noexcept
{
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
