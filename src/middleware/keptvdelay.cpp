// SPDX-License-Identifier: Apache-2.0
// The adapter of the delay middleware. A setting that is absent leaves its field of the user's list
// as it was; the list is always sent whole.
#include "keptvdelay.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

#include "kepmiddleware.h"
#include "payloadkeys.h"

using mwl_delay::MWLDelay;

namespace
{

constexpr const char* kErrorId = "DELAY_MWL_ERROR";

struct UserSwitch {
    const char* key;
    std::uint8_t MWL_DELAY_USER_PARAM_LIST_T::*field;
};
constexpr UserSwitch kUserSwitches[] = {
    {"avSync", &MWL_DELAY_USER_PARAM_LIST_T::avSync},
    {"avSyncBypassInput", &MWL_DELAY_USER_PARAM_LIST_T::avSyncBypassInput},
};

struct UserDelay {
    const char* key;
    std::int32_t MWL_DELAY_USER_PARAM_LIST_T::*field;
};
constexpr UserDelay kUserDelays[] = {
    {"avSyncBtSurround", &MWL_DELAY_USER_PARAM_LIST_T::avSyncBtSurround},
    {"avSyncSpeaker", &MWL_DELAY_USER_PARAM_LIST_T::avSyncSpeaker},
    {"avSyncSpdif", &MWL_DELAY_USER_PARAM_LIST_T::avSyncSpdif},
    {"avSyncWisa", &MWL_DELAY_USER_PARAM_LIST_T::avSyncWisa},
};

// Settings of the sound engine that change the delays.
constexpr const char* kUpdatingKeys[] = {"supportATMOS", "soundMode", "virtualSurround"};

constexpr auto kQualityKeys = [] {
    std::array<kepKey, std::size(kUserSwitches) + std::size(kUserDelays) + std::size(kUpdatingKeys)>
        keys{};
    auto* next = keys.data();
    for (const UserSwitch& row : kUserSwitches)
        *next++ = {row.key, KEP_VALUE_STRING,
                   false,   listOf(key::kOn),
                   false,   "switch of the user's delays; any other text switches it off"};
    for (const UserDelay& row : kUserDelays)
        *next++ = {row.key, KEP_VALUE_NUMBER, false, {}, false, "delay that the user chose"};
    for (const char* name : kUpdatingKeys)
        *next++ = {name, KEP_VALUE_ANY, false, {}, false, "updates the delays"};
    return keys;
}();

bool touchesUserList(const JValue& settings)
{
    const auto present = [&](const auto& row) { return settings.hasKey(row.key); };
    return std::any_of(std::begin(kUserSwitches), std::end(kUserSwitches), present) ||
           std::any_of(std::begin(kUserDelays), std::end(kUserDelays), present);
}

} // namespace

kepList<kepKey> kepTVDelay::qualityKeys()
{
    return listOf(kQualityKeys);
}

kepTVDelay* kepTVDelay::getInstance()
{
    static kepTVDelay instance;
    return &instance;
}

bool kepTVDelay::initDelay()
{
    if (mPtrDelayInstance == nullptr)
        mPtrDelayInstance = MWLDelay::getInstance();
    KEP_INFO("mPtrDelayInstance is Initialised");
    return true;
}

bool kepTVDelay::initDelayAttributes()
{
    KEP_INFO("Parsing delay values from xml");
    const bool registered = KEP_SUCCEEDED(registerParams<&MWLDelay::registerQualityParams>(
                                              mPtrDelayInstance, &kepTvParser::mQualityParamsMap),
                                          kErrorId, "Failed to register quality parameters");
    return KEP_SUCCEEDED(mPtrDelayInstance->setDelayInitialize(), kErrorId,
                         "Failed to initilize delay middleware API") && // sic
           registered;
}

bool kepTVDelay::updateDelayValues()
{
    KEP_INFO("calling setDelayUpdate");
    return KEP_SUCCEEDED(mPtrDelayInstance->setDelayUpdate(), kErrorId,
                         "Failed to update delay values");
}

bool kepTVDelay::registerAudioVideoInfo()
{
    KEP_INFO("calling registerAvParams");
    return KEP_SUCCEEDED(registerParams<&MWLDelay::registerAvParams>(mPtrDelayInstance,
                                                                     &kepTvParser::mAvParamsMap),
                         kErrorId, "Failed to register audio video parameters") &&
           updateDelayValues();
}

bool kepTVDelay::setAudioVideoSync(int value)
{
    KEP_INFO("Request to set AudioVideoSync value as %d", value);
    return KEP_SUCCEEDED(mPtrDelayInstance->setFactoryDelay(value), kErrorId,
                         "Failed to set AudioVideoSync value as %d", value);
}

bool kepTVDelay::setOffsetDelay(JValue settings)
{
    KEP_INFO("Request to set offset delay");
    if (!settings.hasKey(key::kOffsetValue.name) || !settings.hasKey(key::kOperationType.name))
        return false;
    const auto value = settings[key::kOffsetValue.name].asNumber<std::int32_t>();
    const std::string type = settings[key::kOperationType.name].asString();
    if (!KEP_SUCCEEDED(mPtrDelayInstance->setOffSetDelay(value, type), kErrorId,
                       "Failed to set offset delay value %d for %s", value, type.c_str()))
        return false;
    KEP_DEBUG("set offset delay value %d for %s", value, type.c_str());
    return true;
}

void kepTVDelay::updateUserDelayValues(JValue settings)
{
    for (const UserDelay& row : kUserDelays)
        if (settings.hasKey(row.key))
            mUserDelays.*row.field = settings[row.key].asNumber<std::int32_t>();
    const bool updates = std::any_of(std::begin(kUpdatingKeys), std::end(kUpdatingKeys),
                                     [&](const char* key) { return settings.hasKey(key); });
    if (updates && updateDelayValues())
        KEP_INFO("delay values updated successfully");
}

void kepTVDelay::setDelaySettings(JValue settings)
{
    for (const UserSwitch& row : kUserSwitches)
        if (settings.hasKey(row.key))
            mUserDelays.*row.field = settings[row.key].asString() == "on" ? 1 : 0;
    updateUserDelayValues(settings);
    if (!touchesUserList(settings))
        return;
    if (KEP_SUCCEEDED(mPtrDelayInstance->setUserDelay(&mUserDelays), kErrorId,
                      "Failed to call setUserDelay API"))
        KEP_DEBUG("Called setUserDelay successfully");
}
