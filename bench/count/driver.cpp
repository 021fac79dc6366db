// SPDX-License-Identifier: Apache-2.0
// One write of each backend, without the request around it.
#include <cstdint>

#include <alsa/asoundlib.h>

#include "byhand.h"
#include "cases.h"
#include "client.h"
#include "keptvaudio.h"

namespace count
{

using namespace byhand;

namespace
{

snd_hctl_elem_t* gElement = nullptr;
snd_ctl_elem_value_t* gValue = nullptr;

/// What the contract does not allow: a handle that stays open.
void openOnce()
{
    snd_hctl_t* handle = nullptr;
    require(snd_hctl_open(&handle, "hw:0", 0) >= 0 && snd_hctl_load(handle) >= 0, "open");
    gElement = snd_hctl_first_elem(handle);
    require(snd_ctl_elem_value_malloc(&gValue) >= 0, "memory");
}

} // namespace

void addDriverCases(std::vector<Case>& cases)
{
    cases.push_back({"write.tv", [] { startClient("TV"); },
                     [] {
                         constexpr std::int32_t kValues[] = {1, 0, 0};
                         require(kepTVAudio::setControlElement("Sndout Connect", kValues, 3),
                                 "a write");
                     }});
    const std::vector<long> values{1, 0, 0};
    cases.push_back({"write.tv.byHand", [] { startClient("TV"); },
                     [values] { writeElement("Sndout Connect", values); }});

    cases.push_back({"write.tv.open", &openOnce, [] {
                         snd_ctl_elem_value_set_integer(gValue, 0, 1);
                         require(snd_hctl_elem_write(gElement, gValue) >= 0, "a write");
                     }});

    cases.push_back({"write.mixer", [] { startClient("ALSA"); },
                     [] {
                         require(kepClient::getInstance()->setOutputVolume("speaker", 35) ==
                                     KEP_RESULT_OK,
                                 "a write");
                     }});
    cases.push_back({"write.mixer.mute", [] { startClient("ALSA"); },
                     [] {
                         require(kepClient::getInstance()->setOutputMute("speaker", true) ==
                                     KEP_RESULT_OK,
                                 "a write");
                     }});
    cases.push_back({"write.mixer.stream", [] { startClient("ALSA"); },
                     [] {
                         require(kepClient::getInstance()->setMute("AMIXER", "ALSA", true) ==
                                     KEP_RESULT_OK,
                                 "a write");
                     }});
    cases.push_back({"write.mixer.byHand", [] { startClient("ALSA"); },
                     [] { writeControl("default", "name='Master Playback Volume'", "35%"); }});
    cases.push_back({"write.mixer.mute.byHand", [] { startClient("ALSA"); },
                     [] { writeControl("default", "name='Master Playback Switch'", "off"); }});
    cases.push_back({"write.mixer.stream.byHand", [] { startClient("ALSA"); },
                     [] { writeControl("default", "name=Softmaster0", "0%"); }});
}

} // namespace count
