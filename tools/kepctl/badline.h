// SPDX-License-Identifier: Apache-2.0
// What kepctl throws at itself when a script line is no good; the player reports it with file and
// line.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "jvalue.h"

class BadLine : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// --- Checked reading of a script line's values; `what` names the value in the message.

/// A number without a fraction from `minimum` to `maximum`.
std::int64_t wholeNumber(const JValue& value, const std::string& what, std::int64_t minimum,
                         std::int64_t maximum);
std::string text(const JValue& value, const std::string& what);
bool truth(const JValue& value, const std::string& what);
std::vector<std::string> texts(const JValue& value, const std::string& what);
/// An object that holds no key but these.
const JValue& objectOf(const JValue& value, const std::string& what,
                       std::initializer_list<const char*> keys);
