// SPDX-License-Identifier: Apache-2.0
// The client as the benchmarks use it: started once, on one backend, with the log at error level.
#pragma once

#include "kepclient.h"

/// The backend's configuration, in a folder that the library is told of.
void configure(const char* backend);
/// Starts the client on that backend, stopping the one before.
kepClient& startClient(const char* backend);
