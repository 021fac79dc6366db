// SPDX-License-Identifier: Apache-2.0
// One line of a request script: {"call"}, {"wait"}, {"set"}, {"inject"} or {"clear"}.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jvalue.h"
#include "operations.h"

/// A checked line, ready to be run.
struct ScriptLine {
    std::vector<std::pair<std::string, std::string>> members; // of the line itself: key, JSON text
    const Operation* operation = nullptr;                     // of a call
    std::vector<JValue> arguments;                            // of a call
    std::function<void()> step;                               // of every other line

    /// Does what the line says; an outcome for a call only.
    [[nodiscard]] std::optional<Outcome> run() const;
};

/// Checks a line and prepares what it asks for; throws BadLine, with nothing done, when it is no
/// good. `origin` says where it stands.
ScriptLine parseScriptLine(const std::string& line, const std::string& origin = "");
