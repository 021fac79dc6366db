// SPDX-License-Identifier: Apache-2.0
// Formatting as printf does it, for the formats that nearly all lines have.
#pragma once

#include <cstdarg>
#include <span>

/// Writes what vsnprintf would, when the format has no conversions but %s, %d and %u and the text
/// fits the room, of a byte or more, with its end. False otherwise: what the room holds then is
/// nobody's text.
[[gnu::format(printf, 2, 0)]] bool formatPlain(std::span<char> room, const char* format,
                                               va_list arguments) noexcept;
