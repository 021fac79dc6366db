// SPDX-License-Identifier: Apache-2.0
// The library's log macros: one context, the prefix "file:function(line) " before every text.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <string_view>

#include "platformlog.h"

/// The context of the whole library; null until the client has obtained it, and then only errors
/// are written.
extern std::atomic<LogContext*> kepLogContext;

inline bool kepLogAdmits(int level) noexcept
{
    return level <= LogGetLevel(kepLogContext.load(std::memory_order_relaxed));
}

/// A source file's name up to its first dot: the files of one class, such as
/// keptvaudio.routing.cpp, log under the one name of the class.
constexpr std::string_view kepLogStem(std::string_view path)
{
    path.remove_prefix(path.rfind('/') + 1);
    return path.substr(0, path.find('.'));
}

/// Where a message says that it comes from. The file and the function that a line names are as
/// fixed as its text, because those who read the log search for them. So an operation lives in the
/// file that its lines have always named, and what it shares with others logs under its name.
/// Handed over by value: what a reference refers to would be made on every way through a function,
/// even where nothing is logged.
struct kepLogOrigin {
    std::string_view file; // its stem
    const char* function;
    int line;

    /// The same place under the name of another function.
    [[nodiscard]] constexpr kepLogOrigin as(const char* name) const { return {file, name, line}; }
};

/// The stem of a path, found at compile time.
template <std::size_t Size>
consteval std::string_view kepLogStemOf(const char (&path)[Size])
{
    return kepLogStem({path, Size - 1});
}

#define KEP_HERE (kepLogOrigin{kepLogStemOf(__FILE__), __func__, __LINE__})

/// Formats the text, behind the prefix "file:function(line) ", and hands it to the platform.
[[gnu::format(printf, 4, 5)]] void kepLogEmit(kepLogOrigin origin, int level, const char* id,
                                              const char* format, ...) noexcept;

/// The same with key-value pairs and without the prefix.
[[gnu::format(printf, 4, 5)]] void kepLogEmitPairs(int level, const char* id,
                                                   std::span<const LogPair> pairs,
                                                   const char* format, ...) noexcept;

/// Logs an error, if it is admitted, and answers false.
[[gnu::cold, gnu::format(printf, 3, 4)]] bool kepFailed(kepLogOrigin origin, const char* id,
                                                        const char* format, ...) noexcept;

/// Whether a middleware call answered success, 0; any other status is an error with that id and
/// text.
#define KEP_SUCCEEDED(status, id, ...) ((status) == 0 || kepFailed(KEP_HERE, id, __VA_ARGS__))

// The level is tested first: neither text nor arguments are made unless it is admitted. An error
// has an id of its own, information has "INFO_LOG", and what is for debugging has none.
#define KEP_LOG_AS(origin, level, id, format, ...)                                                 \
    do {                                                                                           \
        if (kepLogAdmits(level))                                                                   \
            kepLogEmit(origin, level, id, format __VA_OPT__(, ) __VA_ARGS__);                      \
    } while (false)
#define KEP_ERROR_AS(origin, id, ...) KEP_LOG_AS(origin, kLogError, id, __VA_ARGS__)
#define KEP_INFO_AS(origin, ...) KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", __VA_ARGS__)
#define KEP_DEBUG_AS(origin, ...) KEP_LOG_AS(origin, kLogDebug, "", __VA_ARGS__)

#define KEP_LOG(level, id, ...) KEP_LOG_AS(KEP_HERE, level, id, __VA_ARGS__)
#define KEP_ERROR(id, ...) KEP_ERROR_AS(KEP_HERE, id, __VA_ARGS__)
#define KEP_INFO(...) KEP_INFO_AS(KEP_HERE, __VA_ARGS__)
#define KEP_DEBUG(...) KEP_DEBUG_AS(KEP_HERE, __VA_ARGS__)
