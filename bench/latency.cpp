// SPDX-License-Identifier: Apache-2.0
// How long one request holds the caller: the distribution of the time of each, while the start-up
// worker runs and the main loop has timers. Wall time, so a figure says as much about the machine.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <glib.h>

#include "client.h"
#include "environment.h"

namespace
{

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

kepClient& client()
{
    return *kepClient::getInstance();
}

/// What a row does is undone by its second request, so that each run finds the same television.
struct RequestRow {
    const char* name;
    unsigned int (*make)(bool second);
};
const RequestRow kRequests[] = {
    {"connectInput, disconnectInput",
     [](bool second) {
         return second ? client().disconnectInput("ADEC1", "MAIN")
                       : client().connectInput("ADEC1", "MAIN", JValue::object());
     }},
    {"setSoundOutput",
     [](bool second) {
         return client().setSoundOutput(second ? "tv_speaker" : "tv_speaker_headphone");
     }},
    {"setMute", [](bool second) { return client().setMute("ADEC0", "MAIN", !second); }},
    {"setOutputVolume",
     [](bool second) { return client().setOutputVolume("tv_speaker", second ? 9 : 8); }},
    {"setInputVolume",
     [](bool second) { return client().setInputVolume("ADEC0", "MAIN", second ? 9 : 8); }},
    {"setOutputMute", [](bool second) { return client().setOutputMute("tv_speaker", !second); }},
    {"setMuteExtSPK", [](bool second) { return client().setMuteExtSPK(!second); }},
    {"getHeadphoneStatus",
     [](bool) {
         bool connected = false;
         return client().getHeadphoneStatus(&connected);
     }},
    {"setSettings",
     [](bool) {
         JValue payload = JValue::object();
         payload.put("status", "on");
         return client().setSettings("dimension", payload);
     }},
};

/// The worker starts once its three conditions have been set, and begins after a second.
void startWorker()
{
    for (const char* condition : {"contiConfig", "hardwareConfig", "modelConfig"})
        client().setSettings(condition, JValue::object());
}

void print(const char* name, std::vector<double>& times)
{
    std::sort(times.begin(), times.end());
    const auto at = [&times](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    printf("%-32s %10.1f %10.1f %10.1f %10.1f\n", name, at(0.5), at(0.99), at(0.999), times.back());
}

} // namespace

int main()
{
    constexpr int kRounds = 2000;
    virtualtv::enter();
    startClient("TV");
    client().setSoundOutput("tv_speaker");
    startWorker();
    g_timeout_add(
        1, [](void*) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);

    std::vector<double> times[std::size(kRequests)];
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < std::size(kRequests); ++i) {
            for (const bool second : {false, true}) {
                const Clock::time_point start = Clock::now();
                const unsigned int result = kRequests[i].make(second);
                times[i].push_back(Microseconds{Clock::now() - start}.count());
                if (result != KEP_RESULT_OK)
                    return printf("%s failed\n", kRequests[i].name), 1;
            }
        }
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }
    printf("%-32s %10s %10s %10s %10s\n", "microseconds", "p50", "p99", "p99.9", "max");
    for (std::size_t i = 0; i < std::size(kRequests); ++i)
        print(kRequests[i].name, times[i]);
    return 0;
}
