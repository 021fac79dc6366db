// SPDX-License-Identifier: Apache-2.0
// Queries: gain, a register and the state of the amplifier, and the settings as they were stored.
#include <algorithm>

#include "kepcaught.h"
#include "keplog.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "keptvgain.h"
#include "payloadkeys.h"

JValue kepTVAudio::getSettings(const std::string& category, JValue request)
try {
    requireStarted();
    KEP_INFO("get settings for category %s, settings:%s", category.c_str(),
             request.stringify().c_str());
    if (category == key::kGainValue.name) {
        const std::string type = request[key::kGainType.name].asString();
        const std::string output = request[key::kGainOutput.name].asString();
        KEP_DEBUG("Calling getGainAsInput with: type = %s, soundoutput = %s", type.c_str(),
                  output.c_str());
        JValue answer = JValue::object();
        answer.put("soundOutput", output);
        answer.put("gainValue", mPtrTVGain->getGainAsInput(type, output));
        KEP_DEBUG("currentSettings = %s", answer.stringify().c_str());
        return answer;
    }
    if (category == key::kReadRegister.name) {
        JValue answer = mPtrTVAmplifier->readI2cDataFromAmplifier(request);
        KEP_INFO("Data from audio amplifier is %s", answer.stringify().c_str());
        return answer;
    }
    if (mSettingsList.empty()) {
        KEP_DEBUG("settingsList is empty, Hence KEP returning jnull"); // sic
        return true; // sic: the value true, not null; callers rely on it
    }
    if (!category.empty())
        return getSettingsObject(category);

    KEP_DEBUG("Resquested for Complete Settings List"); // sic
    JValue answer = JValue::array();
    for (const JValue& stored : mSettingsList) {
        if (!stored.hasKey("category"))
            continue;
        static_cast<void>(answer.append(stored)); // storeSettings left room for it
        // sic: named after the dump of pipelines; whoever reads the log relies on it
        KEP_DEBUG_AS(KEP_HERE.as("printAudioVideoInfoTable"), "StreamInfo  Inside =  %s",
                     stored.stringify().c_str());
    }
    KEP_DEBUG("currentSettings =  %s", answer.stringify().c_str()); // sic
    return answer;
} catch (...) {
    return kepCaught(KEP_HERE, JValue{true});
}

JValue kepTVAudio::getSettingsObject(const std::string& category)
{
    if (category == key::kAmplifierState.name) {
        std::string type;
        std::vector<std::string> states;
        if (!mPtrTVAmplifier->getAmplifierState(type, states))
            return true; // sic: the value true, not an array; callers rely on it
        JValue list = JValue::array();
        for (const std::string& state : states)
            list.append(state);
        JValue answer = JValue::object();
        answer.put("amplifierType", type);
        static_cast<void>(answer.put("amplifierStates", list));
        KEP_DEBUG("Reply Back from getSettings = %s", answer.stringify().c_str());
        return answer;
    }
    KEP_DEBUG("Resquested for category = %s from Settings List", category.c_str()); // sic
    JValue answer = JValue::array();
    const auto stored =
        std::find_if(mSettingsList.begin(), mSettingsList.end(),
                     [&](const JValue& candidate) { return isOfCategory(candidate, category); });
    if (stored != mSettingsList.end()) {
        static_cast<void>(answer.append(*stored));
        KEP_DEBUG("Requested Category StreamInfo = %s", stored->stringify().c_str());
    }
    return answer;
}
