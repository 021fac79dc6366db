// SPDX-License-Identifier: Apache-2.0
// The adapter of the sound-engine middleware. Most of it is one table: a key of the quality
// payload, how its value is read, and the operation that takes it.
#include "keptvsoundengine.h"

#include <cstdint>
#include <variant>
#include <vector>

#include "kepmiddleware.h"
#include "mwlseinterface.h"
#include "payloadkeys.h"

using mwl_se::MwlSeInterface;

namespace
{

constexpr const char* kErrorId = "SOUND_ENGINE_MWL_ERROR";
constexpr std::size_t kEqualizerBands = 5;

// --- How a value is read, with the operation that takes it.

/// Exactly the text `on` switches on, every other value switches off.
struct Switch {
    int (MwlSeInterface::*set)(bool);
    const char* on = "on";
};
/// The text is passed on as it is.
struct Text {
    int (MwlSeInterface::*set)(const std::string&);
};
/// An array's first elements; missing ones, and what is no number, count as 0.
struct Bands {
    int (MwlSeInterface::*set)(const int*);
};

struct KeyedHandler {
    const char* name; // of the handler, in log lines
    const char* key;
    std::variant<Switch, Text, Bands> value;
    const char* subject; // in "Failed to set ... as" and "set ... successfully as"
};

// In the order in which a payload is searched.
// clang-format off
constexpr KeyedHandler kKeyedHandlers[] = {
    // handler                         key                    value                                                         subject
    {"setSoundModeSettings",           "soundMode",           Text{&MwlSeInterface::setSoundMode},                          "setSoundMode"}, // sic: the operation's name
    {"setSmartSoundModeSettings",      "smartSoundMode",      Switch{&MwlSeInterface::setSmartSoundMode},                   "smartSoundMode"},
    {"setAutoVolumeSettings",          "autoVolume",          Switch{&MwlSeInterface::setAutoVolume},                       "autoVolume"},
    {"setVirtualSurroundSettings",     "virtualSurround",     Switch{&MwlSeInterface::setVirtualSurround},                  "virtualSurround"},
    {"setMagicSpaceSoundSettings",     "magicSpaceSound",     Text{&MwlSeInterface::setMagicSpaceSound},                    "magicSpaceSound"},
    {"setMagicSoundModifiedSettings",  "magicSoundModified",  Switch{&MwlSeInterface::setMagicSpaceSoundModified, "true"}, "magicSoundModified"},
    {"setUserEqualizerSettings",       "userEqualizer",       Switch{&MwlSeInterface::setUserEQ},                           "userEqualizer"},
    {"setUserEqualizerValuesSettings", "userEqualizerValues", Bands{&MwlSeInterface::setUserEQValues},                      "userEqualizerValues"},
    {"setVolumeControlSettings",       "volumeControl",       Text{&MwlSeInterface::setVolumeMode},                         "volumeControl"},
    {"setAiSoundSettings",             "aiSound",             Switch{&MwlSeInterface::setAISound},                          "aiSound"},
    {"setATMOSSettings",               "supportATMOS",        Switch{&MwlSeInterface::setDolbyAtmos},                       "supportATMOS"},
};
// clang-format on

constexpr kepKey keyOf(const KeyedHandler& handler)
{
    if (const auto* value = std::get_if<Switch>(&handler.value))
        return {handler.key, KEP_VALUE_STRING,
                false,       {&value->on, 1},
                false,       "switch; any other text switches it off"};
    if (std::holds_alternative<Text>(handler.value))
        return {handler.key, KEP_VALUE_STRING, false, {}, false, "passed on"};
    return {handler.key, KEP_VALUE_ARRAY, false, {}, false, "numbers, one for each of five bands"};
}

constexpr auto kQualityKeys = [] {
    std::array<kepKey, 2 + std::size(kKeyedHandlers)> keys{key::kEqualizerStatus,
                                                           key::kSoundEngineStatus};
    auto* next = keys.data() + 2;
    for (const KeyedHandler& handler : kKeyedHandlers)
        *next++ = keyOf(handler);
    return keys;
}();

int call(MwlSeInterface& engine, const Switch& value, const JValue& given)
{
    return (engine.*value.set)(given.asString() == value.on);
}

int call(MwlSeInterface& engine, const Text& value, const JValue& given)
{
    return (engine.*value.set)(given.asString());
}

int call(MwlSeInterface& engine, const Bands& value, const JValue& given)
{
    int bands[kEqualizerBands] = {};
    for (std::size_t i = 0; i < kEqualizerBands; ++i)
        bands[i] = given[i].asNumber<std::int32_t>();
    return (engine.*value.set)(bands);
}

/// " as VALUE" for a value that is a text, nothing for an array.
std::string suffix(const KeyedHandler& handler, const JValue& given)
{
    return std::holds_alternative<Bands>(handler.value) ? "" : " as " + given.asString();
}

/// Applies the handler's key, if the payload has it.
void apply(MwlSeInterface& engine, const KeyedHandler& handler, const JValue& payload)
{
    if (!payload.hasKey(handler.key))
        return;
    const JValue given = payload[handler.key];
    const int status =
        std::visit([&](const auto& value) { return call(engine, value, given); }, handler.value);
    const kepLogOrigin origin = KEP_HERE.as(handler.name);
    if (status != 0)
        KEP_ERROR_AS(origin, kErrorId, "Failed to set %s%s", handler.subject,
                     suffix(handler, given).c_str());
    else
        KEP_DEBUG_AS(origin, "set %s successfully%s", handler.subject,
                     suffix(handler, given).c_str());
}

} // namespace

kepList<kepKey> kepTVSoundEngine::qualityKeys()
{
    return listOf(kQualityKeys);
}

kepTVSoundEngine* kepTVSoundEngine::getInstance()
{
    static kepTVSoundEngine instance;
    return &instance;
}

bool kepTVSoundEngine::initSoundEngine()
{
    if (mPtrSoundEngineInstance == nullptr)
        mPtrSoundEngineInstance = MwlSeInterface::getInstance();
    KEP_INFO("mPtrSoundEngineInstance is Initialised");
    return true;
}

bool kepTVSoundEngine::initSoundEngineAttributes()
{
    const bool registered =
        KEP_SUCCEEDED(registerParams<&MwlSeInterface::registerQualityParams>(
                          mPtrSoundEngineInstance, &kepTvParser::mQualityParamsMap),
                      kErrorId, "Failed to register quality Parameters for sound engine instance");
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->initialize(), kErrorId,
                         "Failed to initialize for sound engine instance") &&
           registered;
}

void kepTVSoundEngine::registerAudioVideoInfo()
{
    KEP_INFO("Calling registerAvParams");
    if (registerParams<&MwlSeInterface::registerAvParams>(mPtrSoundEngineInstance,
                                                          &kepTvParser::mAvParamsMap) != 0)
        KEP_ERROR(kErrorId, "Failed to register audio video parameters");
}

bool kepTVSoundEngine::setSoundOutputVolume(const int& volume)
{
    KEP_INFO("Setting OSD volume %d", volume);
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setOSDVolume(volume), kErrorId,
                         "Failed to set OSD volume %d of sound engine library", volume);
}

bool kepTVSoundEngine::setImmersiveFormat(const std::string& format)
{
    KEP_INFO("Setting immersive info  immersiveFormat %s", format.c_str()); // sic
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setImmersiveInfo(format), kErrorId,
                         "Failed to set Immersive Format %s", format.c_str());
}

bool kepTVSoundEngine::setEqualizerStatus(const std::string& status)
{
    KEP_INFO("Setting Instart Audio EQ %s", status.c_str());
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setInstartAudioEQ(status == "on"), kErrorId,
                         "Failed to set audio equalizer as %s", status.c_str());
}

bool kepTVSoundEngine::setSoundEngineStatus(const std::string& status)
{
    KEP_INFO("Setting Instart SoundEngine %s", status.c_str());
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setInstartSoundEngine(status == "on"), kErrorId,
                         "Failed to set sound engine status as %s", status.c_str());
}

bool kepTVSoundEngine::setDolbyAtmos(const std::string& status)
{
    KEP_INFO("Setting Dolby Atmos State %s", status.c_str());
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setDolbyAtmos(status == "on"), kErrorId,
                         "Failed to set Dolby Atmos as %s", status.c_str());
}

bool kepTVSoundEngine::setForcedDolbyAtmos(const bool& on)
{
    KEP_INFO("setForcedDolbyAtmos %d", on);
    return KEP_SUCCEEDED(mPtrSoundEngineInstance->setForcedDolbyAtmos(on), kErrorId,
                         "Failed to set forced Dolby Atmos as %d", on);
}

bool kepTVSoundEngine::setMagicSpaceSound(JValue payload)
{
    KEP_INFO("Setting MagicSpace SoundParams %s", payload.stringify().c_str());
    if (!payload.hasKey(key::kSoundSettingValues.name)) {
        KEP_ERROR(kErrorId, "No values to set magic space sound");
        return false;
    }
    std::vector<int> values;
    for (const JValue& value : payload[key::kSoundSettingValues.name].elements())
        values.push_back(value.asNumber<std::int32_t>());
    if (!KEP_SUCCEEDED(mPtrSoundEngineInstance->setMagicSpaceSoundParams(
                           values.data(), static_cast<int>(values.size())),
                       kErrorId, "Failed to set magic space sound"))
        return false;
    KEP_DEBUG("set magic space sound successfully");
    return true;
}

void kepTVSoundEngine::setOptionCategorySettings(JValue payload)
{
    if (!payload.hasKey(key::kStoreMode.name))
        return;
    const std::string mode = payload[key::kStoreMode.name].asString();
    if (KEP_SUCCEEDED(mPtrSoundEngineInstance->setStoreMode(mode), kErrorId,
                      "Failed to set Store/Home mode value as %s", mode.c_str()))
        KEP_INFO("set Store/Home mode successfully as %s", mode.c_str());
}

void kepTVSoundEngine::setSoundEngineSettings(JValue payload)
{
    setEqualizerStatus(payload);
    setSoundEngineStatus(payload);
    for (const KeyedHandler& handler : kKeyedHandlers)
        apply(*mPtrSoundEngineInstance, handler, payload);
}

void kepTVSoundEngine::setEqualizerStatus(JValue payload)
{
    applyStatus(KEP_HERE, payload, key::kEqualizerStatus.name,
                &kepTVSoundEngine::setEqualizerStatus);
}

void kepTVSoundEngine::setSoundEngineStatus(JValue payload)
{
    applyStatus(KEP_HERE, payload, key::kSoundEngineStatus.name,
                &kepTVSoundEngine::setSoundEngineStatus);
}

void kepTVSoundEngine::applyStatus(kepLogOrigin origin, const JValue& payload, const char* key,
                                   StatusSetter set)
{
    if (!payload.isObject()) {
        KEP_ERROR_AS(origin, "INVALID_PARAMETER", "Invalid object");
        return;
    }
    if (!payload.hasKey(key))
        return;
    const std::string status = payload[key].asString();
    if ((this->*set)(status))
        KEP_DEBUG_AS(origin,
                     "set equalizerStatus for soundengine middleware successfully as %s", // sic
                     status.c_str());
}
