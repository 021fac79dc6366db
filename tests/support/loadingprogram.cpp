// SPDX-License-Identifier: Apache-2.0
// A program that loads the library, launches its start-up worker, unloads it and ends.
// Exit status: 0 when all of that went as it should.
//
//   loadingprogram LIBRARY MOMENT
//
// MOMENT: "unused", nothing is done between loading and unloading; "at-once", the end comes while
// the worker pauses; "step", in the middle of a step of its; "life", after the last one; "again",
// the library is loaded and unloaded once more.
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>

#include "jdomparser.h"
#include "journal.h"
#include "kepaudio.h"
#include "platformlog.h"

namespace
{

using std::chrono::milliseconds;

enum Fault { kNotLoaded = 2, kNotFound = 3, kNotStarted = 4, kNotUnloaded = 5 };

constexpr unsigned int kDeadlineSeconds = 60;

std::atomic<bool> gStepReached{false};
std::atomic<bool> gCompleted{false};

void onEvent(const JValue& event)
{
    const std::string operation = event["operation"].asString();
    if (operation == "parseGainParams") {
        gStepReached = true;
        std::this_thread::sleep_for(milliseconds{50}); // a slow step
    }
    if (operation == "setAmpReset")
        gCompleted = true;
}

void waitUntil(const std::atomic<bool>& mark)
{
    while (!mark) // an alarm ends it at the latest
        std::this_thread::sleep_for(milliseconds{1});
}

/// Starts the backend through the only names that a caller without headers has.
int use(void* library)
{
    using GetClient = void* (*)();
    using Initialize = unsigned int (*)(void*);
    using Create = kepAudio* (*)();
    const auto getClient =
        reinterpret_cast<GetClient>(dlsym(library, "_ZN9kepClient11getInstanceEv"));
    const auto initialize =
        reinterpret_cast<Initialize>(dlsym(library, "_ZN9kepClient10initializeEv"));
    const auto create = reinterpret_cast<Create>(dlsym(library, "_ZN10kepTVAudio12createObjectEv"));
    if (getClient == nullptr || initialize == nullptr || create == nullptr)
        return kNotFound;
    if (initialize(getClient()) != 1)
        return kNotStarted;
    kepAudio* backend = create();
    JDomParser parser{JSchema::acceptAll()};
    for (const char* category : {"contiConfig", "hardwareConfig", "modelConfig"})
        if (backend->setSettings(category, parser.parse("{}")) != 0)
            return kNotStarted;
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return kNotLoaded;
    alarm(kDeadlineSeconds);
    const std::string moment = argv[2];
    LogSetSink([](const LogMessage&) {});
    virtualtv::listen(&onEvent);
    for (int round = 0; round < (moment == "again" ? 2 : 1); ++round) {
        void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return kNotLoaded;
        if (moment != "unused")
            if (const int fault = use(library); fault != 0)
                return fault;
        if (dlclose(library) != 0)
            return kNotUnloaded;
    }
    if (moment == "step")
        waitUntil(gStepReached);
    if (moment == "life")
        waitUntil(gCompleted);
    return 0;
}
