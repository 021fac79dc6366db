// SPDX-License-Identifier: Apache-2.0
// The values of all virtual cards, in a file that every process shares.
#pragma once

#include <cstdint>
#include <mutex>
#include <span>

namespace virtualtv
{

/// The state file of this process. Results: 0, or a negative errno.
class CardState
{
public:
    static CardState& instance();

    /// Opens the file, made anew when it is missing or none of ours; at once when it is open
    /// already.
    int open();
    /// Values of the element in this slot. Slots count through all elements of all cards.
    int read(int slot, std::span<std::int32_t> values) const;
    int write(int slot, std::span<const std::int32_t> values);

private:
    std::mutex mGuard;
    int mDescriptor = -1; // stays open until the process ends
};

} // namespace virtualtv
