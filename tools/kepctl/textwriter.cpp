// SPDX-License-Identifier: Apache-2.0
// The text format: a request a block, its effects indented under it, failures standing out.
#include <climits>
#include <cstring>
#include <optional>
#include <string>

#include "loglevels.h"
#include "operations.h"
#include "output.h"
#include "resultwords.h"
#include "terminal.h"
#include "textlayout.h"
#include "trace.h"

namespace
{

enum class Look { Plain, Bold, Dim, Good, Warning, Bad };

// Terminal escapes by Look.
constexpr const char* kEscapes[] = {"", "\033[1m", "\033[2m", "\033[32m", "\033[33m", "\033[1;31m"};
constexpr const char* kPlainEscape = "\033[0m";

constexpr std::size_t kWhereWidth = 12; // of the column that says where an effect happened
constexpr std::size_t kTimeWidth = 7;   // of the milliseconds

// How far what does not fit a line is indented on the next.
constexpr std::size_t kRequestIndent = 8;
constexpr std::size_t kEffectIndent = 4 + kWhereWidth + 2;

struct Line {
    std::string text;
    Look look = Look::Plain;
    std::size_t indent = kEffectIndent;
    bool opensBlock = false; // an empty line stands before it
};

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string rightAligned(const std::string& text, std::size_t width)
{
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

/// Where an effect happened, then what it was.
std::string effect(const std::string& where, const std::string& what)
{
    return "    " + padded(where, kWhereWidth) + what;
}

std::string joined(const JValue& values, const char* separator)
{
    std::string all;
    for (const JValue& value : values.elements())
        all += (all.empty() ? "" : separator) + value.stringify();
    return all;
}

/// " failed: Input/output error" for a negative errno, " failed: 3" for another status, "" for
/// success.
std::string failure(const JValue& status)
{
    const auto code = status.asNumber<std::int32_t>();
    if (code == 0)
        return "";
    return code < 0 && code != INT_MIN ? std::string{"  failed: "} + strerror(-code)
                                       : "  failed: " + std::to_string(code);
}

Line withStatus(std::string text, const JValue& event)
{
    const std::string reason = failure(event["status"]);
    return {text + reason, reason.empty() ? Look::Plain : Look::Bad};
}

// --- One function an event

Line describeRequest(const JValue& event)
{
    std::string text;
    if (event.hasKey("call"))
        text = event["call"].asString() + "(" + joined(event["args"], ", ") + ")";
    else
        for (const auto& [key, value] : event.members())
            if (key != "event" && key != "ms")
                text += key + " " + value.stringify();
    return {text, Look::Bold, kRequestIndent, /*opensBlock=*/true};
}

Line describeLog(const JValue& event)
{
    const auto level = event["level"].asNumber<std::int32_t>();
    std::string text = event["text"].asString();
    text.erase(text.find_last_not_of(" \n") + 1);
    const std::string id = event["id"].asString();
    const Look look = level <= kLogError     ? Look::Bad
                      : level <= kLogWarning ? Look::Warning
                                             : Look::Dim;
    return {effect(logLevelName(level), (id.empty() ? "" : id + "  ") + text), look};
}

Line describeControl(const JValue& event)
{
    const std::string card = event["card"].asString();
    if (event.hasKey("stage"))
        return withStatus(effect(card, event["stage"].asString()), event);
    const std::string element = event["element"].asString();
    const std::string values = joined(event["values"], " ");
    const std::string write = event.hasKey("meaning")
                                  ? event["meaning"].asString() + "  (" + values + ")"
                                  : element + " = " + values;
    return withStatus(effect(card, write), event);
}

Line describeMiddleware(const JValue& event)
{
    std::string text = event["operation"].asString() + "(" + joined(event["args"], ", ") + ")";
    if (event.hasKey("returned"))
        text += " = " + event["returned"].stringify();
    return withStatus(effect(event["library"].asString(), text), event);
}

Line describeGpio(const JValue& event)
{
    return withStatus(
        effect("gpio", event["line"].asString() + " is " + event["level"].stringify()), event);
}

Line describeSubcpu(const JValue& event)
{
    return withStatus(
        effect("subcpu", event["operation"].asString() + "(" + joined(event["args"], ", ") + ")"),
        event);
}

Line describeResult(const JValue& event)
{
    const Operation* operation = findOperation(event["call"].asString());
    const bool bad = operation != nullptr && failed(*operation, event["result"]);
    std::string text = "  = " + event["result"].stringify();
    const std::string words = operation != nullptr ? resultWords(*operation, event["result"]) : "";
    text += (words.empty() ? "" : " ") + words;
    if (event.hasKey("connected"))
        text += event["connected"].asBool() ? ", connected" : ", not connected";
    return {text, bad ? Look::Bad : Look::Good, kRequestIndent};
}

struct Row {
    const char* event;
    Line (*describe)(const JValue& event);
};
constexpr Row kRows[] = {
    {"request", &describeRequest},       {"log", &describeLog},   {"control", &describeControl},
    {"middleware", &describeMiddleware}, {"gpio", &describeGpio}, {"subcpu", &describeSubcpu},
    {"result", &describeResult},
};

class TextWriter : public EventWriter
{
public:
    explicit TextWriter(const TextStyle& style) : mStyle(style) {}

    void write(const JValue& event) override
    {
        const std::string kind = event["event"].asString();
        for (const Row& row : kRows) {
            if (kind != row.event)
                continue;
            Line line = row.describe(event);
            if (event.hasKey("thread"))
                line.text += "  [" + event["thread"].asString() + "]";
            print(line, event.hasKey("ms") ? event["ms"].stringify() : "");
        }
        mInComment = false;
    }

    void comment(const std::string& text) override
    {
        print({text, Look::Plain, kRequestIndent, /*opensBlock=*/!mInComment}, "");
        mInComment = true;
    }

private:
    /// One line of the text, on as many lines of the terminal as it needs.
    void print(const Line& line, const std::string& time) const
    {
        const char* escape = mStyle.colour ? kEscapes[static_cast<int>(line.look)] : "";
        const char* end = *escape != '\0' ? kPlainEscape : "";
        const std::size_t margin = mStyle.time ? kTimeWidth + 1 : 0;
        const std::size_t width = terminalWidth();
        std::string column = mStyle.time ? rightAligned(time, kTimeWidth) + " " : "";
        std::string all = line.opensBlock ? "\n" : "";
        for (const std::string& part :
             folded(printable(line.text), width > margin ? width - margin : 0, line.indent)) {
            all += column + escape + part + end + "\n";
            column.assign(margin, ' ');
        }
        output::print(all);
    }

    const TextStyle mStyle;
    bool mInComment = false;
};

} // namespace

std::unique_ptr<EventWriter> makeTextWriter(const TextStyle& style)
{
    return std::make_unique<TextWriter>(style);
}
