// SPDX-License-Identifier: Apache-2.0
// Request script lines. A line is checked whole before any of it is done; what follows the checks
// only takes checked values.
#include "scriptline.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "badline.h"
#include "faultnames.h"
#include "faults.h"
#include "loglevels.h"
#include "mainloop.h"
#include "scriptgrammar.h"
#include "television.h"

namespace
{

using Step = std::function<void()>;

// --- {"wait": milliseconds}

Step prepareWait(const JsonNode& node, const std::string&)
{
    const auto milliseconds = static_cast<unsigned int>(node.value().asNumber<std::int32_t>());
    return [milliseconds] { runMainLoop(milliseconds); };
}

// --- {"set": {...}}

std::vector<std::string> texts(const JValue& value)
{
    std::vector<std::string> result;
    for (const JValue& element : value.elements())
        result.push_back(element.asString());
    return result;
}

Step setLogLevelTo(const JsonNode& node)
{
    const auto level = node.value().asNumber<std::int32_t>();
    return [level] { admitLogLevel(level); };
}

Step setGpio(const JsonNode& node)
{
    std::vector<std::pair<std::string, int>> levels;
    for (const JsonMember& member : node.members)
        levels.emplace_back(member.key, member.node.value().asNumber<std::int32_t>());
    return [levels] {
        for (const auto& [line, level] : levels)
            virtualtv::setLineLevel(line, level);
    };
}

Step setGainValue(const JsonNode& node)
{
    const std::string gain = node.asString();
    return [gain] { virtualtv::setGainValue(gain); };
}

Step setAmplifierState(const JsonNode& node)
{
    checkObject(node, ObjectForm::AmplifierState, "\"amplifierState\"");
    const JValue given = node.value();
    return [given] {
        virtualtv::AmplifierState state = virtualtv::amplifierState();
        if (given.hasKey("type"))
            state.type = given["type"].asString();
        if (given.hasKey("states"))
            state.states = texts(given["states"]);
        virtualtv::setAmplifierState(state);
    };
}

Step setI2cData(const JsonNode& node)
{
    const std::vector<std::string> data = texts(node.value());
    return [data] { virtualtv::setI2cData(data); };
}

struct Setting {
    const char* key;
    Step (*prepare)(const JsonNode& value);
};
constexpr Setting kSettings[] = {
    {"logLevel", &setLogLevelTo},           {"gpio", &setGpio},       {"gainValue", &setGainValue},
    {"amplifierState", &setAmplifierState}, {"i2cData", &setI2cData},
};

Step prepareSet(const JsonNode& node, const std::string&)
{
    checkObject(node, ObjectForm::Settings, "\"set\"");
    std::vector<Step> steps;
    for (const JsonMember& member : node.members)
        for (const Setting& setting : kSettings)
            if (member.key == setting.key)
                steps.push_back(setting.prepare(member.node));
    return [steps] {
        for (const Step& step : steps)
            step();
    };
}

// --- {"inject": {...}}

const virtualtv::FaultStage& stageOf(const JValue& injection)
{
    const std::string name =
        injection.hasKey("stage") ? injection["stage"].asString() : virtualtv::kUsualStage;
    return *std::find_if(std::begin(virtualtv::kFaultStages), std::end(virtualtv::kFaultStages),
                         [&](const virtualtv::FaultStage& stage) { return name == stage.name; });
}

virtualtv::Injection controlInjection(const JsonNode& node)
{
    checkMembers(node, ObjectForm::CardFault, "\"inject\"");
    const virtualtv::FaultStage& stage = stageOf(node.value());
    const JsonNode* control = node.find("control");
    if (stage.ofAnElement && control == nullptr)
        throw BadLine("\"inject\" lacks \"control\", \"middleware\", \"gpio\" or \"subcpu\"",
                      node.begin);
    requireKeys(node, ObjectForm::CardFault, "\"inject\"");
    return {stage.point,
            stage.ofAnElement ? control->asString() : "*",
            node.value()["card"].asString(),
            0,
            std::nullopt,
            0};
}

ObjectForm formOf(virtualtv::FaultPoint point)
{
    switch (point) {
    case virtualtv::FaultPoint::Middleware:
        return ObjectForm::MiddlewareFault;
    case virtualtv::FaultPoint::Gpio:
        return ObjectForm::GpioFault;
    case virtualtv::FaultPoint::SubMicro:
        return ObjectForm::SubMicroFault;
    default:
        return ObjectForm::CardFault;
    }
}

virtualtv::Injection targetInjection(const JsonNode& node)
{
    for (const auto& [key, point] : virtualtv::kFaultTargets) {
        const JsonNode* target = node.find(key);
        if (target == nullptr)
            continue;
        checkObject(node, formOf(point), "\"inject\"");
        return {point, target->asString(), "", 0, std::nullopt, 0};
    }
    return controlInjection(node);
}

Step prepareInject(const JsonNode& node, const std::string& origin)
{
    virtualtv::Injection injection = targetInjection(node);
    const JValue given = node.value();
    injection.status = given["status"].asNumber<std::int32_t>();
    if (given.hasKey("times"))
        injection.times = static_cast<unsigned int>(given["times"].asNumber<std::int32_t>());
    injection.delayMs = static_cast<unsigned int>(given["delayMs"].asNumber<std::int32_t>());
    injection.origin = origin;
    return [injection] { virtualtv::inject(injection); };
}

// --- {"clear": true}

Step prepareClear(const JsonNode&, const std::string&)
{
    return [] { virtualtv::clearInjections(); };
}

// --- The line

struct Action {
    const char* key;
    Step (*prepare)(const JsonNode& value, const std::string& origin);
};
constexpr Action kActions[] = {
    {"wait", &prepareWait},
    {"set", &prepareSet},
    {"inject", &prepareInject},
    {"clear", &prepareClear},
};

std::vector<std::pair<std::string, std::string>> membersOf(const JsonNode& line)
{
    std::vector<std::pair<std::string, std::string>> all;
    all.reserve(line.members.size());
    for (const JsonMember& member : line.members)
        all.emplace_back(member.key, member.node.json());
    return all;
}

ScriptLine prepareCall(const JsonNode& line)
{
    checkObject(line, ObjectForm::CallLine, "the line");
    const JsonNode* name = line.find("call");
    const Operation* operation = findOperation(name->asString());
    const JsonNode* given = line.find("args");
    checkArguments(*operation, given, name->begin);
    std::vector<JValue> arguments;
    arguments.reserve(operation->argumentCount);
    for (std::size_t i = 0; i < operation->argumentCount; ++i)
        arguments.push_back(given->elements[i].value());
    return {membersOf(line), operation, std::move(arguments), {}};
}

/// A key that no kind of line has: it may be a word that belongs further inside.
[[noreturn]] void rejectFirstKey(const JsonMember& member)
{
    Names kinds;
    for (const LineKind& kind : lineKinds())
        kinds.emplace_back(kind.key);
    std::string hint = didYouMean(member.key, kinds);
    if (hint.empty())
        hint = findOperation(member.key) != nullptr
                   ? "did you mean {\"call\": \"" + member.key + "\"}?"
                   : "a line starts with " + anyOf(kinds);
    throw BadLine("unknown key \"" + member.key + "\"", member.keyBegin, hint);
}

/// The kind of the line: "call" wherever it stands, otherwise what the first key says.
const LineKind& kindOf(const JsonNode& line)
{
    const std::string key = line.find("call") != nullptr ? "call" : line.members.front().key;
    for (const LineKind& kind : lineKinds())
        if (key == kind.key)
            return kind;
    rejectFirstKey(line.members.front());
}

} // namespace

std::optional<Outcome> ScriptLine::run() const
{
    if (operation != nullptr)
        return operation->call(arguments);
    step();
    return std::nullopt;
}

ScriptLine parseScriptLine(const std::string& line, const std::string& origin)
{
    const JsonNode request = parseJsonLine(line);
    if (!request.isObject() || request.members.empty())
        throw BadLine("a line must be an object with something to do", request.begin,
                      std::string{"for example "} + lineExamples().front().line);
    const LineKind& kind = kindOf(request);
    if (kind.form == ObjectForm::CallLine)
        return prepareCall(request);
    if (request.members.size() > 1 && request.members[1].key != kind.key)
        throw BadLine("\"" + std::string{kind.key} + "\" goes with no other key",
                      request.members[1].keyBegin);
    checkObject(request, kind.form, "the line");
    const Action& action =
        *std::find_if(std::begin(kActions), std::end(kActions),
                      [&](const Action& row) { return request.members.front().key == row.key; });
    return {membersOf(request), nullptr, {}, action.prepare(request.members.front().node, origin)};
}
