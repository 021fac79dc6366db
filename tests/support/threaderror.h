// SPDX-License-Identifier: Apache-2.0
// For tests of threads that cannot be made.
#pragma once

#include <atomic>

/// What the making of the next threads fails with; 0: it does not.
extern std::atomic<int> gThreadError;
