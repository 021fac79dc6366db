// SPDX-License-Identifier: Apache-2.0
// The parameter store. Flattening goes one level deep: a nested value is stored whole, under its
// own name.
#include "keptvparser.h"

#include <vector>

#include "keplog.h"

kepTvParser* kepTvParser::getInstance()
{
    static kepTvParser instance;
    return &instance;
}

bool kepTvParser::storeParameters(JValue object, Map& target)
{
    if (!object.isObject())
        return false;
    for (const JValue::Member& member : object.members()) {
        const JValue& value = member.second;
        KEP_DEBUG("store Parameters key: %s value: %s", member.first.c_str(),
                  value.stringify().c_str());
        const std::string text = value.isString() ? value.asString() : value.stringify();
        withMap(target, [&](Map& map) { map.insert_or_assign(member.first, text); });
    }
    return true;
}

kepTvParser::Map kepTvParser::copyOf(const Map& map)
{
    return guarded([&] { return map; });
}

std::optional<std::string> kepTvParser::find(const Map& map, const std::string& key)
{
    return guarded([&]() -> std::optional<std::string> {
        const auto entry = map.find(key);
        return entry != map.end() ? std::optional{entry->second} : std::nullopt;
    });
}
