// SPDX-License-Identifier: Apache-2.0
// The catalogue shows what the television backend goes by: every name is held against what the
// backend does with it.
#include "kepcatalogue.h"

#include <algorithm>
#include <memory>
#include <set>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>

#include "jsonvalues.h"
#include "tvbackendtest.h"

using testing::Each;
using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

namespace
{

class Catalogue : public TvBackendTest
{
};

/// Name and number of integers of each element that the card has.
std::set<std::pair<std::string, unsigned int>> elementsOfTheCard()
{
    snd_ctl_t* opened = nullptr;
    if (snd_ctl_open(&opened, "hw:0", SND_CTL_READONLY) < 0)
        return {};
    const std::unique_ptr<snd_ctl_t, int (*)(snd_ctl_t*)> card{opened, snd_ctl_close};
    snd_ctl_elem_list_t* list = nullptr;
    snd_ctl_elem_list_alloca(&list);
    snd_ctl_elem_list(card.get(), list);
    snd_ctl_elem_list_alloc_space(list, snd_ctl_elem_list_get_count(list));
    snd_ctl_elem_list(card.get(), list);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    std::set<std::pair<std::string, unsigned int>> found;
    for (unsigned int i = 0; i < snd_ctl_elem_list_get_used(list); ++i) {
        snd_ctl_elem_info_set_numid(info, snd_ctl_elem_list_get_numid(list, i));
        snd_ctl_elem_info(card.get(), info);
        found.emplace(snd_ctl_elem_info_get_name(info), snd_ctl_elem_info_get_count(info));
    }
    snd_ctl_elem_list_free_space(list);
    return found;
}

} // namespace

TEST_F(Catalogue, EveryNameOfAnOutputLeadsToIt)
{
    std::size_t names = 0;
    for (const kepSoundOutput& row : kepCatalogue::soundOutputs()) {
        for (const char* name : row.names)
            EXPECT_EQ(kepTVAudio::getSoundOutputResourceId(name), row.output) << name;
        names += row.names.size();
    }
    EXPECT_EQ(names, 16u);
}

TEST_F(Catalogue, ExactlyTheSelectableOutputsCanBeSelected)
{
    for (const kepSoundOutput& row : kepCatalogue::soundOutputs())
        for (const char* name : row.names) {
            EXPECT_EQ(mBackend.setSoundOutput(name), row.selectable ? kDone : kFailed) << name;
            EXPECT_EQ(mBackend.isValidSoundout() && mBackend.getCurrentSoundout() == row.output,
                      row.selectable)
                << name;
        }
}

TEST_F(Catalogue, AnOutputWithAVolumeOfItsOwnPassesItOnAndOthersDoNot)
{
    for (const kepSoundOutput& row : kepCatalogue::soundOutputs())
        for (const char* name : row.names) {
            forget();
            mBackend.setOutputVolume(name, 20);
            EXPECT_EQ(!told().empty(), row.hasVolume) << name;
        }
}

TEST_F(Catalogue, AnOutputWithAMuteOfItsOwnPassesItOnAndOthersDoNot)
{
    for (const kepSoundOutput& row : kepCatalogue::soundOutputs())
        for (const char* name : row.names) {
            forget();
            mBackend.setOutputMute(name, true);
            EXPECT_EQ(!told().empty(), row.hasMute) << name;
        }
}

TEST_F(Catalogue, TheMembersAreWhatIsOpened)
{
    for (const kepSoundOutput& row : kepCatalogue::soundOutputs()) {
        if (!row.selectable)
            continue;
        mBackend.mCurrentSoundout = KEP_AUDIO_NO_OUTPUT;
        forget();
        mBackend.setSoundOutput(row.names[0]);
        std::vector<unsigned int> opened;
        for (const ControlEvent& event : controlEvents())
            if (event.what == "Sndout Open")
                opened.push_back(static_cast<unsigned int>(event.values[0]));
        std::vector<unsigned int> members;
        for (const KEP_AUDIO_SNDOUT_T member : row.members)
            members.push_back(kepTVAudio::getSoundOutputCommonType(member));
        EXPECT_EQ(opened, members) << row.names[0];
        EXPECT_THAT(members, Each(Gt(0u))) << row.names[0];
    }
}

TEST_F(Catalogue, EverySourceBehindEachOfItsSinksIsItsResource)
{
    for (const kepInputSource& row : kepCatalogue::inputSources()) {
        for (const char* sink : {"MAIN", "SUB", "ALSA"}) {
            const bool listed =
                std::find(row.sinks.begin(), row.sinks.end(), std::string{sink}) != row.sinks.end();
            EXPECT_EQ(kepTVAudio::getResourceId(row.source, sink),
                      listed ? row.resource : KEP_AUDIO_RESOURCE_INVALID)
                << row.source << " " << sink;
        }
        EXPECT_EQ(kepTVAudio::audioResourceIdToIndex(row.resource), row.driverIndex);
        EXPECT_EQ(kepTVAudio::audioResourceIdToPort(row.resource), row.driverPort);
    }
    EXPECT_THAT(kepCatalogue::inputSources(), SizeIs(12));
}

TEST_F(Catalogue, TheControlElementsAreThoseOfTheDriver)
{
    std::vector<std::pair<std::string, unsigned int>> listed;
    for (const kepControlElement& element : kepCatalogue::controlElements())
        listed.emplace_back(element.name, static_cast<unsigned int>(element.integers.size()));
    EXPECT_THAT(elementsOfTheCard(), UnorderedElementsAreArray(listed));
}

TEST_F(Catalogue, EveryIntegerThatIsNotNamedHasARange)
{
    for (const kepControlElement& element : kepCatalogue::controlElements()) {
        for (const kepControlInteger& integer : element.integers) {
            EXPECT_LE(integer.minimum, integer.maximum) << element.name << " " << integer.name;
            EXPECT_TRUE(integer.numbers == nullptr || !integer.numbers->empty()) << element.name;
        }
    }
}

TEST_F(Catalogue, TheBuildIsForTheTelevisionThatItWasConfiguredFor)
{
    EXPECT_STREQ(kepCatalogue::build().socKey, "Q27R5");
    EXPECT_STREQ(kepCatalogue::build().configurationFolder, "/etc/orva/kep");
    EXPECT_STREQ(kepCatalogue::build().card, "hw:0");
}

// --- Payloads

namespace
{

/// A value such as the key takes.
JValue sample(const kepKey& key)
{
    switch (key.type) {
    case KEP_VALUE_STRING:
        return key.values.empty() ? "tv_speaker" : key.values[0];
    case KEP_VALUE_BOOL:
        return true;
    case KEP_VALUE_NUMBER:
        return 7;
    case KEP_VALUE_ARRAY:
        return arrayOf({key.values.empty() ? "text" : key.values[0]});
    case KEP_VALUE_OBJECT:
        return JValue::object();
    case KEP_VALUE_ANY:
        return "anything";
    }
    return {};
}

/// All the keys that are needed, but for one.
JValue needed(kepList<kepKey> keys, const std::string& leftOut = "")
{
    JValue payload = JValue::object();
    for (const kepKey& key : keys)
        if (key.needed && key.name != leftOut)
            payload.put(key.name, sample(key));
    return payload;
}

JValue plus(const JValue& payload, const std::string& key, const JValue& value)
{
    JValue more = payload.deepCopy();
    more.put(key, value);
    return more;
}

} // namespace

class Payloads : public TvTest
{
protected:
    /// All that a request brings about, on a backend of its own whose output is the sound bar: what
    /// it answers, what the television is told and what is logged, but for lines that show the
    /// payload.
    template <typename Request>
    Texts outcome(Request request, const char* output = "qnSoundSync")
    {
        OpenBackend& backend = freshBackend();
        backend.setSoundOutput(output);
        forget();
        Texts all = {request(backend)};
        for (const std::string& event : told())
            all.push_back(event);
        for (const LogLine& line : logLines())
            if (line.text.find_first_of("{[") == std::string::npos)
                all.push_back(line.origin + " " + line.text);
        return all;
    }

    Texts setting(const std::string& name, const JValue& payload)
    {
        return outcome([&](OpenBackend& backend) {
            const unsigned int result = backend.setSettings(name, payload);
            backend.setBroadcastSystem(); // which the start-up would do
            return std::to_string(result);
        });
    }

    Texts report(const JValue& pipelineInfo, const JValue& categoryInfo,
                 const char* type = "setAudioInputInfo")
    {
        const JValue attribute =
            plus(plus(with("pipelineInfo", pipelineInfo), "categoryInfo", categoryInfo),
                 "requestType", type);
        return outcome(
            [&](OpenBackend& backend) {
                return std::to_string(backend.setQualityAttribute(attribute));
            },
            "external_arc");
    }
};

TEST_F(Payloads, OfEveryCategoryAreAppliedUnlessItIsAlwaysRefused)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories())
        EXPECT_EQ(setting(row.name, needed(row.keys))[0], row.supported ? "0" : "2") << row.name;
    EXPECT_THAT(kepCatalogue::settingsCategories(), SizeIs(33));
}

TEST_F(Payloads, AreListedByGetSettingsWhereTheCategoryIsStored)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories()) {
        OpenBackend& backend = freshBackend();
        backend.setSoundOutput("qnSoundSync");
        backend.setSettings(row.name, needed(row.keys));
        EXPECT_EQ(backend.mSettingsList.size(), row.stored ? 1u : 0u) << row.name;
    }
}

TEST_F(Payloads, FailOrDoNothingWithoutAKeyThatIsNeeded)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories())
        for (const kepKey& key : row.keys) {
            if (!key.needed)
                continue;
            const Texts without = setting(row.name, needed(row.keys, key.name));
            const bool silent = std::string{row.name} == "powerStateMute";
            EXPECT_EQ(without[0], silent ? "0" : "2") << row.name << " " << key.name;
            EXPECT_NE(without, setting(row.name, needed(row.keys))) << row.name << " " << key.name;
        }
}

TEST_F(Payloads, ChangeWhatHappensByEachKeyThatMayBeLeftOut)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories())
        for (const kepKey& key : row.keys)
            if (!key.needed) {
                EXPECT_NE(setting(row.name, needed(row.keys)),
                          setting(row.name, plus(needed(row.keys), key.name, sample(key))))
                    << row.name << " " << key.name;
            }
}

TEST_F(Payloads, AreRefusedForAnyTextButThoseListedWhereOnlyThoseAreTaken)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories())
        for (const kepKey& key : row.keys) {
            if (!key.onlyThose)
                continue;
            for (const char* value : key.values)
                EXPECT_EQ(setting(row.name, plus(needed(row.keys), key.name, value))[0], "0")
                    << row.name << " " << value;
            EXPECT_EQ(setting(row.name, plus(needed(row.keys), key.name, "another"))[0], "2")
                << row.name << " " << key.name;
        }
}

TEST_F(Payloads, ReachTheReadersOfSoundQualityKeys)
{
    const JValue none = JValue::object();
    const Texts nothing = setting("sound", none);
    for (const kepQualityKeys& reader : kepCatalogue::soundQualityKeys()) {
        const std::string name = reader.reader;
        for (const kepKey& key : reader.keys) {
            const Texts changed = setting("sound", plus(none, key.name, sample(key)));
            EXPECT_NE(changed, nothing) << key.name;
            const bool reached = std::any_of(changed.begin(), changed.end(), [&](const auto& text) {
                return text.starts_with(name + ".") || text.starts_with("keptv" + name);
            });
            EXPECT_EQ(reached, name != "television") << name << " " << key.name;
        }
    }
}

TEST_F(Payloads, OfTheCategoriesThatTakeQualityKeysReachTheSoundEngine)
{
    for (const kepSettingsCategory& row : kepCatalogue::settingsCategories()) {
        const Texts all = setting(row.name, plus(needed(row.keys), "soundMode", "cinema"));
        const bool reached =
            std::find(all.begin(), all.end(), R"(soundengine.setSoundMode "cinema")") != all.end();
        EXPECT_EQ(reached, row.takesQualityKeys) << row.name;
    }
}

TEST_F(Payloads, OfQueriesChangeTheAnswerByEachKey)
{
    for (const kepQuery& query : kepCatalogue::queries()) {
        const auto ask = [&](const JValue& request) {
            return outcome([&](OpenBackend& backend) {
                backend.setSettings("dimension", JValue::object()); // something is stored
                forget();
                return backend.getSettings(query.name, request).stringify();
            });
        };
        JValue whole = JValue::object();
        for (const kepKey& key : query.keys)
            whole.put(key.name, sample(key));
        // "[]" is what a category answers that nobody knows
        EXPECT_TRUE(!query.keys.empty() || ask(whole)[0] != "[]") << query.name;
        for (const kepKey& key : query.keys) {
            JValue part = whole.deepCopy();
            part.remove(key.name);
            EXPECT_NE(ask(part), ask(whole)) << query.name << " " << key.name;
        }
    }
}

TEST_F(Payloads, OfAConnectionDecideOnTheMainAudioByEachValue)
{
    const auto connected = [&](const JValue& attribute) {
        return outcome([&](OpenBackend& backend) {
            return std::to_string(backend.connectInput("ADEC0", "MAIN", attribute));
        });
    };
    const JValue none = JValue::object();
    for (const kepKey& key : kepCatalogue::pipelineAttributeKeys())
        for (const char* value : key.values)
            EXPECT_NE(connected(none),
                      connected(plus(none, key.name,
                                     key.type == KEP_VALUE_ARRAY ? arrayOf({value}) : value)))
                << key.name << " " << value;
}

TEST_F(Payloads, OfAReportAreTakenByEachRequestTypeAndNoOther)
{
    const JValue pipeline = with("pipelineId", "1");
    for (const kepRequestType& type : kepCatalogue::requestTypes())
        EXPECT_EQ(report(pipeline, JValue::object(), type.name)[0], "0") << type.name;
    EXPECT_EQ(report(pipeline, JValue::object(), "another")[0], "2");
}

TEST_F(Payloads, OfAReportChangeWhatHappensByEachKey)
{
    const auto reported = [&](const JValue& attribute) {
        return outcome([&](OpenBackend& backend) {
            return std::to_string(backend.setQualityAttribute(attribute));
        });
    };
    JValue whole = JValue::object();
    for (const kepKey& key : kepCatalogue::qualityAttributeKeys())
        whole.put(key.name, sample(key));
    whole.put("pipelineInfo", with("pipelineId", "1"));
    EXPECT_EQ(reported(whole)[0], "0");
    for (const kepKey& key : kepCatalogue::qualityAttributeKeys()) {
        JValue part = whole.deepCopy();
        part.remove(key.name);
        EXPECT_NE(reported(part), reported(whole)) << key.name;
        EXPECT_TRUE(!key.needed || reported(part)[0] == "2") << key.name;
    }
}

TEST_F(Payloads, OfAPipelineChangeWhatHappensByEachKey)
{
    const JValue none = JValue::object();
    const JValue pipeline = needed(kepCatalogue::pipelineInfoKeys());
    for (const kepKey& key : kepCatalogue::pipelineInfoKeys())
        EXPECT_NE(report(pipeline, none),
                  report(key.needed ? none : plus(pipeline, key.name, sample(key)), none))
            << key.name;
    const JValue known = plus(pipeline, "resource", "ADEC0");
    for (const kepKey& key : kepCatalogue::categoryInfoKeys())
        EXPECT_NE(report(known, none, ""), report(known, with(key.name, sample(key)), ""))
            << key.name;
}

// --- Texts that are told apart

TEST_F(Catalogue, EveryDigitalModeHasNumbersAndAnotherTextHasNone)
{
    const kepQualityKeys television = kepCatalogue::soundQualityKeys()[0];
    ASSERT_STREQ(television.keys[0].name, "soundOutputDigital");
    EXPECT_THAT(television.keys[0].values, SizeIs(3));
    for (const char* mode : television.keys[0].values) {
        EXPECT_NE(mBackend.getSoundOutputOpticMode(mode), 0) << mode;
        EXPECT_NE(mBackend.getSoundOutputArcMode(mode), 0) << mode;
    }
    EXPECT_EQ(mBackend.getSoundOutputOpticMode("another"), 0);
}

TEST_F(Catalogue, EveryTextAboutTheReceiverMatters)
{
    const kepSettingsCategory arc = *std::find_if(
        kepCatalogue::settingsCategories().begin(), kepCatalogue::settingsCategories().end(),
        [](const kepSettingsCategory& row) { return std::string{row.name} == "external_arc"; });
    ASSERT_THAT(arc.keys, SizeIs(4));
    const kepKey& activation = arc.keys[0];
    const kepKey& profile = arc.keys[1];
    const kepKey& capability = arc.keys[2];

    const int without = mBackend.getAutoArcMode();
    for (const char* value : profile.values) {
        mBackend.mArcProfile = value;
        EXPECT_NE(mBackend.getAutoArcMode(), without) << value;
    }
    for (const char* value : activation.values) {
        forget();
        mBackend.setSettings("external_arc", with("arcActivation", value));
        EXPECT_THAT(told(), SizeIs(2)) << value;
    }
    const auto formats = [&](const JValue& capabilities) {
        mBackend.mEarcCapability = capabilities;
        forget();
        for (const char* codec :
             {"truehd", "dts_hd_ma", "mat", "eac3", "ac3", "dts", "aac", "pcm"}) {
            store().mAvParamsMap["codec"] = codec;
            mBackend.setEArcOutputTypeForPassThrough();
        }
        return told();
    };
    const Texts none = formats(JValue::array());
    for (const char* value : capability.values)
        EXPECT_NE(formats(arrayOf({value})), none) << value;
}
