// SPDX-License-Identifier: Apache-2.0
// The platform's log over the maker's, which has no levels to admit, no keys and no sink: all three
// are made here. Any thread may log, until the very end of the process; nothing throws.
#include "platformlog.h"

#include <atomic>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "veltoralog.h"

struct LogContext {
    std::string name;
    std::atomic<int> level{kLogInfo};
};

namespace
{

struct Log {
    std::mutex guard;
    std::map<std::string, LogContext> contexts; // they stay where they are
    std::shared_ptr<const LogSink> sink;
};

Log& theLog()
{
    static Log* const log = new Log; // never destroyed
    return *log;
}

vlog_severity severityOf(int level)
{
    if (level <= kLogError)
        return VLOG_FATAL;
    if (level <= kLogWarning)
        return VLOG_TROUBLE;
    return level <= kLogInfo ? VLOG_NOTE : VLOG_TRACE;
}

std::string formatted(const char* prefix, const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return prefix + text;
}

/// Keys and id stand behind the text, as the maker's lines have no other place for them.
std::string lineOf(const LogMessage& message)
{
    std::string line = message.text;
    for (std::size_t i = 0; i < message.pairCount; ++i)
        line += std::string{" "} + message.pairs[i].key + "=" + message.pairs[i].value;
    return *message.id != '\0' ? line + " (" + message.id + ")" : line;
}

void write(const LogMessage& message)
{
    std::shared_ptr<const LogSink> sink;
    {
        const std::lock_guard lock{theLog().guard};
        sink = theLog().sink;
    }
    if (sink)
        (*sink)(message);
    else
        vlog_line(severityOf(message.level), message.context, lineOf(message).c_str());
}

} // namespace

LogContext* LogGetContext(const char* name) noexcept
try {
    if (name == nullptr || *name == '\0')
        return nullptr;
    const std::lock_guard lock{theLog().guard};
    LogContext& context = theLog().contexts[name];
    context.name = name;
    return &context;
} catch (...) {
    return nullptr; // no memory
}

int LogGetLevel(const LogContext* context) noexcept
{
    return context != nullptr ? context->level.load() : kLogError;
}

void LogSetLevel(LogContext* context, int level) noexcept
{
    if (context != nullptr)
        context->level = level;
}

void LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
              std::size_t pairCount, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(context, level, id, pairs, pairCount, "", format, arguments);
    va_end(arguments);
}

void LogMsgPrefixed(LogContext* context, int level, const char* id, const LogPair* pairs,
                    std::size_t pairCount, const char* prefix, const char* format,
                    va_list arguments) noexcept
try {
    if (level > LogGetLevel(context))
        return;
    const std::string text = formatted(prefix, format, arguments);
    write({context != nullptr ? context->name.c_str() : "", level, id != nullptr ? id : "", pairs,
           pairCount, text.c_str()});
} catch (...) { // no memory for the line: it is lost
}

void LogSetSink(LogSink sink)
{
    auto replacement = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    const std::lock_guard lock{theLog().guard};
    theLog().sink.swap(replacement);
}
