// SPDX-License-Identifier: Apache-2.0
// Runs what a test wants on the start-up worker's thread.
#pragma once

#include <functional>
#include <future>
#include <memory>
#include <utility>

#include "startupworker.h"

/// Launches `work`; the result is ready when it has ended.
inline std::future<void> launched(std::function<void()> work)
{
    auto promise = std::make_shared<std::promise<void>>();
    std::future<void> ended = promise->get_future();
    StartupWorker::instance().launch([promise, work = std::move(work)] {
        work();
        promise->set_value();
    });
    return ended;
}

inline void onWorker(std::function<void()> work)
{
    launched(std::move(work)).get();
}
