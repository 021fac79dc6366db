// SPDX-License-Identifier: Apache-2.0
// Digital outputs: country and current mode, mode numbers, switches, category code and copy status.
#include <string>

#include <gmock/gmock.h>

#include "digitaltest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// --- Country and current mode

TEST_F(DigitalTest, TheCountryIsJapanWhenItsCodeSaysSo)
{
    EXPECT_FALSE(mBackend.isCountryCodeJP()); // nothing is known
    for (const char* code : {"JP", "jp", "JPN", "J", "US", "", " JP"}) {
        quality()[kCountry] = code;
        EXPECT_EQ(mBackend.isCountryCodeJP(), code == std::string{"JP"}) << code;
    }
    pipeline()[kCountry] = "JP"; // the wrong map
    quality().erase(kCountry);
    EXPECT_FALSE(mBackend.isCountryCodeJP());
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(DigitalTest, TheModeIsTheUsersForOpticalAndArcOnly)
{
    for (const KEP_AUDIO_SNDOUT_T output : kAllOutputs) {
        for (const char* mode : {"pcm", "auto", "passThrough", "other", ""}) {
            select(output, mode);
            forget();
            if (output == KEP_AUDIO_SPDIF || output == KEP_AUDIO_ARC) {
                EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), mode);
                EXPECT_THAT(logLines(),
                            ElementsAre(said("getSoundOutputDigitalMode",
                                             std::string{"Setting digital mode as "} + mode)));
            } else {
                EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), "pcm") << output;
                EXPECT_THAT(
                    logLines(),
                    ElementsAre(said("getSoundOutputDigitalMode",
                                     "Setting digital mode as pcm, since its not optical or arc")));
            }
        }
    }
}

TEST_F(DigitalTest, TheModeIsEmptyUntilTheUserHasChosen)
{
    for (const KEP_AUDIO_SNDOUT_T output : {KEP_AUDIO_SPDIF, KEP_AUDIO_ARC}) {
        mBackend.mCurrentSoundout = output;
        forget();
        EXPECT_EQ(mBackend.getSoundOutputDigitalMode(), "");
        EXPECT_THAT(logLines(),
                    ElementsAre(said("getSoundOutputDigitalMode", "Setting digital mode as ")));
    }
}

// --- Mode numbers

// Each of what they follow from by itself, and the model's exception; digitalformats_test has all.
struct ModeRow {
    const char* mode;
    bool japan;
    bool bno;
    bool mixed;
    bool forced;
    const char* arcProfile;
    int optic;
    int arc;
};

// clang-format off
constexpr ModeRow kModes[] = {
    // mode           japan  bno    mixed  forced  profile  optic  ARC
    {"passThrough", false, false, false, false,  "",        7,    12},
    {"passThrough", true,  false, false, false,  "",        8,    13},
    {"passThrough", true,  true,  false, false,  "",        8,    12},
    {"passThrough", false, false, true,  false,  "",        2,     2},
    {"passThrough", false, false, false, true,   "",        7,    12},
    {"passThrough", false, false, false, false,  "EAC3",    7,    14},
    {"auto",        false, false, false, false,  "",        2,     2},
    {"auto",        true,  false, false, false,  "",        3,     3},
    {"auto",        true,  true,  false, false,  "",        3,     2},
    {"auto",        false, false, true,  false,  "",        4,     6},
    {"auto",        false, false, false, true,   "",        6,    10},
    {"auto",        false, false, false, false,  "ATMOS",   2,     4},
};
// clang-format on

class ModeNumbers : public DigitalTest
{
protected:
    void enter(const ModeRow& row)
    {
        setCountry(row.japan);
        isBnoModel() = row.bno;
        mixes() = row.mixed;
        forces() = row.forced;
        arcProfile() = row.arcProfile;
        forget();
    }

    static Lines optic(const std::string& mode, int number)
    {
        return {
            said("getSoundOutputOpticMode",
                 "Get SoundOutputMode for Optic digitalMode " + mode + " "),
            whispered("getSoundOutputOpticMode", "Optic digital mode " + std::to_string(number))};
    }
    static Lines arc(const std::string& mode, int number)
    {
        return {
            said("getSoundOutputArcMode", "Get SoundOutputMode for ARC digitalMode " + mode + " "),
            whispered("getSoundOutputArcMode", "Arc digital mode " + std::to_string(number))};
    }

    static std::string name(const ModeRow& row)
    {
        return row.mode + (" " + flag(row.japan)) + flag(row.bno) + flag(row.mixed) +
               flag(row.forced) + " " + row.arcProfile;
    }
};

TEST_F(ModeNumbers, FollowCountryMixerForcedFormatModelAndProfile)
{
    for (const ModeRow& row : kModes) {
        const std::string what = name(row);
        const bool passes = row.mode == std::string{"passThrough"};
        enter(row);
        EXPECT_EQ(passes ? mBackend.getPassThroughOpticMode() : mBackend.getAutoOpticMode(),
                  row.optic)
            << what;
        EXPECT_EQ(passes ? mBackend.getPassThroughArcMode() : mBackend.getAutoArcMode(), row.arc)
            << what;
        EXPECT_THAT(logLines(), IsEmpty());
        EXPECT_EQ(mBackend.getSoundOutputOpticMode(row.mode), row.optic) << what;
        EXPECT_EQ(mBackend.getSoundOutputArcMode(row.mode), row.arc) << what;
        EXPECT_EQ(logLines(), optic(row.mode, row.optic) + arc(row.mode, row.arc)) << what;
        EXPECT_THAT(told(), IsEmpty());
    }
}

TEST_F(ModeNumbers, OfPcmAndOfOtherModesAreAlwaysTheSame)
{
    for (const ModeRow& row : kModes) {
        for (const std::string mode : {"pcm", "PCM", "passthrough", "Auto", "", "other"}) {
            enter(row);
            const int number = mode == "pcm" ? 1 : 0;
            EXPECT_EQ(mBackend.getSoundOutputOpticMode(mode), number) << mode;
            EXPECT_EQ(mBackend.getSoundOutputArcMode(mode), number) << mode;
            EXPECT_EQ(logLines(), optic(mode, number) + arc(mode, number)) << mode;
        }
    }
}

TEST_F(ModeNumbers, OfAnUnknownCountryAreNotThoseOfJapan)
{
    quality().erase(kCountry);
    EXPECT_EQ(mBackend.getPassThroughOpticMode(), 7);
    EXPECT_EQ(mBackend.getAutoOpticMode(), 2);
    EXPECT_EQ(mBackend.getPassThroughArcMode(), 12);
    EXPECT_EQ(mBackend.getAutoArcMode(), 2);
}

TEST_F(ModeNumbers, AreWrittenBeforeTheFormatOfEarc)
{
    for (const ModeRow& row : kModes) {
        enter(row);
        EXPECT_TRUE(mBackend.setSoundOutputDigital(row.mode));
        EXPECT_THAT(told(), ElementsAre("Sndout Spdif OutputType " + std::to_string(row.optic) +
                                            " " + std::to_string(row.arc),
                                        earcWrite(1, 1)))
            << name(row); // no codec, no capability: PCM
    }
}

TEST_F(ModeNumbers, AndTheFormatOfEarcAreBothTriedAndBothCount)
{
    for (const std::string mode : {"pcm", "other"}) {
        const bool known = mode == "pcm";
        for (const bool first : {false, true}) {
            for (const bool second : {false, true}) {
                clearInjections();
                if (first)
                    injectCard("write", kRefused, "Sndout Spdif OutputType");
                if (second)
                    injectCard("write", kRefused, "Sndout EARC Outputtype");
                forget();
                EXPECT_EQ(mBackend.setSoundOutputDigital(mode), known && !first && !second);
                const std::string number = known ? "1" : "0";
                Texts expectedTold = {"Sndout Spdif OutputType " + number + " " + number +
                                      (first ? " -> -5" : "")};
                Lines expected =
                    Lines{said("setSoundOutputDigital", "Request to set digital mode as " + mode)} +
                    optic(mode, known ? 1 : 0) + arc(mode, known ? 1 : 0);
                if (first)
                    expected =
                        expected +
                        Lines{refusedByDriver(),
                              notSet("setSoundOutputDigital",
                                     "setSoundOutputDigital : Did not able to set the "
                                     "element: Sndout Spdif OutputType with digitalMode as " +
                                         mode)};
                if (known) {
                    expectedTold.push_back(earcWrite(1, 1) + (second ? " -> -5" : ""));
                    expected = expected + earcLines(1, 1, second);
                }
                expect(expectedTold, expected, mode);
            }
        }
    }
}

// --- ARC and eARC switches

class ArcSwitch : public DigitalTest
{
};

TEST_F(ArcSwitch, WritesArcThenEarc)
{
    for (const int arc : {0, 1}) {
        for (const int earc : {0, 1}) {
            for (const int refused : {-1, 0, 1}) {
                clearInjections();
                if (refused >= 0)
                    refuseWrite(static_cast<unsigned int>(refused));
                forget();
                const std::string first = std::to_string(arc);
                const std::string second = std::to_string(earc);
                EXPECT_EQ(mBackend.setArcOnOff(arc, earc), refused < 0);
                Texts expectedTold = {"Sndout ARC OnOff " + first + (refused == 0 ? " -> -5" : "")};
                Lines expected = {said("setArcOnOff", "Setting SoundOut on off for ARC status: " +
                                                          first + " & eARC status: " + second)};
                if (refused == 0) {
                    expected = expected +
                               Lines{refusedByDriver(),
                                     notSet("setArcOnOff",
                                            "In setSoundOutArc : Did not able to set the element: "
                                            "Sndout ARC OnOff with status " +
                                                first)};
                } else {
                    expectedTold.push_back("Sndout EARC OnOff " + second +
                                           (refused == 1 ? " -> -5" : ""));
                    if (refused == 1)
                        expected =
                            expected + Lines{refusedByDriver(),
                                             notSet("setArcOnOff",
                                                    "In setSoundOuteArc : Did not able to set the "
                                                    "element: Sndout EARC OnOff with status " +
                                                        second)};
                }
                expect(expectedTold, expected, first + second);
            }
        }
    }
}

// --- Atmos

class AtmosEncoder : public DigitalTest
{
protected:
    static Lines lines(bool on, bool refused)
    {
        Lines all = {said("setAtmosEncode", "Setting Atmos Encode value is " + flag(on))};
        if (refused) {
            all.push_back(refusedByDriver());
            all.push_back(notSet("setAtmosEncode", "In setAtmosEncode : Did not able to set the "
                                                   "element with atmos value " +
                                                       flag(on)));
        }
        return all;
    }
    static std::string write(bool on, bool refused)
    {
        return "Sndout eAC3 ATMOS Encode OnOff " + flag(on) + (refused ? " -> -5" : "");
    }
    void enter(bool refused)
    {
        clearInjections();
        if (refused)
            refuseWrite(0);
        forget();
    }
};

TEST_F(AtmosEncoder, IsSwitched)
{
    for (const bool on : {true, false}) {
        for (const bool refused : {false, true}) {
            enter(refused);
            mBackend.setAtmosEncode(on);
            expect({write(on, refused)}, lines(on, refused), flag(on));
        }
    }
}

TEST_F(AtmosEncoder, FollowsTheProfileWhileArcIsActive)
{
    for (const std::string profile : {"ATMOS", "EAC3", "atmos", ""}) {
        for (const std::string activation : {"ARC", "eARC", "None", "arc", ""}) {
            for (const bool refused : {false, true}) {
                enter(refused);
                mBackend.setAtmosEncodeForARCProfile(profile, activation);
                const Lines opening = {said("setAtmosEncodeForARCProfile",
                                            "setAtmosEncodeForARCProfile:: arcProfileValue is " +
                                                profile + " and arcActivationStatus is " +
                                                activation)};
                const bool on = profile == "ATMOS";
                if (activation == "ARC")
                    expect({write(on, refused)}, opening + lines(on, refused), profile);
                else
                    expect({}, opening, profile + activation);
            }
        }
    }
}

TEST_F(AtmosEncoder, FollowsTheFlagWhileEarcIsActive)
{
    for (const bool atmos : {true, false}) {
        for (const std::string activation : {"eARC", "ARC", "None", "EARC", ""}) {
            for (const bool refused : {false, true}) {
                enter(refused);
                mBackend.setAtmosEncodeForEARCProfile(atmos, activation);
                const Lines opening = {said("setAtmosEncodeForEARCProfile",
                                            "setAtmosEncodeForEARCProfile:: eArcAtmosValue is " +
                                                flag(atmos) + " and arcActivationStatus is " +
                                                activation)};
                if (activation == "eARC")
                    expect({write(atmos, refused)}, opening + lines(atmos, refused), activation);
                else
                    expect({}, opening, activation);
            }
        }
    }
}

// --- Decoder

TEST_F(DigitalTest, TheDecoderGetsBothFlagsInOrder)
{
    for (const bool ott : {false, true}) {
        for (const bool lock : {false, true}) {
            for (const bool refused : {false, true}) {
                clearInjections();
                if (refused)
                    refuseWrite(0);
                forget();
                EXPECT_EQ(mBackend.setOTTAdecMode(ott, lock), !refused);
                Lines expected = {said("setOTTAdecMode", "Setting OTT mode isOTTEnable " +
                                                             flag(ott) + " isATMOSLockingEnable " +
                                                             flag(lock))};
                if (refused)
                    expected =
                        expected + Lines{refusedByDriver(),
                                         notSet("setOTTAdecMode", "Did not able to set the "
                                                                  "element: Adec Dolby OTTMode")};
                expect({"Adec Dolby OTTMode " + flag(ott) + " " + flag(lock) +
                        (refused ? " -> -5" : "")},
                       expected, flag(ott) + flag(lock));
            }
        }
    }
}

// --- Category code

class CategoryCode : public DigitalTest
{
};

TEST_F(CategoryCode, IsThatOfTheBroadcastSystem)
{
    struct Row {
        const char* system;
        const char* codes;
    };
    constexpr Row rows[] = {{"ATSC", "100 100"}, {"ARIB", "4 4"},  {"DVB", "12 12"}, {"", "0 0"},
                            {"atsc", "0 0"},     {"DVB-T", "0 0"}, {"NTSC", "0 0"}};
    for (const Row& row : rows) {
        for (const bool refused : {false, true}) {
            clearInjections();
            quality()[kBroadcastSystem] = row.system;
            if (refused)
                refuseWrite(0);
            forget();
            mBackend.setBroadcastSystem();
            Lines expected = {
                said("setBroadcastSystem",
                     std::string{"setBroadcastSystem broadcastSystemValue "} + row.system)};
            if (refused)
                expected =
                    expected + Lines{refusedByDriver(), notSet("setBroadcastSystem",
                                                               "Did not able to set the element: "
                                                               "Sndout Spdif CategoryCode")};
            expect(
                {std::string{"Sndout Spdif CategoryCode "} + row.codes + (refused ? " -> -5" : "")},
                expected, row.system);
        }
    }
}

TEST_F(CategoryCode, IsNotWrittenWithoutABroadcastSystem)
{
    pipeline()[kBroadcastSystem] = "DVB"; // the wrong map
    mBackend.setBroadcastSystem();
    expect({},
           {error("INVALID_PARAMETER", std::string{kFile} + "setBroadcastSystem",
                  "tv.zib.tvBroadcastSystem is not available. Failed to set Broadcast System")},
           "missing");
}

// --- Copy status

struct CopyRow {
    const char* copyright;
    int value;
};
constexpr CopyRow kCopies[] = {
    {"free", 1}, {"no_more", 2}, {"once", 4}, {"never", 8}, {"Never", 0},
    {"FREE", 0}, {"", 0},        {"more", 0}, {"free ", 0},
};

class CopyStatus : public DigitalTest
{
protected:
    static Lines values(const CopyRow& row)
    {
        const std::string copyright = row.copyright;
        const std::string value = std::to_string(row.value);
        return {whispered("getSoundOutOpticCopyValue",
                          "getSoundOutOpticCopyValue for copyright: " + copyright),
                whispered("getSoundOutOpticCopyValue",
                          "getSoundOutOpticCopyValue - optic value is " + value),
                whispered("getSoundOutArcCopyValue", "Copyright value received : " + copyright),
                whispered("getSoundOutArcCopyValue",
                          "getSoundOutArcCopyValue - arc value is " + value)};
    }
};

TEST_F(CopyStatus, HasANumberForFourCopyrights)
{
    for (const CopyRow& row : kCopies) {
        forget();
        EXPECT_EQ(mBackend.getSoundOutOpticCopyValue(row.copyright), row.value) << row.copyright;
        EXPECT_EQ(mBackend.getSoundOutArcCopyValue(row.copyright), row.value) << row.copyright;
        expect({}, values(row), row.copyright);
        forget();
        EXPECT_EQ(mBackend.isValidCopyright(row.copyright), row.value != 0) << row.copyright;
        expect({},
               {whispered("isValidCopyright",
                          std::string{"Copyright value received is "} + row.copyright)},
               row.copyright);
    }
}

TEST_F(CopyStatus, IsWrittenForOpticalAndArc)
{
    for (const CopyRow& row : kCopies) {
        for (const bool refused : {false, true}) {
            clearInjections();
            if (refused)
                refuseWrite(0);
            forget();
            EXPECT_EQ(mBackend.setSpdifSecurity(row.copyright), !refused);
            const std::string copyright = row.copyright;
            const std::string value = std::to_string(row.value);
            Lines expected =
                Lines{said("setSpdifSecurity",
                           "setSpdifSecurity for scms api with copyright value as " + copyright)} +
                values(row);
            if (refused)
                expected = expected + Lines{refusedByDriver(),
                                            notSet("setSpdifSecurity",
                                                   "Did not able to set the element: Sndout Spdif "
                                                   "CopyProtectionInfo with copyright value as " +
                                                       copyright)};
            expect({"Sndout Spdif CopyProtectionInfo " + value + " " + value +
                    (refused ? " -> -5" : "")},
                   expected, copyright);
        }
    }
}

} // namespace
