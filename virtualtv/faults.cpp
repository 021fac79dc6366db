// SPDX-License-Identifier: Apache-2.0
// Faults that a script or a test plants in the virtual television.
#include "faults.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace virtualtv
{
namespace
{

struct Faults {
    std::mutex guard;
    std::vector<Injection> injections; // oldest first
};

Faults& theFaults()
{
    static Faults* const faults =
        new Faults; // leaked: accesses come during static destruction, too
    return *faults;
}

std::atomic<bool> gAnyInjection{false}; // spares the lock as long as nothing is planted

thread_local int gWithout = 0; // WithoutInjections of this thread

bool matches(const Injection& injection, FaultPoint point, std::string_view name,
             std::string_view card)
{
    return injection.point == point && (injection.name == "*" || injection.name == name) &&
           (injection.card.empty() || injection.card == card) && injection.times != 0U;
}

struct Answer {
    int status = 0;
    unsigned delayMs = 0;
};

/// What the oldest matching injection in force answers, used up once.
Answer answerTo(FaultPoint point, std::string_view name, std::string_view card)
{
    const std::lock_guard lock{theFaults().guard};
    std::vector<Injection>& injections = theFaults().injections;
    const auto inForce =
        std::find_if(injections.begin(), injections.end(), [&](const Injection& injection) {
            return matches(injection, point, name, card);
        });
    if (inForce == injections.end())
        return {};
    if (inForce->times)
        --*inForce->times;
    return {inForce->status, inForce->delayMs};
}

} // namespace

void inject(Injection injection)
{
    const std::lock_guard lock{theFaults().guard};
    theFaults().injections.push_back(std::move(injection));
    gAnyInjection = true;
}

void clearInjections()
{
    const std::lock_guard lock{theFaults().guard};
    theFaults().injections.clear();
    gAnyInjection = false;
}

std::vector<Injection> injectionsInForce()
{
    const std::lock_guard lock{theFaults().guard};
    std::vector<Injection> inForce = theFaults().injections;
    std::erase_if(inForce, [](const Injection& injection) { return injection.times == 0U; });
    return inForce;
}

WithoutInjections::WithoutInjections()
{
    ++gWithout;
}

WithoutInjections::~WithoutInjections()
{
    --gWithout;
}

int injectedStatus(FaultPoint point, std::string_view name, std::string_view card)
{
    if (!gAnyInjection.load(std::memory_order_relaxed) || gWithout > 0)
        return 0;
    const Answer answer = answerTo(point, name, card);
    if (answer.delayMs > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds{answer.delayMs});
    return answer.status;
}

} // namespace virtualtv
