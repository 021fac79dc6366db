// SPDX-License-Identifier: Apache-2.0
// The state file: a mark, then kMaxValues 32-bit integers for each element of each card.
// It is read and written, not mapped: a file that somebody cuts short must not kill the process.
#include "cardstate.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cardtable.h"
#include "environment.h"

namespace virtualtv
{
namespace
{

constexpr char kMark[] = "kep virtual tv"; // 16 bytes with its end
constexpr off_t kSlotBytes = kMaxValues * sizeof(std::int32_t);

constexpr off_t fileBytes()
{
    std::size_t elements = 0;
    for (const Card& card : kCards)
        elements += card.elements.size();
    return static_cast<off_t>(sizeof kMark) + static_cast<off_t>(elements) * kSlotBytes;
}

constexpr off_t slotOffset(int slot)
{
    return static_cast<off_t>(sizeof kMark) + slot * kSlotBytes;
}

bool isOurs(int descriptor)
{
    struct stat status = {};
    char mark[sizeof kMark] = {};
    return fstat(descriptor, &status) == 0 && status.st_size == fileBytes() &&
           pread(descriptor, mark, sizeof mark, 0) == static_cast<ssize_t>(sizeof mark) &&
           std::memcmp(mark, kMark, sizeof mark) == 0;
}

/// Makes the file ours, all values 0, unless it is already; one process at a time.
bool prepare(int descriptor)
{
    if (flock(descriptor, LOCK_EX) != 0)
        return false;
    const bool ready =
        isOurs(descriptor) ||
        (ftruncate(descriptor, 0) == 0 && ftruncate(descriptor, fileBytes()) == 0 &&
         pwrite(descriptor, kMark, sizeof kMark, 0) == static_cast<ssize_t>(sizeof kMark));
    flock(descriptor, LOCK_UN);
    return ready;
}

/// 0 when all bytes were moved, else the reason.
int outcome(ssize_t moved, std::size_t wanted)
{
    if (moved < 0)
        return -errno;
    return static_cast<std::size_t>(moved) == wanted ? 0 : -EIO;
}

} // namespace

CardState& CardState::instance()
{
    static CardState* const state =
        new CardState; // leaked: cards are written until the process ends
    return *state;
}

int CardState::open()
{
    const std::lock_guard lock{mGuard};
    if (mDescriptor >= 0)
        return 0;
    const int descriptor = ::open(stateFilePath().c_str(),
                                  O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (descriptor < 0)
        return -errno;
    if (!prepare(descriptor)) {
        const int error = errno;
        close(descriptor);
        return -error;
    }
    mDescriptor = descriptor;
    return 0;
}

int CardState::read(int slot, std::span<std::int32_t> values) const
{
    return outcome(pread(mDescriptor, values.data(), values.size_bytes(), slotOffset(slot)),
                   values.size_bytes());
}

int CardState::write(int slot, std::span<const std::int32_t> values)
{
    return outcome(pwrite(mDescriptor, values.data(), values.size_bytes(), slotOffset(slot)),
                   values.size_bytes());
}

} // namespace virtualtv
