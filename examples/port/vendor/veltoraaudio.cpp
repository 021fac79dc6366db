// SPDX-License-Identifier: Apache-2.0
// Stands for the maker's library, so that the port can be built and tried without the set. With
// VELTORA_TRACE in the environment it tells standard error what it is asked for.
#include "veltoraaudio.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

struct vlt_unit {
    std::string name;
};

namespace
{

vlt_status done(const vlt_unit* unit, const char* property, const std::string& value)
{
    if (std::getenv("VELTORA_TRACE") != nullptr)
        std::fprintf(stderr, "veltora: %s.%s %s\n", unit->name.c_str(), property, value.c_str());
    return VLT_DONE;
}

vlt_unit& headphone()
{
    static vlt_unit unit{"headphone"};
    return unit;
}

} // namespace

vlt_unit* vlt_open(const char* name)
{
    static std::map<std::string, vlt_unit>& units = *new std::map<std::string, vlt_unit>;
    vlt_unit& unit = units[name];
    unit.name = name;
    return &unit;
}

vlt_status vlt_set_number(vlt_unit* unit, const char* property, long value)
{
    return done(unit, property, std::to_string(value));
}

vlt_status vlt_set_text(vlt_unit* unit, const char* property, const char* value)
{
    return done(unit, property, value);
}

vlt_status vlt_set_numbers(vlt_unit* unit, const char* property, const long* values, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + std::to_string(values[i]);
    return done(unit, property, text);
}

vlt_status vlt_do(vlt_unit* unit, const char* command)
{
    return done(unit, command, "");
}

vlt_status vlt_get_text(vlt_unit*, const char* property, char* text, int space)
{
    std::snprintf(text, static_cast<std::size_t>(space), "%s",
                  property == std::string{"gain"} ? "-6" : "on");
    return VLT_DONE;
}

int vlt_line(int number)
{
    constexpr int kHeadphoneSocket = 7;
    return number == kHeadphoneSocket ? 0 : -1;
}

vlt_status vlt_headphone_power(int on)
{
    return done(&headphone(), "power", std::to_string(on));
}
