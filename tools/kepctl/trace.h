// SPDX-License-Identifier: Apache-2.0
// Where all events of a run come together, in the order in which they happen, and are written out.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "event.h"
#include "platformlog.h"

using virtualtv::Event;

/// How events are written. Called for one event at a time.
class EventWriter
{
public:
    virtual ~EventWriter() = default;
    virtual void write(const Event& event) = 0;
    /// A comment of the script, for those who read along.
    virtual void comment(const std::string&) {}
};

/// One JSON object a line, for tools.
std::unique_ptr<EventWriter> makeJsonLinesWriter();
struct TextStyle {
    bool colour = false; // terminal escapes
    bool time = false;   // a column for the events' "ms"
};
/// Blocks for people, folded to the width of the terminal, if there is one. A control event may
/// carry its "meaning" in words.
std::unique_ptr<EventWriter> makeTextWriter(const TextStyle& style);

/// What has happened since the last request, as far as it explains a result.
struct Happened {
    bool anything = false;     // any event
    bool errorLogged = false;  // an error or a warning
    bool failedAccess = false; // a card, the middleware or a line gave a failure
};

/// Collects the events of the script, the log and the virtual television from any thread.
/// Constructed on the main thread, never destroyed: there are events until the process ends.
class Trace
{
public:
    explicit Trace(std::unique_ptr<EventWriter> writer);

    void add(Event event);
    void comment(const std::string& text);
    [[nodiscard]] Happened happened() const;

private:
    void add(const LogMessage& message);
    void watch(const Event& event);

    mutable std::mutex mGuard;
    Happened mHappened;
    const std::unique_ptr<EventWriter> mWriter;
    const std::thread::id mMainThread = std::this_thread::get_id();
};
