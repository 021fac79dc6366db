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
    void write(const JValue& event) override { output::print(event.stringify() + "\n"); }
};

JValue logEvent(const LogMessage& message)
{
    JValue event = JValue::object();
    event.put("event", "log");
    event.put("level", message.level);
    event.put("id", message.id);
    event.put("text", message.text);
    JValue pairs = JValue::object();
    for (std::size_t i = 0; i < message.pairCount; ++i)
        static_cast<void>(pairs.put(message.pairs[i].key, message.pairs[i].value)); // no NUL inside
    if (pairs.size() > 0)
        static_cast<void>(event.put("pairs", pairs));
    return event;
}

} // namespace

std::unique_ptr<EventWriter> makeJsonLinesWriter()
{
    return std::make_unique<JsonLinesWriter>();
}

Trace::Trace(std::unique_ptr<EventWriter> writer) : mWriter(std::move(writer))
{
    LogSetSink([this](const LogMessage& message) { add(logEvent(message)); });
    virtualtv::listen([this](const JValue& event) { add(event); });
}

void Trace::add(JValue event)
{
    if (std::this_thread::get_id() != mMainThread)
        event.put("thread", "worker");
    const std::lock_guard lock{mGuard};
    watch(event);
    mWriter->write(event);
}

void Trace::watch(const JValue& event)
{
    const std::string kind = event["event"].asString();
    if (kind == "request")
        mHappened = {};
    if (kind == "request" || kind == "result")
        return;
    mHappened.anything = true;
    mHappened.errorLogged =
        mHappened.errorLogged ||
        (kind == "log" && event["level"].asNumber<std::int32_t>() <= kLogWarning);
    mHappened.failedAccess =
        mHappened.failedAccess || event["status"].asNumber<std::int32_t>() != 0;
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
