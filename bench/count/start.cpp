// SPDX-License-Identifier: Apache-2.0
// Starting a backend in a new process, next to ALSA's use-case manager with a profile for the
// virtual card (bench/count/ucm, which ALSA_CONFIG_UCM2 leads to).
#include <alsa/asoundlib.h>
#include <alsa/use-case.h>

#include "byhand.h"
#include "cases.h"
#include "client.h"
#include "platformlog.h"

namespace count
{

using namespace byhand;

namespace
{

void openUseCases()
{
    snd_use_case_mgr_t* manager = nullptr;
    require(snd_use_case_mgr_open(&manager, "virtualtv") >= 0, "opening the use-case manager");
    require(snd_use_case_set(manager, "_verb", "HiFi") >= 0, "setting the verb");
    snd_use_case_mgr_close(manager);
}

/// libasound has read its configuration, and the virtual card, which is no part of the question, is
/// there.
void useTheCard()
{
    LogSetLevel(LogGetContext("kep"), kLogError);
    writeElement("Gain Output", {1, 0});
}

} // namespace

void addStartCases(std::vector<Case>& cases)
{
    const auto initialize = [] {
        require(kepClient::getInstance()->initialize() == KEP_STATUS_OK, "initialize");
    };
    cases.push_back({"start.tv",
                     [] {
                         configure("TV");
                         useTheCard();
                     },
                     initialize, 1, /*cold=*/true});
    cases.push_back({"start.mixer",
                     [] {
                         configure("ALSA");
                         useTheCard();
                     },
                     initialize, 1, /*cold=*/true});
    cases.push_back({"start.useCases.byHand", &useTheCard, &openUseCases, 1, /*cold=*/true});
}

} // namespace count
