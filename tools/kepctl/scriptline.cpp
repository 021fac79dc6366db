// SPDX-License-Identifier: Apache-2.0
// Request script lines. A line is checked whole before any of it is done.
#include "scriptline.h"

#include <climits>
#include <utility>
#include <vector>

#include <glib.h>

#include "badline.h"
#include "faults.h"
#include "jdomparser.h"
#include "loglevels.h"
#include "television.h"

namespace
{

using Step = std::function<void()>;

// --- {"wait": milliseconds}

void runMainLoop(unsigned int milliseconds)
{
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add(
        milliseconds,
        [](gpointer data) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(data));
            return G_SOURCE_REMOVE;
        },
        loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

Step parseWait(const JValue& value)
{
    const auto milliseconds = static_cast<unsigned int>(wholeNumber(value, "\"wait\"", 0, INT_MAX));
    return [milliseconds] { runMainLoop(milliseconds); };
}

// --- {"set": {...}}

Step setLogLevelTo(const JValue& value)
{
    const auto level = static_cast<int>(wholeNumber(value, "\"logLevel\"", kLogError, kLogDebug));
    if (!isLogLevel(level))
        throw BadLine("\"logLevel\" must be 3, 4, 6 or 7");
    return [level] { admitLogLevel(level); };
}

Step setGpio(const JValue& value)
{
    if (!value.isObject())
        throw BadLine("\"gpio\" must be an object");
    std::vector<std::pair<std::string, int>> levels;
    for (const auto& [line, level] : value.members())
        levels.emplace_back(
            line, static_cast<int>(wholeNumber(level, "the level of " + line, INT_MIN, INT_MAX)));
    return [levels] {
        for (const auto& [line, level] : levels)
            virtualtv::setLineLevel(line, level);
    };
}

Step setGainValue(const JValue& value)
{
    const std::string gain = text(value, "\"gainValue\"");
    return [gain] { virtualtv::setGainValue(gain); };
}

Step setAmplifierState(const JValue& value)
{
    objectOf(value, "\"amplifierState\"", {"type", "states"});
    virtualtv::AmplifierState state = virtualtv::amplifierState();
    if (value.hasKey("type"))
        state.type = text(value["type"], "\"type\"");
    if (value.hasKey("states"))
        state.states = texts(value["states"], "\"states\"");
    return [state] { virtualtv::setAmplifierState(state); };
}

Step setI2cData(const JValue& value)
{
    const std::vector<std::string> data = texts(value, "\"i2cData\"");
    return [data] { virtualtv::setI2cData(data); };
}

// --- {"inject": {...}}

std::optional<unsigned int> timesOf(const JValue& injection)
{
    if (!injection.hasKey("times"))
        return std::nullopt;
    return static_cast<unsigned int>(wholeNumber(injection["times"], "\"times\"", 1, INT_MAX));
}

struct Stage {
    const char* name;
    virtualtv::FaultPoint point;
    bool ofAnElement; // "control" has to say which
};
constexpr Stage kStages[] = {
    {"open", virtualtv::FaultPoint::CardOpen, false},
    {"load", virtualtv::FaultPoint::CardLoad, false},
    {"info", virtualtv::FaultPoint::CardInfo, true},
    {"write", virtualtv::FaultPoint::CardWrite, true},
};

const Stage& stageOf(const JValue& injection)
{
    const std::string name =
        injection.hasKey("stage") ? text(injection["stage"], "\"stage\"") : "write";
    for (const Stage& stage : kStages)
        if (name == stage.name)
            return stage;
    throw BadLine("\"stage\" must be open, load, info or write");
}

virtualtv::Injection controlInjection(const JValue& value)
{
    objectOf(value, "\"inject\"", {"control", "card", "stage", "status", "times"});
    const Stage& stage = stageOf(value);
    std::string element = "*";
    if (value.hasKey("control"))
        element = text(value["control"], "\"control\"");
    else if (stage.ofAnElement)
        throw BadLine("\"inject\" lacks \"control\"");
    const std::string card = value.hasKey("card") ? text(value["card"], "\"card\"") : "";
    const auto status = static_cast<int>(wholeNumber(value["status"], "\"status\"", INT_MIN, 0));
    return {stage.point, stage.ofAnElement ? element : "*", card, status, timesOf(value)};
}

struct Target {
    const char* key;
    virtualtv::FaultPoint point;
};
constexpr Target kTargets[] = {
    {"middleware", virtualtv::FaultPoint::Middleware},
    {"gpio", virtualtv::FaultPoint::Gpio},
    {"subcpu", virtualtv::FaultPoint::SubMicro},
};

virtualtv::Injection injectionOf(const JValue& value)
{
    for (const auto& [key, point] : kTargets) {
        if (!value.hasKey(key))
            continue;
        objectOf(value, "\"inject\"", {key, "status", "times"});
        const auto status =
            static_cast<int>(wholeNumber(value["status"], "\"status\"", INT_MIN, INT_MAX));
        return {point, text(value[key], '"' + std::string{key} + '"'), "", status, timesOf(value)};
    }
    return controlInjection(value);
}

Step parseInject(const JValue& value)
{
    const virtualtv::Injection injection = injectionOf(value);
    return [injection] { virtualtv::inject(injection); };
}

// --- {"clear": true}

Step parseClear(const JValue& value)
{
    if (!truth(value, "\"clear\""))
        throw BadLine("\"clear\" must be true");
    return [] { virtualtv::clearInjections(); };
}

// --- Tables of keys

struct Row {
    const char* key;
    Step (*parse)(const JValue& value);
};

template <std::size_t Size>
Step parseByKey(const Row (&rows)[Size], const std::string& key, const JValue& value,
                const std::string& where)
{
    for (const Row& row : rows)
        if (key == row.key)
            return row.parse(value);
    throw BadLine("unknown key \"" + key + "\"" + where);
}

constexpr Row kSettings[] = {
    {"logLevel", &setLogLevelTo},           {"gpio", &setGpio},       {"gainValue", &setGainValue},
    {"amplifierState", &setAmplifierState}, {"i2cData", &setI2cData},
};

Step parseSet(const JValue& value)
{
    if (!value.isObject())
        throw BadLine("\"set\" must be an object");
    std::vector<Step> steps;
    for (const auto& [key, setting] : value.members())
        steps.push_back(parseByKey(kSettings, key, setting, " in \"set\""));
    return [steps] {
        for (const Step& step : steps)
            step();
    };
}

constexpr Row kActions[] = {
    {"wait", &parseWait},
    {"set", &parseSet},
    {"inject", &parseInject},
    {"clear", &parseClear},
};

ScriptLine parseCall(const JValue& line)
{
    objectOf(line, "the line", {"call", "args"});
    const std::string name = text(line["call"], "\"call\"");
    const Operation* operation = findOperation(name);
    if (operation == nullptr)
        throw BadLine("unknown operation \"" + name + "\"");
    try {
        return {line, operation, operation->prepare(line["args"])};
    } catch (const BadLine& fault) {
        throw BadLine(name + ": " + fault.what());
    }
}

} // namespace

ScriptLine parseScriptLine(const std::string& line)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue request = parser.parse(line);
    if (!request.isValid())
        throw BadLine("no JSON: " + parser.errorText());
    if (!request.isObject() || request.size() == 0)
        throw BadLine("a line must be an object with something to do");
    if (request.hasKey("call"))
        return parseCall(request);
    const auto [key, value] = request.members().front();
    const Step step = parseByKey(kActions, key, value, "");
    if (request.size() > 1)
        throw BadLine("\"" + key + "\" goes with no other key");
    return {request, nullptr, [step]() -> std::optional<Outcome> {
                step();
                return std::nullopt;
            }};
}
