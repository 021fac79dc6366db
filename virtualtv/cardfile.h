// SPDX-License-Identifier: Apache-2.0
// Card tables: what a card offers, as JSON.
#pragma once

#include <string>

#include "cards.h"
#include "virtualtvexport.h"

namespace virtualtv
{

/// Reads the card table in that file. "", or what is wrong with it (file and element named), with
/// `card` empty then.
VIRTUALTV_EXPORT std::string readCardFile(const std::string& path, Card& card);

/// The card table of a card, an element a line.
VIRTUALTV_EXPORT std::string cardTable(const Card& card);

} // namespace virtualtv
