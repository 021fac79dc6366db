// SPDX-License-Identifier: Apache-2.0
// The pipeline store: what a report costs hardly depends on how many there were before it, or on
// how much it names. Compared are times of the same test, never with a limit in seconds.
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "journal.h"
#include "pipelinetest.h"

namespace
{

using std::chrono::steady_clock;

constexpr int kFew = 1000;
constexpr int kMany = 10000;
constexpr int kRounds = 3; // of which the best counts: other processes run as well
constexpr double kMostGrowth = 5;

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
        steady_clock::duration best = steady_clock::duration::max();
        for (int round = 0; round < kRounds; ++round) {
            maps().clear();
            const steady_clock::time_point begun = steady_clock::now();
            for (const JValue& report : reports)
                EXPECT_EQ(mBackend.setQualityAttribute(report), kDone);
            best = std::min(best, steady_clock::now() - begun);
            EXPECT_EQ(maps().size(), reports.size());
        }
        return std::chrono::duration<double>{best}.count() / parts;
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
