// SPDX-License-Identifier: Apache-2.0
// Checked reading of a script line's values.
#include "badline.h"

#include <algorithm>

namespace
{

[[noreturn]] void reject(const std::string& what, const std::string& wanted)
{
    throw BadLine(what + " must be " + wanted);
}

} // namespace

std::int64_t wholeNumber(const JValue& value, const std::string& what, std::int64_t minimum,
                         std::int64_t maximum)
{
    std::int64_t number = 0;
    double exact = 0;
    const bool whole =
        value.asNumber(number) && value.asNumber(exact) && static_cast<double>(number) == exact;
    if (!whole || number < minimum || number > maximum)
        reject(what,
               "a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
    return number;
}

std::string text(const JValue& value, const std::string& what)
{
    std::string result;
    if (!value.asString(result))
        reject(what, "a string");
    return result;
}

bool truth(const JValue& value, const std::string& what)
{
    bool result = false;
    if (!value.asBool(result))
        reject(what, "true or false");
    return result;
}

std::vector<std::string> texts(const JValue& value, const std::string& what)
{
    if (!value.isArray())
        reject(what, "an array of strings");
    std::vector<std::string> result;
    for (const JValue& element : value.elements())
        result.push_back(text(element, "each element of " + what));
    return result;
}

const JValue& objectOf(const JValue& value, const std::string& what,
                       std::initializer_list<const char*> keys)
{
    if (!value.isObject())
        reject(what, "an object");
    for (const auto& [key, member] : value.members())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            throw BadLine("unknown key \"" + key + "\" in " + what);
    return value;
}
