// SPDX-License-Identifier: Apache-2.0
// The virtual cards and what they offer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "virtualtvexport.h"

namespace virtualtv
{

/// In the order of ALSA's own numbers.
enum class ElementInterface { Card, Hwdep, Mixer, Pcm, Rawmidi, Timer, Sequencer };

enum class ElementType { Boolean, Integer, Integer64, Enumerated, Bytes };

/// What may be done with an element, and how it behaves; a sum of these.
enum ElementAccess : unsigned { kReadable = 1, kWritable = 2, kVolatile = 4, kInactive = 8 };

/// Values of a type count from 0 unless they are integers: false and true, the items, one byte.
struct Element {
    std::string name;
    ElementInterface interface = ElementInterface::Mixer;
    unsigned int index = 0;
    unsigned int device = 0;
    unsigned int subdevice = 0;
    ElementType type = ElementType::Integer;
    int count = 1; // values, at most kMaxValues
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    std::int64_t step = 0;               // of integers; 0: any value between
    std::vector<std::string> items = {}; // of an enumerated element
    unsigned access = kReadable | kWritable;
    std::vector<std::int64_t> values = {}; // at first; empty: all 0, or the minimum where 0 is none
};

/// The most values that an element can have: the bytes of one that holds bytes.
inline constexpr int kMaxValues = 512;

struct Card {
    std::string name;
    std::vector<Element> elements;
};

struct Cards {
    Card television; // "hw:0": the audio driver's, or that of the card table in KEP_VIRTUALTV_CARD
    Card mixer;      // "default"
    std::string problem; // why the card table cannot be used; the television has no element then
};

/// The cards of this process, made when they are asked for first.
VIRTUALTV_EXPORT const Cards& cards();

} // namespace virtualtv
