// SPDX-License-Identifier: Apache-2.0
// kepctl card. What a card offers is asked through libasound, so real cards and virtual ones serve
// alike.
#include "cardcommand.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iostream>
#include <memory>

#include <alsa/asoundlib.h>

#include "cardelements.h"
#include "cardfile.h"
#include "commands.h"
#include "environment.h"
#include "output.h"
#include "session.h"

namespace
{

using virtualtv::Element;
using virtualtv::ElementInterface;
using virtualtv::ElementType;

/// Digital audio's own element type is told as the bytes of its channel status; they lie at the
/// same place in a value.
constexpr int kChannelStatusBytes = 24;

struct ControlCloser {
    void operator()(snd_ctl_t* handle) const { snd_ctl_close(handle); }
};
using ControlPtr = std::unique_ptr<snd_ctl_t, ControlCloser>;

struct InfoFreer {
    void operator()(snd_ctl_elem_info_t* info) const { snd_ctl_elem_info_free(info); }
};
using InfoPtr = std::unique_ptr<snd_ctl_elem_info_t, InfoFreer>;

struct ValueFreer {
    void operator()(snd_ctl_elem_value_t* value) const { snd_ctl_elem_value_free(value); }
};
using ValuePtr = std::unique_ptr<snd_ctl_elem_value_t, ValueFreer>;

struct ListFreer {
    void operator()(snd_ctl_elem_list_t* list) const
    {
        snd_ctl_elem_list_free_space(list);
        snd_ctl_elem_list_free(list);
    }
};
using ListPtr = std::unique_ptr<snd_ctl_elem_list_t, ListFreer>;

/// Space for one of libasound's structures.
template <typename Pointer, typename Structure>
Pointer allocated(int (*allocate)(Structure**))
{
    Structure* made = nullptr;
    if (allocate(&made) < 0)
        throw std::bad_alloc{};
    return Pointer{made};
}

std::int64_t byteOf(const snd_ctl_elem_value_t* value, unsigned int index)
{
    return snd_ctl_elem_value_get_byte(value, index);
}

// One row a type of libasound's.
struct TypeRow {
    snd_ctl_elem_type_t libasounds;
    ElementType ours;
    std::int64_t (*valueOf)(const snd_ctl_elem_value_t* value, unsigned int index);
};
// clang-format off
constexpr TypeRow kTypes[] = {
    {SND_CTL_ELEM_TYPE_BOOLEAN, ElementType::Boolean,
     [](const snd_ctl_elem_value_t* value, unsigned int i) -> std::int64_t { return snd_ctl_elem_value_get_boolean(value, i); }},
    {SND_CTL_ELEM_TYPE_INTEGER, ElementType::Integer,
     [](const snd_ctl_elem_value_t* value, unsigned int i) -> std::int64_t { return snd_ctl_elem_value_get_integer(value, i); }},
    {SND_CTL_ELEM_TYPE_INTEGER64, ElementType::Integer64,
     [](const snd_ctl_elem_value_t* value, unsigned int i) -> std::int64_t { return snd_ctl_elem_value_get_integer64(value, i); }},
    {SND_CTL_ELEM_TYPE_ENUMERATED, ElementType::Enumerated,
     [](const snd_ctl_elem_value_t* value, unsigned int i) -> std::int64_t { return snd_ctl_elem_value_get_enumerated(value, i); }},
    {SND_CTL_ELEM_TYPE_BYTES,  ElementType::Bytes, byteOf},
    {SND_CTL_ELEM_TYPE_IEC958, ElementType::Bytes, byteOf},
};
// clang-format on

unsigned accessOf(const snd_ctl_elem_info_t* info)
{
    return (snd_ctl_elem_info_is_readable(info) != 0 ? virtualtv::kReadable : 0U) |
           (snd_ctl_elem_info_is_writable(info) != 0 ? virtualtv::kWritable : 0U) |
           (snd_ctl_elem_info_is_volatile(info) != 0 ? virtualtv::kVolatile : 0U) |
           (snd_ctl_elem_info_is_inactive(info) != 0 ? virtualtv::kInactive : 0U);
}

/// An element as `info` describes it, without range, items and values.
Element describedBy(const snd_ctl_elem_info_t* info, ElementType type)
{
    Element element{.name = snd_ctl_elem_info_get_name(info)};
    element.interface = static_cast<ElementInterface>(snd_ctl_elem_info_get_interface(info));
    element.index = snd_ctl_elem_info_get_index(info);
    element.device = snd_ctl_elem_info_get_device(info);
    element.subdevice = snd_ctl_elem_info_get_subdevice(info);
    element.type = type;
    element.count = snd_ctl_elem_info_get_type(info) == SND_CTL_ELEM_TYPE_IEC958
                        ? kChannelStatusBytes
                        : static_cast<int>(snd_ctl_elem_info_get_count(info));
    element.access = accessOf(info);
    return element;
}

std::vector<std::string> itemsOf(snd_ctl_t* card, snd_ctl_elem_info_t* info)
{
    std::vector<std::string> items;
    const unsigned int count = snd_ctl_elem_info_get_items(info);
    for (unsigned int i = 0; i < count; ++i) {
        snd_ctl_elem_info_set_item(info, i);
        const bool told = snd_ctl_elem_info(card, info) >= 0;
        items.emplace_back(told ? snd_ctl_elem_info_get_item_name(info) : "");
    }
    return items;
}

void addRange(Element& element, snd_ctl_t* card, snd_ctl_elem_info_t* info)
{
    switch (element.type) {
    case ElementType::Boolean:
        element.maximum = 1;
        break;
    case ElementType::Integer:
        element.minimum = snd_ctl_elem_info_get_min(info);
        element.maximum = snd_ctl_elem_info_get_max(info);
        element.step = snd_ctl_elem_info_get_step(info);
        break;
    case ElementType::Integer64:
        element.minimum = snd_ctl_elem_info_get_min64(info);
        element.maximum = snd_ctl_elem_info_get_max64(info);
        element.step = snd_ctl_elem_info_get_step64(info);
        break;
    case ElementType::Enumerated:
        element.items = itemsOf(card, info);
        element.maximum = static_cast<std::int64_t>(element.items.size()) - 1;
        break;
    case ElementType::Bytes:
        element.maximum = UCHAR_MAX;
        break;
    }
}

/// Reads the values if the element has any to read; false when they cannot be had.
bool addValues(Element& element, snd_ctl_t* card, const snd_ctl_elem_info_t* info,
               const TypeRow& type)
{
    if ((element.access & virtualtv::kReadable) == 0)
        return true;
    const ValuePtr value = allocated<ValuePtr>(snd_ctl_elem_value_malloc);
    snd_ctl_elem_value_set_numid(value.get(), snd_ctl_elem_info_get_numid(info));
    if (snd_ctl_elem_read(card, value.get()) < 0)
        return false;
    for (unsigned int i = 0; i < static_cast<unsigned int>(element.count); ++i)
        element.values.push_back(type.valueOf(value.get(), i));
    const bool inRange =
        std::all_of(element.values.begin(), element.values.end(), [&](std::int64_t one) {
            return one >= element.minimum && one <= element.maximum;
        });
    if (!inRange) // a table with them would be refused
        element.values.clear();
    return inRange;
}

void leftOut(const std::string& element, const char* what)
{
    std::cerr << "kepctl: \"" << element << "\": " << what << "\n";
}

void addElement(virtualtv::Card& table, snd_ctl_t* card, unsigned int number)
{
    const InfoPtr info = allocated<InfoPtr>(snd_ctl_elem_info_malloc);
    snd_ctl_elem_info_set_numid(info.get(), number);
    const int error = snd_ctl_elem_info(card, info.get());
    if (error < 0)
        return leftOut("element number " + std::to_string(number), snd_strerror(error));
    const std::string name = snd_ctl_elem_info_get_name(info.get());
    const auto* type = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& row) {
        return row.libasounds == snd_ctl_elem_info_get_type(info.get());
    });
    if (type == std::end(kTypes))
        return leftOut(name, "left out, of a type that card tables do not have");
    if (type->libasounds == SND_CTL_ELEM_TYPE_IEC958)
        leftOut(name, "IEC958, told as the bytes of its channel status");
    Element element = describedBy(info.get(), type->ours);
    addRange(element, card, info.get());
    if (!addValues(element, card, info.get(), *type))
        leftOut(name, "its values cannot be read or are out of its range, and are left out");
    table.elements.push_back(std::move(element));
}

/// Every element of an open card; what libasound says when that fails.
int addElements(virtualtv::Card& table, snd_ctl_t* card)
{
    const ListPtr list = allocated<ListPtr>(snd_ctl_elem_list_malloc);
    int status = snd_ctl_elem_list(card, list.get()); // how many there are
    if (status >= 0)
        status = snd_ctl_elem_list_alloc_space(list.get(), snd_ctl_elem_list_get_count(list.get()));
    if (status >= 0)
        status = snd_ctl_elem_list(card, list.get());
    for (unsigned int i = 0; status >= 0 && i < snd_ctl_elem_list_get_used(list.get()); ++i)
        addElement(table, card, snd_ctl_elem_list_get_numid(list.get(), i));
    return status;
}

int dump(const std::string& name)
{
    snd_ctl_t* opened = nullptr;
    int status = snd_ctl_open(&opened, name.c_str(), SND_CTL_READONLY);
    const ControlPtr card{opened};
    virtualtv::Card table;
    snd_ctl_card_info_t* info = nullptr;
    snd_ctl_card_info_alloca(&info);
    if (status >= 0)
        status = snd_ctl_card_info(card.get(), info);
    if (status >= 0) {
        table.name = snd_ctl_card_info_get_name(info);
        status = addElements(table, card.get());
    }
    if (status < 0)
        return unusable(name + ": " + snd_strerror(status) +
                        " (for the virtual cards: eval \"$(kepctl env)\")");
    output::print(virtualtv::cardTable(table));
    return kPlayed;
}

} // namespace

int card(const Options& options)
{
    const std::vector<std::string>& words = options.words;
    if (words.empty() || words.front() != "dump")
        return unusable(words.empty()
                            ? "card what? dump"
                            : "unknown word \"" + words.front() + "\" behind card; there is dump");
    if (words.size() > 2)
        return unusable("card dump takes one card, not also \"" + words[2] + "\"");
    if (!options.card.empty()) {
        if (const std::string problem = chooseCard(options); !problem.empty())
            return unusable(problem);
        virtualtv::enter();
    }
    return dump(words.size() > 1 ? words[1] : cardNames().front());
}
