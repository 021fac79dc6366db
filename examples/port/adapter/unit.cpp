// SPDX-License-Identifier: Apache-2.0
// A unit of the maker's library.
#include "unit.h"

#include <vector>

namespace veltora
{
namespace
{

constexpr int kDone = 0; // of the platform's headers
constexpr int kFailed = 1;

int translated(vlt_status status)
{
    return status == VLT_DONE ? kDone : kFailed;
}

} // namespace

int Unit::set(const char* property, long value) const
{
    return translated(vlt_set_number(mUnit, property, value));
}

int Unit::set(const char* property, const std::string& value) const
{
    return translated(vlt_set_text(mUnit, property, value.c_str()));
}

int Unit::set(const char* property, const int* values, int count) const
{
    const std::vector<long> numbers(values, values + count);
    return translated(vlt_set_numbers(mUnit, property, numbers.data(), count));
}

int Unit::perform(const char* command) const
{
    return translated(vlt_do(mUnit, command));
}

std::string Unit::text(const char* property) const
{
    char text[256] = "";
    return vlt_get_text(mUnit, property, text, sizeof text) == VLT_DONE ? text : "";
}

int Unit::setAll(const char* prefix, const MwlParams& parameters) const
{
    int status = kDone;
    for (const auto& [key, value] : parameters)
        if (set((prefix + ("." + key)).c_str(), value) != kDone)
            status = kFailed; // the others are set all the same
    return status;
}

long volumeOf(int volume)
{
    constexpr int kOurs = 255;
    constexpr int kMakers = 100;
    return (volume * kMakers + kOurs / 2) / kOurs;
}

} // namespace veltora
