// SPDX-License-Identifier: Apache-2.0
// The values of all virtual cards, in a file that every process shares.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "cards.h"

namespace virtualtv
{

/// The state file of this process. Results: 0, or a negative errno.
class CardState
{
public:
    /// A place in the file: the number of an element, counted through all elements of all cards.
    /// Its record is the number of changes so far, then the values.
    using Slot = std::size_t;

    static CardState& instance();

    /// Opens the file, made anew when it is missing or none of ours; at once when it is open
    /// already.
    int open();

    /// Values of the element in this slot.
    int read(Slot slot, std::span<std::int64_t> values) const;
    /// Writes them, unless they are there already. 1 when they were not, like a driver.
    int write(Slot slot, std::span<const std::int64_t> values);

    /// Records one after the other. Not filled before they are read: every handle on a card has
    /// them.
    struct Records {
        std::unique_ptr<std::int64_t[]> numbers;
        std::size_t size = 0;

        [[nodiscard]] const std::int64_t* end() const { return numbers.get() + size; }
    };
    /// Reads the records of so many slots; on failure they are 0.
    int readRecords(Slot first, std::size_t count, Records& records) const;
    /// What the file is called while it is open, whatever has become of its name.
    [[nodiscard]] std::string openName() const;

private:
    std::mutex mGuard;
    std::atomic<int> mDescriptor = -1; // stays open until the process ends
    std::vector<off_t> mOffsets;       // of every slot, and of the end
};

} // namespace virtualtv
