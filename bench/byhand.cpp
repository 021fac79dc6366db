// SPDX-License-Identifier: Apache-2.0
// The calls of libasound and of the middleware, as somebody would write them who needs no library.
#include "byhand.h"

#include <cstdio>
#include <cstdlib>

#include <alsa/asoundlib.h>

#include "journal.h"
#include "mwlamplifier.h"
#include "mwldelay.h"
#include "mwlgain.h"
#include "mwlparams.h"
#include "mwlseinterface.h"
#include "subcpu.h"

namespace byhand
{
namespace
{

using mwl_amp::MWLAmplifier;
using mwl_delay::MWLDelay;
using mwl_gain::MWLGain;
using mwl_se::MwlSeInterface;

MwlParams gParams;

struct CallRow {
    const char* library;
    const char* operation;
    void (*make)(const Call& call);
};

int first(const Call& call)
{
    return static_cast<int>(call.values.front());
}

const CallRow kCalls[] = {
    {"gain", "setGainAsInput", [](const Call&) { MWLGain::getInstance()->setGainAsInput(); }},
    {"gain", "setInputVolume",
     [](const Call& call) {
         MWLGain::getInstance()->setInputVolume(first(call),
                                                static_cast<std::uint8_t>(call.values[1]));
     }},
    {"gain", "setOutputVolume",
     [](const Call& call) {
         MWLGain::getInstance()->setOutputVolume(call.text, static_cast<std::uint8_t>(first(call)));
     }},
    {"gain", "registerAvParams",
     [](const Call&) { MWLGain::getInstance()->registerAvParams(&gParams); }},
    {"delay", "setDelayUpdate", [](const Call&) { MWLDelay::getInstance()->setDelayUpdate(); }},
    {"soundengine", "setOSDVolume",
     [](const Call& call) { MwlSeInterface::getInstance()->setOSDVolume(first(call)); }},
    {"amplifier", "setAmpMute",
     [](const Call& call) { MWLAmplifier::getInstance()->setAmpMute(first(call) != 0); }},
};

Call callOf(const JValue& event)
{
    Call call;
    const std::string kind = event["event"].asString();
    if (kind == "control") {
        call.text = event["element"].asString();
        for (const JValue& value : event["values"].elements())
            call.values.push_back(value.asNumber<std::int32_t>());
        call.make = [](const Call& made) { writeElement(made.text.c_str(), made.values); };
        return call;
    }
    for (const JValue& value : event["args"].elements()) {
        if (value.isString())
            call.text = value.asString();
        else
            call.values.push_back(value.isBool() ? static_cast<long>(value.asBool())
                                                 : value.asNumber<std::int32_t>());
    }
    if (kind == "subcpu")
        call.make = [](const Call& made) { subcpu_misc_Set_HPMuteOnOff(first(made) != 0); };
    for (const CallRow& row : kCalls)
        if (event["library"].asString() == row.library &&
            event["operation"].asString() == row.operation)
            call.make = row.make;
    require(call.make != nullptr, event.stringify().c_str());
    return call;
}

} // namespace

void require(bool done, const char* what)
{
    if (done)
        return;
    printf("cannot be measured: %s\n", what);
    fflush(stdout);
    std::_Exit(1);
}

void writeElement(const char* element, const std::vector<long>& values)
{
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_hctl_t* handle = nullptr;
    require(snd_hctl_open(&handle, "hw:0", 0) >= 0, "open");
    require(snd_hctl_load(handle) >= 0, "load");
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, element);
    snd_hctl_elem_t* found = snd_hctl_find_elem(handle, id);
    require(found != nullptr && snd_hctl_elem_info(found, info) >= 0, element);
    snd_ctl_elem_info_get_id(info, id);
    snd_ctl_elem_value_set_id(value, id);
    for (std::size_t i = 0; i < values.size(); ++i)
        snd_ctl_elem_value_set_integer(value, static_cast<unsigned int>(i), values[i]);
    require(snd_hctl_elem_write(found, value) >= 0, "write");
    snd_hctl_close(handle);
}

void writeControl(const char* card, const char* control, const char* value)
{
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_value_t* written = nullptr;
    snd_ctl_elem_value_alloca(&written);
    snd_ctl_t* handle = nullptr;
    require(snd_ctl_ascii_elem_id_parse(id, control) == 0, control);
    require(snd_ctl_open(&handle, card, 0) >= 0, card);
    snd_ctl_elem_info_set_id(info, id);
    require(snd_ctl_elem_info(handle, info) >= 0, control);
    require(snd_ctl_ascii_value_parse(handle, written, info, value) >= 0, value);
    require(snd_ctl_elem_write(handle, written) >= 0, "write");
    snd_ctl_close(handle);
}

std::vector<Call> callsOf(const std::function<void()>& request)
{
    std::vector<Call> calls;
    virtualtv::listen([&calls](const JValue& event) { calls.push_back(callOf(event)); });
    request();
    virtualtv::listen({});
    return calls;
}

void makeAgain(const std::vector<Call>& calls)
{
    for (const Call& call : calls)
        call.make(call);
}

} // namespace byhand
