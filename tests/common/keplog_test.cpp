// SPDX-License-Identifier: Apache-2.0
#include "keplog.h"

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "platformlog.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// The stem is found at compile time.
static_assert(kepLogStemOf("/tree/src/client/kepclient.cpp") == "kepclient");

struct RawMessage {
    std::string context;
    int level;
    std::string id;
    std::string text;
    std::size_t pairCount;

    bool operator==(const RawMessage&) const = default;
};

class KepLog : public TelevisionTest
{
protected:
    KepLog() { connectLog(); }

    /// Takes the messages as they are, line numbers included, instead of the fixture.
    void takeRaw()
    {
        LogSetSink([this](const LogMessage& message) {
            mRaw.push_back(
                {message.context, message.level, message.id, message.text, message.pairCount});
        });
    }
    [[nodiscard]] const std::vector<RawMessage>& raw() const { return mRaw; }

private:
    std::vector<RawMessage> mRaw;
};

void sayError()
{
    KEP_ERROR("SOME_ERROR", "broken %d", 1);
}
void sayInfo()
{
    KEP_INFO("started %s", "twice");
}
void sayDebug()
{
    KEP_DEBUG("looked at %c", 'x');
}
void sayWithoutArguments()
{
    KEP_DEBUG("plain");
}
int sayAndTellLine()
{
    KEP_LOG(kLogInfo, "WHERE", "here");
    return __LINE__ - 1;
}
int sayNamed(const char* function)
{
    KEP_LOG_AS(KEP_HERE.as(function), kLogInfo, "WHERE", "here");
    return __LINE__ - 1;
}
void sayFor(const kepLogOrigin& origin, const std::string& what)
{
    KEP_DEBUG_AS(origin, "on behalf of %s", what.c_str());
}
int asksAnother()
{
    sayFor(KEP_HERE, "it");
    return __LINE__ - 1;
}

struct StemRow {
    const char* path;
    const char* stem;
};
// clang-format off
constexpr StemRow kStems[] = {
    {"/tree/src/client/kepclient.cpp",               "kepclient"},
    {"kepclient.cpp",                                "kepclient"},
    {"./kepclient.cpp",                              "kepclient"},
    {"../src/client/kepclient.cpp",                  "kepclient"},
    {"/usr/src/kep-0.1.0/src/client/kepclient.cpp",  "kepclient"},
    {"/usr/src/kep-0.1.0/src/client/kepclient",      "kepclient"},
    {"kepclient",                                    "kepclient"},
    {"src/tv/keptvaudio.routing.cpp",                "keptvaudio"},
    {"../src/tv/keptvaudio.routing.cpp",             "keptvaudio"},
    {"",                                             ""},
};
// clang-format on

struct LevelRow {
    int admitted;
    bool error;
    bool info;
    bool debug;
};
// clang-format off
constexpr LevelRow kLevels[] = {
    // admitted      error  info   debug
    {kLogError - 1,  false, false, false},
    {kLogError,      true,  false, false},
    {kLogWarning,    true,  false, false},
    {kLogInfo - 1,   true,  false, false},
    {kLogInfo,       true,  true,  false},
    {kLogDebug,      true,  true,  true},
};
// clang-format on

} // namespace

TEST_F(KepLog, EachMacroWritesItsLevelIdOriginAndText)
{
    sayError();
    sayInfo();
    sayDebug();
    sayWithoutArguments();
    EXPECT_THAT(logLines(),
                ElementsAre(LogLine{kLogError, "SOME_ERROR", "keplog_test:sayError", "broken 1"},
                            LogLine{kLogInfo, "INFO_LOG", "keplog_test:sayInfo", "started twice"},
                            LogLine{kLogDebug, "", "keplog_test:sayDebug", "looked at x"},
                            LogLine{kLogDebug, "", "keplog_test:sayWithoutArguments", "plain"}));
}

TEST_F(KepLog, TheTextStartsWithFileFunctionAndLine)
{
    takeRaw();
    const std::string line = std::to_string(sayAndTellLine());
    EXPECT_THAT(raw(), ElementsAre(RawMessage{"kep", kLogInfo, "WHERE",
                                              "keplog_test:sayAndTellLine(" + line + ") here", 0}));
}

TEST_F(KepLog, AFunctionThatLogsForItsCallerGivesThePlaceOfTheCall)
{
    takeRaw();
    const std::string line = std::to_string(asksAnother());
    EXPECT_THAT(
        raw(), ElementsAre(RawMessage{"kep", kLogDebug, "",
                                      "keplog_test:asksAnother(" + line + ") on behalf of it", 0}));
}

TEST_F(KepLog, APlaceCanBearTheNameOfAnotherFunction)
{
    takeRaw();
    const std::string line = std::to_string(sayNamed("another"));
    EXPECT_THAT(raw(), ElementsAre(RawMessage{"kep", kLogInfo, "WHERE",
                                              "keplog_test:another(" + line + ") here", 0}));
}

TEST_F(KepLog, APlaceIsWrittenWithTheStemOfItsFile)
{
    takeRaw();
    sayFor({kepLogStemOf("/usr/src/kep-0.1.0/src/tv/keptvaudio.routing.cpp"), "setMute", 4711},
           "it");
    sayFor({"keptvaudio", "setMute", 4711}, "it");
    const RawMessage expected{"kep", kLogDebug, "", "keptvaudio:setMute(4711) on behalf of it", 0};
    EXPECT_THAT(raw(), ElementsAre(expected, expected));
}

TEST_F(KepLog, TheStemIsTheNameWithoutFoldersUpToItsFirstDot)
{
    for (const StemRow& row : kStems)
        EXPECT_EQ(kepLogStem(row.path), row.stem) << row.path;
}

TEST_F(KepLog, OnlyAdmittedLevelsAreWritten)
{
    for (const LevelRow& row : kLevels) {
        admit(row.admitted);
        forget();
        sayError();
        sayInfo();
        sayDebug();
        EXPECT_EQ(logLines(kLogError).size(), row.error ? 1U : 0U) << row.admitted;
        EXPECT_EQ(logLines(kLogInfo).size(), row.info ? 1U : 0U) << row.admitted;
        EXPECT_EQ(logLines(kLogDebug).size(), row.debug ? 1U : 0U) << row.admitted;
    }
}

TEST_F(KepLog, ArgumentsAreEvaluatedOnceWhenAdmittedAndElseNotAtAll)
{
    for (const LevelRow& row : kLevels) {
        admit(row.admitted);
        int errors = 0;
        int infos = 0;
        int debugs = 0;
        int debugsForCaller = 0;
        KEP_ERROR("SOME_ERROR", "%d", ++errors);
        KEP_INFO("%d", ++infos);
        KEP_DEBUG("%d", ++debugs);
        KEP_DEBUG_AS(KEP_HERE.as("caller"), "%d", ++debugsForCaller);
        EXPECT_EQ(errors, row.error ? 1 : 0) << row.admitted;
        EXPECT_EQ(infos, row.info ? 1 : 0) << row.admitted;
        EXPECT_EQ(debugs, row.debug ? 1 : 0) << row.admitted;
        EXPECT_EQ(debugsForCaller, row.debug ? 1 : 0) << row.admitted;
    }
}

TEST_F(KepLog, WithoutAContextOnlyErrorsAreWritten)
{
    kepLogContext = nullptr;
    takeRaw();
    int evaluated = 0;
    sayInfo();
    sayDebug();
    KEP_DEBUG("%d", ++evaluated);
    EXPECT_THAT(raw(), IsEmpty());
    EXPECT_EQ(evaluated, 0);

    sayError();
    ASSERT_EQ(raw().size(), 1U);
    EXPECT_EQ(raw()[0].context, "");
    EXPECT_EQ(raw()[0].level, kLogError);
    EXPECT_EQ(raw()[0].id, "SOME_ERROR");
}

TEST(KepLogStart, OnlyErrorsAreAdmittedBeforeTheClientHasObtainedAContext)
{
    EXPECT_EQ(kepLogContext.load(), nullptr);
    EXPECT_TRUE(kepLogAdmits(kLogError));
    EXPECT_FALSE(kepLogAdmits(kLogWarning));
    EXPECT_FALSE(kepLogAdmits(kLogInfo));
    EXPECT_FALSE(kepLogAdmits(kLogDebug));
}

TEST_F(KepLog, TextFromOutsideIsWrittenAsItIs)
{
    const std::string text = "100% %s %n %d\n";
    KEP_ERROR("OUTSIDE", "%s", text.c_str());
    ASSERT_EQ(logLines().size(), 1U);
    EXPECT_EQ(logLines()[0].text, text);
}

TEST_F(KepLog, ALongTextIsNotCut)
{
    const std::string text(100000, 'x');
    KEP_ERROR("LONG", "%s", text.c_str());
    ASSERT_EQ(logLines().size(), 1U);
    EXPECT_EQ(logLines()[0].text, text);
}

TEST_F(KepLog, ABoolIsWrittenAsADigit)
{
    const bool yes = true;
    const bool no = false;
    KEP_DEBUG("%d %d", yes, no);
    ASSERT_EQ(logLines().size(), 1U);
    EXPECT_EQ(logLines()[0].text, "1 0");
}

TEST_F(KepLog, AMacroIsOneStatement)
{
    const bool broken = false;
    if (broken)
        KEP_ERROR("THEN", "then");
    else
        KEP_ERROR("ELSE", "else");
    EXPECT_THAT(logLines(),
                ElementsAre(LogLine{kLogError, "ELSE", "keplog_test:TestBody", "else"}));
}
