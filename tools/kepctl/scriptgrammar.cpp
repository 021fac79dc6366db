// SPDX-License-Identifier: Apache-2.0
// What a script line may hold, and the one check that walks the tables.
#include "scriptgrammar.h"

#include <algorithm>
#include <climits>
#include <set>

#include "badline.h"
#include "cardelements.h"
#include "checks.h"
#include "faultnames.h"
#include "loglevels.h"
#include "names.h"
#include "operations.h"

namespace
{

// clang-format off
constexpr LineKind kLineKinds[] = {
    {"call",   ObjectForm::CallLine,   "calls an operation of the library"},
    {"wait",   ObjectForm::WaitLine,   "runs the main loop, in which timers run, for so many milliseconds"},
    {"set",    ObjectForm::SetLine,    "changes the log level or what the virtual television answers"},
    {"inject", ObjectForm::InjectLine, "makes an access to the virtual television fail, or answer late"},
    {"clear",  ObjectForm::ClearLine,  "forgets every injection"},
};

constexpr KeyRow kKeys[] = {
    // where                       key               value                   from     to       required  what
    {ObjectForm::CallLine,        "call",           ValueKind::Operation,    0,       0,       true,  "operation (kepctl list operations)"},
    {ObjectForm::CallLine,        "args",           ValueKind::Arguments,    0,       0,       false, "its arguments in order"},
    {ObjectForm::WaitLine,        "wait",           ValueKind::WholeNumber,  0,       INT_MAX, true,  "milliseconds"},
    {ObjectForm::SetLine,         "set",            ValueKind::Object,       0,       0,       true,  "what to change"},
    {ObjectForm::InjectLine,      "inject",         ValueKind::Object,       0,       0,       true,  "what to make fail"},
    {ObjectForm::ClearLine,       "clear",          ValueKind::True,         0,       0,       true,  "true"},

    {ObjectForm::Settings,        "logLevel",       ValueKind::LogLevel,     0,       0,       false, "level that the log admits"},
    {ObjectForm::Settings,        "gpio",           ValueKind::Levels,       INT_MIN, INT_MAX, false, "levels of input lines (0 at first)"},
    {ObjectForm::Settings,        "gainValue",      ValueKind::Text,         0,       0,       false, "what the gain middleware answers (\"0\" at first)"},
    {ObjectForm::Settings,        "amplifierState", ValueKind::Object,       0,       0,       false, "what the amplifier answers"},
    {ObjectForm::Settings,        "i2cData",        ValueKind::Texts,        0,       0,       false, "registers that are read from the amplifier (none at first)"},
    {ObjectForm::AmplifierState,  "type",           ValueKind::Text,         0,       0,       false, "\"virtual\" at first"},
    {ObjectForm::AmplifierState,  "states",         ValueKind::Texts,        0,       0,       false, "[\"on\"] at first"},

    {ObjectForm::CardFault,       "control",        ValueKind::Element,      0,       0,       false, "element (kepctl list elements), \"*\" for any; not needed for open and load"},
    {ObjectForm::CardFault,       "card",           ValueKind::Card,         0,       0,       false, "card as opened; every virtual card when left out"},
    {ObjectForm::CardFault,       "stage",          ValueKind::Stage,        0,       0,       false, "where it fails (write when left out)"},
    {ObjectForm::CardFault,       "status",         ValueKind::WholeNumber,  INT_MIN, 0,       true,  "negative errno, such as -5; 0 lets the access through"},
    {ObjectForm::CardFault,       "times",          ValueKind::WholeNumber,  1,       INT_MAX, false, "for so many accesses; until cleared when left out"},
    {ObjectForm::CardFault,       "delayMs",        ValueKind::WholeNumber,  0,       INT_MAX, false, "answers so many milliseconds later"},
    {ObjectForm::MiddlewareFault, "middleware",     ValueKind::Middleware,   0,       0,       true,  "operation (kepctl list middleware)"},
    {ObjectForm::MiddlewareFault, "status",         ValueKind::WholeNumber,  INT_MIN, INT_MAX, true,  "what it answers"},
    {ObjectForm::MiddlewareFault, "times",          ValueKind::WholeNumber,  1,       INT_MAX, false, "for so many calls"},
    {ObjectForm::MiddlewareFault, "delayMs",        ValueKind::WholeNumber,  0,       INT_MAX, false, "answers so many milliseconds later"},
    {ObjectForm::GpioFault,       "gpio",           ValueKind::InputLine,    0,       0,       true,  "input line"},
    {ObjectForm::GpioFault,       "status",         ValueKind::WholeNumber,  INT_MIN, INT_MAX, true,  "what reading it answers"},
    {ObjectForm::GpioFault,       "times",          ValueKind::WholeNumber,  1,       INT_MAX, false, "for so many reads"},
    {ObjectForm::GpioFault,       "delayMs",        ValueKind::WholeNumber,  0,       INT_MAX, false, "answers so many milliseconds later"},
    {ObjectForm::SubMicroFault,   "subcpu",         ValueKind::SubMicro,     0,       0,       true,  "operation of the sub-microcontroller"},
    {ObjectForm::SubMicroFault,   "status",         ValueKind::WholeNumber,  INT_MIN, INT_MAX, true,  "what it answers"},
    {ObjectForm::SubMicroFault,   "times",          ValueKind::WholeNumber,  1,       INT_MAX, false, "for so many calls"},
    {ObjectForm::SubMicroFault,   "delayMs",        ValueKind::WholeNumber,  0,       INT_MAX, false, "answers so many milliseconds later"},
};

constexpr LineExample kExamples[] = {
    {"call",   R"({"call": "connectInput", "args": ["ADEC0", "MAIN", {"streamType": "movie"}]})",              "one operation, arguments in order"},
    {"call",   R"({"call": "getHeadphoneStatus"})",                                                            "\"args\" may be left out where there are none"},
    {"wait",   R"({"wait": 5100})",                                                                            "runs the main loop for so many milliseconds (it runs at no other time)"},
    {"set",    R"({"set": {"logLevel": 7}})",                                                                  "changes the admitted log level"},
    {"set",    R"({"set": {"gpio": {"GPIO_RD_HP_LINK": 1}}})",                                                 "level of a virtual input line"},
    {"set",    R"({"set": {"gainValue": "-12"}})",                                                             "what the gain middleware answers to getGainAsInput"},
    {"set",    R"({"set": {"amplifierState": {"type": "main", "states": ["on"]}}})",                           "what getAmpState fills in"},
    {"set",    R"({"set": {"i2cData": ["0x1f"]}})",                                                            "what readI2cDataFromAmp answers"},
    {"inject", R"({"inject": {"control": "Sndout Open", "stage": "write", "status": -5, "times": 1}})",        "makes a virtual card fail: stage open, load, info or write"},
    {"inject", R"({"inject": {"stage": "open", "card": "hw:0", "status": -19}})",                              "open and load need no \"control\""},
    {"inject", R"({"inject": {"middleware": "gain.setInputVolume", "status": 1, "times": 1}})",                "makes a middleware operation answer that status"},
    {"inject", R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "status": 3}})",                                      "makes the line's read fail"},
    {"inject", R"({"inject": {"subcpu": "subcpu_misc_Set_HPMuteOnOff", "status": 1}})",                        "makes the sub-microcontroller refuse"},
    {"inject", R"({"inject": {"control": "Gain Input", "status": 0, "delayMs": 300}})",                        "answers that much later; \"status\" may be left out beside \"delayMs\""},
    {"clear",  R"({"clear": true})",                                                                           "forgets every injection"},
};
// clang-format on

// --- Names that have to exist

struct NamedKind {
    ValueKind kind;
    const char* what;                     // one of them
    bool (*has)(const std::string& name); // where that is told quicker than from all names
    Names (*names)();
    const char* list; // kepctl list ...; null when they are few enough to be told at once
};

Names operationNames()
{
    Names all;
    for (const Operation& operation : operationRows())
        all.emplace_back(operation.name);
    return all;
}

bool isOperation(const std::string& name)
{
    return findOperation(name) != nullptr;
}

Names cardNamesCopy()
{
    return cardNames();
}

Names elementNames()
{
    return names::elements();
}

// clang-format off
constexpr NamedKind kNamedKinds[] = {
    {ValueKind::Operation,  "operation",                            &isOperation, &operationNames,               "operations"},
    {ValueKind::Card,       "card",                                 nullptr,      &cardNamesCopy,                nullptr},
    {ValueKind::Element,    "element",                              nullptr,      &elementNames,                 "elements"},
    {ValueKind::Middleware, "middleware operation",                 nullptr,      &names::middlewareOperations,  "middleware"},
    {ValueKind::InputLine,  "input line",                           nullptr,      &names::inputLines,            nullptr},
    {ValueKind::SubMicro,   "operation of the sub-microcontroller", nullptr,      &names::subMicroOperations,    nullptr},
};
// clang-format on

const NamedKind* namedKind(ValueKind kind)
{
    for (const NamedKind& row : kNamedKinds)
        if (row.kind == kind)
            return &row;
    return nullptr;
}

[[noreturn]] void rejectName(const NamedKind& kind, const std::string& name, const Names& known,
                             std::size_t place)
{
    std::string hint = didYouMean(name, known);
    if (kind.list != nullptr)
        hint += (hint.empty() ? "" : " ") + std::string{"\"kepctl list "} + kind.list +
                "\" shows them all";
    else if (hint.empty() && !known.empty())
        hint = "known: " + anyOf(known);
    throw BadLine("unknown " + std::string{kind.what} + " \"" + name + "\"", place, hint);
}

void checkName(const NamedKind& kind, const std::string& name, std::size_t place,
               const Names& known)
{
    // When nothing is known, because no card could be opened, nothing can be wrong.
    if (!known.empty() && std::find(known.begin(), known.end(), name) == known.end())
        rejectName(kind, name, known, place);
}

// --- Checks of values

[[noreturn]] void reject(const JsonNode& node, const std::string& what, const std::string& wanted)
{
    throw BadLine(what + " must be " + wanted, node.begin);
}

std::string quoted(const char* key)
{
    return '"' + std::string{key} + '"';
}

void checkText(const JsonNode& node, const std::string& what)
{
    if (!node.isString())
        reject(node, what, "a string");
}

void checkTexts(const JsonNode& node, const std::string& what)
{
    if (!node.isArray())
        reject(node, what, "an array of strings");
    for (const JsonNode& element : node.elements)
        checkText(element, "each element of " + what);
}

void checkNumber(const JsonNode& node, const KeyRow& key, const std::string& what)
{
    if (!isWholeNumber(node.value(), key.minimum, key.maximum))
        reject(node, what, typeOf(key));
}

void checkLevels(const JsonNode& node, const KeyRow& key)
{
    if (!node.isObject())
        reject(node, quoted(key.key), "an object");
    for (const JsonMember& member : node.members) {
        checkName(*namedKind(ValueKind::InputLine), member.key, member.keyBegin,
                  names::inputLines());
        if (!isWholeNumber(member.node.value(), key.minimum, key.maximum))
            reject(member.node, "the level of " + member.key,
                   "a whole number from " + std::to_string(key.minimum) + " to " +
                       std::to_string(key.maximum));
    }
}

void checkChoice(const JsonNode& node, const std::string& what, const Names& choices)
{
    const std::string given = node.isString() ? node.asString() : node.json();
    if (std::find(choices.begin(), choices.end(), given) == choices.end())
        throw BadLine(what + " must be " + anyOf(choices), node.begin, didYouMean(given, choices));
}

/// The element, if it is one of the card that the same object names.
void checkElement(const JsonNode& node, const JsonNode& object)
{
    const JsonNode* card = object.find("card");
    const std::string name = node.asString();
    if (name != "*")
        checkName(*namedKind(ValueKind::Element), name, node.begin,
                  names::elements(card != nullptr ? card->asString() : ""));
}

void checkType(const JsonNode& node, const KeyRow& key)
{
    const std::string what = quoted(key.key);
    switch (key.kind) {
    case ValueKind::WholeNumber:
        return checkNumber(node, key, what);
    case ValueKind::LogLevel:
        if (!node.value().isNumber())
            reject(node, what, typeOf(key));
        return checkChoice(node, what, valuesOf(key.kind));
    case ValueKind::Stage:
        if (!node.isString())
            reject(node, what, typeOf(key));
        return checkChoice(node, what, valuesOf(key.kind));
    case ValueKind::Texts:
        return checkTexts(node, what);
    case ValueKind::True:
        if (node.text != "true")
            reject(node, what, "true");
        return;
    case ValueKind::Arguments: // with the operation, which knows them
    case ValueKind::Object:    // with the form that it has
        return;
    case ValueKind::Levels:
        return checkLevels(node, key);
    default:
        return checkText(node, what);
    }
}

void checkExistence(const JsonNode& node, const KeyRow& key, const JsonNode& object)
{
    if (key.kind == ValueKind::Element)
        return checkElement(node, object);
    const NamedKind* kind = namedKind(key.kind);
    if (kind == nullptr)
        return;
    const std::string name = node.asString();
    if (kind->has == nullptr || !kind->has(name))
        checkName(*kind, name, node.begin, kind->names());
}

/// The keys that may have been meant: an injection that names nothing yet may become any.
Names keysMeant(ObjectForm form, const JsonNode& node)
{
    Names keys = keysOf(form);
    if (form == ObjectForm::CardFault && node.find("control") == nullptr)
        for (const ObjectForm other :
             {ObjectForm::MiddlewareFault, ObjectForm::GpioFault, ObjectForm::SubMicroFault})
            for (const std::string& key : keysOf(other))
                keys.push_back(key);
    return keys;
}

const KeyRow* findKey(ObjectForm form, const std::string& key)
{
    for (const KeyRow& row : kKeys)
        if (row.form == form && key == row.key)
            return &row;
    return nullptr;
}

} // namespace

std::span<const LineKind> lineKinds()
{
    return kLineKinds;
}

std::span<const KeyRow> keyRows()
{
    return kKeys;
}

std::span<const LineExample> lineExamples()
{
    return kExamples;
}

Names keysOf(ObjectForm form)
{
    Names keys;
    for (const KeyRow& row : kKeys)
        if (row.form == form)
            keys.emplace_back(row.key);
    return keys;
}

Names valuesOf(ValueKind kind)
{
    if (kind == ValueKind::Stage) {
        Names stages;
        for (const virtualtv::FaultStage& stage : virtualtv::kFaultStages)
            stages.emplace_back(stage.name);
        return stages;
    }
    if (kind == ValueKind::LogLevel) {
        Names levels;
        for (int level = kLogError; level <= kLogDebug; ++level)
            if (isLogLevel(level))
                levels.push_back(std::to_string(level));
        return levels;
    }
    const NamedKind* named = namedKind(kind);
    return named != nullptr ? named->names() : Names{};
}

std::string typeOf(const KeyRow& key)
{
    switch (key.kind) {
    case ValueKind::WholeNumber:
        return "a whole number from " + std::to_string(key.minimum) + " to " +
               std::to_string(key.maximum);
    case ValueKind::LogLevel:
    case ValueKind::Stage:
        return anyOf(valuesOf(key.kind));
    case ValueKind::Texts:
        return "an array of strings";
    case ValueKind::True:
        return "true";
    case ValueKind::Arguments:
        return "an array";
    case ValueKind::Object:
    case ValueKind::Levels:
        return "an object";
    default:
        return "a string";
    }
}

void checkMembers(const JsonNode& node, ObjectForm form, const std::string& title)
{
    if (!node.isObject())
        reject(node, title, "an object");
    std::set<std::string_view> seen;
    for (const JsonMember& member : node.members) {
        if (findKey(form, member.key) == nullptr)
            throw BadLine("unknown key \"" + member.key + "\" in " + title, member.keyBegin,
                          didYouMean(member.key, keysMeant(form, node)));
        if (!seen.insert(member.key).second)
            throw BadLine("the key \"" + member.key + "\" is given twice", member.keyBegin);
    }
    for (const JsonMember& member : node.members)
        checkType(member.node, *findKey(form, member.key));
    for (const JsonMember& member : node.members)
        checkExistence(member.node, *findKey(form, member.key), node);
}

void requireKeys(const JsonNode& node, ObjectForm form, const std::string& title)
{
    for (const KeyRow& key : kKeys)
        if (key.form == form && key.required && node.find(key.key) == nullptr &&
            !(key.key == std::string{"status"} && node.find("delayMs") != nullptr)) // then it is 0
            throw BadLine(title + " lacks " + quoted(key.key) + ": " + quoted(key.key) +
                              " must be " + typeOf(key),
                          node.begin);
}

void checkObject(const JsonNode& node, ObjectForm form, const std::string& title)
{
    checkMembers(node, form, title);
    requireKeys(node, form, title);
}
