// SPDX-License-Identifier: Apache-2.0
// Whether the headphone may be muted or unmuted: the three reasons to stay muted and the timer in,
// the decision out. Knows no television, no GLib and no log; the timer itself, and how long it
// runs, are in keptvaudio.headphone.cpp.
#pragma once

#include <cstdint>

/// What the timer after power-on and resume says to a request.
enum class TimerAnswer : std::uint8_t {
    Passes,
    HeldBack,    // it is running: the noise is not over
    NeverRanOut, // it has not run since power-on: the noise is still to come
};

/// All that decides, as it stands at one moment.
struct HeadphoneMute {
    // The reasons to stay muted
    bool byCaller = false; // or by a change of output, or by the cold start
    bool byDetection = false;
    bool byPowerState = false;
    // The timer
    bool timerIsPending = false;
    bool timerHasRun = false; // once since power-on is enough

    /// Mutes always pass; unmutes once the timer has run and none is pending.
    [[nodiscard]] TimerAnswer askTimer(bool mute) const;
    /// Mutes pass while there is a reason, unmutes when none is left.
    [[nodiscard]] bool reasonsAllow(bool mute) const;
};
