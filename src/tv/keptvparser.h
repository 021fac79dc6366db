// SPDX-License-Identifier: Apache-2.0
// The parameter store: the maps that the middleware takes its parameters from.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "jvalue.h"

/// Holds the three parameter maps and flattens JSON objects into them. Only the caller's thread
/// changes a map, through these operations, and reads one as it is; the start-up worker copies
/// (threads.h).
class kepTvParser
{
public:
    using Map = std::map<std::string, std::string>;

    static kepTvParser* getInstance();

    /// Sets one entry of `target` for each member of the object: a string as it is, any other value
    /// as its JSON text. False, with nothing changed, when this is no object.
    bool storeParameters(JValue object, Map& target);

    Map mQualityParamsMap; // filled by the settings
    Map mAvParamsMap;      // the current pipeline
    Map mAencAvParamsMap;  // the recording pipeline

    // --- The caller's thread

    void set(Map& map, std::string key, std::string value);
    void replace(Map& map, Map content);
    /// The entry of that key; empty when there is none.
    static std::optional<std::string> find(const Map& map, const std::string& key);

    // --- Any thread

    /// The same as `find`, while nobody changes the map.
    std::optional<std::string> findShared(const Map& map, const std::string& key) const;
    /// The map as a middleware call takes it: the live one on the caller's thread; on the start-up
    /// worker a snapshot, which `kept` holds until the next one.
    std::shared_ptr<Map> forCall(Map& map, std::shared_ptr<Map>& kept) const;

private:
    kepTvParser() = default;
};
