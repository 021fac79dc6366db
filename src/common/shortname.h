// SPDX-License-Identifier: Apache-2.0
// A name of a few bytes as a number.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

/// A name of up to seven bytes, in a form that is compared at once: inputs are looked up by name in
/// every request, some of them in two tables. All longer names are equal, so a table has none: one
/// that is too long there does not compile.
class ShortName
{
public:
    explicit constexpr ShortName(std::string_view name)
    {
        if (std::is_constant_evaluated() && name.size() > kLongest)
            throw "too long for a table";
        if (name.size() <= kLongest)
            mBytes = bytesOf(name) | std::uint64_t{name.size()} << (8 * kLongest);
    }

    constexpr bool operator==(const ShortName& other) const = default;

private:
    static constexpr std::size_t kLongest = 7;
    static constexpr std::size_t kHalf = sizeof(std::uint32_t);
    static constexpr bool kBytesAscend = std::endian::native == std::endian::little;

    static constexpr std::uint64_t bytesOf(std::string_view name)
    {
        if (!std::is_constant_evaluated() && kBytesAscend && name.size() >= kHalf) {
            const std::size_t second = name.size() - kHalf; // the two halves may overlap
            return half(name.data()) | half(name.data() + second) << (8 * second);
        }
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < name.size(); ++i)
            bytes |= std::uint64_t{static_cast<unsigned char>(name[i])} << (8 * i);
        return bytes;
    }

    static std::uint64_t half(const char* bytes)
    {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

    std::uint64_t mBytes = ~std::uint64_t{0};
};
