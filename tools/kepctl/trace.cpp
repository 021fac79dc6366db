// SPDX-License-Identifier: Apache-2.0
// Where all events of a run come together.
#include "trace.h"

#include "journal.h"
#include "output.h"
#include "platformlog.h"

namespace
{

class JsonLinesWriter : public EventWriter
{
public:
    void write(const Event& event) override
    {
        mLine.clear();
        event.appendTo(mLine);
        mLine += '\n';
        output::print(mLine);
    }

private:
    std::string mLine; // kept for its memory
};

JValue objectOf(std::span<const LogPair> pairs)
{
    JValue object = JValue::object();
    for (const auto& [key, value] : pairs)
        static_cast<void>(object.put(key, value)); // no NUL inside
    return object;
}

} // namespace

std::unique_ptr<EventWriter> makeJsonLinesWriter()
{
    return std::make_unique<JsonLinesWriter>();
}

Trace::Trace(std::unique_ptr<EventWriter> writer) : mWriter(std::move(writer))
{
    LogSetSink([this](const LogMessage& message) { add(message); });
    virtualtv::listenDirectly([this](const Event& event) { add(event); });
}

void Trace::add(const LogMessage& message)
{
    Event event{"log"};
    event.put("level", message.level);
    event.put("id", message.id);
    event.put("text", message.text);
    if (message.pairCount == 0)
        return add(event);
    const JValue pairs = objectOf({message.pairs, message.pairCount});
    event.put("pairs", pairs);
    add(event);
}

void Trace::add(Event event)
{
    if (std::this_thread::get_id() != mMainThread)
        event.put("thread", "worker");
    const std::lock_guard lock{mGuard};
    watch(event);
    mWriter->write(event);
}

void Trace::watch(const Event& event)
{
    const std::string_view kind = event.kind();
    if (kind == "request")
        mHappened = {};
    if (kind == "request" || kind == "result")
        return;
    mHappened.anything = true;
    mHappened.errorLogged =
        mHappened.errorLogged || (kind == "log" && event.number("level") <= kLogWarning);
    mHappened.failedAccess = mHappened.failedAccess || event.number("status") != 0;
}

Happened Trace::happened() const
{
    const std::lock_guard lock{mGuard};
    return mHappened;
}

void Trace::comment(const std::string& text)
{
    const std::lock_guard lock{mGuard};
    mWriter->comment(text);
}
