// SPDX-License-Identifier: Apache-2.0
// How a stand-in answers a call: with the status planted for it, after it has told the journal.
#pragma once

#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devicenames.h"
#include "event.h"
#include "faults.h"
#include "journal.h"
#include "mwlparams.h"

namespace virtualtv
{

template <typename T>
JValue toJson(const T& value)
{
    return value;
}

template <typename Element>
JValue arrayOf(const Element& elements)
{
    JValue array = JValue::array();
    for (const auto& element : elements)
        static_cast<void>(array.append(element)); // an array refuses no text and no number
    return array;
}

inline JValue toJson(std::span<const int> values)
{
    return arrayOf(values);
}

inline JValue toJson(const std::vector<std::string>& texts)
{
    return arrayOf(texts);
}

inline JValue toJson(const MwlParams& parameters)
{
    JValue object = JValue::object();
    for (const auto& [key, value] : parameters)
        static_cast<void>(object.put(key, value)); // keys are those of JSON objects
    return object;
}

template <typename... Arguments>
JValue listOf(const Arguments&... arguments)
{
    JValue values = JValue::array();
    (static_cast<void>(values.append(toJson(arguments))), ...); // two levels at most
    return values;
}

/// The event of a call of `operation`, "library.operation", without its outcome.
inline Event middlewareEvent(MiddlewareName name, const JValue& arguments)
{
    const std::string_view operation = name;
    const std::size_t dot = operation.find('.');
    Event event{"middleware"};
    event.put("library", operation.substr(0, dot));
    event.put("operation", operation.substr(dot + 1));
    event.put("args", arguments);
    return event;
}

/// The status of a call; nothing is made of its arguments unless somebody listens.
template <typename... Arguments>
int answer(MiddlewareName operation, const Arguments&... arguments)
{
    const int status = injectedStatus(FaultPoint::Middleware, operation);
    if (listening()) {
        const JValue given = listOf(arguments...);
        Event event = middlewareEvent(operation, given);
        event.put("status", status);
        report(event);
    }
    return status;
}

/// The same for a query that answers `returned` and no status; it can be late, though.
template <typename Returned, typename... Arguments>
Returned answerQuery(MiddlewareName operation, Returned returned, const Arguments&... arguments)
{
    injectedStatus(FaultPoint::Middleware, operation);
    if (listening()) {
        const JValue given = listOf(arguments...);
        const JValue answered = toJson(returned);
        Event event = middlewareEvent(operation, given);
        event.put("returned", answered);
        report(event);
    }
    return returned;
}

} // namespace virtualtv
