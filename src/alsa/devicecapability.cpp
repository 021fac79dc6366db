// SPDX-License-Identifier: Apache-2.0
// The device capability file: {"audioMasterDefault": {"card", "muteControlName",
// "volumeControlName"}}.
#include "devicecapability.h"

#include "jdomparser.h"
#include "keplog.h"

DeviceCapability::DeviceCapability(const std::string& path)
{
    loadDeviceConfig(path);
}

void DeviceCapability::loadDeviceConfig(const std::string& path)
{
    KEP_LOG(kLogInfo, "LOAD_CONFIG", "Loading static DeviceCapability from file %s", path.c_str());
    JDomParser parser{JSchema::acceptAll()};
    const JValue root = parser.parseFile(path);
    if (!root.isObject()) {
        KEP_ERROR("CONFIG_FILE_READ_FAILED", "Failed to parse DeviceCapability file, Error: %s",
                  parser.errorText().c_str());
        return;
    }
    if (!root.hasKey("audioMasterDefault")) {
        KEP_DEBUG("Did not find  audioMasterDefault"); // sic
        return;
    }
    KEP_DEBUG("Found audioMasterDefault");
    parseAudioDefaults(root["audioMasterDefault"]);
}

void DeviceCapability::parseAudioDefaults(JValue value)
{
    if (!value.hasKey("card") || !value.hasKey("muteControlName") ||
        !value.hasKey("volumeControlName")) {
        KEP_ERROR("CONFIG_FILE_MISCONFIGURED",
                  "Failed to read resolution. using defaults."); // sic
        return;
    }
    card = value["card"].asString();
    muteControlName = value["muteControlName"].asString();
    volumeControlName = value["volumeControlName"].asString();
    muteControl = identifierOf(muteControlName);
    volumeControl = identifierOf(volumeControlName);
    KEP_DEBUG("Found card %s muteControlName %s and volumeControlName %s", card.c_str(),
              muteControlName.c_str(), volumeControlName.c_str());
}
