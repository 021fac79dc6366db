// SPDX-License-Identifier: Apache-2.0
// The pipeline store: what a report costs hardly depends on how many there were before it, or on
// how much it names. Compared are processor times of the same test, never with a limit in seconds.
#include <algorithm>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "journal.h"
#include "pipelinetest.h"

namespace
{

constexpr int kFew = 1000;
constexpr int kMany = 10000;
constexpr int kRounds = 5; // of which the best counts: other processes use the caches as well
constexpr double kMostGrowth = 5;

/// What the calling thread has used of the processor, in seconds.
double processorTime()
{
    timespec used = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

class Growth : public PipelineTest
{
protected:
    Growth()
    {
        admit(kLogError); // what is printed costs what it costs
        LogSetSink([](const LogMessage&) {});
        virtualtv::listen({});
    }

    /// The shortest time of these reports, each in seconds by `parts`.
    double timeOf(const std::vector<JValue>& reports, int parts)
    {
        double best = std::numeric_limits<double>::max();
        for (int round = 0; round < kRounds; ++round) {
            maps().clear();
            const double begun = processorTime();
            for (const JValue& report : reports)
                EXPECT_EQ(mBackend.setQualityAttribute(report), kDone);
            best = std::min(best, processorTime() - begun);
            EXPECT_EQ(maps().size(), reports.size());
        }
        return best / parts;
    }

    static JValue reportOf(const std::string& pipelineId, int purposes)
    {
        JValue names = JValue::array();
        for (int i = 0; i < purposes; ++i)
            names.append("purpose " + std::to_string(i));
        JValue pipeline = with("pipelineId", pipelineId);
        static_cast<void>(pipeline.put("pipelinePurpose", names));
        JValue report = with("requestType", "setAudioInputInfo");
        static_cast<void>(report.put("pipelineInfo", pipeline));
        static_cast<void>(report.put("categoryInfo", JValue::object()));
        return report;
    }

    double timeOfAPipeline(int count)
    {
        std::vector<JValue> reports;
        for (int i = 0; i < count; ++i)
            reports.push_back(reportOf("pipeline " + std::to_string(i), 1));
        return timeOf(reports, count);
    }

    double timeOfAPurpose(int count) { return timeOf({reportOf("pipeline", count)}, count); }
};

} // namespace

TEST_F(Growth, ANewPipelineCostsTheSameHoweverManyThereAre)
{
    const double few = timeOfAPipeline(kFew);
    EXPECT_LE(timeOfAPipeline(kMany), kMostGrowth * few);
}

TEST_F(Growth, APurposeCostsTheSameHoweverManyThereAre)
{
    const double few = timeOfAPurpose(kFew);
    EXPECT_LE(timeOfAPurpose(kMany), kMostGrowth * few);
}
