// SPDX-License-Identifier: Apache-2.0
// What the integers of a driver write stand for.
#pragma once

#include <string>

#include "jvalue.h"

/// The write in words, such as "Sndout Connect: speaker, mixer block, port 5"; "" for an element
/// that the television's driver does not have.
std::string explained(const std::string& element, const JValue& values);
