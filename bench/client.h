// SPDX-License-Identifier: Apache-2.0
// The client as the benchmarks use it: started once, on one backend, with the log at error level.
#pragma once

#include "kepclient.h"

/// Starts the client on that backend, stopping the one before.
kepClient& startClient(const char* backend);
