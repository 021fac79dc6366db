// SPDX-License-Identifier: Apache-2.0
// JSON values: what copies share, and how deep they may be nested.
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "jdomparser.h"
#include "jsonvalues.h"
#include "jvaluetest.h"

namespace
{

using testing::ElementsAre;

// --- What handles share

TEST(JValueSharing, CopiesShareOneDocument)
{
    JValue first = json(R"({"a":1})");
    JValue second = first;
    JValue third;
    third = second;
    EXPECT_TRUE(second.put("b", 2));
    EXPECT_TRUE(third.remove("a"));
    EXPECT_EQ(first.stringify(), R"({"b":2})");
    EXPECT_EQ(second.stringify(), R"({"b":2})");
    EXPECT_EQ(third.stringify(), R"({"b":2})");
}

TEST(JValueSharing, AssigningAHandleLeavesTheDocumentAlone)
{
    JValue first = json(R"({"a":1})");
    JValue second = first;
    second = JValue{"other"};
    EXPECT_EQ(first.stringify(), R"({"a":1})");
    const JValue& itself = first;
    first = itself;
    EXPECT_EQ(first.stringify(), R"({"a":1})");
}

TEST(JValueSharing, ADeepCopySharesNothing)
{
    JValue original = json(R"({"a":{"b":[1,null]},"text":"x\u0000y","number":1.10})");
    JValue copy = original.deepCopy();
    EXPECT_EQ(copy, original);
    EXPECT_EQ(copy.stringify(), original.stringify());

    const std::string before = original.stringify();
    EXPECT_TRUE(copy.put("c", 1));
    EXPECT_TRUE(copy["a"].put("d", 2));
    EXPECT_TRUE(copy["a"]["b"].append(3));
    EXPECT_EQ(original.stringify(), before);

    const std::string copied = copy.stringify();
    EXPECT_TRUE(original["a"]["b"].remove(0));
    EXPECT_TRUE(original.remove("text"));
    EXPECT_EQ(copy.stringify(), copied);
}

TEST(JValueSharing, ADeepCopyKeepsEveryTypeInvalidIncluded)
{
    for (const ConversionRow& row : conversionRows()) {
        const JValue copy = row.value.deepCopy();
        EXPECT_EQ(copy.isValid(), row.value.isValid()) << row.what;
        EXPECT_EQ(copy.isNull(), row.value.isNull()) << row.what;
        EXPECT_EQ(copy, row.value) << row.what;
        EXPECT_EQ(copy.stringify(), row.value.stringify()) << row.what;
    }
}

TEST(JValueSharing, AMemberStaysConnectedAfterItsParentHandleIsGone)
{
    JValue root = json(R"({"a":{"b":{"c":1}}})");
    JValue inner;
    {
        const JValue parent = root["a"];
        inner = parent["b"];
    }
    EXPECT_TRUE(inner.put("d", 2));
    EXPECT_EQ(root.stringify(), R"({"a":{"b":{"c":1,"d":2}}})");
    EXPECT_TRUE(root["a"]["b"].put("e", 3));
    EXPECT_EQ(inner.stringify(), R"({"c":1,"d":2,"e":3})");
}

TEST(JValueSharing, AnElementStaysConnectedAfterItsParentHandleIsGone)
{
    JValue root = json("[[[1]]]");
    JValue inner;
    {
        const JValue parent = root[0];
        inner = parent[0];
    }
    EXPECT_TRUE(inner.append(2));
    EXPECT_EQ(root.stringify(), "[[[1,2]]]");
}

TEST(JValueSharing, SnapshotsHoldConnectedValues)
{
    JValue root = json(R"({"a":{"x":1},"b":[]})");
    std::vector<JValue::Member> members = root.members();
    EXPECT_TRUE(members.at(0).second.put("y", 2));
    EXPECT_TRUE(members.at(1).second.append(JValue::array()));
    std::vector<JValue> elements = root["b"].elements();
    EXPECT_TRUE(elements.at(0).append(3));
    EXPECT_EQ(root.stringify(), R"({"a":{"x":1,"y":2},"b":[[3]]})");
}

TEST(JValueSharing, AValueOutlivesTheRestOfItsDocument)
{
    JValue inner = json(R"({"a":{"b":[1,2]}})")["a"]["b"];
    EXPECT_EQ(inner.stringify(), "[1,2]");
    EXPECT_TRUE(inner.append(3));
    EXPECT_EQ(inner.stringify(), "[1,2,3]");
}

TEST(JValueSharing, AValueOutlivesItsRemovalAndItsReplacement)
{
    JValue root = json(R"({"a":{"x":1},"b":{"y":2},"c":[[3]]})");
    JValue removed = root["a"];
    JValue replaced = root["b"];
    JValue element = root["c"][0];
    EXPECT_TRUE(root.remove("a"));
    EXPECT_TRUE(root.put("b", 5));
    EXPECT_TRUE(root["c"].remove(0));
    EXPECT_TRUE(removed.put("z", 9));
    EXPECT_TRUE(replaced.put("z", 9));
    EXPECT_TRUE(element.append(9));
    EXPECT_EQ(removed.stringify(), R"({"x":1,"z":9})");
    EXPECT_EQ(replaced.stringify(), R"({"y":2,"z":9})");
    EXPECT_EQ(element.stringify(), "[3,9]");
    EXPECT_EQ(root.stringify(), R"({"b":5,"c":[]})");
}

TEST(JValueSharing, PutAndAppendStoreADeepCopy)
{
    JValue member = json(R"({"x":[1]})");
    JValue object = JValue::object();
    JValue array = JValue::array();
    EXPECT_TRUE(object.put("a", member));
    EXPECT_TRUE(object.put("b", member));
    EXPECT_TRUE(array.append(member));
    EXPECT_TRUE(member["x"].append(2));
    EXPECT_EQ(object.stringify(), R"({"a":{"x":[1]},"b":{"x":[1]}})");
    EXPECT_EQ(array.stringify(), R"([{"x":[1]}])");

    EXPECT_TRUE(object["a"].put("y", 3));
    EXPECT_EQ(member.stringify(), R"({"x":[1,2]})");
    EXPECT_EQ(object["b"].stringify(), R"({"x":[1]})");
}

TEST(JValueSharing, AContainerPutIntoItselfIsCopiedAsItWas)
{
    JValue object = json(R"({"a":1})");
    EXPECT_TRUE(object.put("self", object));
    EXPECT_EQ(object.stringify(), R"({"a":1,"self":{"a":1}})");
    EXPECT_TRUE(object["self"].put("root", object));
    EXPECT_EQ(object.stringify(), R"({"a":1,"self":{"a":1,"root":{"a":1,"self":{"a":1}}}})");

    JValue array = json("[1]");
    EXPECT_TRUE(array.append(array));
    EXPECT_EQ(array.stringify(), "[1,[1]]");
}

TEST(JValueSharing, AMemberCanBeReplacedByAPartOfItself)
{
    JValue object = json(R"({"a":{"b":{"c":1}}})");
    EXPECT_TRUE(object.put("a", object["a"]["b"]));
    EXPECT_EQ(object.stringify(), R"({"a":{"c":1}})");
    EXPECT_TRUE(object.put("a", object["a"]));
    EXPECT_EQ(object.stringify(), R"({"a":{"c":1}})");
}

TEST(JValueSharing, AMovedFromHandleIsUsable)
{
    JValue source = json(R"({"a":1})");
    JValue target = std::move(source);
    EXPECT_FALSE(source.put("b", 2));
    EXPECT_FALSE(source.hasKey("a"));
    EXPECT_FALSE(source["a"].isValid());
    EXPECT_EQ(source.size(), 0U);
    EXPECT_EQ(source.asString(), "");
    EXPECT_EQ(source.deepCopy().stringify(), source.stringify());
    EXPECT_EQ(target.stringify(), R"({"a":1})");

    source = json("[1]");
    EXPECT_TRUE(source.append(2));
    EXPECT_EQ(source.stringify(), "[1,2]");

    target = std::move(source);
    EXPECT_EQ(target.stringify(), "[1,2]");
    EXPECT_FALSE(source.append(3));
    EXPECT_EQ(target.stringify(), "[1,2]");
}

TEST(JValueSharing, AssigningCarriesValidityOver)
{
    JValue value{1};
    value = JValue::invalid();
    EXPECT_FALSE(value.isValid());
    EXPECT_FALSE(value.isNull());
    value = JValue{};
    EXPECT_TRUE(value.isNull());
    value = json("[1]")[7];
    EXPECT_FALSE(value.isValid());
    value = JValue{2};
    EXPECT_EQ(value, JValue{2});
}

TEST(JValueSharing, ABoolThatWasMadeIsThatWhichWasParsed)
{
    static_assert(std::is_nothrow_constructible_v<JValue, bool>);
    for (const bool flag : {false, true}) {
        const JValue made{flag};
        const JValue fromText = json(flag ? "true" : "false");
        JValue assigned{"text"};
        assigned = made;
        JValue array = JValue::array();
        EXPECT_TRUE(array.append(made));
        for (const JValue& same : {made, assigned, made.deepCopy(), array[0]}) {
            EXPECT_TRUE(same.isValid() && same.isBool() && !same.isNull());
            EXPECT_EQ(same.asBool(), flag);
            EXPECT_EQ(same.stringify(), fromText.stringify());
            EXPECT_EQ(same, fromText);
            EXPECT_EQ(fromText, same);
            for (const JValue& other :
                 {JValue{!flag}, JValue{}, JValue::invalid(), JValue{1}, JValue{"true"}}) {
                EXPECT_NE(same, other);
                EXPECT_NE(other, same);
            }
        }
    }
}

TEST(JValueSharing, MovingKeepsInvalidInvalid)
{
    JValue source = JValue::invalid();
    const JValue target = std::move(source);
    EXPECT_FALSE(target.isValid());
}

// --- Depth

constexpr int kMax = JValue::kMaxDepth;

TEST(JValueDepth, TheLimitIs72Containers)
{
    EXPECT_EQ(JValue::kMaxDepth, 72);
}

TEST(JValueDepth, IsThatOfTheDeepestBranch)
{
    EXPECT_EQ(json(R"([1, [2, {"a": [], "b": 3}], []])").depth(), 4);
    EXPECT_EQ(json("{}").depth(), 1);
    for (const JValue& scalar : {JValue{}, JValue{true}, JValue{1}, JValue{"a"}, json("false")})
        EXPECT_EQ(scalar.depth(), 0);
    EXPECT_EQ(JValue::invalid().depth(), 0);
}

TEST(JValueDepth, AppendAcceptsTheLimitAndRefusesOneMore)
{
    JValue value = json("[1]");
    EXPECT_FALSE(value.append(nestedArrays(kMax)));
    EXPECT_EQ(value.stringify(), "[1]");
    EXPECT_FALSE(value.append(nestedObjects(kMax)));
    EXPECT_EQ(value.stringify(), "[1]");
    EXPECT_TRUE(value.append(nestedArrays(kMax - 1)));
    EXPECT_TRUE(value.append(nestedObjects(kMax - 1)));
    EXPECT_EQ(value.size(), 3U);
}

TEST(JValueDepth, PutAcceptsTheLimitAndRefusesOneMore)
{
    JValue value = json(R"({"a":1})");
    EXPECT_FALSE(value.put("a", nestedObjects(kMax)));
    EXPECT_FALSE(value.put("b", nestedObjects(kMax)));
    EXPECT_FALSE(value.put("b", nestedArrays(kMax)));
    EXPECT_EQ(value.stringify(), R"({"a":1})");
    EXPECT_TRUE(value.put("a", nestedObjects(kMax - 1)));
    EXPECT_TRUE(value.put("b", nestedArrays(kMax - 1)));
    EXPECT_THAT(keysOf(value), ElementsAre("a", "b"));
}

TEST(JValueDepth, AScalarIsNoLevel)
{
    const JValue value = nestedArrays(kMax, "text");
    JValue innermost = arrayAtLevel(value, kMax);
    EXPECT_TRUE(innermost.append(1));
    EXPECT_TRUE(innermost.append(JValue{}));
    EXPECT_EQ(innermost.stringify(), R"(["text",1,null])");
}

TEST(JValueDepth, ABuiltDocumentOfTheParsersLimitParsesAgain)
{
    constexpr int kParsed = JDomParser::kMaxDepth;
    const std::string arrays = nestedArrays(kParsed, 1).stringify();
    EXPECT_EQ(arrays, std::string(kParsed, '[') + "1" + std::string(kParsed, ']'));
    EXPECT_EQ(json(arrays).stringify(), arrays);
    const JValue objects = nestedObjects(kParsed);
    EXPECT_EQ(json(objects.stringify()), objects);
    EXPECT_EQ(objects.deepCopy(), objects);
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughAnElement)
{
    JValue root = nestedArrays(kMax - 1);
    JValue last = arrayAtLevel(root, kMax - 1);
    EXPECT_FALSE(last.append(nestedArrays(2)));
    EXPECT_EQ(last.size(), 0U);
    EXPECT_TRUE(last.append(JValue::array()));
    JValue innermost = last[0];
    EXPECT_FALSE(innermost.append(JValue::array()));
    EXPECT_FALSE(innermost.append(JValue::object()));
    EXPECT_EQ(root.stringify(), std::string(kMax, '[') + std::string(kMax, ']'));
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughAMember)
{
    const JValue root = nestedObjects(kMax);
    JValue innermost = root;
    for (int level = 1; level < kMax; ++level)
        innermost = JValue{innermost["in"]};
    const std::string before = root.stringify();
    EXPECT_FALSE(innermost.put("in", JValue::object()));
    EXPECT_FALSE(innermost.put("in", JValue::array()));
    EXPECT_EQ(root.stringify(), before);
    EXPECT_TRUE(innermost.put("in", "scalar"));
    EXPECT_NE(root.stringify(), before);
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughSnapshots)
{
    JValue object = JValue::object();
    EXPECT_TRUE(object.put("a", JValue::array()));
    JValue member = object.members().at(0).second;
    EXPECT_FALSE(member.append(nestedArrays(kMax - 1)));
    EXPECT_TRUE(member.append(nestedArrays(kMax - 2)));

    JValue array = JValue::array();
    EXPECT_TRUE(array.append(JValue::object()));
    JValue element = array.elements().at(0);
    EXPECT_FALSE(element.put("a", nestedObjects(kMax - 1)));
    EXPECT_TRUE(element.put("a", nestedObjects(kMax - 2)));
}

TEST(JValueDepth, CountsFromTheRootOfAParsedDocument)
{
    constexpr int kParsed = JDomParser::kMaxDepth;
    const JValue root = json(std::string(kParsed, '[') + std::string(kParsed, ']'));
    JValue innermost = arrayAtLevel(root, kParsed);
    EXPECT_FALSE(innermost.append(nestedArrays(kMax - kParsed + 1)));
    EXPECT_TRUE(innermost.append(nestedArrays(kMax - kParsed)));
    EXPECT_TRUE(innermost.append(1));
}

TEST(JValueDepth, CountsFromTheRootAlsoThroughACopiedHandle)
{
    const JValue root = nestedArrays(kMax);
    JValue copied = arrayAtLevel(root, kMax);
    JValue moved = std::move(copied);
    JValue assigned;
    assigned = moved;
    EXPECT_FALSE(moved.append(JValue::array()));
    EXPECT_FALSE(assigned.append(JValue::array()));
    EXPECT_EQ(moved.size(), 0U);
}

TEST(JValueDepth, TheDeepestBranchCountsWhereverItStands)
{
    for (std::size_t place = 0; place < 3; ++place) {
        JValue array = JValue::array();
        JValue object = JValue::object();
        for (std::size_t i = 0; i < 3; ++i) {
            const JValue branch = i == place ? nestedArrays(kMax - 1) : JValue::array();
            ASSERT_TRUE(array.append(branch));
            ASSERT_TRUE(object.put("key" + std::to_string(i), branch));
        }
        JValue outer = JValue::array();
        EXPECT_FALSE(outer.append(array)) << place;
        EXPECT_FALSE(outer.append(object)) << place;
        EXPECT_EQ(outer.size(), 0U) << place;
    }
}

TEST(JValueDepth, SiblingsDoNotAddUp)
{
    JValue value = JValue::array();
    for (int i = 0; i < 3 * kMax; ++i)
        ASSERT_TRUE(value.append(i % 2 == 0 ? JValue::array() : JValue::object())) << i;
    JValue outer = JValue::object();
    EXPECT_TRUE(outer.put("a", value));
}

TEST(JValueDepth, APartThatIsPutElsewhereCountsOnlyItself)
{
    const JValue deep = nestedArrays(kMax);
    JValue other = JValue::object();
    EXPECT_TRUE(other.put("a", arrayAtLevel(deep, 2)));
    EXPECT_FALSE(other.put("b", deep));
    EXPECT_THAT(keysOf(other), ElementsAre("a"));
}

TEST(JValueDepth, ADeepCopyOfAPartIsADocumentOfItsOwn)
{
    const JValue deep = nestedArrays(kMax);
    JValue copy = arrayAtLevel(deep, kMax).deepCopy();
    EXPECT_TRUE(copy.append(nestedArrays(kMax - 1)));
    EXPECT_FALSE(copy.append(nestedArrays(kMax)));
}

TEST(JValueDepth, AContainerPutIntoItselfStopsAtTheLimit)
{
    JValue object = JValue::object();
    int accepted = 0;
    while (accepted < 2 * kMax && object.put("self", object))
        ++accepted;
    EXPECT_EQ(accepted, kMax - 1) << "each put adds one level to the one at the start";
    EXPECT_EQ(object.depth(), kMax);
    EXPECT_EQ(object, object.deepCopy());
}

} // namespace
