// SPDX-License-Identifier: Apache-2.0
// The log: a line arrives whole when its context admits its level, and not at all when it does not.
#include <vector>

#include "checks.h"
#include "loglevels.h"
#include "loglines.h"
#include "platformlog.h"

namespace
{

constexpr const char* kContext = "kep-conformance";
constexpr const char* kId = "CONFORMANCE";
constexpr const char* kText = "a line of level 7";
constexpr LogPair kPair = {"KEY", "value"};

/// Writes one line of that level; what arrives.
std::vector<LogLine> written(LogLevel level)
{
    const LogLines lines;
    LogMsgKV(LogGetContext(kContext), level, kId, &kPair, 1, "a line of level %d", kLogDebug);
    return lines.taken();
}

std::string arrivalFault(const LogLevelName& row)
{
    const std::vector<LogLine> lines = written(row.level);
    const std::string line = std::string{"a line of level "} + row.name;
    if (lines.empty())
        return line + " does not arrive";
    if (lines.size() > 1)
        return line + " arrives " + std::to_string(lines.size()) + " times";
    const LogLine& got = lines.front();
    if (got.context != kContext || got.level != row.level || got.id != kId)
        return line + " arrives with another context, level or id";
    if (got.pairs != std::vector<std::pair<std::string, std::string>>{{kPair.key, kPair.value}})
        return line + " arrives without its key and value";
    return got.text == kText ? "" : line + " arrives with another text: " + got.text;
}

} // namespace

void checkLog(Report& report, const Conditions&)
{
    report.begin("Log");
    LogContext* context = LogGetContext(kContext);
    report.tell("there is a log context", context != nullptr ? "" : "LogGetContext answers null");
    if (context == nullptr)
        return;
    for (const LogLevelName& row : logLevels()) {
        LogSetLevel(context, kLogDebug);
        report.tell(std::string{"a line of level "} + row.name + " arrives", arrivalFault(row));
    }
    for (const LogLevelName& row : logLevels()) {
        if (row.level == kLogError)
            continue;
        LogSetLevel(context, row.level - 1);
        report.tell(std::string{"a line of level "} + row.name + " stays away when not admitted",
                    written(row.level).empty() ? "" : "it arrives all the same");
    }
}
