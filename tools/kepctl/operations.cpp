// SPDX-License-Identifier: Apache-2.0
// The operations of kepClient by name. Number and types of the arguments are those of the C++
// declaration.
#include "operations.h"

#include <cstdint>
#include <tuple>
#include <utility>

#include "badline.h"
#include "kepclient.h"

namespace
{

template <typename T>
T argument(const JValue& arguments, std::size_t index)
{
    const JValue value = arguments[index];
    const std::string what = "argument " + std::to_string(index + 1);
    if constexpr (std::is_same_v<T, std::string>)
        return text(value, what);
    else if constexpr (std::is_same_v<T, bool>)
        return truth(value, what);
    else if constexpr (std::is_same_v<T, std::uint8_t>)
        return static_cast<std::uint8_t>(wholeNumber(value, what, 0, UINT8_MAX));
    else
        return value;
}

void requireCount(const JValue& arguments, std::size_t count)
{
    if (arguments.isValid() && !arguments.isArray())
        throw BadLine("\"args\" must be an array");
    if (arguments.size() != count)
        throw BadLine("takes " + std::to_string(count) + " arguments, not " +
                      std::to_string(arguments.size()));
}

template <auto Method, typename Result, typename... Arguments, std::size_t... Index>
Call bind(const JValue& arguments, Result (kepClient::*)(Arguments...),
          std::index_sequence<Index...>)
{
    requireCount(arguments, sizeof...(Arguments));
    // Braces, so that the arguments are looked at from the first to the last.
    std::tuple<std::decay_t<Arguments>...> values{
        argument<std::decay_t<Arguments>>(arguments, Index)...};
    return [values] {
        return std::apply(
            [](const auto&... each) {
                return Outcome{(kepClient::getInstance()->*Method)(each...)};
            },
            values);
    };
}

template <auto Method, typename Result, typename... Arguments>
Call bind(const JValue& arguments, Result (kepClient::*method)(Arguments...))
{
    return bind<Method>(arguments, method, std::index_sequence_for<Arguments...>{});
}

template <auto Method>
Call prepare(const JValue& arguments)
{
    return bind<Method>(arguments, Method);
}

Call prepareDefaultVolume(const JValue& arguments)
{
    requireCount(arguments, 0);
    return [] { return Outcome{kepClient::getInstance()->getDefaultVolume()}; };
}

Call prepareHeadphoneStatus(const JValue& arguments)
{
    requireCount(arguments, 0);
    return [] {
        bool connected = false;
        const unsigned int code = kepClient::getInstance()->getHeadphoneStatus(&connected);
        return Outcome{code, connected && code == KEP_RESULT_OK};
    };
}

// clang-format off
constexpr Operation kOperations[] = {
    {"initialize",          Answer::Status, &prepare<&kepClient::initialize>},
    {"deinitialize",        Answer::Status, &prepare<&kepClient::deinitialize>},
    {"getDefaultVolume",    Answer::Value,  &prepareDefaultVolume},
    {"connectInput",        Answer::Code,   &prepare<&kepClient::connectInput>},
    {"disconnectInput",     Answer::Code,   &prepare<&kepClient::disconnectInput>},
    {"getHeadphoneStatus",  Answer::Code,   &prepareHeadphoneStatus},
    {"removePipelineInfo",  Answer::Code,   &prepare<&kepClient::removePipelineInfo>},
    {"setSoundOutput",      Answer::Code,   &prepare<&kepClient::setSoundOutput>},
    {"setMute",             Answer::Code,   &prepare<&kepClient::setMute>},
    {"setOutputVolume",     Answer::Code,   &prepare<&kepClient::setOutputVolume>},
    {"setInputVolume",      Answer::Code,   &prepare<&kepClient::setInputVolume>},
    {"setOutputMute",       Answer::Code,   &prepare<&kepClient::setOutputMute>},
    {"setMuteExtSPK",       Answer::Code,   &prepare<&kepClient::setMuteExtSPK>},
    {"setQualityAttribute", Answer::Code,   &prepare<&kepClient::setQualityAttribute>},
    {"setSettings",         Answer::Code,   &prepare<&kepClient::setSettings>},
    {"getSettings",         Answer::Value,  &prepare<&kepClient::getSettings>},
};
// clang-format on

} // namespace

const Operation* findOperation(const std::string& name)
{
    for (const Operation& operation : kOperations)
        if (name == operation.name)
            return &operation;
    return nullptr;
}

bool failed(const Operation& operation, const JValue& result)
{
    const bool zero = result.asNumber<std::int32_t>() == 0;
    return operation.answer != Answer::Value && zero == (operation.answer == Answer::Status);
}
