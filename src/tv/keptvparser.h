// SPDX-License-Identifier: Apache-2.0
// The parameter store: the maps that the middleware takes its parameters from.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "jvalue.h"

/// Holds the three parameter maps and flattens JSON objects into them.
///
/// The start-up worker hands the maps to the middleware while the caller's thread fills them:
/// whoever touches one goes through this class's operations, which take its guard. The guard is
/// never held while the driver is written.
class kepTvParser
{
public:
    using Map = std::map<std::string, std::string>;

    static kepTvParser* getInstance();

    /// Sets one entry of `target` for each member of the object: a string as it is, any other value
    /// as its JSON text. False, with nothing changed, when this is no object.
    bool storeParameters(JValue object, Map& target);

    /// What `use` makes of one of the maps, while nobody else touches it.
    template <typename Use>
    auto withMap(Map& map, Use use)
    {
        return guarded([&] { return use(map); });
    }
    /// What `use` gives while nobody else is behind the guard; for what is shared beside the maps.
    template <typename Use>
    auto guarded(Use use)
    {
        const std::lock_guard lock{mGuard};
        return use();
    }
    Map copyOf(const Map& map);
    /// The entry of that key; empty when there is none.
    std::optional<std::string> find(const Map& map, const std::string& key);

    Map mQualityParamsMap; // filled by the settings
    Map mAvParamsMap;      // the current pipeline
    Map mAencAvParamsMap;  // the recording pipeline

private:
    kepTvParser() = default;

    std::mutex mGuard;
};
