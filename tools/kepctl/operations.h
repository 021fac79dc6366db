// SPDX-License-Identifier: Apache-2.0
// The operations of kepClient: one table of names and arguments, from which calls are checked,
// made, listed and completed.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "jsonplaces.h"
#include "jvalue.h"

/// What a call gave.
struct Outcome {
    JValue result;
    std::optional<bool> connected = {}; // getHeadphoneStatus only
};

/// How a result tells failure from success.
enum class Answer {
    Status, // 0 failed
    Code,   // 0 done
    Value,  // tells nothing of the kind
};

/// What an argument means; its JSON type and range follow from it.
enum class ArgumentKind {
    SoundOutput,
    Source,
    Sink,
    Switch,
    Volume,
    PipelineId,
    Category,
    Payload
};

struct Argument {
    const char* name = nullptr;
    ArgumentKind kind = ArgumentKind::Payload;
};

struct Operation {
    const char* name;
    Answer answer;
    std::array<Argument, 3> arguments;
    std::size_t argumentCount;
    Outcome (*call)(std::span<const JValue> arguments); // they have been checked
    const char* summary;

    [[nodiscard]] std::span<const Argument> takes() const
    {
        return {arguments.data(), argumentCount};
    }
};

std::span<const Operation> operationRows();
/// Null for an unknown name.
const Operation* findOperation(std::string_view name);

/// "string", "true or false", "whole number from 0 to 255", "any JSON value".
const char* typeOf(ArgumentKind kind);

/// Checks the "args" of a call, null when it has none; throws BadLine. `place` is that of the call.
void checkArguments(const Operation& operation, const JsonNode* arguments, std::size_t place);

/// Whether this result of the operation is a failure.
bool failed(const Operation& operation, const JValue& result);
