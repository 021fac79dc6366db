// SPDX-License-Identifier: Apache-2.0
#include "devicecapability.h"

#include <string>

#include <gmock/gmock.h>

#include "configfiletest.h"
#include "platformlog.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kComplete =
    R"({"audioMasterDefault": {"card": "hw:0", "muteControlName": "'Mute'",
        "volumeControlName": "'Volume'"}})";

const LogLine kFound{kLogDebug, "", "devicecapability:loadDeviceConfig",
                     "Found audioMasterDefault"};
const LogLine kNotFound{kLogDebug, "", "devicecapability:loadDeviceConfig",
                        "Did not find  audioMasterDefault"};
const LogLine kMisconfigured{kLogError, "CONFIG_FILE_MISCONFIGURED",
                             "devicecapability:parseAudioDefaults",
                             "Failed to read resolution. using defaults."};

LogLine loading(const std::string& path)
{
    return {kLogInfo, "LOAD_CONFIG", "devicecapability:loadDeviceConfig",
            "Loading static DeviceCapability from file " + path};
}

LogLine failed(const std::string& reason)
{
    return {kLogError, "CONFIG_FILE_READ_FAILED", "devicecapability:loadDeviceConfig",
            "Failed to parse DeviceCapability file, Error: " + reason};
}

LogLine names(const std::string& card, const std::string& mute, const std::string& volume)
{
    return {kLogDebug, "", "devicecapability:parseAudioDefaults",
            "Found card " + card + " muteControlName " + mute + " and volumeControlName " + volume};
}

void expectNames(const DeviceCapability& capability, const std::string& card,
                 const std::string& mute, const std::string& volume, const std::string& what)
{
    EXPECT_EQ(capability.card, card) << what;
    EXPECT_EQ(capability.muteControlName, mute) << what;
    EXPECT_EQ(capability.volumeControlName, volume) << what;
}

void expectDefaults(const DeviceCapability& capability, const std::string& what)
{
    expectNames(capability, "default", "'Master Playback Switch'", "'Master Playback Volume'",
                what);
}

class DeviceCapabilityFile : public ConfigFileTest
{
protected:
    DeviceCapabilityFile() : ConfigFileTest("device-cap.json", "audioMasterDefault", kComplete) {}

    [[nodiscard]] DeviceCapability load(const std::string& content)
    {
        write(content);
        forget();
        return DeviceCapability{path()};
    }
    /// The defaults, with one error that names the reason.
    void expectUnusable(const std::string& what, const std::string& reason) override
    {
        forget();
        expectDefaults(DeviceCapability{path()}, what);
        EXPECT_THAT(logLines(), ElementsAre(loading(path()), failed(reason))) << what;
    }
};

constexpr const char* kMisconfiguredMembers[] = {
    R"("hw:0")",
    "15",
    "true",
    "null",
    "[]",
    R"(["card", "muteControlName", "volumeControlName"])",
    "{}",
    R"({"card": "hw:0"})",
    R"({"card": "hw:0", "muteControlName": "'Mute'"})",
    R"({"card": "hw:0", "volumeControlName": "'Volume'"})",
    R"({"muteControlName": "'Mute'", "volumeControlName": "'Volume'"})",
    R"({"Card": "hw:0", "muteControlName": "'Mute'", "volumeControlName": "'Volume'"})",
};

struct WrongTypeRow {
    const char* member;
    const char* card;
    const char* mute;
    const char* volume;
};
constexpr WrongTypeRow kWrongTypes[] = {
    {R"({"card": 0, "muteControlName": "'M'", "volumeControlName": "'V'"})", "", "'M'", "'V'"},
    {R"({"card": "hw:0", "muteControlName": null, "volumeControlName": "'V'"})", "hw:0", "", "'V'"},
    {R"({"card": "hw:0", "muteControlName": "'M'", "volumeControlName": ["'V'"]})", "hw:0", "'M'",
     ""},
    {R"({"card": {}, "muteControlName": true, "volumeControlName": 1.5})", "", "", ""},
};

} // namespace

TEST_F(DeviceCapabilityFile, ACompleteFileReplacesAllThreeNames)
{
    expectNames(load(kComplete), "hw:0", "'Mute'", "'Volume'", kComplete);
    EXPECT_THAT(logLines(),
                ElementsAre(loading(path()), kFound, names("hw:0", "'Mute'", "'Volume'")));
}

TEST_F(DeviceCapabilityFile, OtherKeysAreIgnored)
{
    expectNames(load(R"({"card": "top", "audioMasterDefault": {"volumeControlName": "v", "x": 1,
                         "muteControlName": "m", "card": "c"}, "muteControlName": "top"})"),
                "c", "m", "v", "other keys");
    EXPECT_THAT(logLines(), ElementsAre(loading(path()), kFound, names("c", "m", "v")));
}

TEST_F(DeviceCapabilityFile, AnObjectWithoutTheMemberKeepsTheDefaults)
{
    for (const char* content : {"{}", R"({"audiomasterdefault": {"card": "hw:0"}})",
                                R"({"card": "hw:0", "muteControlName": "'Mute'",
                                    "volumeControlName": "'Volume'"})"}) {
        expectDefaults(load(content), content);
        EXPECT_THAT(logLines(), ElementsAre(loading(path()), kNotFound)) << content;
    }
}

TEST_F(DeviceCapabilityFile, AnIncompleteMemberChangesNoneOfTheNames)
{
    for (const char* member : kMisconfiguredMembers) {
        expectDefaults(load(std::string{R"({"audioMasterDefault": )"} + member + "}"), member);
        EXPECT_THAT(logLines(), ElementsAre(loading(path()), kFound, kMisconfigured)) << member;
    }
}

TEST_F(DeviceCapabilityFile, ANameThatIsNoTextReadsAsEmpty)
{
    for (const WrongTypeRow& row : kWrongTypes) {
        expectNames(load(std::string{R"({"audioMasterDefault": )"} + row.member + "}"), row.card,
                    row.mute, row.volume, row.member);
        EXPECT_THAT(logLines(),
                    ElementsAre(loading(path()), kFound, names(row.card, row.mute, row.volume)))
            << row.member;
    }
}

TEST_F(DeviceCapabilityFile, AFaultyFileKeepsTheNamesReadBefore)
{
    DeviceCapability capability = load(kComplete);
    for (const char* content : {"[]", "{}", R"({"audioMasterDefault": {"card": "hw:1"}})"}) {
        write(content);
        capability.loadDeviceConfig(path());
        expectNames(capability, "hw:0", "'Mute'", "'Volume'", content);
    }
}

TEST_F(DeviceCapabilityFile, ParsingAMemberTakesItsNamesOver)
{
    DeviceCapability capability = load("{}");
    JValue member = JValue::object();
    member.put("card", "hw:1");
    member.put("muteControlName", "m");
    forget();
    capability.parseAudioDefaults(member);
    expectDefaults(capability, "incomplete");
    member.put("volumeControlName", "v");
    capability.parseAudioDefaults(member);
    expectNames(capability, "hw:1", "m", "v", "complete");
    EXPECT_THAT(logLines(), ElementsAre(kMisconfigured, names("hw:1", "m", "v")));
}

TEST_F(DeviceCapabilityFile, WhatIsNoJsonObjectKeepsTheDefaults)
{
    expectNoJsonObjectIsUnusable();
}

TEST_F(DeviceCapabilityFile, OneMebibyteIsNotTooLarge)
{
    EXPECT_EQ(load(padded(std::size_t{1} << 20)).card, "hw:0");
}

TEST_F(DeviceCapabilityFile, AMissingFileKeepsTheDefaults)
{
    expectMissingIsUnusable();
}

TEST_F(DeviceCapabilityFile, AFifoKeepsTheDefaultsAtOnce)
{
    expectFifoIsUnusableAtOnce();
}

TEST_F(DeviceCapabilityFile, ADirectoryKeepsTheDefaults)
{
    expectDirectoryIsUnusable();
}

TEST_F(DeviceCapabilityFile, AnUnreadableFileKeepsTheDefaults)
{
    expectUnreadableIsUnusable();
}

TEST_F(DeviceCapabilityFile, NothingBelowTheAdmittedLevelIsLogged)
{
    admit(kLogInfo);
    EXPECT_EQ(load(kComplete).card, "hw:0");
    EXPECT_THAT(logLines(), ElementsAre(loading(path())));
    EXPECT_EQ(load("{}").card, "default");
    EXPECT_THAT(logLines(), ElementsAre(loading(path())));

    admit(kLogError);
    EXPECT_EQ(load(kComplete).card, "hw:0");
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(load("[]").card, "default");
    EXPECT_THAT(logLines(), ElementsAre(failed("")));
    EXPECT_EQ(load(R"({"audioMasterDefault": {}})").card, "default");
    EXPECT_THAT(logLines(), ElementsAre(kMisconfigured));
}
