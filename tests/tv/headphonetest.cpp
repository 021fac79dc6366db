// SPDX-License-Identifier: Apache-2.0
// What the linker puts in front of GLib's functions: timers keep their order but not their length,
// and pauses are only noted.
#include "headphonetest.h"

extern "C" {
guint __real_g_timeout_add(guint interval, GSourceFunc callback, gpointer data);

guint __wrap_g_timeout_add(guint interval, GSourceFunc callback, gpointer data)
{
    gTimers.push_back({interval, callback, data});
    return __real_g_timeout_add(1, callback, data);
}

void __wrap_g_usleep(gulong microseconds)
{
    gPausesUs.push_back(microseconds);
}
}
