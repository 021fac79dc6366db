// SPDX-License-Identifier: Apache-2.0
// A policy service as one would write it elsewhere: it knows the installed headers only, and runs
// the backend that its configuration names.
#include <cstdio>

#include <jdomparser.h>
#include <kepclient.h>
#include <keptvaudio.h>

int main()
{
    kepClient* audio = kepClient::getInstance();
    if (audio->initialize() != KEP_STATUS_OK)
        return 1;

    JDomParser parser{JSchema::acceptAll()};
    const bool done =
        audio->setSoundOutput("tv_speaker") == KEP_RESULT_OK &&
        audio->connectInput("ADEC0", "MAIN", parser.parse(R"({"streamType": "movie"})")) ==
            KEP_RESULT_OK &&
        audio->setOutputVolume("tv_speaker", audio->getDefaultVolume()) == KEP_RESULT_OK;
    if (!done)
        return 2;

    const auto* backend = dynamic_cast<const kepTVAudio*>(audio->getAudioObj());
    if (backend == nullptr || backend->getCurrentSoundout() != KEP_AUDIO_SPK)
        return 3;
    std::puts("the service is content");
    return audio->deinitialize() == KEP_STATUS_OK ? 0 : 4;
}
