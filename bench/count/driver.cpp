// SPDX-License-Identifier: Apache-2.0
// One write of each backend, without the request around it.
#include <cstdint>

#include "byhand.h"
#include "cases.h"
#include "client.h"
#include "keptvaudio.h"

namespace count
{

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
