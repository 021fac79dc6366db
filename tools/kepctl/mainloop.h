// SPDX-License-Identifier: Apache-2.0
// The GLib main loop, in which the library's timers run.
#pragma once

/// Runs it for that long, or until it is ended. On the main thread.
void runMainLoop(unsigned int milliseconds);
/// Ends it early, if it runs. From one of its callbacks.
void endMainLoop();
