// SPDX-License-Identifier: Apache-2.0
// The GLib main loop.
#include "mainloop.h"

#include <memory>

#include <glib.h>

namespace
{

GMainLoop* gRunning = nullptr;

gboolean timeIsUp(gpointer)
{
    endMainLoop();
    return G_SOURCE_CONTINUE; // removed with the loop
}

} // namespace

void runMainLoop(unsigned int milliseconds)
{
    const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop{
        g_main_loop_new(nullptr, FALSE), &g_main_loop_unref};
    const guint timer = g_timeout_add(milliseconds, &timeIsUp, nullptr);
    gRunning = loop.get();
    g_main_loop_run(gRunning);
    gRunning = nullptr;
    g_source_remove(timer);
}

void endMainLoop()
{
    if (gRunning != nullptr)
        g_main_loop_quit(gRunning);
}
