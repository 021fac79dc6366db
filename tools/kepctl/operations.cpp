// SPDX-License-Identifier: Apache-2.0
// The operations of kepClient. That a row's arguments are those of the C++ declaration is checked
// when this file is compiled.
#include "operations.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

#include "badline.h"
#include "checks.h"
#include "kepclient.h"

namespace
{

struct KindRow {
    ArgumentKind kind;
    const char* type;
    bool (*fits)(const JsonNode& value);
};

bool isText(const JsonNode& value)
{
    return value.isString();
}

bool isSwitch(const JsonNode& value)
{
    return value.text == "true" || value.text == "false";
}

bool isVolume(const JsonNode& value)
{
    return isWholeNumber(value.value(), 0, UINT8_MAX);
}

// clang-format off
constexpr KindRow kKinds[] = {
    {ArgumentKind::SoundOutput, "a string",                       &isText},
    {ArgumentKind::Source,      "a string",                       &isText},
    {ArgumentKind::Sink,        "a string",                       &isText},
    {ArgumentKind::Switch,      "true or false",                  &isSwitch},
    {ArgumentKind::Volume,      "a whole number from 0 to 255",   &isVolume},
    {ArgumentKind::PipelineId,  "a string",                       &isText},
    {ArgumentKind::Category,    "a string",                       &isText},
    {ArgumentKind::Payload,     "any JSON value",                 [](const JsonNode&) { return true; }},
};
// clang-format on

const KindRow& rowOf(ArgumentKind kind)
{
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [kind](const KindRow& row) { return row.kind == kind; });
}

/// Whether an argument of that kind is declared with that type.
template <typename T>
constexpr bool isDeclaredAs(ArgumentKind kind)
{
    switch (kind) {
    case ArgumentKind::Switch:
        return std::is_same_v<T, bool>;
    case ArgumentKind::Volume:
        return std::is_same_v<T, std::uint8_t>;
    case ArgumentKind::Payload:
        return std::is_same_v<T, JValue>;
    default:
        return std::is_same_v<T, std::string>;
    }
}

template <typename T>
T argument(const JValue& value)
{
    if constexpr (std::is_same_v<T, std::string>)
        return value.asString();
    else if constexpr (std::is_same_v<T, bool>)
        return value.asBool();
    else if constexpr (std::is_same_v<T, std::uint8_t>)
        return static_cast<std::uint8_t>(value.asNumber<std::int32_t>());
    else
        return value;
}

template <auto Method, typename Result, typename... Arguments, std::size_t... Index>
Outcome callWith([[maybe_unused]] std::span<const JValue> values,
                 Result (kepClient::*)(Arguments...), std::index_sequence<Index...>)
{
    return {
        (kepClient::getInstance()->*Method)(argument<std::decay_t<Arguments>>(values[Index])...)};
}

template <auto Method, typename Result, typename... Arguments>
Outcome callWith(std::span<const JValue> values, Result (kepClient::*method)(Arguments...))
{
    return callWith<Method>(values, method, std::index_sequence_for<Arguments...>{});
}

template <auto Method>
Outcome call(std::span<const JValue> arguments)
{
    return callWith<Method>(arguments, Method);
}

template <typename Result, typename... Arguments, std::size_t Count>
consteval void requireDeclared(Result (kepClient::*)(Arguments...), const Argument (&names)[Count])
{
    static_assert(sizeof...(Arguments) == Count, "as many names as arguments");
    std::size_t index = 0;
    if (!(isDeclaredAs<std::decay_t<Arguments>>(names[index++].kind) && ...))
        throw "an argument is declared with another type";
}

/// A row whose arguments are those of `Method`.
template <auto Method, std::size_t Count>
consteval Operation row(const char* name, Answer answer, const Argument (&arguments)[Count],
                        const char* summary)
{
    requireDeclared(Method, arguments);
    Operation operation{name, answer, {}, Count, &call<Method>, summary};
    for (std::size_t i = 0; i < Count; ++i)
        operation.arguments[i] = arguments[i];
    return operation;
}

/// A row without arguments.
consteval Operation row(const char* name, Answer answer, Outcome (*call)(std::span<const JValue>),
                        const char* summary)
{
    return {name, answer, {}, 0, call, summary};
}

Outcome askDefaultVolume(std::span<const JValue>)
{
    return {kepClient::getInstance()->getDefaultVolume()};
}

Outcome askHeadphoneStatus(std::span<const JValue>)
{
    bool connected = false;
    const unsigned int code = kepClient::getInstance()->getHeadphoneStatus(&connected);
    return {code, connected && code == KEP_RESULT_OK};
}

constexpr Argument kOutput{"soundOutput", ArgumentKind::SoundOutput};
constexpr Argument kSource{"source", ArgumentKind::Source};
constexpr Argument kSink{"sink", ArgumentKind::Sink};
constexpr Argument kMute{"mute", ArgumentKind::Switch};
constexpr Argument kVolume{"volume", ArgumentKind::Volume};
constexpr Argument kCategory{"category", ArgumentKind::Category};
constexpr Argument kPipelineId{"pipelineId", ArgumentKind::PipelineId};
constexpr Argument kAttribute{"attribute", ArgumentKind::Payload};
constexpr Argument kPipelineAttribute{"pipelineAttribute", ArgumentKind::Payload};
constexpr Argument kPayload{"payload", ArgumentKind::Payload};
constexpr Argument kRequest{"request", ArgumentKind::Payload};

// clang-format off
constexpr Operation kOperations[] = {
    row("initialize",          Answer::Status, &call<&kepClient::initialize>,   "reads the configuration and starts its backend"),
    row("deinitialize",        Answer::Status, &call<&kepClient::deinitialize>, "stops the backend"),
    row("getDefaultVolume",    Answer::Value,  &askDefaultVolume,               "the volume that the configuration recommends to start with"),
    row<&kepClient::connectInput>("connectInput",               Answer::Code,  {kSource, kSink, kPipelineAttribute}, "connects an input to the sound output"),
    row<&kepClient::disconnectInput>("disconnectInput",         Answer::Code,  {kSource, kSink},                     "disconnects an input"),
    row("getHeadphoneStatus",  Answer::Code,   &askHeadphoneStatus,             "whether a headphone is plugged in"),
    row<&kepClient::removePipelineInfo>("removePipelineInfo",   Answer::Code,  {kPipelineId},                        "forgets a pipeline"),
    row<&kepClient::setSoundOutput>("setSoundOutput",           Answer::Code,  {kOutput},                            "selects the sound output"),
    row<&kepClient::setMute>("setMute",                         Answer::Code,  {kSource, kSink, kMute},              "mutes or unmutes an input"),
    row<&kepClient::setOutputVolume>("setOutputVolume",         Answer::Code,  {kOutput, kVolume},                   "sets the volume of an output"),
    row<&kepClient::setInputVolume>("setInputVolume",           Answer::Code,  {kSource, kSink, kVolume},            "sets the volume of an input"),
    row<&kepClient::setOutputMute>("setOutputMute",             Answer::Code,  {kOutput, kMute},                     "mutes or unmutes an output"),
    row<&kepClient::setMuteExtSPK>("setMuteExtSPK",             Answer::Code,  {kMute},                              "mutes or unmutes the external speaker"),
    row<&kepClient::setQualityAttribute>("setQualityAttribute", Answer::Code,  {kAttribute},                         "reports or resets a pipeline"),
    row<&kepClient::setSettings>("setSettings",                 Answer::Code,  {kCategory, kPayload},                "applies the settings of a category"),
    row<&kepClient::getSettings>("getSettings",                 Answer::Value, {kCategory, kRequest},                "asks for settings of a category"),
};
// clang-format on

std::string listed(std::span<const Argument> arguments)
{
    std::string names;
    for (const Argument& argument : arguments)
        names += (names.empty() ? "" : ", ") + std::string{argument.name};
    return names.empty() ? "" : " (" + names + ")";
}

void checkCount(const Operation& operation, const JsonNode* given, std::size_t place)
{
    const std::size_t wanted = operation.argumentCount;
    const std::size_t count = given != nullptr ? given->elements.size() : 0;
    if (count == wanted)
        return;
    if (given != nullptr)
        place = count > wanted ? given->elements[wanted].begin : given->begin;
    throw BadLine(std::string{operation.name} + ": takes " + std::to_string(wanted) + " argument" +
                      (wanted == 1 ? "" : "s") + ", not " + std::to_string(count) +
                      listed(operation.takes()),
                  place);
}

} // namespace

std::span<const Operation> operationRows()
{
    return kOperations;
}

const Operation* findOperation(std::string_view name)
{
    for (const Operation& operation : kOperations)
        if (name == operation.name)
            return &operation;
    return nullptr;
}

const char* typeOf(ArgumentKind kind)
{
    return rowOf(kind).type;
}

void checkArguments(const Operation& operation, const JsonNode* arguments, std::size_t place)
{
    if (arguments != nullptr && !arguments->isArray())
        throw BadLine(std::string{operation.name} + ": \"args\" must be an array",
                      arguments->begin);
    checkCount(operation, arguments, place);
    for (std::size_t i = 0; i < operation.argumentCount; ++i) {
        const Argument& argument = operation.arguments[i];
        const KindRow& kind = rowOf(argument.kind);
        if (!kind.fits(arguments->elements[i]))
            throw BadLine(std::string{operation.name} + ": argument " + std::to_string(i + 1) +
                              " must be " + kind.type + " (" + argument.name + ")",
                          arguments->elements[i].begin);
    }
}

bool failed(const Operation& operation, const JValue& result)
{
    const bool zero = result.asNumber<std::int32_t>() == 0;
    return operation.answer != Answer::Value && zero == (operation.answer == Answer::Status);
}
