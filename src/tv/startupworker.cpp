// SPDX-License-Identifier: Apache-2.0
// The start-up worker's thread. What a thread touches last must outlive every static object, so the
// shared part is never destroyed.
#include "startupworker.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <thread>
#include <utility>

#include <semaphore.h>
#include <unistd.h>

#include "kepcaught.h"
#include "threads.h"

namespace
{

using std::chrono::milliseconds;

constexpr milliseconds kPatience{2000}; // of the end of the process

// Whether this thread is one of the workers: the process may be ended by the work itself.
thread_local bool tIsWorker = false;
std::atomic<bool> gAbandoned{false};

timespec afterNow(milliseconds duration)
{
    timespec moment = {};
    clock_gettime(CLOCK_MONOTONIC, &moment);
    const long nanoseconds =
        moment.tv_nsec + static_cast<long>(duration.count() % 1000) * 1'000'000;
    moment.tv_sec += duration.count() / 1000 + nanoseconds / 1'000'000'000;
    moment.tv_nsec = nanoseconds % 1'000'000'000;
    return moment;
}

/// Takes one post of the semaphore; false when none comes before the moment.
bool awaitPost(sem_t& semaphore, const timespec& moment)
{
    int result = 0;
    do {
        result = sem_clockwait(&semaphore, CLOCK_MONOTONIC, &moment);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

} // namespace

struct StartupWorker::Shared {
    Shared() // NOLINT(*-member-init): sem_init does it
    {
        sem_init(&ending, 0, 0);
        sem_init(&workEnded, 0, 0);
    }

    std::atomic<bool> stopping{false};
    std::atomic<int> running{0};
    std::atomic<const char*> step{"sleep"};
    sem_t ending; // posted, and posted again by whom it wakes, once the process ends
    sem_t workEnded;
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
        return; // a forked child has none of the threads
    mShared.stopping = true;
    sem_post(&mShared.ending);
    const int self = tIsWorker ? 1 : 0; // cannot wait for itself
    const timespec deadline = afterNow(kPatience);
    while (mShared.running > self) {
        if (!awaitPost(mShared.workEnded, deadline)) {
            gAbandoned = true;
            KEP_ERROR_AS((kepLogOrigin{"keptvaudio", "startXmlParsing", __LINE__}), "ERROR_LOG",
                         "Step %s has not ended within %d ms, leaving without it",
                         mShared.step.load(), static_cast<int>(kPatience.count()));
            return;
        }
    }
}

void StartupWorker::launch(std::function<void()> work)
{
    threads::surviveForks();
    ++mShared.running;
    try {
        std::thread([this, work = std::move(work)] {
            tIsWorker = true;
            struct Finish {
                StartupWorker& worker;
                ~Finish() { worker.finished(); }
            };
            const Finish atTheEnd{*this}; // also of a thread that the work ends
            try {
                work();
            } catch (...) { // the rest of the work is lost, not the process
                kepLogCaught({"keptvaudio", "startXmlParsing", __LINE__}, "startXmlParsing");
            }
        }).detach();
    } catch (...) { // no thread, or no memory for one
        finished();
        throw;
    }
}

bool StartupWorker::isCurrentThread() noexcept
{
    return tIsWorker;
}

bool StartupWorker::isAbandoned() noexcept
{
    return gAbandoned;
}

bool StartupWorker::stopping()
{
    return mShared.stopping;
}

bool StartupWorker::sleep(milliseconds duration)
{
    const timespec moment = afterNow(duration);
    while (!mShared.stopping) {
        if (!awaitPost(mShared.ending, moment))
            return !mShared.stopping;
        sem_post(&mShared.ending); // for the next one who sleeps
    }
    return false;
}

void StartupWorker::begin(const char* step)
{
    mShared.step = step;
}

void StartupWorker::finished()
{
    --mShared.running;
    sem_post(&mShared.workEnded);
}
