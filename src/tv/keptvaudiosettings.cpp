// SPDX-License-Identifier: Apache-2.0
// Settings: their store, and their categories. A category is one row of a table; its handler checks
// the payload and applies it.
#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "catalogue.h"
#include "keplog.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvparser.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"
#include "startupworker.h"
#include "threads.h"

namespace
{

/// What stands around a payload in an answer of getSettings: the list, and its category's entry.
constexpr int kAnswerDepth = 2;

} // namespace

// --- Settings store

bool kepTVAudio::isOfCategory(const JValue& stored, const std::string& category)
{
    std::string name;
    return stored["category"].asString(name) && name == category;
}

bool kepTVAudio::storeSettings(const std::string& category, JValue payload)
{
    KEP_INFO("Store settings key for category %s", category.c_str());
    if (payload.depth() + kAnswerDepth > JValue::kMaxDepth) {
        KEP_ERROR("ERROR_LOG", "Settings of category %s are nested too deep to be stored",
                  category.c_str());
        return false;
    }
    const auto stored =
        std::find_if(mSettingsList.begin(), mSettingsList.end(),
                     [&](const JValue& candidate) { return isOfCategory(candidate, category); });
    const bool found = stored != mSettingsList.end();
    // An entry that is there is used again: making and freeing one costs as much as a small
    // payload.
    JValue entry = found ? *stored : JValue::object();
    if (!found)
        entry.put("category", category);
    // Put first, which copies: the caller keeps its own. What it did not give is null.
    static_cast<void>(entry.put("value", payload.isValid() ? payload : JValue{}));
    JValue value = entry["value"];
    for (const char* key : {"returnValue", "subscribe"})
        if (value.remove(key))
            KEP_DEBUG("settingsValue After removing an element=  %s",
                      value.stringify().c_str()); // sic
    if (found) {
        KEP_DEBUG("Found the Category change only Value Delete the same and add new one in Vector");
        mSettingsList.erase(stored);
    }
    mSettingsList.push_back(entry);
    KEP_DEBUG("Category = %s and the settingsValue = %s", category.c_str(),
              entry.stringify().c_str());
    return true;
}

// --- Dispatch

struct kepTVAudio::SettingsRow {
    std::string_view category;         // a literal, or the caller's
    SettingsGroup group = nullptr;     // logs for its categories; null: the category stands alone
    SettingsHandler handler = nullptr; // null: refused
    bool stored = false;               // a payload that was applied is remembered
    bool takesQualityKeys = false;     // the payload goes to all adapters
    kepList<kepKey> keys;              // what the handler reads
    const char* meaning = nullptr;

    static const SettingsRow kAll[];
};

namespace
{

constexpr kepKey kOttAdecModeKeys[] = {key::kIsOttEnable, key::kIsAtmosLocking};
constexpr kepKey kOutputModeKeys[] = {key::kDigitalModeOutput, key::kMode};
constexpr kepKey kPowerStateMuteKeys[] = {key::kMutedOutput, key::kMute};
constexpr kepKey kExternalArcKeys[] = {key::kArcActivation, key::kArcProfile, key::kEarcCapability,
                                       key::kEarcAtmos};

constexpr kepList<kepKey> only(const kepKey& key)
{
    return {&key, 1};
}

} // namespace

// clang-format off
using TV = kepTVAudio;
constexpr kepTVAudio::SettingsRow kepTVAudio::SettingsRow::kAll[] = {
    // category                 group                                handler                          stored  quality  keys                                meaning
    {"modelConfig",             &TV::setSoundConfigSettings,         &TV::setModelConfig,             false,  true,    {},                                 "the model; a condition of the start-up"},
    {"hardwareConfig",          &TV::setSoundConfigSettings,         &TV::setHwConfig,                false,  false,   only(key::kCountry),                "the hardware; every key is kept as a parameter; a condition of the start-up"},
    {"contiConfig",             &TV::setSoundConfigSettings,         &TV::setContiConfig,             false,  true,    {},                                 "the region; a condition of the start-up"},
    {"sound",                   &TV::setSoundConfigSettings,         &TV::setSoundSettings,           false,  true,    {},                                 "sound quality"},
    {"groupCodeConfig",         &TV::setSoundConfigSettings,         nullptr,                         false,  false,   {},                                 "known, and always refused"}, // sic: refused without a look; callers rely on it
    {"zibConfig",               &TV::setSoundConfigSettings,         nullptr,                         false,  false,   {},                                 "known, and always refused"}, // sic: the same
    {"soundOutputMode",         &TV::setSoundOutputDigitalSettings,  &TV::setSoundOutputModeSettings, true,   false,   listOf(kOutputModeKeys),            "the digital mode of an output was chosen"},
    {"forceOutput",             &TV::setSoundOutputDigitalSettings,  &TV::setforceOutputSettings,     true,   false,   only(key::kForceDdPlus),            "forced digital format"},
    {"setMixer",                &TV::setSoundOutputDigitalSettings,  &TV::setMixerSettings,           true,   false,   only(key::kMix),                    "mixing into digital outputs"},
    {"scms",                    &TV::setAlsaDriverSettings,          &TV::setScmsSettings,            false,  false,   only(key::kCopyright),              "copy protection of digital outputs"},
    {"ottAdecMode",             &TV::setAlsaDriverSettings,          &TV::setOttAdecModeSettings,     false,  false,   listOf(kOttAdecModeKeys),           "decoder mode of streaming services"},
    {"powerState",              &TV::setAlsaDriverSettings,          &TV::setQNSoundbarState,         true,   false,   only(key::kPowerState),             "power of the sound bar, or the optical light"},
    {"external_arc",            &TV::setAlsaDriverSettings,          &TV::setExternalArcSettings,     true,   false,   listOf(kExternalArcKeys),           "ARC and eARC"},
    {"audioEQ",                 &TV::setSoundEngineSettings,         &TV::setEqualizerSettings,       true,   false,   only(key::kStatus),                 "equalizer of sound engine and amplifier"},
    {"soundEngine",             &TV::setSoundEngineSettings,         &TV::setSoundEngineStatus,       true,   false,   only(key::kStatus),                 "the sound engine as a whole"},
    {"magicSpaceSound",         &TV::setSoundEngineSettings,         &TV::setMagicSpaceSound,         true,   false,   only(key::kSoundSettingValues),     "parameters of the room's sound"},
    {"dolbyAtmos",              &TV::setSoundEngineSettings,         &TV::setDolbyAtmosState,         true,   false,   only(key::kAtmosState),             "Dolby Atmos"},
    {"forcedDolbyAtmos",        &TV::setSoundEngineSettings,         &TV::setForcedDolbyAtmos,        true,   false,   only(key::kForcedDolbyAtmos),       "Dolby Atmos whatever the content"},
    {"amplifier",               &TV::setAmplifierSettings,           &TV::setAmplifierType,           true,   false,   only(key::kAmpChipType),            "the amplifier's chip"},
    {"prepareResume",           &TV::setAmplifierSettings,           &TV::prepareResume,              true,   false,   {},                                 "resumes the amplifier; the next headphone unmute waits"},
    {"amplifierState",          &TV::setAmplifierSettings,           &TV::setAmplifierState,          true,   false,   listOf(key::kAmplifierStateKeys),   "switches an amplifier"},
    {"prepareAmplifierSuspend", &TV::setAmplifierSettings,           &TV::prepareAmplifierSuspend,    true,   false,   {},                                 "suspends the amplifier"},
    {"writeI2cDataToAmplifier", &TV::setAmplifierSettings,           &TV::writeI2cDataToAmplifier,    true,   false,   listOf(key::kWriteRegisterKeys),    "writes a register of the amplifier"},
    {"audioVideoSync",          &TV::setDelaySettings,               &TV::setAudioVideoSync,          true,   false,   only(key::kCorrectionValue),        "delay between sound and picture"},
    {"offsetDelay",             &TV::setDelaySettings,               &TV::setOffsetDelay,             true,   false,   listOf(key::kOffsetDelayKeys),      "offset of a delay"},
    {"option",                  &TV::setOtherCategorySettings,       &TV::setOptionSettings,          true,   false,   only(key::kStoreMode),              "options of the television"},
    {"picture",                 &TV::setOtherCategorySettings,       &TV::setPictureSettings,         true,   false,   only(key::kMemcDelayLevel),         "picture, as far as it delays"},
    {"dimension",               &TV::setOtherCategorySettings,       &TV::acceptSettings,             true,   false,   {},                                 "nothing is done, but it is stored"},
    {"smartSoundMode",          &TV::setOtherCategorySettings,       &TV::setSoundSettings,           true,   true,    {},                                 "sound quality, stored"},
    {"other",                   &TV::setOtherCategorySettings,       &TV::setOtherSettings,           true,   false,   only(key::kSupportBnoModel),        "model flag"},
    {"activateWisa",            nullptr,                             &TV::setActivateWisa,            false,  false,   only(key::kActivateWisa),           "wireless speakers"},
    {"powerStateMute",          nullptr,                             &TV::setPowerStateMute,          false,  false,   listOf(kPowerStateMuteKeys),        "mute by power state"},
    {"headphoneDetectionMute",  nullptr,                             &TV::setHeadphoneDetectionMute,  false,  false,   only(key::kMute),                   "mute by headphone detection"},
};
// clang-format on

const kepTVAudio::SettingsRow* kepTVAudio::findSettings(const std::string& category)
{
    const auto* row =
        std::find_if(std::begin(SettingsRow::kAll), std::end(SettingsRow::kAll),
                     [&](const SettingsRow& each) { return category == each.category; });
    return row != std::end(SettingsRow::kAll) ? row : nullptr;
}

bool kepTVAudio::applySettings(const SettingsRow& row, const JValue& payload)
{
    return row.group != nullptr ? (this->*row.group)(row, payload) : handle(row, payload);
}

bool kepTVAudio::handle(const SettingsRow& row, const JValue& payload)
{
    if (row.handler == nullptr || !(this->*row.handler)(payload))
        return false;
    return !row.stored || storeSettings(std::string{row.category}, payload);
}

bool kepTVAudio::handleInGroup(SettingsGroup group, const std::string& category,
                               const JValue& payload)
{
    const SettingsRow* row = findSettings(category);
    if (row != nullptr && row->group == group)
        return (this->*group)(*row, payload);
    // Another group's category is told of, and refused.
    return (this->*group)(SettingsRow{category, group, nullptr, false, false, {}, ""}, payload);
}

kepList<kepSettingsCategory> kepCatalogue::settingsCategories()
{
    // Not constexpr: instrumented by the sanitizers, comparing a member pointer is no constant.
    static const auto shown =
        projected(kepTVAudio::SettingsRow::kAll, [](const kepTVAudio::SettingsRow& row) {
            return kepSettingsCategory{row.category.data(),    row.keys,
                                       row.takesQualityKeys,   row.stored,
                                       row.handler != nullptr, row.meaning};
        });
    return listOf(shown);
}

// --- The groups: each says which category it was given. By name they are called from outside, by
// row from the dispatch.

bool kepTVAudio::setSoundConfigSettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set config and settings for category %s", row.category.data());
    return handle(row, payload);
}

bool kepTVAudio::setSoundOutputDigitalSettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set sound output digital settings");
    return handle(row, payload);
}

bool kepTVAudio::setAlsaDriverSettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set driver settings for category %s", row.category.data());
    return handle(row, payload);
}

bool kepTVAudio::setSoundEngineSettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set sound engine settings for category %s", row.category.data());
    return handle(row, payload);
}

bool kepTVAudio::setAmplifierSettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set amplifier settings for category %s, value = %s", row.category.data(),
             payload.stringify().c_str());
    return handle(row, payload);
}

bool kepTVAudio::setDelaySettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set delay settings for category %s", row.category.data());
    return handle(row, payload);
}

bool kepTVAudio::setOtherCategorySettings(const SettingsRow& row, const JValue& payload)
{
    KEP_INFO("Set settings for category %s", row.category.data());
    return handle(row, payload);
}

// Fixed names: the same by the category's name, for a group that is called directly.
// clang-format off
bool kepTVAudio::setSoundConfigSettings(std::string category, JValue payload)        { return handleInGroup(&kepTVAudio::setSoundConfigSettings, category, payload); }
bool kepTVAudio::setSoundOutputDigitalSettings(std::string category, JValue payload) { return handleInGroup(&kepTVAudio::setSoundOutputDigitalSettings, category, payload); }
bool kepTVAudio::setAlsaDriverSettings(std::string category, JValue payload)         { return handleInGroup(&kepTVAudio::setAlsaDriverSettings, category, payload); }
bool kepTVAudio::setSoundEngineSettings(std::string category, JValue payload)        { return handleInGroup(&kepTVAudio::setSoundEngineSettings, category, payload); }
bool kepTVAudio::setAmplifierSettings(std::string category, JValue payload)          { return handleInGroup(&kepTVAudio::setAmplifierSettings, category, payload); }
bool kepTVAudio::setDelaySettings(std::string category, JValue payload)              { return handleInGroup(&kepTVAudio::setDelaySettings, category, payload); }
bool kepTVAudio::setOtherCategorySettings(std::string category, JValue payload)      { return handleInGroup(&kepTVAudio::setOtherCategorySettings, category, payload); }
// clang-format on

// --- Model, hardware and country

bool kepTVAudio::setModelConfig(JValue payload)
{
    mStartupConditions.modelConfigReceived = true;
    return setSoundSettings(payload);
}

bool kepTVAudio::setContiConfig(JValue payload)
{
    mStartupConditions.contiConfigReceived = true;
    return setSoundSettings(payload);
}

bool kepTVAudio::setSoundSettings(JValue payload)
{
    mPtrParserInstance->storeParameters(payload, mPtrParserInstance->mQualityParamsMap);
    if (beginsStartup()) {
        KEP_INFO("Inside main Thread :: ID  = 0x%x", threads::shortId()); // sic
        KEP_INFO("startXmlParsing thread is getting created");
        try {
            StartupWorker::instance().launch([this] { startXmlParsing(); });
        } catch (const std::system_error& error) {
            KEP_ERROR("ERROR_LOG", "Caught system_error: %s, code: %s", error.what(),
                      error.code().message().c_str());
        }
    }
    return setQualityAttributeSettings(payload);
}

bool kepTVAudio::setHwConfig(JValue payload)
{
    KEP_INFO("Set hwardware config"); // sic
    constexpr const char* kCountry = key::kCountry.name;
    const std::string before = qualityParam(kCountry).value_or("");
    const bool stored =
        mPtrParserInstance->storeParameters(payload, mPtrParserInstance->mQualityParamsMap);
    mStartupConditions.hardwareConfigApplied = stored;
    if (!payload.hasKey(kCountry))
        return stored;
    const std::string country = payload[kCountry].asString();
    KEP_DEBUG(
        "Inside the hardwareConfig category countryTypeValueFromMap : %s and newcountryTypeValue : %s ",
        before.c_str(), country.c_str()); // sic
    if (country == before)
        return stored;
    const std::string mode = getSoundOutputDigitalMode();
    if (!setSoundOutputDigital(mode))
        KEP_ERROR("SET_SOUNDOUTPUT_DIGITAL_ERROR", "failed to set SoundOutput Digital %s",
                  mode.c_str());
    return stored;
}

// --- Digital outputs

bool kepTVAudio::setforceOutputSettings(JValue payload)
{
    KEP_INFO("Set force output settings");
    std::string forced;
    if (!payload[key::kForceDdPlus.name].asString(forced))
        return false;
    const bool before = std::exchange(mForcedDDPlus, forced == "true");
    return before == mForcedDDPlus || reapplyDigitalMode();
}

bool kepTVAudio::setMixerSettings(JValue payload)
{
    KEP_INFO("Set mixer settings");
    bool mix = false;
    if (!payload[key::kMix.name].asBool(mix))
        return false;
    const bool before = std::exchange(mMixerFlag, mix);
    return before == mMixerFlag || reapplyDigitalMode();
}

bool kepTVAudio::setSoundOutputModeSettings(JValue payload)
{
    KEP_INFO("Set sound output mode settings");
    const std::string output = payload[key::kDigitalModeOutput.name].asString();
    const kepNames& outputs = key::kDigitalModeOutput.values;
    const bool known = std::find(outputs.begin(), outputs.end(), output) != outputs.end();
    if (!payload.hasKey(key::kMode.name) || !known) {
        KEP_ERROR("INVALID_SOUNDOUTPUT", "Invalid SoundOutput for setting digital mode");
        return false;
    }
    return reapplyDigitalMode();
}

// --- Driver

bool kepTVAudio::setScmsSettings(JValue payload)
{
    const std::string copyright = payload[key::kCopyright.name].asString();
    KEP_DEBUG_AS(KEP_HERE.as("setAlsaDriverSettings"), "spdif security copyright value is %s",
                 copyright.c_str());
    return isValidCopyright(copyright) && setSpdifSecurity(copyright);
}

bool kepTVAudio::setOttAdecModeSettings(JValue payload)
{
    if (!payload.hasKey(key::kIsOttEnable.name) || !payload.hasKey(key::kIsAtmosLocking.name))
        return false;
    const bool ott = payload[key::kIsOttEnable.name].asBool();
    const bool lock = payload[key::kIsAtmosLocking.name].asBool();
    if (ott == mOttEnabled && lock == mAtmosLocked) {
        KEP_INFO_AS(KEP_HERE.as("setAlsaDriverSettings"),
                    "Not setting Adec Dolby OTTMode since OTTEnable values are same");
        return true;
    }
    if (!setOTTAdecMode(ott, lock))
        return false;
    mOttEnabled = ott;
    mAtmosLocked = lock;
    return true;
}

bool kepTVAudio::setExternalArcSettings(JValue payload)
{
    KEP_INFO("Set external arc settings");
    const std::string activation = payload[key::kArcActivation.name].asString();
    bool done = true; // a step that fails does not stop the next ones
    for (const key::ArcActivation& row : key::kArcActivations) // other texts switch nothing
        if (activation == row.name)
            done = setArcOnOff(row.arc, row.earc);
    std::string profile;
    if (payload[key::kArcProfile.name].asString(profile)) {
        const std::string before = std::exchange(mArcProfile, profile);
        if (before != profile)
            done = reapplyDigitalMode() && done;
        setAtmosEncodeForARCProfile(profile, activation);
    }
    if (payload[key::kEarcCapability.name].isArray()) {
        done = updateEarcCapability(payload[key::kEarcCapability.name]) && done;
        done =
            mPtrParserInstance->storeParameters(payload, mPtrParserInstance->mQualityParamsMap) &&
            done;
    }
    bool atmos = false;
    if (payload[key::kEarcAtmos.name].asBool(atmos))
        setAtmosEncodeForEARCProfile(atmos, activation);
    return done;
}

// --- Other categories

bool kepTVAudio::setOptionSettings(JValue payload)
{
    mPtrTVSoundEngine->setOptionCategorySettings(payload);
    return true;
}

bool kepTVAudio::acceptSettings(JValue)
{
    return true;
}

bool kepTVAudio::setOtherSettings(JValue payload)
{
    bool supported = false;
    if (!payload[key::kSupportBnoModel.name].asBool(supported))
        return false;
    setSupportBnoModel(supported);
    return reapplyDigitalMode();
}

bool kepTVAudio::setActivateWisa(JValue payload)
{
    bool activated = false;
    if (!payload[key::kActivateWisa.name].asBool(activated)) {
        KEP_ERROR("ERROR_LOG", "activateWisa key is not available");
        return false;
    }
    mWisaActivated = activated;
    return true;
}

// --- Sound engine

bool kepTVAudio::setEqualizerSettings(JValue payload)
{
    if (!payload.hasKey(key::kStatus.name)) {
        KEP_ERROR("INVALID_PARAMETER", "status value not present for audioEQ category");
        return false;
    }
    const std::string status = payload[key::kStatus.name].asString();
    if (status != "on" && status != "off") {
        KEP_ERROR("INVALID_PARAMETER", "Invalid status %s for setting setEqualizerStatus",
                  status.c_str());
        return false;
    }
    const bool amplifier = mPtrTVAmplifier->setEqualizerStatus(status);
    return mPtrTVSoundEngine->setEqualizerStatus(status) && amplifier;
}

bool kepTVAudio::setSoundEngineStatus(JValue payload)
{
    if (!payload.hasKey(key::kStatus.name)) {
        KEP_ERROR("INVALID_PARAMETER", "status value not present for soundEngine category");
        return false;
    }
    const std::string status = payload[key::kStatus.name].asString();
    if (status != "on" && status != "off") {
        KEP_ERROR("INVALID_PARAMETER", "Invalid status %s for setting soundEngineStatus",
                  status.c_str());
        return false;
    }
    return mPtrTVSoundEngine->setSoundEngineStatus(status);
}

bool kepTVAudio::setMagicSpaceSound(JValue payload)
{
    return mPtrTVSoundEngine->setMagicSpaceSound(payload);
}

bool kepTVAudio::setDolbyAtmosSettings(std::string category, JValue payload)
{
    const SettingsRow* row = findSettings(category);
    const bool known = row != nullptr && (row->handler == &kepTVAudio::setDolbyAtmosState ||
                                          row->handler == &kepTVAudio::setForcedDolbyAtmos);
    return known && (this->*row->handler)(payload);
}

bool kepTVAudio::setDolbyAtmosState(JValue payload)
{
    std::string state;
    return payload[key::kAtmosState.name].asString(state) &&
           mPtrTVSoundEngine->setDolbyAtmos(state);
}

bool kepTVAudio::setForcedDolbyAtmos(JValue payload)
{
    if (!payload.hasKey(key::kForcedDolbyAtmos.name))
        return false;
    bool forced = false;
    // sic: the key alone succeeds, with nothing done, unless it is a boolean; callers rely on it
    return !payload[key::kForcedDolbyAtmos.name].asBool(forced) ||
           mPtrTVSoundEngine->setForcedDolbyAtmos(forced);
}

// --- Amplifier

bool kepTVAudio::setAmplifierType(JValue payload)
{
    if (!mPtrTVAmplifier->updateAmplifierType(payload))
        return false;
    KEP_DEBUG_AS(KEP_HERE.as("setAmplifierSettings"), "successfully updated amplifier type");
    return true;
}

bool kepTVAudio::prepareResume(JValue)
{
    mIsPrepareResume = true;
    return mPtrTVAmplifier->setAmplifierResume();
}

bool kepTVAudio::prepareAmplifierSuspend(JValue)
{
    return mPtrTVAmplifier->setAmplifierSuspend();
}

bool kepTVAudio::setAmplifierState(JValue payload)
{
    return mPtrTVAmplifier->setAmplifierState(payload);
}

bool kepTVAudio::writeI2cDataToAmplifier(JValue payload)
{
    return mPtrTVAmplifier->writeI2cDataToAmplifier(payload);
}

// --- Delay

bool kepTVAudio::setAudioVideoSync(JValue payload)
{
    if (!payload.hasKey(key::kCorrectionValue.name)) {
        KEP_ERROR_AS(KEP_HERE.as("setDelaySettings"), "INVALID_PARAMETER",
                     "status value not present for audioVideoSync category"); // sic
        return false;
    }
    return mPtrTVDelay->setAudioVideoSync(
        payload[key::kCorrectionValue.name].asNumber<std::int32_t>());
}

bool kepTVAudio::setOffsetDelay(JValue payload)
{
    return mPtrTVDelay->setOffsetDelay(payload);
}

bool kepTVAudio::setPictureSettings(JValue payload)
{
    constexpr const char* kLevel = key::kMemcDelayLevel.name;
    KEP_INFO("Set picture settings for %s", payload.stringify().c_str());
    std::string level;
    if (!payload[kLevel].asString(level))
        return false;
    kepTvParser::Map& params = mPtrParserInstance->mQualityParamsMap;
    const std::optional<std::string> before = qualityParam(kLevel);
    if (level == before.value_or("")) {
        KEP_INFO("memcDelayLevelValue %s is same as previous MemcDelayLevelValue %s ", // sic
                 level.c_str(), before.value_or("").c_str());
        return true;
    }
    if (before) {
        mPtrParserInstance->set(params, kLevel, level);
    } else {
        JValue entry = JValue::object();
        static_cast<void>(entry.put(kLevel, level)); // refused by no object
        mPtrParserInstance->storeParameters(entry, params);
    }
    KEP_DEBUG("Updated memcDelayLevel Value received = %s", level.c_str());
    if (!mPtrTVDelay->updateDelayValues()) {
        KEP_ERROR("DELAY_MIDDLEWARE_ERROR", "Failed to update delay value to middleware");
        return false;
    }
    return true;
}

// --- All adapters at once

bool kepTVAudio::setQualityAttributeSettings(JValue payload)
{
    mPtrTVSoundEngine->setSoundEngineSettings(payload);
    mPtrTVAmplifier->setAmplifierSettings(payload);
    mPtrTVGain->setGainSettings(payload);
    mPtrTVDelay->setDelaySettings(payload);
    if (!payload.hasKey(key::kSoundOutputDigital.name) || payload.size() != 1)
        return true;
    const std::string mode = getSoundOutputDigitalMode();
    if (!setSoundOutputDigital(mode)) {
        KEP_ERROR("SET_SOUNDOUTPUT_DIGITAL_ERROR", "Failed to set soundOutputDigital as %s",
                  mode.c_str());
        return false;
    }
    return true;
}
