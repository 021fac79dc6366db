// SPDX-License-Identifier: Apache-2.0
// The end of a process whose start-up worker still lives: whenever it comes and however, it is
// clean, and takes no longer than the step that is running.
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "televisiontest.h"

namespace
{

using testing::Ge;
using testing::IsEmpty;

using Arguments = std::vector<std::string>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kExits = 100; // each one takes ten times as long
#else
constexpr int kExits = 500;
#endif
constexpr std::size_t kAtATime = 4;

class ProcessExit : public TelevisionTest
{
protected:
    ProcessExit() { configureBackend("TV"); }

    ~ProcessExit() override
    {
        EXPECT_THAT(said("errors"), IsEmpty()); // nobody has anything to report
    }

    /// Runs the programs, some of them at a time; all have to end with 0.
    void expectCleanEnds(const std::vector<Arguments>& runs) const
    {
        for (std::size_t begin = 0; begin < runs.size(); begin += kAtATime) {
            const std::size_t end = std::min(begin + kAtATime, runs.size());
            std::vector<pid_t> children;
            for (std::size_t i = begin; i < end; ++i)
                children.push_back(startProgram(runs[i]));
            for (std::size_t i = begin; i < end; ++i)
                EXPECT_EQ(endOf(children[i - begin]), "0") << testing::PrintToString(runs[i]);
        }
    }

    /// What the programs have written so far, to standard output or, as "errors", to standard
    /// error.
    [[nodiscard]] std::string said(const std::string& stream) const
    {
        std::ifstream file{directory() / stream};
        return {std::istreambuf_iterator<char>{file}, {}};
    }

private:
    [[nodiscard]] pid_t startProgram(Arguments arguments) const
    {
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND;
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (directory() / "output").c_str(),
                                         kFlags, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (directory() / "errors").c_str(),
                                         kFlags, 0600);
        pid_t child = -1;
        EXPECT_EQ(posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        return child;
    }

    /// Programs that hang are ended by their own alarm: "signal 14".
    static std::string endOf(pid_t child)
    {
        int status = 0;
        if (child == -1 || waitpid(child, &status, 0) != child)
            return "not run";
        return WIFEXITED(status) ? std::to_string(WEXITSTATUS(status))
                                 : "signal " + std::to_string(WTERMSIG(status));
    }
};

Arguments exiting(const std::string& how, const std::string& when)
{
    return {EXITING_PROGRAM, how, when};
}

/// Calls and driver writes of the worker, one of each step at least.
constexpr const char* kInsideSteps[] = {
    "delay.registerQualityParams", // behind the parameter store's guard
    "delay.setDelayInitialize",
    "gain.parseGainParams",
    "amplifier.parseAmpParams",
    "subcpu_misc_Set_HPMuteOnOff",
    "Mute Output",
    "Sndout Spdif CategoryCode",
    "soundengine.registerQualityParams",
    "soundengine.initialize",
    "gain.setVolumeInit",
    "amplifier.setAmpReset",
};

} // namespace

TEST_F(ProcessExit, AtAnyMomentOfTheWorkersLifeIsClean)
{
    expectCleanEnds({exiting("return", "life")});
    const long life = std::atol(said("output").c_str());
    ASSERT_THAT(life, Ge(2000)); // the pause alone
    constexpr const char* kWays[] = {"return", "exit", "thread"};
    std::vector<Arguments> runs;
    for (int i = 0; i < kExits; ++i) {
        // The load of the machine stretches the lives, so the moments go beyond the one measured.
        const long moment = life * 3 * i / (2 * kExits);
        runs.push_back({EXITING_PROGRAM, kWays[i % 3], "after", std::to_string(moment)});
    }
    expectCleanEnds(runs);
}

TEST_F(ProcessExit, InTheMiddleOfAStepWaitsForItAndBeginsNoOther)
{
    std::vector<Arguments> runs;
    for (const char* inside : kInsideSteps)
        for (const char* how : {"return", "exit", "thread"})
            runs.push_back(exiting(how, inside));
    expectCleanEnds(runs);
}

TEST_F(ProcessExit, DoesNotWaitForTheWorkersPause)
{
    expectCleanEnds({exiting("return", "asleep"), exiting("exit", "asleep"),
                     exiting("thread", "asleep"), exiting("child", "asleep")});
}

TEST_F(ProcessExit, ThatDestroysNothingWaitsForNothing)
{
    std::vector<Arguments> runs;
    for (const char* how : {"quick", "at-once"}) {
        runs.push_back(exiting(how, "asleep"));
        for (const char* inside : kInsideSteps)
            runs.push_back(exiting(how, inside)); // the step would go on until the process ends
        for (int i = 0; i < kExits / 20; ++i)
            runs.push_back({EXITING_PROGRAM, how, "after", std::to_string(i * 500)});
    }
    expectCleanEnds(runs);
}

TEST_F(ProcessExit, OfAForkedChildDoesNotWaitForItsParentsWorker)
{
    std::vector<Arguments> runs;
    for (const char* inside : kInsideSteps)
        runs.push_back(exiting("child", inside));
    expectCleanEnds(runs);
}

TEST_F(ProcessExit, OfOneThatHasUnloadedTheLibraryIsClean)
{
    if (std::string{KEP_LIBRARY}.ends_with(".a"))
        GTEST_SKIP() << "what is linked in is not unloaded";
    std::vector<Arguments> runs;
    for (const char* moment : {"life", "step", "again", "at-once", "unused"})
        for (int i = 0; i < 2; ++i)
            runs.push_back({LOADING_PROGRAM, KEP_LIBRARY, moment});
    expectCleanEnds(runs);
}
