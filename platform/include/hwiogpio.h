// SPDX-License-Identifier: Apache-2.0
// What the television's GPIO library must supply.
#pragma once

#include <cstdint>

/// Reads the input line of that name into `*level`, 0 for low. Answers 0 for success. Any thread.
extern "C" int HWIO_GPIO_ReadInputPort(const char* line, std::uint8_t* level);
