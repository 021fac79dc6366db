// SPDX-License-Identifier: Apache-2.0
// The levels of the library's log context.
#include "loglevels.h"

namespace
{

struct Row {
    int level;
    const char* name;
};
constexpr Row kLevels[] = {
    {kLogError, "error"},
    {kLogWarning, "warning"},
    {kLogInfo, "info"},
    {kLogDebug, "debug"},
};

} // namespace

bool isLogLevel(int level)
{
    for (const Row& row : kLevels)
        if (row.level == level)
            return true;
    return false;
}

const char* logLevelName(int level)
{
    for (const Row& row : kLevels)
        if (row.level == level)
            return row.name;
    return "log";
}

void admitLogLevel(int level)
{
    LogSetLevel(LogGetContext("kep"), level);
}
