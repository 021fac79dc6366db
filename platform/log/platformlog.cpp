// SPDX-License-Identifier: Apache-2.0
// The log over GLib structured logging: the journal when standard error is connected to it, lines
// there when not. GLib's own default writer would drop info and debug; here the context's level
// decides alone.
#include "platformlog.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <unistd.h>

#include <glib.h>

struct LogContext {
    const std::string name;
    std::atomic<int> level{kLogInfo};

    explicit LogContext(const char* contextName) : name(contextName) {}
};

namespace
{

/// All that outlives a call. Never destroyed: messages are written until the very end of the
/// process.
struct Log {
    std::mutex guard;
    std::map<std::string, std::unique_ptr<LogContext>> contexts;
    std::shared_ptr<const LogSink> sink;
    std::mutex writing; // GLib formats the time in a buffer that all threads share
};

Log& theLog()
{
    static Log* const log = new Log; // leaked on purpose, see above
    return *log;
}

struct LevelRow {
    int level;
    GLogLevelFlags glib;
    const char* priority;
};
constexpr LevelRow kLevels[] = {
    {kLogError, G_LOG_LEVEL_CRITICAL, "3"},
    {kLogWarning, G_LOG_LEVEL_WARNING, "4"},
    {kLogInfo, G_LOG_LEVEL_INFO, "6"},
    {kLogDebug, G_LOG_LEVEL_DEBUG, "7"},
};

const LevelRow& levelRow(int level) noexcept
{
    for (const LevelRow& row : kLevels)
        if (level <= row.level)
            return row;
    return kLevels[std::size(kLevels) - 1];
}

void writeToSystem(const LogMessage& message)
{
    static const bool toJournal = g_log_writer_is_journald(fileno(stderr)) != FALSE;

    const LevelRow& row = levelRow(message.level);
    std::vector<GLogField> fields = {
        {"PRIORITY", row.priority, -1},
        {"GLIB_DOMAIN", message.context, -1},
        {"MESSAGE", message.text, -1},
        {"LOG_ID", message.id, -1},
    };
    for (std::size_t i = 0; i < message.pairCount; ++i)
        fields.push_back({message.pairs[i].key, message.pairs[i].value, -1});

    if (toJournal) {
        g_log_writer_journald(row.glib, fields.data(), fields.size(), nullptr);
        return;
    }
    const std::lock_guard lock{theLog().writing};
    const std::unique_ptr<char, decltype(&g_free)> line{
        g_log_writer_format_fields(row.glib, fields.data(), fields.size(), FALSE), g_free};
    fprintf(stderr, "%s%s%s\n", line.get(), *message.id != '\0' ? "  " : "", message.id);
}

void deliver(const LogMessage& message)
{
    std::shared_ptr<const LogSink> sink;
    {
        const std::lock_guard lock{theLog().guard};
        sink = theLog().sink;
    }
    if (sink)
        (*sink)(message);
    else
        writeToSystem(message);
}

} // namespace

LogContext* LogGetContext(const char* name) noexcept
try {
    if (name == nullptr || *name == '\0')
        return nullptr;
    const std::lock_guard lock{theLog().guard};
    std::unique_ptr<LogContext>& context = theLog().contexts[name];
    if (!context)
        context = std::make_unique<LogContext>(name);
    return context.get();
} catch (const std::exception&) {
    return nullptr; // out of memory: the caller is told
}

int LogGetLevel(const LogContext* context) noexcept
{
    return context != nullptr ? context->level.load(std::memory_order_relaxed) : kLogError;
}

void LogSetLevel(LogContext* context, int level) noexcept
{
    if (context != nullptr)
        context->level.store(level, std::memory_order_relaxed);
}

void LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
              std::size_t pairCount, const char* format, ...) noexcept
try {
    if (level > LogGetLevel(context))
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::unique_ptr<char, decltype(&g_free)> text{g_strdup_vprintf(format, arguments),
                                                        g_free};
    va_end(arguments);
    if (text)
        deliver({context != nullptr ? context->name.c_str() : "", level, id != nullptr ? id : "",
                 pairs, pairCount, text.get()});
} catch (const std::exception&) {
    // A message that cannot be delivered, for want of memory, has nowhere to be reported.
}

void LogSetSink(LogSink sink)
{
    std::shared_ptr<const LogSink> next;
    if (sink)
        next = std::make_shared<const LogSink>(std::move(sink));
    const std::lock_guard lock{theLog().guard};
    theLog().sink.swap(next);
}
