// SPDX-License-Identifier: Apache-2.0
// Runs the benchmarks on the virtual television and prints the ratio of each pair.
#include <cstdio>
#include <map>
#include <string>

#include <benchmark/benchmark.h>

#include "environment.h"
#include "pairs.h"

namespace
{

constexpr BenchmarkPair kPairs[] = {
    {"setOutputVolume", "setOutputVolumeByHand", 1.05},
    {"setSoundOutput", "setSoundOutputByHand", 1.05},
    {"connectInput", "connectInputByHand", 1.05},
    {"parse", "parseByHand", 1.2},
    {"stringify", "stringifyByHand", 1.2},
};

/// The console's report, which also keeps the median time of each benchmark.
class PairReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.aggregate_name == "median")
                mMedians[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }

    void printRatios() const
    {
        printf("\n%-24s %6s  %s\n", "ratio to the same by hand", "", "aim");
        for (const BenchmarkPair& pair : kPairs)
            if (mMedians.count(pair.library) != 0 && mMedians.count(pair.byHand) != 0)
                printf("%-24s %6.3f  %.2f\n", pair.library,
                       mMedians.at(pair.library) / mMedians.at(pair.byHand), pair.aim);
    }

private:
    std::map<std::string, double> mMedians;
};

} // namespace

int main(int argc, char** argv)
{
    virtualtv::enter();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    PairReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    return 0;
}
