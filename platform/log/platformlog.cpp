// SPDX-License-Identifier: Apache-2.0
// The log over GLib structured logging: the journal when standard error is connected to it, lines
// there when not. GLib's own default writer would drop info and debug; here the context's level
// decides alone. Of a line this makes what stands before the text; "file:operation(line) " is part
// of the text, and made in src/common/keplog.cpp.
#include "platformlog.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <pthread.h>
#include <unistd.h>

#include <glib.h>

#include "plainformat.h"

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
    const char* before; // how GLib starts a line of that level
    const char* name;   // and how it names the level
    bool namesProcess;
};
constexpr LevelRow kLevels[] = {
    {kLogError, G_LOG_LEVEL_CRITICAL, "3", "\n", "CRITICAL **", true},
    {kLogWarning, G_LOG_LEVEL_WARNING, "4", "\n", "WARNING **", true},
    {kLogInfo, G_LOG_LEVEL_INFO, "6", "", "INFO", false},
    {kLogDebug, G_LOG_LEVEL_DEBUG, "7", "", "DEBUG", true},
};

const LevelRow& levelRow(int level) noexcept
{
    for (const LevelRow& row : kLevels)
        if (level <= row.level)
            return row;
    return kLevels[std::size(kLevels) - 1];
}

struct Freeing {
    void operator()(char* memory) const noexcept { std::free(memory); }
};

/// The text of a message, formatted once into a buffer on the stack. A text that does not fit there
/// has memory of its own; when there is none, it is cut.
class Text
{
public:
    // NOLINTNEXTLINE(*-member-init): filling the buffer first would cost more than formatting
    [[gnu::format(printf, 3, 0)]] Text(const char* prefix, const char* format, va_list arguments)
    {
        const std::size_t start = std::min(std::strlen(prefix), mBuffer.size() - sizeof kCut);
        std::memcpy(mBuffer.data(), prefix, start);
        va_list again;
        va_copy(again, arguments);
        const bool done = formatPlain(std::span{mBuffer}.subspan(start), format, again);
        va_end(again);
        if (done)
            return;
        va_copy(again, arguments);
        const int length = // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller's
            vsnprintf(mBuffer.data() + start, mBuffer.size() - start, format, arguments);
        if (length < 0)
            std::memcpy(mBuffer.data() + start, kCut, sizeof kCut);
        else if (start + static_cast<std::size_t>(length) >= mBuffer.size())
            formatLong(start, static_cast<std::size_t>(length), format, again);
        va_end(again);
    }

    [[nodiscard]] const char* data() const noexcept { return mLong ? mLong.get() : mBuffer.data(); }

private:
    static constexpr char kCut[] = "...";

    [[gnu::format(printf, 4, 0)]] void formatLong(std::size_t start, std::size_t length,
                                                  const char* format, va_list arguments)
    {
        mLong.reset(static_cast<char*>(std::malloc(start + length + 1)));
        if (mLong) {
            std::memcpy(mLong.get(), mBuffer.data(), start);
            vsnprintf(mLong.get() + start, length + 1, format, arguments);
            return;
        }
        std::size_t end = mBuffer.size() - sizeof kCut;
        while (end > start && (mBuffer[end] & 0xC0) == 0x80) // not in the middle of a character
            --end;
        std::memcpy(mBuffer.data() + end, kCut, sizeof kCut);
    }

    std::array<char, 1024> mBuffer;
    std::unique_ptr<char, Freeing> mLong;
};

/// While a message is written its thread is not cancelled: nothing may unwind from here.
class NoCancellation
{
public:
    NoCancellation() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore); }
    ~NoCancellation() { pthread_setcancelstate(mBefore, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int mBefore = PTHREAD_CANCEL_ENABLE;
};

std::vector<GLogField> fieldsOf(const LogMessage& message, const LevelRow& row)
{
    std::vector<GLogField> fields = {
        {"PRIORITY", row.priority, -1},
        {"GLIB_DOMAIN", message.context, -1},
        {"MESSAGE", message.text, -1},
        {"LOG_ID", message.id, -1},
    };
    for (std::size_t i = 0; i < message.pairCount; ++i)
        fields.push_back({message.pairs[i].key, message.pairs[i].value, -1});
    return fields;
}

/// Names longer than that leave their lines to GLib: the buffer of a line has room for no more.
constexpr std::size_t kLongestNames = 1024;

const char* programName()
{
    const char* name = g_get_prgname();
    return name != nullptr ? name : "process";
}

bool hasLongNames(const LogMessage& message)
{
    return std::strlen(message.context) + std::strlen(programName()) > kLongestNames;
}

/// Whether GLib would write the text as it is, whatever the locale.
bool isPlain(const char* text)
{
    return std::all_of(text, text + std::strlen(text),
                       [](char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; });
}

/// What stands before a message's text, and the rest of its line if there is room for it. The
/// buffer is not filled first: that would cost as much as a line.
class Line // NOLINT(*-member-init)
{
public:
    [[nodiscard]] bool hasRoomFor(std::size_t length) const noexcept
    {
        return length <= mBuffer.size() - mLength;
    }
    /// Cut where the room ends.
    void append(std::string_view part) noexcept
    {
        mLength += part.copy(mBuffer.data() + mLength, mBuffer.size() - mLength);
    }
    void append(unsigned long number, int digits = 1) noexcept
    {
        std::array<char, 20> text; // NOLINT(*-member-init): only what is written is read
        char* at = text.data() + text.size();
        for (; number != 0 || digits > 0; number /= 10, --digits)
            *--at = static_cast<char>('0' + number % 10);
        append({at, static_cast<std::size_t>(text.data() + text.size() - at)});
    }
    [[nodiscard]] std::string_view view() const noexcept { return {mBuffer.data(), mLength}; }

private:
    std::array<char, 2048> mBuffer;
    std::size_t mLength = 0;
};

void appendTime(Line& line)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const auto append = [&line](long number, int digits, std::string_view after) {
        line.append(static_cast<unsigned long>(number), digits);
        line.append(after);
    };
    append(local.tm_hour, 2, ":");
    append(local.tm_min, 2, ":");
    append(local.tm_sec, 2, ".");
    append(now.tv_nsec / 1000000, 3, ": ");
}

/// A line as GLib formats it, without what that costs: three copies, and outside of UTF-8 locales a
/// converter opened and closed. By hand, since printf takes most of what is left.
void writePlainLine(const LogMessage& message, const LevelRow& row)
{
    Line line;
    line.append(row.before);
    if (row.namesProcess) {
        line.append("(");
        line.append(programName());
        line.append(":");
        line.append(static_cast<unsigned long>(getpid()));
        line.append("): ");
    }
    line.append(message.context);
    line.append("-");
    line.append(row.name);
    line.append(": ");
    appendTime(line);
    const std::string_view text = message.text;
    const std::string_view id = message.id;
    const std::string_view gap = id.empty() ? "" : "  ";
    if (!line.hasRoomFor(text.size() + gap.size() + id.size() + 1)) {
        fprintf(stderr, "%.*s%s%s%s\n", static_cast<int>(line.view().size()), line.view().data(),
                message.text, gap.data(), message.id);
        return;
    }
    line.append(text);
    line.append(gap);
    line.append(id);
    line.append("\n");
    fwrite(line.view().data(), 1, line.view().size(), stderr);
}

void writeToSystem(const LogMessage& message)
{
    static const bool toJournal = g_log_writer_is_journald(fileno(stderr)) != FALSE;
    // Who has set this wants other lines to name the process.
    static const bool prefixesAsked = std::getenv("G_MESSAGES_PREFIXED") != nullptr;

    const LevelRow& row = levelRow(message.level);
    if (toJournal) {
        const std::vector<GLogField> fields = fieldsOf(message, row);
        g_log_writer_journald(row.glib, fields.data(), fields.size(), nullptr);
        return;
    }
    const std::lock_guard lock{theLog().writing};
    if (!prefixesAsked && isPlain(message.text) && !hasLongNames(message)) {
        writePlainLine(message, row);
        return;
    }
    const std::vector<GLogField> fields = fieldsOf(message, row);
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
    if (context == nullptr) [[unlikely]]
        return kLogError;
    return context->level.load(std::memory_order_relaxed);
}

void LogSetLevel(LogContext* context, int level) noexcept
{
    if (context != nullptr)
        context->level.store(level, std::memory_order_relaxed);
}

void LogMsgPrefixed(LogContext* context, int level, const char* id, const LogPair* pairs,
                    std::size_t pairCount, const char* prefix, const char* format,
                    va_list arguments) noexcept
try {
    if (level > LogGetLevel(context))
        return;
    const NoCancellation guard;
    const Text text{prefix, format, arguments};
    deliver({context != nullptr ? context->name.c_str() : "", level, id != nullptr ? id : "", pairs,
             pairCount, text.data()});
} catch (const std::exception&) {
    // A message that cannot be delivered, for want of memory, has nowhere to be reported.
}

void LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
              std::size_t pairCount, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(context, level, id, pairs, pairCount, "", format, arguments);
    va_end(arguments);
}

void LogSetSink(LogSink sink)
{
    std::shared_ptr<const LogSink> next;
    if (sink)
        next = std::make_shared<const LogSink>(std::move(sink));
    const std::lock_guard lock{theLog().guard};
    theLog().sink.swap(next);
}
