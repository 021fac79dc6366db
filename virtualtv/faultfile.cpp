// SPDX-License-Identifier: Apache-2.0
// Faults from outside, for programs that plant none themselves: KEP_VIRTUALTV_FAULTS names a file
// of "inject" lines, as in a request script, which are in force from the start of the process. A
// line that cannot be used is told on standard error, and left out.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "devicenames.h"
#include "faultnames.h"
#include "faults.h"
#include "jdomparser.h"

namespace virtualtv
{
namespace
{

/// What is wrong with a line.
class BadFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

bool isKnown(FaultPoint point, const std::string& name)
{
    const auto named = [&](const auto& row) { return name == row.name; };
    switch (point) {
    case FaultPoint::Middleware:
        return std::any_of(std::begin(kMiddlewareOperations), std::end(kMiddlewareOperations),
                           named);
    case FaultPoint::SubMicro:
        return std::any_of(std::begin(kSubMicroOperations), std::end(kSubMicroOperations), named);
    case FaultPoint::Gpio:
        return std::find(std::begin(kInputLines), std::end(kInputLines), name) !=
               std::end(kInputLines);
    default: // elements are those of any card
        return true;
    }
}

std::string text(const JValue& fault, const char* key)
{
    std::string value;
    if (fault.hasKey(key) && !fault[key].asString(value))
        throw BadFault(std::string{"\""} + key + "\" must be a string");
    return value;
}

std::int32_t number(const JValue& fault, const char* key, std::int32_t least)
{
    std::int32_t value = 0;
    if (fault.hasKey(key) && (!fault[key].asNumber(value) || value < least))
        throw BadFault(std::string{"\""} + key + "\" must be a whole number" +
                       (least == INT_MIN ? "" : ", " + std::to_string(least) + " at least"));
    return value;
}

const FaultStage& stageOf(const JValue& fault)
{
    const std::string name = fault.hasKey("stage") ? text(fault, "stage") : kUsualStage;
    for (const FaultStage& stage : kFaultStages)
        if (name == stage.name)
            return stage;
    throw BadFault("there is no stage \"" + name + "\"");
}

/// What the injection aims at, and at which of them.
Injection aimed(const JValue& fault)
{
    for (const FaultTarget& target : kFaultTargets) {
        if (!fault.hasKey(target.key))
            continue;
        const std::string name = text(fault, target.key);
        if (!isKnown(target.point, name))
            throw BadFault(std::string{"\""} + target.key + "\" knows no \"" + name + "\"");
        return {target.point, name, "", 0, {}};
    }
    const FaultStage& stage = stageOf(fault);
    if (stage.ofAnElement && !fault.hasKey("control"))
        throw BadFault(R"("inject" lacks "control", "middleware", "gpio" or "subcpu")");
    return {
        stage.point, stage.ofAnElement ? text(fault, "control") : "*", text(fault, "card"), 0, {}};
}

void plant(const std::string& line, const std::string& origin)
{
    const JValue object = JDomParser{JSchema::acceptAll()}.parse(line);
    if (!object.isObject() || !object["inject"].isObject())
        throw BadFault(R"(not {"inject": {...}})");
    const JValue fault = object["inject"];
    if (!fault.hasKey("status") && !fault.hasKey("delayMs"))
        throw BadFault(R"("inject" lacks "status" or "delayMs")");
    Injection injection = aimed(fault);
    injection.status = number(fault, "status", INT_MIN);
    if (fault.hasKey("times"))
        injection.times = static_cast<unsigned>(number(fault, "times", 1));
    injection.delayMs = static_cast<unsigned>(number(fault, "delayMs", 0));
    injection.origin = origin;
    inject(std::move(injection));
}

bool isEmpty(const std::string& line)
{
    const std::size_t first = line.find_first_not_of(" \t\r");
    return first == std::string::npos || line[first] == '#';
}

void tell(const std::string& place, const char* what)
{
    std::fprintf(stderr, "kep-virtualtv: %s: %s\n", place.c_str(), what);
}

/// Starts with the process.
const bool gPlanted = [] {
    const char* path = secure_getenv("KEP_VIRTUALTV_FAULTS");
    if (path == nullptr || *path == '\0')
        return false;
    std::ifstream file{path};
    if (!file)
        tell(path, std::strerror(errno));
    std::string line;
    for (int row = 1; std::getline(file, line); ++row) {
        const std::string origin = std::string{path} + ":" + std::to_string(row);
        try {
            if (!isEmpty(line))
                plant(line, origin);
        } catch (const std::exception& reason) {
            tell(origin, reason.what());
        }
    }
    return true;
}();

} // namespace
} // namespace virtualtv
