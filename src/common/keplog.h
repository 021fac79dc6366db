// SPDX-License-Identifier: Apache-2.0
// The library's log macros: one context, the prefix "file:function(line) " before every text.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "platformlog.h"

/// The context of the whole library; null until the client has obtained it, and then only errors
/// are written.
extern std::atomic<LogContext*> kepLogContext;

inline bool kepLogAdmits(int level) noexcept
{
    return level <= LogGetLevel(kepLogContext.load(std::memory_order_relaxed));
}

/// Formats the text and hands it to the platform.
[[gnu::format(printf, 3, 4)]] void kepLogEmit(int level, const char* id, const char* format,
                                              ...) noexcept;

/// A source file's name without folders and extension, made at compile time.
template <std::size_t Size>
consteval std::array<char, Size> kepLogStem(const char (&path)[Size])
{
    std::array<char, Size> stem{};
    std::size_t length = 0;
    for (std::size_t i = 0; path[i] != '\0' && path[i] != '.'; ++i) {
        if (path[i] == '/')
            length = 0;
        else
            stem[length++] = path[i];
    }
    for (; length < Size; ++length)
        stem[length] = '\0';
    return stem;
}

// The level is tested first: neither text nor arguments are made unless it is admitted. The ..._AS
// forms are for a function that logs for its caller, whose name and line it was given.
#define KEP_LOG_AS(function, line, level, id, format, ...)                                         \
    do {                                                                                           \
        if (kepLogAdmits(level))                                                                   \
            kepLogEmit(level, id, "%s:%s(%d) " format, kepLogStem(__FILE__).data(), function,      \
                       line __VA_OPT__(, ) __VA_ARGS__);                                           \
    } while (false)
#define KEP_LOG(level, id, format, ...)                                                            \
    KEP_LOG_AS(__func__, __LINE__, level, id, format __VA_OPT__(, ) __VA_ARGS__)

#define KEP_ERROR(id, format, ...) KEP_LOG(kLogError, id, format __VA_OPT__(, ) __VA_ARGS__)
#define KEP_INFO(id, format, ...) KEP_LOG(kLogInfo, id, format __VA_OPT__(, ) __VA_ARGS__)
#define KEP_DEBUG(format, ...) KEP_LOG(kLogDebug, "", format __VA_OPT__(, ) __VA_ARGS__)
#define KEP_DEBUG_AS(function, line, format, ...)                                                  \
    KEP_LOG_AS(function, line, kLogDebug, "", format __VA_OPT__(, ) __VA_ARGS__)
