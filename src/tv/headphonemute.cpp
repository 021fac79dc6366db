// SPDX-License-Identifier: Apache-2.0
#include "headphonemute.h"

TimerAnswer HeadphoneMute::askTimer(bool mute) const
{
    if (mute)
        return TimerAnswer::Passes;
    if (timerIsPending)
        return TimerAnswer::HeldBack;
    return timerHasRun ? TimerAnswer::Passes : TimerAnswer::NeverRanOut;
}

bool HeadphoneMute::reasonsAllow(bool mute) const
{
    return mute == (byCaller || byDetection || byPowerState);
}
