// SPDX-License-Identifier: Apache-2.0
// JSON texts of the size of a settings payload, next to bare json-c.
#include <string>

#include <benchmark/benchmark.h>
#include <json-c/json.h>

#include "jdomparser.h"

namespace
{

/// About 2 KiB, with the shapes that settings have.
std::string payload()
{
    std::string text = R"({"category":"sound","settings":[)";
    for (int i = 0; i < 20; ++i)
        text += (i != 0 ? "," : "") + std::string{R"({"name":"userEqualizer","status":"on",)"} +
                R"("values":[0,5,-3,12,)" + std::to_string(i) + R"(],"gain":-1.5,"active":true})";
    return text + "]}";
}

void parse(benchmark::State& state)
{
    const std::string text = payload();
    for (auto _ : state) {
        JDomParser parser{JSchema::acceptAll()};
        benchmark::DoNotOptimize(parser.parse(text));
    }
}
BENCHMARK(parse)->Repetitions(9)->ReportAggregatesOnly();

void parseByHand(benchmark::State& state)
{
    const std::string text = payload();
    for (auto _ : state) {
        json_tokener* tokener = json_tokener_new();
        json_object* root =
            json_tokener_parse_ex(tokener, text.data(), static_cast<int>(text.size()));
        benchmark::DoNotOptimize(root);
        json_object_put(root);
        json_tokener_free(tokener);
    }
}
BENCHMARK(parseByHand)->Repetitions(9)->ReportAggregatesOnly();

void stringify(benchmark::State& state)
{
    const JValue value = JDomParser{JSchema::acceptAll()}.parse(payload());
    for (auto _ : state)
        benchmark::DoNotOptimize(value.stringify());
}
BENCHMARK(stringify)->Repetitions(9)->ReportAggregatesOnly();

void stringifyByHand(benchmark::State& state)
{
    json_object* root = json_tokener_parse(payload().c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(json_object_to_json_string_ext(
            root, JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE));
    json_object_put(root);
}
BENCHMARK(stringifyByHand)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
