// SPDX-License-Identifier: Apache-2.0
// The guards between the caller's thread and the start-up worker, and how a fork finds them.
#include "threads.h"

#include <array>
#include <ctime>
#include <memory>
#include <utility>

#include <pthread.h>

namespace threads
{

namespace
{

thread_local char tSelf; // its address tells threads apart

constinit Guard gForeignLibraries;
std::atomic<int> gWaitingForks{0};

void pause()
{
    constexpr timespec kOneMs = {.tv_sec = 0, .tv_nsec = 1'000'000};
    nanosleep(&kOneMs, nullptr);
}

} // namespace

// Needed until the very end of the process; nothing of them is ever destroyed.
constinit Guard parameterMapsGuard;
constinit Guard connectedResourcesGuard;

void Guard::lock()
{
    mMutex.lock();
    mHolder.store(&tSelf, std::memory_order_relaxed);
}

bool Guard::tryLock()
{
    const bool locked = mMutex.try_lock();
    if (locked)
        mHolder.store(&tSelf, std::memory_order_relaxed);
    return locked;
}

void Guard::unlock()
{
    mHolder.store(nullptr, std::memory_order_relaxed);
    mMutex.unlock();
}

void Guard::beFree()
{
    std::construct_at(&mMutex);
    mHolder.store(nullptr, std::memory_order_relaxed);
}

bool Guard::isHeldHere() const noexcept
{
    // Only this thread writes its own address, so what others do meanwhile does not matter.
    return mHolder.load(std::memory_order_relaxed) == &tSelf;
}

InForeignLibraries::InForeignLibraries()
{
    while (gWaitingForks > 0)
        pause();
    gForeignLibraries.lock();
}

InForeignLibraries::~InForeignLibraries()
{
    gForeignLibraries.unlock();
}

namespace
{

struct ForkRow {
    Guard& guard;
    bool taken; // by the fork
};
// The one that is held longest comes first.
constinit std::array gForkRows = {
    ForkRow{gForeignLibraries, false},
    ForkRow{connectedResourcesGuard, false},
    ForkRow{parameterMapsGuard, false},
};

/// Takes the guard, unless somebody holds it for longer than a fork may wait.
bool takeInTime(Guard& guard)
{
    constexpr int kPatienceMs =
        200; // a driver may be slow; the guards of the maps are free at once
    for (int waitedMs = 0; waitedMs < kPatienceMs; ++waitedMs) {
        if (guard.tryLock())
            return true;
        pause();
    }
    return false;
}

void beforeFork()
{
    ++gWaitingForks;
    for (ForkRow& row : gForkRows) {
        if (row.guard.isHeldHere()) // forked by a signal handler, say
            continue;
        if (takeInTime(row.guard))
            row.taken = true; // written behind the guard: another thread may fork as well
    }
}

void afterFork()
{
    for (ForkRow& row : gForkRows)
        if (row.guard.isHeldHere() && std::exchange(row.taken, false))
            row.guard.unlock();
    --gWaitingForks;
}

void afterForkInChild()
{
    afterFork();
    for (ForkRow& row : gForkRows)
        if (!row.guard.isHeldHere())
            row.guard.beFree(); // its holder, if there was one, is not in this process
}

} // namespace

unsigned int shortId() noexcept
{
    return static_cast<unsigned int>(pthread_self());
}

void surviveForks()
{
    // Without memory there are no handlers; a fork is then what it would be without this.
    static const int registered = pthread_atfork(&beforeFork, &afterFork, &afterForkInChild);
    static_cast<void>(registered);
}

} // namespace threads
