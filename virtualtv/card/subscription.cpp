// SPDX-License-Identifier: Apache-2.0
// Changes of a card, found in the state file.
// Order matters: what woke us is emptied before the file is read, so that a change that comes in
// between wakes us again.
#include "subscription.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace virtualtv
{
namespace
{

constexpr long kLookEveryNs = 100'000'000;

/// Readable after each write to the file of that name; none when the machine is short of watches.
Descriptor watchOf(const std::string& file)
{
    Descriptor watch{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    const bool watching =
        watch.number() >= 0 && inotify_add_watch(watch.number(), file.c_str(), IN_MODIFY) >= 0;
    return watching ? std::move(watch) : Descriptor{};
}

/// Readable ten times a second.
Descriptor clockOf()
{
    Descriptor timer{timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)};
    const itimerspec often{{0, kLookEveryNs}, {0, kLookEveryNs}};
    if (timer.number() >= 0)
        timerfd_settime(timer.number(), 0, &often, nullptr);
    return timer;
}

void empty(const Descriptor& descriptor)
{
    char bytes[4096];
    while (descriptor.number() >= 0 && read(descriptor.number(), bytes, sizeof bytes) > 0) {
    }
}

bool wakes(const Descriptor& poll, const Descriptor& by)
{
    epoll_event readable{};
    readable.events = EPOLLIN;
    return epoll_ctl(poll.number(), EPOLL_CTL_ADD, by.number(), &readable) == 0;
}

} // namespace

Descriptor::Descriptor(Descriptor&& other) noexcept : mNumber(std::exchange(other.mNumber, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(mNumber, other.mNumber);
    return *this;
}

Descriptor::~Descriptor()
{
    if (mNumber >= 0)
        close(mNumber);
}

Subscription::Subscription(std::span<const Element> elements, CardState::Slot firstSlot)
    : mElements(elements), mFirstSlot(firstSlot)
{
    CardState::instance().readRecords(mFirstSlot, mElements.size(), mSeen);
}

std::optional<std::size_t> Subscription::next()
{
    if (!pending())
        return std::nullopt;
    const std::size_t key = mChanged.back();
    mChanged.pop_back();
    if (mChanged.empty())
        raise(false);
    return key;
}

int Subscription::wait()
{
    while (!pending()) {
        pollfd readable{descriptor(), POLLIN, 0};
        if (readable.fd < 0)
            return readable.fd;
        if (poll(&readable, 1, -1) < 0)
            return -errno;
    }
    return 0;
}

bool Subscription::pending()
{
    if (mChanged.empty())
        lookForChanges();
    return !mChanged.empty();
}

void Subscription::restart()
{
    lookForChanges();
    mChanged.clear();
    raise(false);
}

int Subscription::descriptor()
{
    if (mPoll.number() < 0) {
        mSource = watchOf(CardState::instance().openName());
        mLooksByClock = mSource.number() < 0;
        if (mLooksByClock)
            mSource = clockOf();
        mRaised = Descriptor{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
        Descriptor both{epoll_create1(EPOLL_CLOEXEC)};
        if (!wakes(both, mSource) || !wakes(both, mRaised))
            return -errno;
        mPoll = std::move(both);
        lookForChanges(); // those from before the watch
    }
    return mPoll.number();
}

void Subscription::lookForChanges()
{
    empty(mSource);
    if (CardState::instance().readRecords(mFirstSlot, mElements.size(), mNow) < 0)
        return; // the file was cut short: nothing is known to have changed
    const std::int64_t* seen = mSeen.end();
    const std::int64_t* now = mNow.end();
    for (std::size_t key = mElements.size(); key-- > 0;) {
        const auto size = 1 + mElements[key].count;
        now -= size;
        seen -= size;
        if (!std::equal(now, now + size, seen))
            mChanged.push_back(key);
    }
    std::swap(mSeen, mNow);
    if (!mChanged.empty())
        raise(true);
}

void Subscription::raise(bool readable) const
{
    constexpr std::uint64_t kOne = 1;
    if (!readable)
        empty(mRaised);
    else if (mRaised.number() >= 0 && write(mRaised.number(), &kOne, sizeof kOne) < 0)
        return; // raised already
}

} // namespace virtualtv
