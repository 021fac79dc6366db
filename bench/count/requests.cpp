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

/// The television on its speaker, with so many inputs connected.
void television(int inputs)
{
    startClient("TV");
    client().deinitialize();
    client().initialize(); // connects three
    done(client().setSoundOutput("tv_speaker"));
    for (const char* connected : {"ADEC0", "AMIXER5", "AMIXER6"})
        static_cast<void>(client().disconnectInput(connected, "MAIN"));
    connect(inputs);
}

void thereAndBack()
{
    done(client().setSoundOutput("tv_speaker_optical_arc"));
    done(client().setSoundOutput("tv_speaker"));
}

void connectAndDisconnect()
{
    done(client().connectInput("ADEC1", "MAIN", JValue::object()));
    done(client().disconnectInput("ADEC1", "MAIN"));
}

struct RequestRow {
    const char* name;
    std::function<void()> make;
    int inputs;
    int times;
    bool everyLevel;
};

const RequestRow kRequests[] = {
    {"setMute", [] { done(client().setMute("ADEC0", "MAIN", true)); }, 0, 10, true},
    {"setOutputMute", [] { done(client().setOutputMute("tv_speaker", true)); }, 0, 10, true},
    {"setInputVolume", [] { done(client().setInputVolume("ADEC0", "MAIN", 20)); }, 0, 10, true},
    {"setOutputVolume", [] { done(client().setOutputVolume("tv_speaker", 20)); }, 0, 10, true},
    {"connectInput", &connectAndDisconnect, 0, 10, true},
    {"setSoundOutput", &thereAndBack, 0, 5, true},
    {"setSoundOutput.8", &thereAndBack, 8, 2, true},
    {"setSoundOutput.100", &thereAndBack, 100, 1, false},
};

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
        // The same for all, so that all find the same heap.
        const auto prepare = [&row, calls] {
            television(row.inputs);
            row.make();
            *calls = callsOf(row.make);
        };
        for (const LogRow& log : kLevels)
            if (row.everyLevel || log.level == kLogError)
                cases.push_back({std::string{row.name} + log.suffix,
                                 [prepare, &log] {
                                     prepare();
                                     LogSetLevel(LogGetContext("kep"), log.level);
                                     if (log.dropped)
                                         LogSetSink([](const LogMessage&) {});
                                 },
                                 row.make, row.times});
        cases.push_back({std::string{row.name} + ".byHand", prepare, [calls] { makeAgain(*calls); },
                         row.times});
    }
}

} // namespace count
