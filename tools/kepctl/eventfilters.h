// SPDX-License-Identifier: Apache-2.0
// What may happen to events before they are written: some left out, some made comparable, a time
// added. Each filter hands on to the writer that it is given.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "trace.h"
#include "traceevents.h"

/// Which events are shown.
struct EventSelection {
    std::array<bool, std::size(kTraceEvents)> shown{}; // as kTraceEvents
    int logLevel = 0;                                  // log lines up to that one

    [[nodiscard]] bool shows(const Event& event) const;
};

/// Reads a list such as "requests,control,log:3"; the reason when it is none, "" when it is.
std::string parseSelection(const std::string& list, EventSelection& selection);

/// Hands on the selected events only, and a script's comments where requests are selected.
std::unique_ptr<EventWriter> selecting(const EventSelection& selection,
                                       std::unique_ptr<EventWriter> next);
/// Adds the milliseconds since it was made as the last key, "ms"; 0 without clocks.
std::unique_ptr<EventWriter> timing(bool clocks, std::unique_ptr<EventWriter> next);
/// Writes 0 for the clocks and thread ids that log texts and pairs carry.
std::unique_ptr<EventWriter> withoutClocks(std::unique_ptr<EventWriter> next);
/// Adds what the integers of driver writes stand for, as "meaning".
std::unique_ptr<EventWriter> explaining(std::unique_ptr<EventWriter> next);
/// Calls `announce` before each event.
std::unique_ptr<EventWriter> announcing(std::function<void()> announce,
                                        std::unique_ptr<EventWriter> next);
