// SPDX-License-Identifier: Apache-2.0
// Results in words, for people.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "operations.h"

/// What this result of the operation means: "done", "failed: unknown output"; "" for a volume or an
/// answer, which speaks for itself.
std::string resultWords(const Operation& operation, const JValue& result);

struct ResultCode {
    Answer answer;
    std::uint32_t code;
    const char* words;
    const char* operation; // null: any; otherwise this one only
};
std::span<const ResultCode> resultCodes();
