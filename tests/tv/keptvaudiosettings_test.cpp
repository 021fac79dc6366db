// SPDX-License-Identifier: Apache-2.0
// Settings: every category down to the log, what a value of a wrong type is taken for, and what is
// remembered. A request is one table row; each starts from a backend that was told nothing yet.
#include <algorithm>
#include <cerrno>
#include <functional>
#include <initializer_list>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "kepclient.h"
#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr FileLog kDispatch{"keptvaudio", ""};
constexpr FileLog kSettings{"keptvaudiosettings", "INVALID_PARAMETER"};
constexpr FileLog kDigital{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
constexpr FileLog kHeadphone{"keptvaudio", "INVALID_PARAMETER"};
constexpr FileLog kVolume{"keptvaudio", "SUBCPU_ERROR"};
constexpr FileLog kControl{"keptvaudio", "CONTROL_ELEMENT_SET_ERROR"};
constexpr FileLog kParser{"keptvparser", ""};
constexpr FileLog kEngine{"keptvsoundengine", "SOUND_ENGINE_MWL_ERROR"};
constexpr FileLog kAmplifier{"keptvamplifier", "AMPLIFIER_MWL_ERROR"};
constexpr FileLog kDelay{"keptvdelay", "DELAY_MWL_ERROR"};
constexpr FileLog kGain{"keptvgain", "GAIN_MWL_ERROR"};

struct Category {
    const char* name;
    bool stores;
};
// clang-format off
constexpr Category kCategories[] = {
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

bool stores(const std::string& category)
{
    return std::any_of(std::begin(kCategories), std::end(kCategories),
                       [&](const Category& row) { return category == row.name && row.stores; });
}

Lines all(std::initializer_list<Lines> parts)
{
    Lines whole;
    for (const Lines& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

// --- What several categories have in common

const char* const kOptic = "Sndout Spdif OutputType";
const char* const kEarc = "Sndout EARC Outputtype";
const Texts kPcmTold = {"Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1"};
const Texts kOpticRefused = {"Sndout Spdif OutputType 1 1 -> -5",
                             "Sndout EARC Outputtype 2 1 0 0 1"};
const Texts kEarcRefused = {"Sndout Spdif OutputType 1 1",
                            "Sndout EARC Outputtype 2 1 0 0 1 -> -5"};

/// The digital mode applied anew while no output is current.
Lines reapplied(const std::string& refused = "")
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

LogLine flattened(const std::string& key, const std::string& value)
{
    return kParser.debug("storeParameters", "store Parameters key: " + key + " value: " + value);
}

LogLine gainSettings(const std::string& payload)
{
    return kGain.debug("setGainSettings", "settingsKeyObject " + payload);
}

/// What the adapters say to a quality payload that is no object.
Lines notAnObject(const std::string& payload)
{
    return {
        kEngine.refusal("INVALID_PARAMETER", "setEqualizerStatus", "Invalid object"),
        kEngine.refusal("INVALID_PARAMETER", "setSoundEngineStatus", "Invalid object"),
        kAmplifier.refusal("INVALID_PARAMETER", "setAmplifierSettings", "Invalid object"),
        gainSettings(payload),
    };
}

LogLine configuring(const std::string& category)
{
    return kSettings.info("setSoundConfigSettings",
                          "Set config and settings for category " + category);
}

LogLine driving(const std::string& category)
{
    return kSettings.info("setAlsaDriverSettings", "Set driver settings for category " + category);
}

LogLine engine(const std::string& category)
{
    return kSettings.info("setSoundEngineSettings",
                          "Set sound engine settings for category " + category);
}

LogLine amplifying(const std::string& category, const std::string& payload)
{
    return kSettings.info("setAmplifierSettings", "Set amplifier settings for category " +
                                                      category + ", value = " + payload);
}

LogLine delaying(const std::string& category)
{
    return kSettings.info("setDelaySettings", "Set delay settings for category " + category);
}

LogLine other(const std::string& category)
{
    return kSettings.info("setOtherCategorySettings", "Set settings for category " + category);
}

LogLine picturing(const std::string& payload)
{
    return kSettings.info("setPictureSettings", "Set picture settings for " + payload);
}

const LogLine kDigitalSettings =
    kSettings.info("setSoundOutputDigitalSettings", "Set sound output digital settings");
const LogLine kOutputMode =
    kSettings.info("setSoundOutputModeSettings", "Set sound output mode settings");
const LogLine kInvalidSoundOutput =
    kSettings.refusal("INVALID_SOUNDOUTPUT", "setSoundOutputModeSettings",
                      "Invalid SoundOutput for setting digital mode");
const LogLine kForceOutput = kSettings.info("setforceOutputSettings", "Set force output settings");
const LogLine kMixer = kSettings.info("setMixerSettings", "Set mixer settings");
const LogLine kHardware = kSettings.info("setHwConfig", "Set hwardware config");
const LogLine kExternalArc = kSettings.info("setExternalArcSettings", "Set external arc settings");

LogLine country(const std::string& before, const std::string& now)
{
    return kSettings.debug(
        "setHwConfig", "Inside the hardwareConfig category countryTypeValueFromMap : " + before +
                           " and newcountryTypeValue : " + now + " ");
}

Lines copyright(const std::string& value)
{
    return {driving("scms"),
            kSettings.debug("setAlsaDriverSettings", "spdif security copyright value is " + value),
            kDigital.debug("isValidCopyright", "Copyright value received is " + value)};
}

Lines copyrightWritten(const std::string& value, const std::string& number)
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

LogLine switchingArc(const std::string& arc, const std::string& earc)
{
    return kDigital.info("setArcOnOff", "Setting SoundOut on off for ARC status: " + arc +
                                            " & eARC status: " + earc);
}

LogLine atmosByProfile(const std::string& profile, const std::string& activation)
{
    return kDigital.info("setAtmosEncodeForARCProfile",
                         "setAtmosEncodeForARCProfile:: arcProfileValue is " + profile +
                             " and arcActivationStatus is " + activation);
}

LogLine atmosByEarc(const std::string& atmos, const std::string& activation)
{
    return kDigital.info("setAtmosEncodeForEARCProfile",
                         "setAtmosEncodeForEARCProfile:: eArcAtmosValue is " + atmos +
                             " and arcActivationStatus is " + activation);
}

LogLine encodingAtmos(const std::string& value)
{
    return kDigital.info("setAtmosEncode", "Setting Atmos Encode value is " + value);
}

/// The digital mode of eARC alone, while no output is current.
Lines earcReapplied(const std::string& refused = "")
{
    Lines lines = reapplied(refused);
    lines.erase(lines.begin() + 1, lines.begin() + 6);
    return lines;
}

LogLine qnState(const std::string& payload)
{
    return kHeadphone.debug("setQNSoundbarState",
                            "Set Qn Sound Bar status based on power state " + payload);
}

LogLine eqStatus(const std::string& status)
{
    return kAmplifier.info("setEqualizerStatus", "Setting Amplifier EQ equalizerStatus " + status);
}

LogLine audioEq(const std::string& status)
{
    return kEngine.info("setEqualizerStatus", "Setting Instart Audio EQ " + status);
}

const std::string kShortened = "settingsValue After removing an element=  ";

LogLine shortened(const std::string& value)
{
    return {kLogDebug, "", "keptvaudiosettings:storeSettings", kShortened + value};
}

LogLine remembered(const std::string& category, const std::string& element)
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

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
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

// --- Dispatch

TEST_F(SettingsTest, AnUnknownCategoryIsRefusedWithTheEntryLineAlone)
{
    for (const char* category :
         {"", "Sound", "sound ", "audioeq", "gainValue", "getAmplifierState", "external-arc"})
        expect({category, R"({"status":"on"})", {}, {}, kFailed});
}

TEST_F(SettingsTest, EachHandlerRefusesTheCategoriesOfTheOthers)
{
    using Handler = bool (kepTVAudio::*)(std::string, JValue);
    const std::map<std::string, Handler> handlers = {
        {"Config", &kepTVAudio::setSoundConfigSettings},
        {"Digital", &kepTVAudio::setSoundOutputDigitalSettings},
        {"Driver", &kepTVAudio::setAlsaDriverSettings},
        {"Engine", &kepTVAudio::setSoundEngineSettings},
        {"Atmos", &kepTVAudio::setDolbyAtmosSettings},
        {"Amplifier", &kepTVAudio::setAmplifierSettings},
        {"Delay", &kepTVAudio::setDelaySettings},
        {"Other", &kepTVAudio::setOtherCategorySettings},
    };
    const JValue everything = json(
        R"({"mode":"pcm","soundOutput":"SPDIF","status":"on","correctionValue":1,"mix":true})");
    kepTVAudio& backend = *mBackend;
    for (const auto& [name, handler] : handlers) {
        forget();
        EXPECT_FALSE((backend.*handler)("activateWisa", everything)) << name;
        EXPECT_THAT(told(), IsEmpty()) << name;
    }
}

TEST_F(SettingsTest, AHandlerCalledByItselfRemembersWhatItApplied)
{
    EXPECT_TRUE(mBackend->setDelaySettings("audioVideoSync", json(R"({"correctionValue":5})")));
    EXPECT_TRUE(mBackend->setOtherCategorySettings("dimension", json("{}")));
    EXPECT_TRUE(mBackend->setAlsaDriverSettings("scms", json(R"({"copyright":"once"})")));
    EXPECT_FALSE(mBackend->setDelaySettings("audioVideoSync", json("{}")));
    EXPECT_FALSE(mBackend->setDelaySettings("dimension", json("{}")));
    EXPECT_THAT(mBackend->mSettingsList,
                ElementsAre(json(R"({"category":"audioVideoSync","value":{"correctionValue":5}})"),
                            json(R"({"category":"dimension","value":{}})")));
}

TEST_F(SettingsTest, AHandlerNamesTheForeignCategoryThatItRefuses)
{
    EXPECT_FALSE(mBackend->setDelaySettings("option", json(R"({"storeMode":"home"})")));
    EXPECT_FALSE(mBackend->setDelaySettings("nobody's", json("{}")));
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(logLines(), (Lines{info("keptvaudiosettings:setDelaySettings",
                                      "Set delay settings for category option"),
                                 info("keptvaudiosettings:setDelaySettings",
                                      "Set delay settings for category nobody's")}));
}

// --- Model, hardware and country

TEST_F(SettingsTest, ConfigurationGoesToTheStoreThenToTheFourAdapters)
{
    const std::string payload =
        R"({"equalizerStatus":"on","audioDescriptionVolume":5,"avSync":"on"})";
    const std::string delays =
        R"({"avSync":1,"avSyncBypassInput":0,"avSyncSpeaker":0,"avSyncSpdif":0,"avSyncWisa":0,)"
        R"("avSyncBtSurround":0})";
    const Lines flattening = {flattened("equalizerStatus", R"("on")"),
                              flattened("audioDescriptionVolume", "5"),
                              flattened("avSync", R"("on")")};
    const Lines applied = {
        audioEq("on"),
        kEngine.debug("setEqualizerStatus",
                      "set equalizerStatus for soundengine middleware successfully as on"),
        eqStatus("on"),
        kAmplifier.debug("setAmplifierSettings",
                         "set equalizerStatus for amplifier middleware successfully as on"),
        gainSettings(payload),
        kGain.debug("setGainSettings", "Set audioDescriptionVolume as 5"),
        kDelay.debug("setDelaySettings", "Called setUserDelay successfully"),
    };
    const Lines refused = {
        audioEq("on"),
        kEngine.error("setEqualizerStatus", "Failed to set audio equalizer as on"),
        eqStatus("on"),
        kAmplifier.error("setEqualizerStatus", "Failed to set amplifier equalizer as on"),
        gainSettings(payload),
        kGain.debug("setGainSettings", "Set audioDescriptionVolume as 5"),
        kGain.error("setGainSettings", "Failed to set audioDescriptionVolume 5"),
        kDelay.error("setDelaySettings", "Failed to call setUserDelay API"),
    };
    const Texts calls = {"soundengine.setInstartAudioEQ true", "amplifier.setAmpEQ true",
                         "gain.setAudioDescriptionVolume 5", "delay.setUserDelay " + delays};
    Texts refusedCalls;
    for (const std::string& call : calls)
        refusedCalls.push_back(call + " -> 7");
    for (const char* category : {"modelConfig", "contiConfig", "sound", "smartSoundMode"}) {
        const bool smart = std::string{category} == "smartSoundMode";
        const Lines start = {smart ? other(category) : configuring(category)};
        expect({category, payload, all({start, flattening, applied}), calls});
        EXPECT_THAT(store().mQualityParamsMap,
                    UnorderedElementsAre(Pair("equalizerStatus", "on"),
                                         Pair("audioDescriptionVolume", "5"), Pair("avSync", "on")))
            << category;
        expect({category,
                payload,
                all({start, flattening, refused}),
                refusedCalls,
                kDone,
                {"soundengine.setInstartAudioEQ", "amplifier.setAmpEQ",
                 "gain.setAudioDescriptionVolume", "delay.setUserDelay"}});
        expect({category, "{}", all({start, {gainSettings("{}")}})});
        for (const char* nothing : {"[]", R"(["equalizerStatus"])", R"("on")", "null", "5", "true"})
            expect({category, nothing, all({start, notAnObject(nothing)})});
    }
}

TEST_F(SettingsTest, TheDigitalModeIsReappliedForSoundOutputDigitalAlone)
{
    for (const char* value : {R"("x")", "true", "null", "[]"}) {
        const std::string alone = member("soundOutputDigital", value);
        expect({"sound", alone,
                all({{configuring("sound"), flattened("soundOutputDigital", value),
                      gainSettings(alone)},
                     reapplied()}),
                kPcmTold});
    }
    const std::string two = R"({"soundOutputDigital":"x","soundMode":"y"})";
    expect({"sound",
            two,
            {configuring("sound"), flattened("soundOutputDigital", R"("x")"),
             flattened("soundMode", R"("y")"),
             kEngine.debug("setSoundModeSettings", "set setSoundMode successfully as y"),
             gainSettings(two), kDelay.info("updateDelayValues", "calling setDelayUpdate"),
             kDelay.info("updateUserDelayValues", "delay values updated successfully")},
            {R"(soundengine.setSoundMode "y")", "delay.setDelayUpdate"}});
    const std::string oneOther = R"({"eq":"x"})";
    expect({"sound",
            oneOther,
            {configuring("sound"), flattened("eq", R"("x")"), gainSettings(oneOther)}});

    const std::string alone = R"({"soundOutputDigital":"x"})";
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}})
        expect(
            {"sound",
             alone,
             all({{configuring("sound"), flattened("soundOutputDigital", R"("x")"),
                   gainSettings(alone)},
                  reapplied(element),
                  {kSettings.refusal("SET_SOUNDOUTPUT_DIGITAL_ERROR", "setQualityAttributeSettings",
                                     "Failed to set soundOutputDigital as pcm")}}),
             told,
             kFailed,
             {element}});
}

TEST_F(SettingsTest, TheNewModeIsInTheStoreWhenItIsApplied)
{
    mBackend->mCurrentSoundout = KEP_AUDIO_SPDIF;
    store().mQualityParamsMap["soundOutputDigital"] = "pcm";
    EXPECT_EQ(set("sound", R"({"soundOutputDigital":"auto"})"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Spdif OutputType 2 2", "Sndout EARC Outputtype 2 1 0 0 1"));
}

TEST_F(SettingsTest, TwoCategoriesAreRoutedToAHandlerThatRefusesThem)
{
    for (const char* category : {"groupCodeConfig", "zibConfig"}) {
        for (const char* payload : {R"({"tv.zib.tvBroadcastSystem":"DVB"})", "{}", "[]", "null"}) {
            expect({category, payload, {configuring(category)}, {}, kFailed});
            EXPECT_THAT(store().mQualityParamsMap, IsEmpty());
        }
    }
}

TEST_F(SettingsTest, ACountryReappliesTheDigitalModeOnlyWhenItIsNew)
{
    const std::string payload = R"({"tv.hw.countryType":"JP","tv.hw.soc":5})";
    const Lines start = {configuring("hardwareConfig"), kHardware,
                         flattened("tv.hw.countryType", R"("JP")"), flattened("tv.hw.soc", "5")};
    expect({"hardwareConfig", payload, all({start, {country("", "JP")}, reapplied()}), kPcmTold});
    EXPECT_THAT(store().mQualityParamsMap,
                UnorderedElementsAre(Pair("tv.hw.countryType", "JP"), Pair("tv.hw.soc", "5")));
    expect({"hardwareConfig",
            payload,
            all({start, {country("EU", "JP")}, reapplied()}),
            kPcmTold,
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"tv.hw.countryType", "EU"}}});
    expect({"hardwareConfig",
            payload,
            all({start, {country("JP", "JP")}}),
            {},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"tv.hw.countryType", "JP"}}});
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}})
        expect({"hardwareConfig",
                payload,
                all({start,
                     {country("", "JP")},
                     reapplied(element),
                     {kSettings.refusal("SET_SOUNDOUTPUT_DIGITAL_ERROR", "setHwConfig",
                                        "failed to set SoundOutput Digital pcm")}}),
                told,
                kDone,
                {element}});
    expect({"hardwareConfig",
            R"({"tv.hw.soc":5})",
            {configuring("hardwareConfig"), kHardware, flattened("tv.hw.soc", "5")}});
    expect({"hardwareConfig", "{}", {configuring("hardwareConfig"), kHardware}});
    for (const char* nothing : {"[]", R"("JP")", "null", "5", "true"})
        expect(
            {"hardwareConfig", nothing, {configuring("hardwareConfig"), kHardware}, {}, kFailed});
}

TEST_F(SettingsTest, ACountryThatIsNoTextIsAnEmptyOne)
{
    for (const char* value : {"null", "true", "5", "[1]", R"({"a":1})"}) {
        const Lines start = {configuring("hardwareConfig"), kHardware,
                             flattened("tv.hw.countryType", value)};
        const std::string payload = member("tv.hw.countryType", value);
        expect({"hardwareConfig", payload, all({start, {country("", "")}})});
        EXPECT_EQ(store().mQualityParamsMap["tv.hw.countryType"], value);
        expect({"hardwareConfig",
                payload,
                all({start, {country("JP", "")}, reapplied()}),
                kPcmTold,
                kDone,
                {},
                KEP_AUDIO_NO_OUTPUT,
                {{"tv.hw.countryType", "JP"}}});
    }
}

// --- Start-up conditions

struct Conditions {
    bool conti;
    bool hardware;
    bool model;

    bool operator==(const Conditions&) const = default;
};

class StartupConditions : public SettingsTest
{
protected:
    Conditions conditions()
    {
        const auto& held = mBackend->mStartupConditions;
        return {held.contiConfigReceived, held.hardwareConfigApplied, held.modelConfigReceived};
    }
    void hold(const Conditions& wanted)
    {
        mBackend->mStartupConditions.contiConfigReceived = wanted.conti;
        mBackend->mStartupConditions.hardwareConfigApplied = wanted.hardware;
        mBackend->mStartupConditions.modelConfigReceived = wanted.model;
    }
};

TEST_F(StartupConditions, EachConfigurationSetsItsOwn)
{
    const std::vector<std::pair<const char*, Conditions>> rows = {
        {"contiConfig", {true, false, false}},      {"hardwareConfig", {false, true, false}},
        {"modelConfig", {false, false, true}},      {"sound", {false, false, false}},
        {"groupCodeConfig", {false, false, false}}, {"zibConfig", {false, false, false}},
        {"smartSoundMode", {false, false, false}},
    };
    for (const auto& [category, expected] : rows) {
        restart();
        set(category, "{}");
        EXPECT_TRUE(conditions() == expected) << category;
    }
}

TEST_F(StartupConditions, ModelAndContiCountEvenWhenTheirPayloadCouldNotBeApplied)
{
    for (const char* category : {"contiConfig", "modelConfig"}) {
        restart();
        refuse(kOptic);
        EXPECT_EQ(set(category, R"({"soundOutputDigital":"x"})"), kFailed);
        EXPECT_TRUE(conditions().conti || conditions().model) << category;
        restart();
        EXPECT_EQ(set(category, "[]"), kDone);
        EXPECT_TRUE(conditions().conti || conditions().model) << category;
    }
}

TEST_F(StartupConditions, HardwareRecordsItsResultInEveryCase)
{
    hold({false, true, false});
    EXPECT_EQ(set("hardwareConfig", "[]"), kFailed);
    EXPECT_FALSE(conditions().hardware);
    for (const char* payload : {"{}", R"({"tv.hw.countryType":"JP"})",
                                R"({"tv.hw.countryType":"JP"})", R"({"tv.hw.countryType":"EU"})"}) {
        hold({});
        EXPECT_EQ(set("hardwareConfig", payload), kDone);
        EXPECT_TRUE(conditions().hardware) << payload;
    }
    hold({});
    refuse(kOptic);
    EXPECT_EQ(set("hardwareConfig", R"({"tv.hw.countryType":"US"})"), kDone);
    EXPECT_TRUE(conditions().hardware);
}

TEST_F(StartupConditions, HardwareDoesNotLaunch)
{
    hold({true, false, true});
    EXPECT_EQ(set("hardwareConfig", "{}"), kDone);
    EXPECT_TRUE((conditions() == Conditions{true, true, true}));
}

class Launch : public StartupConditions
{
protected:
    /// The request's payload is flattened, then the worker launched, then the adapters are told.
    void expectLaunchBy(const std::string& category, const Conditions& before)
    {
        hold(before);
        EXPECT_EQ(set(category, R"({"a":"b"})"), kDone);
        ASSERT_GE(logLines().size(), std::size_t{6});
        EXPECT_EQ(logLines()[2], flattened("a", R"("b")"));
        EXPECT_EQ(logLines()[3].origin, "keptvaudiosettings:setSoundSettings");
        EXPECT_THAT(logLines()[3].text, testing::StartsWith("Inside main Thread :: ID  = 0x"));
        EXPECT_EQ(logLines()[4],
                  kSettings.info("setSoundSettings", "startXmlParsing thread is getting created"));
        EXPECT_EQ(logLines()[5], gainSettings(R"({"a":"b"})"));
    }
};

TEST_F(Launch, ByTheLastConditionOfTheModel)
{
    expectLaunchBy("modelConfig", {true, true, false});
}

TEST_F(Launch, ByTheLastConditionOfConti)
{
    expectLaunchBy("contiConfig", {false, true, true});
}

TEST_F(Launch, BySoundOnceAllHold)
{
    expectLaunchBy("sound", {true, true, true});
}

TEST_F(Launch, BySmartSoundModeOnceAllHold)
{
    expectLaunchBy("smartSoundMode", {true, true, true});
}

TEST_F(Launch, NotWhileAConditionIsMissing)
{
    for (const Conditions& held : {Conditions{false, true, true}, Conditions{true, false, true},
                                   Conditions{true, true, false}})
        for (const char* category : {"sound", "smartSoundMode"}) {
            hold(held);
            EXPECT_EQ(set(category, "{}"), kDone);
            for (const LogLine& line : logLines())
                EXPECT_NE(line.text, "startXmlParsing thread is getting created");
            EXPECT_TRUE(conditions() == held);
        }
}

// --- Digital outputs

TEST_F(SettingsTest, TheModeOfADigitalOutputIsReapplied)
{
    for (const char* output : {"external_arc", "external_optical", "SPDIF", "tv_external_speaker",
                               "tv_speaker_optical_arc"}) {
        const std::string payload =
            R"({"soundOutput":")" + std::string{output} + R"(","mode":"auto"})";
        const Lines start = {kDigitalSettings, kOutputMode};
        expect({"soundOutputMode", payload, all({start, reapplied()}), kPcmTold});
        expect({"soundOutputMode",
                payload,
                all({start, reapplied(kOptic)}),
                kOpticRefused,
                kFailed,
                {kOptic}});
        expect({"soundOutputMode",
                payload,
                all({start, reapplied(kEarc)}),
                kEarcRefused,
                kFailed,
                {kEarc}});
        expect({"soundOutputMode",
                R"({"soundOutput":")" + std::string{output} + R"("})",
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
        for (const char* mode : {"null", "5", "true", "[]", "{}"})
            expect({"soundOutputMode",
                    R"({"soundOutput":")" + std::string{output} + R"(","mode":)" + mode + "}",
                    all({start, reapplied()}), kPcmTold});
    }
}

TEST_F(SettingsTest, NoOtherOutputHasADigitalMode)
{
    for (const char* output :
         {R"("headphone")", R"("tv_speaker")", R"("external_speaker")", R"("spdif")", R"("")",
          R"("tv_speaker_external")", "5", "null", "true", "[]", R"({"a":1})"})
        expect({"soundOutputMode",
                R"({"soundOutput":)" + std::string{output} + R"(,"mode":"auto"})",
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
    for (const char* payload : {R"({"mode":"auto"})", "{}", "[]", R"("SPDIF")", "null"})
        expect({"soundOutputMode",
                payload,
                {kDigitalSettings, kOutputMode, kInvalidSoundOutput},
                {},
                kFailed});
}

TEST_F(SettingsTest, ForcedOutputIsReappliedOnlyWhenItChanges)
{
    const Lines start = {kDigitalSettings, kForceOutput};
    const std::string on = R"({"forceOutputDDPLUS":"true"})";
    expect({"forceOutput", on, all({start, reapplied()}), kPcmTold});
    EXPECT_TRUE(mBackend->mForcedDDPlus);
    EXPECT_EQ(set("forceOutput", on), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(set("forceOutput", R"({"forceOutputDDPLUS":"false"})"), kDone);
    EXPECT_EQ(told(), kPcmTold);
    EXPECT_FALSE(mBackend->mForcedDDPlus);
    for (const char* off : {"TRUE", "false", "", "1", " true"}) {
        expect({"forceOutput", R"({"forceOutputDDPLUS":")" + std::string{off} + R"("})", start});
        EXPECT_FALSE(mBackend->mForcedDDPlus) << off;
        mBackend->mForcedDDPlus = true;
        set("forceOutput", R"({"forceOutputDDPLUS":")" + std::string{off} + R"("})");
        EXPECT_FALSE(mBackend->mForcedDDPlus) << off;
        EXPECT_EQ(told(), kPcmTold) << off;
    }
    expect({"forceOutput", on, all({start, reapplied(kOptic)}), kOpticRefused, kFailed, {kOptic}});
    EXPECT_TRUE(mBackend->mForcedDDPlus);
    expect({"forceOutput", on, all({start, reapplied(kEarc)}), kEarcRefused, kFailed, {kEarc}});
    expect({"forceOutput", "{}", start, {}, kFailed});
}

TEST_F(SettingsTest, AForcedFlagOfAnotherTypeChangesNothing)
{
    for (const char* value : {"true", "null", "1", "[]", "{}"}) {
        restart();
        mBackend->mForcedDDPlus = true;
        EXPECT_EQ(set("forceOutput", member("forceOutputDDPLUS", value)), kFailed) << value;
        EXPECT_TRUE(mBackend->mForcedDDPlus) << value;
    }
}

TEST_F(SettingsTest, TheMixerIsReappliedOnlyWhenItChanges)
{
    const Lines start = {kDigitalSettings, kMixer};
    expect({"setMixer", R"({"mix":true})", all({start, reapplied()}), kPcmTold});
    EXPECT_TRUE(mBackend->mMixerFlag);
    EXPECT_EQ(set("setMixer", R"({"mix":true})"), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(set("setMixer", R"({"mix":false})"), kDone);
    EXPECT_EQ(told(), kPcmTold);
    EXPECT_FALSE(mBackend->mMixerFlag);
    expect({"setMixer", R"({"mix":false})", start});
    expect({"setMixer",
            R"({"mix":true})",
            all({start, reapplied(kOptic)}),
            kOpticRefused,
            kFailed,
            {kOptic}});
    EXPECT_TRUE(mBackend->mMixerFlag);
    expect({"setMixer",
            R"({"mix":true})",
            all({start, reapplied(kEarc)}),
            kEarcRefused,
            kFailed,
            {kEarc}});
    expect({"setMixer", "{}", start, {}, kFailed});
    for (const char* value : {R"("true")", "null", "1", "[]", "{}"}) {
        restart();
        mBackend->mMixerFlag = true;
        EXPECT_EQ(set("setMixer", member("mix", value)), kFailed) << value;
        EXPECT_TRUE(mBackend->mMixerFlag) << value;
    }
}

struct DigitalEffect {
    const char* category;
    const char* payload;
    KEP_AUDIO_SNDOUT_T current;
    std::map<std::string, std::string> params;
    const char* formats; // optical and ARC
};

TEST_F(SettingsTest, WhatASettingChangedIsInForceWhenTheModeIsReapplied)
{
    const std::map<std::string, std::string> automatic = {{"soundOutputDigital", "auto"}};
    const std::map<std::string, std::string> japan = {{"soundOutputDigital", "auto"},
                                                      {"tv.hw.countryType", "JP"}};
    // clang-format off
    const std::vector<DigitalEffect> rows = {
        {"forceOutput",     R"({"forceOutputDDPLUS":"true"})",               KEP_AUDIO_ARC,   automatic, "6 10"},
        {"forceOutput",     R"({"forceOutputDDPLUS":"true"})",               KEP_AUDIO_SPDIF, automatic, "6 10"},
        {"setMixer",        R"({"mix":true})",                               KEP_AUDIO_ARC,   automatic, "4 6"},
        {"external_arc",    R"({"arcProfile":"ATMOS"})",                     KEP_AUDIO_ARC,   automatic, "2 4"},
        {"hardwareConfig",  R"({"tv.hw.countryType":"JP"})",                 KEP_AUDIO_ARC,   automatic, "3 3"},
        {"other",           R"({"supportBnoModel":true})",                   KEP_AUDIO_ARC,   japan,     "3 2"},
        {"other",           R"({"supportBnoModel":false})",                  KEP_AUDIO_ARC,   japan,     "3 3"},
        {"soundOutputMode", R"({"soundOutput":"SPDIF","mode":"pcm"})",       KEP_AUDIO_SPDIF, automatic, "2 2"},
        {"soundOutputMode", R"({"soundOutput":"SPDIF","mode":"auto"})",      KEP_AUDIO_SPK,   automatic, "1 1"},
    };
    // clang-format on
    for (const DigitalEffect& row : rows) {
        restart();
        mBackend->mCurrentSoundout = row.current;
        store().mQualityParamsMap = row.params;
        EXPECT_EQ(set(row.category, row.payload), kDone) << row.payload;
        ASSERT_THAT(told(), SizeIs(2)) << row.payload;
        EXPECT_EQ(told()[0], "Sndout Spdif OutputType " + std::string{row.formats}) << row.payload;
    }
}

// --- Driver

TEST_F(SettingsTest, ACopyrightIsWrittenForBothOutputs)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"free", "1"}, {"no_more", "2"}, {"once", "4"}, {"never", "8"}};
    for (const auto& [value, number] : rows) {
        const std::string payload = R"({"copyright":")" + value + R"("})";
        const std::string write = "Sndout Spdif CopyProtectionInfo " + number + " " + number;
        const Lines lines = all({copyright(value), copyrightWritten(value, number)});
        expect({"scms", payload, lines, {write}});
        expect({"scms",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setSpdifSecurity",
                                     "Did not able to set the element: Sndout Spdif "
                                     "CopyProtectionInfo with copyright value as " +
                                         value)}}),
                {write + " -> -5"},
                kFailed,
                {"Sndout Spdif CopyProtectionInfo"}});
    }
}

TEST_F(SettingsTest, AnInvalidCopyrightWritesNothing)
{
    for (const char* value : {"unknown", "Never", "", "free "})
        expect({"scms",
                R"({"copyright":")" + std::string{value} + R"("})",
                copyright(value),
                {},
                kFailed});
    for (const char* payload :
         {"{}", "[]", R"("free")", "null", R"({"copyright":1})", R"({"copyright":null})",
          R"({"copyright":true})", R"({"copyright":["free"]})", R"({"copyright":{"free":1}})"})
        expect({"scms", payload, copyright(""), {}, kFailed});
}

TEST_F(SettingsTest, TheOttModeIsWrittenOnlyWhenThePairIsNew)
{
    const auto payload = [](const std::string& ott, const std::string& lock) {
        return R"({"isOTTEnable":)" + ott + R"(,"isATMOSLockingEnable":)" + lock + "}";
    };
    const auto setting = [](const std::string& ott, const std::string& lock) {
        return kDigital.info("setOTTAdecMode", "Setting OTT mode isOTTEnable " + ott +
                                                   " isATMOSLockingEnable " + lock);
    };
    const LogLine same = kSettings.info(
        "setAlsaDriverSettings", "Not setting Adec Dolby OTTMode since OTTEnable values are same");
    const LogLine failure =
        kDigital.error("setOTTAdecMode", "Did not able to set the element: Adec Dolby OTTMode");
    const Texts refused = {"Adec Dolby OTTMode"};
    const LogLine start = driving("ottAdecMode");
    const std::string both = payload("true", "true");
    expect({"ottAdecMode", both, {start, setting("1", "1")}, {"Adec Dolby OTTMode 1 1"}});
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), IsEmpty());
    expect({"ottAdecMode",
            payload("true", "false"),
            {start, setting("1", "0")},
            {"Adec Dolby OTTMode 1 0"}});
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 1 1"));
    EXPECT_EQ(set("ottAdecMode", payload("false", "true")), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 0 1"));
    EXPECT_EQ(set("ottAdecMode", payload("false", "false")), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 0 0"));
    expect({"ottAdecMode", payload("false", "false"), {start, same}});
    expect({"ottAdecMode",
            both,
            {start, setting("1", "1"), refusedByDriver(), failure},
            {"Adec Dolby OTTMode 1 1 -> -5"},
            kFailed,
            refused});
    clearInjections(); // what was refused was not remembered
    EXPECT_EQ(set("ottAdecMode", both), kDone);
    EXPECT_THAT(told(), ElementsAre("Adec Dolby OTTMode 1 1"));
    for (const char* incomplete : {"{}", "[]", R"("x")", "null", R"({"isOTTEnable":true})",
                                   R"({"isATMOSLockingEnable":true})"})
        expect({"ottAdecMode", incomplete, {start}, {}, kFailed});
    for (const char* value : {"null", R"("true")", "1", "[]", "{}"}) {
        expect({"ottAdecMode",
                payload(value, "true"),
                {start, setting("0", "1")},
                {"Adec Dolby OTTMode 0 1"}});
        expect({"ottAdecMode",
                payload("true", value),
                {start, setting("1", "0")},
                {"Adec Dolby OTTMode 1 0"}});
        expect({"ottAdecMode", payload(value, value), {start, same}});
    }
}

TEST_F(SettingsTest, ThePowerStateReachesSoundBarAndLight)
{
    const LogLine start = driving("powerState");
    const std::string light = R"({"powerState":"opticLightOn"})";
    const LogLine lighting =
        kHeadphone.info("setOpticLightOnOff", "setOpticLightOnOff, power state is opticLightOn");
    expect({"powerState",
            light,
            {start, qnState(light), lighting,
             kHeadphone.info("setOpticLightOnOff", "Set SPDIF_LIGHT ON/OFF is success")},
            {"Sndout Optic LightOnOff 1"},
            kDone,
            {},
            KEP_AUDIO_SPDIF});
    expect({"powerState",
            light,
            {start, qnState(light), lighting, refusedByDriver(),
             kHeadphone.refusal("CONTROL_ELEMENT_SET_ERROR", "setOpticLightOnOff",
                                "Did not able to set the element: Sndout Optic LightOnOff")},
            {"Sndout Optic LightOnOff 1 -> -5"},
            kFailed,
            {"Sndout Optic LightOnOff"},
            KEP_AUDIO_SPDIF});
    const std::string on = R"({"powerState":"on"})";
    expect({"powerState",
            on,
            {start, qnState(on),
             kHeadphone.info("setPowerOnOffQNSoundSync",
                             "setPowerOnOffQNSoundSync, power state is on"),
             kHeadphone.info("setPowerOnOffQNSoundSync",
                             "SOUNDOUT_OPTICQN_POWER ON/OFF is not set, since QNSoundSync is not "
                             "current soundout")},
            {},
            kFailed});
    const std::string unknown = R"({"powerState":"standby"})";
    expect({"powerState",
            unknown,
            {start, qnState(unknown),
             kHeadphone.error("setQNSoundbarState", "Invalid power status: standby")},
            {},
            kFailed});
    for (const char* nothing :
         {"{}", "[]", R"("on")", "null", R"({"powerState":1})", R"({"powerState":null})",
          R"({"powerState":true})", R"({"powerState":["on"]})", R"({"powerState":{"on":1}})"})
        expect({"powerState",
                nothing,
                {start, qnState(nothing),
                 kHeadphone.error("setQNSoundbarState", "powerState key is not available")},
                {},
                kFailed});
}

// --- The receiver behind ARC

TEST_F(SettingsTest, TheActivationSwitchesArcAndEarc)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::vector<std::vector<std::string>> rows = {
        {"ARC", "1", "0"}, {"eARC", "0", "1"}, {"None", "0", "0"}};
    for (const auto& row : rows) {
        const std::string payload = R"({"arcActivation":")" + row[0] + R"("})";
        const std::string arc = "Sndout ARC OnOff " + row[1];
        const std::string earc = "Sndout EARC OnOff " + row[2];
        const Lines lines = all({start, {switchingArc(row[1], row[2])}});
        expect({"external_arc", payload, lines, {arc, earc}});
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setArcOnOff", "In setSoundOutArc : Did not able to set the "
                                                    "element: Sndout ARC OnOff with status " +
                                                        row[1])}}),
                {arc + " -> -5"},
                kFailed,
                {"Sndout ARC OnOff"}});
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setArcOnOff", "In setSoundOuteArc : Did not able to set the "
                                                    "element: Sndout EARC OnOff with status " +
                                                        row[2])}}),
                {arc, earc + " -> -5"},
                kFailed,
                {"Sndout EARC OnOff"}});
    }
    for (const char* nothing : {"{}",
                                "[]",
                                R"("ARC")",
                                "null",
                                "5",
                                R"({"arcActivation":"arc"})",
                                R"({"arcActivation":""})",
                                R"({"arcActivation":1})",
                                R"({"arcActivation":null})",
                                R"({"arcActivation":true})",
                                R"({"arcActivation":["ARC"]})",
                                R"({"arcActivation":{"ARC":1}})",
                                R"({"arcProfile":1})",
                                R"({"arcProfile":null})",
                                R"({"arcProfile":true})",
                                R"({"arcProfile":["ATMOS"]})",
                                R"({"arcProfile":{}})",
                                R"({"earcCapability":"DD"})",
                                R"({"earcCapability":null})",
                                R"({"earcCapability":1})",
                                R"({"earcCapability":true})",
                                R"({"earcCapability":{"DD":1}})",
                                R"({"earcATMOS":"true"})",
                                R"({"earcATMOS":null})",
                                R"({"earcATMOS":1})",
                                R"({"earcATMOS":[true]})",
                                R"({"earcATMOS":{}})"}) {
        expect({"external_arc", nothing, start});
        EXPECT_THAT(store().mQualityParamsMap, IsEmpty()) << nothing;
    }
}

TEST_F(SettingsTest, AProfileIsReappliedWhenItIsNewAndTurnsTheEncoderInEveryCase)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::string alone = R"({"arcProfile":"ATMOS"})";
    expect({"external_arc", alone, all({start, reapplied(), {atmosByProfile("ATMOS", "")}}),
            kPcmTold});
    EXPECT_EQ(mBackend->mArcProfile, "ATMOS");
    forget();
    EXPECT_EQ(set("external_arc", R"({"arcProfile":"ATMOS","arcActivation":"ARC"})"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout ARC OnOff 1", "Sndout EARC OnOff 0",
                                    "Sndout eAC3 ATMOS Encode OnOff 1"));
    EXPECT_EQ(set("external_arc", R"({"arcProfile":"EAC3","arcActivation":"ARC"})"), kDone);
    EXPECT_THAT(told(), ElementsAre("Sndout ARC OnOff 1", "Sndout EARC OnOff 0", kPcmTold[0],
                                    kPcmTold[1], "Sndout eAC3 ATMOS Encode OnOff 0"));
    EXPECT_EQ(mBackend->mArcProfile, "EAC3");
    EXPECT_EQ(set("external_arc", R"({"arcProfile":""})"), kDone); // empty, but new
    EXPECT_EQ(told(), kPcmTold);
    expect({"external_arc", R"({"arcProfile":""})", all({start, {atmosByProfile("", "")}})});
    for (const auto& [element, told] :
         {std::pair{kOptic, kOpticRefused}, std::pair{kEarc, kEarcRefused}}) {
        expect({"external_arc",
                alone,
                all({start, reapplied(element), {atmosByProfile("ATMOS", "")}}),
                told,
                kFailed,
                {element}});
        EXPECT_EQ(mBackend->mArcProfile, "ATMOS");
    }
}

TEST_F(SettingsTest, TheCapabilityIsTakenOverAppliedAndFlattened)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    const std::string payload = R"({"earcCapability":["DD","DD+"],"x":"y"})";
    const Lines flattening = {flattened("earcCapability", R"(["DD","DD+"])"),
                              flattened("x", R"("y")")};
    expect({"external_arc", payload, all({start, earcReapplied(), flattening}), {kPcmTold[1]}});
    EXPECT_EQ(mBackend->mEarcCapability.stringify(), R"(["DD","DD+"])");
    EXPECT_THAT(store().mQualityParamsMap,
                UnorderedElementsAre(Pair("earcCapability", R"(["DD","DD+"])"), Pair("x", "y")));
    expect({"external_arc",
            payload,
            all({start, earcReapplied(kEarc), flattening}),
            {kEarcRefused[1]},
            kFailed,
            {kEarc}});
    EXPECT_THAT(store().mQualityParamsMap, SizeIs(2));
    expect({"external_arc",
            R"({"earcCapability":[]})",
            all({start, earcReapplied(), {flattened("earcCapability", "[]")}}),
            {kPcmTold[1]}});
}

TEST_F(SettingsTest, EarcAtmosTurnsTheEncoderOnlyWhileEarcIsActivated)
{
    const Lines start = {driving("external_arc"), kExternalArc};
    expect({"external_arc", R"({"earcATMOS":true})", all({start, {atmosByEarc("1", "")}})});
    const Lines earc = all({start, {switchingArc("0", "1")}});
    const Texts switched = {"Sndout ARC OnOff 0", "Sndout EARC OnOff 1"};
    for (const char* value : {"true", "false"}) {
        const std::string on = std::string{value} == "true" ? "1" : "0";
        const std::string payload =
            R"({"arcActivation":"eARC","earcATMOS":)" + std::string{value} + "}";
        const std::string write = "Sndout eAC3 ATMOS Encode OnOff " + on;
        const Lines lines = all({earc, {atmosByEarc(on, "eARC"), encodingAtmos(on)}});
        expect({"external_arc", payload, lines, {switched[0], switched[1], write}});
        // A refused encoder is no failure.
        expect({"external_arc",
                payload,
                all({lines,
                     {refusedByDriver(),
                      kDigital.error("setAtmosEncode",
                                     "In setAtmosEncode : Did not able to set the element with "
                                     "atmos value " +
                                         on)}}),
                {switched[0], switched[1], write + " -> -5"},
                kDone,
                {"Sndout eAC3 ATMOS Encode OnOff"}});
    }
    expect({"external_arc",
            R"({"arcActivation":"ARC","earcATMOS":true})",
            all({start, {switchingArc("1", "0"), atmosByEarc("1", "ARC")}}),
            {"Sndout ARC OnOff 1", "Sndout EARC OnOff 0"}});
}

TEST_F(SettingsTest, AFailedStepForTheReceiverDoesNotStopTheNext)
{
    const std::string payload = R"({"earcATMOS":true,"earcCapability":["DD"],"arcProfile":"EAC3",)"
                                R"("arcActivation":"eARC"})";
    const Texts good = {"Sndout ARC OnOff 0", "Sndout EARC OnOff 1",
                        kPcmTold[0],          kPcmTold[1],
                        kPcmTold[1],          "Sndout eAC3 ATMOS Encode OnOff 1"};
    for (unsigned int failing = 0; failing <= good.size(); ++failing) {
        restart();
        Texts expected = good;
        if (failing < good.size()) {
            refuseWrite(failing);
            expected[failing] += " -> -5";
        }
        if (failing == 0)
            expected.erase(expected.begin() + 1);     // eARC is left alone
        const bool done = failing >= good.size() - 1; // the encoder reports none
        EXPECT_EQ(set("external_arc", payload), done ? kDone : kFailed) << failing;
        EXPECT_EQ(told(), expected) << failing;
        EXPECT_THAT(store().mQualityParamsMap, SizeIs(4)) << failing;
        EXPECT_THAT(stored(), SizeIs(done ? 1 : 0)) << failing;
    }
}

// --- Sound engine

struct StatusRow {
    const char* status;
    const char* on;
};
constexpr StatusRow kStatuses[] = {{"on", "true"}, {"off", "false"}};

TEST_F(SettingsTest, TheEqualizerIsSetInAmplifierThenSoundEngine)
{
    for (const auto& [status, on] : kStatuses) {
        const std::string payload = R"({"status":")" + std::string{status} + R"("})";
        const std::string amplifier = "amplifier.setAmpEQ " + std::string{on};
        const std::string sound = "soundengine.setInstartAudioEQ " + std::string{on};
        const LogLine amplifierRefused = kAmplifier.error(
            "setEqualizerStatus", "Failed to set amplifier equalizer as " + std::string{status});
        const LogLine soundRefused = kEngine.error(
            "setEqualizerStatus", "Failed to set audio equalizer as " + std::string{status});
        const LogLine start = engine("audioEQ");
        expect(
            {"audioEQ", payload, {start, eqStatus(status), audioEq(status)}, {amplifier, sound}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), amplifierRefused, audioEq(status)},
                {amplifier + " -> 7", sound},
                kFailed,
                {"amplifier.setAmpEQ"}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), audioEq(status), soundRefused},
                {amplifier, sound + " -> 7"},
                kFailed,
                {"soundengine.setInstartAudioEQ"}});
        expect({"audioEQ",
                payload,
                {start, eqStatus(status), amplifierRefused, audioEq(status), soundRefused},
                {amplifier + " -> 7", sound + " -> 7"},
                kFailed,
                {"amplifier.setAmpEQ", "soundengine.setInstartAudioEQ"}});
    }
}

TEST_F(SettingsTest, TheSoundEngineIsSwitched)
{
    for (const auto& [status, on] : kStatuses) {
        const std::string payload = R"({"status":")" + std::string{status} + R"("})";
        const std::string call = "soundengine.setInstartSoundEngine " + std::string{on};
        const Lines lines = {engine("soundEngine"),
                             kEngine.info("setSoundEngineStatus",
                                          "Setting Instart SoundEngine " + std::string{status})};
        expect({"soundEngine", payload, lines, {call}});
        expect(
            {"soundEngine",
             payload,
             all({lines,
                  {kEngine.error("setSoundEngineStatus",
                                 "Failed to set sound engine status as " + std::string{status})}}),
             {call + " -> 7"},
             kFailed,
             {"soundengine.setInstartSoundEngine"}});
    }
}

TEST_F(SettingsTest, AStatusIsExactlyOnOrOff)
{
    struct Row {
        const char* category;
        const char* handler;
        const char* subject;
    };
    for (const Row& row : {Row{"audioEQ", "setEqualizerSettings", "setEqualizerStatus"},
                           Row{"soundEngine", "setSoundEngineStatus", "soundEngineStatus"}}) {
        const auto invalid = [&](const std::string& status) {
            return kSettings.error(row.handler,
                                   "Invalid status " + status + " for setting " + row.subject);
        };
        for (const char* status : {"On", "OFF", "", "on ", "true"})
            expect({row.category,
                    R"({"status":")" + std::string{status} + R"("})",
                    {engine(row.category), invalid(status)},
                    {},
                    kFailed});
        for (const char* status : {"true", "null", "1", R"(["on"])", R"({"on":1})"})
            expect({row.category,
                    member("status", status),
                    {engine(row.category), invalid("")},
                    {},
                    kFailed});
        for (const char* nothing : {"{}", "[]", R"("on")", "null", R"({"Status":"on"})"})
            expect({row.category,
                    nothing,
                    {engine(row.category),
                     kSettings.error(row.handler, "status value not present for " +
                                                      std::string{row.category} + " category")},
                    {},
                    kFailed});
    }
}

TEST_F(SettingsTest, MagicSpaceSoundIsPassedOn)
{
    const auto start = [](const std::string& payload) {
        return Lines{
            engine("magicSpaceSound"),
            kEngine.info("setMagicSpaceSound", "Setting MagicSpace SoundParams " + payload)};
    };
    const std::string payload = R"({"soundSettingValues":[1,2.9,"x"]})";
    expect({"magicSpaceSound",
            payload,
            all({start(payload),
                 {kEngine.debug("setMagicSpaceSound", "set magic space sound successfully")}}),
            {"soundengine.setMagicSpaceSoundParams [1,2,0] 3"}});
    expect({"magicSpaceSound",
            payload,
            all({start(payload),
                 {kEngine.error("setMagicSpaceSound", "Failed to set magic space sound")}}),
            {"soundengine.setMagicSpaceSoundParams [1,2,0] 3 -> 7"},
            kFailed,
            {"soundengine.setMagicSpaceSoundParams"}});
    for (const char* value : {"5", "null", "true", R"("x")", "{}", "[]"}) {
        const std::string empty = member("soundSettingValues", value);
        expect({"magicSpaceSound",
                empty,
                all({start(empty),
                     {kEngine.debug("setMagicSpaceSound", "set magic space sound successfully")}}),
                {"soundengine.setMagicSpaceSoundParams [] 0"}});
    }
    for (const char* nothing : {"{}", "[1]", R"("x")", "null"})
        expect({"magicSpaceSound",
                nothing,
                all({start(nothing),
                     {kEngine.error("setMagicSpaceSound", "No values to set magic space sound")}}),
                {},
                kFailed});
}

TEST_F(SettingsTest, DolbyAtmosIsOnForOnAlone)
{
    for (const auto& [text, on] :
         {std::pair{"on", "true"}, {"off", "false"}, {"On", "false"}, {"", "false"}}) {
        const std::string payload = R"({"atmosState":")" + std::string{text} + R"("})";
        const std::string call = "soundengine.setDolbyAtmos " + std::string{on};
        const Lines lines = {
            engine("dolbyAtmos"),
            kEngine.info("setDolbyAtmos", "Setting Dolby Atmos State " + std::string{text})};
        expect({"dolbyAtmos", payload, lines, {call}});
        expect({"dolbyAtmos",
                payload,
                all({lines,
                     {kEngine.error("setDolbyAtmos",
                                    "Failed to set Dolby Atmos as " + std::string{text})}}),
                {call + " -> 7"},
                kFailed,
                {"soundengine.setDolbyAtmos"}});
    }
    for (const char* nothing :
         {"{}", "[]", R"("on")", "null", R"({"atmosState":true})", R"({"atmosState":null})",
          R"({"atmosState":1})", R"({"atmosState":["on"]})", R"({"atmosState":{}})"})
        expect({"dolbyAtmos", nothing, {engine("dolbyAtmos")}, {}, kFailed});
}

TEST_F(SettingsTest, ForcedDolbyAtmosNeedsItsKeyAlone)
{
    for (const auto& [value, on] : {std::pair{"true", "1"}, {"false", "0"}}) {
        const std::string payload = member("forcedDolbyAtmos", value);
        const std::string call = "soundengine.setForcedDolbyAtmos " + std::string{value};
        const Lines lines = {
            engine("forcedDolbyAtmos"),
            kEngine.info("setForcedDolbyAtmos", "setForcedDolbyAtmos " + std::string{on})};
        expect({"forcedDolbyAtmos", payload, lines, {call}});
        expect({"forcedDolbyAtmos",
                payload,
                all({lines,
                     {kEngine.error("setForcedDolbyAtmos",
                                    "Failed to set forced Dolby Atmos as " + std::string{on})}}),
                {call + " -> 7"},
                kFailed,
                {"soundengine.setForcedDolbyAtmos"}});
    }
    for (const char* value : {R"("true")", "null", "1", "[]", "{}"})
        expect(
            {"forcedDolbyAtmos", member("forcedDolbyAtmos", value), {engine("forcedDolbyAtmos")}});
    for (const char* nothing : {"{}", "[]", R"("forcedDolbyAtmos")", "null"})
        expect({"forcedDolbyAtmos", nothing, {engine("forcedDolbyAtmos")}, {}, kFailed});
}

// --- Amplifier

TEST_F(SettingsTest, TheAmplifierTypeIsUpdated)
{
    const std::string payload = R"({"tv.model.ampChipType":"X1"})";
    const std::string registered =
        R"(amplifier.registerQualityParams {"tv.model.ampChipType":"X1"})";
    const LogLine start = amplifying("amplifier", payload);
    const LogLine parsing =
        kAmplifier.info("initAmplifierAttributes", "Parsing amplifier values from xml");
    expect({"amplifier",
            payload,
            {start, parsing,
             kSettings.debug("setAmplifierSettings", "successfully updated amplifier type")},
            {registered, "amplifier.setAmplifierInit"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("tv.model.ampChipType", "X1")));
    const LogLine failed =
        kAmplifier.error("updateAmplifierType", "Failed to init amplifier attributes");
    expect({"amplifier",
            payload,
            {start, parsing,
             kAmplifier.error("initAmplifierAttributes", "Failed to register quality parameters"),
             failed},
            {registered + " -> 7", "amplifier.setAmplifierInit"},
            kFailed,
            {"amplifier.registerQualityParams"}});
    expect(
        {"amplifier",
         payload,
         {start, parsing,
          kAmplifier.error("initAmplifierAttributes", "Failed to initilize amplifier Middle ware"),
          failed},
         {registered, "amplifier.setAmplifierInit -> 7"},
         kFailed,
         {"amplifier.setAmplifierInit"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"}) {
        const std::string other = member("tv.model.ampChipType", value);
        expect({"amplifier",
                other,
                {amplifying("amplifier", other), parsing,
                 kSettings.debug("setAmplifierSettings", "successfully updated amplifier type")},
                {R"(amplifier.registerQualityParams {"tv.model.ampChipType":""})",
                 "amplifier.setAmplifierInit"}});
    }
    for (const char* nothing : {"{}", "[]", R"("X1")", "null"})
        expect({"amplifier",
                nothing,
                {amplifying("amplifier", nothing),
                 kAmplifier.refusal("INVALID_PARAMETER", "updateAmplifierType",
                                    "tv.model.ampChipType is not available")},
                {},
                kFailed});
}

TEST_F(SettingsTest, ResumeAndSuspendDoNotReadTheirPayload)
{
    const LogLine resuming =
        kAmplifier.debug("setAmplifierResume", "Called setAmplifierResume function");
    const LogLine suspending =
        kAmplifier.info("setAmplifierSuspend", "Called setAmplifierSuspend function");
    for (const char* payload : {R"({"a":1})", "{}", "[1]", R"("x")", "null", "5", "true"}) {
        const LogLine resume = amplifying("prepareResume", payload);
        const LogLine suspend = amplifying("prepareAmplifierSuspend", payload);
        expect({"prepareResume", payload, {resume, resuming}, {"amplifier.setAmpResume"}});
        EXPECT_TRUE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareResume",
                payload,
                {resume, resuming,
                 kAmplifier.error("setAmplifierResume", "Amp Resume call is failed")},
                {"amplifier.setAmpResume -> 7"},
                kFailed,
                {"amplifier.setAmpResume"}});
        EXPECT_TRUE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareAmplifierSuspend",
                payload,
                {suspend, suspending},
                {"amplifier.setAmpSuspend"}});
        EXPECT_FALSE(mBackend->mIsPrepareResume) << payload;
        expect({"prepareAmplifierSuspend",
                payload,
                {suspend, suspending,
                 kAmplifier.error("setAmplifierSuspend", "failed to call setAmpSuspend function")},
                {"amplifier.setAmpSuspend -> 7"},
                kFailed,
                {"amplifier.setAmpSuspend"}});
    }
}

TEST_F(SettingsTest, TheAmplifierStateIsPassedOn)
{
    const LogLine called = kAmplifier.debug("setAmplifierState", "Called setAmplifier function");
    const std::string payload = R"({"ampType":"main","status":"on"})";
    const Lines lines = {amplifying("amplifierState", payload), called};
    expect({"amplifierState", payload, lines, {R"(amplifier.setAmpOnOff "main" "on")"}});
    expect({"amplifierState",
            payload,
            all({lines,
                 {kAmplifier.error("setAmplifierState", "Failed to set amplifier state for "
                                                        "amplifier Type: main, Status: on ")}}),
            {R"(amplifier.setAmpOnOff "main" "on" -> 7)"},
            kFailed,
            {"amplifier.setAmpOnOff"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"}) {
        const std::string type = R"({"ampType":)" + std::string{value} + R"(,"status":"on"})";
        expect({"amplifierState",
                type,
                {amplifying("amplifierState", type), called},
                {R"(amplifier.setAmpOnOff "" "on")"}});
        const std::string status = R"({"ampType":"main","status":)" + std::string{value} + "}";
        expect({"amplifierState",
                status,
                {amplifying("amplifierState", status), called},
                {R"(amplifier.setAmpOnOff "main" "")"}});
    }
    for (const char* incomplete :
         {"{}", "[]", R"("on")", "null", R"({"ampType":"main"})", R"({"status":"on"})"})
        expect({"amplifierState",
                incomplete,
                {amplifying("amplifierState", incomplete), called},
                {},
                kFailed});
}

struct Member {
    const char* key;
    const char* value;
    bool number;
};
constexpr Member kI2cMembers[] = {
    {"slaveAddress", R"("0x54")", false}, {"portNumber", "3", true},
    {"address", R"("0x10")", false},      {"numberOfByte", "1", true},
    {"sizeOfArray", "2", true},           {"data", R"(["a","b"])", false},
};

/// The register request with one value replaced, or left out when that is "".
std::string i2cRequest(const std::string& changed = "none", const std::string& value = "")
{
    std::string text;
    for (const Member& row : kI2cMembers) {
        const std::string used = row.key == changed ? value : row.value;
        if (!used.empty())
            text += (text.empty() ? "{\"" : ",\"") + std::string{row.key} + "\":" + used;
    }
    return text + "}";
}

std::string i2cCall(const std::string& changed = "none")
{
    std::string text = "amplifier.writeI2cDataToAmp";
    for (const Member& row : kI2cMembers) {
        const std::string nothing = row.number                       ? "0"
                                    : std::string{row.key} == "data" ? "[]"
                                                                     : R"("")";
        text += " " + (row.key == changed ? nothing : row.value);
    }
    return text;
}

TEST_F(SettingsTest, RegistersAreWritten)
{
    const auto lines = [](const std::string& payload) {
        return Lines{
            amplifying("writeI2cDataToAmplifier", payload),
            kAmplifier.info("writeI2cDataToAmplifier",
                            "Called writeI2cDataToAmplifier function with amplifierObject " +
                                payload)};
    };
    const std::string payload = i2cRequest();
    expect({"writeI2cDataToAmplifier", payload, lines(payload), {i2cCall()}});
    expect({"writeI2cDataToAmplifier",
            payload,
            all({lines(payload),
                 {kAmplifier.error("writeI2cDataToAmplifier",
                                   "Failed to write I2c Data to Amplifier IC  slaveAddress: 0x54, "
                                   "address: 0x10 ")}}),
            {i2cCall() + " -> 7"},
            kFailed,
            {"amplifier.writeI2cDataToAmp"}});
    const auto missing = [](const std::string& given) {
        return Lines{
            amplifying("writeI2cDataToAmplifier", given),
            kAmplifier.refusal("ERROR_LOG", "writeI2cDataToAmplifier",
                               "writeI2cDataToAmplifier: amplifierObject value not received")};
    };
    for (const Member& row : kI2cMembers) {
        const std::string without = i2cRequest(row.key, "");
        expect({"writeI2cDataToAmplifier", without, missing(without), {}, kFailed});
        for (const char* value : {"null", "true", "{}"}) {
            const std::string wrong = i2cRequest(row.key, value);
            expect({"writeI2cDataToAmplifier", wrong, lines(wrong), {i2cCall(row.key)}});
        }
    }
    for (const char* nothing : {"{}", "[]", R"("x")", "null"})
        expect({"writeI2cDataToAmplifier", nothing, missing(nothing), {}, kFailed});
}

// --- Delay and picture

TEST_F(SettingsTest, TheCorrectionIsAnInteger)
{
    for (const NumberConversion& row : kNumberConversions) {
        const std::string payload = json(member("correctionValue", row.json)).stringify();
        const std::string number = std::to_string(row.number);
        const std::string call = "delay.setFactoryDelay " + number;
        const Lines lines = {
            delaying("audioVideoSync"),
            kDelay.info("setAudioVideoSync", "Request to set AudioVideoSync value as " + number)};
        expect({"audioVideoSync", payload, lines, {call}});
        expect({"audioVideoSync",
                payload,
                all({lines,
                     {kDelay.error("setAudioVideoSync",
                                   "Failed to set AudioVideoSync value as " + number)}}),
                {call + " -> 7"},
                kFailed,
                {"delay.setFactoryDelay"}});
    }
    for (const char* nothing : {"{}", "[10]", R"("x")", "null"})
        expect({"audioVideoSync",
                nothing,
                {delaying("audioVideoSync"),
                 kSettings.error("setDelaySettings",
                                 "status value not present for audioVideoSync category")},
                {},
                kFailed});
}

TEST_F(SettingsTest, TheOffsetDelayIsPassedOn)
{
    const LogLine requested = kDelay.info("setOffsetDelay", "Request to set offset delay");
    const auto payload = [](const std::string& value, const std::string& type) {
        return json(R"({"offsetValue":)" + value + R"(,"operationType":)" + type + "}").stringify();
    };
    const std::string good = payload("40", R"("add")");
    const Lines start = {delaying("offsetDelay"), requested};
    expect({"offsetDelay",
            good,
            all({start, {kDelay.debug("setOffsetDelay", "set offset delay value 40 for add")}}),
            {R"(delay.setOffSetDelay 40 "add")"}});
    expect({"offsetDelay",
            good,
            all({start,
                 {kDelay.error("setOffsetDelay", "Failed to set offset delay value 40 for add")}}),
            {R"(delay.setOffSetDelay 40 "add" -> 7)"},
            kFailed,
            {"delay.setOffSetDelay"}});
    for (const NumberConversion& row : kNumberConversions) {
        const std::string number = std::to_string(row.number);
        expect({"offsetDelay",
                payload(row.json, R"("add")"),
                all({start,
                     {kDelay.debug("setOffsetDelay",
                                   "set offset delay value " + number + " for add")}}),
                {"delay.setOffSetDelay " + number + R"( "add")"}});
    }
    for (const char* type : {"null", "true", "5", "[]", "{}"})
        expect({"offsetDelay",
                payload("40", type),
                all({start, {kDelay.debug("setOffsetDelay", "set offset delay value 40 for ")}}),
                {R"(delay.setOffSetDelay 40 "")"}});
    for (const char* nothing :
         {"{}", "[]", R"("add")", "null", R"({"offsetValue":40})", R"({"operationType":"add"})"})
        expect({"offsetDelay", nothing, start, {}, kFailed});
}

TEST_F(SettingsTest, ANewPictureLevelUpdatesTheDelays)
{
    const std::string payload = R"({"memcDelayLevel":"low"})";
    const Lines start = {other("picture"), picturing(payload)};
    const Lines updated = {
        kSettings.debug("setPictureSettings", "Updated memcDelayLevel Value received = low"),
        kDelay.info("updateDelayValues", "calling setDelayUpdate")};
    const Lines refused = {kDelay.error("updateDelayValues", "Failed to update delay values"),
                           kSettings.refusal("DELAY_MIDDLEWARE_ERROR", "setPictureSettings",
                                             "Failed to update delay value to middleware")};
    const LogLine added = flattened("memcDelayLevel", R"("low")");
    expect({"picture", payload, all({start, {added}, updated}), {"delay.setDelayUpdate"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, {added}, updated, refused}),
            {"delay.setDelayUpdate -> 7"},
            kFailed,
            {"delay.setDelayUpdate"}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, updated}),
            {"delay.setDelayUpdate"},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "high"}}});
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("memcDelayLevel", "low")));
    expect({"picture",
            payload,
            all({start, updated, refused}),
            {"delay.setDelayUpdate -> 7"},
            kFailed,
            {"delay.setDelayUpdate"},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "high"}}});
    expect({"picture",
            payload,
            all({start,
                 {kSettings.info("setPictureSettings", "memcDelayLevelValue low is same as "
                                                       "previous MemcDelayLevelValue low ")}}),
            {},
            kDone,
            {},
            KEP_AUDIO_NO_OUTPUT,
            {{"memcDelayLevel", "low"}}});
    const std::string empty = R"({"memcDelayLevel":""})";
    expect({"picture",
            empty,
            {other("picture"), picturing(empty),
             kSettings.info("setPictureSettings", "memcDelayLevelValue  is same as "
                                                  "previous MemcDelayLevelValue  ")}});
    EXPECT_THAT(store().mQualityParamsMap, IsEmpty());
    for (const char* nothing :
         {"{}", "[]", R"("low")", "null", R"({"memcDelayLevel":1})", R"({"memcDelayLevel":null})",
          R"({"memcDelayLevel":true})", R"({"memcDelayLevel":["low"]})",
          R"({"memcDelayLevel":{"low":1}})"}) {
        expect({"picture", nothing, {other("picture"), picturing(nothing)}, {}, kFailed});
        EXPECT_THAT(store().mQualityParamsMap, IsEmpty()) << nothing;
    }
}

// --- The rest

TEST_F(SettingsTest, OptionSucceedsWhateverTheMiddlewareSays)
{
    const std::string payload = R"({"storeMode":"home"})";
    expect({"option",
            payload,
            {other("option"),
             kEngine.info("setOptionCategorySettings", "set Store/Home mode successfully as home")},
            {R"(soundengine.setStoreMode "home")"}});
    expect({"option",
            payload,
            {other("option"), kEngine.error("setOptionCategorySettings",
                                            "Failed to set Store/Home mode value as home")},
            {R"(soundengine.setStoreMode "home" -> 7)"},
            kDone,
            {"soundengine.setStoreMode"}});
    for (const char* value : {"null", "true", "5", "[]", "{}"})
        expect({"option",
                member("storeMode", value),
                {other("option"),
                 kEngine.info("setOptionCategorySettings", "set Store/Home mode successfully as ")},
                {R"(soundengine.setStoreMode "")"}});
    for (const char* nothing : {"{}", "[]", R"("home")", "null", "5", R"({"mode":"home"})"})
        expect({"option", nothing, {other("option")}});
}

TEST_F(SettingsTest, DimensionIsOnlyRemembered)
{
    for (const char* payload : {R"({"a":1})", "{}", "[]", R"("x")", "null", "5", "true"})
        expect({"dimension", payload, {other("dimension")}});
}

TEST_F(SettingsTest, TheModelFlagReappliesTheDigitalModeEachTime)
{
    for (const auto& [value, on] : {std::pair{"true", "1"}, {"false", "0"}}) {
        const std::string payload = member("supportBnoModel", value);
        const Lines start = {
            other("other"),
            kHeadphone.info("setSupportBnoModel", "Setting support bno model: " + std::string{on})};
        expect({"other", payload, all({start, reapplied()}), kPcmTold});
        EXPECT_EQ(mBackend->mSupportBnoModel, std::string{value} == "true");
        EXPECT_EQ(set("other", payload), kDone); // the same value again
        EXPECT_EQ(told(), kPcmTold);
        expect(
            {"other", payload, all({start, reapplied(kOptic)}), kOpticRefused, kFailed, {kOptic}});
        EXPECT_EQ(mBackend->mSupportBnoModel, std::string{value} == "true");
        expect({"other", payload, all({start, reapplied(kEarc)}), kEarcRefused, kFailed, {kEarc}});
    }
    for (const char* nothing : {"{}", "[]", "true", "null", R"({"supportBnoModel":"true"})",
                                R"({"supportBnoModel":1})", R"({"supportBnoModel":null})",
                                R"({"supportBnoModel":[true]})", R"({"supportBnoModel":{}})"})
        expect({"other", nothing, {other("other")}, {}, kFailed});
}

TEST_F(SettingsTest, WisaIsActivatedByABool)
{
    expect({"activateWisa", R"({"activateWisa":true})"});
    EXPECT_TRUE(mBackend->mWisaActivated);
    EXPECT_EQ(set("activateWisa", R"({"activateWisa":false})"), kDone);
    EXPECT_FALSE(mBackend->mWisaActivated);
    for (const char* nothing :
         {"{}", "[]", "true", "null", R"({"activateWisa":"true"})", R"({"activateWisa":1})",
          R"({"activateWisa":null})", R"({"activateWisa":[]})", R"({"activateWisa":{}})"}) {
        expect({"activateWisa",
                nothing,
                {kSettings.refusal("ERROR_LOG", "setActivateWisa",
                                   "activateWisa key is not available")},
                {},
                kFailed});
        mBackend->mWisaActivated = true;
        EXPECT_EQ(set("activateWisa", nothing), kFailed);
        EXPECT_TRUE(mBackend->mWisaActivated) << nothing;
    }
}

TEST_F(SettingsTest, ThePowerStateMutesTheNamedOutput)
{
    const auto payload = [](const std::string& output, const std::string& mute) {
        return R"({"soundOutput":)" + output + R"(,"mute":)" + mute + "}";
    };
    const auto setting = [](const std::string& mute, const std::string& output) {
        return kHeadphone.info("setPowerStateMute", "Setting powerState mute to " + mute +
                                                        " on soundOutputType " + output);
    };
    expect({"powerStateMute",
            payload(R"("external_arc")", "true"),
            {setting("1", "external_arc")},
            {"Mute Output 32 1"}});
    EXPECT_TRUE(mBackend->mPowerStateHeadphoneMute);
    expect({"powerStateMute",
            payload(R"("external_arc")", "true"),
            {setting("1", "external_arc"), refusedByDriver(),
             kControl.error("setMuteControlElement",
                            "Did not able to set the element: Mute Output on 1024")},
            {"Mute Output 32 1 -> -5"},
            kFailed,
            {"Mute Output"}});
    for (const char* mute : {"false", "null", R"("true")", "1", "[]", "{}"}) {
        expect({"powerStateMute",
                payload(R"("external_arc")", mute),
                {setting("0", "external_arc")},
                {"Mute Output 32 0"}});
        EXPECT_FALSE(mBackend->mPowerStateHeadphoneMute);
    }
    for (const char* output : {"null", "true", "5", "[]", "{}", R"("")"})
        expect({"powerStateMute", payload(output, "true"), {setting("1", "")}, {}, kFailed});
    for (const char* nothing :
         {"{}", "[]", R"("x")", "null", R"({"mute":true})", R"({"soundOutput":"external_arc"})"}) {
        expect({"powerStateMute", nothing});
        EXPECT_FALSE(mBackend->mPowerStateHeadphoneMute);
    }
}

TEST_F(SettingsTest, DetectionMutesTheHeadphone)
{
    const auto setting = [](const std::string& mute) {
        return kHeadphone.info("setHeadphoneDetectionMute",
                               "Setting headphone detection mute to " + mute);
    };
    const auto called = [](const std::string& mute) {
        return kHeadphone.info("setHeadphoneDetectionMute",
                               "Called setHeadphoneDetectionMute muteStatus " + mute);
    };
    const std::string sub = "subcpu_misc_Set_HPMuteOnOff true";
    const Lines muting = {
        setting("1"),
        called("1"),
        kVolume.info("executeMuteExtSpeaker", "executeMuteExtSpeaker is called / muteStatus = 1"),
        kHeadphone.info("executeMuteHeadphone", "Called execute muteHeadphone muteStatus 1"),
        kHeadphone.info("isValidHeadphoneMute", "isValidHeadphoneMute check 0 1 0"),
    };
    expect({"headphoneDetectionMute", R"({"mute":true})", muting, {sub, sub, "Mute Output 16 1"}});
    EXPECT_TRUE(mBackend->mHeadphoneDetectionMute);
    expect({"headphoneDetectionMute",
            R"({"mute":true})",
            all({muting,
                 {refusedByDriver(),
                  kControl.error("setMuteControlElement",
                                 "Did not able to set the element: Mute Output on 32")}}),
            {sub, sub, "Mute Output 16 1 -> -5"},
            kFailed,
            {"Mute Output"}});
    for (const char* mute : {"false", "null", R"("true")", "1", "[]", "{}"}) {
        expect(
            {"headphoneDetectionMute",
             member("mute", mute),
             {setting("0"), called("0"),
              kHeadphone.info("setHeadphoneDetectionMute",
                              "Headphone timer has not been make yet, so skip headphone unmute")}});
        EXPECT_FALSE(mBackend->mHeadphoneDetectionMute);
    }
    for (const char* nothing : {"{}", "[]", "true", "null", R"({"Mute":true})"}) {
        expect({"headphoneDetectionMute", nothing, {setting("0")}, {}, kFailed});
        EXPECT_FALSE(mBackend->mHeadphoneDetectionMute);
    }
}

// --- Payloads without keys

TEST_F(SettingsTest, APayloadThatIsNoObjectHasNoKeys)
{
    for (const Category& category : kCategories) {
        const std::string name = category.name;
        if (name == "modelConfig" || name == "contiConfig" || name == "sound" ||
            name == "smartSoundMode" || name == "hardwareConfig")
            continue; // these want an object, and have tests of their own
        const Outcome expected = outcome(name, JValue::object());
        for (const char* payload : {"[]", R"("on")", "5", "true", "null", "[[]]"})
            EXPECT_EQ(outcome(name, json(payload)), expected) << name << " " << payload;
    }
}

TEST_F(SettingsTest, AMissingPayloadIsANull)
{
    EXPECT_EQ(outcome("audioVideoSync", JValue::invalid()), outcome("audioVideoSync", JValue{}));
    EXPECT_EQ(outcome("dimension", JValue::invalid()), outcome("dimension", JValue{}));
    restart();
    EXPECT_EQ(mBackend->setSettings("dimension", JValue::invalid()), kDone);
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", "null")));
}

// --- The store

TEST_F(SettingsTest, ARepeatedCategoryIsReplacedAndMovesToTheEnd)
{
    for (const char* category : {"dimension", "audioVideoSync", "option"})
        set(category, R"({"correctionValue":1})");
    set("audioVideoSync", R"({"correctionValue":2})");
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", R"({"correctionValue":1})"),
                                      storedAs("option", R"({"correctionValue":1})"),
                                      storedAs("audioVideoSync", R"({"correctionValue":2})")));
    const Lines lines = logLines();
    ASSERT_THAT(lines, SizeIs(6));
    EXPECT_EQ(lines[3],
              kSettings.info("storeSettings", "Store settings key for category audioVideoSync"));
    EXPECT_EQ(lines[4],
              kSettings.debug("storeSettings", "Found the Category change only Value Delete the "
                                               "same and add new one in Vector"));
    EXPECT_EQ(lines[5], remembered("audioVideoSync", stored().back()));
}

TEST_F(SettingsTest, AFailedRequestLeavesWhatWasStoredBefore)
{
    set("audioVideoSync", R"({"correctionValue":1})");
    set("dimension", "{}");
    const Texts before = stored();
    injectMiddleware("delay.setFactoryDelay", 7);
    EXPECT_EQ(set("audioVideoSync", R"({"correctionValue":2})"), kFailed);
    EXPECT_EQ(set("audioVideoSync", "{}"), kFailed);
    EXPECT_EQ(stored(), before);
}

TEST_F(SettingsTest, OnlyTheFirstOfTwoEqualCategoriesIsReplaced)
{
    for (const char* category : {"a", "b", "a"}) {
        JValue element = JValue::object();
        element.put("category", category);
        element.put("value", 1);
        mBackend->mSettingsList.push_back(element);
    }
    mBackend->storeSettings("a", json("2"));
    EXPECT_THAT(stored(), ElementsAre(storedAs("b", "1"), storedAs("a", "1"), storedAs("a", "2")));
}

struct RemovalRow {
    const char* payload;
    const char* value;
    Texts removed; // what the value looks like after each removal
};

TEST_F(SettingsTest, AnswersOfTheCallerAreNotStored)
{
    const std::vector<RemovalRow> rows = {
        {R"({"correctionValue":10,"returnValue":true,"subscribe":false})",
         R"({"correctionValue":10})",
         {R"({"correctionValue":10,"subscribe":false})", R"({"correctionValue":10})"}},
        {R"({"subscribe":null,"a":1})", R"({"a":1})", {R"({"a":1})"}},
        {R"({"a":1,"returnValue":{"b":2}})", R"({"a":1})", {R"({"a":1})"}},
        {R"({"returnValue":1,"subscribe":2})", "{}", {R"({"subscribe":2})", "{}"}},
        {R"({"a":{"returnValue":1,"subscribe":2}})",
         R"({"a":{"returnValue":1,"subscribe":2}})",
         {}},
        {R"(["returnValue","subscribe"])", R"(["returnValue","subscribe"])", {}},
        {"null", "null", {}},
    };
    for (const RemovalRow& row : rows) {
        restart();
        const JValue payload = json(row.payload);
        EXPECT_EQ(mBackend->setSettings("dimension", payload), kDone);
        EXPECT_EQ(payload.stringify(), row.payload);
        EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", row.value)));
        Lines lines = {
            kDispatch.info("setSettings",
                           "category dimension Payload received is " + std::string{row.payload}),
            other("dimension"),
            kSettings.info("storeSettings", "Store settings key for category dimension")};
        for (const std::string& text : row.removed)
            lines.push_back(shortened(text));
        lines.push_back(remembered("dimension", stored().front()));
        EXPECT_EQ(logLines(), lines) << row.payload;
    }
}

TEST_F(SettingsTest, TheCallerKeepsItsPayloadAndTheStoreItsCopy)
{
    JValue payload = json(R"({"a":{"b":[1]},"returnValue":true})");
    EXPECT_EQ(mBackend->setSettings("dimension", payload), kDone);
    EXPECT_EQ(payload.stringify(), R"({"a":{"b":[1]},"returnValue":true})");
    payload["a"]["b"].append(2);
    payload.put("c", 3);
    EXPECT_THAT(stored(), ElementsAre(storedAs("dimension", R"({"a":{"b":[1]}})")));
}

TEST_F(SettingsTest, TheCapabilityIsTheBackendsOwn)
{
    JValue payload = json(R"({"earcCapability":["DD"]})");
    EXPECT_EQ(mBackend->setSettings("external_arc", payload), kDone);
    payload["earcCapability"].append("DD+");
    EXPECT_EQ(mBackend->mEarcCapability.stringify(), R"(["DD"])");
}

// --- What the facade makes of an exception

TEST_F(SettingsTest, AnUnreadableVolumeEndsTheRequestAtTheFacade)
{
    configureBackend("TV");
    kepClient* client = kepClient::getInstance();
    ASSERT_TRUE(client->initialize());
    for (const char* volume : {"loud", "", "99999999999999999999"}) {
        store().mQualityParamsMap = {{"audioDescriptionVolume", volume}};
        forget();
        const bool empty = std::string{volume}.empty();
        EXPECT_EQ(client->setSettings("sound", json(R"({"audioDescription":"on","avSync":"on"})")),
                  empty ? kDone : kFailed)
            << volume;
        EXPECT_THAT(told(), SizeIs(empty ? 1 : 0)) << volume;
    }
    EXPECT_EQ(client->setSettings("dimension", json("{}")), kDone);
}

} // namespace
