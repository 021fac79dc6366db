// SPDX-License-Identifier: Apache-2.0
// The client when memory runs out: the n-th allocation of a call fails, for n = 1, 2, ... until the
// call needs no more. Nothing is thrown or aborted, the answer is a documented one, and what comes
// after, with memory back, works. Requests that start a timer are left out: GLib ends the process
// when it has no memory for one.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <utility>

#include <alsa/asoundlib.h>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "journal.h"
#include "kepclient.h"
#include "televisiontest.h"

#ifdef KEP_SANITIZED
constexpr bool kOwnsMalloc = false; // the sanitizer has its own
#else
constexpr bool kOwnsMalloc = true;
#endif

namespace
{

thread_local bool gShort = false; // of this thread alone
thread_local unsigned int gLeft = 0;
thread_local bool gHasFailed = false;

/// Whether the library is answerable for who asks for memory here. libasound, for its
/// configuration, and json-c, for the copy of a key that the C library makes, follow the null
/// pointer.
[[maybe_unused]] bool isTested(const void* caller)
{
    Dl_info object{};
    return dladdr(caller, &object) == 0 ||
           (std::strstr(object.dli_fname, "/libasound") == nullptr &&
            std::strstr(object.dli_fname, "/libc.so") == nullptr &&
            std::strstr(object.dli_fname, "/ld-linux") == nullptr);
}

[[maybe_unused]] bool fails(const void* caller)
{
    if (!gShort || !isTested(caller) || --gLeft != 0)
        return false;
    gHasFailed = true;
    gShort = false;
    errno = ENOMEM;
    return true;
}

} // namespace

#ifndef KEP_SANITIZED
// In front of the C library's, for every library of the process; operator new allocates by malloc.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept
{
    return fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept
{
    return fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) noexcept
{
    return fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
}
#endif

namespace
{

constexpr unsigned int kDeadlineSeconds = 60;
constexpr unsigned int kFailed = 2;
constexpr int kLevels[] = {kLogError, kLogInfo};

/// For its lifetime, the allocation of that number fails; 0: none does.
class Shortage
{
public:
    explicit Shortage(unsigned int number)
    {
        gHasFailed = false;
        gLeft = number;
        gShort = number != 0;
    }
    ~Shortage() { gShort = false; }
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;
};

kepClient& client()
{
    return *kepClient::getInstance();
}

/// A request whose `failing`th allocation fails, with its answer as a number: a JSON answer of
/// getSettings counts as 0, the failure's `true` as 2. Arguments are made before.
struct Request {
    const char* name;
    unsigned int (*send)(unsigned int failing);
};

template <typename Operation, typename... Arguments>
unsigned int sent(unsigned int failing, Operation operation, Arguments... arguments)
{
    const Shortage shortage{failing};
    return (client().*operation)(std::move(arguments)...);
}

unsigned int asked(unsigned int failing, const std::string& category, JValue request)
{
    const Shortage shortage{failing};
    const JValue answer = client().getSettings(category, std::move(request));
    return answer.isArray() || answer.isObject() ? 0 : answer == JValue{true} ? kFailed : 99;
}

using Text = std::string;
// clang-format off
constexpr Request kRequests[] = {
    {"connectInput",          [](unsigned int n) { return sent(n, &kepClient::connectInput, Text{"ADEC0"}, Text{"MAIN"}, json(R"({"stream":"a game of a long name"})")); }},
    {"setSoundOutput",        [](unsigned int n) { return sent(n, &kepClient::setSoundOutput, Text{"tv_speaker_optical_arc"}); }},
    {"setSoundOutput, back",  [](unsigned int n) { return sent(n, &kepClient::setSoundOutput, Text{"tv_speaker"}); }},
    {"setMute",               [](unsigned int n) { return sent(n, &kepClient::setMute, Text{"ADEC0"}, Text{"MAIN"}, true); }},
    {"setOutputVolume",       [](unsigned int n) { return sent(n, &kepClient::setOutputVolume, Text{"tv_speaker"}, std::uint8_t{7}); }},
    {"setInputVolume",        [](unsigned int n) { return sent(n, &kepClient::setInputVolume, Text{"ADEC0"}, Text{"MAIN"}, std::uint8_t{7}); }},
    {"setOutputMute",         [](unsigned int n) { return sent(n, &kepClient::setOutputMute, Text{"tv_speaker_optical_arc"}, true); }},
    {"setQualityAttribute",   [](unsigned int n) { return sent(n, &kepClient::setQualityAttribute, json(
                                 R"({"requestType":"setAudioInputInfo","pipelineInfo":{"pipelineId":"a pipeline of a long name",)"
                                 R"("pipelinePurpose":["RECORDING","a purpose of a long name"]},"categoryInfo":{"codec":"ac3"}})")); }},
    {"setQualityAttribute 2", [](unsigned int n) { return sent(n, &kepClient::setQualityAttribute, json(
                                 R"({"requestType":"setVideoInputInfo","pipelineInfo":{"pipelineId":"a pipeline of a long name"},)"
                                 R"("categoryInfo":{"codec":"a codec of a long name","params":["1","2"]}})")); }},
    {"setSettings, sound",    [](unsigned int n) { return sent(n, &kepClient::setSettings, Text{"sound"}, json(R"({"soundMode":"movie"})")); }},
    {"setSettings, hardware", [](unsigned int n) { return sent(n, &kepClient::setSettings, Text{"hardwareConfig"}, json(R"({"tv.hw.countryType":"JP"})")); }},
    {"setSettings, eARC",     [](unsigned int n) { return sent(n, &kepClient::setSettings, Text{"external_arc"}, json(R"({"earcCapability":["DD"]})")); }},
    {"getSettings",           [](unsigned int n) { return asked(n, "sound", JValue::object()); }},
    {"getSettings, all",      [](unsigned int n) { return asked(n, "", JValue{}); }},
    {"getSettings, state",    [](unsigned int n) { return asked(n, "amplifierState", JValue{}); }},
    {"disconnectInput",       [](unsigned int n) { return sent(n, &kepClient::disconnectInput, Text{"ADEC0"}, Text{"MAIN"}); }},
    {"removePipelineInfo",    [](unsigned int n) { return sent(n, &kepClient::removePipelineInfo, Text{"a pipeline of a long name"}); }},
};
// clang-format on

class OutOfMemory : public TelevisionTest, public testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        if (!kOwnsMalloc)
            GTEST_SKIP() << "the sanitizer's malloc cannot be replaced";
        alarm(kDeadlineSeconds);
        LogSetSink([](const LogMessage&) {});
        virtualtv::listen({});
        configureBackend(GetParam());
        writeConfig("device-cap.json", "{}");
        openTheCardOnce();
    }

    /// Runs `act` in a child, so in a process in which nothing has been started.
    static void inChild(const std::function<void()>& act)
    {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            alarm(kDeadlineSeconds / 2);
            act();
            std::fflush(nullptr);
            _exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
        gExit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        EXPECT_THAT(gExit, testing::AnyOf(0, kNoMore));
    }

    /// Reading libasound's configuration and the card's tables takes thousands of allocations, of
    /// which none is the library's.
    static void openTheCardOnce()
    {
        snd_hctl_t* card = nullptr;
        ASSERT_EQ(snd_hctl_open(&card, "hw:0", 0), 0);
        EXPECT_EQ(snd_hctl_load(card), 0);
        EXPECT_EQ(snd_hctl_close(card), 0);
    }

    static constexpr int kNoMore = 77; // of a child: the call needed no such allocation
    static inline int gExit = 0;

    static void everyRequestIsRefused()
    {
        for (const Request& request : kRequests)
            EXPECT_EQ(request.send(0), kFailed) << request.name;
    }

    /// All starts of which one allocation fails, each in a child; `started` looks at what came of
    /// one.
    void tryStarts(const std::function<void(unsigned int status)>& started)
    {
        for (const int level : kLevels) {
            admit(level);
            unsigned int number = 0;
            do {
                ++number;
                SCOPED_TRACE("level " + std::to_string(level) + ", allocation " +
                             std::to_string(number));
                inChild([&] {
                    unsigned int status = 99;
                    {
                        const Shortage shortage{number};
                        status = client().initialize();
                    }
                    const bool hasFailed = gHasFailed;
                    started(status);
                    if (!hasFailed && !HasFailure())
                        _exit(kNoMore);
                });
            } while (gExit == 0);
            std::cout << "level " << level << ": " << number - 1 << " starts\n";
            EXPECT_GT(number, 3U);
        }
    }

    static void everyRequestWorks()
    {
        ASSERT_EQ(client().initialize(), KEP_STATUS_OK);
        EXPECT_EQ(client().setSoundOutput("tv_speaker"), 0U);
        EXPECT_EQ(client().connectInput("ADEC0", "MAIN", JValue::object()), 0U);
        EXPECT_EQ(client().setSettings("sound", json(R"({"soundMode":"movie"})")), 0U);
    }
};

class ReportOutOfMemory : public OutOfMemory
{
protected:
    static constexpr const char* kPipelineId = "a pipeline of a long name";

    static unsigned int report(unsigned int failing)
    {
        return sent(failing, &kepClient::setQualityAttribute,
                    json(R"({"requestType":"setAudioInputInfo","pipelineInfo":{"pipelineId":")" +
                         Text{kPipelineId} +
                         R"(","resource":"ADEC0"},"categoryInfo":{"codec":"ac3"}})"));
    }
};

} // namespace

TEST_P(OutOfMemory, AStartIsCompletedOrLeavesEveryRequestRefusedUntilOneIs)
{
    tryStarts([](unsigned int status) {
        if (status != KEP_STATUS_OK) {
            EXPECT_EQ(status, KEP_STATUS_FAILED);
            everyRequestIsRefused();
        }
        everyRequestWorks();
    });
}

TEST_P(OutOfMemory, AStartWithoutAConfigurationFailsAndTheNextOneWorks)
{
    const Text configured = directory();
    const Text empty = directory() / "empty";
    std::filesystem::create_directory(empty);
    setenv("KEP_CONFIG_DIR", empty.c_str(), 1);
    tryStarts([&](unsigned int status) {
        EXPECT_EQ(status, KEP_STATUS_FAILED);
        everyRequestIsRefused();
        setenv("KEP_CONFIG_DIR", configured.c_str(), 1);
        everyRequestWorks();
    });
}

TEST_P(OutOfMemory, ARequestIsAnsweredAndTheNextOneWorks)
{
    inChild([] {
        ASSERT_EQ(client().initialize(), KEP_STATUS_OK);
        for (const int level : kLevels) {
            admit(level);
            for (const Request& request : kRequests)
                request.send(0); // what is done once is done
            for (const Request& request : kRequests) {
                const unsigned int answer = request.send(0);
                bool hasFailed = true;
                for (unsigned int number = 1; hasFailed; ++number) {
                    SCOPED_TRACE(request.name + (", level " + std::to_string(level)) +
                                 ", allocation " + std::to_string(number));
                    EXPECT_THAT(request.send(number), testing::AnyOf(answer, kFailed));
                    hasFailed = gHasFailed;
                    ASSERT_EQ(request.send(0), answer);
                }
            }
        }
    });
}

// A report that fails is made again: it finds what the first one stored.
TEST_P(ReportOutOfMemory, IsStoredOnceHoweverOftenItIsMade)
{
    constexpr const char* kBefore = "Before removal Size of AudioVideoInfoMapVector: ";
    inChild([] {
        ASSERT_EQ(client().initialize(), KEP_STATUS_OK);
        admit(kLogInfo);
        static std::string size;
        LogSetSink([](const LogMessage& message) {
            if (const char* found = std::strstr(message.text, kBefore); found != nullptr)
                size = found + std::strlen(kBefore);
        });
        bool hasFailed = true;
        for (unsigned int number = 1; hasFailed; ++number) {
            SCOPED_TRACE("allocation " + std::to_string(number));
            report(number);
            hasFailed = gHasFailed;
            EXPECT_EQ(report(0), 0U);
            EXPECT_EQ(client().removePipelineInfo(kPipelineId), 0U);
            EXPECT_EQ(size, "1");
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Backends, OutOfMemory, testing::Values("TV", "ALSA"),
                         [](const auto& backend) { return std::string{backend.param}; });
INSTANTIATE_TEST_SUITE_P(Backends, ReportOutOfMemory, testing::Values("TV"),
                         [](const auto& backend) { return std::string{backend.param}; });
