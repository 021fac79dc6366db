// SPDX-License-Identifier: Apache-2.0
// Faults planted in the virtual television: which of them an access meets, and for how long.
#include "faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <latch>
#include <optional>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using virtualtv::clearInjections;
using virtualtv::FaultPoint;
using virtualtv::inject;
using virtualtv::injectedStatus;

namespace
{

constexpr FaultPoint kPoints[] = {
    FaultPoint::CardOpen,   FaultPoint::CardLoad, FaultPoint::CardInfo, FaultPoint::CardWrite,
    FaultPoint::Middleware, FaultPoint::Gpio,     FaultPoint::SubMicro};

/// What so many writes of the element meet one after the other.
std::vector<int> statusesOfWrites(int count, const char* element = "Softmaster")
{
    std::vector<int> statuses;
    for (int i = 0; i < count; ++i)
        statuses.push_back(injectedStatus(FaultPoint::CardWrite, element, "default"));
    return statuses;
}

void injectWrite(int status, std::optional<unsigned> times = {}, const char* element = "Softmaster")
{
    inject({FaultPoint::CardWrite, element, "", status, times});
}

} // namespace

TEST(Faults, NothingFailsAtFirst)
{
    for (const FaultPoint point : kPoints)
        EXPECT_EQ(injectedStatus(point, "anything"), 0);
}

TEST(Faults, AnInjectionWithoutTimesHoldsUntilItIsCleared)
{
    injectWrite(-5);
    EXPECT_THAT(statusesOfWrites(1000), testing::Each(-5));
    clearInjections();
    EXPECT_THAT(statusesOfWrites(3), ElementsAre(0, 0, 0));
}

TEST(Faults, AnInjectionWithTimesHoldsForThatManyAccesses)
{
    injectWrite(-5, 2);
    EXPECT_THAT(statusesOfWrites(4), ElementsAre(-5, -5, 0, 0));
}

TEST(Faults, ZeroTimesNeverHolds)
{
    injectWrite(-5, 0);
    EXPECT_THAT(statusesOfWrites(2), ElementsAre(0, 0));
}

TEST(Faults, OfSeveralTheOldestIsUsed)
{
    injectWrite(-5);
    injectWrite(-16);
    EXPECT_THAT(statusesOfWrites(2), ElementsAre(-5, -5));
}

TEST(Faults, WhenTheOldestIsUsedUpTheNextIsUsed)
{
    injectWrite(-5, 1);
    injectWrite(-16, 2);
    injectWrite(-19);
    EXPECT_THAT(statusesOfWrites(5), ElementsAre(-5, -16, -16, -19, -19));
}

TEST(Faults, ANewerOneIsNotUsedUpWhileAnOlderHolds)
{
    injectWrite(-5, 3);
    injectWrite(-16, 1);
    EXPECT_THAT(statusesOfWrites(5), ElementsAre(-5, -5, -5, -16, 0));
}

TEST(Faults, StatusZeroLetsAccessesThroughBeforeALaterOneFails)
{
    injectWrite(0, 3);
    injectWrite(-5);
    EXPECT_THAT(statusesOfWrites(5), ElementsAre(0, 0, 0, -5, -5));
}

TEST(Faults, StatusZeroWithoutTimesKeepsLaterOnesAway)
{
    injectWrite(0);
    injectWrite(-5);
    EXPECT_THAT(statusesOfWrites(3), ElementsAre(0, 0, 0));
}

TEST(Faults, OnlyTheNamedOneFails)
{
    injectWrite(-5);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Softmaster0", "default"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Softmaste", "default"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "softmaster", "default"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Softmaster", "default"), -5);
}

TEST(Faults, AnAccessThatDoesNotMatchUsesNothingUp)
{
    injectWrite(-5, 1);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Softmaster0", "default"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardInfo, "Softmaster", "default"), 0);
    EXPECT_THAT(statusesOfWrites(2), ElementsAre(-5, 0));
}

TEST(Faults, AStarIsAnyName)
{
    injectWrite(-5, {}, "*");
    for (const char* element : {"Softmaster", "Sndout Connect", "", "*"})
        EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, element, "default"), -5) << element;
}

TEST(Faults, AllNamesOfAStarShareItsTimes)
{
    injectWrite(-5, 2, "*");
    EXPECT_THAT(statusesOfWrites(1, "Softmaster"), ElementsAre(-5));
    EXPECT_THAT(statusesOfWrites(2, "Softmaster0"), ElementsAre(-5, 0));
}

TEST(Faults, AnOlderStarGoesBeforeANewerName)
{
    injectWrite(-5, 1, "*");
    injectWrite(-16);
    EXPECT_THAT(statusesOfWrites(2), ElementsAre(-5, -16));
}

TEST(Faults, OnlyTheNamedCardFails)
{
    inject({FaultPoint::CardWrite, "*", "hw:0", -5, {}});
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open", "default"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open", "hw"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open", "hw:0"), -5);
}

TEST(Faults, WithoutACardEveryCardFails)
{
    injectWrite(-5, {}, "Sndout Open");
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open", "default"), -5);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open", "hw:0"), -5);
    EXPECT_EQ(injectedStatus(FaultPoint::CardWrite, "Sndout Open"), -5);
}

TEST(Faults, OnlyThePointThatWasMeantFails)
{
    for (const FaultPoint planted : kPoints) {
        clearInjections();
        inject({planted, "*", "", 7, {}});
        for (const FaultPoint point : kPoints)
            EXPECT_EQ(injectedStatus(point, "anything"), point == planted ? 7 : 0)
                << static_cast<int>(planted) << " / " << static_cast<int>(point);
    }
}

TEST(Faults, AMiddlewareStatusIsGivenAsItIs)
{
    inject({FaultPoint::Middleware, "gain.setInputVolume", "", 1, 1});
    EXPECT_EQ(injectedStatus(FaultPoint::Middleware, "gain.setOutputVolume"), 0);
    EXPECT_EQ(injectedStatus(FaultPoint::Middleware, "gain.setInputVolume"), 1);
    EXPECT_EQ(injectedStatus(FaultPoint::Middleware, "gain.setInputVolume"), 0);
}

TEST(Faults, ClearForgetsAllOfThem)
{
    for (const FaultPoint point : kPoints)
        inject({point, "*", "", -5, {}});
    clearInjections();
    for (const FaultPoint point : kPoints)
        EXPECT_EQ(injectedStatus(point, "anything"), 0);
}

TEST(Faults, CanBePlantedAgainAfterAClear)
{
    injectWrite(-5);
    clearInjections();
    injectWrite(-16);
    EXPECT_THAT(statusesOfWrites(1), ElementsAre(-16));
}

TEST(Faults, ThreadsTogetherMeetAnInjectionExactlyAsOftenAsItHolds)
{
    constexpr int kThreads = 4;
    constexpr int kAccesses = 300000;
    constexpr unsigned int kTimes = 600000;
    injectWrite(-5, kTimes);
    injectWrite(-16, kTimes / 2);
    std::array<std::atomic<unsigned int>, 20> met{};
    std::latch start{kThreads};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&met, &start] {
            start.arrive_and_wait();
            for (const int status : statusesOfWrites(kAccesses))
                ++met.at(static_cast<std::size_t>(-status));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(met[5], kTimes);
    EXPECT_EQ(met[16], kTimes / 2);
    EXPECT_EQ(met[0], kThreads * kAccesses - kTimes - kTimes / 2);
}

TEST(Faults, MayBePlantedAndClearedWhileOthersMeetThem)
{
    std::atomic<bool> done{false};
    std::atomic<int> strange{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            while (!done)
                for (const int status : statusesOfWrites(10))
                    strange += status != 0 && status != -5 ? 1 : 0;
        });
    for (int i = 0; i < 500; ++i) {
        injectWrite(-5, 3, "*");
        injectWrite(-5);
        clearInjections();
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(strange, 0);
    EXPECT_THAT(statusesOfWrites(3), ElementsAre(0, 0, 0));
}

TEST(Faults, PlantedByOneThreadAreMetByAnother)
{
    injectWrite(-5);
    std::vector<int> statuses;
    std::thread{[&statuses] { statuses = statusesOfWrites(1); }}.join();
    EXPECT_THAT(statuses, ElementsAre(-5));
}

TEST(Faults, AnAnswerComesAsMuchLaterAsItsInjectionSays)
{
    for (const FaultPoint point : kPoints) {
        clearInjections();
        inject({point, "*", "", 7, 1, /*delayMs=*/30});
        const auto asked = std::chrono::steady_clock::now();
        EXPECT_EQ(injectedStatus(point, "anything"), 7);
        EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds{30});
    }
}

TEST(Faults, ALateAnswerKeepsNoOtherAccessWaiting)
{
    constexpr std::chrono::milliseconds kDelay{500};
    inject({FaultPoint::Middleware, "gain.setInputVolume", "", 0, 1, kDelay.count()});
    std::atomic<bool> answered{false};
    std::thread late{[&answered] {
        injectedStatus(FaultPoint::Middleware, "gain.setInputVolume");
        answered = true;
    }};
    std::chrono::steady_clock::duration longest{};
    while (!answered) {
        const auto asked = std::chrono::steady_clock::now();
        EXPECT_EQ(injectedStatus(FaultPoint::Middleware, "gain.setOutputVolume"), 0);
        longest = std::max(longest, std::chrono::steady_clock::now() - asked);
    }
    late.join();
    EXPECT_LT(longest, kDelay / 2);
}

// --- Looking without meeting one

TEST(Faults, ThoseInForceAreListedFromTheOldest)
{
    injectWrite(-5, 2);
    injectWrite(-16, 1, "Master Playback Volume");
    injectWrite(-19);
    EXPECT_EQ(statusesOfWrites(1), std::vector{-5});
    EXPECT_EQ(statusesOfWrites(1, "Master Playback Volume"), std::vector{-16});
    const std::vector<virtualtv::Injection> inForce = virtualtv::injectionsInForce();
    ASSERT_EQ(inForce.size(), 2U);
    EXPECT_EQ(inForce[0].status, -5);
    EXPECT_EQ(inForce[0].times, 1U);
    EXPECT_EQ(inForce[1].status, -19);
    EXPECT_EQ(inForce[1].times, std::nullopt);
}

TEST(Faults, AThreadCanLookWithoutMeetingOne)
{
    injectWrite(-5, 1);
    {
        const virtualtv::WithoutInjections looking;
        EXPECT_THAT(statusesOfWrites(2), ElementsAre(0, 0));
        std::thread{[] { EXPECT_THAT(statusesOfWrites(2), ElementsAre(-5, 0)); }}.join();
    }
    injectWrite(-16, 1);
    EXPECT_THAT(statusesOfWrites(2), ElementsAre(-16, 0));
}
