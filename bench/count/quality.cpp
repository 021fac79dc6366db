// SPDX-License-Identifier: Apache-2.0
// A quality report when so many pipelines are known.
#include <string>

#include "byhand.h"
#include "cases.h"
#include "client.h"

namespace count
{

using namespace byhand;

namespace
{

constexpr int kPipelines[] = {1, 3, 10, 17, 100, 333, 1000, 10000};

JValue reportOf(const std::string& pipelineId)
{
    JValue purposes = JValue::array();
    purposes.append("MAIN");
    JValue pipeline = JValue::object();
    pipeline.put("pipelineId", pipelineId);
    pipeline.put("resource", "ADEC0");
    pipeline.put("sourceType", "file");
    static_cast<void>(pipeline.put("pipelinePurpose", purposes));
    JValue category = JValue::object();
    category.put("codec", "AAC");
    JValue report = JValue::object();
    report.put("requestType", "setAudioInputInfo");
    static_cast<void>(report.put("pipelineInfo", pipeline));
    static_cast<void>(report.put("categoryInfo", category));
    return report;
}

void make(const JValue& report)
{
    require(kepClient::getInstance()->setQualityAttribute(report) == KEP_RESULT_OK, "a report");
}

/// Exactly so many pipelines are known.
void know(int count)
{
    static int known = 0;
    if (known == 0)
        startClient("TV");
    for (; known < count; ++known)
        make(reportOf("pipeline " + std::to_string(known)));
}

} // namespace

void addQualityCases(std::vector<Case>& cases)
{
    for (const int count : kPipelines) {
        const JValue last = reportOf("pipeline " + std::to_string(count - 1));
        cases.push_back({"quality.last." + std::to_string(count), [count] { know(count); },
                         [last] { make(last); }, 5});
        const JValue added = reportOf("another");
        cases.push_back({"quality.new." + std::to_string(count), [count] { know(count); },
                         [added] {
                             make(added);
                             require(kepClient::getInstance()->removePipelineInfo("another") ==
                                         KEP_RESULT_OK,
                                     "a removal");
                         },
                         5});
    }
}

} // namespace count
