// SPDX-License-Identifier: Apache-2.0
// The text format: a request a block, its effects indented under it, failures standing out.
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

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

/// The elements of an array, given as JSON text, with another separator.
std::string joined(std::string_view array, const char* separator)
{
    std::string all;
    all.reserve(array.size());
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < array.size(); ++i) {
        const char letter = array[i];
        if (inString && letter == '\\')
            all += array[i++];
        else if (letter == '"')
            inString = !inString;
        else if (!inString && (letter == ']' || letter == '}'))
            --depth;
        if (!inString && letter == ',' && depth == 1)
            all += separator;
        else if (depth > 0)
            all += array[i];
        if (!inString && (letter == '[' || letter == '{'))
            ++depth;
    }
    return all;
}

/// " failed: Input/output error" for a negative errno, " failed: 3" for another status, "" for
/// success.
std::string failure(std::int64_t status)
{
    const auto code = static_cast<int>(status);
    if (code == 0)
        return "";
    return code < 0 && code != INT_MIN ? std::string{"  failed: "} + strerror(-code)
                                       : "  failed: " + std::to_string(code);
}

Line withStatus(std::string text, const Event& event)
{
    const std::string reason = failure(event.number("status"));
    return {std::move(text) + reason, reason.empty() ? Look::Plain : Look::Bad};
}

std::string unquoted(const std::string& name)
{
    return name.size() < 2 ? name : name.substr(1, name.size() - 2);
}

// --- One function an event

Line describeRequest(const Event& event)
{
    std::string text;
    if (event.has("call"))
        text = unquoted(event.json("call")) + "(" + joined(event.json("args"), ", ") + ")";
    else
        for (const auto& [key, value] : event.fields())
            if (key != "event" && key != "ms")
                text += std::string{key} + " " + event.json(key);
    return {text, Look::Bold, kRequestIndent, /*opensBlock=*/true};
}

Line describeLog(const Event& event)
{
    const auto level = static_cast<int>(event.number("level"));
    std::string text{event.text("text")};
    text.erase(text.find_last_not_of(" \n") + 1);
    const std::string id{event.text("id")};
    const Look look = level <= kLogError     ? Look::Bad
                      : level <= kLogWarning ? Look::Warning
                                             : Look::Dim;
    return {effect(logLevelName(level), (id.empty() ? "" : id + "  ") + text), look};
}

Line describeControl(const Event& event)
{
    const std::string card{event.text("card")};
    if (event.has("stage"))
        return withStatus(effect(card, std::string{event.text("stage")}), event);
    const std::string values = joined(event.json("values"), " ");
    const std::string write = event.has("meaning")
                                  ? std::string{event.text("meaning")} + "  (" + values + ")"
                                  : std::string{event.text("element")} + " = " + values;
    return withStatus(effect(card, write), event);
}

std::string describeOperation(const Event& event)
{
    return std::string{event.text("operation")} + "(" + joined(event.json("args"), ", ") + ")";
}

Line describeMiddleware(const Event& event)
{
    std::string text = describeOperation(event);
    if (event.has("returned"))
        text += " = " + event.json("returned");
    return withStatus(effect(std::string{event.text("library")}, text), event);
}

Line describeGpio(const Event& event)
{
    return withStatus(
        effect("gpio", std::string{event.text("line")} + " is " + event.json("level")), event);
}

Line describeSubcpu(const Event& event)
{
    return withStatus(effect("subcpu", describeOperation(event)), event);
}

Line describeResult(const Event& event)
{
    const Operation* operation = findOperation(event.text("call"));
    const JValue* result = event.value("result");
    const bool known = operation != nullptr && result != nullptr;
    const bool bad = known && failed(*operation, *result);
    std::string text = "  = " + event.json("result");
    const std::string words = known ? resultWords(*operation, *result) : "";
    text += (words.empty() ? "" : " ") + words;
    if (event.has("connected"))
        text += event.json("connected") == "true" ? ", connected" : ", not connected";
    return {text, bad ? Look::Bad : Look::Good, kRequestIndent};
}

struct Row {
    const char* event;
    Line (*describe)(const Event& event);
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

    void write(const Event& event) override
    {
        const std::string_view kind = event.kind();
        for (const Row& row : kRows) {
            if (kind != row.event)
                continue;
            Line line = row.describe(event);
            if (event.has("thread"))
                line.text += "  [" + std::string{event.text("thread")} + "]";
            print(std::move(line), event.has("ms") ? event.json("ms") : "");
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
    void print(Line line, const std::string& time) const
    {
        const char* escape = mStyle.colour ? kEscapes[static_cast<int>(line.look)] : "";
        const char* end = *escape != '\0' ? kPlainEscape : "";
        const std::size_t margin = mStyle.time ? kTimeWidth + 1 : 0;
        const std::size_t width = terminalWidth();
        std::string column = mStyle.time ? rightAligned(time, kTimeWidth) + " " : "";
        std::string all = line.opensBlock ? "\n" : "";
        for (const std::string& part : folded(printable(std::move(line.text)),
                                              width > margin ? width - margin : 0, line.indent)) {
            all.append(column).append(escape).append(part).append(end).append("\n");
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
