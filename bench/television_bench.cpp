// SPDX-License-Identifier: Apache-2.0
// Routing on the television backend, next to the same driver writes and calls made by hand.
// They are taken from the journal, so both sides make exactly the same ones.
#include <vector>

#include <benchmark/benchmark.h>

#include "byhand.h"
#include "client.h"

namespace
{

/// A request that leaves things as they were before it.
using Request = bool (*)(kepClient& client);

bool switchThereAndBack(kepClient& client)
{
    return client.setSoundOutput("tv_speaker_optical_arc") == KEP_RESULT_OK &&
           client.setSoundOutput("tv_speaker") == KEP_RESULT_OK;
}

bool connectAndDisconnect(kepClient& client)
{
    return client.connectInput("ADEC1", "MAIN", JValue::object()) == KEP_RESULT_OK &&
           client.disconnectInput("ADEC1", "MAIN") == KEP_RESULT_OK;
}

/// The started client with the speaker as its output and eight connected resources.
kepClient& television()
{
    kepClient& client = startClient("TV");
    client.deinitialize();
    client.initialize(); // connects three
    client.setSoundOutput("tv_speaker");
    for (const char* source : {"ADEC0", "AMIXER0", "AMIXER1", "AMIXER2", "AMIXER3"})
        client.connectInput(source, "MAIN", JValue::object());
    return client;
}

void measure(benchmark::State& state, Request request)
{
    kepClient& client = television();
    for (auto _ : state)
        if (!request(client))
            state.SkipWithError("the request failed");
}

void measureByHand(benchmark::State& state, Request request)
{
    kepClient& client = television();
    const std::vector<byhand::Call> calls =
        byhand::callsOf([&] { byhand::require(request(client), "a request"); });
    for (auto _ : state)
        byhand::makeAgain(calls);
}

void setSoundOutput(benchmark::State& state)
{
    measure(state, &switchThereAndBack);
}
BENCHMARK(setSoundOutput)->Repetitions(9)->ReportAggregatesOnly();

void setSoundOutputByHand(benchmark::State& state)
{
    measureByHand(state, &switchThereAndBack);
}
BENCHMARK(setSoundOutputByHand)->Repetitions(9)->ReportAggregatesOnly();

void connectInput(benchmark::State& state)
{
    measure(state, &connectAndDisconnect);
}
BENCHMARK(connectInput)->Repetitions(9)->ReportAggregatesOnly();

void connectInputByHand(benchmark::State& state)
{
    measureByHand(state, &connectAndDisconnect);
}
BENCHMARK(connectInputByHand)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
