// SPDX-License-Identifier: Apache-2.0
#include "devicecapability.h"

#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "asnobody.h"
#include "jdomparser.h"
#include "platformlog.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFileName = "device-cap.json";
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

std::string nested(std::size_t depth)
{
    return R"({"audioMasterDefault": )" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

/// The complete file, blown up to exactly that many bytes.
std::string padded(std::size_t bytes)
{
    const std::string text = kComplete;
    return text + std::string(bytes - text.size(), ' ');
}

class DeviceCapabilityFile : public TelevisionTest
{
protected:
    DeviceCapabilityFile() { connectLog(); }

    [[nodiscard]] std::string path() const { return directory() / kFileName; }
    [[nodiscard]] DeviceCapability load(const std::string& content)
    {
        writeConfig(kFileName, content);
        forget();
        return DeviceCapability{path()};
    }
    /// Loads, and expects the defaults with one error that names the reason.
    void expectUnusable(const std::string& what, const std::string& reason)
    {
        forget();
        expectDefaults(DeviceCapability{path()}, what);
        EXPECT_THAT(logLines(), ElementsAre(loading(path()), failed(reason))) << what;
    }
    /// Why the platform's parser would not take the file.
    [[nodiscard]] std::string parserReason() const
    {
        JDomParser parser{JSchema::acceptAll()};
        parser.parseFile(path());
        return parser.errorText();
    }
};

struct UnusableContent {
    const char* what;
    std::string content;
};
const UnusableContent kUnusableContents[] = {
    {"empty", ""},
    {"blanks", " \n"},
    {"array", "[1, 2]"},
    {"array of the object", "[" + std::string{kComplete} + "]"},
    {"string", R"("audioMasterDefault")"},
    {"number", "15"},
    {"bool", "true"},
    {"null", "null"},
    {"no JSON", "card = default"},
    {"cut short", R"({"audioMasterDefault": {"card": "hw:0")"},
    {"something after it", std::string{kComplete} + " x"},
    {"larger than 1 MiB", padded((std::size_t{1} << 20) + 1)},
    {"nested 1000 deep", nested(1000)},
    {"no UTF-8", "{\"audioMasterDefault\": \"\xff\"}"},
    {"NUL bytes", std::string(64, '\0')},
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
        writeConfig(kFileName, content);
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
    for (const UnusableContent& row : kUnusableContents) {
        writeConfig(kFileName, row.content);
        expectUnusable(row.what, parserReason());
    }
}

TEST_F(DeviceCapabilityFile, OneMebibyteIsNotTooLarge)
{
    EXPECT_EQ(load(padded(std::size_t{1} << 20)).card, "hw:0");
}

TEST_F(DeviceCapabilityFile, AMissingFileKeepsTheDefaults)
{
    expectUnusable("missing", "No such file or directory");
}

TEST_F(DeviceCapabilityFile, AFifoKeepsTheDefaultsAtOnce)
{
    alarm(30); // ends a process that waits for a writer
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    expectUnusable("FIFO", parserReason());
}

TEST_F(DeviceCapabilityFile, ADirectoryKeepsTheDefaults)
{
    std::filesystem::create_directory(path());
    expectUnusable("directory", parserReason());
}

TEST_F(DeviceCapabilityFile, AnUnreadableFileKeepsTheDefaults)
{
    writeConfig(kFileName, kComplete);
    ASSERT_EQ(chmod(path().c_str(), 0), 0);
    ASSERT_EQ(chmod(directory().c_str(), 0755), 0);
    const AsNobody nobody;
    expectUnusable("unreadable", "Permission denied");
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
