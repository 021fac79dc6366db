// SPDX-License-Identifier: Apache-2.0
// The test of a service as one would write it elsewhere: in front of the virtual television, whose
// journal tells what the driver was told, and by both backends.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <environment.h>
#include <faults.h>
#include <journal.h>
#include <kepalsaaudio.h>
#include <kepclient.h>
#include <kepfactory.h>
#include <keptvaudio.h>

namespace
{

int writes = 0;

/// Starts the backend whose configuration is in the folder, and asks for the speaker.
bool plays(const std::string& folder)
{
    setenv("KEP_CONFIG_DIR", folder.c_str(), 1);
    kepClient* audio = kepClient::getInstance();
    return audio->initialize() == KEP_STATUS_OK &&
           audio->setSoundOutput("tv_speaker") == KEP_RESULT_OK &&
           audio->setOutputVolume("tv_speaker", 12) == KEP_RESULT_OK &&
           audio->deinitialize() == KEP_STATUS_OK;
}

} // namespace

// servicetest CONFIGURATION-OF-ALSA
int main(int argc, char** argv)
{
    if (argc != 2)
        return 1;
    virtualtv::enter();
    virtualtv::listen([](const JValue& event) {
        if (event["event"].asString() == "control")
            ++writes;
    });
    if (!plays(argv[1]) || writes == 0)
        return 2;

    kepAudio* television = kepFactory::getInstance()->createKEPAudioObj("TV");
    if (television == nullptr || television->initAudio() != KEP_STATUS_OK)
        return 3;
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Sndout Open", "", -5, 1});
    if (television->setSoundOutput("external_arc") != KEP_RESULT_FAILED)
        return 4;
    if (television != kepTVAudio::getInstance() || kepAlsaAudio::createObject() == nullptr)
        return 5;
    std::printf("the test saw %d driver writes\n", writes);
    return 0;
}
