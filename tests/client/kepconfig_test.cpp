// SPDX-License-Identifier: Apache-2.0
#include "kepconfig.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "configfiletest.h"
#include "platformlog.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

kepConfig& config()
{
    return *kepConfig::getInstance();
}

LogLine loading(const std::string& path)
{
    return {kLogInfo, "LOAD_CONFIG", "kepconfig:loadKEPConfig",
            "Loading kepConfig config from file " + path};
}

LogLine failed(const std::string& path, const std::string& reason)
{
    return {kLogError, "CONFIG_FILE_READ_FAILED", "kepconfig:loadKEPConfig",
            "Failed to parse kep config file, using defaults. File: " + path +
                ". Error: " + reason};
}

LogLine wanted(const std::string& function, const std::string& key)
{
    return {kLogDebug, "", "kepconfig:" + function,
            "Need value for soc type: Q27R5 & key type: " + key};
}

LogLine notFound(const std::string& function, const std::string& key)
{
    return {kLogDebug, "", "kepconfig:" + function, "Did not find key type in kep config " + key};
}

std::string section(const std::string& members)
{
    return R"({"Q27R5": {)" + members + "}}";
}

class KepConfig : public ConfigFileTest
{
protected:
    KepConfig() : ConfigFileTest("kep-config.json", "Q27R5", section(R"("kepAudio": "TV")")) {}

    bool load(const std::string& content)
    {
        write(content);
        return config().loadKEPConfig();
    }
    void loadGood() override { EXPECT_TRUE(config().loadKEPConfig()); }
    void expectUnusable(const std::string& what, const std::string& reason) override
    {
        forget();
        EXPECT_FALSE(config().loadKEPConfig()) << what;
        EXPECT_THAT(logLines(), ElementsAre(loading(path()), failed(path(), reason))) << what;
        EXPECT_EQ(config().getValue("kepAudio"), "") << what;
    }
    /// Neither a text nor a number is there, and the log says so.
    void expectNothing(const std::string& what)
    {
        forget();
        EXPECT_EQ(config().getValue("kepAudio"), "") << what;
        EXPECT_EQ(config().getDefaultVolume("kepDefaultVolume"), 0) << what;
        EXPECT_THAT(logLines(),
                    ElementsAre(wanted("getValue", "kepAudio"), notFound("getValue", "kepAudio"),
                                wanted("getDefaultVolume", "kepDefaultVolume"),
                                notFound("getDefaultVolume", "kepDefaultVolume")))
            << what;
    }
};

struct NumberRow {
    const char* json;
    int number;
};
// clang-format off
constexpr NumberRow kNumbers[] = {
    {"15",     15},
    {"0",      0},
    {"255",    255},
    {"300",    300},
    {"-1",     -1},
    {"15.9",   15},
    {"-1.9",   -1},
    {"0.999",  0},
    {"1.2e1",  12},
    {"\"15\"", 0},
    {"true",   0},
    {"null",   0},
    {"{}",     0},
    {"[15]",   0},
};
// clang-format on

struct TextRow {
    const char* json;
    const char* text;
};
// clang-format off
constexpr TextRow kTexts[] = {
    {R"("TV")",      "TV"},
    {R"("ALSA")",    "ALSA"},
    {R"(" tv ")",    " tv "},
    {R"("")",        ""},
    {"15",           ""},
    {"true",         ""},
    {"null",         ""},
    {R"({"TV": 1})", ""},
    {R"(["TV"])",    ""},
};
// clang-format on

} // namespace

TEST_F(KepConfig, ThereIsOneConfiguration)
{
    ASSERT_NE(kepConfig::getInstance(), nullptr);
    EXPECT_EQ(kepConfig::getInstance(), kepConfig::getInstance());
}

TEST_F(KepConfig, AnObjectLoads)
{
    EXPECT_TRUE(load(section(R"("kepAudio": "TV", "kepDefaultVolume": 15)")));
    EXPECT_THAT(logLines(), ElementsAre(loading(path())));
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
    EXPECT_EQ(config().getDefaultVolume("kepDefaultVolume"), 15);
}

TEST_F(KepConfig, ReadingAValueSaysWhichOne)
{
    load(section(R"("kepAudio": "TV", "kepDefaultVolume": 15)"));
    forget();
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
    EXPECT_EQ(config().getDefaultVolume("kepDefaultVolume"), 15);
    EXPECT_THAT(logLines(), ElementsAre(wanted("getValue", "kepAudio"),
                                        wanted("getDefaultVolume", "kepDefaultVolume")));
}

TEST_F(KepConfig, AMissingKeyReadsAsNothingAndSaysSo)
{
    EXPECT_TRUE(load(section("")));
    expectNothing("empty section");
}

TEST_F(KepConfig, AnObjectWithoutTheSectionLoadsAndAnswersNothing)
{
    for (const char* content : {"{}", R"({"kepAudio": "TV"})", R"({"q27r5": {"kepAudio": "TV"}})",
                                R"({"Q27R6": {"kepAudio": "TV"}})"}) {
        forget();
        EXPECT_TRUE(load(content)) << content;
        EXPECT_THAT(logLines(), ElementsAre(loading(path()))) << content;
        expectNothing(content);
    }
}

TEST_F(KepConfig, ASectionThatIsNoObjectLoadsAndAnswersNothing)
{
    for (const char* value : {R"("TV")", "15", "true", "null", R"(["kepAudio", "TV"])"}) {
        EXPECT_TRUE(load(member("Q27R5", value))) << value;
        expectNothing(value);
    }
}

TEST_F(KepConfig, OtherSectionsAreIgnored)
{
    EXPECT_TRUE(load(R"({"A": {"kepAudio": "A"}, "Q27R5": {"kepAudio": "TV"},
                         "Z": {"kepAudio": "Z"}, "kepAudio": "top"})"));
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
}

TEST_F(KepConfig, TextsAreReadAsTheyAreAndAllElseAsEmpty)
{
    for (const TextRow& row : kTexts) {
        EXPECT_TRUE(load(section(std::string{R"("kepAudio": )"} + row.json))) << row.json;
        forget();
        EXPECT_EQ(config().getValue("kepAudio"), row.text) << row.json;
        EXPECT_THAT(logLines(), ElementsAre(wanted("getValue", "kepAudio"))) << row.json;
    }
}

TEST_F(KepConfig, NumbersAreCutTowardZeroAndAllElseReadsAsZero)
{
    for (const NumberRow& row : kNumbers) {
        EXPECT_TRUE(load(section(std::string{R"("kepDefaultVolume": )"} + row.json))) << row.json;
        forget();
        EXPECT_EQ(config().getDefaultVolume("kepDefaultVolume"), row.number) << row.json;
        EXPECT_THAT(logLines(), ElementsAre(wanted("getDefaultVolume", "kepDefaultVolume")))
            << row.json;
    }
}

TEST_F(KepConfig, TheKeyIsTheCallersChoice)
{
    load(section(R"("kepAudio": "TV", "other": "value", "number": 7)"));
    EXPECT_EQ(config().getValue("other"), "value");
    EXPECT_EQ(config().getDefaultVolume("number"), 7);
    EXPECT_EQ(config().getValue(""), "");
}

TEST_F(KepConfig, BeforeItIsLoadedThereIsNothing)
{
    expectNothing("not loaded");
}

TEST_F(KepConfig, EachLoadReadsTheFileAnew)
{
    EXPECT_TRUE(load(section(R"("kepAudio": "TV", "kepDefaultVolume": 15)")));
    EXPECT_TRUE(load(section(R"("kepAudio": "ALSA")")));
    EXPECT_EQ(config().getValue("kepAudio"), "ALSA");
    EXPECT_EQ(config().getDefaultVolume("kepDefaultVolume"), 0);
    EXPECT_FALSE(load("[]"));
    EXPECT_EQ(config().getValue("kepAudio"), "");
    EXPECT_TRUE(load(section(R"("kepAudio": "TV")")));
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
}

TEST_F(KepConfig, WhatIsNoJsonObjectFails)
{
    expectNoJsonObjectIsUnusable();
}

TEST_F(KepConfig, OneMebibyteIsNotTooLarge)
{
    EXPECT_TRUE(load(padded(std::size_t{1} << 20)));
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
}

TEST_F(KepConfig, AMissingFileFails)
{
    expectMissingIsUnusable();
}

TEST_F(KepConfig, AFifoFailsAtOnce)
{
    expectFifoIsUnusableAtOnce();
}

TEST_F(KepConfig, ADirectoryFails)
{
    expectDirectoryIsUnusable();
}

TEST_F(KepConfig, AnUnreadableFileFails)
{
    expectUnreadableIsUnusable();
}

TEST_F(KepConfig, ALinkToTheFileIsFollowedAndALooseOneFails)
{
    writeConfig("elsewhere.json", section(R"("kepAudio": "TV")"));
    std::filesystem::create_symlink("elsewhere.json", path());
    EXPECT_TRUE(config().loadKEPConfig());
    EXPECT_EQ(config().getValue("kepAudio"), "TV");
    std::filesystem::remove(directory() / "elsewhere.json");
    expectUnusable("loose link", "No such file or directory");
}

TEST_F(KepConfig, WithoutAReplacementTheSystemsDirectoryIsRead)
{
    unsetenv("KEP_CONFIG_DIR");
    config().loadKEPConfig();
    ASSERT_FALSE(logLines().empty());
    EXPECT_EQ(logLines()[0], loading("/etc/orva/kep/kep-config.json"));
}

TEST_F(KepConfig, AnEmptyReplacementIsNone)
{
    setenv("KEP_CONFIG_DIR", "", 1);
    config().loadKEPConfig();
    ASSERT_FALSE(logLines().empty());
    EXPECT_EQ(logLines()[0], loading("/etc/orva/kep/kep-config.json"));
}

TEST_F(KepConfig, ThePathIsLoggedAsItIs)
{
    const std::string elsewhere = directory() / "100%s%n";
    setenv("KEP_CONFIG_DIR", elsewhere.c_str(), 1);
    EXPECT_FALSE(config().loadKEPConfig());
    const std::string file = elsewhere + "/kep-config.json";
    EXPECT_THAT(logLines(), ElementsAre(loading(file), failed(file, "No such file or directory")));
}

TEST_F(KepConfig, NothingBelowTheAdmittedLevelIsLogged)
{
    admit(kLogInfo);
    load(section(R"("kepAudio": "TV")"));
    config().getValue("kepAudio");
    config().getDefaultVolume("kepDefaultVolume");
    EXPECT_THAT(logLines(), ElementsAre(loading(path())));

    admit(kLogError);
    forget();
    load(section(R"("kepAudio": "TV")"));
    config().getValue("nothing");
    EXPECT_THAT(logLines(), IsEmpty());
    load("[]");
    EXPECT_THAT(logLines(), ElementsAre(failed(path(), "")));
}
