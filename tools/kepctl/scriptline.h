// SPDX-License-Identifier: Apache-2.0
// One line of a request script: {"call"}, {"wait"}, {"set"}, {"inject"} or {"clear"}.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "jvalue.h"
#include "operations.h"

/// A checked line, ready to be run.
struct ScriptLine {
    JValue request;                              // the line itself
    const Operation* operation = nullptr;        // of a call
    std::function<std::optional<Outcome>()> run; // an outcome for a call only
};

/// Checks a line and prepares what it asks for; throws BadLine, with nothing done, when it is no
/// good. `origin` says where it stands.
ScriptLine parseScriptLine(const std::string& line, const std::string& origin = "");
