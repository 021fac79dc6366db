// SPDX-License-Identifier: Apache-2.0
// What the linker puts in front of the functions that the start-up calls.
#include "startuptest.h"

#include <chrono>
#include <functional>
#include <mutex>

#include <glib.h>

#include "startupworker.h"

using std::chrono::milliseconds;

extern "C" {
bool __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds duration);
void __real__ZN13StartupWorker6launchESt8functionIFvvEE(StartupWorker* worker,
                                                        std::function<void()> work);
guint __real_g_timeout_add(guint intervalMs, GSourceFunc callback, gpointer data);

bool __wrap__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds duration)
{
    gPauseMs = duration.count();
    return __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
        worker, gRealPause ? duration : milliseconds{0});
}

void __wrap__ZN13StartupWorker6launchESt8functionIFvvEE(StartupWorker* worker,
                                                        std::function<void()> work)
{
    ++gWorksLaunched;
    __real__ZN13StartupWorker6launchESt8functionIFvvEE(worker, [work] {
        work();
        ++gWorksEnded;
    });
}

guint __wrap_g_timeout_add(guint intervalMs, GSourceFunc callback, gpointer data)
{
    const guint id = __real_g_timeout_add(gTimersFireSoon ? 1 : intervalMs, callback, data);
    const std::lock_guard lock{gTimersGuard};
    gTimers.push_back({intervalMs, callback, data, id});
    return id;
}
}
