// SPDX-License-Identifier: Apache-2.0
// The journal: one listener, reached from any thread until the very end of the process.
#include "journal.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "event.h"

namespace virtualtv
{
namespace
{

struct Journal {
    std::mutex guard;
    std::shared_ptr<const EventListener> listener;
};

Journal& theJournal()
{
    static Journal* const journal =
        new Journal; // leaked: events come during static destruction, too
    return *journal;
}

std::atomic<bool> gListening{false};
std::atomic<int> gOpened{0};
std::atomic<int> gClosed{0};

} // namespace

void listen(Listener listener)
{
    if (listener)
        listenDirectly(
            [listener = std::move(listener)](const Event& event) { listener(event.toValue()); });
    else
        listenDirectly({});
}

void listenDirectly(EventListener listener)
{
    std::shared_ptr<const EventListener> next;
    if (listener)
        next = std::make_shared<const EventListener>(std::move(listener));
    const std::lock_guard lock{theJournal().guard};
    gListening = next != nullptr;
    theJournal().listener.swap(next);
}

bool listening() noexcept
{
    return gListening.load(std::memory_order_relaxed);
}

void report(const Event& event)
{
    std::shared_ptr<const EventListener> listener;
    {
        const std::lock_guard lock{theJournal().guard};
        listener = theJournal().listener;
    }
    if (listener)
        (*listener)(event);
}

HandleCount cardHandles() noexcept
{
    return {gOpened, gClosed};
}

void countCardOpened() noexcept
{
    gOpened.fetch_add(1, std::memory_order_relaxed);
}

void countCardClosed() noexcept
{
    gClosed.fetch_add(1, std::memory_order_relaxed);
}

} // namespace virtualtv
