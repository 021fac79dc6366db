// SPDX-License-Identifier: Apache-2.0
// Quality reports as they grow: one with n purposes, and one each of n new pipelines. The time of a
// purpose does not depend on n. That of a pipeline doubles with ten times as many: a look-up walks
// the hashes of all.
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "client.h"

namespace
{

constexpr std::int64_t kCounts[] = {100, 1000, 10000};

JValue reportOf(const std::string& pipelineId, std::int64_t purposes)
{
    JValue names = JValue::array();
    for (std::int64_t i = 0; i < purposes; ++i)
        names.append("purpose " + std::to_string(i));
    JValue pipeline = JValue::object();
    pipeline.put("pipelineId", pipelineId);
    static_cast<void>(pipeline.put("pipelinePurpose", names));
    JValue report = JValue::object();
    report.put("requestType", "setAudioInputInfo");
    static_cast<void>(report.put("pipelineInfo", pipeline));
    static_cast<void>(report.put("categoryInfo", JValue::object()));
    return report;
}

/// Makes the reports, of which each is of another pipeline, and forgets the pipelines.
void measure(benchmark::State& state, const std::vector<JValue>& reports)
{
    kepClient& client = startClient("TV");
    for (auto _ : state) {
        for (const JValue& report : reports)
            if (client.setQualityAttribute(report) != KEP_RESULT_OK)
                state.SkipWithError("a report was refused");
        state.PauseTiming();
        for (auto report = reports.rbegin(); report != reports.rend(); ++report)
            client.removePipelineInfo((*report)["pipelineInfo"]["pipelineId"].asString());
        state.ResumeTiming();
    }
    // What one costs, of n.
    state.counters["each"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                benchmark::Counter::kIsIterationInvariantRate |
                                                    benchmark::Counter::kInvert);
}

void reportPurposes(benchmark::State& state)
{
    measure(state, {reportOf("pipeline", state.range(0))});
}

void reportPipelines(benchmark::State& state)
{
    std::vector<JValue> reports;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        reports.push_back(reportOf("pipeline " + std::to_string(i), 1));
    measure(state, reports);
}

void eachCount(benchmark::internal::Benchmark* benchmark)
{
    for (const std::int64_t count : kCounts)
        benchmark->Arg(count);
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(reportPurposes)->Apply(&eachCount);
BENCHMARK(reportPipelines)->Apply(&eachCount);

} // namespace
