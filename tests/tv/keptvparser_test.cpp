// SPDX-License-Identifier: Apache-2.0
#include "keptvparser.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "adaptertest.h"
#include "journal.h"
#include "keptvamplifier.h"
#include "keptvgain.h"
#include "onworker.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Map = kepTvParser::Map;

kepTvParser& store()
{
    return *kepTvParser::getInstance();
}

LogLine storing(const std::string& key, const std::string& value)
{
    return {kLogDebug, "", "keptvparser:storeParameters",
            "store Parameters key: " + key + " value: " + value};
}

class KepTvParser : public TelevisionTest
{
protected:
    KepTvParser() { connectLog(); }

    Map map;
};

struct TextRow {
    const char* json;   // of the value
    const char* stored; // in the map
    const char* logged; // as JSON text
};
constexpr TextRow kTexts[] = {
    {R"("x")", "x", R"("x")"},
    {R"("")", "", R"("")"},
    {R"("on off")", "on off", R"("on off")"},
    {R"("a\"b\\c\n")", "a\"b\\c\n", R"("a\"b\\c\n")"},
    {R"("a/b")", "a/b", R"("a/b")"},
    {"\"\xc3\xa4\"", "\xc3\xa4", "\"\xc3\xa4\""},
    {R"("%s%n")", "%s%n", R"("%s%n")"},
    {R"("null")", "null", R"("null")"},
    {"5", "5", "5"},
    {"-5", "-5", "-5"},
    {"0", "0", "0"},
    {"9007199254740993", "9007199254740993", "9007199254740993"},
    {"0.1", "0.1", "0.1"},
    {"-2.5", "-2.5", "-2.5"},
    {"true", "true", "true"},
    {"false", "false", "false"},
    {"null", "null", "null"},
    {"[ ]", "[]", "[]"},
    {"[ 1, 2 ]", "[1,2]", "[1,2]"},
    {R"([ 1, "y" ])", R"([1,"y"])", R"([1,"y"])"},
    {"{ }", "{}", "{}"},
    {R"({ "g": { "h": [ null ] } })", R"({"g":{"h":[null]}})", R"({"g":{"h":[null]}})"},
};

const JValue kNoObjects[] = {
    json(R"(["a", "x"])"),
    json(R"([{"a": "y"}])"),
    JValue::array(),
    JValue{R"({"a": "y"})"},
    JValue{""},
    JValue{5},
    JValue{2.5},
    JValue{true},
    JValue{},
    JValue::invalid(),
};

} // namespace

TEST_F(KepTvParser, ThereIsOneStore)
{
    ASSERT_NE(kepTvParser::getInstance(), nullptr);
    EXPECT_EQ(kepTvParser::getInstance(), kepTvParser::getInstance());
}

TEST_F(KepTvParser, ThreadsThatComeFirstTogetherFindTheSameStore)
{
    std::vector<kepTvParser*> found(8);
    {
        std::vector<std::jthread> threads;
        for (kepTvParser*& mine : found)
            threads.emplace_back([&mine] { mine = kepTvParser::getInstance(); });
    }
    EXPECT_THAT(found, testing::Each(kepTvParser::getInstance()));
}

TEST_F(KepTvParser, AllThreeMapsStartEmpty)
{
    EXPECT_THAT(store().mQualityParamsMap, IsEmpty());
    EXPECT_THAT(store().mAvParamsMap, IsEmpty());
    EXPECT_THAT(store().mAencAvParamsMap, IsEmpty());
}

TEST_F(KepTvParser, AnObjectIsFlattenedOneLevelDeep)
{
    EXPECT_TRUE(store().storeParameters(json(R"({"a": "x", "b": 5, "c": true, "d": null,
                                                 "e": [1, "y"], "f": {"g": 1}})"),
                                        map));
    EXPECT_THAT(map,
                ElementsAre(Pair("a", "x"), Pair("b", "5"), Pair("c", "true"), Pair("d", "null"),
                            Pair("e", R"([1,"y"])"), Pair("f", R"({"g":1})")));
    EXPECT_THAT(logLines(), ElementsAre(storing("a", R"("x")"), storing("b", "5"),
                                        storing("c", "true"), storing("d", "null"),
                                        storing("e", R"([1,"y"])"), storing("f", R"({"g":1})")));
}

TEST_F(KepTvParser, AStringIsStoredAsItIsAndAllElseAsJsonText)
{
    for (const TextRow& row : kTexts) {
        forget();
        EXPECT_TRUE(store().storeParameters(json(member("key", row.json)), map)) << row.json;
        EXPECT_THAT(map, ElementsAre(Pair("key", row.stored))) << row.json;
        EXPECT_THAT(logLines(), ElementsAre(storing("key", row.logged))) << row.json;
    }
}

TEST_F(KepTvParser, MembersAreTakenInTheirOwnOrderAndKeptInThatOfTheirBytes)
{
    EXPECT_TRUE(store().storeParameters(
        json("{\"b\": 1, \"\xc3\xa4\": 2, \"a\": 3, \"B\": 4, \"a.b\": 5, \"\": 6}"), map));
    EXPECT_THAT(logLines(),
                ElementsAre(storing("b", "1"), storing("\xc3\xa4", "2"), storing("a", "3"),
                            storing("B", "4"), storing("a.b", "5"), storing("", "6")));
    EXPECT_THAT(map, ElementsAre(Pair("", "6"), Pair("B", "4"), Pair("a", "3"), Pair("a.b", "5"),
                                 Pair("b", "1"), Pair("\xc3\xa4", "2")));
}

TEST_F(KepTvParser, AKeyStoredAgainIsOverwritten)
{
    EXPECT_TRUE(store().storeParameters(json(R"({"a": "x"})"), map));
    EXPECT_TRUE(store().storeParameters(json(R"({"a": "y"})"), map));
    EXPECT_THAT(map, ElementsAre(Pair("a", "y")));
    EXPECT_TRUE(store().storeParameters(json(R"({"a": {"b": "z"}})"), map));
    EXPECT_THAT(map, ElementsAre(Pair("a", R"({"b":"z"})")));
    EXPECT_TRUE(store().storeParameters(json(R"({"a": ""})"), map));
    EXPECT_THAT(map, ElementsAre(Pair("a", "")));
}

TEST_F(KepTvParser, WhatAnObjectDoesNotMentionStays)
{
    EXPECT_TRUE(store().storeParameters(json(R"({"a": "x", "b": "x"})"), map));
    EXPECT_TRUE(store().storeParameters(json(R"({"b": "y", "c": "y"})"), map));
    EXPECT_THAT(map, ElementsAre(Pair("a", "x"), Pair("b", "y"), Pair("c", "y")));
}

TEST_F(KepTvParser, WhatIsNoObjectIsRefusedSilently)
{
    map = {{"a", "x"}};
    for (const JValue& value : kNoObjects) {
        EXPECT_FALSE(store().storeParameters(value, map)) << value.stringify();
        EXPECT_THAT(map, ElementsAre(Pair("a", "x"))) << value.stringify();
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepTvParser, AnEmptyObjectIsTakenAndChangesNothing)
{
    map = {{"a", "x"}};
    EXPECT_TRUE(store().storeParameters(JValue::object(), map));
    EXPECT_THAT(map, ElementsAre(Pair("a", "x")));
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepTvParser, OnlyTheGivenMapIsFilled)
{
    EXPECT_TRUE(store().storeParameters(json(R"({"a": 1})"), store().mQualityParamsMap));
    EXPECT_THAT(store().mAvParamsMap, IsEmpty());
    EXPECT_TRUE(store().storeParameters(json(R"({"a": 2})"), store().mAvParamsMap));
    EXPECT_THAT(store().mAencAvParamsMap, IsEmpty());
    EXPECT_TRUE(store().storeParameters(json(R"({"a": 3})"), store().mAencAvParamsMap));
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("a", "1")));
    EXPECT_THAT(store().mAvParamsMap, ElementsAre(Pair("a", "2")));
    EXPECT_THAT(store().mAencAvParamsMap, ElementsAre(Pair("a", "3")));
}

TEST_F(KepTvParser, TheObjectItselfIsLeftAsItWas)
{
    const JValue object = json(R"({"b": [1], "a": "x"})");
    EXPECT_TRUE(store().storeParameters(object, map));
    EXPECT_EQ(object.stringify(), R"({"b":[1],"a":"x"})");
}

TEST_F(KepTvParser, AThousandMembersAreAllStored)
{
    JValue object = JValue::object();
    for (int i = 0; i < 1000; ++i)
        static_cast<void>(object.put("key" + std::to_string(i), i));
    EXPECT_TRUE(store().storeParameters(object, map));
    ASSERT_EQ(map.size(), 1000U);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(map["key" + std::to_string(i)], std::to_string(i));
}

TEST_F(KepTvParser, BelowDebugNothingIsLogged)
{
    for (const int level : {kLogInfo, kLogWarning, kLogError}) {
        admit(level);
        EXPECT_TRUE(store().storeParameters(json(R"({"a": "x", "b": [1]})"), map));
        EXPECT_THAT(logLines(), IsEmpty()) << level;
        EXPECT_THAT(map, ElementsAre(Pair("a", "x"), Pair("b", "[1]"))) << level;
    }
}

TEST_F(KepTvParser, AnEntryIsSetOverAnOlderOne)
{
    store().mAvParamsMap = {{"a", "x"}};
    store().set(store().mAvParamsMap, "a", "y");
    store().set(store().mAvParamsMap, "b", "z");
    EXPECT_THAT(store().mAvParamsMap, ElementsAre(Pair("a", "y"), Pair("b", "z")));
}

TEST_F(KepTvParser, AMapIsReplacedWhole)
{
    store().mAencAvParamsMap = {{"a", "x"}};
    store().replace(store().mAencAvParamsMap, {{"b", "y"}});
    EXPECT_THAT(store().mAencAvParamsMap, ElementsAre(Pair("b", "y")));
}

TEST_F(KepTvParser, TheCallersThreadHandsTheLiveMapOver)
{
    std::shared_ptr<Map> kept;
    EXPECT_EQ(store().forCall(store().mAvParamsMap, kept).get(), &store().mAvParamsMap);
    EXPECT_EQ(kept, nullptr);
}

TEST_F(KepTvParser, TheWorkerHandsASnapshotOverThatOutlivesIt)
{
    store().mAvParamsMap = {{"a", "x"}};
    std::shared_ptr<Map> kept;
    std::weak_ptr<Map> first;
    onWorker([&] { first = store().forCall(store().mAvParamsMap, kept); });
    store().mAvParamsMap.clear();
    ASSERT_NE(first.lock(), nullptr);
    EXPECT_THAT(*first.lock(), ElementsAre(Pair("a", "x")));
    onWorker([&] { static_cast<void>(store().forCall(store().mAvParamsMap, kept)); });
    EXPECT_EQ(first.lock(), nullptr); // the next one has replaced it
    EXPECT_THAT(*kept, IsEmpty());
}

TEST_F(KepTvParser, AnEntryIsFoundUnderExactlyItsKey)
{
    map = {{"a", "x"}, {"b", ""}};
    EXPECT_EQ(store().find(map, "a"), "x");
    EXPECT_EQ(store().find(map, "b"), "");
    EXPECT_EQ(store().find(map, "A"), std::nullopt);
    EXPECT_EQ(store().find(map, ""), std::nullopt);
    EXPECT_THAT(map, ElementsAre(Pair("a", "x"), Pair("b", "")));
}

// --- Beside the start-up worker. The log stays silent: only one thread at a time may write to the
// fixture's record.

TEST_F(KepTvParser, ParametersMayBeStoredWhileAWorkerRegistersThem)
{
    constexpr int kRounds = 200;
    admit(kLogError);
    kepTVGain::getInstance()->initGain();
    std::future<void> worked = launched([] {
        for (int i = 0; i < kRounds; ++i)
            kepTVGain::getInstance()->parseGainXML();
    });
    for (int i = 0; i < kRounds; ++i)
        EXPECT_TRUE(store().storeParameters(json(member("key" + std::to_string(i), "true")),
                                            store().mQualityParamsMap));
    worked.get();
    kepTVGain::getInstance()->parseGainXML();

    std::vector<std::size_t> sizes; // of the maps that the middleware was given
    for (const JValue& event : events())
        if (event["operation"].asString() == "registerQualityParams")
            sizes.push_back(event["args"][0].size());
    ASSERT_EQ(sizes.size(), static_cast<std::size_t>(kRounds) + 1);
    EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end()));
    EXPECT_EQ(sizes.back(), static_cast<std::size_t>(kRounds));
}

TEST_F(KepTvParser, AChipTypeMayArriveWhileAWorkerRegistersParameters)
{
    constexpr int kRounds = 200;
    admit(kLogError);
    virtualtv::listen([](const JValue&) {}); // the calls still read the maps
    kepTVAmplifier& amplifier = *kepTVAmplifier::getInstance();
    amplifier.initAmplifier();
    std::future<void> worked = launched([&amplifier] {
        for (int i = 0; i < kRounds; ++i) {
            amplifier.parseAmplifierXML();
            amplifier.resetAmplifierAttributes();
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        amplifier.mIsBootup = true;
        store().replace(store().mQualityParamsMap, {});
        amplifier.updateAmplifierType(json(R"({"tv.model.ampChipType": "chip"})"));
    }
    worked.get();
    EXPECT_THAT(store().mQualityParamsMap, ElementsAre(Pair("tv.model.ampChipType", "chip")));
}
