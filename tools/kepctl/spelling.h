// SPDX-License-Identifier: Apache-2.0
// What a request to the television backend names that there is not, and what was most likely meant.
#pragma once

#include <span>

#include "closest.h"
#include "operations.h"

/// One sentence each for unknown outputs, sources, sinks, categories, keys and values, and for a
/// volume or mute of an output that has none.
Names misnamed(const Operation& operation, std::span<const JValue> arguments);
