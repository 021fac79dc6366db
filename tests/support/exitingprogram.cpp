// SPDX-License-Identifier: Apache-2.0
// A program that starts the backend and its start-up worker, and ends at a given moment of the
// worker's life. Exit status: 0 when nothing was noticed, otherwise a Fault.
//
//   exitingprogram HOW WHEN
//
// HOW: how it ends (kEndings). WHEN: "after" and a number of microseconds behind the launch,
// "asleep", while the worker pauses, "life", when it has ended (its length is printed), or the
// name of a call or an element: while the worker is inside it.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "jdomparser.h"
#include "journal.h"
#include "kepclient.h"
#include "platformlog.h"
#include "startupworker.h"

namespace
{

using std::chrono::microseconds;
using std::chrono::milliseconds;

enum Fault {
    kUnusable = 2,
    kStepOutlivedBackend = 3, // at the very end, the step that was running had not come to its end
    kWorkAfterBackend = 4,    // the worker did something when the backend was no more
    kStepAfterExit = 5,       // a step was begun although the process was ending
    kChildFailed = 6,
};

constexpr unsigned int kDeadlineSeconds = 60;
constexpr milliseconds kStepDuration{50}; // what a step goes on for when the end has begun

/// What the first message of a step, or a line before it, has in its text.
constexpr const char* kBeginnings[] = {
    R"("status":"start")",
    "Called setMuteHeadphone",
    "Gain is setting to driver again",
    "setBroadcastSystem",
};

milliseconds gPause{2}; // the worker's, in the place of its second
std::string gStep;      // to be inside of when the end comes
thread_local bool gOnWorker = false;
std::atomic<bool> gInside{false};
std::atomic<bool> gLeft{false};
std::atomic<bool> gCompleted{false};
std::atomic<bool> gBackendGone{false};

void onMessage(const LogMessage& message)
{
    const std::string_view text = message.text;
    if (text.find("UnRegister kepTVAudio") != text.npos)
        gBackendGone = true;
    if (!gOnWorker)
        return;
    if (gBackendGone)
        _exit(kWorkAfterBackend);
    for (const char* beginning : kBeginnings)
        if (gLeft && text.find(beginning) != text.npos)
            _exit(kStepAfterExit);
    if (text.find("XML parsing is completed") != text.npos)
        gCompleted = true;
}

void onEvent(const JValue& event)
{
    if (!gOnWorker)
        return;
    if (gBackendGone)
        _exit(kWorkAfterBackend);
    std::string name = event["library"].asString();
    name += name.empty() ? "" : ".";
    name += event["operation"].asString() + event["element"].asString();
    if (gStep.empty() || name != gStep)
        return;
    gInside = true;
    while (!StartupWorker::instance().stopping())
        std::this_thread::sleep_for(milliseconds{1});
    std::this_thread::sleep_for(kStepDuration);
    gLeft = true;
    gInside = false;
}

/// Runs when all that came after the start of main has been destroyed.
void atTheEnd()
{
    if (gInside)
        _exit(kStepOutlivedBackend);
}

void waitUntil(const std::atomic<bool>& mark)
{
    while (!mark) // an alarm ends it at the latest
        std::this_thread::sleep_for(microseconds{50});
}

bool launch()
{
    kepClient& client = *kepClient::getInstance();
    JDomParser parser{JSchema::acceptAll()};
    bool done = client.initialize() == 1;
    for (const char* category : {"contiConfig", "hardwareConfig", "modelConfig"})
        done = client.setSettings(category,
                                  parser.parse(R"({"tv.zib.tvBroadcastSystem":"DVB"})")) == 0 &&
               done;
    return done;
}

// --- The ways to end

[[noreturn]] void fromAnotherThread()
{
    std::thread{[] { std::exit(EXIT_SUCCESS); }}.detach();
    for (;;)
        pause();
}

/// The child has none of its parent's threads.
void inAChildFirst()
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(kDeadlineSeconds / 2);
        gInside = false;
        std::exit(EXIT_SUCCESS);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0)
        _exit(kChildFailed);
}

struct Ending {
    const char* name;
    void (*end)();
};
constexpr Ending kEndings[] = {
    {"return", [] {}},
    {"exit", [] { std::exit(EXIT_SUCCESS); }},
    {"thread", &fromAnotherThread},
    {"quick", [] { std::quick_exit(EXIT_SUCCESS); }},
    {"at-once", [] { _exit(EXIT_SUCCESS); }},
    {"child", &inAChildFirst},
};

} // namespace

extern "C" {
bool __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds duration);

bool __wrap__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds)
{
    gOnWorker = true; // nobody else pauses
    return __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(worker,
                                                                                        gPause);
}
}

int main(int argc, char** argv)
{
    const std::string how = argc > 2 ? argv[1] : "";
    const std::string when = argc > 2 ? argv[2] : "";
    const auto* ending = std::begin(kEndings);
    while (ending != std::end(kEndings) && how != ending->name)
        ++ending;
    if (ending == std::end(kEndings))
        return kUnusable;

    alarm(kDeadlineSeconds);
    std::atexit(&atTheEnd);
    LogSetLevel(LogGetContext("kep"), kLogDebug);
    LogSetSink(&onMessage);
    virtualtv::listen(&onEvent);
    const bool timed = when == "after";
    if (when == "asleep")
        gPause = std::chrono::hours{1};
    else if (!timed && when != "life")
        gStep = when;

    const auto launched = std::chrono::steady_clock::now();
    if (!launch())
        _exit(kUnusable);
    if (timed && argc > 3)
        std::this_thread::sleep_until(launched + microseconds{std::atol(argv[3])});
    if (!gStep.empty())
        waitUntil(gInside);
    if (when == "life") {
        waitUntil(gCompleted);
        const auto life = std::chrono::steady_clock::now() - launched;
        std::cout << std::chrono::duration_cast<microseconds>(life).count() << std::endl;
    }
    ending->end();
    return EXIT_SUCCESS;
}
