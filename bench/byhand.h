// SPDX-License-Identifier: Apache-2.0
// What a request comes down to, done by hand: driver writes and calls of the middleware.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "jvalue.h"

namespace byhand
{

/// Fails the program: a case that does not do what it should would be measured all the same.
void require(bool done, const char* what);

/// Opens the television's card, loads its elements, writes one and closes the card.
void writeElement(const char* element, const std::vector<long>& values);
/// Opens a card, writes one control of it by its text form and closes it.
void writeControl(const char* card, const char* control, const char* value);

/// A call that is made again as it was recorded.
struct Call {
    void (*make)(const Call& call) = nullptr;
    std::string text; // the element, or the argument that is a text
    std::vector<long> values;
};

/// The calls that the request makes, from the journal.
std::vector<Call> callsOf(const std::function<void()>& request);
void makeAgain(const std::vector<Call>& calls);

} // namespace byhand
