// SPDX-License-Identifier: Apache-2.0
// What the cards offer, as libasound tells it.
#include "cardelements.h"

#include <memory>

#include <alsa/asoundlib.h>
#include <glib.h>

#include "faults.h"
#include "kepcatalogue.h"

namespace
{

using Control = std::unique_ptr<snd_ctl_t, decltype(&snd_ctl_close)>;

CardElement describe(snd_ctl_t* control, const std::string& card, const snd_ctl_elem_list_t* list,
                     unsigned int index)
{
    CardElement element{card, snd_ctl_elem_list_get_name(list, index), ""};
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_list_get_id(list, index, id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_info_set_id(info, id);
    if (snd_ctl_elem_info(control, info) < 0)
        return element;
    const snd_ctl_elem_type_t type = snd_ctl_elem_info_get_type(info);
    for (const char* letter = snd_ctl_elem_type_name(type); *letter != '\0'; ++letter)
        element.type += static_cast<char>(g_ascii_tolower(*letter));
    element.count = snd_ctl_elem_info_get_count(info);
    if (type == SND_CTL_ELEM_TYPE_INTEGER) {
        element.minimum = snd_ctl_elem_info_get_min(info);
        element.maximum = snd_ctl_elem_info_get_max(info);
    } else if (type == SND_CTL_ELEM_TYPE_INTEGER64) {
        element.minimum = snd_ctl_elem_info_get_min64(info);
        element.maximum = snd_ctl_elem_info_get_max64(info);
    }
    if (type == SND_CTL_ELEM_TYPE_BOOLEAN)
        element.maximum = 1;
    return element;
}

void addElements(const std::string& card, std::vector<CardElement>& elements)
{
    snd_ctl_t* opened = nullptr;
    if (snd_ctl_open(&opened, card.c_str(), 0) < 0)
        return;
    const Control control{opened, &snd_ctl_close};
    snd_ctl_elem_list_t* list = nullptr;
    snd_ctl_elem_list_alloca(&list);
    if (snd_ctl_elem_list(control.get(), list) < 0)
        return;
    if (snd_ctl_elem_list_alloc_space(list, snd_ctl_elem_list_get_count(list)) < 0)
        return;
    if (snd_ctl_elem_list(control.get(), list) >= 0)
        for (unsigned int i = 0; i < snd_ctl_elem_list_get_used(list); ++i)
            elements.push_back(describe(control.get(), card, list, i));
    snd_ctl_elem_list_free_space(list);
}

} // namespace

const std::vector<std::string>& cardNames()
{
    static const std::vector<std::string> names = {kepCatalogue::build().card, "default"};
    return names;
}

const std::vector<CardElement>& cardElements()
{
    static const std::vector<CardElement> elements = [] {
        const virtualtv::WithoutInjections asTheyAre;
        std::vector<CardElement> all;
        for (const std::string& card : cardNames())
            addElements(card, all);
        return all;
    }();
    return elements;
}
