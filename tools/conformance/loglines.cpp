// SPDX-License-Identifier: Apache-2.0
// The lines of the log, caught before they reach the system's. Any thread may log.
#include "loglines.h"

#include <mutex>

#include "platformlog.h"

struct LogLines::Store {
    std::mutex guard;
    std::vector<LogLine> lines;
};

LogLines::LogLines() : mStore(std::make_shared<Store>())
{
    LogSetSink([store = mStore](const LogMessage& message) {
        LogLine line{message.context, message.level, message.id, message.text, {}};
        for (std::size_t i = 0; i < message.pairCount; ++i)
            line.pairs.emplace_back(message.pairs[i].key, message.pairs[i].value);
        const std::lock_guard lock{store->guard};
        store->lines.push_back(std::move(line));
    });
}

LogLines::~LogLines()
{
    LogSetSink({});
}

std::vector<LogLine> LogLines::taken() const
{
    const std::lock_guard lock{mStore->guard};
    return mStore->lines;
}
