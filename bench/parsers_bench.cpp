// SPDX-License-Identifier: Apache-2.0
// Parsers that JDomParser could read with: json-c as it does, others beside, and rapidjson as it
// would have to be used, with json-c's nodes made of what it reads.
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <json-c/json.h>
#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <simdjson.h>

#include "payloads.h"

namespace
{

const std::string& text()
{
    static const std::string kText = count::objectText(100);
    return kText;
}

/// Makes the nodes that JValue stands for.
class Nodes
{
public:
    ~Nodes() { json_object_put(mRoot); }

    // The names are rapidjson's.
    bool Null() { return add(nullptr); }
    bool Bool(bool value) { return add(json_object_new_boolean(value ? 1 : 0)); }
    bool Int(int value) { return add(json_object_new_int64(value)); }
    bool Uint(unsigned int value) { return add(json_object_new_int64(value)); }
    bool Int64(std::int64_t value) { return add(json_object_new_int64(value)); }
    bool Uint64(std::uint64_t value) { return add(json_object_new_uint64(value)); }
    bool Double(double value) { return add(json_object_new_double(value)); }
    bool RawNumber(const char* value, rapidjson::SizeType length, bool copy)
    {
        return String(value, length, copy);
    }
    bool String(const char* value, rapidjson::SizeType length, bool)
    {
        return add(json_object_new_string_len(value, static_cast<int>(length)));
    }
    bool Key(const char* value, rapidjson::SizeType length, bool)
    {
        mKey.assign(value, length);
        return true;
    }
    bool StartObject() { return open(json_object_new_object()); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool StartArray() { return open(json_object_new_array()); }
    bool EndArray(rapidjson::SizeType) { return close(); }

private:
    bool add(json_object* node)
    {
        if (mOpen.empty())
            mRoot = node;
        else if (json_object_is_type(mOpen.back(), json_type_object) != 0)
            json_object_object_add(mOpen.back(), mKey.c_str(), node);
        else
            json_object_array_add(mOpen.back(), node);
        return true;
    }
    bool open(json_object* node)
    {
        add(node);
        mOpen.push_back(node);
        return true;
    }
    bool close()
    {
        mOpen.pop_back();
        return true;
    }

    json_object* mRoot = nullptr;
    std::vector<json_object*> mOpen;
    std::string mKey;
};

void parserJsonC(benchmark::State& state)
{
    for (auto _ : state)
        json_object_put(json_tokener_parse(text().c_str()));
}
BENCHMARK(parserJsonC);

void parserRapidjsonIntoNodes(benchmark::State& state)
{
    for (auto _ : state) {
        rapidjson::StringStream stream{text().c_str()};
        Nodes nodes;
        if (!rapidjson::Reader{}.Parse(stream, nodes))
            state.SkipWithError("not parsed");
    }
}
BENCHMARK(parserRapidjsonIntoNodes);

void parserRapidjson(benchmark::State& state)
{
    for (auto _ : state) {
        rapidjson::Document document;
        benchmark::DoNotOptimize(document.Parse(text().c_str()).HasParseError());
    }
}
BENCHMARK(parserRapidjson);

void parserSimdjson(benchmark::State& state)
{
    simdjson::dom::parser parser;
    const simdjson::padded_string padded{text()};
    for (auto _ : state)
        benchmark::DoNotOptimize(parser.parse(padded).error());
}
BENCHMARK(parserSimdjson);

} // namespace
