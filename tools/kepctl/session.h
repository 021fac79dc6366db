// SPDX-License-Identifier: Apache-2.0
// The library, the virtual television and the trace, set up as the options say.
#pragma once

#include "options.h"
#include "presentation.h"
#include "trace.h"

Presentation presentationOf(const Options& options);

/// Sets the process up for requests: configuration, cards, log level. To be called once, before
/// libasound is used.
void enterTelevision(const Options& options);

/// Starts to show what happens; lives until the process ends, as there are events until then.
Trace& startTrace(const Options& options);
