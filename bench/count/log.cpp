// SPDX-License-Identifier: Apache-2.0
// Log lines: one that is not admitted, and one that is, next to the same line with fprintf.
#include <cstdio>
#include <ctime>

#include "cases.h"
#include "keplog.h"

namespace count
{
namespace
{

void setLevel(int level)
{
    LogContext* context = LogGetContext("kep");
    kepLogContext = context;
    LogSetLevel(context, level);
}

void writeByHand(int number)
{
    fprintf(stderr, "%s-%s: %02d:%02d:%02d.%03d: %s:%s(%d) volume %d on output %s  %s\n", "kep",
            "INFO", 12, 34, 56, 789, "log", "write", 42, number, "tv_speaker", "INFO_LOG");
}

inline void refuse()
{
    KEP_INFO("volume %d on output %s", 20, "tv_speaker");
}

} // namespace

void addLogCases(std::vector<Case>& cases)
{
    cases.push_back({"log.line", [] { setLevel(kLogInfo); },
                     [] { KEP_INFO("volume %d on output %s", 20, "tv_speaker"); }, 100});
    cases.push_back({"log.line.byHand", {}, [] { writeByHand(20); }, 100});
    cases.push_back({"log.refused.10", [] { setLevel(kLogError); },
                     [] {
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                         refuse();
                     },
                     100});
    cases.push_back({"log.refused.call", [] { setLevel(kLogError); },
                     [] {
                         LogMsgKV(kepLogContext, kLogInfo, "INFO_LOG", nullptr, 0,
                                  "volume %d on output %s", 20, "tv_speaker");
                     },
                     100});
    cases.push_back({"log.nothing", {}, [] {}, 100});
}

} // namespace count
