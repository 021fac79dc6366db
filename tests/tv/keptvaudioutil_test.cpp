// SPDX-License-Identifier: Apache-2.0
// Names to identifiers, identifiers to the driver's numbers. The numbers are written out here: they
// are the driver's, and no table of the library may change them.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace std::string_literals;

// --- Resources

constexpr std::uint32_t kInvalid = 255;

struct SourceRow {
    std::string source;
    std::uint32_t main;
    std::uint32_t sub;
    std::uint32_t alsa;
};

// clang-format off
const SourceRow kSourceRows[] = {
    // source           MAIN      SUB       ALSA
    {"ADEC",            8,        8,        kInvalid},
    {"ADEC0",           8,        8,        kInvalid},
    {"ADEC1",           9,        9,        kInvalid},
    {"AMIXER0",         20,       20,       kInvalid},
    {"AMIXER1",         21,       21,       kInvalid},
    {"AMIXER2",         22,       22,       kInvalid},
    {"AMIXER3",         23,       23,       kInvalid},
    {"AMIXER4",         24,       24,       kInvalid},
    {"AMIXER5",         25,       25,       kInvalid},
    {"AMIXER6",         26,       26,       kInvalid},
    {"AMIXER7",         27,       27,       kInvalid},
    {"AMIXER",          kInvalid, kInvalid, 20},
    {"ADEC2",           kInvalid, kInvalid, kInvalid},
    {"ADEC8",           kInvalid, kInvalid, kInvalid},
    {"ADEC00",          kInvalid, kInvalid, kInvalid},
    {"ADEC01",          kInvalid, kInvalid, kInvalid},
    {"ADEC-1",          kInvalid, kInvalid, kInvalid},
    {"ADE",             kInvalid, kInvalid, kInvalid},
    {"ADEC ",           kInvalid, kInvalid, kInvalid},
    {" ADEC",           kInvalid, kInvalid, kInvalid},
    {"adec",            kInvalid, kInvalid, kInvalid},
    {"adec0",           kInvalid, kInvalid, kInvalid},
    {"Adec1",           kInvalid, kInvalid, kInvalid},
    {"AMIXER8",         kInvalid, kInvalid, kInvalid},
    {"AMIXER9",         kInvalid, kInvalid, kInvalid},
    {"AMIXER10",        kInvalid, kInvalid, kInvalid},
    {"AMIXER00",        kInvalid, kInvalid, kInvalid},
    {"AMIXER-1",        kInvalid, kInvalid, kInvalid},
    {"AMIXER ",         kInvalid, kInvalid, kInvalid},
    {"AMIXER0 ",        kInvalid, kInvalid, kInvalid},
    {"amixer",          kInvalid, kInvalid, kInvalid},
    {"amixer0",         kInvalid, kInvalid, kInvalid},
    {"Amixer7",         kInvalid, kInvalid, kInvalid},
    {"MIXER",           kInvalid, kInvalid, kInvalid},
    {"MAIN",            kInvalid, kInvalid, kInvalid},
    {"8",               kInvalid, kInvalid, kInvalid},
    {"",                kInvalid, kInvalid, kInvalid},
    {"ADEC\0"s,         kInvalid, kInvalid, kInvalid},
    {"AMIXER\0"s,       kInvalid, kInvalid, kInvalid},
    {"AMIXER0\0x"s,     kInvalid, kInvalid, kInvalid},
};
// clang-format on

// Nothing is reached through these.
const std::string kUnknownSinks[] = {
    "main",   "Main",       "sub",   "Sub",     "alsa",   "Alsa",    "MAI",
    "MAIN ",  " SUB",       "MAIN0", "MAINSUB", "ALSA0",  "ADEC",    "ADEC0",
    "AMIXER", "tv_speaker", "",      "MAIN\0"s, "SUB\0"s, "ALSA\0"s,
};

struct DriverRow {
    std::uint32_t resource;
    unsigned int index;
    int port;
};
// All others have index 0 and port -1, and are not valid.
constexpr DriverRow kDriverRows[] = {
    // resource, index, port
    {8, 1, 0},   {9, 1, 1},   {20, 16, 0}, {21, 16, 1}, {22, 16, 2},
    {23, 16, 3}, {24, 16, 4}, {25, 16, 5}, {26, 16, 6}, {27, 16, 7},
};

/// 0 to 40, the invalid resource, and numbers that only look like a valid one in fewer bits.
std::vector<std::uint32_t> resourcesToTry()
{
    std::vector<std::uint32_t> resources{255,       256,        256 + 8,   256 + 20,
                                         65536 + 8, 0x80000008, UINT32_MAX};
    for (std::uint32_t resource = 0; resource <= 40; ++resource)
        resources.push_back(resource);
    return resources;
}

const DriverRow* driverRowOf(std::uint32_t resource)
{
    const auto* row =
        std::find_if(std::begin(kDriverRows), std::end(kDriverRows),
                     [&](const DriverRow& each) { return each.resource == resource; });
    return row != std::end(kDriverRows) ? row : nullptr;
}

// --- Outputs

struct NameRow {
    std::string name;
    std::uint32_t output;
};

// clang-format off
const NameRow kNameRows[] = {
    {"tv_speaker",             1},
    {"external_speaker",       2},
    {"external_optical",       2},
    {"tv_speaker_external",    512},
    {"tv_external_speaker",    512},
    {"tv_speaker_headphone",   2048},
    {"tv_speaker_optical_arc", 32768},
    {"tv_speaker_bluetooth",   65536},
    {"headphone",              32},
    {"lineout",                32},
    {"external_arc",           1024},
    {"urcu_oss",               1024},
    {"qnSoundSync",            4096},
    {"bt_soundbar",            8192},
    {"wisa_speaker",           16384},
    {"alsa",                   256},
};
// clang-format on

const std::string kUnknownNames[] = {
    "",
    " ",
    "0",
    "1",
    "TV_SPEAKER",
    "Tv_speaker",
    "tv_speake",
    "tv_speaker ",
    " tv_speaker",
    "tv_speakers",
    "tv-speaker",
    "tv_speaker_",
    "tv_speaker_external_",
    "tv_external",
    "tv_speaker_optical",
    "tv_speaker_arc",
    "tv_speaker_wisa",
    "external",
    "external_headphone",
    "Headphone",
    "lineOut",
    "arc",
    "earc",
    "external_earc",
    "qnsoundsync",
    "QnSoundSync",
    "bt_Soundbar",
    "soundbar",
    "wisa",
    "ALSA",
    "bluetooth",
    "tv_bluetooth",
    "external_bluetooth",
    "tv_speaker\0"s,
    "tv_speaker\0x"s,
    "alsa\0"s,
};

struct OutputRow {
    std::uint32_t output;
    bool valid;
    unsigned int typeBit;
};

// clang-format off
constexpr OutputRow kOutputRows[] = {
    // output  valid  type bit
    {0,        false, 0},
    {1,        true,  1},
    {2,        true,  2},
    {32,       true,  16},
    {256,      false, 0},
    {512,      true,  0},
    {1024,     true,  32},
    {2048,     true,  0},
    {4096,     true,  4},
    {8192,     true,  8},
    {16384,    true,  64},
    {32768,    true,  0},
    {65536,    true,  0},
    {131072,   false, 128},
};
// clang-format on

/// What no output has as its value: all other single bits, sums of outputs, and the extremes.
std::vector<std::uint32_t> unknownOutputs()
{
    std::vector<std::uint32_t> outputs{3,   5,    33,   34,         35,        255,    513,
                                       544, 1026, 1027, 1 + 131072, 65535,     131071, 200000,
                                       31,  100,  257,  0x7fffffff, UINT32_MAX};
    for (unsigned int bit = 0; bit < 32; ++bit) {
        const std::uint32_t output = std::uint32_t{1} << bit;
        if (std::none_of(std::begin(kOutputRows), std::end(kOutputRows),
                         [&](const OutputRow& row) { return row.output == output; }))
            outputs.push_back(output);
    }
    return outputs;
}

KEP_AUDIO_RESOURCE_T resourceOf(std::uint32_t value)
{
    return static_cast<KEP_AUDIO_RESOURCE_T>(value);
}

KEP_AUDIO_SNDOUT_T outputOf(std::uint32_t value)
{
    return static_cast<KEP_AUDIO_SNDOUT_T>(value);
}

std::uint32_t resourceBehind(const std::string& source, const std::string& sink)
{
    return kepTVAudio::getResourceId(source, sink);
}

class KepTVAudioUtil : public TelevisionTest
{
protected:
    KepTVAudioUtil() { connectLog(); }

    /// The state, as if this output had been selected.
    void select(std::uint32_t output) { mBackend.mCurrentSoundout = outputOf(output); }

    OpenBackend mBackend;
};

} // namespace

// --- Enumerations

TEST(ResourceValues, AreTheDrivers)
{
    static_assert(sizeof(KEP_AUDIO_RESOURCE_T) == 4);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_ADEC0, 8U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_ADEC1, 9U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER0, 20U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER1, 21U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER2, 22U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER3, 23U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER4, 24U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER5, 25U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER6, 26U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_AMIXER7, 27U);
    EXPECT_EQ(KEP_AUDIO_RESOURCE_INVALID, 255U);
}

TEST(OutputValues, AreSingleBitsForCombinationsToo)
{
    static_assert(sizeof(KEP_AUDIO_SNDOUT_T) == 4);
    EXPECT_EQ(KEP_AUDIO_NO_OUTPUT, 0U);
    EXPECT_EQ(KEP_AUDIO_SPK, 1U);
    EXPECT_EQ(KEP_AUDIO_SPDIF, 2U);
    EXPECT_EQ(KEP_AUDIO_HP, 32U);
    EXPECT_EQ(KEP_AUDIO_ALSA, 256U);
    EXPECT_EQ(KEP_AUDIO_SPK_SPDIF, 512U);
    EXPECT_EQ(KEP_AUDIO_ARC, 1024U);
    EXPECT_EQ(KEP_AUDIO_SPK_HP, 2048U);
    EXPECT_EQ(KEP_AUDIO_QN_SOUND_SYNC, 4096U);
    EXPECT_EQ(KEP_AUDIO_BT_SOUNDBAR, 8192U);
    EXPECT_EQ(KEP_AUDIO_WISA, 16384U);
    EXPECT_EQ(KEP_AUDIO_SPK_OPTICAL_ARC, 32768U);
    EXPECT_EQ(KEP_AUDIO_SPK_BLUETOOTH, 65536U);
    EXPECT_EQ(KEP_AUDIO_BLUETOOTH, 131072U);
}

// --- Resources

TEST_F(KepTVAudioUtil, SourceAndSinkTogetherChooseTheResource)
{
    for (const SourceRow& row : kSourceRows) {
        EXPECT_EQ(resourceBehind(row.source, "MAIN"), row.main) << row.source << " / MAIN";
        EXPECT_EQ(resourceBehind(row.source, "SUB"), row.sub) << row.source << " / SUB";
        EXPECT_EQ(resourceBehind(row.source, "ALSA"), row.alsa) << row.source << " / ALSA";
    }
}

TEST_F(KepTVAudioUtil, NoSourceIsReachedThroughAnUnknownSink)
{
    for (const SourceRow& row : kSourceRows)
        for (const std::string& sink : kUnknownSinks)
            EXPECT_EQ(resourceBehind(row.source, sink), kInvalid) << row.source << " / " << sink;
}

TEST_F(KepTVAudioUtil, OnlyTheGenericMixerIsReachedThroughAlsa)
{
    EXPECT_EQ(resourceBehind("AMIXER", "ALSA"), 20U);
    EXPECT_EQ(kepTVAudio::audioResourceIdToIndex(resourceOf(20)), 16U);
    EXPECT_EQ(kepTVAudio::audioResourceIdToPort(resourceOf(20)), 0);
    EXPECT_EQ(resourceBehind("AMIXER", "MAIN"), kInvalid);
    EXPECT_EQ(resourceBehind("AMIXER", "SUB"), kInvalid);
    EXPECT_EQ(resourceBehind("AMIXER0", "ALSA"), kInvalid);
    EXPECT_EQ(resourceBehind("ADEC0", "ALSA"), kInvalid);
    EXPECT_EQ(resourceBehind("ADEC1", "ALSA"), kInvalid);
}

TEST_F(KepTVAudioUtil, AResourceHasItsBlockAndItsPort)
{
    for (const std::uint32_t resource : resourcesToTry()) {
        const DriverRow* row = driverRowOf(resource);
        EXPECT_EQ(kepTVAudio::audioResourceIdToIndex(resourceOf(resource)), row ? row->index : 0)
            << resource;
        EXPECT_EQ(kepTVAudio::audioResourceIdToPort(resourceOf(resource)), row ? row->port : -1)
            << resource;
    }
}

TEST_F(KepTVAudioUtil, OnlyDecodersAndMixersAreValid)
{
    for (const std::uint32_t resource : resourcesToTry())
        EXPECT_EQ(kepTVAudio::isValidResource(resourceOf(resource)),
                  driverRowOf(resource) != nullptr)
            << resource;
}

TEST_F(KepTVAudioUtil, AReservedResourceIsNotValidAndHasNoPort)
{
    EXPECT_FALSE(kepTVAudio::isValidResource(resourceOf(15)));
    EXPECT_EQ(kepTVAudio::audioResourceIdToIndex(resourceOf(15)), 0U);
    EXPECT_EQ(kepTVAudio::audioResourceIdToPort(resourceOf(15)), -1);
}

TEST_F(KepTVAudioUtil, WhatANameGivesIsValidAndWhatItDoesNotGiveIsNot)
{
    for (const SourceRow& row : kSourceRows)
        for (const char* sink : {"MAIN", "SUB", "ALSA", "main", ""}) {
            const KEP_AUDIO_RESOURCE_T resource = kepTVAudio::getResourceId(row.source, sink);
            EXPECT_EQ(kepTVAudio::isValidResource(resource), resource != kInvalid)
                << row.source << " / " << sink;
        }
}

// --- Outputs

TEST_F(KepTVAudioUtil, EveryOutputNameGivesItsOutput)
{
    for (const NameRow& row : kNameRows)
        EXPECT_EQ(kepTVAudio::getSoundOutputResourceId(row.name), row.output) << row.name;
}

TEST_F(KepTVAudioUtil, AnUnknownOutputNameGivesNoOutput)
{
    for (const std::string& name : kUnknownNames)
        EXPECT_EQ(kepTVAudio::getSoundOutputResourceId(name), 0U) << name;
}

TEST_F(KepTVAudioUtil, HeadphoneAndLineoutAreOneOutput)
{
    const KEP_AUDIO_SNDOUT_T headphone = kepTVAudio::getSoundOutputResourceId("headphone");
    EXPECT_EQ(headphone, kepTVAudio::getSoundOutputResourceId("lineout"));
    EXPECT_EQ(headphone, 32U);
    EXPECT_EQ(kepTVAudio::getSoundOutputCommonType(headphone), 16U);
}

TEST_F(KepTVAudioUtil, EverySingleOutputHasItsTypeBitAndACombinationHasNone)
{
    for (const OutputRow& row : kOutputRows)
        EXPECT_EQ(kepTVAudio::getSoundOutputCommonType(outputOf(row.output)), row.typeBit)
            << row.output;
    for (const std::uint32_t output : unknownOutputs())
        EXPECT_EQ(kepTVAudio::getSoundOutputCommonType(outputOf(output)), 0U) << output;
}

TEST_F(KepTVAudioUtil, TheSpeakerWithBluetoothHasNoTypeBit)
{
    const KEP_AUDIO_SNDOUT_T output = kepTVAudio::getSoundOutputResourceId("tv_speaker_bluetooth");
    EXPECT_EQ(output, 65536U);
    EXPECT_EQ(kepTVAudio::getSoundOutputCommonType(output), 0U);
}

TEST_F(KepTVAudioUtil, ACurrentOutputIsValidWhenItCanBeSelected)
{
    for (const OutputRow& row : kOutputRows) {
        select(row.output);
        EXPECT_EQ(mBackend.isValidSoundout(), row.valid) << row.output;
    }
    for (const std::uint32_t output : unknownOutputs()) {
        select(output);
        EXPECT_FALSE(mBackend.isValidSoundout()) << output;
    }
}

TEST_F(KepTVAudioUtil, AlsaIsKnownByNameButNotValid)
{
    select(kepTVAudio::getSoundOutputResourceId("alsa"));
    EXPECT_EQ(mBackend.getCurrentSoundout(), 256U);
    EXPECT_FALSE(mBackend.isValidSoundout());
}

// --- What the backend holds

TEST_F(KepTVAudioUtil, AtFirstThereIsNoOutput)
{
    EXPECT_EQ(mBackend.getCurrentSoundout(), 0U);
    EXPECT_FALSE(mBackend.isValidSoundout());
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), 0U);
}

TEST_F(KepTVAudioUtil, TheCurrentOutputIsAnsweredAsItIs)
{
    for (const OutputRow& row : kOutputRows) {
        select(row.output);
        EXPECT_EQ(mBackend.getCurrentSoundout(), row.output);
    }
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), 0U);
}

TEST_F(KepTVAudioUtil, TheOutputOfTheNoiseGuardIsLoggedAndItsOwn)
{
    mBackend.mPopNoiseSoundOutput = KEP_AUDIO_ARC;
    select(1);
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), KEP_AUDIO_ARC);
    EXPECT_THAT(logLines(),
                ElementsAre(LogLine{kLogInfo, "INFO_LOG", "keptvaudioutil:getPopNoiseSoundOutput",
                                    "getPopNoiseSoundOutput soundOutput: 1024"}));
    EXPECT_EQ(mBackend.getCurrentSoundout(), 1U);
}

TEST_F(KepTVAudioUtil, TheOutputOfTheNoiseGuardIsLoggedAtInfoLevelOnly)
{
    mBackend.mPopNoiseSoundOutput = KEP_AUDIO_BLUETOOTH;
    admit(kLogWarning);
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), KEP_AUDIO_BLUETOOTH);
    EXPECT_THAT(logLines(), IsEmpty());
    admit(kLogInfo);
    EXPECT_EQ(mBackend.getPopNoiseSoundOutput(), KEP_AUDIO_BLUETOOTH);
    EXPECT_THAT(logLines(),
                ElementsAre(LogLine{kLogInfo, "INFO_LOG", "keptvaudioutil:getPopNoiseSoundOutput",
                                    "getPopNoiseSoundOutput soundOutput: 131072"}));
}

TEST_F(KepTVAudioUtil, TheStoredOutputIsAnsweredAndMayBeEmpty)
{
    mBackend.mStoredSettings["soundOutput"] = "tv_speaker";
    EXPECT_EQ(mBackend.getSoundOutputKey(), "tv_speaker");
    mBackend.mStoredSettings["soundOutput"] = "";
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
    EXPECT_THAT(mBackend.mStoredSettings, ElementsAre(Pair("soundOutput", "")));
}

TEST_F(KepTVAudioUtil, AMissingStoredOutputIsEmptyAndNotInserted)
{
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
    EXPECT_THAT(mBackend.mStoredSettings, IsEmpty());
    mBackend.mStoredSettings = {{"SoundOutput", "a"}, {"soundoutput", "b"}, {"soundOutput ", "c"}};
    const std::map<std::string, std::string> before = mBackend.mStoredSettings;
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
    EXPECT_EQ(mBackend.mStoredSettings, before);
}

TEST_F(KepTVAudioUtil, TheStoredOutputIsNotTheCurrentOne)
{
    mBackend.mStoredSettings["soundOutput"] = "headphone";
    select(1);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "headphone");
    EXPECT_EQ(mBackend.getCurrentSoundout(), 1U);
}

TEST_F(KepTVAudioUtil, AllButTheNoiseGuardIsSilentAndLeavesTheTelevisionAlone)
{
    for (const char* source : {"ADEC", "AMIXER8", ""})
        EXPECT_EQ(kepTVAudio::isValidResource(kepTVAudio::getResourceId(source, "MAIN")),
                  source == "ADEC"s);
    EXPECT_EQ(kepTVAudio::getSoundOutputResourceId("nowhere"), 0U);
    EXPECT_EQ(kepTVAudio::getSoundOutputCommonType(outputOf(3)), 0U);
    EXPECT_EQ(kepTVAudio::audioResourceIdToIndex(resourceOf(7)), 0U);
    EXPECT_EQ(kepTVAudio::audioResourceIdToPort(resourceOf(28)), -1);
    EXPECT_FALSE(mBackend.isValidSoundout());
    EXPECT_EQ(mBackend.getCurrentSoundout(), 0U);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
}
