// SPDX-License-Identifier: Apache-2.0
// The start-up worker's thread, and how it ends when the process does.
#pragma once

#include <chrono>
#include <functional>

#include <sys/types.h>

/// Runs the start-up work on detached threads. Nobody joins them, yet the process may end at any
/// moment of their life: the one instance is made at the first launch, so at exit it is destroyed
/// before all that the work uses. It then asks the work to stop and waits for the step that is
/// running, two seconds at most. No lock is involved: the process may end inside a step, on
/// whatever thread, in a signal handler too.
class StartupWorker
{
public:
    static StartupWorker& instance();

    ~StartupWorker();
    StartupWorker(const StartupWorker&) = delete;
    StartupWorker& operator=(const StartupWorker&) = delete;

    /// Runs `work` on a thread of its own; throws std::system_error when there can be none.
    void launch(std::function<void()> work);

    /// Whether the calling thread is a worker.
    [[nodiscard]] static bool isCurrentThread() noexcept;
    /// Whether the process went on to end without a step that did not: what that step may still
    /// touch must not be destroyed.
    [[nodiscard]] static bool isAbandoned() noexcept;

    // --- For the work itself

    /// Whether the process is ending: asked before every step.
    [[nodiscard]] bool stopping();
    /// Sleeps that long; false, at once, when the process is ending.
    [[nodiscard]] bool sleep(std::chrono::milliseconds duration);
    /// Names the step that begins, for the line that is logged when it has to be abandoned.
    void begin(const char* step);

private:
    StartupWorker();

    void finished();

    struct Shared;
    Shared& mShared; // outlives this object: a thread touches it last of all
    const pid_t mProcess;
};
