// SPDX-License-Identifier: Apache-2.0
// How long an answer takes. The alarm's handler may only write and end.
#include "deadline.h"

#include <csignal>
#include <cstdio>

#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr int kFailed = 1;

char gLastWords[256];
std::size_t gLastWordsSize = 0;

extern "C" void giveUp(int)
{
    // Nothing can be done about words that do not get out.
    static_cast<void>(!write(STDOUT_FILENO, gLastWords, gLastWordsSize));
    _exit(kFailed);
}

void setAlarm(unsigned int milliseconds)
{
    itimerval timer = {};
    timer.it_value = {.tv_sec = milliseconds / 1000,
                      .tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

Deadline::Deadline(const std::string& who, unsigned int limitMs) : mWho(who), mLimitMs(limitMs)
{
    // The words are those of TAP for a run that cannot go on.
    const int size = std::snprintf(gLastWords, sizeof gLastWords,
                                   "Bail out! %.200s has not answered for %u ms\n", who.c_str(),
                                   kPatience * limitMs);
    gLastWordsSize = static_cast<std::size_t>(size);
    std::signal(SIGALRM, &giveUp);
    setAlarm(kPatience * limitMs);
}

Deadline::~Deadline()
{
    setAlarm(0);
}

std::string Deadline::fault() const
{
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - mBegin);
    if (taken.count() <= mLimitMs)
        return "";
    return "it took " + std::to_string(taken.count()) + " ms, more than the " +
           std::to_string(mLimitMs) + " of --limit";
}
