// SPDX-License-Identifier: Apache-2.0
// The virtual cards, as every client of libasound sees them.
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "faults.h"
#include "journal.h"
#include "televisiontest.h"

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace
{

using Values = std::vector<long>;

// --- One element through libasound

struct Id {
    std::string name;
    snd_ctl_elem_iface_t interface = SND_CTL_ELEM_IFACE_MIXER;
    unsigned int index = 0;
    unsigned int number = 0; // 0: found by the others

    Id(const char* elementName) : name(elementName) {}
    Id(std::string elementName) : name(std::move(elementName)) {}
};

void fill(snd_ctl_elem_id_t* id, const Id& wanted)
{
    snd_ctl_elem_id_set_interface(id, wanted.interface);
    snd_ctl_elem_id_set_name(id, wanted.name.c_str());
    snd_ctl_elem_id_set_index(id, wanted.index);
    snd_ctl_elem_id_set_numid(id, wanted.number);
}

Id byNumber(unsigned int number)
{
    Id id{""};
    id.number = number;
    return id;
}

struct ControlCloser {
    void operator()(snd_ctl_t* handle) const noexcept { snd_ctl_close(handle); }
};
using ControlPtr = std::unique_ptr<snd_ctl_t, ControlCloser>;

struct HctlCloser {
    void operator()(snd_hctl_t* handle) const noexcept { snd_hctl_close(handle); }
};
using HctlPtr = std::unique_ptr<snd_hctl_t, HctlCloser>;

int openStatus(const std::string& card)
{
    snd_ctl_t* opened = nullptr;
    const int status = snd_ctl_open(&opened, card.c_str(), 0);
    const ControlPtr handle{opened};
    return status;
}

ControlPtr opened(const std::string& card)
{
    snd_ctl_t* handle = nullptr;
    const int status = snd_ctl_open(&handle, card.c_str(), 0);
    EXPECT_EQ(status, 0) << card;
    return ControlPtr{handle};
}

int writeTo(snd_ctl_t* card, const Id& id, const Values& values)
{
    snd_ctl_elem_id_t* identifier = nullptr;
    snd_ctl_elem_id_alloca(&identifier);
    fill(identifier, id);
    snd_ctl_elem_value_t* written = nullptr;
    snd_ctl_elem_value_alloca(&written);
    snd_ctl_elem_value_set_id(written, identifier);
    for (unsigned int i = 0; i < values.size(); ++i)
        snd_ctl_elem_value_set_integer(written, i, values[i]);
    return snd_ctl_elem_write(card, written);
}

/// Reads as many values as `values` holds.
int readFrom(snd_ctl_t* card, const Id& id, Values& values)
{
    snd_ctl_elem_id_t* identifier = nullptr;
    snd_ctl_elem_id_alloca(&identifier);
    fill(identifier, id);
    snd_ctl_elem_value_t* got = nullptr;
    snd_ctl_elem_value_alloca(&got);
    snd_ctl_elem_value_set_id(got, identifier);
    const int status = snd_ctl_elem_read(card, got);
    for (unsigned int i = 0; i < values.size(); ++i)
        values[i] = snd_ctl_elem_value_get_integer(got, i);
    return status;
}

/// The values of an element that can be read.
Values valuesOf(snd_ctl_t* card, const Id& id, std::size_t count)
{
    Values values(count, -99);
    EXPECT_EQ(readFrom(card, id, values), 0) << id.name;
    return values;
}

long valueOf(snd_ctl_t* card, const Id& id)
{
    return valuesOf(card, id, 1).front();
}

struct Information {
    int status = 0;
    std::string name;
    snd_ctl_elem_iface_t interface = SND_CTL_ELEM_IFACE_LAST;
    snd_ctl_elem_type_t type = SND_CTL_ELEM_TYPE_NONE;
    unsigned int count = 0;
    bool readable = false;
    bool writable = false;
    long minimum = 0;
    long maximum = 0;
};

Information information(snd_ctl_t* card, const Id& id)
{
    snd_ctl_elem_id_t* identifier = nullptr;
    snd_ctl_elem_id_alloca(&identifier);
    fill(identifier, id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_info_set_id(info, identifier);
    Information all;
    all.status = snd_ctl_elem_info(card, info);
    if (all.status < 0)
        return all;
    all.name = snd_ctl_elem_info_get_name(info);
    all.interface = snd_ctl_elem_info_get_interface(info);
    all.type = snd_ctl_elem_info_get_type(info);
    all.count = snd_ctl_elem_info_get_count(info);
    all.readable = snd_ctl_elem_info_is_readable(info) != 0;
    all.writable = snd_ctl_elem_info_is_writable(info) != 0;
    if (all.type == SND_CTL_ELEM_TYPE_INTEGER) {
        all.minimum = snd_ctl_elem_info_get_min(info);
        all.maximum = snd_ctl_elem_info_get_max(info);
    }
    return all;
}

/// Lists up to `space` identifiers from `offset` on.
int list(snd_ctl_t* card, unsigned int space, unsigned int offset, std::vector<Id>& found)
{
    snd_ctl_elem_list_t* elements = nullptr;
    snd_ctl_elem_list_alloca(&elements);
    snd_ctl_elem_list_set_offset(elements, offset);
    if (space > 0 && snd_ctl_elem_list_alloc_space(elements, space) < 0)
        return -ENOMEM;
    const int status = snd_ctl_elem_list(card, elements);
    for (unsigned int i = 0; status >= 0 && i < snd_ctl_elem_list_get_used(elements); ++i) {
        Id id{snd_ctl_elem_list_get_name(elements, i)};
        id.interface = snd_ctl_elem_list_get_interface(elements, i);
        id.index = snd_ctl_elem_list_get_index(elements, i);
        id.number = snd_ctl_elem_list_get_numid(elements, i);
        found.push_back(id);
    }
    snd_ctl_elem_list_free_space(elements);
    return status;
}

std::vector<Id> elementsOf(snd_ctl_t* card)
{
    std::vector<Id> found;
    EXPECT_EQ(list(card, 100, 0, found), 0);
    return found;
}

// --- Both ways through libasound, step by step

/// A way to work with one element; every step gives libasound's status.
class Way
{
public:
    virtual ~Way() = default;
    virtual int open(const char* card) = 0;
    virtual int load() = 0;
    virtual int info(const char* element) = 0;
    virtual int read(const char* element, Values& values) = 0;
    virtual int write(const char* element, const Values& values) = 0;
};

class ControlWay : public Way
{
public:
    int open(const char* card) override
    {
        snd_ctl_t* opened = nullptr;
        const int status = snd_ctl_open(&opened, card, 0);
        mCard.reset(opened);
        return status;
    }
    int load() override
    {
        std::vector<Id> found;
        return list(mCard.get(), 100, 0, found);
    }
    int info(const char* element) override { return information(mCard.get(), element).status; }
    int read(const char* element, Values& values) override
    {
        return readFrom(mCard.get(), element, values);
    }
    int write(const char* element, const Values& values) override
    {
        return writeTo(mCard.get(), element, values);
    }

private:
    ControlPtr mCard;
};

class HighLevelWay : public Way
{
public:
    int open(const char* card) override
    {
        snd_hctl_t* opened = nullptr;
        const int status = snd_hctl_open(&opened, card, 0);
        mCard.reset(opened);
        return status;
    }
    int load() override { return snd_hctl_load(mCard.get()); }
    int info(const char* element) override
    {
        snd_ctl_elem_info_t* info = nullptr;
        snd_ctl_elem_info_alloca(&info);
        return snd_hctl_elem_info(found(element), info);
    }
    int read(const char* element, Values& values) override
    {
        snd_ctl_elem_value_t* got = nullptr;
        snd_ctl_elem_value_alloca(&got);
        const int status = snd_hctl_elem_read(found(element), got);
        for (unsigned int i = 0; i < values.size(); ++i)
            values[i] = snd_ctl_elem_value_get_integer(got, i);
        return status;
    }
    int write(const char* element, const Values& values) override
    {
        snd_ctl_elem_value_t* written = nullptr;
        snd_ctl_elem_value_alloca(&written);
        for (unsigned int i = 0; i < values.size(); ++i)
            snd_ctl_elem_value_set_integer(written, i, values[i]);
        return snd_hctl_elem_write(found(element), written);
    }

private:
    snd_hctl_elem_t* found(const char* element)
    {
        snd_ctl_elem_id_t* identifier = nullptr;
        snd_ctl_elem_id_alloca(&identifier);
        fill(identifier, element);
        snd_hctl_elem_t* handle = snd_hctl_find_elem(mCard.get(), identifier);
        if (handle == nullptr)
            throw std::runtime_error{std::string{"no element "} + element};
        return handle;
    }

    HctlPtr mCard;
};

// --- Other processes

/// A process that has touched no card before, and does its work when it is told to.
class Neighbour
{
public:
    explicit Neighbour(const std::function<bool()>& work)
    {
        std::array<int, 2> ends{};
        std::array<int, 2> lives{}; // closed by the kernel when the process ends
        EXPECT_EQ(pipe(ends.data()), 0);
        EXPECT_EQ(pipe(lives.data()), 0);
        mProcess = fork();
        if (mProcess == 0) {
            virtualtv::listen({});
            close(ends[1]);
            char go = 0;
            const bool told = ::read(ends[0], &go, 1) == 1;
            _exit(told && work() ? 0 : 1);
        }
        close(ends[0]);
        close(lives[1]);
        mGo = ends[1];
        mLives = lives[0];
    }
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;
    ~Neighbour()
    {
        if (mProcess > 0)
            succeeds();
        close(mLives);
    }

    void start()
    {
        EXPECT_EQ(::write(mGo, "g", 1), 1);
        close(std::exchange(mGo, -1));
    }
    [[nodiscard]] bool endsWithin(int milliseconds) const
    {
        pollfd ended{mLives, POLLIN, 0};
        return poll(&ended, 1, milliseconds) != 0;
    }
    /// Waits for its end; true when it did its work well.
    bool succeeds()
    {
        if (mGo >= 0)
            close(std::exchange(mGo, -1));
        int status = 0;
        waitpid(std::exchange(mProcess, -1), &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    bool works()
    {
        start();
        return succeeds();
    }

private:
    pid_t mProcess = -1;
    int mGo = -1;
    int mLives = -1;
};

bool done(int status)
{
    return status >= 0;
}

// --- What the cards hold

struct ElementRow {
    const char* name;
    snd_ctl_elem_type_t type;
    unsigned int count;
    long minimum; // of integers
    long maximum;

    bool operator==(const ElementRow& other) const
    {
        return std::string{name} == other.name && type == other.type && count == other.count &&
               minimum == other.minimum && maximum == other.maximum;
    }
};

std::ostream& operator<<(std::ostream& stream, const ElementRow& row)
{
    return stream << row.name << " type " << row.type << " count " << row.count << " from "
                  << row.minimum << " to " << row.maximum;
}

constexpr snd_ctl_elem_type_t kBoolean = SND_CTL_ELEM_TYPE_BOOLEAN;
constexpr snd_ctl_elem_type_t kInteger = SND_CTL_ELEM_TYPE_INTEGER;

// clang-format off
constexpr ElementRow kDriver[] = {
    {"Sndout Connect",                  kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout Disconnect",               kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout Open",                     kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout Close",                    kInteger, 1, INT_MIN, INT_MAX},
    {"Mute Output",                     kInteger, 2, INT_MIN, INT_MAX},
    {"Mute Input",                      kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout MainAudio Output",         kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Optic QN",                 kInteger, 4, INT_MIN, INT_MAX},
    {"Sndout Optic LightOnOff",         kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout ARC OnOff",                kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout EARC OnOff",               kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout EARC Outputtype",          kInteger, 5, INT_MIN, INT_MAX},
    {"Sndout Spdif OutputType",         kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Spdif CategoryCode",       kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Spdif CopyProtectionInfo", kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout eAC3 ATMOS Encode OnOff",  kInteger, 1, INT_MIN, INT_MAX},
    {"Adec Dolby OTTMode",              kInteger, 2, INT_MIN, INT_MAX},
    {"Gain Input",                      kInteger, 3, INT_MIN, INT_MAX},
    {"Gain Output",                     kInteger, 2, INT_MIN, INT_MAX},
};
constexpr ElementRow kMixer[] = {
    {"Master Playback Switch", kBoolean, 1, 0, 0},
    {"Master Playback Volume", kInteger, 1, 0, 100},
    {"Softmaster",             kInteger, 1, 0, 100},
    {"Softmaster0",            kInteger, 1, 0, 100},
    {"Softmaster1",            kInteger, 1, 0, 100},
};
// clang-format on

class VirtualCard : public TelevisionTest
{
protected:
    [[nodiscard]] std::filesystem::path stateFile() const { return directory() / "cards.state"; }
    [[nodiscard]] std::string stateBytes() const
    {
        std::ostringstream bytes;
        bytes << std::ifstream{stateFile(), std::ios::binary}.rdbuf();
        return bytes.str();
    }
    void writeStateFile(const std::string& bytes) const
    {
        std::ofstream{stateFile(), std::ios::binary} << bytes;
    }
    /// A state file as another process leaves it, "Softmaster" at 40.
    void leaveStateFile() const
    {
        ASSERT_TRUE(Neighbour{[] {
                        return writeTo(opened("default").get(), "Softmaster", {40}) == 1;
                    }}.works());
    }
    [[nodiscard]] std::vector<std::string> eventTexts() const
    {
        std::vector<std::string> texts;
        for (const JValue& event : events())
            texts.push_back(event.stringify());
        return texts;
    }
};

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

// --- Faults at the stages of an access

namespace
{

struct StageRow {
    const char* name;
    int status;
};
constexpr StageRow kStages[] = {
    {"open", -ENODEV},
    {"load", -EIO},
    {"info", -EPERM},
    {"write", -EBUSY},
};

struct TargetRow {
    const char* label;
    const char* card;
    const char* element;
    std::vector<int> values;
};
const TargetRow kTargets[] = {
    {"Boolean", "default", "Master Playback Switch", {1}},
    {"Integer", "default", "Softmaster0", {40}},
    {"FirstInteger", "hw:0", "Sndout Connect", {1, 2, 3}},
};

enum class WayKind { Control, HighLevel };

// The parameters as they stand in the tests' names.
std::ostream& operator<<(std::ostream& stream, const StageRow& row)
{
    return stream << row.name;
}
std::ostream& operator<<(std::ostream& stream, const TargetRow& row)
{
    return stream << row.label;
}
std::ostream& operator<<(std::ostream& stream, WayKind way)
{
    return stream << (way == WayKind::Control ? "Control" : "HighLevel");
}

class FaultyCard : public VirtualCard,
                   public testing::WithParamInterface<std::tuple<WayKind, TargetRow, StageRow>>
{
protected:
    const TargetRow mTarget = std::get<TargetRow>(GetParam());
    const StageRow mStage = std::get<StageRow>(GetParam());
    const std::unique_ptr<Way> mWay = makeWay();

    /// One step, by the name of its stage.
    int step(const std::string& stage)
    {
        if (stage == "open")
            return mWay->open(mTarget.card);
        if (stage == "load")
            return mWay->load();
        if (stage == "info")
            return mWay->info(mTarget.element);
        return mWay->write(mTarget.element, {mTarget.values.begin(), mTarget.values.end()});
    }
    Values values()
    {
        Values values(mTarget.values.size(), -99);
        EXPECT_EQ(mWay->read(mTarget.element, values), 0);
        return values;
    }
    [[nodiscard]] ControlEvent failure() const
    {
        if (std::string{mStage.name} == "write")
            return {mTarget.card, mTarget.element, mTarget.values, mStage.status};
        return {mTarget.card, mStage.name, {}, mStage.status};
    }

private:
    static std::unique_ptr<Way> makeWay()
    {
        if (std::get<WayKind>(GetParam()) == WayKind::Control)
            return std::make_unique<ControlWay>();
        return std::make_unique<HighLevelWay>();
    }
};

std::string parameterName(const testing::TestParamInfo<FaultyCard::ParamType>& info)
{
    const auto& [way, target, stage] = info.param;
    std::ostringstream name;
    name << way << target << "_" << stage;
    return name.str();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Stages, FaultyCard,
                         testing::Combine(testing::Values(WayKind::Control, WayKind::HighLevel),
                                          testing::ValuesIn(kTargets), testing::ValuesIn(kStages)),
                         parameterName);

TEST_P(FaultyCard, FailsTheStepOfThatStageAndReportsItOnce)
{
    injectCard(mStage.name, mStage.status);
    for (const StageRow& row : kStages) {
        if (std::string{row.name} == mStage.name) {
            EXPECT_EQ(step(row.name), mStage.status);
            break;
        }
        EXPECT_TRUE(done(step(row.name))) << row.name;
    }
    EXPECT_THAT(controlEvents(), ElementsAre(failure()));
}

TEST_P(FaultyCard, FailsEveryTimeAndRecoversWhenCleared)
{
    for (const StageRow& row : kStages) {
        if (std::string{row.name} == mStage.name) {
            injectCard(mStage.name, mStage.status);
            EXPECT_EQ(step(row.name), mStage.status);
            EXPECT_EQ(step(row.name), mStage.status);
            EXPECT_THAT(controlEvents(), ElementsAre(failure(), failure()));
            clearInjections();
        }
        EXPECT_TRUE(done(step(row.name))) << row.name;
    }
    EXPECT_EQ(values(), Values(mTarget.values.begin(), mTarget.values.end()));
}

TEST_P(FaultyCard, LeavesEveryOtherStepAlone)
{
    EXPECT_TRUE(done(step("open")));
    EXPECT_TRUE(done(step("load")));
    injectCard(mStage.name, mStage.status);
    const bool writeFails = std::string{mStage.name} == "write";
    EXPECT_TRUE(std::string{mStage.name} == "info" || done(step("info")));
    EXPECT_TRUE(writeFails || done(step("write")));
    const ControlEvent written{mTarget.card, mTarget.element, mTarget.values, 0};
    EXPECT_EQ(values(), writeFails ? Values(mTarget.values.size(), 0)
                                   : Values(mTarget.values.begin(), mTarget.values.end()));
    EXPECT_EQ(controlEvents(),
              writeFails ? std::vector<ControlEvent>{} : std::vector<ControlEvent>{written});
}

TEST_P(FaultyCard, FailsOnlyTheCardThatWasMeant)
{
    const virtualtv::FaultPoint points[] = {
        virtualtv::FaultPoint::CardOpen, virtualtv::FaultPoint::CardLoad,
        virtualtv::FaultPoint::CardInfo, virtualtv::FaultPoint::CardWrite};
    for (const virtualtv::FaultPoint point : points)
        virtualtv::inject({point, "*", "another", -EIO, {}});
    for (const StageRow& row : kStages)
        EXPECT_TRUE(done(step(row.name))) << row.name;
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{mTarget.card, mTarget.element, mTarget.values, 0}));
}

TEST_F(VirtualCard, TheEventOfAStageHasItsForm)
{
    injectCard("open", -19);
    openStatus("hw:0");
    clearInjections();
    const ControlPtr card = opened("hw:0");
    injectCard("load", -5);
    std::vector<Id> found;
    list(card.get(), 100, 0, found);
    injectCard("info", -1);
    information(card.get(), "Sndout Open");
    injectCard("write", -16);
    writeTo(card.get(), "Sndout Open", {1});
    EXPECT_THAT(
        eventTexts(),
        ElementsAre(
            R"({"event":"control","card":"hw:0","stage":"open","status":-19})",
            R"({"event":"control","card":"hw:0","stage":"load","status":-5})",
            R"({"event":"control","card":"hw:0","stage":"info","status":-1})",
            R"({"event":"control","card":"hw:0","element":"Sndout Open","values":[1],"status":-16})"));
}

TEST_F(VirtualCard, ARefusedWriteKeepsTheValue)
{
    const ControlPtr card = opened("default");
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 1);
    injectCard("write", -EIO);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {50}), -EIO);
    EXPECT_EQ(valueOf(card.get(), "Softmaster"), 40);
}

TEST_F(VirtualCard, OnlyTheElementThatWasMeantFails)
{
    const ControlPtr card = opened("default");
    injectCard("write", -EIO, "Softmaster");
    injectCard("info", -EPERM, "Softmaster0");
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), -EIO);
    EXPECT_EQ(writeTo(card.get(), "Softmaster0", {40}), 1);
    EXPECT_EQ(information(card.get(), "Softmaster").status, 0);
    EXPECT_EQ(information(card.get(), "Softmaster0").status, -EPERM);
}

TEST_F(VirtualCard, AnInjectedStatusOfZeroLetsTheAccessThrough)
{
    const ControlPtr card = opened("default");
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "*", "", 0, 1});
    virtualtv::inject({virtualtv::FaultPoint::CardInfo, "*", "", 0, 1});
    injectCard("write", -EIO);
    injectCard("info", -EPERM);
    EXPECT_EQ(information(card.get(), "Softmaster").status, 0);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 1);
    EXPECT_EQ(information(card.get(), "Softmaster").status, -EPERM);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {41}), -EIO);
    EXPECT_EQ(valueOf(card.get(), "Softmaster"), 40);
}

TEST_F(VirtualCard, OneReadOrWriteUsesUpNoFaultOfAnotherStage)
{
    const ControlPtr card = opened("default");
    elementsOf(card.get());
    virtualtv::inject({virtualtv::FaultPoint::CardInfo, "*", "", -EPERM, 1});
    virtualtv::inject({virtualtv::FaultPoint::CardLoad, "*", "", -EIO, 1});
    for (const Id& id : {Id{"Softmaster"}, byNumber(1)}) {
        Values values(1);
        EXPECT_EQ(readFrom(card.get(), id, values), 0);
        EXPECT_EQ(writeTo(card.get(), id, {1}), 1);
    }
    std::vector<Id> found;
    EXPECT_EQ(information(card.get(), byNumber(1)).status, -EPERM);
    EXPECT_EQ(list(card.get(), 100, 0, found), -EIO);
}

TEST_F(VirtualCard, ALookUpByNumberIsNoLoad)
{
    const ControlPtr card = opened("default");
    injectCard("load", -EIO);
    for (unsigned int number = 1; number <= std::size(kMixer); ++number)
        EXPECT_EQ(information(card.get(), byNumber(number)).name, kMixer[number - 1].name);
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(VirtualCard, ALookUpByNumberIsNoLoadAfterTheElementsWereCounted)
{
    const ControlPtr card = opened("default");
    std::vector<Id> found;
    EXPECT_EQ(list(card.get(), /*space=*/0, 0, found), 0);
    injectCard("load", -EIO);
    EXPECT_EQ(information(card.get(), byNumber(1)).name, kMixer[0].name);
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(VirtualCard, ALookUpByNumberIsNoLoadAfterTheEndOfTheListWasRead)
{
    const ControlPtr card = opened("default");
    std::vector<Id> found;
    EXPECT_EQ(list(card.get(), 2, /*offset=*/3, found), 0);
    injectCard("load", -EIO);
    EXPECT_EQ(information(card.get(), byNumber(1)).name, kMixer[0].name);
    EXPECT_THAT(events(), IsEmpty());
}

// --- The state file

TEST_F(VirtualCard, AMissingStateFileIsMadeForItsUserAlone)
{
    EXPECT_FALSE(std::filesystem::exists(stateFile()));
    EXPECT_EQ(writeTo(opened("default").get(), "Softmaster", {40}), 1);
    struct stat status = {};
    ASSERT_EQ(stat(stateFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(VirtualCard, AStateFileIsTakenAsItWasLeft)
{
    leaveStateFile();
    const ControlPtr card = opened("default");
    EXPECT_EQ(valueOf(card.get(), "Softmaster"), 40);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 0);
}

TEST_F(VirtualCard, AStateFileThatIsNoneIsMadeAnew)
{
    leaveStateFile();
    const std::string good = stateBytes();
    const std::string bad[] = {
        "",
        "x",
        good.substr(0, good.size() - 1),
        good + "x",
        std::string(good.size(), 'x'),
        std::string(good.size(), '\0'),
        "K" + good.substr(1),
        std::string(1 << 20, '\xff'),
    };
    for (const std::string& bytes : bad) {
        writeStateFile(bytes);
        EXPECT_TRUE(Neighbour{[] {
                        const ControlPtr mixer = opened("default");
                        const ControlPtr television = opened("hw:0");
                        bool zero = true;
                        for (const ElementRow& row : kMixer)
                            zero = zero && valueOf(mixer.get(), row.name) == 0;
                        for (const ElementRow& row : kDriver)
                            zero = zero && valuesOf(television.get(), row.name, row.count) ==
                                               Values(row.count, 0);
                        return zero && writeTo(mixer.get(), "Softmaster", {40}) == 1;
                    }}.works())
            << bytes.size() << " bytes";
        EXPECT_EQ(stateBytes(), good) << bytes.size() << " bytes";
    }
}

TEST_F(VirtualCard, AStateFileThatIsNoFileIsRefused)
{
    std::filesystem::create_directory(stateFile());
    EXPECT_EQ(openStatus("hw:0"), -EISDIR);
    EXPECT_EQ(openStatus("default"), -EISDIR);
    std::filesystem::remove(stateFile());

    ASSERT_EQ(mkfifo(stateFile().c_str(), 0600), 0);
    EXPECT_LT(openStatus("hw:0"), 0);
    std::filesystem::remove(stateFile());

    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(virtualtv::cardHandles().opened, 0);
    EXPECT_EQ(openStatus("hw:0"), 0); // the next attempt starts afresh
}

TEST_F(VirtualCard, AStateFileThatIsALinkIsRefusedAndItsTargetUntouched)
{
    const std::filesystem::path target = directory() / "precious";
    std::ofstream{target} << "do not touch";
    std::filesystem::create_symlink(target, stateFile());
    EXPECT_EQ(openStatus("default"), -ELOOP);
    EXPECT_EQ(stateBytes(), "do not touch");

    std::filesystem::remove(stateFile());
    std::filesystem::create_symlink(directory() / "nowhere", stateFile());
    EXPECT_EQ(openStatus("default"), -ELOOP);
    EXPECT_FALSE(std::filesystem::exists(directory() / "nowhere"));
}

TEST_F(VirtualCard, AStateFileWithoutAFolderIsRefused)
{
    setenv("KEP_VIRTUALTV_STATE", (directory() / "nowhere" / "cards.state").c_str(), 1);
    EXPECT_EQ(openStatus("default"), -ENOENT);
}

TEST_F(VirtualCard, AStateFileCutShortWhileInUseFailsTheAccessOnly)
{
    const ControlPtr card = opened("default");
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {40}), 1);
    forget();
    std::filesystem::resize_file(stateFile(), 0);
    Values values(1);
    EXPECT_EQ(readFrom(card.get(), "Softmaster", values), -EIO);
    EXPECT_EQ(writeTo(card.get(), "Softmaster", {50}), -EIO);
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"default", "Softmaster", {50}, -EIO}));
    EXPECT_EQ(information(card.get(), "Softmaster").status, 0);
}

TEST_F(VirtualCard, AStateFileIsLeftAloneWhileAnotherProcessMakesIt)
{
    leaveStateFile();
    const std::string good = stateBytes();
    writeStateFile("");
    const int file = open(stateFile().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    Neighbour neighbour{[file] {
        return close(file) == 0 && valueOf(opened("default").get(), "Softmaster") == 40;
    }};
    neighbour.start();
    EXPECT_FALSE(neighbour.endsWithin(200));
    EXPECT_EQ(stateBytes(), "");
    EXPECT_EQ(pwrite(file, good.data(), good.size(), 0), static_cast<ssize_t>(good.size()));
    EXPECT_EQ(flock(file, LOCK_UN), 0);
    EXPECT_TRUE(neighbour.succeeds());
    close(file);
}

TEST_F(VirtualCard, ProcessesThatMakeTheStateFileTogetherKeepEachOthersValues)
{
    for (int round = 0; round < 30; ++round) {
        setenv("KEP_VIRTUALTV_STATE", (directory() / std::to_string(round)).c_str(), 1);
        Neighbour first{[] { return writeTo(opened("default").get(), "Softmaster0", {40}) == 1; }};
        Neighbour second{[] { return writeTo(opened("default").get(), "Softmaster1", {50}) == 1; }};
        Neighbour third{[] {
            const ControlPtr card = opened("default");
            return valueOf(card.get(), "Softmaster0") == 40 &&
                   valueOf(card.get(), "Softmaster1") == 50;
        }};
        first.start();
        second.start();
        EXPECT_TRUE(first.succeeds());
        EXPECT_TRUE(second.succeeds());
        EXPECT_TRUE(third.works()) << "round " << round;
    }
}

TEST_F(VirtualCard, ProcessesThatWriteTogetherLeaveWholeValues)
{
    const auto writes = [](const char* own, long number) {
        return [own, number] {
            const ControlPtr card = opened("hw:0");
            bool good = true;
            for (long i = 1; i <= 500; ++i) {
                good = good && writeTo(card.get(), "Gain Input", {number, number, number}) >= 0;
                good = good && writeTo(card.get(), own, {i}) == 1;
                good = good && valueOf(card.get(), own) == i;
            }
            return good;
        };
    };
    Neighbour first{writes("Sndout Open", 1)};
    Neighbour second{writes("Sndout Close", 2)};
    first.start();
    second.start();
    EXPECT_TRUE(first.succeeds());
    EXPECT_TRUE(second.succeeds());
    const ControlPtr card = opened("hw:0");
    EXPECT_EQ(valueOf(card.get(), "Sndout Open"), 500);
    EXPECT_EQ(valueOf(card.get(), "Sndout Close"), 500);
    EXPECT_THAT((std::vector<Values>{{1, 1, 1}, {2, 2, 2}}),
                Contains(valuesOf(card.get(), "Gain Input", 3)));
}
