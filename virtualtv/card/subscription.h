// SPDX-License-Identifier: Apache-2.0
// What a client of a card has still to be told of its changes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "cards.h"
#include "cardstate.h"

namespace virtualtv
{

/// An open descriptor, closed at the end.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : mNumber(descriptor) {}
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    [[nodiscard]] int number() const { return mNumber; } // negative: none

private:
    int mNumber = -1;
};

/// Changes of one card as one open handle sees them, whichever process made them. Those who write
/// know nothing of it: it compares the state file with what it has seen last. Begun with every
/// handle whose elements are loaded, so it costs one read of the file until somebody waits.
class Subscription
{
public:
    /// Of these elements, whose values are in the slots from the first on. Changes from now on
    /// count.
    Subscription(std::span<const Element> elements, CardState::Slot firstSlot);

    /// The next changed element of the card, each once until it changes again; empty when there is
    /// none.
    std::optional<std::size_t> next();
    /// Waits until there is one; a negative errno when that was interrupted.
    int wait();
    /// Whether `next` has something.
    bool pending();
    /// Forgets what there is: only changes from now on count.
    void restart();
    /// Becomes readable when there may be something; a negative errno when it cannot be made.
    int descriptor();
    /// Whether the descriptor becomes readable by the clock, for want of watches.
    [[nodiscard]] bool looksByClock() const { return mLooksByClock; }
    /// Whether somebody has asked for the descriptor.
    [[nodiscard]] bool polled() const { return mPoll.number() >= 0; }

private:
    void lookForChanges();
    void raise(bool readable) const;

    const std::span<const Element> mElements;
    const CardState::Slot mFirstSlot;
    CardState::Records mSeen;          // as told, those in mChanged included
    CardState::Records mNow;           // space for the comparison
    std::vector<std::size_t> mChanged; // the next one last
    bool mLooksByClock = false;
    Descriptor mSource; // readable after a write to the state file
    Descriptor mRaised; // readable while mChanged holds something
    Descriptor mPoll;   // readable when one of these is
};

} // namespace virtualtv
