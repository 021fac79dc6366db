// SPDX-License-Identifier: Apache-2.0
// Routing on the television backend, next to the same driver writes made by hand.
// The writes of a request are taken from the journal, so both sides make exactly the same ones.
#include <cstdint>
#include <string>
#include <vector>

#include <alsa/asoundlib.h>
#include <benchmark/benchmark.h>

#include "client.h"
#include "journal.h"

namespace
{

struct DriverWrite {
    std::string element;
    std::vector<long> values;
};

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

std::vector<DriverWrite> writesOf(kepClient& client, Request request)
{
    std::vector<DriverWrite> writes;
    virtualtv::listen([&](const JValue& event) {
        if (event["event"].asString() != "control")
            return;
        DriverWrite write{event["element"].asString(), {}};
        for (const JValue& value : event["values"].elements())
            write.values.push_back(value.asNumber<std::int32_t>());
        writes.push_back(write);
    });
    request(client);
    virtualtv::listen({});
    return writes;
}

bool writeByHand(const DriverWrite& write)
{
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_hctl_t* handle = nullptr;
    if (snd_hctl_open(&handle, "hw:0", 0) < 0)
        return false;
    bool done = snd_hctl_load(handle) >= 0;
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, write.element.c_str());
    snd_hctl_elem_t* element = snd_hctl_find_elem(handle, id);
    done = done && element != nullptr && snd_hctl_elem_info(element, info) >= 0;
    snd_ctl_elem_info_get_id(info, id);
    snd_ctl_elem_value_set_id(value, id);
    for (std::size_t i = 0; i < write.values.size(); ++i)
        snd_ctl_elem_value_set_integer(value, static_cast<unsigned int>(i), write.values[i]);
    done = done && snd_hctl_elem_write(element, value) >= 0;
    snd_hctl_close(handle);
    return done;
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
    const std::vector<DriverWrite> writes = writesOf(television(), request);
    for (auto _ : state)
        for (const DriverWrite& write : writes)
            if (!writeByHand(write))
                state.SkipWithError("a write failed");
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
