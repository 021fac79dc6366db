// SPDX-License-Identifier: Apache-2.0
// What the integers of a driver write stand for.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// The write in words, such as "Sndout Connect: speaker, mixer block, port 5"; "" for an element
/// that the television's driver does not have.
std::string explained(std::string_view element, std::span<const std::int64_t> values);
