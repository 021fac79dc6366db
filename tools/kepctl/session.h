// SPDX-License-Identifier: Apache-2.0
// The library, the virtual television and the trace, set up as the options say.
#pragma once

#include <functional>
#include <string>

#include "options.h"
#include "presentation.h"
#include "trace.h"

Presentation presentationOf(const Options& options);

/// Makes the virtual card of the card table that the options, or else the environment, name. What
/// is wrong with it, "" when nothing is.
[[nodiscard]] std::string chooseCard(const Options& options);

/// Sets the process up for requests: configuration, cards, log level. To be called once, before
/// libasound is used. Why the virtual cards cannot be used, "" when they can.
[[nodiscard]] std::string enterTelevision(const Options& options);

/// Starts to show what happens, and calls `announce` before each event; lives until the process
/// ends, as there are events until then.
Trace& startTrace(const Options& options, std::function<void()> announce = {});
