// SPDX-License-Identifier: Apache-2.0
// The start-up worker's thread by itself. How it ends is looked at in children: each one launches
// work and ends, and its exit status says what the work had seen by then.
#include "startupworker.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "threaderror.h"

namespace
{

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr unsigned int kDeadlineSeconds = 60; // a child that takes longer hangs
constexpr milliseconds kForever = std::chrono::hours{1};

std::atomic<bool> gOutOfMemory{false}; // when the next threads are made

} // namespace

extern "C" {
void __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    void* thread, void* state, void (*depend)());

void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    void* thread, void* state, void (*depend)())
{
    if (gOutOfMemory)
        throw std::bad_alloc{};
    __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
        thread, state, depend);
}
}

namespace
{

/// A mark that one thread sets and another waits for.
class Event
{
public:
    void set()
    {
        const std::lock_guard lock{mGuard};
        mIsSet = true;
        mChanged.notify_all();
    }
    [[nodiscard]] bool await()
    {
        std::unique_lock lock{mGuard};
        return mChanged.wait_until(
            lock, std::chrono::system_clock::now() + std::chrono::seconds{kDeadlineSeconds},
            [this] { return mIsSet; });
    }

private:
    std::mutex mGuard;
    std::condition_variable mChanged;
    bool mIsSet = false;
};

StartupWorker& worker()
{
    return StartupWorker::instance();
}

/// Waits for the end of the process to begin, as a step does that is running just then.
void awaitEnding()
{
    while (!worker().stopping())
        std::this_thread::sleep_for(milliseconds{1});
}

// What a child's work has done, and how many of these marks it must have made by the time when
// everything has been destroyed.
std::atomic<int> gMarks{0};
std::atomic<int> gMarksAtEnd{-1};

/// Ends a child at the very last: with 0 when all marks had been made, else with 3.
void endOfAll()
{
    _exit(gMarks == gMarksAtEnd ? 0 : 3);
}

/// The status with which a child ends that runs `body` and then calls exit. "signal N" in place of
/// a number when it was killed, by its own alarm at the latest.
std::string endOf(const std::function<void()>& body)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(kDeadlineSeconds);
        std::atexit(&endOfAll); // before the first launch, hence run after all of its destruction
        body();
        std::exit(4); // changed by endOfAll
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? std::to_string(WEXITSTATUS(status))
                             : "signal " + std::to_string(WTERMSIG(status));
}

} // namespace

// --- A launch

TEST(StartupWorkerLaunch, RunsTheWorkOnAThreadOfItsOwn)
{
    Event done;
    std::thread::id thread;
    worker().launch([&] {
        thread = std::this_thread::get_id();
        done.set();
    });
    ASSERT_TRUE(done.await());
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(StartupWorkerLaunch, ReturnsWhileTheWorkIsRunning)
{
    Event returned;
    Event done;
    worker().launch([&] {
        if (returned.await())
            done.set();
    });
    returned.set();
    EXPECT_TRUE(done.await());
}

TEST(StartupWorkerLaunch, MayComeWhileAnEarlierOneIsRunning)
{
    Event second;
    Event first;
    worker().launch([&] {
        if (second.await())
            first.set();
    });
    worker().launch([&] { second.set(); });
    EXPECT_TRUE(first.await());
}

TEST(StartupWorkerLaunch, ThatGetsNoThreadThrowsWhatTheSystemSaid)
{
    bool ran = false;
    gThreadError = EAGAIN;
    try {
        worker().launch([&] { ran = true; });
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), EAGAIN);
    }
    gThreadError = 0;
    EXPECT_FALSE(ran);
    Event done;
    worker().launch([&] { done.set(); });
    EXPECT_TRUE(done.await());
}

TEST(StartupWorkerLaunch, LetsAnExceptionEndTheWorkOnly)
{
    for (const bool known : {true, false}) {
        Event begun;
        worker().launch([&, known] {
            begun.set();
            if (known)
                throw std::runtime_error{"lost"};
            throw 5;
        });
        ASSERT_TRUE(begun.await());
        Event done;
        worker().launch([&] { done.set(); });
        EXPECT_TRUE(done.await());
    }
}

// --- A pause

TEST(StartupWorkerSleep, LastsAsLongAsAskedFor)
{
    for (const milliseconds duration : {milliseconds{0}, milliseconds{60}}) {
        Event done;
        bool slept = false;
        bool stopping = true;
        steady_clock::duration took{};
        worker().launch([&] {
            const auto begun = steady_clock::now();
            slept = worker().sleep(duration);
            took = steady_clock::now() - begun;
            stopping = worker().stopping();
            done.set();
        });
        ASSERT_TRUE(done.await());
        EXPECT_TRUE(slept);
        EXPECT_FALSE(stopping);
        EXPECT_GE(took, duration);
    }
}

TEST(StartupWorkerSleep, GoesOnWhenAnotherWorkEnds)
{
    Event done;
    steady_clock::duration took{};
    Event asleep;
    worker().launch([&] {
        const auto begun = steady_clock::now();
        asleep.set();
        static_cast<void>(worker().sleep(milliseconds{150}));
        took = steady_clock::now() - begun;
        done.set();
    });
    ASSERT_TRUE(asleep.await());
    for (int i = 0; i < 5; ++i)
        worker().launch([] {});
    ASSERT_TRUE(done.await());
    EXPECT_GE(took, milliseconds{150});
}

// --- The end of the process

TEST(StartupWorkerEnd, WakesASleepAndSaysSo)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 2;
                  worker().launch([] {
                      ++gMarks;
                      if (!worker().sleep(kForever) && worker().stopping())
                          ++gMarks;
                  });
              }),
              "0");
}

TEST(StartupWorkerEnd, IsSeenByASleepThatComesLater)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 1;
                  worker().launch([] {
                      awaitEnding();
                      if (!worker().sleep(kForever))
                          ++gMarks;
                  });
              }),
              "0");
}

TEST(StartupWorkerEnd, WaitsForTheStepThatIsRunning)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 1;
                  worker().launch([] {
                      awaitEnding();
                      std::this_thread::sleep_for(
                          milliseconds{50}); // what the step still has to do
                      ++gMarks;
                  });
              }),
              "0");
}

TEST(StartupWorkerEnd, WaitsForAllThatRun)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 4;
                  for (int i = 0; i < 4; ++i)
                      worker().launch([i] {
                          awaitEnding();
                          std::this_thread::sleep_for(milliseconds{20 * i});
                          ++gMarks;
                      });
              }),
              "0");
}

TEST(StartupWorkerEnd, DoesNotWaitForWorkThatHasEnded)
{
    const auto afterWork = [](const std::function<void()>& work) {
        return endOf([&] {
            gMarksAtEnd = 1;
            worker().launch([&] {
                ++gMarks;
                work();
            });
            while (gMarks == 0)
                std::this_thread::yield();
        });
    };
    EXPECT_EQ(afterWork([] {}), "0");
    EXPECT_EQ(afterWork([] { throw std::runtime_error{"lost"}; }), "0");
    EXPECT_EQ(afterWork([] { throw 5; }), "0");
}

TEST(StartupWorkerEnd, DoesNotWaitForAThreadThatCouldNotBeMade)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 1;
                  gThreadError = EAGAIN;
                  try {
                      worker().launch([] {});
                  } catch (const std::system_error&) {
                      ++gMarks;
                  }
              }),
              "0");
}

TEST(StartupWorkerEnd, DoesNotWaitForAThreadThatThereWasNoMemoryFor)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 1;
                  alarm(5); // there is nothing to wait for
                  const std::function<void()> work = [] {};
                  static_cast<void>(worker());
                  gOutOfMemory = true;
                  try {
                      worker().launch(work);
                  } catch (const std::bad_alloc&) {
                      ++gMarks;
                  }
                  gOutOfMemory = false;
              }),
              "0");
}

TEST(StartupWorkerEnd, MayComeFromTheWorkItself)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 1;
                  alarm(5); // waiting for itself, it would wait for ever
                  worker().launch([] {
                      ++gMarks;
                      std::exit(4); // changed by endOfAll
                  });
                  for (;;)
                      pause();
              }),
              "0");
}

TEST(StartupWorkerEnd, ComesAtOnceForAProcessThatOnlyAskedForIt)
{
    EXPECT_EQ(endOf([] {
                  gMarksAtEnd = 0;
                  EXPECT_FALSE(worker().stopping());
              }),
              "0");
}

TEST(StartupWorkerEnd, OfAForkedChildDoesNotWaitForItsParentsThreads)
{
    Event asleep;
    Event over;
    Event done;
    worker().launch([&] {
        asleep.set();
        EXPECT_TRUE(over.await());
        done.set();
    });
    ASSERT_TRUE(asleep.await());
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(endOf([] { gMarksAtEnd = 0; }), "0");
    over.set();
    EXPECT_TRUE(done.await());
}
