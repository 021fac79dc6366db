// SPDX-License-Identifier: Apache-2.0
// The catalogue shows what the television backend goes by: every name is held against what the
// backend does with it.
#include "kepcatalogue.h"

#include <algorithm>
#include <memory>
#include <set>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>

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

TEST_F(Catalogue, EverySettingsCategoryIsKnownToTheBackend)
{
    mBackend.setSoundOutput("tv_speaker");
    for (const kepSettingsCategory& category : kepCatalogue::settingsCategories()) {
        forget();
        mBackend.setSettings(category.name, JValue::object());
        // an unknown one leaves the line of the request and nothing else
        const bool handled = logLines().size() > 1 || category.keys.size() > 0;
        EXPECT_TRUE(handled || std::string{category.name} == "powerStateMute") << category.name;
    }
    EXPECT_THAT(kepCatalogue::settingsCategories(), SizeIs(33));
}
