// SPDX-License-Identifier: Apache-2.0
// Updates of the pipeline store, audio reports, and the settings categories. A category's handler
// checks the payload and applies it; whether it is remembered is decided where it was dispatched.
#include <algorithm>
#include <iterator>
#include <utility>

#include "keplog.h"
#include "keptvaudio.h"

namespace
{

// Outputs whose digital mode can be set by name. Not all of them can be selected.
constexpr const char* kDigitalModeOutputs[] = {
    "external_arc", "external_optical", "SPDIF", "tv_external_speaker", "tv_speaker_optical_arc",
};

struct ArcActivation {
    const char* name;
    int arc;
    int earc;
};
constexpr ArcActivation kArcActivations[] = {
    {"ARC", 1, 0},
    {"eARC", 0, 1},
    {"None", 0, 0},
};

} // namespace

// --- Pipelines

bool kepTVAudio::updatePipelineInfo(JValue pipelineInfo)
{
    if (!pipelineInfo.hasKey("pipelineId")) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid pipelineInfo");
        return false;
    }
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    KEP_INFO("INFO_LOG", "updatePipelineInfo : pipelineId = %s", pipelineId.c_str());
    if (pipelineInfo.hasKey("sourceType") && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
    if (isNewPipelineId(pipelineId)) {
        KEP_INFO("INFO_LOG", "Calling storePipelineInfoParameters");
        storePipelineInfoParameters(pipelineInfo);
    } else {
        KEP_INFO("INFO_LOG", "Calling updateExistingPipelineInfo");
        updateExistingPipelineInfo(pipelineInfo);
    }
    return true;
}

void kepTVAudio::updateExistingPipelineInfo(JValue pipelineInfo)
{
    KEP_INFO("INFO_LOG", "updateExistingPipelineInfo to update existing pipelineInfo %s",
             pipelineInfo.stringify().c_str());
    KEP_INFO("INFO_LOG", "updateExistingPipelineInfo Vector of map values size %d",
             static_cast<int>(AudioVideoInfoMapVector.size()));
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    if (pipelineId.empty())
        return;
    for (AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        if (!hasPipelineId(pipeline, pipelineId))
            continue;
        KEP_INFO("INFO_LOG", "PipelineId is matching, so need to update the map pipelineId %s",
                 pipelineId.c_str());
        for (const auto& [key, value] : pipelineInfo.members())
            if (value.isString())
                pipeline[key] = value.asString();
        for (const auto& [key, value] : pipeline)
            KEP_INFO("INFO_LOG", "Updated exiting audio video info map and values are %s %s", // sic
                     key.c_str(), value.c_str());
    }
}

// --- Audio reports

bool kepTVAudio::setAudioInputInfo(JValue payload)
{
    KEP_INFO("INFO_LOG",
             "setAudioInputInfo is called to update category values of existing pipelineInfo");
    const JValue category = payload["categoryInfo"];
    if (!category.isObject()) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid CategoryInfo");
        return false;
    }
    const JValue pipelineInfo = payload["pipelineInfo"];
    const bool updated = pipelineInfo.isObject() && updateAudioCategoryInfo(pipelineInfo, category);
    const bool delay = mPtrTVDelay->registerAudioVideoInfo();
    if (delay)
        KEP_DEBUG("Successfully updated audio info to delay middleware");
    else
        KEP_ERROR("DELAY_MIDDLEWARE_ERROR", "Failed to register audio info to delay middleware");
    const bool gain = mPtrTVGain->registerAudioVideoInfo();
    if (gain)
        KEP_DEBUG("Successfully updated audio video info to gain middleware");
    const bool encoder = mPtrTVGain->registerAudioVideoInfoForEncoder();
    if (encoder)
        KEP_DEBUG("Successfully updated audio video info for encoder to gain middleware");
    else
        KEP_ERROR("GAIN_MIDDLEWARE_ERROR",
                  "Failed to register audio video info to gain middleware"); // sic
    mPtrTVSoundEngine->registerAudioVideoInfo();
    return encoder || gain || delay || updated;
}

AudioVideoInfo* kepTVAudio::findAudioPipeline(const JValue& pipelineInfo,
                                              const kepLogOrigin& origin)
{
    const std::string pipelineId = pipelineInfo["pipelineId"].asString();
    std::string resource;
    if (pipelineId.empty() || !pipelineInfo["resource"].asString(resource))
        return nullptr;
    for (AudioVideoInfo& pipeline : AudioVideoInfoMapVector) {
        if (!hasPipelineId(pipeline, pipelineId))
            continue;
        KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", "Resource ID values are %s", resource.c_str());
        const auto stored = pipeline.find("resource");
        if (stored == pipeline.end())
            KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", "resourceId not found in map");
        else if (stored->second == resource)
            return &pipeline;
    }
    return nullptr;
}

bool kepTVAudio::updateAudioCategoryInfo(JValue pipelineInfo, JValue categoryInfo)
{
    KEP_INFO("INFO_LOG",
             "updateAudioCategoryInfo to update category values %s of existing pipelineInfo %s",
             categoryInfo.stringify().c_str(), pipelineInfo.stringify().c_str());
    AudioVideoInfo* pipeline = findAudioPipeline(pipelineInfo);
    if (pipeline == nullptr)
        return false;
    for (const auto& [key, value] : categoryInfo.members())
        (*pipeline)[key] = value.isString() ? value.asString() : value.stringify();

    const JValue purposes = pipelineInfo["pipelinePurpose"];
    if (!purposes.isValid()) {
        useAsCurrentPipeline(*pipeline);
    } else if (purposes.isArray()) {
        for (const JValue& purpose : purposes.elements())
            applyPurpose(purpose.asString(), *pipeline);
    } else if (getActiveState()) {
        KEP_ERROR("INVALID_PARAMETER", "pipelinePurpose is not an Array Element");
        adoptPipeline(*pipeline);
    } else {
        KEP_INFO("INFO_LOG", "not update in map because activestate is false");
    }
    for (const auto& [key, value] : *pipeline)
        KEP_INFO("INFO_LOG", "AudioVideoInfoMap Values %s %s", key.c_str(), value.c_str());
    return true;
}

// --- Settings store

bool kepTVAudio::isOfCategory(const JValue& stored, const std::string& category)
{
    std::string name;
    return stored["category"].asString(name) && name == category;
}

void kepTVAudio::storeSettings(const std::string& category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Store settings key for category %s", category.c_str());
    // The caller keeps its own; what it did not give is null.
    JValue value = payload.isValid() ? payload.deepCopy() : JValue{};
    for (const char* key : {"returnValue", "subscribe"})
        if (value.remove(key))
            KEP_DEBUG("settingsValue After removing an element=  %s",
                      value.stringify().c_str()); // sic
    const auto stored =
        std::find_if(mSettingsList.begin(), mSettingsList.end(),
                     [&](const JValue& candidate) { return isOfCategory(candidate, category); });
    if (stored != mSettingsList.end()) {
        KEP_DEBUG("Found the Category change only Value Delete the same and add new one in Vector");
        mSettingsList.erase(stored);
    }
    JValue entry = JValue::object();
    entry.put("category", category);
    entry.put("value", value);
    mSettingsList.push_back(entry);
    KEP_DEBUG("Category = %s and the settingsValue = %s", category.c_str(),
              entry.stringify().c_str());
}

// --- Model, hardware and country

bool kepTVAudio::setSoundConfigSettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set config and settings for category %s", category.c_str());
    if (category == "hardwareConfig")
        return setHwConfig(payload);
    if (category == "contiConfig")
        mStartupConditions.contiConfigReceived = true;
    else if (category == "modelConfig")
        mStartupConditions.modelConfigReceived = true;
    else if (category != "sound")
        return false; // sic: the dispatcher knows two more
    return setSoundSettings(payload);
}

bool kepTVAudio::setSoundSettings(JValue payload)
{
    mPtrParserInstance->storeParameters(payload, mPtrParserInstance->mQualityParamsMap);
    launchStartup(KEP_HERE);
    return setQualityAttributeSettings(payload);
}

bool kepTVAudio::setHwConfig(JValue payload)
{
    KEP_INFO("INFO_LOG", "Set hwardware config"); // sic
    constexpr const char* kCountry = "tv.hw.countryType";
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

bool kepTVAudio::setSoundOutputDigitalSettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set sound output digital settings");
    if (category == "soundOutputMode")
        return setSoundOutputModeSettings(payload);
    if (category == "forceOutput")
        return setforceOutputSettings(payload);
    return category == "setMixer" && setMixerSettings(payload);
}

bool kepTVAudio::setforceOutputSettings(JValue payload)
{
    KEP_INFO("INFO_LOG", "Set force output settings");
    std::string forced;
    if (!payload["forceOutputDDPLUS"].asString(forced))
        return false;
    const bool before = std::exchange(mForcedDDPlus, forced == "true");
    return before == mForcedDDPlus || reapplyDigitalMode();
}

bool kepTVAudio::setMixerSettings(JValue payload)
{
    KEP_INFO("INFO_LOG", "Set mixer settings");
    bool mix = false;
    if (!payload["mix"].asBool(mix))
        return false;
    const bool before = std::exchange(mMixerFlag, mix);
    return before == mMixerFlag || reapplyDigitalMode();
}

bool kepTVAudio::setSoundOutputModeSettings(JValue payload)
{
    KEP_INFO("INFO_LOG", "Set sound output mode settings");
    const std::string output = payload["soundOutput"].asString();
    const bool known = std::find(std::begin(kDigitalModeOutputs), std::end(kDigitalModeOutputs),
                                 output) != std::end(kDigitalModeOutputs);
    if (!payload.hasKey("mode") || !known) {
        KEP_ERROR("INVALID_SOUNDOUTPUT", "Invalid SoundOutput for setting digital mode");
        return false;
    }
    return reapplyDigitalMode();
}

// --- Driver

bool kepTVAudio::setAlsaDriverSettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set driver settings for category %s", category.c_str());
    if (category == "external_arc")
        return setExternalArcSettings(payload);
    if (category == "scms") {
        const std::string copyright = payload["copyright"].asString();
        KEP_DEBUG("spdif security copyright value is %s", copyright.c_str());
        return isValidCopyright(copyright) && setSpdifSecurity(copyright);
    }
    if (category == "ottAdecMode") {
        if (!payload.hasKey("isOTTEnable") || !payload.hasKey("isATMOSLockingEnable"))
            return false;
        const bool ott = payload["isOTTEnable"].asBool();
        const bool lock = payload["isATMOSLockingEnable"].asBool();
        if (ott == mOttEnabled && lock == mAtmosLocked) {
            KEP_INFO("INFO_LOG", "Not setting Adec Dolby OTTMode since OTTEnable values are same");
            return true;
        }
        if (!setOTTAdecMode(ott, lock))
            return false;
        mOttEnabled = ott;
        mAtmosLocked = lock;
        return true;
    }
    return category == "powerState" && setQNSoundbarState(payload);
}

bool kepTVAudio::setExternalArcSettings(JValue payload)
{
    KEP_INFO("INFO_LOG", "Set external arc settings");
    const std::string activation = payload["arcActivation"].asString();
    bool done = true; // a step that fails does not stop the next ones
    for (const ArcActivation& row : kArcActivations)
        if (activation == row.name)
            done = setArcOnOff(row.arc, row.earc);
    std::string profile;
    if (payload["arcProfile"].asString(profile)) {
        const std::string before = std::exchange(mArcProfile, profile);
        if (before != profile)
            done = reapplyDigitalMode() && done;
        setAtmosEncodeForARCProfile(profile, activation);
    }
    if (payload["earcCapability"].isArray()) {
        done = updateEarcCapability(payload["earcCapability"]) && done;
        done =
            mPtrParserInstance->storeParameters(payload, mPtrParserInstance->mQualityParamsMap) &&
            done;
    }
    bool atmos = false;
    if (payload["earcATMOS"].asBool(atmos))
        setAtmosEncodeForEARCProfile(atmos, activation);
    return done;
}

// --- Other categories

bool kepTVAudio::setOtherCategorySettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set settings for category %s", category.c_str());
    if (category == "picture")
        return setPictureSettings(payload);
    if (category == "option") {
        mPtrTVSoundEngine->setOptionCategorySettings(payload);
        return true;
    }
    if (category == "dimension")
        return true;
    if (category == "smartSoundMode")
        return setSoundSettings(payload);
    return category == "other" && setOtherSettings(payload);
}

bool kepTVAudio::setOtherSettings(JValue payload)
{
    bool supported = false;
    if (!payload["supportBnoModel"].asBool(supported))
        return false;
    setSupportBnoModel(supported);
    return reapplyDigitalMode();
}

bool kepTVAudio::setActivateWisa(JValue payload)
{
    bool activated = false;
    if (!payload["activateWisa"].asBool(activated)) {
        KEP_ERROR("ERROR_LOG", "activateWisa key is not available");
        return false;
    }
    mWisaActivated = activated;
    return true;
}

// --- Sound engine

bool kepTVAudio::setSoundEngineSettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set sound engine settings for category %s", category.c_str());
    if (category == "audioEQ")
        return setEqualizerSettings(payload);
    if (category == "soundEngine")
        return setSoundEngineStatus(payload);
    if (category == "magicSpaceSound")
        return mPtrTVSoundEngine->setMagicSpaceSound(payload);
    return setDolbyAtmosSettings(category, payload);
}

bool kepTVAudio::setEqualizerSettings(JValue payload)
{
    if (!payload.hasKey("status")) {
        KEP_ERROR("INVALID_PARAMETER", "status value not present for audioEQ category");
        return false;
    }
    const std::string status = payload["status"].asString();
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
    if (!payload.hasKey("status")) {
        KEP_ERROR("INVALID_PARAMETER", "status value not present for soundEngine category");
        return false;
    }
    const std::string status = payload["status"].asString();
    if (status != "on" && status != "off") {
        KEP_ERROR("INVALID_PARAMETER", "Invalid status %s for setting soundEngineStatus",
                  status.c_str());
        return false;
    }
    return mPtrTVSoundEngine->setSoundEngineStatus(status);
}

bool kepTVAudio::setDolbyAtmosSettings(std::string category, JValue payload)
{
    if (category == "dolbyAtmos") {
        std::string state;
        return payload["atmosState"].asString(state) && mPtrTVSoundEngine->setDolbyAtmos(state);
    }
    if (category != "forcedDolbyAtmos" || !payload.hasKey("forcedDolbyAtmos"))
        return false;
    bool forced = false;
    // sic: the key alone counts as success
    return !payload["forcedDolbyAtmos"].asBool(forced) ||
           mPtrTVSoundEngine->setForcedDolbyAtmos(forced);
}

// --- Amplifier

bool kepTVAudio::setAmplifierSettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set amplifier settings for category %s, value = %s", category.c_str(),
             payload.stringify().c_str());
    if (category == "amplifier") {
        if (!mPtrTVAmplifier->updateAmplifierType(payload))
            return false;
        KEP_DEBUG("successfully updated amplifier type");
        return true;
    }
    if (category == "prepareResume") {
        mIsPrepareResume = true;
        return mPtrTVAmplifier->setAmplifierResume();
    }
    if (category == "amplifierState")
        return mPtrTVAmplifier->setAmplifierState(payload);
    if (category == "writeI2cDataToAmplifier")
        return mPtrTVAmplifier->writeI2cDataToAmplifier(payload);
    return category == "prepareAmplifierSuspend" && mPtrTVAmplifier->setAmplifierSuspend();
}

// --- Delay

bool kepTVAudio::setDelaySettings(std::string category, JValue payload)
{
    KEP_INFO("INFO_LOG", "Set delay settings for category %s", category.c_str());
    if (category == "offsetDelay")
        return mPtrTVDelay->setOffsetDelay(payload);
    if (category != "audioVideoSync")
        return false;
    if (!payload.hasKey("correctionValue")) {
        KEP_ERROR("INVALID_PARAMETER",
                  "status value not present for audioVideoSync category"); // sic
        return false;
    }
    return mPtrTVDelay->setAudioVideoSync(payload["correctionValue"].asNumber<std::int32_t>());
}

bool kepTVAudio::setPictureSettings(JValue payload)
{
    constexpr const char* kLevel = "memcDelayLevel";
    KEP_INFO("INFO_LOG", "Set picture settings for %s", payload.stringify().c_str());
    std::string level;
    if (!payload[kLevel].asString(level))
        return false;
    kepTvParser::Map& params = mPtrParserInstance->mQualityParamsMap;
    const std::optional<std::string> before = qualityParam(kLevel);
    if (level == before.value_or("")) {
        KEP_INFO("INFO_LOG",
                 "memcDelayLevelValue %s is same as previous MemcDelayLevelValue %s ", // sic
                 level.c_str(), before.value_or("").c_str());
        return true;
    }
    if (before) {
        mPtrParserInstance->withMap(params, [&](kepTvParser::Map& map) { map[kLevel] = level; });
    } else {
        JValue entry = JValue::object();
        entry.put(kLevel, level);
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
    if (!payload.hasKey("soundOutputDigital") || payload.size() != 1)
        return true;
    const std::string mode = getSoundOutputDigitalMode();
    if (!setSoundOutputDigital(mode)) {
        KEP_ERROR("SET_SOUNDOUTPUT_DIGITAL_ERROR", "Failed to set soundOutputDigital as %s",
                  mode.c_str());
        return false;
    }
    return true;
}
