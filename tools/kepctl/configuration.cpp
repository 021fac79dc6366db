// SPDX-License-Identifier: Apache-2.0
// What the configuration files lack.
#include "configuration.h"

#include <cstdlib>
#include <filesystem>

#include "closest.h"
#include "jdomparser.h"
#include "kepcatalogue.h"
#include "names.h"

namespace
{

constexpr const char* kBackendKey = "kepAudio";
constexpr const char* kCapabilitySection = "audioMasterDefault";
constexpr const char* kCapabilityKeys[] = {"card", "muteControlName", "volumeControlName"};

/// The one section that the library reads.
const char* section()
{
    return kepCatalogue::build().socKey;
}

std::string pathOf(const char* file)
{
    const char* chosen = getenv("KEP_CONFIG_DIR");
    const bool isChosen = chosen != nullptr && *chosen != '\0';
    return std::filesystem::path{isChosen ? chosen : kepCatalogue::build().configurationFolder} /
           file;
}

JValue contentOf(const std::string& path)
{
    JDomParser parser{JSchema::acceptAll()};
    return parser.parseFile(path);
}

/// "FILE lacks WHAT", with the closest key that is there instead.
std::string lacks(const std::string& path, const std::string& what, const char* key,
                  const JValue& object)
{
    Names present;
    for (const auto& [name, value] : object.members())
        present.push_back(name);
    const std::string similar = closest(key, present);
    return path + " lacks " + what + " \"" + key + "\"" +
           (similar.empty() ? "" : " (it has \"" + similar + "\")");
}

} // namespace

std::string configurationPath()
{
    return pathOf("kep-config.json");
}

std::string configuredBackend()
{
    return contentOf(configurationPath())[section()][kBackendKey].asString();
}

std::string configurationFault()
{
    const std::string path = configurationPath();
    const JValue root = contentOf(path);
    if (!root.isObject())
        return "";
    if (!root.hasKey(section()))
        return lacks(path, "the section", section(), root);
    const JValue own = root[section()];
    if (!own.hasKey(kBackendKey))
        return lacks(path, std::string{"in its section "} + section() + " the key", kBackendKey,
                     own);
    const std::string backend = own[kBackendKey].asString();
    if (backend.empty())
        return "in " + path + " \"" + kBackendKey +
               "\" must be the name of a backend: " + anyOf(names::backends());
    for (const std::string& known : names::backends())
        if (backend == known)
            return "";
    const std::string hint = didYouMean(backend, names::backends());
    return path + " names the backend \"" + backend + "\"; registered are " +
           anyOf(names::backends()) + (hint.empty() ? "" : "; " + hint);
}

MixerNames mixerNames()
{
    const JValue mixer = contentOf(pathOf("device-cap.json"))[kCapabilitySection];
    return {mixer["card"].asString(), mixer["muteControlName"].asString(),
            mixer["volumeControlName"].asString()};
}

std::string capabilityFault()
{
    const std::string path = pathOf("device-cap.json");
    const JValue root = contentOf(path);
    if (!root.isObject())
        return "";
    if (!root.hasKey(kCapabilitySection))
        return lacks(path, "the section", kCapabilitySection, root);
    for (const char* key : kCapabilityKeys)
        if (!root[kCapabilitySection].hasKey(key))
            return lacks(path, std::string{"in its section "} + kCapabilitySection + " the key",
                         key, root[kCapabilitySection]);
    return "";
}
