// SPDX-License-Identifier: Apache-2.0
// The virtual cards, as every client of libasound sees them: what they hold, and writes.
#include <cerrno>
#include <climits>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>

#include "journal.h"
#include "virtualcardtest.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace
{

template <std::size_t Size>
void expectElements(const char* cardName, const ElementRow (&rows)[Size])
{
    const ControlPtr card = opened(cardName);
    std::vector<ElementRow> found;
    std::vector<Id> ids = elementsOf(card.get());
    for (const Id& id : ids) {
        EXPECT_EQ(id.interface, SND_CTL_ELEM_IFACE_MIXER) << id.name;
        EXPECT_EQ(id.index, 0U) << id.name;
        const Information info = information(card.get(), Id{id.name});
        EXPECT_EQ(info.status, 0) << id.name;
        EXPECT_EQ(info.interface, SND_CTL_ELEM_IFACE_MIXER) << id.name;
        EXPECT_TRUE(info.readable && info.writable) << id.name;
        found.push_back({id.name.c_str(), info.type, info.count, info.minimum, info.maximum});
    }
    EXPECT_THAT(found, UnorderedElementsAreArray(rows));
}

} // namespace

// --- What there is

TEST_F(VirtualCard, TheTelevisionHoldsTheElementsOfItsDriver)
{
    expectElements("hw:0", kDriver);
}

TEST_F(VirtualCard, TheMixerHoldsASwitchAndItsVolumes)
{
    expectElements("default", kMixer);
}

TEST_F(VirtualCard, EveryValueIsZeroAtFirst)
{
    const ControlPtr television = opened("hw:0");
    for (const ElementRow& row : kDriver)
        EXPECT_THAT(valuesOf(television.get(), row.name, row.count), Each(0)) << row.name;
    const ControlPtr mixer = opened("default");
    for (const ElementRow& row : kMixer)
        EXPECT_THAT(valuesOf(mixer.get(), row.name, row.count), Each(0)) << row.name;
}

TEST_F(VirtualCard, AnElementIsFoundByItsNumberToo)
{
    const ControlPtr card = opened("hw:0");
    for (const Id& id : elementsOf(card.get())) {
        EXPECT_EQ(information(card.get(), byNumber(id.number)).name, id.name);
        EXPECT_GE(writeTo(card.get(), byNumber(id.number), {7}), 0);
        EXPECT_EQ(valueOf(card.get(), id.name), 7) << id.name;
    }
}

TEST_F(VirtualCard, TheListMayBeAskedForInPieces)
{
    const ControlPtr card = opened("default");
    std::vector<Id> found;
    EXPECT_EQ(list(card.get(), 2, 0, found), 0);
    EXPECT_EQ(list(card.get(), 2, 2, found), 0);
    EXPECT_EQ(list(card.get(), 2, 4, found), 0);
    std::set<std::string> names;
    for (const Id& id : found)
        names.insert(id.name);
    EXPECT_EQ(found.size(), std::size(kMixer));
    EXPECT_EQ(names.size(), std::size(kMixer));
}

TEST_F(VirtualCard, AnUnknownCardIsNotThere)
{
    for (const char* name : {"hw:1", "hw:00", "hw:-1", "nosuch"})
        EXPECT_EQ(openStatus(name), -ENOENT) << name;
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(VirtualCard, TheMixerIsReachedByItsOwnNameOnly)
{
    EXPECT_EQ(openStatus("hw:default"), -ENOENT);
}

TEST_F(VirtualCard, AnUnknownElementIsNotThere)
{
    const ControlPtr card = opened("default");
    Id otherInterface{"Softmaster"};
    otherInterface.interface = SND_CTL_ELEM_IFACE_PCM;
    Id otherIndex{"Softmaster"};
    otherIndex.index = 1;
    const Id unknown[] = {"Softmaster2",  "softmaster", "Softmaste", "Sndout Open",
                          otherInterface, otherIndex,   byNumber(6), byNumber(UINT_MAX)};
    for (const Id& id : unknown) {
        Values values(1);
        EXPECT_EQ(information(card.get(), id).status, -ENOENT) << id.name << id.number;
        EXPECT_EQ(readFrom(card.get(), id, values), -ENOENT) << id.name << id.number;
        EXPECT_EQ(writeTo(card.get(), id, {1}), -ENOENT) << id.name << id.number;
    }
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(VirtualCard, EachCardHasElementsOfItsOwn)
{
    EXPECT_EQ(information(opened("hw:0").get(), "Softmaster").status, -ENOENT);
    EXPECT_EQ(information(opened("default").get(), "Sndout Open").status, -ENOENT);
}

// --- Writes

TEST_F(VirtualCard, KeepsTheValuesOfEveryElementApart)
{
    const ControlPtr television = opened("hw:0");
    const ControlPtr mixer = opened("default");
    const auto valuesFor = [](std::size_t row, std::size_t count) {
        Values values;
        for (std::size_t i = 0; i < count; ++i)
            values.push_back(static_cast<long>(10 * row + i));
        return values;
    };
    for (std::size_t row = 0; row < std::size(kDriver); ++row)
        EXPECT_GE(writeTo(television.get(), kDriver[row].name, valuesFor(row, kDriver[row].count)),
                  0);
    EXPECT_EQ(writeTo(mixer.get(), "Master Playback Switch", {1}), 1);
    for (std::size_t row = 1; row < std::size(kMixer); ++row)
        EXPECT_EQ(writeTo(mixer.get(), kMixer[row].name, valuesFor(row, 1)), 1);

    for (std::size_t row = 0; row < std::size(kDriver); ++row)
        EXPECT_EQ(valuesOf(television.get(), kDriver[row].name, kDriver[row].count),
                  valuesFor(row, kDriver[row].count))
            << kDriver[row].name;
    EXPECT_EQ(valueOf(mixer.get(), "Master Playback Switch"), 1);
    for (std::size_t row = 1; row < std::size(kMixer); ++row)
        EXPECT_EQ(valuesOf(mixer.get(), kMixer[row].name, 1), valuesFor(row, 1))
            << kMixer[row].name;
}

TEST_F(VirtualCard, AWriteIsSeenThroughEveryHandle)
{
    const ControlPtr before = opened("default");
    EXPECT_EQ(writeTo(opened("default").get(), "Softmaster1", {40}), 1);
    EXPECT_EQ(valueOf(before.get(), "Softmaster1"), 40);
    EXPECT_EQ(valueOf(opened("default").get(), "Softmaster1"), 40);
}

TEST_F(VirtualCard, AWriteIsReadInAnotherProcess)
{
    Neighbour neighbour{[] {
        const ControlPtr card = opened("hw:0");
        return valuesOf(card.get(), "Gain Input", 3) == Values{1, 2, -3} &&
               writeTo(card.get(), "Gain Output", {4, 5}) == 1;
    }};
    const ControlPtr card = opened("hw:0");
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {1, 2, -3}), 1);
    EXPECT_TRUE(neighbour.works());
    EXPECT_THAT(valuesOf(card.get(), "Gain Output", 2), ElementsAre(4, 5));
}

TEST_F(VirtualCard, AWriteIsReportedWithAllValuesOfItsElement)
{
    EXPECT_EQ(writeTo(opened("hw:0").get(), "Sndout EARC Outputtype", {2, 1}), 1);
    EXPECT_EQ(writeTo(opened("default").get(), "Master Playback Switch", {1}), 1);
    EXPECT_THAT(
        eventTexts(),
        ElementsAre(
            R"({"event":"control","card":"hw:0","element":"Sndout EARC Outputtype","values":[2,1,0,0,0],"status":0})",
            R"({"event":"control","card":"default","element":"Master Playback Switch","values":[1],"status":0})"));
}

TEST_F(VirtualCard, TheEventNamesTheCardAsItWasOpened)
{
    for (const char* name : {"hw:0", "hw", "hw:CARD=0"})
        EXPECT_GE(writeTo(opened(name).get(), "Sndout Open", {1}), 0);
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Sndout Open", {1}, 0},
                                             ControlEvent{"hw", "Sndout Open", {1}, 0},
                                             ControlEvent{"hw:CARD=0", "Sndout Open", {1}, 0}));
}

TEST_F(VirtualCard, ReadingReportsNothing)
{
    const ControlPtr card = opened("hw:0");
    elementsOf(card.get());
    information(card.get(), "Sndout Open");
    valueOf(card.get(), "Sndout Open");
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(VirtualCard, AWriteTellsWhetherItChangedAnything)
{
    const ControlPtr card = opened("hw:0");
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {0, 0, 0}), 0);
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {0, 0, 1}), 1);
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {0, 0, 1}), 0);
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {1, 0, 1}), 1);
    const ControlPtr mixer = opened("default");
    EXPECT_EQ(writeTo(mixer.get(), "Master Playback Switch", {0}), 0);
    EXPECT_EQ(writeTo(mixer.get(), "Master Playback Switch", {1}), 1);
    EXPECT_EQ(writeTo(mixer.get(), "Master Playback Switch", {1}), 0);
    for (const ControlEvent& event : controlEvents())
        EXPECT_EQ(event.status, 0) << event;
}

TEST_F(VirtualCard, AWriteOfTheLimitsIsTaken)
{
    const ControlPtr mixer = opened("default");
    EXPECT_EQ(writeTo(mixer.get(), "Softmaster", {100}), 1);
    EXPECT_EQ(valueOf(mixer.get(), "Softmaster"), 100);
    EXPECT_EQ(writeTo(mixer.get(), "Softmaster", {0}), 1);
    const ControlPtr television = opened("hw:0");
    EXPECT_EQ(writeTo(television.get(), "Gain Output", {INT_MIN, INT_MAX}), 1);
    EXPECT_THAT(valuesOf(television.get(), "Gain Output", 2), ElementsAre(INT_MIN, INT_MAX));
}

TEST_F(VirtualCard, AWriteOutOfRangeIsRefusedAndReported)
{
    struct Row {
        const char* element;
        long kept;
        int refused;
    };
    constexpr Row kRows[] = {
        {"Softmaster", 40, 101},
        {"Softmaster", 41, -1},
        {"Master Playback Volume", 42, 255},
        {"Master Playback Switch", 1, 2},
        {"Master Playback Switch", 0, -1},
    };
    const ControlPtr card = opened("default");
    for (const Row& row : kRows) {
        EXPECT_GE(writeTo(card.get(), row.element, {row.kept}), 0);
        forget();
        EXPECT_EQ(writeTo(card.get(), row.element, {row.refused}), -EINVAL) << row.refused;
        EXPECT_EQ(valueOf(card.get(), row.element), row.kept) << row.element;
        EXPECT_THAT(controlEvents(),
                    ElementsAre(ControlEvent{"default", row.element, {row.refused}, -22}));
    }
}

TEST_F(VirtualCard, OneValueOutOfRangeKeepsAllOfThem)
{
    const ControlPtr card = opened("hw:0");
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {1, 2, 3}), 1);
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {4, 5, INT_MAX + 1L}), -EINVAL);
    EXPECT_EQ(writeTo(card.get(), "Gain Input", {INT_MIN - 1L, 5, 6}), -EINVAL);
    EXPECT_THAT(valuesOf(card.get(), "Gain Input", 3), ElementsAre(1, 2, 3));
}

TEST_F(VirtualCard, OpensAndClosesAreCounted)
{
    {
        const ControlPtr first = opened("hw:0");
        ControlPtr second = opened("default");
        EXPECT_EQ(virtualtv::cardHandles().opened, 2);
        EXPECT_EQ(virtualtv::cardHandles().closed, 0);
        second.reset();
        EXPECT_EQ(virtualtv::cardHandles().closed, 1);
    }
    EXPECT_EQ(virtualtv::cardHandles().opened, 2);
    EXPECT_EQ(virtualtv::cardHandles().closed, 2);
}

TEST_F(VirtualCard, AnOpenThatFailsIsNotCounted)
{
    openStatus("hw:1");
    injectCard("open", -EIO);
    openStatus("hw:0");
    EXPECT_EQ(virtualtv::cardHandles().opened, 0);
    EXPECT_EQ(virtualtv::cardHandles().closed, 0);
}
