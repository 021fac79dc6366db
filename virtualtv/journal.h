// SPDX-License-Identifier: Apache-2.0
// The journal: everything that the virtual television is told to do, in the order in which it
// happens. All of it may be used from any thread.
#pragma once

#include <functional>

#include "jvalue.h"
#include "virtualtvexport.h"

namespace virtualtv
{

class Event;

/// Receives one event, a JSON object with "event" first, on the thread that caused it.
using Listener = std::function<void(const JValue& event)>;

/// Sends all events to `listener`; an empty one stops that.
VIRTUALTV_EXPORT void listen(Listener listener);
/// The same for one who takes events as they are reported, without a copy of what they refer to.
using EventListener = std::function<void(const Event& event)>;
VIRTUALTV_EXPORT void listenDirectly(EventListener listener);
/// Whether anybody listens: ask before an event is made, so that a deaf journal costs next to
/// nothing.
VIRTUALTV_EXPORT bool listening() noexcept;
VIRTUALTV_EXPORT void report(const Event& event);

/// How often a virtual card was opened and closed in this process, by any client of libasound.
struct HandleCount {
    int opened;
    int closed;
};
VIRTUALTV_EXPORT HandleCount cardHandles() noexcept;
VIRTUALTV_EXPORT void countCardOpened() noexcept;
VIRTUALTV_EXPORT void countCardClosed() noexcept;

} // namespace virtualtv
