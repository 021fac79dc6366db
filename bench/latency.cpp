// SPDX-License-Identifier: Apache-2.0
// How long one request holds the caller: the distribution of the time of each that there is, while
// the start-up worker runs and the main loop has timers. Wall time, so a figure says as much about
// the machine. With a number: so many rounds; a test makes one, which fails when a request was
// forgotten here.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <glib.h>

#include "client.h"
#include "environment.h"
#include "jdomparser.h"
#include "operations.h"

namespace
{

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

// A pipeline is reported before the first round, and forgotten and reported again in each.
constexpr const char* kReport =
    R"([{"requestType": "setAudioInputInfo", "categoryInfo": {"codec": "AAC"},)"
    R"( "pipelineInfo": {"pipelineId": "film", "resource": "ADEC0", "pipelinePurpose": ["MAIN"]}}])";

/// Arguments of every other round; each round makes all requests, in the order of their table.
struct RequestRow {
    std::string_view name;
    const char* even;
    const char* odd;
};
// clang-format off
constexpr RequestRow kRequests[] = {
    {"initialize",          "[]",                                       "[]"},
    {"deinitialize",        "[]",                                       "[]"},
    {"getDefaultVolume",    "[]",                                       "[]"},
    {"connectInput",        R"(["ADEC1", "MAIN", {}])",                 R"(["ADEC1", "MAIN", {}])"},
    {"disconnectInput",     R"(["ADEC1", "MAIN"])",                     R"(["ADEC1", "MAIN"])"},
    {"getHeadphoneStatus",  "[]",                                       "[]"},
    {"removePipelineInfo",  R"(["film"])",                              R"(["film"])"},
    {"setSoundOutput",      R"(["tv_speaker_headphone"])",              R"(["tv_speaker"])"},
    {"setMute",             R"(["ADEC0", "MAIN", true])",               R"(["ADEC0", "MAIN", false])"},
    {"setOutputVolume",     R"(["tv_speaker", 8])",                     R"(["tv_speaker", 9])"},
    {"setInputVolume",      R"(["ADEC0", "MAIN", 8])",                  R"(["ADEC0", "MAIN", 9])"},
    {"setOutputMute",       R"(["tv_speaker", true])",                  R"(["tv_speaker", false])"},
    {"setMuteExtSPK",       "[true]",                                   "[false]"},
    {"setQualityAttribute", kReport,                                    kReport},
    {"setSettings",         R"(["dimension", {"status": "on"}])",       R"(["dimension", {"status": "off"}])"},
    {"getSettings",         R"(["dimension", {}])",                     R"(["dimension", {}])"},
};
// clang-format on

/// A request as it is measured.
struct Measured {
    const Operation* operation;
    std::vector<JValue> arguments[2]; // of even and odd rounds
    std::vector<double> times;

    /// They would stop the worker; they are measured after the others.
    [[nodiscard]] bool startsOrStops() const { return operation->answer == Answer::Status; }

    /// False when it failed.
    bool make(int round)
    {
        const std::vector<JValue>& given = arguments[round % 2];
        const Clock::time_point start = Clock::now();
        const Outcome outcome = operation->call(given);
        times.push_back(Microseconds{Clock::now() - start}.count());
        if (!failed(*operation, outcome.result))
            return true;
        printf("%s failed\n", operation->name);
        return false;
    }

    void print()
    {
        std::sort(times.begin(), times.end());
        const auto at = [this](double share) {
            return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
        };
        printf("%-20s %10.1f %10.1f %10.1f %10.1f\n", operation->name, at(0.5), at(0.99), at(0.999),
               times.back());
    }
};

std::vector<JValue> argumentsOf(const char* text)
{
    std::vector<JValue> arguments;
    for (const JValue& argument : JDomParser{JSchema::acceptAll()}.parse(text).elements())
        arguments.push_back(argument);
    return arguments;
}

/// Every request that there is; none at all when one has no arguments here.
std::vector<Measured> allRequests()
{
    std::vector<Measured> requests;
    for (const Operation& operation : operationRows()) {
        const RequestRow* row =
            std::find_if(std::begin(kRequests), std::end(kRequests),
                         [&](const RequestRow& each) { return each.name == operation.name; });
        if (row == std::end(kRequests)) {
            printf("%s is not measured: it has no arguments here\n", operation.name);
            return {};
        }
        requests.push_back({&operation, {argumentsOf(row->even), argumentsOf(row->odd)}, {}});
    }
    return requests;
}

/// The worker starts once its three conditions have been set, and begins after a second.
void startWorker(kepClient& client)
{
    for (const char* condition : {"contiConfig", "hardwareConfig", "modelConfig"})
        client.setSettings(condition, JValue::object());
}

/// At least so many rounds, and so long; false when a request failed.
bool measure(std::vector<Measured>& requests, bool startingOrStopping, int rounds,
             std::chrono::milliseconds time)
{
    bool done = true;
    const Clock::time_point end = Clock::now() + time;
    for (int round = 0; round < rounds || Clock::now() < end; ++round) {
        for (Measured& request : requests)
            if (request.startsOrStops() == startingOrStopping)
                done = request.make(round) && done;
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }
    return done;
}

} // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 2000;
    virtualtv::enter();
    kepClient& client = startClient("TV");
    client.setSoundOutput("tv_speaker");
    std::vector<Measured> requests = allRequests();
    if (requests.empty() || rounds < 1)
        return 1;
    static_cast<void>(findOperation("setQualityAttribute")->call(argumentsOf(kReport)));
    startWorker(client);
    g_timeout_add(
        1, [](void*) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);

    // The worker's second, and what it does then.
    const std::chrono::milliseconds atLeast{rounds > 1 ? 1500 : 0};
    const bool done = measure(requests, /*startingOrStopping=*/false, rounds, atLeast);
    const bool startedAndStopped =
        measure(requests, /*startingOrStopping=*/true, std::max(1, rounds / 10), {});
    printf("%-20s %10s %10s %10s %10s\n", "microseconds", "p50", "p99", "p99.9", "max");
    for (Measured& request : requests)
        request.print();
    return done && startedAndStopped ? 0 : 1;
}
