// SPDX-License-Identifier: Apache-2.0
// Who may touch what, and when: the rule for the library's threads, and the guards that it needs.
//
// clang-format off
// There are two threads, and timers. The caller's thread makes the requests, one at a time; the timers run on it, too. The
// start-up worker runs beside it, once in general: when the configuration has come whole (startupworker.h).
//
//   what                                caller's thread                         start-up worker
//   parameter maps (kepTvParser)        reads without a lock, changes behind    copies behind `parameterMapsGuard`
//                                       `parameterMapsGuard`
//   connected resources                 the same, `connectedResourcesGuard`     copies behind that guard
//   pipelines, settings, current        alone                                   never
//   output, volume, digital state
//   reasons to mute the headphone,      atomic: any thread                      atomic: any thread
//   the unmute timer, the gains' flag
//   handles of middleware and adapters  written once, before the worker is      reads
//                                       launched
//
// Nobody holds a guard while calling out: neither middleware nor driver, GLib or log. So a callee that is slow,
// calls back, forks or ends the process finds no guard held, and a request waits for the worker no longer than
// a copy of one map takes. What the worker hands to the middleware is a snapshot, kept until the next one of
// the same call replaces it.
//
// A child of fork has the caller's thread only, and all guards as they were: `surviveForks` has each fork wait
// until nobody is behind one. libasound and GLib have guards of their own, so the worker is `InForeignLibraries`
// while it calls them; a fork waits for that, too (200 ms at most), a request never does.
// clang-format on
#pragma once

#include <atomic>
#include <mutex>

namespace threads
{

/// A mutex that knows whether the calling thread holds it.
class Guard
{
public:
    void lock();
    bool tryLock();
    void unlock();
    /// For a child of fork, in which its holder does not exist.
    void beFree();
    [[nodiscard]] bool isHeldHere() const noexcept;

private:
    std::mutex mMutex;
    std::atomic<const void*> mHolder{nullptr}; // something of the thread that holds it
};

extern Guard parameterMapsGuard;
extern Guard connectedResourcesGuard;

/// As long as one lives, the start-up worker is inside libasound or GLib. A fork that waits goes
/// first.
class InForeignLibraries
{
public:
    InForeignLibraries();
    ~InForeignLibraries();
    InForeignLibraries(const InForeignLibraries&) = delete;
    InForeignLibraries& operator=(const InForeignLibraries&) = delete;
};

/// What the log calls the calling thread.
[[nodiscard]] unsigned int shortId() noexcept;

/// From now on a fork finds no guard held, but by its own thread. For the first launch of a thread.
void surviveForks();

} // namespace threads
