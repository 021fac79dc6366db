// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of settings: a request is one table row, and each starts from a backend
// that was told nothing yet.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adaptertest.h"
#include "tvbackendtest.h"

inline constexpr FileLog kDispatch{"keptvaudio", ""};
inline constexpr FileLog kSettings{"keptvaudiosettings", "INVALID_PARAMETER"};
inline constexpr FileLog kDigital{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
inline constexpr FileLog kHeadphone{"keptvaudio", "INVALID_PARAMETER"};
inline constexpr FileLog kVolume{"keptvaudio", "SUBCPU_ERROR"};
inline constexpr FileLog kControl{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
inline constexpr FileLog kParser{"keptvparser", ""};
inline constexpr FileLog kEngine{"keptvsoundengine", "SOUND_ENGINE_MWL_ERROR"};
inline constexpr FileLog kAmplifier{"keptvamplifier", "AMPLIFIER_MWL_ERROR"};
inline constexpr FileLog kDelay{"keptvdelay", "DELAY_MWL_ERROR"};
inline constexpr FileLog kGainLog{"keptvgain", "GAIN_MWL_ERROR"};

struct Category {
    const char* name;
    bool stores;
};
// clang-format off
inline constexpr Category kCategories[] = {
    {"modelConfig",             false},
    {"hardwareConfig",          false},
    {"contiConfig",             false},
    {"sound",                   false},
    {"groupCodeConfig",         false},
    {"zibConfig",               false},
    {"soundOutputMode",         true},
    {"forceOutput",             true},
    {"setMixer",                true},
    {"scms",                    false},
    {"ottAdecMode",             false},
    {"powerState",              true},
    {"external_arc",            true},
    {"audioEQ",                 true},
    {"soundEngine",             true},
    {"magicSpaceSound",         true},
    {"dolbyAtmos",              true},
    {"forcedDolbyAtmos",        true},
    {"amplifier",               true},
    {"prepareResume",           true},
    {"amplifierState",          true},
    {"prepareAmplifierSuspend", true},
    {"writeI2cDataToAmplifier", true},
    {"audioVideoSync",          true},
    {"offsetDelay",             true},
    {"option",                  true},
    {"picture",                 true},
    {"dimension",               true},
    {"smartSoundMode",          true},
    {"other",                   true},
    {"activateWisa",            false},
    {"powerStateMute",          false},
    {"headphoneDetectionMute",  false},
};
// clang-format on

inline bool stores(const std::string& category)
{
    return std::any_of(std::begin(kCategories), std::end(kCategories),
                       [&](const Category& row) { return category == row.name && row.stores; });
}

inline Lines all(std::initializer_list<Lines> parts)
{
    Lines whole;
    for (const Lines& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

// --- What several categories have in common

inline const char* const kOptic = "Sndout Spdif OutputType";
inline const char* const kEarc = "Sndout EARC Outputtype";
inline const Texts kPcmTold = {"Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1"};
inline const Texts kOpticRefused = {"Sndout Spdif OutputType 1 1 -> -5",
                                    "Sndout EARC Outputtype 2 1 0 0 1"};
inline const Texts kEarcRefused = {"Sndout Spdif OutputType 1 1",
                                   "Sndout EARC Outputtype 2 1 0 0 1 -> -5"};

/// The digital mode applied anew while no output is current.
inline Lines reapplied(const std::string& refused = "")
{
    Lines lines = {
        kDigital.info("getSoundOutputDigitalMode",
                      "Setting digital mode as pcm, since its not optical or arc"),
        kDigital.info("setSoundOutputDigital", "Request to set digital mode as pcm"),
        kDigital.info("getSoundOutputOpticMode", "Get SoundOutputMode for Optic digitalMode pcm "),
        kDigital.debug("getSoundOutputOpticMode", "Optic digital mode 1"),
        kDigital.info("getSoundOutputArcMode", "Get SoundOutputMode for ARC digitalMode pcm "),
        kDigital.debug("getSoundOutputArcMode", "Arc digital mode 1"),
    };
    if (refused == kOptic) {
        lines.push_back(refusedByDriver());
        lines.push_back(
            kDigital.error("setSoundOutputDigital",
                           "setSoundOutputDigital : Did not able to set the element: Sndout Spdif "
                           "OutputType with digitalMode as pcm"));
    }
    lines.push_back(kDigital.info("setEArcOutputType",
                                  "set codec type: 1 for earc output type and mixer value is 1"));
    if (refused == kEarc) {
        lines.push_back(refusedByDriver());
        lines.push_back(kDigital.error("setEArcOutputType",
                                       "Did not able to set the element: Sndout EARC Outputtype"));
    }
    return lines;
}

inline LogLine flattened(const std::string& key, const std::string& value)
{
    return kParser.debug("storeParameters", "store Parameters key: " + key + " value: " + value);
}

inline LogLine gainSettings(const std::string& payload)
{
    return kGainLog.debug("setGainSettings", "settingsKeyObject " + payload);
}

/// What the adapters say to a quality payload that is no object.
inline Lines notAnObject(const std::string& payload)
{
    return {
        kEngine.refusal("INVALID_PARAMETER", "setEqualizerStatus", "Invalid object"),
        kEngine.refusal("INVALID_PARAMETER", "setSoundEngineStatus", "Invalid object"),
        kAmplifier.refusal("INVALID_PARAMETER", "setAmplifierSettings", "Invalid object"),
        gainSettings(payload),
    };
}

inline LogLine configuring(const std::string& category)
{
    return kSettings.info("setSoundConfigSettings",
                          "Set config and settings for category " + category);
}

inline LogLine driving(const std::string& category)
{
    return kSettings.info("setAlsaDriverSettings", "Set driver settings for category " + category);
}

inline LogLine engine(const std::string& category)
{
    return kSettings.info("setSoundEngineSettings",
                          "Set sound engine settings for category " + category);
}

inline LogLine amplifying(const std::string& category, const std::string& payload)
{
    return kSettings.info("setAmplifierSettings", "Set amplifier settings for category " +
                                                      category + ", value = " + payload);
}

inline LogLine delaying(const std::string& category)
{
    return kSettings.info("setDelaySettings", "Set delay settings for category " + category);
}

inline LogLine other(const std::string& category)
{
    return kSettings.info("setOtherCategorySettings", "Set settings for category " + category);
}

inline LogLine picturing(const std::string& payload)
{
    return kSettings.info("setPictureSettings", "Set picture settings for " + payload);
}

inline const LogLine kDigitalSettings =
    kSettings.info("setSoundOutputDigitalSettings", "Set sound output digital settings");
inline const LogLine kOutputMode =
    kSettings.info("setSoundOutputModeSettings", "Set sound output mode settings");
inline const LogLine kInvalidSoundOutput =
    kSettings.refusal("INVALID_SOUNDOUTPUT", "setSoundOutputModeSettings",
                      "Invalid SoundOutput for setting digital mode");
inline const LogLine kForceOutput =
    kSettings.info("setforceOutputSettings", "Set force output settings");
inline const LogLine kMixer = kSettings.info("setMixerSettings", "Set mixer settings");
inline const LogLine kHardware = kSettings.info("setHwConfig", "Set hwardware config");
inline const LogLine kExternalArc =
    kSettings.info("setExternalArcSettings", "Set external arc settings");

inline LogLine country(const std::string& before, const std::string& now)
{
    return kSettings.debug(
        "setHwConfig", "Inside the hardwareConfig category countryTypeValueFromMap : " + before +
                           " and newcountryTypeValue : " + now + " ");
}

inline Lines copyright(const std::string& value)
{
    return {driving("scms"),
            kSettings.debug("setAlsaDriverSettings", "spdif security copyright value is " + value),
            kDigital.debug("isValidCopyright", "Copyright value received is " + value)};
}

inline Lines copyrightWritten(const std::string& value, const std::string& number)
{
    return {
        kDigital.info("setSpdifSecurity",
                      "setSpdifSecurity for scms api with copyright value as " + value),
        kDigital.debug("getSoundOutOpticCopyValue",
                       "getSoundOutOpticCopyValue for copyright: " + value),
        kDigital.debug("getSoundOutOpticCopyValue",
                       "getSoundOutOpticCopyValue - optic value is " + number),
        kDigital.debug("getSoundOutArcCopyValue", "Copyright value received : " + value),
        kDigital.debug("getSoundOutArcCopyValue",
                       "getSoundOutArcCopyValue - arc value is " + number),
    };
}

inline LogLine switchingArc(const std::string& arc, const std::string& earc)
{
    return kDigital.info("setArcOnOff", "Setting SoundOut on off for ARC status: " + arc +
                                            " & eARC status: " + earc);
}

inline LogLine atmosByProfile(const std::string& profile, const std::string& activation)
{
    return kDigital.info("setAtmosEncodeForARCProfile",
                         "setAtmosEncodeForARCProfile:: arcProfileValue is " + profile +
                             " and arcActivationStatus is " + activation);
}

inline LogLine atmosByEarc(const std::string& atmos, const std::string& activation)
{
    return kDigital.info("setAtmosEncodeForEARCProfile",
                         "setAtmosEncodeForEARCProfile:: eArcAtmosValue is " + atmos +
                             " and arcActivationStatus is " + activation);
}

inline LogLine encodingAtmos(const std::string& value)
{
    return kDigital.info("setAtmosEncode", "Setting Atmos Encode value is " + value);
}

/// The digital mode of eARC alone, while no output is current.
inline Lines earcReapplied(const std::string& refused = "")
{
    Lines lines = reapplied(refused);
    lines.erase(lines.begin() + 1, lines.begin() + 6);
    return lines;
}

inline LogLine qnState(const std::string& payload)
{
    return kHeadphone.debug("setQNSoundbarState",
                            "Set Qn Sound Bar status based on power state " + payload);
}

inline LogLine eqStatus(const std::string& status)
{
    return kAmplifier.info("setEqualizerStatus", "Setting Amplifier EQ equalizerStatus " + status);
}

inline LogLine audioEq(const std::string& status)
{
    return kEngine.info("setEqualizerStatus", "Setting Instart Audio EQ " + status);
}

inline const std::string kShortened = "settingsValue After removing an element=  ";

inline LogLine shortened(const std::string& value)
{
    return {kLogDebug, "", "keptvaudiosettings:storeSettings", kShortened + value};
}

inline LogLine remembered(const std::string& category, const std::string& element)
{
    return kSettings.debug("storeSettings",
                           "Category = " + category + " and the settingsValue = " + element);
}

// --- Requests

struct Request {
    std::string category;
    std::string payload;
    Lines lines = {}; // of the handler
    Texts told = {};
    unsigned int result = kDone;
    Texts refuse = {}; // elements and middleware operations
    KEP_AUDIO_SNDOUT_T current = KEP_AUDIO_NO_OUTPUT;
    std::map<std::string, std::string> params = {}; // that the settings filled earlier
};

/// All that can be seen of a request from outside, without the payload's own text.
struct Outcome {
    unsigned int result;
    Lines lines;
    Texts told;
    std::size_t stored;

    bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    stream << "result " << outcome.result << ", stored " << outcome.stored;
    for (const LogLine& line : outcome.lines)
        stream << "\n  " << line;
    for (const std::string& event : outcome.told)
        stream << "\n  " << event;
    return stream;
}

class SettingsTest : public TvRowsTest
{
protected:
    void restart()
    {
        TvRowsTest::restart();
        kepTVAmplifier::getInstance()->mIsBootup = false;
    }

    static void refuse(const std::string& what)
    {
        if (what.find('.') != std::string::npos)
            injectMiddleware(what, 7);
        else
            injectCard("write", kRefused, what);
    }

    unsigned int set(const std::string& category, const std::string& payload)
    {
        forget();
        return mBackend->setSettings(category, json(payload));
    }

    /// The settings list, an element a line.
    Texts stored()
    {
        Texts texts;
        for (const JValue& element : mBackend->mSettingsList)
            texts.push_back(element.stringify());
        return texts;
    }

    static std::string storedAs(const std::string& category, const std::string& payload)
    {
        return R"({"category":")" + category + R"(","value":)" + payload + "}";
    }

    void expect(const Request& request)
    {
        restart();
        mBackend->mCurrentSoundout = request.current;
        store().mQualityParamsMap = request.params;
        for (const std::string& what : request.refuse)
            refuse(what);
        const std::string what =
            request.category + " " + request.payload + testing::PrintToString(request.refuse);
        EXPECT_EQ(set(request.category, request.payload), request.result) << what;
        Lines lines = {kDispatch.info("setSettings", "category " + request.category +
                                                         " Payload received is " +
                                                         request.payload)};
        lines.insert(lines.end(), request.lines.begin(), request.lines.end());
        Texts list;
        if (request.result == kDone && stores(request.category)) {
            list.push_back(storedAs(request.category, request.payload));
            lines.push_back(kSettings.info("storeSettings",
                                           "Store settings key for category " + request.category));
            lines.push_back(remembered(request.category, list.front()));
        }
        EXPECT_EQ(logLines(), lines) << what;
        EXPECT_EQ(told(), request.told) << what;
        EXPECT_EQ(stored(), list) << what;
    }

    void expectAll(const std::vector<Request>& requests)
    {
        for (const Request& request : requests)
            expect(request);
    }

    Outcome outcome(const std::string& category, const JValue& payload,
                    const std::map<std::string, std::string>& params = {})
    {
        restart();
        store().mQualityParamsMap = params;
        Outcome seen{mBackend->setSettings(category, payload), logLines(), told(),
                     mBackend->mSettingsList.size()};
        const std::string text = payload.stringify();
        for (LogLine& line : seen.lines) {
            const std::size_t place = line.text.find(text);
            if (place != std::string::npos)
                line.text.replace(place, text.size(), "PAYLOAD");
        }
        return seen;
    }
};
