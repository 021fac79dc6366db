// SPDX-License-Identifier: Apache-2.0
// Faults of the virtual cards: at each stage of an access, in both ways through libasound.
#include <cerrno>
#include <memory>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "virtualcardtest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// --- Both ways through libasound, step by step

struct HctlCloser {
    void operator()(snd_hctl_t* handle) const noexcept { snd_hctl_close(handle); }
};
using HctlPtr = std::unique_ptr<snd_hctl_t, HctlCloser>;

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
        getIntegers(got, values);
        return status;
    }
    int write(const char* element, const Values& values) override
    {
        snd_ctl_elem_value_t* written = nullptr;
        snd_ctl_elem_value_alloca(&written);
        setIntegers(written, values);
        return snd_hctl_elem_write(found(element), written);
    }

private:
    snd_hctl_elem_t* found(const char* element)
    {
        snd_hctl_elem_t* handle = snd_hctl_find_elem(mCard.get(), identifierOf(element).get());
        if (handle == nullptr)
            throw std::runtime_error{std::string{"no element "} + element};
        return handle;
    }

    HctlPtr mCard;
};

bool done(int status)
{
    return status >= 0;
}

// --- Faults at the stages of an access

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
