// SPDX-License-Identifier: Apache-2.0
// What may happen to events before they are written.
#include "eventfilters.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "explain.h"
#include "loglevels.h"

namespace
{

/// Looks at an event, and may change it; false drops it.
using Change = std::function<bool(Event& event)>;

class Filter : public EventWriter
{
public:
    Filter(Change change, bool comments, std::unique_ptr<EventWriter> next)
        : mChange(std::move(change)), mComments(comments), mNext(std::move(next))
    {
    }

    void write(const Event& event) override
    {
        Event changed = event;
        if (mChange(changed))
            mNext->write(changed);
    }
    void comment(const std::string& text) override
    {
        if (mComments)
            mNext->comment(text);
    }

private:
    const Change mChange;
    const bool mComments; // are handed on
    const std::unique_ptr<EventWriter> mNext;
};

std::unique_ptr<EventWriter> filtered(Change change, std::unique_ptr<EventWriter> next,
                                      bool comments = true)
{
    return std::make_unique<Filter>(std::move(change), comments, std::move(next));
}

// --- Selection

constexpr std::string_view kLog = "log";
constexpr const char* kSelectionForm =
    "--only takes request, result, control, middleware, gpio, subcpu, log or log:N, "
    "separated by commas";

/// The place of that kind in kTraceEvents; "requests" will do for "request".
std::optional<std::size_t> kindOf(std::string_view name)
{
    for (std::size_t i = 0; i < std::size(kTraceEvents); ++i) {
        const std::string_view kind = kTraceEvents[i].name;
        if (name.starts_with(kind) &&
            (name.size() == kind.size() || name.substr(kind.size()) == "s"))
            return i;
    }
    return std::nullopt;
}

/// Selects what one word of the list names; false when it names nothing.
bool select(const std::string& word, EventSelection& selection)
{
    const std::size_t colon = word.find(':');
    const std::string name = word.substr(0, colon);
    const std::optional<std::size_t> kind = kindOf(name);
    if (!kind)
        return false;
    int level = kLogDebug;
    if (colon != std::string::npos) {
        const std::string digit = word.substr(colon + 1);
        level = digit.size() == 1 ? digit.front() - '0' : -1;
        if (kTraceEvents[*kind].name != kLog || !isLogLevel(level))
            return false;
    }
    selection.shown[*kind] = true;
    if (kTraceEvents[*kind].name == kLog)
        selection.logLevel = std::max(selection.logLevel, level);
    return true;
}

// --- Clocks and thread ids

/// A number in the text of a log line that no two runs have in common.
struct Varying {
    const char* id;     // of the line
    const char* before; // what stands before the number
    const char* digits; // what it is made of
};
// clang-format off
constexpr Varying kVarying[] = {
    {"PERFORMANCE_LOG", "{\"CLOCK\":",        "0123456789."},
    {"INFO_LOG",        "Thread :: ID  = 0x", "0123456789abcdef"},
};
// clang-format on
constexpr const char* kVaryingPairs[] = {"CLOCK"};

std::string withoutVarying(std::string text, std::string_view id)
{
    for (const Varying& varying : kVarying) {
        const std::size_t place = id == varying.id ? text.find(varying.before) : std::string::npos;
        if (place == std::string::npos)
            continue;
        const std::size_t start = place + strlen(varying.before);
        const std::size_t end =
            std::min(text.find_first_not_of(varying.digits, start), text.size());
        text.replace(start, end - start, 1, '0');
    }
    return text;
}

} // namespace

bool EventSelection::shows(const Event& event) const
{
    const std::optional<std::size_t> kind = kindOf(event.kind());
    if (!kind || !shown[*kind])
        return false;
    return kTraceEvents[*kind].name != kLog || event.number("level") <= logLevel;
}

std::string parseSelection(const std::string& list, EventSelection& selection)
{
    selection = {};
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        const std::string word = list.substr(start, end - start);
        if (!select(word, selection))
            return "\"" + word + "\" is no event: " + kSelectionForm;
        start = end + 1;
    }
    return "";
}

std::unique_ptr<EventWriter> selecting(const EventSelection& selection,
                                       std::unique_ptr<EventWriter> next)
{
    return filtered([selection](const Event& event) { return selection.shows(event); },
                    std::move(next), /*comments=*/selection.shown[*kindOf("request")]);
}

std::unique_ptr<EventWriter> timing(bool clocks, std::unique_ptr<EventWriter> next)
{
    using std::chrono::steady_clock;
    const auto elapsed = [start = steady_clock::now()] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - start);
    };
    return filtered(
        [clocks, elapsed](Event& event) {
            event.put("ms", clocks ? elapsed().count() : 0);
            return true;
        },
        std::move(next));
}

std::unique_ptr<EventWriter> withoutClocks(std::unique_ptr<EventWriter> next)
{
    return filtered(
        [text = std::string{}, pairs = JValue{}](Event& event) mutable {
            if (event.kind() != kLog)
                return true;
            text = withoutVarying(std::string{event.text("text")}, event.text("id"));
            event.put("text", text);
            const JValue* found = event.value("pairs");
            pairs = found != nullptr ? *found : JValue{};
            for (const char* key : kVaryingPairs)
                if (pairs.hasKey(key))
                    static_cast<void>(pairs.put(key, "0"));
            return true;
        },
        std::move(next));
}

std::unique_ptr<EventWriter> explaining(std::unique_ptr<EventWriter> next)
{
    return filtered(
        [meaning = std::string{}](Event& event) mutable {
            meaning = explained(event.text("element"), event.numbers("values"));
            if (!meaning.empty())
                event.put("meaning", meaning);
            return true;
        },
        std::move(next));
}

std::unique_ptr<EventWriter> announcing(std::function<void()> announce,
                                        std::unique_ptr<EventWriter> next)
{
    return filtered(
        [announce = std::move(announce)](const Event&) {
            announce();
            return true;
        },
        std::move(next));
}
