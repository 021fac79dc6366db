// SPDX-License-Identifier: Apache-2.0
// One volume request through facade and mixer backend, next to the libasound calls that it comes
// down to.
#include <benchmark/benchmark.h>

#include "byhand.h"
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

void setOutputVolumeByHand(benchmark::State& state)
{
    for (auto _ : state)
        byhand::writeControl("default", "name='Master Playback Volume'", "35%");
}
BENCHMARK(setOutputVolumeByHand)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
