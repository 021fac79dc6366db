// SPDX-License-Identifier: Apache-2.0
// What a script line may hold: tables of its kinds, their keys and examples, from which lines are
// checked, explained and completed.
#pragma once

#include <cstdint>
#include <span>

#include "closest.h"
#include "jsonplaces.h"

/// The objects whose keys are known.
enum class ObjectForm {
    CallLine,
    WaitLine,
    SetLine,
    InjectLine,
    ClearLine,
    Settings,       // behind "set"
    AmplifierState, // behind "amplifierState"
    CardFault,      // behind "inject", by what it names
    MiddlewareFault,
    GpioFault,
    SubMicroFault,
};

enum class ValueKind {
    WholeNumber, // within the key's range
    LogLevel,
    Text,
    Texts,
    True,
    Arguments, // of a call
    Object,    // of the key's own form
    Levels,    // object of line names and levels
    Operation, // from here on: names that have to exist
    Stage,
    Card,
    Element, // or "*"
    Middleware,
    InputLine,
    SubMicro,
};

struct KeyRow {
    ObjectForm form; // where it stands
    const char* key;
    ValueKind kind;
    std::int64_t minimum; // of a WholeNumber
    std::int64_t maximum;
    bool required;
    const char* help;
};

/// A kind of line: the key that tells it.
struct LineKind {
    const char* key;
    ObjectForm form;
    const char* summary;
};

/// One form that a line of some kind may have, by example.
struct LineExample {
    const char* kind; // LineKind's key
    const char* line;
    const char* effect;
};

std::span<const LineKind> lineKinds();
std::span<const KeyRow> keyRows();
std::span<const LineExample> lineExamples();

/// The keys of such an object.
Names keysOf(ObjectForm form);
/// The names that a value of that kind may have; empty where it has none.
Names valuesOf(ValueKind kind);
/// "a whole number from 0 to 255", "a string": what the value of a key has to be.
std::string typeOf(const KeyRow& key);

// --- Checks; `title` names the object in messages. They throw BadLine.

/// An object, its keys, the types of its values, the names in it.
void checkMembers(const JsonNode& node, ObjectForm form, const std::string& title);
/// That no key is missing.
void requireKeys(const JsonNode& node, ObjectForm form, const std::string& title);
/// Both.
void checkObject(const JsonNode& node, ObjectForm form, const std::string& title);
