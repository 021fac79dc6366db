// SPDX-License-Identifier: Apache-2.0
// Counts what is allocated with new, by this program and by every library in it.
#pragma once

#include <cstdint>

/// Allocations since the program started.
std::uint64_t allocations() noexcept;
