// SPDX-License-Identifier: Apache-2.0
// A number that stands for a text, the same in every process.
#pragma once

#include <cstdint>
#include <string_view>

namespace virtualtv
{

/// FNV-1a.
constexpr std::uint64_t fingerprint(std::string_view text)
{
    std::uint64_t number = 0xcbf29ce484222325;
    for (const char byte : text)
        number = (number ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return number;
}

} // namespace virtualtv
