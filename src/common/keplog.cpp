// SPDX-License-Identifier: Apache-2.0
// The library's log context and its one way to the platform's log.
#include "keplog.h"

#include <cstdarg>
#include <memory>

#include <glib.h>

std::atomic<LogContext*> kepLogContext{nullptr};

namespace
{

using Text = std::unique_ptr<char, decltype(&g_free)>;

[[gnu::format(printf, 1, 0)]] Text formatted(const char* format, va_list arguments) noexcept
{
    return {g_strdup_vprintf(format, arguments), g_free};
}

} // namespace

void kepLogEmit(const kepLogOrigin& origin, int level, const char* id, const char* format,
                ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const Text text = formatted(format, arguments);
    va_end(arguments);
    const std::string_view stem = kepLogStem(origin.file);
    if (text)
        LogMsgKV(kepLogContext.load(std::memory_order_relaxed), level, id, nullptr, 0,
                 "%.*s:%s(%d) %s", static_cast<int>(stem.size()), stem.data(), origin.function,
                 origin.line, text.get());
}

void kepLogEmitPairs(int level, const char* id, std::span<const LogPair> pairs, const char* format,
                     ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const Text text = formatted(format, arguments);
    va_end(arguments);
    if (text)
        LogMsgKV(kepLogContext.load(std::memory_order_relaxed), level, id, pairs.data(),
                 pairs.size(), "%s", text.get());
}
