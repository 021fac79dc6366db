// SPDX-License-Identifier: Apache-2.0
// kepctl list. Every list is an array of objects with the same keys; the formats only write it.
#include "listcommand.h"

#include <algorithm>
#include <iterator>

#include "cardelements.h"
#include "commands.h"
#include "devicenames.h"
#include "jvalue.h"
#include "kepcatalogue.h"
#include "names.h"
#include "operations.h"
#include "output.h"
#include "resultwords.h"
#include "scriptgrammar.h"
#include "session.h"

namespace
{

/// An object of these members.
JValue object(std::initializer_list<std::pair<const char*, JValue>> members)
{
    JValue result = JValue::object();
    for (const auto& [key, value] : members)
        static_cast<void>(result.put(key, value)); // as shallow as it stands here
    return result;
}

/// One more row, which is as shallow as it stands here.
void addTo(JValue& rows, const JValue& row)
{
    static_cast<void>(rows.append(row));
}

JValue arrayOf(const Names& names)
{
    JValue result = JValue::array();
    for (const std::string& name : names)
        result.append(name);
    return result;
}

// --- One function a list

// By Answer.
constexpr const char* kAnswers[] = {"1 done, 0 failed", "0 done, else failed", "a value"};

JValue operations()
{
    JValue rows = JValue::array();
    for (const Operation& operation : operationRows()) {
        JValue arguments = JValue::array();
        for (const Argument& argument : operation.takes())
            addTo(arguments, object({{"name", argument.name}, {"type", typeOf(argument.kind)}}));
        addTo(rows, object({{"operation", operation.name},
                            {"arguments", arguments},
                            {"result", kAnswers[static_cast<int>(operation.answer)]},
                            {"meaning", operation.summary}}));
    }
    return rows;
}

JValue results()
{
    JValue rows = JValue::array();
    for (const ResultCode& code : resultCodes()) {
        Names operations;
        for (const Operation& operation : operationRows())
            if (operation.answer == code.answer && resultWords(operation, code.code) == code.words)
                operations.emplace_back(operation.name);
        addTo(rows, object({{"result", code.code},
                            {"meaning", code.words},
                            {"of", code.answer == Answer::Code ? JValue{"every other operation"}
                                                               : arrayOf(operations)}}));
    }
    return rows;
}

/// The names by which an output is known, if it is.
JValue namesOf(const kepNames& names)
{
    return arrayOf(Names{names.begin(), names.end()});
}

std::string nameOf(KEP_AUDIO_SNDOUT_T wanted)
{
    for (const kepSoundOutput& output : kepCatalogue::soundOutputs())
        if (output.output == wanted)
            return output.names.empty() ? output.description : output.names[0];
    return "";
}

JValue outputs()
{
    JValue rows = JValue::array();
    for (const kepSoundOutput& output : kepCatalogue::soundOutputs()) {
        JValue members = JValue::array();
        for (const KEP_AUDIO_SNDOUT_T member : output.members)
            if (output.members.size() > 1)
                members.append(nameOf(member));
        addTo(rows, object({{"names", namesOf(output.names)},
                            {"selectable", output.selectable},
                            {"volume", output.hasVolume},
                            {"mute", output.hasMute},
                            {"driver", output.driverType},
                            {"members", members},
                            {"meaning", output.description}}));
    }
    return rows;
}

JValue sources()
{
    JValue rows = JValue::array();
    for (const kepInputSource& input : kepCatalogue::inputSources())
        addTo(rows, object({{"source", input.source},
                            {"sinks", namesOf(input.sinks)},
                            {"resource", static_cast<std::uint32_t>(input.resource)},
                            {"index", input.driverIndex},
                            {"port", input.driverPort}}));
    return rows;
}

// --- Payloads: one row a key

// By KEP_VALUE_T.
constexpr const char* kValueTypes[] = {"string", "bool", "number", "array", "object", "any"};

void addKeys(JValue& rows, const char* title, const std::string& of, const kepList<kepKey>& keys)
{
    for (const kepKey& key : keys)
        addTo(rows, object({{title, of},
                            {"key", key.name},
                            {"type", kValueTypes[key.type]},
                            {"needed", key.needed},
                            {"values", namesOf(key.values)},
                            {"meaning", key.meaning}}));
}

/// The row of a category itself; its keys follow.
void addOwner(JValue& rows, const char* title, const std::string& of, const std::string& meaning)
{
    addTo(rows, object({{title, of},
                        {"key", ""},
                        {"type", ""},
                        {"needed", JValue{}},
                        {"values", JValue::array()},
                        {"meaning", meaning}}));
}

JValue categories()
{
    JValue rows = JValue::array();
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories()) {
        addOwner(
            rows, "category", category.name,
            std::string{category.meaning} + (category.supported ? "" : " (always refused)") +
                (category.takesQualityKeys ? " (takes any key; those of \"quality\" act)" : "") +
                (category.stored ? " (listed by getSettings)" : ""));
        addKeys(rows, "category", category.name, category.keys);
    }
    return rows;
}

JValue quality()
{
    JValue rows = JValue::array();
    for (const kepQualityKeys& reader : kepCatalogue::soundQualityKeys())
        addKeys(rows, "reader", reader.reader, reader.keys);
    return rows;
}

JValue queries()
{
    JValue rows = JValue::array();
    for (const kepQuery& query : kepCatalogue::queries()) {
        addOwner(rows, "query", query.name, std::string{"answers "} + query.answer);
        addKeys(rows, "query", query.name, query.keys);
    }
    return rows;
}

JValue attributes()
{
    JValue rows = JValue::array();
    addKeys(rows, "of", "connectInput", kepCatalogue::pipelineAttributeKeys());
    addKeys(rows, "of", "setQualityAttribute", kepCatalogue::qualityAttributeKeys());
    addKeys(rows, "of", "pipelineInfo", kepCatalogue::pipelineInfoKeys());
    addKeys(rows, "of", "categoryInfo", kepCatalogue::categoryInfoKeys());
    for (const kepRequestType& type : kepCatalogue::requestTypes())
        addOwner(rows, "of", "requestType", "\"" + std::string{type.name} + "\": " + type.meaning);
    return rows;
}

/// What the driver's integers mean: "output, index, port"; "" where nobody knows.
JValue integersOf(const CardElement& element)
{
    JValue names = JValue::array();
    for (const kepControlElement& known : kepCatalogue::controlElements())
        if (element.card == cardNames().front() && element.name == known.name)
            for (const kepControlInteger& integer : known.integers)
                names.append(integer.name);
    return names;
}

JValue elements()
{
    JValue rows = JValue::array();
    for (const CardElement& element : cardElements())
        addTo(rows, object({{"card", element.card},
                            {"element", element.name},
                            {"type", element.type},
                            {"count", element.count},
                            {"min", element.minimum},
                            {"max", element.maximum},
                            {"integers", integersOf(element)}}));
    return rows;
}

JValue middleware()
{
    JValue rows = JValue::array();
    for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations)
        addTo(rows, object({{"operation", operation.name}, {"arguments", operation.arguments}}));
    return rows;
}

struct FaultRow {
    ObjectForm form;
    const char* at;
};
constexpr FaultRow kFaults[] = {
    {ObjectForm::CardFault, "card"},
    {ObjectForm::MiddlewareFault, "middleware"},
    {ObjectForm::GpioFault, "input line"},
    {ObjectForm::SubMicroFault, "sub-microcontroller"},
};

JValue faults()
{
    JValue rows = JValue::array();
    for (const auto& [form, at] : kFaults)
        for (const KeyRow& key : keyRows())
            if (key.form == form)
                addTo(rows, object({{"at", at},
                                    {"key", key.key},
                                    {"type", typeOf(key)},
                                    {"needed", key.required},
                                    {"meaning", key.help},
                                    {"values", key.kind == ValueKind::InputLine ||
                                                       key.kind == ValueKind::SubMicro ||
                                                       key.kind == ValueKind::Stage ||
                                                       key.kind == ValueKind::Card
                                                   ? arrayOf(valuesOf(key.kind))
                                                   : JValue::array()}}));
    return rows;
}

JValue backends()
{
    JValue rows = JValue::array();
    for (const std::string& name : names::backends())
        addTo(rows, object({{"backend", name}}));
    return rows;
}

struct List {
    const char* name;
    const char* title;
    JValue (*rows)();
};
// clang-format off
constexpr List kLists[] = {
    {"operations", "Operations of the library",                  &operations},
    {"results",    "Results",                                    &results},
    {"outputs",    "Sound outputs of the television",            &outputs},
    {"sources",    "Sources, and the sinks behind which they are reached", &sources},
    {"categories", "Categories of setSettings, and their keys",  &categories},
    {"quality",    "Keys of sound quality, and who acts on them", &quality},
    {"queries",    "Queries of getSettings, and their keys",     &queries},
    {"attributes", "Keys of the other payloads",                 &attributes},
    {"elements",   "Control elements of the cards",              &elements},
    {"middleware", "Operations of the middleware",               &middleware},
    {"faults",     "Faults that a script can inject",            &faults},
    {"backends",   "Backends",                                   &backends},
};
// clang-format on

// --- Formats

/// A value as a cell of a table shows it.
std::string cell(const JValue& value)
{
    if (value.isString())
        return value.asString();
    if (value.isBool())
        return value.asBool() ? "yes" : "no";
    if (value.isNull())
        return "";
    if (!value.isArray())
        return value.stringify();
    std::string all;
    for (const JValue& element : value.elements())
        all += (all.empty() ? "" : ", ") +
               (element.isObject() ? element["name"].asString() + ": " + element["type"].asString()
                                   : cell(element));
    return all;
}

std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

std::string padded(const std::string& text, std::size_t width)
{
    return text + std::string(width - std::min(width, widthOf(text)), ' ');
}

using Cells = std::vector<std::vector<std::string>>; // the first row is the heading

Cells cellsOf(const JValue& rows)
{
    Cells cells;
    for (const JValue& row : rows.elements()) {
        if (cells.empty()) {
            cells.emplace_back();
            for (const auto& [key, value] : row.members())
                cells.back().push_back(key);
        }
        cells.emplace_back();
        for (const auto& [key, value] : row.members())
            cells.back().push_back(cell(value));
    }
    return cells;
}

std::vector<std::size_t> widthsOf(const Cells& cells)
{
    std::vector<std::size_t> widths;
    for (const auto& row : cells) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    }
    return widths;
}

std::string asText(const List&, const JValue& rows)
{
    const Cells cells = cellsOf(rows);
    const std::vector<std::size_t> widths = widthsOf(cells);
    std::string text;
    for (const auto& row : cells) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += padded(row[i], widths[i] + 2);
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string asJson(const List&, const JValue& rows)
{
    return rows.stringify() + "\n";
}

/// A cell of a page's table: | would end it, < would be markup.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        if (letter == '|' || letter == '<' || letter == '*' || letter == '\\')
            result += '\\';
        result += letter;
    }
    return result;
}

std::string asMarkdown(const List& list, const JValue& rows)
{
    const Cells cells = cellsOf(rows);
    std::string text = "## " + std::string{list.title} + "\n\n";
    for (std::size_t r = 0; r < cells.size(); ++r) {
        text += "|";
        for (const std::string& each : cells[r])
            text += " " + escaped(each) + " |";
        text += "\n";
        if (r == 0) {
            text += "|";
            for (std::size_t i = 0; i < cells[r].size(); ++i)
                text += "---|";
            text += "\n";
        }
    }
    return text;
}

struct Format {
    const char* name;
    std::string (*write)(const List& list, const JValue& rows);
};
constexpr Format kFormats[] = {
    {"text", &asText},
    {"json", &asJson},
    {"markdown", &asMarkdown},
};

constexpr const char* kAll = "all";
constexpr const char* kPageHead =
    "# Reference\n\n"
    "What there is by name. Generated by `kepctl list all --format markdown`; a test compares.\n\n";

/// All lists, each under its title; in JSON an object of them.
std::string asWhole(const std::string& format)
{
    if (format == "json") {
        JValue whole = JValue::object();
        for (const List& list : kLists)
            static_cast<void>(whole.put(list.name, list.rows())); // as shallow as it stands here
        return whole.stringify() + "\n";
    }
    std::string text;
    for (const List& list : kLists)
        text += (text.empty() ? "" : "\n") +
                (format == "text" ? std::string{list.title} + "\n\n" + asText(list, list.rows())
                                  : asMarkdown(list, list.rows()));
    return (format == "text" ? "" : kPageHead) + text;
}

std::string written(const List& list, const std::string& formatName)
{
    for (const Format& format : kFormats)
        if (formatName == format.name)
            return format.write(list, list.rows());
    return "";
}

} // namespace

Names listNames()
{
    Names all;
    for (const List& list : kLists)
        all.emplace_back(list.name);
    all.emplace_back(kAll);
    return all;
}

int list(const Options& options)
{
    if (options.words.empty())
        return unusable("list what? " + anyOf(listNames()));
    if (options.words.size() > 1)
        return unusable("list takes one word, not also \"" + options.words[1] + "\"");
    const std::string& word = options.words.front();
    if (const std::string problem = enterTelevision(options); !problem.empty())
        return unusable(problem);
    for (const List& list : kLists) {
        if (word != list.name)
            continue;
        output::print(written(list, options.format));
        return kPlayed;
    }
    if (word == kAll) {
        output::print(asWhole(options.format));
        return kPlayed;
    }
    const std::string hint = didYouMean(word, listNames());
    return unusable("unknown list \"" + word + "\"; " +
                    (hint.empty() ? "there are " + anyOf(listNames()) : hint));
}
