// SPDX-License-Identifier: Apache-2.0
// The door to the driver, on a virtual card. Closing a card never fails there, so the linker puts a
// function of ours in front of libasound's.

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

#include <alsa/asoundlib.h>

#include <gmock/gmock.h>

#include "journal.h"
#include "tvbackendtest.h"

namespace
{

int gCloseCalls = 0;
int gCloseStatus = 0;

} // namespace

extern "C" {
int __real_snd_hctl_close(snd_hctl_t* handle);

/// Closes all the same: a failing close gives the handle back, too.
int __wrap_snd_hctl_close(snd_hctl_t* handle)
{
    ++gCloseCalls;
    const int status = __real_snd_hctl_close(handle);
    return gCloseStatus < 0 ? gCloseStatus : status;
}
}

namespace
{

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

/// Whether writing these values to an element of that many integers compiles.
template <std::size_t Count, std::int32_t... Values>
concept Writable = requires(const ControlElement<Count>& element)
{
    writeElement(element, {Values...});
};

static_assert(Writable<1, 7>);
static_assert(Writable<2, 7, 8>);
static_assert(Writable<3, 7, 8, 9>);
static_assert(Writable<4, 6, 7, 8, 9>);
static_assert(Writable<5, 5, 6, 7, 8, 9>);
static_assert(!Writable<1, 7, 8>);
static_assert(!Writable<2, 7>);
static_assert(!Writable<2, 7, 8, 9>);
static_assert(!Writable<3, 7, 8>);
static_assert(!Writable<3, 6, 7, 8, 9>);
static_assert(!Writable<4, 7>);
static_assert(!Writable<5, 6, 7, 8, 9>);
static_assert(!Writable<5, 4, 5, 6, 7, 8, 9>);

// --- The driver's elements

struct ElementRow {
    std::string name;
    std::size_t count;

    bool operator==(const ElementRow&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const ElementRow& row)
{
    return stream << row.name << " (" << row.count << ")";
}

// clang-format off
const ElementRow kDriver[] = {
    {"Sndout Connect",                  3},
    {"Sndout Disconnect",               3},
    {"Sndout Open",                     1},
    {"Sndout Close",                    1},
    {"Mute Output",                     2},
    {"Mute Input",                      3},
    {"Sndout MainAudio Output",         2},
    {"Sndout Optic QN",                 4},
    {"Sndout Optic LightOnOff",         1},
    {"Sndout ARC OnOff",                1},
    {"Sndout EARC OnOff",               1},
    {"Sndout EARC Outputtype",          5},
    {"Sndout Spdif OutputType",         2},
    {"Sndout Spdif CategoryCode",       2},
    {"Sndout Spdif CopyProtectionInfo", 2},
    {"Sndout eAC3 ATMOS Encode OnOff",  1},
    {"Adec Dolby OTTMode",              2},
    {"Gain Input",                      3},
    {"Gain Output",                     2},
};
// clang-format on

template <std::size_t... Counts>
std::vector<ElementRow> rowsOf(const ControlElement<Counts>&... elements)
{
    return {{elements.name, Counts}...};
}

std::vector<ElementRow> elementsOfTheLibrary()
{
    return rowsOf(kSndoutConnect, kSndoutDisconnect, kSndoutOpen, kSndoutClose, kMuteOutput,
                  kMuteInput, kSndoutMainAudioOutput, kSndoutOpticQn, kSndoutOpticLight, kSndoutArc,
                  kSndoutEarc, kSndoutEarcOutputType, kSndoutSpdifOutputType,
                  kSndoutSpdifCategoryCode, kSndoutSpdifCopy, kSndoutAtmosEncode, kAdecDolbyOttMode,
                  kGainInput, kGainOutput);
}

struct HandleCloser {
    void operator()(snd_hctl_t* handle) const noexcept { snd_hctl_close(handle); }
};
using HandlePtr = std::unique_ptr<snd_hctl_t, HandleCloser>;

HandlePtr openedCard()
{
    snd_hctl_t* opened = nullptr;
    EXPECT_EQ(snd_hctl_open(&opened, "hw:0", 0), 0);
    HandlePtr card{opened};
    EXPECT_EQ(snd_hctl_load(card.get()), 0);
    return card;
}

/// The integer elements that the card itself lists.
std::vector<ElementRow> elementsOfTheCard()
{
    const HandlePtr card = openedCard();
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    std::vector<ElementRow> rows;
    for (snd_hctl_elem_t* element = snd_hctl_first_elem(card.get()); element != nullptr;
         element = snd_hctl_elem_next(element)) {
        EXPECT_EQ(snd_hctl_elem_info(element, info), 0);
        EXPECT_EQ(snd_ctl_elem_info_get_interface(info), SND_CTL_ELEM_IFACE_MIXER);
        EXPECT_EQ(snd_ctl_elem_info_get_type(info), SND_CTL_ELEM_TYPE_INTEGER);
        rows.push_back({snd_ctl_elem_info_get_name(info), snd_ctl_elem_info_get_count(info)});
    }
    return rows;
}

LogLine errorOf(const std::string& id, const std::string& text)
{
    return {kLogError, id, "keptvaudio:setControlElement", text};
}

const LogLine kNotFound = errorOf("CONTROL_ELEMENT_NOT_FOUND", "Did not find the element");
const LogLine kNotClosed{kLogError, "CONTROL_DEVICE_CLOSE_ERROR", "keptvaudio:closeControlHandle",
                         "device can't close"};

class KepTVAudioControl : public TelevisionTest
{
protected:
    KepTVAudioControl() { connectLog(); }

    static bool writeByName(const std::string& name, const std::vector<std::int32_t>& values)
    {
        return kepTVAudio::setControlElement(name, values.data(), static_cast<int>(values.size()));
    }

    /// Expects the card opened this often, and every one of these handles closed, once.
    static void expectHandles(int opened)
    {
        EXPECT_EQ(virtualtv::cardHandles().opened, opened);
        EXPECT_EQ(virtualtv::cardHandles().closed, opened);
        EXPECT_EQ(gCloseCalls, opened);
    }

    /// Expects that a write fails at this stage, says so, and leaves no handle open.
    void expectFailureAt(const std::string& stage, int status, const LogLine& line, int opened)
    {
        injectCard(stage, status);
        EXPECT_FALSE(writeByName("Sndout Open", {16}));
        EXPECT_THAT(logLines(), ElementsAre(line));
        EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", stage, {}, status}));
        expectHandles(opened);
    }
};

/// Values 1, 2, 3, ...
std::vector<std::int32_t> counted(std::size_t count)
{
    std::vector<std::int32_t> values(count);
    std::iota(values.begin(), values.end(), 1);
    return values;
}

} // namespace

// --- Elements

TEST_F(KepTVAudioControl, TheLibraryWritesTheElementsOfTheDriver)
{
    EXPECT_THAT(elementsOfTheLibrary(), ElementsAreArray(kDriver));
}

TEST_F(KepTVAudioControl, TheVirtualCardHasExactlyTheseElements)
{
    EXPECT_THAT(elementsOfTheCard(), UnorderedElementsAreArray(kDriver));
}

TEST_F(KepTVAudioControl, EveryElementTakesItsValuesInTheirOrder)
{
    std::vector<ControlEvent> expected;
    for (const ElementRow& row : kDriver) {
        EXPECT_TRUE(writeByName(row.name, counted(row.count))) << row;
        expected.push_back({"hw:0", row.name, counted(row.count), 0});
    }
    EXPECT_EQ(controlEvents(), expected);
    EXPECT_THAT(logLines(), IsEmpty());
    expectHandles(static_cast<int>(std::size(kDriver)));
}

TEST_F(KepTVAudioControl, AnElementIsWrittenWithItsNumberOfIntegers)
{
    EXPECT_TRUE(writeElement(kSndoutClose, {64}));
    EXPECT_TRUE(writeElement(kMuteInput, {16, 7, 1}));
    EXPECT_TRUE(writeElement(kSndoutEarcOutputType, {2, 11, 0, 0, 1}));
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"hw:0", "Sndout Close", {64}},
                            ControlEvent{"hw:0", "Mute Input", {16, 7, 1}},
                            ControlEvent{"hw:0", "Sndout EARC Outputtype", {2, 11, 0, 0, 1}}));
}

TEST_F(KepTVAudioControl, AnElementThatCannotBeWrittenAnswersFalse)
{
    injectCard("write", -EIO, "Sndout Close");
    EXPECT_FALSE(writeElement(kSndoutClose, {64}));
    EXPECT_TRUE(writeElement(kSndoutOpen, {64}));
}

// --- Success

TEST_F(KepTVAudioControl, AWriteOpensTheCardOnceAndClosesIt)
{
    EXPECT_TRUE(writeByName("Gain Input", {16, 5, 8388608}));
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"hw:0", "Gain Input", {16, 5, 8388608}, 0}));
    EXPECT_THAT(logLines(), IsEmpty());
    expectHandles(1);
}

TEST_F(KepTVAudioControl, ValuesArePassedOnAsTheyAre)
{
    EXPECT_TRUE(writeByName("Sndout Optic QN", {15747238, -1, INT_MIN, INT_MAX}));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{
                                     "hw:0", "Sndout Optic QN", {15747238, -1, INT_MIN, INT_MAX}}));
}

TEST_F(KepTVAudioControl, TheSameValuesAreWrittenAgain)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(writeByName("Mute Output", {16, 1}));
    EXPECT_THAT(controlEvents(), SizeIs(3));
    EXPECT_THAT(controlEvents(), Each(ControlEvent{"hw:0", "Mute Output", {16, 1}}));
    expectHandles(3);
}

TEST_F(KepTVAudioControl, TheCardKeepsWhatIsWritten)
{
    EXPECT_TRUE(writeByName("Mute Input", {16, 3, 1}));
    const HandlePtr card = openedCard();
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, "Mute Input");
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_hctl_elem_t* element = snd_hctl_find_elem(card.get(), id);
    ASSERT_NE(element, nullptr);
    ASSERT_GE(snd_hctl_elem_read(element, value), 0);
    EXPECT_EQ(snd_ctl_elem_value_get_integer(value, 0), 16);
    EXPECT_EQ(snd_ctl_elem_value_get_integer(value, 1), 3);
    EXPECT_EQ(snd_ctl_elem_value_get_integer(value, 2), 1);
}

TEST_F(KepTVAudioControl, AFailureIsNotRememberedByTheNextWrite)
{
    injectCard("write", -EIO);
    EXPECT_FALSE(writeByName("Sndout Open", {1}));
    clearInjections();
    forget();
    EXPECT_TRUE(writeByName("Sndout Open", {2}));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Sndout Open", {2}}));
    EXPECT_THAT(logLines(), IsEmpty());
    expectHandles(2);
}

// --- Each stage fails

TEST_F(KepTVAudioControl, AnOpenThatFailsIsLoggedAndNothingIsClosed)
{
    expectFailureAt("open", -ENODEV,
                    errorOf("CONTROL_HANDLE_OPEN_ERROR", "Control hw:0 open error: No such device"),
                    0);
}

TEST_F(KepTVAudioControl, ALoadThatFailsIsLoggedAndTheCardIsClosed)
{
    expectFailureAt(
        "load", -ENOMEM,
        errorOf("CONTROL_HANDLE_LOAD_ERROR", "Control hw:0 load error: Cannot allocate memory"), 1);
}

TEST_F(KepTVAudioControl, AnInformationThatCannotBeReadIsLoggedAndTheCardIsClosed)
{
    expectFailureAt("info", -EBUSY,
                    errorOf("CONTROL_ELEMENT_INFO_ERROR",
                            "Control element snd_hctl_elem_info error: Device or resource busy"),
                    1);
}

TEST_F(KepTVAudioControl, AWriteThatFailsIsLoggedAndTheCardIsClosed)
{
    injectCard("write", -EIO);
    EXPECT_FALSE(writeByName("Sndout Open", {16}));
    EXPECT_THAT(logLines(),
                ElementsAre(errorOf("CONTROL_ELEMENT_WRITE_ERROR",
                                    "Control element write error: Input/output error")));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Sndout Open", {16}, -EIO}));
    expectHandles(1);
}

TEST_F(KepTVAudioControl, AnUnknownElementIsLoggedAndTheCardIsClosed)
{
    const std::string unknown[] = {
        "Sndout Conect",
        "sndout connect",
        "Sndout",
        "Sndout Connect ",
        "Sndout Connect2",
        "Gain",
        "Softmaster",
        "%s%n",
        "",
        " ",
        std::string(43, 'x'),
        std::string(44, 'x'),
        std::string(1000, 'x'),
    };
    int opened = 0;
    for (const std::string& name : unknown) {
        EXPECT_FALSE(writeByName(name, {1, 2, 3})) << name;
        EXPECT_THAT(logLines(), ElementsAre(kNotFound)) << name;
        EXPECT_THAT(controlEvents(), IsEmpty()) << name;
        expectHandles(++opened);
        forget();
    }
}

TEST_F(KepTVAudioControl, FailuresAreLoggedWhenErrorsAreAllThatIsAdmitted)
{
    admit(kLogError);
    EXPECT_FALSE(writeByName("Sndout Conect", {1}));
    EXPECT_THAT(logLines(), ElementsAre(kNotFound));
}

// --- Closing

TEST_F(KepTVAudioControl, ACloseThatFailsIsLoggedAndTheValuesAreWritten)
{
    gCloseStatus = -EIO;
    EXPECT_TRUE(writeByName("Sndout Open", {16}));
    EXPECT_THAT(logLines(), ElementsAre(kNotClosed));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Sndout Open", {16}}));
    expectHandles(1);
}

TEST_F(KepTVAudioControl, ACloseThatFailsIsLoggedAfterTheFailureThatLedToIt)
{
    gCloseStatus = -EIO;
    EXPECT_FALSE(writeByName("Sndout Conect", {1}));
    EXPECT_THAT(logLines(), ElementsAre(kNotFound, kNotClosed));
    forget();
    injectCard("load", -ENOMEM);
    EXPECT_FALSE(writeByName("Sndout Open", {1}));
    EXPECT_THAT(logLines(), ElementsAre(errorOf("CONTROL_HANDLE_LOAD_ERROR",
                                                "Control hw:0 load error: Cannot allocate memory"),
                                        kNotClosed));
    expectHandles(2);
}

TEST_F(KepTVAudioControl, ACardThatDidNotOpenIsNotClosed)
{
    gCloseStatus = -EIO;
    injectCard("open", -EACCES);
    EXPECT_FALSE(writeByName("Sndout Open", {1}));
    EXPECT_THAT(logLines(), ElementsAre(errorOf("CONTROL_HANDLE_OPEN_ERROR",
                                                "Control hw:0 open error: Permission denied")));
    expectHandles(0);
}

TEST_F(KepTVAudioControl, ANullHandleIsNotClosed)
{
    gCloseStatus = -EIO;
    kepTVAudio::closeControlHandle(nullptr);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    expectHandles(0);
}

TEST_F(KepTVAudioControl, AHandleIsClosedOnce)
{
    kepTVAudio::closeControlHandle(openedCard().release());
    EXPECT_THAT(logLines(), IsEmpty());
    expectHandles(1);
    gCloseStatus = -EIO;
    kepTVAudio::closeControlHandle(openedCard().release());
    EXPECT_THAT(logLines(), ElementsAre(kNotClosed));
    expectHandles(2);
}

// --- Counts other than the element's

TEST_F(KepTVAudioControl, ACountOfNoneOrLessWritesZeros)
{
    EXPECT_TRUE(writeByName("Mute Input", {16, 3, 1}));
    forget();
    for (const int count : {0, -1, -128, INT_MIN}) {
        EXPECT_TRUE(kepTVAudio::setControlElement("Mute Input", nullptr, count)) << count;
        EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Input", {0, 0, 0}}))
            << count;
        forget();
    }
    expectHandles(5);
}

TEST_F(KepTVAudioControl, ACountOfNoneIgnoresTheValuesThatAreThere)
{
    const std::int32_t values[] = {1, 2, 3};
    EXPECT_TRUE(kepTVAudio::setControlElement("Mute Input", values, 0));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Input", {0, 0, 0}}));
}

TEST_F(KepTVAudioControl, ACountTooSmallLeavesZerosBehind)
{
    EXPECT_TRUE(writeByName("Mute Input", {16, 3, 1}));
    forget();
    EXPECT_TRUE(writeByName("Mute Input", {9}));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Input", {9, 0, 0}}));
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepTVAudioControl, ACountTooLargeIsPassedOnAndTheElementTakesItsOwn)
{
    for (const std::size_t count : {3U, 8U, 127U, 128U}) {
        EXPECT_TRUE(writeByName("Mute Output", counted(count))) << count;
        EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Output", {1, 2}}))
            << count;
        EXPECT_THAT(logLines(), IsEmpty()) << count;
        forget();
    }
    expectHandles(4);
}

TEST_F(KepTVAudioControl, ACountTooLargeReportsTheErrorOfTheWrite)
{
    injectCard("write", -EINVAL, "Mute Output");
    EXPECT_FALSE(writeByName("Mute Output", counted(3)));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Output", {1, 2}, -EINVAL}));
    EXPECT_THAT(logLines(), ElementsAre(errorOf("CONTROL_ELEMENT_WRITE_ERROR",
                                                "Control element write error: Invalid argument")));
}

TEST_F(KepTVAudioControl, ACountBeyondAnyElementIsRefusedUnread)
{
    int opened = 0;
    for (const int count : {129, 130, 512, 513, INT_MAX}) {
        EXPECT_FALSE(kepTVAudio::setControlElement("Mute Output", nullptr, count)) << count;
        EXPECT_THAT(controlEvents(), IsEmpty()) << count;
        EXPECT_THAT(logLines(),
                    ElementsAre(errorOf("CONTROL_ELEMENT_WRITE_ERROR",
                                        "Control element write error: Invalid argument")))
            << count;
        expectHandles(++opened);
        forget();
    }
}

TEST_F(KepTVAudioControl, AnUnknownElementIsNotFoundWhateverTheCount)
{
    for (const int count : {0, -1, 129, INT_MAX}) {
        EXPECT_FALSE(kepTVAudio::setControlElement("Sndout Conect", nullptr, count)) << count;
        EXPECT_THAT(logLines(), ElementsAre(kNotFound)) << count;
        forget();
    }
    expectHandles(4);
}

// --- The mute of an output

TEST_F(KepTVAudioControl, MutingWritesTheTypeBitOfTheOutput)
{
    struct MuteRow {
        KEP_AUDIO_SNDOUT_T output;
        int typeBit;
    };
    constexpr MuteRow kMuteRows[] = {
        {KEP_AUDIO_NO_OUTPUT, 0},     {KEP_AUDIO_SPK, 1},         {KEP_AUDIO_SPDIF, 2},
        {KEP_AUDIO_HP, 16},           {KEP_AUDIO_ALSA, 0},        {KEP_AUDIO_SPK_SPDIF, 0},
        {KEP_AUDIO_ARC, 32},          {KEP_AUDIO_SPK_HP, 0},      {KEP_AUDIO_QN_SOUND_SYNC, 4},
        {KEP_AUDIO_BT_SOUNDBAR, 8},   {KEP_AUDIO_WISA, 64},       {KEP_AUDIO_SPK_OPTICAL_ARC, 0},
        {KEP_AUDIO_SPK_BLUETOOTH, 0}, {KEP_AUDIO_BLUETOOTH, 128},
    };
    for (const MuteRow& row : kMuteRows) {
        EXPECT_TRUE(kepTVAudio::setMuteControlElement(row.output, /*mute=*/true)) << row.output;
        EXPECT_TRUE(kepTVAudio::setMuteControlElement(row.output, /*mute=*/false)) << row.output;
        EXPECT_THAT(controlEvents(),
                    ElementsAre(ControlEvent{"hw:0", "Mute Output", {row.typeBit, 1}},
                                ControlEvent{"hw:0", "Mute Output", {row.typeBit, 0}}))
            << row.output;
        forget();
    }
    EXPECT_THAT(logLines(), IsEmpty());
    expectHandles(2 * static_cast<int>(std::size(kMuteRows)));
}

TEST_F(KepTVAudioControl, AMuteThatFailsIsLoggedWithElementAndOutput)
{
    injectCard("write", -EIO, "Mute Output");
    EXPECT_FALSE(kepTVAudio::setMuteControlElement(KEP_AUDIO_HP, /*mute=*/true));
    EXPECT_THAT(logLines(),
                ElementsAre(errorOf("CONTROL_ELEMENT_WRITE_ERROR",
                                    "Control element write error: Input/output error"),
                            LogLine{kLogError, "CONTROL_ELEMENT_SET_ERROR",
                                    "keptvaudio:setMuteControlElement",
                                    "Did not able to set the element: Mute Output on 32"}));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Mute Output", {16, 1}, -EIO}));
    expectHandles(1);
}

TEST_F(KepTVAudioControl, AnUnmuteThatFailsIsLoggedWithTheOutputNotItsTypeBit)
{
    injectCard("open", -ENODEV);
    EXPECT_FALSE(kepTVAudio::setMuteControlElement(KEP_AUDIO_BLUETOOTH, /*mute=*/false));
    EXPECT_THAT(
        logLines(),
        ElementsAre(errorOf("CONTROL_HANDLE_OPEN_ERROR", "Control hw:0 open error: No such device"),
                    LogLine{kLogError, "CONTROL_ELEMENT_SET_ERROR",
                            "keptvaudio:setMuteControlElement",
                            "Did not able to set the element: Mute Output on 131072"}));
    expectHandles(0);
}
