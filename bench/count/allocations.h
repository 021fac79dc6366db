// SPDX-License-Identifier: Apache-2.0
// Counts what is allocated with malloc, by this program and by every library in it.
#pragma once

#include <cstdint>

/// Allocations by who asked for them.
struct Allocations {
    std::uint64_t own = 0;       // neither of the others
    std::uint64_t libasound = 0; // on behalf of libasound
    std::uint64_t card = 0;      // on behalf of the virtual card's plugin, which libasound calls
    std::int64_t bytesKept = 0;  // of all three, less what was freed
};

/// Counts only in between: looking at the stack takes long. Not under valgrind, which counts
/// something else.
void beginCountingAllocations() noexcept;
/// The allocations since then.
Allocations endCountingAllocations() noexcept;
