// SPDX-License-Identifier: Apache-2.0
// A call of the television's libraries: whether it answers 0, and in time.
#pragma once

#include <exception>
#include <string>

#include "deadline.h"

/// Makes the call. What is wrong with its answer, "" when it is 0 and came in time.
template <typename Call>
std::string answerFault(const std::string& who, unsigned int limitMs, Call call)
try {
    const Deadline deadline{who, limitMs};
    const int status = call();
    return status != 0 ? who + " answered " + std::to_string(status) + ", not 0" : deadline.fault();
} catch (const std::exception& thrown) {
    return who + " threw: " + thrown.what();
}
