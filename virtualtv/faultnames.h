// SPDX-License-Identifier: Apache-2.0
// How an injection is written as JSON: {"KEY": NAME, "status": ...}, or for a card {"control":
// NAME, "stage": STAGE, "card": ..., "status": ...}; "times" and "delayMs" belong to any.
#pragma once

#include "faults.h"

namespace virtualtv
{

/// What is aimed at besides a card.
struct FaultTarget {
    const char* key;
    FaultPoint point;
};
inline constexpr FaultTarget kFaultTargets[] = {
    {"middleware", FaultPoint::Middleware},
    {"gpio", FaultPoint::Gpio},
    {"subcpu", FaultPoint::SubMicro},
};

/// A stage at which a card can be made to fail; the write when none is named.
struct FaultStage {
    const char* name;
    FaultPoint point;
    bool ofAnElement; // "control" has to say which
};
inline constexpr FaultStage kFaultStages[] = {
    {"open", FaultPoint::CardOpen, false},
    {"load", FaultPoint::CardLoad, false},
    {"info", FaultPoint::CardInfo, true},
    {"write", FaultPoint::CardWrite, true},
};
inline constexpr const char* kUsualStage = "write";

} // namespace virtualtv
