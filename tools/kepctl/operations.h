// SPDX-License-Identifier: Apache-2.0
// The operations of kepClient by name, with their arguments taken from JSON.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "jvalue.h"

/// What a call gave.
struct Outcome {
    JValue result;
    std::optional<bool> connected = {}; // getHeadphoneStatus only
};

/// A call whose arguments have been checked.
using Call = std::function<Outcome()>;

/// How a result tells failure from success.
enum class Answer {
    Status, // 0 failed
    Code,   // 0 done
    Value,  // tells nothing of the kind
};

struct Operation {
    const char* name;
    Answer answer;
    Call (*prepare)(const JValue& arguments);
};

/// Null for an unknown name.
const Operation* findOperation(const std::string& name);

/// Whether this result of the operation is a failure.
bool failed(const Operation& operation, const JValue& result);
