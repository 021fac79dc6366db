// SPDX-License-Identifier: Apache-2.0
// The caller's thread beside a slow, re-entering, ending or forking start-up worker: no request
// waits for it, and nothing hangs. Every test has a watchdog: what hangs ends with SIGALRM. Each is
// run in a process of its own, since only the process that made the worker waits for it.
#include "threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "kepclient.h"
#include "keplog.h"
#include "onworker.h"
#include "tvbackendtest.h"

using std::chrono::milliseconds;
using std::chrono::steady_clock;

extern "C" {
// bool StartupWorker::sleep(std::chrono::milliseconds): the pause of a second is not what is
// tested.
bool __wrap__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(StartupWorker*,
                                                                                  milliseconds)
{
    return !StartupWorker::instance().stopping();
}
}

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;

constexpr unsigned int kDeadlineSeconds = 100;

/// All that the start-up worker calls, in its order.
constexpr const char* kWorkersCalls[] = {
    "delay.registerQualityParams",
    "delay.setDelayInitialize",
    "gain.registerQualityParams",
    "gain.parseGainParams",
    "amplifier.registerQualityParams",
    "amplifier.parseAmpParams",
    "subcpu_misc_Set_HPMuteOnOff",
    "Mute Output",
    "Gain Input",
    "Gain Output",
    "Sndout Spdif CategoryCode",
    "soundengine.registerQualityParams",
    "soundengine.initialize",
    "gain.setVolumeInit",
    "amplifier.setAmpReset",
};

std::string nameOf(const JValue& event)
{
    const std::string library = event["library"].asString();
    return library + (library.empty() ? "" : ".") + event["operation"].asString() +
           event["element"].asString();
}

/// A request of each kind, with what it is called in a report.
struct Request {
    const char* name;
    std::function<void(kepTVAudio&)> make;
};

const std::vector<Request>& requests()
{
    static const std::vector<Request> all = {
        {"connectInput",
         [](kepTVAudio& tv) { tv.connectInput("ADEC0", "MAIN", JValue::object()); }},
        {"disconnectInput", [](kepTVAudio& tv) { tv.disconnectInput("ADEC0", "MAIN"); }},
        {"getHeadphoneStatus",
         [](kepTVAudio& tv) {
             bool connected = false;
             tv.getHeadphoneStatus(&connected);
         }},
        {"setSoundOutput, headphone", [](kepTVAudio& tv) { tv.setSoundOutput("headphone"); }},
        {"setSoundOutput, ARC", [](kepTVAudio& tv) { tv.setSoundOutput("external_arc"); }},
        {"setMute", [](kepTVAudio& tv) { tv.setMute("AMIXER0", "MAIN", true); }},
        {"setOutputVolume", [](kepTVAudio& tv) { tv.setOutputVolume("tv_speaker", 7); }},
        {"setInputVolume", [](kepTVAudio& tv) { tv.setInputVolume("ADEC0", "MAIN", 7); }},
        {"setOutputMute", [](kepTVAudio& tv) { tv.setOutputMute("headphone", true); }},
        {"setMuteExtSPK", [](kepTVAudio& tv) { tv.setMuteExtSPK(true); }},
        {"setQualityAttribute",
         [](kepTVAudio& tv) {
             tv.setQualityAttribute(
                 json(R"({"requestType":"setAudioInputInfo","pipelineInfo":{"pipelineId":"p1",)"
                      R"("resource":"ADEC0"},"categoryInfo":{"codec":"ac3"}})"));
         }},
        {"setSettings, sound",
         [](kepTVAudio& tv) { tv.setSettings("sound", json(R"({"soundMode":"movie"})")); }},
        {"setSettings, hardwareConfig",
         [](kepTVAudio& tv) {
             tv.setSettings("hardwareConfig", json(R"({"tv.hw.countryType":"JP"})"));
         }},
        {"setSettings, amplifier",
         [](kepTVAudio& tv) {
             tv.setSettings("amplifier", json(R"({"tv.model.ampChipType":"chip"})"));
         }},
        {"setSettings, picture",
         [](kepTVAudio& tv) { tv.setSettings("picture", json(R"({"memcDelayLevel":"low"})")); }},
        {"setSettings, external_arc",
         [](kepTVAudio& tv) {
             tv.setSettings("external_arc", json(R"({"earcCapability":["DD"]})"));
         }},
        {"getSettings", [](kepTVAudio& tv) { tv.getSettings("", JValue{}); }},
        {"removePipelineInfo", [](kepTVAudio& tv) { tv.removePipelineInfo("p1"); }},
        {"deinitAudio", [](kepTVAudio& tv) { tv.deinitAudio(); }},
    };
    return all;
}

/// How long the thread was off the processor of its own accord: behind a lock, for one.
class Waiting
{
public:
    [[nodiscard]] milliseconds now() const
    {
        rusage usage = {};
        getrusage(RUSAGE_THREAD, &usage);
        const auto took = steady_clock::now() - mBegun;
        return usage.ru_nvcsw == mSwitches ? milliseconds{0}
                                           : std::chrono::duration_cast<milliseconds>(took);
    }

private:
    static long switches()
    {
        rusage usage = {};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_nvcsw;
    }

    const long mSwitches = switches();
    const steady_clock::time_point mBegun = steady_clock::now();
};

class Threads : public TvBackendTest
{
protected:
    Threads()
    {
        alarm(kDeadlineSeconds);
        admit(kLogError);
        LogSetSink([](const LogMessage&) {}); // the fixture's is for one thread
        virtualtv::listen({});
    }

    /// Runs the worker's whole life on a thread of its own.
    std::future<void> start()
    {
        mBackend.mIsInitGainAudioUpdate = false; // so that it writes the gains
        mBackend.mConnectedResources = {KEP_AUDIO_RESOURCE_AMIXER7};
        store().mQualityParamsMap["tv.zib.tvBroadcastSystem"] = "DVB";
        return launched([this] { mBackend.startXmlParsing(); });
    }

    /// Calls `act` on the worker's thread while it is inside `call`, once.
    static void onceInside(const std::string& call, std::function<void()> act)
    {
        auto done = std::make_shared<std::atomic<bool>>(false);
        virtualtv::listen([call, act = std::move(act), done](const JValue& event) {
            if (StartupWorker::isCurrentThread() && nameOf(event) == call && !done->exchange(true))
                act();
        });
    }

    /// The exit status of a child that runs `act`, or the signal that ended it.
    static std::string endOfChild(const std::function<void()>& act)
    {
        const pid_t child = fork();
        if (child == 0) {
            alarm(kDeadlineSeconds / 4);
            act();
            _exit(99);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? std::to_string(WEXITSTATUS(status))
                                 : "signal " + std::to_string(WTERMSIG(status));
    }
};

} // namespace

// --- Slow middleware and driver

TEST_F(Threads, NoRequestWaitsForASlowCallOfTheWorker)
{
    constexpr milliseconds kSlow{60};
    constexpr milliseconds kLongest{1};
    milliseconds longest{0};
    for (const char* call : kWorkersCalls) {
        std::string waited; // what waited, in the round that went best
        for (int round = 0; round < 4; ++round) {
            std::atomic<bool> inside{false};
            std::atomic<bool> left{false};
            onceInside(call, [&] {
                inside = true;
                std::this_thread::sleep_for(kSlow);
                left = true;
            });
            std::future<void> worker = start();
            while (!inside)
                std::this_thread::yield();
            waited.clear();
            for (const Request& request : requests()) {
                const Waiting waiting;
                request.make(mBackend);
                const milliseconds took = waiting.now();
                longest = std::max(longest, took);
                if (took > kLongest)
                    waited += std::string{" "} + request.name + " " + std::to_string(took.count());
            }
            worker.get();
            if (waited.empty())
                break; // another process can hold the card's file for a moment
        }
        EXPECT_THAT(waited, IsEmpty()) << "while " << call << " was slow (ms)";
    }
    std::cout << "the longest wait of a request, other processes' included: " << longest.count()
              << " ms\n";
}

// --- Re-entry

TEST_F(Threads, TheMiddlewareMayCallBackInsideEachCallOfTheWorker)
{
    for (const char* call : kWorkersCalls) {
        std::atomic<int> answered{0};
        onceInside(call, [&] {
            for (const Request& request : requests())
                request.make(mBackend);
            ++answered;
        });
        start().get();
        EXPECT_EQ(answered, 1) << call;
    }
}

TEST_F(Threads, TheMiddlewareMayCallBackInsideACallOfTheCaller)
{
    int depth = 0;
    virtualtv::listen([&](const JValue&) {
        if (depth > 0)
            return;
        ++depth;
        for (const Request& request : requests())
            request.make(mBackend);
        --depth;
    });
    for (const Request& request : requests())
        request.make(mBackend);
    EXPECT_EQ(depth, 0);
}

// --- The end of the process

TEST_F(Threads, TheProcessMayEndInsideEachCallOfTheWorker)
{
    for (const char* call : kWorkersCalls)
        EXPECT_EQ(endOfChild([&] {
                      onceInside(call, [] { std::exit(7); });
                      start();
                      for (;;)
                          pause();
                  }),
                  "7")
            << call;
}

TEST_F(Threads, TheProcessMayEndInASignalHandlerInsideEachCallOfTheWorker)
{
#ifdef KEP_THREADS_SANITIZED
    GTEST_SKIP() << "the sanitizer delivers signals later, wherever that may be";
#endif
    for (const char* call : kWorkersCalls)
        EXPECT_EQ(endOfChild([&] {
                      std::signal(SIGUSR1, [](int) { std::exit(8); });
                      onceInside(call, [] { pthread_kill(pthread_self(), SIGUSR1); });
                      start();
                      for (;;)
                          pause();
                  }),
                  "8")
            << call;
}

TEST_F(Threads, AStepThatNeverEndsIsLeftAfterTwoSecondsWithOneLine)
{
    static std::atomic<int> leaving{0};
    static std::atomic<int> unregistered{0};
    const auto begun = steady_clock::now();
    EXPECT_EQ(endOfChild([&] {
                  // Registered before the worker's end, so run after it.
                  std::atexit([] { _exit(leaving == 1 && unregistered == 1 ? 9 : 1); });
                  static_cast<void>(kepTVAudio::getInstance());
                  admit(kLogDebug);
                  LogSetSink([](const LogMessage& message) {
                      const std::string text = message.text;
                      if (text.ends_with(
                              "Step parse_gain has not ended within 2000 ms, leaving without it"))
                          ++leaving;
                      if (text.starts_with("keptvaudio:~kepTVAudio(") &&
                          text.ends_with(") UnRegister kepTVAudio ..."))
                          ++unregistered;
                  });
                  std::atomic<bool> inside{false};
                  onceInside("gain.parseGainParams", [&] {
                      inside = true;
                      for (;;)
                          pause();
                  });
                  start();
                  while (!inside)
                      std::this_thread::yield();
                  std::exit(0);
              }),
              "9");
    const auto took = steady_clock::now() - begun;
    EXPECT_GE(took, milliseconds{1900});
    EXPECT_LT(took, milliseconds{20000}); // of a machine under load
}

// --- Forked children

TEST_F(Threads, TheRequestsOfAForkedChildDoNotHang)
{
#if defined(KEP_SANITIZED) && !defined(KEP_THREADS_SANITIZED)
    GTEST_SKIP() << "the sanitizer's own allocator may be locked for good in a forked child";
#endif
    std::atomic<bool> over{false};
    std::future<void> worker = launched([&] {
        while (!over) {
            mBackend.startXmlParsing();
        }
    });
    std::string end = "0";
    for (int i = 0; i < 60 && end == "0"; ++i)
        end = endOfChild([&] {
            for (const Request& request : requests())
                request.make(mBackend);
            _exit(0);
        });
    over = true;
    worker.get();
    EXPECT_EQ(end, "0");
}

TEST_F(Threads, AForkDuringACallThatNeverEndsGoesOn)
{
    for (const char* call : kWorkersCalls) {
        std::atomic<bool> inside{false};
        std::atomic<bool> over{false};
        onceInside(call, [&] {
            inside = true;
            while (!over)
                std::this_thread::sleep_for(milliseconds{1});
        });
        std::future<void> worker = start();
        while (!inside)
            std::this_thread::yield();
        EXPECT_EQ(endOfChild([&] {
                      for (const Request& request : requests())
                          request.make(mBackend);
                      _exit(0);
                  }),
                  "0")
            << call;
        over = true;
        worker.get();
    }
}

// --- What a step throws

TEST_F(Threads, AStepThatThrowsIsToldAndStopsNoOther)
{
    struct Row {
        const char* call;
        const char* step;
    };
    // clang-format off
    constexpr Row rows[] = {
        {"delay.setDelayInitialize",    "init_delay"},
        {"gain.parseGainParams",        "parse_gain"},
        {"amplifier.parseAmpParams",    "parse_amplifier"},
        {"subcpu_misc_Set_HPMuteOnOff", "setMuteHeadphone"},
        {"soundengine.initialize",      "init_soundEngine"},
        {"gain.setVolumeInit",          "resetGainAttributes"},
        {"amplifier.setAmpReset",       "resetAmplifierAttributes"},
    };
    // clang-format on
    for (const Row& row : rows) {
        admit(kLogInfo);
        std::vector<std::string> errors;
        int performance = 0;
        bool completed = false;
        LogSetSink([&](const LogMessage& message) {
            const std::string text = message.text;
            performance += std::string{message.id} == "PERFORMANCE_LOG" ? 1 : 0;
            completed = completed || text.find("XML parsing is completed") != std::string::npos;
            if (message.level == kLogError)
                errors.push_back(std::string{message.id} + " " + text);
        });
        onceInside(row.call, [] { throw std::runtime_error{"broken"}; });
        start().get();
        LogSetSink([](const LogMessage&) {});
        ASSERT_EQ(errors.size(), 1U) << row.call;
        EXPECT_THAT(errors[0], HasSubstr("ERROR_LOG keptvaudio:startXmlParsing("));
        EXPECT_THAT(errors[0], HasSubstr(std::string{") Exception in "} + row.step + ": broken"));
        EXPECT_EQ(performance, 12) << row.call;
        EXPECT_TRUE(completed) << row.call;
    }
}

TEST_F(Threads, TheEndOfTheProcessDoesNotWaitForAStepThatEndedItsThread)
{
    EXPECT_EQ(endOfChild([&] {
                  LogSetSink([](const LogMessage&) { _exit(1); }); // of having waited in vain
                  std::atomic<bool> inside{false};
                  onceInside("gain.parseGainParams", [&] {
                      inside = true;
                      pthread_exit(nullptr);
                  });
                  StartupWorker::instance().launch([this] { mBackend.startXmlParsing(); });
                  while (!inside)
                      std::this_thread::yield();
                  std::exit(0);
              }),
              "0");
}

// --- Guards

TEST(Guard, IsHeldByTheThreadThatLockedIt)
{
    threads::Guard guard;
    EXPECT_FALSE(guard.isHeldHere());
    guard.lock();
    EXPECT_TRUE(guard.isHeldHere());
    std::thread{[&] {
        EXPECT_FALSE(guard.isHeldHere());
        EXPECT_FALSE(guard.tryLock());
    }}.join();
    guard.unlock();
    EXPECT_FALSE(guard.isHeldHere());
    EXPECT_TRUE(guard.tryLock());
    EXPECT_TRUE(guard.isHeldHere());
    guard.unlock();
}
