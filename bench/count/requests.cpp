// SPDX-License-Identifier: Apache-2.0
// Requests through the client, at every log level, next to the calls that they make.
#include <memory>
#include <utility>

#include "byhand.h"
#include "cases.h"
#include "client.h"
#include "platformlog.h"

namespace count
{

using namespace byhand;

namespace
{

kepClient& client()
{
    return *kepClient::getInstance();
}

void done(unsigned int result)
{
    require(result == KEP_RESULT_OK, "a request failed");
}

void connect(int inputs)
{
    constexpr const char* kMixers[] = {"AMIXER0", "AMIXER1", "AMIXER2", "AMIXER3"};
    for (int i = 0; i < inputs; ++i)
        done(client().connectInput(kMixers[i % 4], "MAIN", JValue::object()));
}

struct RequestRow {
    const char* name;
    std::function<void()> make;
    const char* output;
    int inputs;
    int times;
    bool everyLevel;
};

/// The television on that output, with so many inputs connected.
void television(const RequestRow& row)
{
    startClient("TV");
    client().deinitialize();
    client().initialize(); // connects three
    done(client().setSoundOutput(row.output));
    for (const char* connected : {"ADEC0", "AMIXER5", "AMIXER6"})
        static_cast<void>(client().disconnectInput(connected, "MAIN"));
    connect(row.inputs);
}

void thereAndBack()
{
    done(client().setSoundOutput("tv_speaker_optical_arc"));
    done(client().setSoundOutput("tv_speaker"));
}

/// By names that fit std::string's own buffer.
void toArcAndBack()
{
    done(client().setSoundOutput("external_arc"));
    done(client().setSoundOutput("tv_speaker"));
}

void connectAndDisconnect()
{
    static const JValue attributes = JValue::object(); // what the caller makes is not the library's
    done(client().connectInput("ADEC1", "MAIN", attributes));
    done(client().disconnectInput("ADEC1", "MAIN"));
}

// clang-format off
const RequestRow kRequests[] = {
    {"setMute",            [] { done(client().setMute("ADEC0", "MAIN", true)); },       "tv_speaker",             0,   10, true},
    {"setOutputMute",      [] { done(client().setOutputMute("tv_speaker", true)); },    "tv_speaker",             0,   10, true},
    {"setInputVolume",     [] { done(client().setInputVolume("ADEC0", "MAIN", 20)); },  "tv_speaker",             0,   10, true},
    {"setOutputVolume",    [] { done(client().setOutputVolume("tv_speaker", 20)); },    "tv_speaker",             0,   10, true},
    {"connectInput",       &connectAndDisconnect,                                       "tv_speaker",             0,   10, true},
    {"connectInput.two",   &connectAndDisconnect,                                       "tv_speaker_headphone",   0,   5,  false},
    {"connectInput.three", &connectAndDisconnect,                                       "tv_speaker_optical_arc", 0,   5,  false},
    {"setSoundOutput",     &thereAndBack,                                               "tv_speaker",             0,   5,  true},
    {"setSoundOutput.1",   &thereAndBack,                                               "tv_speaker",             1,   4,  false},
    {"setSoundOutput.3",   &thereAndBack,                                               "tv_speaker",             3,   4,  false},
    {"setSoundOutput.8",   &thereAndBack,                                               "tv_speaker",             8,   4,  true},
    {"setSoundOutput.17",  &thereAndBack,                                               "tv_speaker",             17,  4,  false},
    {"setSoundOutput.100", &thereAndBack,                                               "tv_speaker",             100, 1,  false},
    {"setSoundOutput.arc.0",  &toArcAndBack,                                            "tv_speaker",             0,   4, false},
    {"setSoundOutput.arc.17", &toArcAndBack,                                            "tv_speaker",             17,  4, false},
    {"setSoundOutput.333", &thereAndBack,                                               "tv_speaker",             333, 1,  false},
};
// clang-format on

struct LogRow {
    const char* suffix;
    int level;
    bool dropped; // by a sink
};
constexpr LogRow kLevels[] = {
    {"@error", kLogError, false},
    {"@info", kLogInfo, false},
    {"@debug", kLogDebug, false},
    {"@dropped", kLogInfo, true},
};

} // namespace

void addRequestCases(std::vector<Case>& cases)
{
    for (const RequestRow& row : kRequests) {
        const auto calls = std::make_shared<std::vector<Call>>();
        for (const LogRow& log : kLevels)
            if (row.everyLevel || log.level == kLogError)
                cases.push_back({std::string{row.name} + log.suffix,
                                 [&row, &log] {
                                     television(row);
                                     LogSetLevel(LogGetContext("kep"), log.level);
                                     if (log.dropped)
                                         LogSetSink([](const LogMessage&) {});
                                 },
                                 row.make, row.times});
        cases.push_back({std::string{row.name} + ".byHand",
                         [&row, calls] {
                             television(row);
                             row.make();
                             *calls = callsOf(row.make);
                         },
                         [calls] { makeAgain(*calls); }, row.times});
    }
}

} // namespace count
