// SPDX-License-Identifier: Apache-2.0
// Events: their JSON is that of the values they stand for.
#include "event.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

using virtualtv::Event;

namespace
{

std::string jsonOf(const Event& event)
{
    std::string text;
    event.appendTo(text);
    return text;
}

} // namespace

TEST(Events, AreWrittenAsTheirValuesAre)
{
    std::string every;
    for (int byte = 0; byte < 0x80; ++byte)
        every += static_cast<char>(byte);
    every += "\xc3\xbc\xe2\x82\xac";
    const std::int64_t numbers[] = {0, -1, std::numeric_limits<std::int64_t>::min(),
                                    std::numeric_limits<std::int64_t>::max() - 1};
    JValue object = JValue::object();
    object.put("a/b", every);

    Event event{"kind"};
    event.put("text", every);
    event.put("empty", "");
    event.put("numbers", std::span<const std::int64_t>{numbers});
    event.put("none", std::span<const std::int64_t>{});
    event.put("yes", true);
    event.put("small", std::uint8_t{255});
    event.put("json", Event::Json{R"({"x":[1,"y"]})"});
    event.put("object", object);

    JValue expected = JValue::object();
    expected.put("event", "kind");
    expected.put("text", every);
    expected.put("empty", "");
    JValue array = JValue::array();
    for (const std::int64_t number : numbers)
        array.append(number);
    ASSERT_TRUE(expected.put("numbers", array));
    ASSERT_TRUE(expected.put("none", JValue::array()));
    expected.put("yes", true);
    expected.put("small", 255);
    JValue inner = JValue::array();
    inner.append(1);
    inner.append("y");
    JValue json = JValue::object();
    ASSERT_TRUE(json.put("x", inner));
    ASSERT_TRUE(expected.put("json", json));
    ASSERT_TRUE(expected.put("object", object));

    EXPECT_EQ(jsonOf(event), expected.stringify());
    EXPECT_EQ(event.toValue(), expected);
}

TEST(Events, KeepThePlaceOfAKeyThatIsSetAgain)
{
    Event event{"kind"};
    event.put("first", 1);
    event.put("second", "x");
    event.put("first", "changed");
    EXPECT_EQ(jsonOf(event), R"({"event":"kind","first":"changed","second":"x"})");
    EXPECT_EQ(event.text("first"), "changed");
    EXPECT_EQ(event.number("first"), 0);
    EXPECT_EQ(event.json("third"), "null");
}
