// SPDX-License-Identifier: Apache-2.0
// The state file: a mark, the fingerprint of the cards, then the records.
// It is read and written, not mapped: a file that somebody cuts short must not kill the process.
#include "cardstate.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cardfile.h"
#include "environment.h"
#include "fingerprint.h"

namespace virtualtv
{
namespace
{

struct Header {
    char mark[16] = "kep virtual tv2";
    std::uint64_t contents = fingerprint(cardTable(cards().television) + cardTable(cards().mixer));
};

const Header& header()
{
    static const Header theHeader;
    return theHeader;
}

/// Every card table has a file of its own, so that changing to and fro loses nothing.
std::string fileName()
{
    if (cardFilePath().empty())
        return stateFilePath();
    char suffix[32];
    snprintf(suffix, sizeof suffix, "-card-%016llx",
             static_cast<unsigned long long>(header().contents));
    return stateFilePath() + suffix;
}

template <typename Use>
void forEachElement(Use use)
{
    for (const Card* card : {&cards().television, &cards().mixer})
        for (const Element& element : card->elements)
            use(element);
}

/// The whole file as it is at first.
std::string firstContent()
{
    std::string content{reinterpret_cast<const char*>(&header()), sizeof(Header)};
    forEachElement([&content](const Element& element) {
        std::vector<std::int64_t> record{0}; // changes
        record.resize(1 + static_cast<std::size_t>(element.count),
                      std::clamp<std::int64_t>(0, element.minimum, element.maximum));
        std::copy(element.values.begin(), element.values.end(), record.begin() + 1);
        content.append(reinterpret_cast<const char*>(record.data()),
                       record.size() * sizeof record.front());
    });
    return content;
}

bool isOurs(int descriptor, off_t size)
{
    struct stat status = {};
    char start[sizeof(Header)] = {};
    return fstat(descriptor, &status) == 0 && status.st_size == size &&
           pread(descriptor, start, sizeof start, 0) == static_cast<ssize_t>(sizeof start) &&
           std::memcmp(start, &header(), sizeof start) == 0;
}

bool fillAnew(int descriptor)
{
    const std::string content = firstContent();
    return ftruncate(descriptor, 0) == 0 && pwrite(descriptor, content.data(), content.size(), 0) ==
                                                static_cast<ssize_t>(content.size());
}

/// Makes the file ours unless it is already; one process at a time.
bool prepare(int descriptor, off_t size)
{
    if (flock(descriptor, LOCK_EX) != 0)
        return false;
    const bool ready = isOurs(descriptor, size) || fillAnew(descriptor);
    flock(descriptor, LOCK_UN);
    return ready;
}

/// Closed on every way out, so the lock of `prepare` goes with it; memory may run out below that.
struct Descriptor {
    int number;
    ~Descriptor()
    {
        if (number >= 0)
            close(number);
    }
};

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
    if (mDescriptor >= 0)
        return 0;
    const std::lock_guard lock{mGuard};
    if (mDescriptor >= 0)
        return 0; // another thread was faster
    mOffsets = {sizeof(Header)};
    forEachElement([this](const Element& element) {
        mOffsets.push_back(mOffsets.back() +
                           (1 + element.count) * static_cast<off_t>(sizeof(std::int64_t)));
    });
    Descriptor file{
        ::open(fileName().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)};
    if (file.number < 0 || !prepare(file.number, mOffsets.back()))
        return -errno;
    mDescriptor = std::exchange(file.number, -1);
    return 0;
}

int CardState::read(Slot slot, std::span<std::int64_t> values) const
{
    const off_t offset = mOffsets[slot] + static_cast<off_t>(sizeof(std::int64_t));
    return outcome(pread(mDescriptor, values.data(), values.size_bytes(), offset),
                   values.size_bytes());
}

int CardState::write(Slot slot, std::span<const std::int64_t> values)
{
    std::int64_t space[1 + kMaxValues]; // never filled whole: most elements have few values
    const std::span record{space, 1 + values.size()};
    const int status =
        outcome(pread(mDescriptor, record.data(), record.size_bytes(), mOffsets[slot]),
                record.size_bytes());
    if (status < 0 || std::equal(values.begin(), values.end(), record.begin() + 1))
        return status;
    // A subscriber finds a value that was changed there and back by the count of changes. Of two
    // processes that count at once one is lost, but then the values tell.
    ++record.front();
    std::copy(values.begin(), values.end(), record.begin() + 1);
    const int written =
        outcome(pwrite(mDescriptor, record.data(), record.size_bytes(), mOffsets[slot]),
                record.size_bytes());
    return written < 0 ? written : 1;
}

int CardState::readRecords(Slot first, std::size_t count, Records& records) const
{
    const auto bytes = static_cast<std::size_t>(mOffsets[first + count] - mOffsets[first]);
    if (!records.numbers) {
        records.size = bytes / sizeof(std::int64_t);
        records.numbers = std::make_unique_for_overwrite<std::int64_t[]>(records.size);
    }
    const int status =
        outcome(pread(mDescriptor, records.numbers.get(), bytes, mOffsets[first]), bytes);
    if (status < 0)
        std::fill_n(records.numbers.get(), records.size, 0);
    return status;
}

std::string CardState::openName() const
{
    return "/proc/self/fd/" + std::to_string(mDescriptor);
}

} // namespace virtualtv
