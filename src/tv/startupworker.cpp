// SPDX-License-Identifier: Apache-2.0
// The start-up worker's thread. What a thread touches last must outlive every static object, so the
// shared part is never destroyed.
#include "startupworker.h"

#include <thread>

#include <unistd.h>

namespace
{

// Whether this thread is one of the workers: the process may be ended by the work itself.
thread_local bool tIsWorker = false;

} // namespace

struct StartupWorker::Shared {
    std::mutex guard;
    std::condition_variable changed;
    bool stopping = false;
    int running = 0;
};

StartupWorker& StartupWorker::instance()
{
    static StartupWorker worker;
    return worker;
}

StartupWorker::StartupWorker() : mShared(*new Shared), mProcess(getpid()) {}

StartupWorker::~StartupWorker()
{
    if (getpid() != mProcess)
        return; // a forked child has none of the threads, and perhaps a guard that nobody will give
                // back
    std::unique_lock lock{mShared.guard};
    mShared.stopping = true;
    mShared.changed.notify_all();
    const int self = tIsWorker ? 1 : 0; // cannot wait for itself
    mShared.changed.wait(lock, [this, self] { return mShared.running == self; });
}

void StartupWorker::launch(std::function<void()> work)
{
    {
        const std::lock_guard lock{mShared.guard};
        ++mShared.running;
    }
    try {
        std::thread([this, work = std::move(work)] {
            tIsWorker = true;
            try {
                work();
            } catch (...) { // out of memory at worst: the rest of the work is lost, not the process
            }
            finished();
        }).detach();
    } catch (...) { // no thread, or no memory for one
        finished();
        throw;
    }
}

bool StartupWorker::stopping()
{
    const std::lock_guard lock{mShared.guard};
    return mShared.stopping;
}

bool StartupWorker::sleep(std::chrono::milliseconds duration)
{
    std::unique_lock lock{mShared.guard};
    return !mShared.changed.wait_for(lock, duration, [this] { return mShared.stopping; });
}

void StartupWorker::finished()
{
    const std::lock_guard lock{mShared.guard};
    --mShared.running;
    mShared.changed.notify_all();
}
