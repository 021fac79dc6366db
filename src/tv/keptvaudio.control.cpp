// SPDX-License-Identifier: Apache-2.0
// The one door to the driver: every write opens the card, loads its element list, writes and closes
// again.
#include <memory>

#include <alsa/asoundlib.h>

#include "controlwrites.h"
#include "keplog.h"
#include "keptvaudio.h"

namespace
{

// libasound checks what it is given by assertions, which end the process. Its calls here, what each
// of them asserts, and what keeps a name, a count or a card from it. None asserts a value: the
// driver judges those.
// clang-format off
//
//   call                           asserts                                kept by
//   snd_hctl_open                  handle and name not null               both are ours; the name is a constant
//   snd_hctl_load                  handle not null, nothing loaded yet    opened just before, loaded once
//   snd_ctl_elem_id_set_interface  pointer not null                       on the stack
//   snd_ctl_elem_id_set_name       pointer not null                       on the stack; a long name is cut, not found
//   snd_hctl_find_elem             handle and identifier not null         both are ours
//   snd_hctl_elem_info             element and info not null; a name      found before, on the stack; the card has
//                                  or a number                            numbered it
//   snd_ctl_elem_info_get_id       pointers not null                      on the stack
//   snd_ctl_elem_value_set_id      pointers not null                      on the stack
//   snd_ctl_elem_value_set_integer an index below 128                     kMaxIntegers
//   snd_hctl_elem_write            as snd_hctl_elem_info                  the same
//   snd_hctl_close                 handle not null                        closeControlHandle
//   snd_strerror                   nothing                                -
// clang-format on

/// What libasound's element value has room for.
constexpr int kMaxIntegers = 128;

struct HandleCloser {
    void operator()(snd_hctl_t* handle) const { kepTVAudio::closeControlHandle(handle); }
};
using HandlePtr = std::unique_ptr<snd_hctl_t, HandleCloser>;

} // namespace

bool setControlElement(const char* name, const std::int32_t* values, int count)
{
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);

    const char* card = kepCatalogue::build().card;
    snd_hctl_t* opened = nullptr;
    int error = snd_hctl_open(&opened, card, 0);
    const HandlePtr handle{error < 0 ? nullptr : opened};
    if (error < 0) {
        KEP_ERROR("CONTROL_HANDLE_OPEN_ERROR", "Control %s open error: %s", card,
                  snd_strerror(error));
        return false;
    }
    error = snd_hctl_load(handle.get());
    if (error < 0) {
        KEP_ERROR("CONTROL_HANDLE_LOAD_ERROR", "Control %s load error: %s", card,
                  snd_strerror(error));
        return false;
    }
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, name);
    snd_hctl_elem_t* element = snd_hctl_find_elem(handle.get(), id);
    if (element == nullptr) {
        KEP_ERROR("CONTROL_ELEMENT_NOT_FOUND", "Did not find the element");
        return false;
    }
    error = snd_hctl_elem_info(element, info);
    if (error < 0) {
        KEP_ERROR("CONTROL_ELEMENT_INFO_ERROR", "Control element snd_hctl_elem_info error: %s",
                  snd_strerror(error));
        return false;
    }
    snd_ctl_elem_info_get_id(info, id);
    snd_ctl_elem_value_set_id(value, id);
    for (int i = 0; i < count && count <= kMaxIntegers; ++i)
        snd_ctl_elem_value_set_integer(value, static_cast<unsigned int>(i), values[i]);
    error = count <= kMaxIntegers ? snd_hctl_elem_write(element, value) : -EINVAL;
    if (error < 0) {
        KEP_ERROR("CONTROL_ELEMENT_WRITE_ERROR", "Control element write error: %s",
                  snd_strerror(error));
        return false;
    }
    return true;
}

bool kepTVAudio::setControlElement(const std::string& name, const std::int32_t* values, int count)
{
    return ::setControlElement(name.c_str(), values, count);
}

void kepTVAudio::closeControlHandle(snd_hctl_t* handle)
{
    if (handle != nullptr && snd_hctl_close(handle) < 0)
        KEP_ERROR("CONTROL_DEVICE_CLOSE_ERROR", "device can't close");
}

bool kepTVAudio::setMuteControlElement(KEP_AUDIO_SNDOUT_T output, bool mute)
{
    if (!writeElement(kMuteOutput, {typeOf(output), mute ? 1 : 0})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element: %s on %d", // sic
                  kMuteOutput.name, output);
        return false;
    }
    return true;
}

void logWriteFailure(kepLogOrigin origin, const char* element, const char* suffix)
{
    KEP_ERROR_AS(origin, "CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element: %s%s",
                 element, suffix); // sic
}
