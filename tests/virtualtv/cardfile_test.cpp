// SPDX-License-Identifier: Apache-2.0
// Card tables, and the virtual card that is made from one.
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <alsa/asoundlib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cardfile.h"
#include "cards.h"
#include "environment.h"
#include "openedcard.h"
#include "televisiontest.h"

using namespace std::string_literals;
using testing::EndsWith;
using testing::HasSubstr;
using virtualtv::Card;

namespace
{

class CardFile : public TelevisionTest
{
protected:
    /// A file with that content.
    [[nodiscard]] std::string file(const std::string& content) const
    {
        const std::string path = directory() / "card.json";
        std::ofstream{path} << content;
        return path;
    }
    /// A table with these elements.
    [[nodiscard]] std::string table(const std::string& elements) const
    {
        return file(R"({"card":"Test","elements":[)" + elements + "]}");
    }
    /// What is wrong with a table of these elements.
    [[nodiscard]] std::string problemOf(const std::string& elements) const
    {
        Card card;
        return readCardFile(table(elements), card);
    }
    /// The virtual card of these elements, opened.
    [[nodiscard]] ControlPtr cardOf(const std::string& elements) const
    {
        virtualtv::chooseCardFile(table(elements));
        return opened("hw:0");
    }
};

// One element of every type, with everything that can be said of it.
constexpr const char* kEveryType =
    R"({"name":"Mute","iface":"mixer","index":0,"type":"boolean","count":2,"access":"rw","values":[1,0]},
{"name":"Gain","iface":"card","index":3,"type":"integer","count":2,"min":-60,"max":12,"step":3,"access":"rw","values":[-60,12]},
{"name":"Clock","iface":"pcm","index":0,"device":1,"subdevice":2,"type":"integer64","count":1,"min":-1,"max":9223372036854775807,"step":0,"access":"rv","values":[9223372036854775807]},
{"name":"Mode","iface":"hwdep","index":0,"type":"enumerated","count":1,"items":["off","näher","weit \"x\""],"access":"rwi","values":[2]},
{"name":"Key","iface":"rawmidi","index":0,"type":"bytes","count":4,"access":"r","values":[0,1,254,255]},
{"name":"Command","iface":"timer","index":0,"type":"bytes","count":512,"access":"w"},
{"name":"Last","iface":"sequencer","index":0,"type":"boolean","count":1,"access":"rw","values":[0]})";

snd_ctl_elem_value_t* valueSpace()
{
    static snd_ctl_elem_value_t* space = nullptr;
    if (space == nullptr)
        snd_ctl_elem_value_malloc(&space);
    snd_ctl_elem_value_clear(space);
    return space;
}

} // namespace

TEST_F(CardFile, IsWrittenAsItIsRead)
{
    Card card;
    EXPECT_EQ(readCardFile(table(kEveryType), card), "");
    EXPECT_EQ(card.elements.size(), 7U);
    EXPECT_EQ(cardTable(card),
              "{\"card\":\"Test\",\"elements\":[\n" + std::string{kEveryType} + "\n]}\n");
}

TEST_F(CardFile, WhatIsUsualMayBeLeftOut)
{
    Card card;
    EXPECT_EQ(readCardFile(table(R"({"name":"Volume","type":"integer","count":1,"min":5,"max":9})"),
                           card),
              "");
    EXPECT_THAT(
        cardTable(card),
        HasSubstr(
            R"({"name":"Volume","iface":"mixer","index":0,"type":"integer","count":1,"min":5,"max":9,"step":0,"access":"rw"})"));
}

TEST_F(CardFile, ARangeThatATypeHasAnywayMayBeSaid)
{
    EXPECT_EQ(
        problemOf(
            R"({"name":"A","type":"boolean","count":1,"min":0,"max":1,"step":1,"values":[true]},
                     {"name":"B","type":"enumerated","count":1,"items":["x","y"],"min":0,"max":1},
                     {"name":"C","type":"bytes","count":1,"min":0,"max":255})"),
        "");
}

TEST_F(CardFile, WhatIsWrongIsNamed)
{
    struct Row {
        const char* elements;
        const char* problem;
    };
    // clang-format off
    constexpr Row kRows[] = {
        {R"({"name":"A","type":"integer","count":1,"min":0,"max":1,"maks":2})", R"(elements[0] ("A"): unknown key "maks")"},
        {R"({"name":"A","type":"boolean","count":1},7)",                        R"(elements[1]: must be an object)"},
        {R"({"type":"boolean","count":1})",                                     R"(elements[0]: lacks "name")"},
        {R"({"name":"A","count":1})",                                           R"(elements[0] ("A"): lacks "type")"},
        {R"({"name":"A","type":"boolean"})",                                    R"(elements[0] ("A"): lacks "count")"},
        {R"({"name":"A","type":"integer","count":1,"max":1})",                  R"(elements[0] ("A"): lacks "min")"},
        {R"({"name":"A","type":"integer64","count":1,"min":1})",                R"(elements[0] ("A"): lacks "max")"},
        {R"({"name":"A","type":"enumerated","count":1})",                       R"(elements[0] ("A"): lacks "items")"},
        {R"({"name":7,"type":"boolean","count":1})",                            R"(elements[0]: "name" must be a string of 1 to 43 bytes)"},
        {R"({"name":"","type":"boolean","count":1})",                           R"(elements[0]: "name" must be a string of 1 to 43 bytes)"},
        {R"({"name":"0123456789012345678901234567890123456789abcd","type":"boolean","count":1})", R"("name" must be a string of 1 to 43 bytes)"},
        {R"({"name":"A","type":"bool","count":1})",                             R"("type" must be one of boolean, integer, integer64, enumerated, bytes)"},
        {R"({"name":"A","type":"boolean","count":1,"iface":"Mixer"})",          R"("iface" must be one of card, hwdep, mixer, pcm, rawmidi, timer, sequencer)"},
        {R"({"name":"A","type":"boolean","count":0})",                          R"("count" must be a whole number from 1 to 128)"},
        {R"({"name":"A","type":"boolean","count":129})",                        R"("count" must be a whole number from 1 to 128)"},
        {R"({"name":"A","type":"integer64","count":65,"min":0,"max":1})",       R"("count" must be a whole number from 1 to 64)"},
        {R"({"name":"A","type":"bytes","count":513})",                          R"("count" must be a whole number from 1 to 512)"},
        {R"({"name":"A","type":"boolean","count":1.5})",                        R"("count" must be a whole number from 1 to 128)"},
        {R"({"name":"A","type":"boolean","count":"1"})",                        R"("count" must be a whole number from 1 to 128)"},
        {R"({"name":"A","type":"boolean","count":1,"index":-1})",               R"("index" must be a whole number from 0 to 2147483647)"},
        {R"({"name":"A","type":"integer","count":1,"min":"0","max":1})",        R"("min" must be a whole number)"},
        {R"({"name":"A","type":"integer","count":1,"min":2,"max":1})",          R"("min" is above "max")"},
        {R"({"name":"A","type":"boolean","count":1,"max":2})",                  R"("max" must be a whole number from 1 to 1)"},
        {R"({"name":"A","type":"integer","count":1,"min":0,"max":1,"step":-1})", R"("step" must be a whole number from 0)"},
        {R"({"name":"A","type":"boolean","count":1,"items":["x"]})",            R"("items" is for enumerated elements only)"},
        {R"({"name":"A","type":"enumerated","count":1,"items":[]})",            R"("items" must be an array of strings)"},
        {R"({"name":"A","type":"enumerated","count":1,"items":[1]})",           R"("items" are names, and each must be a string of 0 to 63 bytes)"},
        {R"({"name":"A","type":"boolean","count":1,"access":"x"})",             R"("access" must be a string of the letters r, w, v (volatile) and i (inactive))"},
        {R"({"name":"A","type":"boolean","count":1,"access":"rr"})",            R"("access" must be a string of the letters)"},
        {R"({"name":"A","type":"boolean","count":2,"values":[1]})",             R"("values" must be an array of 2 numbers)"},
        {R"({"name":"A","type":"boolean","count":1,"values":1})",               R"("values" must be an array of 1 number)"},
        {R"({"name":"A","type":"boolean","count":1,"values":[2]})",             R"("values" must be a whole number from 0 to 1)"},
        {R"({"name":"A","type":"integer","count":1,"min":3,"max":4,"values":[true]})", R"("values" must be a whole number from 3 to 4)"},
        {R"({"name":"A","type":"enumerated","count":1,"items":["x"],"values":[1]})", R"("values" must be a whole number from 0 to 0)"},
        {R"({"name":"A","type":"boolean","count":1},{"name":"A","type":"bytes","count":1})", R"(elements[1] ("A"): is there already)"},
    };
    // clang-format on
    for (const Row& row : kRows)
        EXPECT_THAT(problemOf(row.elements), HasSubstr(row.problem)) << row.elements;
}

TEST_F(CardFile, TheWholeTableIsCheckedToo)
{
    const std::string path = directory() / "card.json";
    struct Row {
        const char* content;
        const char* problem;
    };
    constexpr Row kRows[] = {
        {"", "no JSON: "},
        {"[]", "a card table must be an object"},
        {"{}", R"("card" must be a string of 1 to 31 bytes)"},
        {R"({"card":7,"elements":[]})", R"("card" must be a string of 1 to 31 bytes)"},
        {R"({"card":"A"})", R"("elements" must be an array)"},
        {R"({"card":"A","elements":[],"element":[]})", R"(unknown key "element")"},
    };
    for (const Row& row : kRows) {
        Card card;
        EXPECT_THAT(readCardFile(file(row.content), card), HasSubstr(path + ": " + row.problem))
            << row.content;
    }
    Card card;
    EXPECT_EQ(readCardFile(directory() / "none", card),
              (directory() / "none").string() + ": No such file or directory");
    EXPECT_EQ(readCardFile(directory(), card), directory().string() + ": Is a directory");
}

TEST_F(CardFile, TheTelevisionHasTheElementsOfItsTable)
{
    const ControlPtr card = cardOf(kEveryType);
    snd_ctl_card_info_t* info = nullptr;
    snd_ctl_card_info_alloca(&info);
    ASSERT_EQ(snd_ctl_card_info(card.get(), info), 0);
    EXPECT_STREQ(snd_ctl_card_info_get_name(info), "Test");

    snd_ctl_elem_info_t* element = nullptr;
    snd_ctl_elem_info_alloca(&element);
    snd_ctl_elem_info_set_interface(element, SND_CTL_ELEM_IFACE_HWDEP);
    snd_ctl_elem_info_set_name(element, "Mode");
    snd_ctl_elem_info_set_item(element, 1);
    ASSERT_EQ(snd_ctl_elem_info(card.get(), element), 0);
    EXPECT_EQ(snd_ctl_elem_info_get_type(element), SND_CTL_ELEM_TYPE_ENUMERATED);
    EXPECT_EQ(snd_ctl_elem_info_get_items(element), 3U);
    EXPECT_STREQ(snd_ctl_elem_info_get_item_name(element), "näher");
    EXPECT_TRUE(snd_ctl_elem_info_is_inactive(element));

    snd_ctl_elem_info_clear(element);
    snd_ctl_elem_info_set_interface(element, SND_CTL_ELEM_IFACE_PCM);
    snd_ctl_elem_info_set_name(element, "Clock");
    EXPECT_EQ(snd_ctl_elem_info(card.get(), element), -ENOENT); // it is of another device
    snd_ctl_elem_info_set_device(element, 1);
    snd_ctl_elem_info_set_subdevice(element, 2);
    ASSERT_EQ(snd_ctl_elem_info(card.get(), element), 0);
    EXPECT_EQ(snd_ctl_elem_info_get_max64(element), LLONG_MAX);
    EXPECT_TRUE(snd_ctl_elem_info_is_volatile(element));

    snd_ctl_elem_value_t* value = valueSpace();
    snd_ctl_elem_value_set_numid(value, 2);
    EXPECT_EQ(snd_ctl_elem_read(card.get(), value), 0);
    EXPECT_EQ(snd_ctl_elem_value_get_integer(value, 0), -60);
    EXPECT_EQ(snd_ctl_elem_value_get_integer(value, 1), 12);
}

TEST_F(CardFile, ValuesOfEveryTypeAreKeptAndTold)
{
    const ControlPtr card = cardOf(kEveryType);
    snd_ctl_elem_value_t* value = valueSpace();
    snd_ctl_elem_value_set_numid(value, 4);
    snd_ctl_elem_value_set_enumerated(value, 0, 1);
    EXPECT_EQ(snd_ctl_elem_write(card.get(), value), 1);
    snd_ctl_elem_value_set_enumerated(value, 0, 3);
    EXPECT_EQ(snd_ctl_elem_write(card.get(), value), -EINVAL);
    value = valueSpace();
    snd_ctl_elem_value_set_numid(value, 4);
    EXPECT_EQ(snd_ctl_elem_read(card.get(), value), 0);
    EXPECT_EQ(snd_ctl_elem_value_get_enumerated(value, 0), 1U);

    value = valueSpace();
    snd_ctl_elem_value_set_numid(value, 6);
    snd_ctl_elem_value_set_byte(value, 511, 200);
    EXPECT_EQ(snd_ctl_elem_write(card.get(), value), 1);
    EXPECT_EQ(snd_ctl_elem_read(card.get(), value), -EPERM); // a command cannot be read

    value = valueSpace();
    snd_ctl_elem_value_set_numid(value, 5);
    EXPECT_EQ(snd_ctl_elem_read(card.get(), value), 0);
    EXPECT_EQ(snd_ctl_elem_value_get_byte(value, 3), 255);
    EXPECT_EQ(snd_ctl_elem_write(card.get(), value), -EPERM); // nor a key be written

    const std::vector<ControlEvent> told = controlEvents();
    ASSERT_EQ(told.size(), 4U);
    EXPECT_EQ(told[0], (ControlEvent{"hw:0", "Mode", {1}, 0}));
    EXPECT_EQ(told[1], (ControlEvent{"hw:0", "Mode", {3}, -EINVAL}));
    EXPECT_EQ(told[2].values.size(), 512U);
    EXPECT_EQ(told[2].values.back(), 200);
    EXPECT_EQ(told[3], (ControlEvent{"hw:0", "Key", {0, 1, 254, 255}, -EPERM}));
}

TEST_F(CardFile, TheMixerStaysAsItIs)
{
    const ControlPtr card = cardOf(kEveryType);
    snd_ctl_elem_value_t* value = valueSpace();
    snd_ctl_elem_value_set_interface(value, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_value_set_name(value, "Softmaster1");
    snd_ctl_elem_value_set_integer(value, 0, 40);
    EXPECT_EQ(snd_ctl_elem_write(opened("default").get(), value), 1);
}

TEST_F(CardFile, ABadTableLeavesTheTelevisionClosed)
{
    virtualtv::chooseCardFile(table(R"({"name":"A"})"));
    snd_ctl_t* handle = nullptr;
    EXPECT_EQ(snd_ctl_open(&handle, "hw:0", 0), -EINVAL);
    EXPECT_THAT(virtualtv::cards().problem, EndsWith(R"(elements[0] ("A"): lacks "type")"));
    opened("default");
}

TEST_F(CardFile, TheOwnTableIsOneToo)
{
    const Card own = virtualtv::cards().television;
    Card read;
    EXPECT_EQ(readCardFile(file(cardTable(own)), read), "");
    EXPECT_EQ(cardTable(read), cardTable(own));
}

TEST_F(CardFile, TwoThousandElementsAreListedAndWritten)
{
    std::string elements;
    for (int i = 0; i < 2000; ++i)
        elements += (i == 0 ? "" : ",") + R"({"name":"Element )"s + std::to_string(i) +
                    R"(","type":"integer","count":2,"min":0,"max":100})";
    const ControlPtr card = cardOf(elements);
    snd_hctl_t* loaded = nullptr;
    ASSERT_EQ(snd_hctl_open(&loaded, "hw:0", SND_CTL_NONBLOCK), 0);
    ASSERT_EQ(snd_hctl_load(loaded), 0);
    EXPECT_EQ(snd_hctl_get_count(loaded), 2000U);
    for (int i = 0; i < 2000; ++i) {
        snd_ctl_elem_value_t* value = valueSpace();
        snd_ctl_elem_value_set_interface(value, SND_CTL_ELEM_IFACE_MIXER);
        snd_ctl_elem_value_set_name(value, ("Element " + std::to_string(i)).c_str());
        snd_ctl_elem_value_set_integer(value, 1, 1);
        ASSERT_EQ(snd_ctl_elem_write(card.get(), value), 1) << i;
    }
    EXPECT_EQ(snd_hctl_handle_events(loaded), 2000);
    snd_hctl_close(loaded);
}
