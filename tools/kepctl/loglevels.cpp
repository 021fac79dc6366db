// SPDX-License-Identifier: Apache-2.0
// The levels of the log.
#include "loglevels.h"

namespace
{

constexpr LogLevelName kLevels[] = {
    {kLogError, "error"},
    {kLogWarning, "warning"},
    {kLogInfo, "info"},
    {kLogDebug, "debug"},
};

} // namespace

std::span<const LogLevelName> logLevels()
{
    return kLevels;
}

bool isLogLevel(int level)
{
    for (const LogLevelName& row : kLevels)
        if (row.level == level)
            return true;
    return false;
}

const char* logLevelName(int level)
{
    for (const LogLevelName& row : kLevels)
        if (row.level == level)
            return row.name;
    return "log";
}

void admitLogLevel(int level)
{
    LogSetLevel(LogGetContext("kep"), level);
}
