// SPDX-License-Identifier: Apache-2.0
// How a run is shown, as its options say.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "trace.h"

struct Presentation {
    std::string format = "text"; // or jsonl
    std::string colour = "auto"; // or never, always
    std::string only;            // the events to show; empty: all
    bool explain = false;
    bool time = false;
    bool noClocks = false;
};

/// Why its texts are unusable, "" when they are not.
std::string faultOf(const Presentation& presentation);

/// The writer of a usable one; `announce` is called before it writes.
std::unique_ptr<EventWriter> makeWriter(const Presentation& presentation,
                                        std::function<void()> announce = {});
