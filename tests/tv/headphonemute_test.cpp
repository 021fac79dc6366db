// SPDX-License-Identifier: Apache-2.0
// The decision about the headphone's mute: three reasons, and a timer.
#include "headphonemute.h"

#include <ostream>

#include <gtest/gtest.h>

// In the same namespace as the type, where the test library looks for it.
static void PrintTo(TimerAnswer answer, std::ostream* out)
{
    *out << (answer == TimerAnswer::Passes     ? "passes"
             : answer == TimerAnswer::HeldBack ? "held back: the timer is running"
                                               : "held back: the timer never ran out");
}

namespace
{

struct ReasonsRow {
    HeadphoneMute reasons;
    bool mutePasses;
    bool unmutePasses;
};

// clang-format off
constexpr ReasonsRow kReasons[] = {
    // caller              detection             power state                  mute   unmute
    {{.byCaller = false, .byDetection = false, .byPowerState = false},  false, true},
    {{.byCaller = false, .byDetection = false, .byPowerState = true},   true,  false},
    {{.byCaller = false, .byDetection = true,  .byPowerState = false},  true,  false},
    {{.byCaller = false, .byDetection = true,  .byPowerState = true},   true,  false},
    {{.byCaller = true,  .byDetection = false, .byPowerState = false},  true,  false},
    {{.byCaller = true,  .byDetection = false, .byPowerState = true},   true,  false},
    {{.byCaller = true,  .byDetection = true,  .byPowerState = false},  true,  false},
    {{.byCaller = true,  .byDetection = true,  .byPowerState = true},   true,  false},
};
struct TimerRow {
    bool isPending;
    bool hasRun;
    TimerAnswer unmute;
};
constexpr TimerRow kTimers[] = {
    // pending has run  an unmute
    {  false,  false,   TimerAnswer::NeverRanOut},
    {  true,   false,   TimerAnswer::HeldBack},
    {  true,   true,    TimerAnswer::HeldBack},
    {  false,  true,    TimerAnswer::Passes},
};
// clang-format on

HeadphoneMute situation(const HeadphoneMute& reasons, const TimerRow& timer)
{
    HeadphoneMute all = reasons;
    all.timerIsPending = timer.isPending;
    all.timerHasRun = timer.hasRun;
    return all;
}

/// Calls check(row of reasons, row of the timer) for every pair.
template <typename Check>
void forEverySituation(Check check)
{
    for (const ReasonsRow& reasons : kReasons) {
        for (const TimerRow& timer : kTimers) {
            SCOPED_TRACE(testing::Message()
                         << "reasons " << reasons.reasons.byCaller << reasons.reasons.byDetection
                         << reasons.reasons.byPowerState << ", timer pending " << timer.isPending
                         << ", has run " << timer.hasRun);
            check(reasons, timer);
        }
    }
}

TEST(HeadphoneMute, IsAllowedWhileThereIsAReason)
{
    forEverySituation([](const ReasonsRow& row, const TimerRow& timer) {
        EXPECT_EQ(situation(row.reasons, timer).reasonsAllow(true), row.mutePasses);
    });
}

TEST(HeadphoneMute, IsEndedOnlyWhenNoReasonIsLeft)
{
    forEverySituation([](const ReasonsRow& row, const TimerRow& timer) {
        EXPECT_EQ(situation(row.reasons, timer).reasonsAllow(false), row.unmutePasses);
    });
}

TEST(HeadphoneMute, IsNeverHeldBackByTheTimer)
{
    forEverySituation([](const ReasonsRow& row, const TimerRow& timer) {
        EXPECT_EQ(situation(row.reasons, timer).askTimer(true), TimerAnswer::Passes);
    });
}

TEST(HeadphoneMute, IsNotEndedUntilATimerHasRunOut)
{
    forEverySituation([](const ReasonsRow& row, const TimerRow& timer) {
        EXPECT_EQ(situation(row.reasons, timer).askTimer(false), timer.unmute);
    });
}

TEST(HeadphoneMute, HasNoReasonAndNoTimerAfterPowerOn)
{
    const HeadphoneMute atFirst;
    EXPECT_TRUE(atFirst.reasonsAllow(false));
    EXPECT_FALSE(atFirst.reasonsAllow(true));
    EXPECT_EQ(atFirst.askTimer(false), TimerAnswer::NeverRanOut);
}

} // namespace
