// SPDX-License-Identifier: Apache-2.0
// The parameter store. Flattening goes one level deep: a nested value is stored whole, under its
// own name.
#include "keptvparser.h"

#include <utility>

#include "keplog.h"
#include "startupworker.h"
#include "threads.h"

namespace
{

using ForMaps = std::lock_guard<threads::Guard>;

} // namespace

kepTvParser* kepTvParser::getInstance()
{
    // Never destroyed: a middleware call that outlives the process's patience may still read a map.
    static auto* const instance = new kepTvParser;
    return instance;
}

bool kepTvParser::storeParameters(JValue object, Map& target)
{
    if (!object.isObject())
        return false;
    for (const auto& [name, value] : object.eachMember()) {
        std::string key{name};
        KEP_DEBUG("store Parameters key: %s value: %s", key.c_str(), value.stringify().c_str());
        set(target, std::move(key), value.isString() ? value.asString() : value.stringify());
    }
    return true;
}

void kepTvParser::set(Map& map, std::string key, std::string value)
{
    const ForMaps guard{threads::parameterMapsGuard};
    map.insert_or_assign(std::move(key), std::move(value));
}

void kepTvParser::replace(Map& map, Map content)
{
    const ForMaps guard{threads::parameterMapsGuard};
    map.swap(content); // the old entries are freed when the guard is free again
}

std::optional<std::string> kepTvParser::find(const Map& map, const std::string& key)
{
    const auto entry = map.find(key);
    return entry != map.end() ? std::optional{entry->second} : std::nullopt;
}

std::optional<std::string> kepTvParser::findShared(const Map& map, const std::string& key) const
{
    const ForMaps guard{threads::parameterMapsGuard};
    return find(map, key);
}

std::shared_ptr<kepTvParser::Map> kepTvParser::forCall(Map& map, std::shared_ptr<Map>& kept) const
{
    if (!StartupWorker::isCurrentThread())
        return {std::shared_ptr<void>{}, &map}; // nobody's: the live map
    std::shared_ptr<Map> snapshot = std::make_shared<Map>();
    std::shared_ptr<Map> last;
    const ForMaps guard{threads::parameterMapsGuard};
    *snapshot = map;
    last = std::exchange(kept, snapshot);
    return snapshot;
}
