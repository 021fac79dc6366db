// SPDX-License-Identifier: Apache-2.0
// The configuration file: one section a SoC type, of which the library reads its own.
#include "kepconfig.h"

#include <cstdint>

#include "jdomparser.h"
#include "kepcatalogue.h"
#include "kepconfigpath.h"

namespace
{

constexpr const char* kFileName = "kep-config.json";

} // namespace

kepConfig* kepConfig::getInstance()
{
    static kepConfig instance;
    return &instance;
}

bool kepConfig::loadKEPConfig()
{
    const std::string path = kepConfigPath(kFileName);
    KEP_LOG(kLogInfo, "LOAD_CONFIG", "Loading kepConfig config from file %s", path.c_str());
    JDomParser parser{JSchema::acceptAll()};
    mRoot = parser.parseFile(path);
    if (!mRoot.isObject()) {
        // sic: no defaults are put in place, the client does not start; services rely on it
        KEP_ERROR("CONFIG_FILE_READ_FAILED",
                  "Failed to parse kep config file, using defaults. File: %s. Error: %s",
                  path.c_str(), parser.errorText().c_str());
        return false;
    }
    return true;
}

JValue kepConfig::find(kepLogOrigin origin, const std::string& key) const
{
    const char* socType = kepCatalogue::build().socKey;
    const JValue section = mRoot[socType];
    KEP_DEBUG_AS(origin, "Need value for soc type: %s & key type: %s", socType, key.c_str());
    JValue value = section[key];
    if (!value.isValid())
        KEP_DEBUG_AS(origin, "Did not find key type in kep config %s", key.c_str());
    return value;
}

std::string kepConfig::getValue(std::string key)
{
    return find(KEP_HERE, key).asString();
}

int kepConfig::getDefaultVolume(std::string key)
{
    return find(KEP_HERE, key).asNumber<std::int32_t>();
}
