// SPDX-License-Identifier: Apache-2.0
// One volume request through facade and mixer backend, next to the libasound calls that it comes
// down to.
#include <alsa/asoundlib.h>
#include <benchmark/benchmark.h>

#include "client.h"

namespace
{

void setOutputVolume(benchmark::State& state)
{
    kepClient& audio = startClient("ALSA");
    for (auto _ : state)
        if (audio.setOutputVolume("speaker", 35) != KEP_RESULT_OK)
            state.SkipWithError("the volume was not set");
}
BENCHMARK(setOutputVolume)->Repetitions(9)->ReportAggregatesOnly();

bool writeByHand()
{
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_ctl_t* handle = nullptr;
    if (snd_ctl_ascii_elem_id_parse(id, "name='Master Playback Volume'") != 0 ||
        snd_ctl_open(&handle, "default", 0) < 0)
        return false;
    snd_ctl_elem_info_set_id(info, id);
    const bool written = snd_ctl_elem_info(handle, info) >= 0 &&
                         snd_ctl_ascii_value_parse(handle, value, info, "35%") >= 0 &&
                         snd_ctl_elem_write(handle, value) >= 0;
    snd_ctl_close(handle);
    return written;
}

void setOutputVolumeByHand(benchmark::State& state)
{
    for (auto _ : state)
        if (!writeByHand())
            state.SkipWithError("the volume was not set");
}
BENCHMARK(setOutputVolumeByHand)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
