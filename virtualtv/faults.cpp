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

struct Planted {
    Injection injection;
    bool met = false; // by an access
};

struct Faults {
    std::mutex guard;
    std::vector<Planted> planted;        // oldest first
    std::vector<Injection> clearedUnmet; // likewise
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
    std::vector<Planted>& planted = theFaults().planted;
    const auto inForce = std::find_if(planted.begin(), planted.end(), [&](const Planted& each) {
        return matches(each.injection, point, name, card);
    });
    if (inForce == planted.end())
        return {};
    inForce->met = true;
    Injection& injection = inForce->injection;
    if (injection.times)
        --*injection.times;
    return {injection.status, injection.delayMs};
}

void appendUnmet(const std::vector<Planted>& planted, std::vector<Injection>& unmet)
{
    for (const Planted& each : planted)
        if (!each.met)
            unmet.push_back(each.injection);
}

} // namespace

void inject(Injection injection)
{
    const std::lock_guard lock{theFaults().guard};
    theFaults().planted.push_back({std::move(injection)});
    gAnyInjection = true;
}

void clearInjections()
{
    const std::lock_guard lock{theFaults().guard};
    Faults& faults = theFaults();
    appendUnmet(faults.planted, faults.clearedUnmet);
    faults.planted.clear();
    gAnyInjection = false;
}

std::vector<Injection> unmetInjections()
{
    const std::lock_guard lock{theFaults().guard};
    std::vector<Injection> unmet = theFaults().clearedUnmet;
    appendUnmet(theFaults().planted, unmet);
    return unmet;
}

std::vector<Injection> injectionsInForce()
{
    const std::lock_guard lock{theFaults().guard};
    std::vector<Injection> inForce;
    for (const auto& [injection, met] : theFaults().planted)
        if (injection.times != 0U)
            inForce.push_back(injection);
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
