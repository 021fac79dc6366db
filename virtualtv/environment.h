// SPDX-License-Identifier: Apache-2.0
// How a process comes to see the virtual television: the environment variables that libasound and
// the card plugin read.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "virtualtvexport.h"

namespace virtualtv
{

/// Names and values of the variables. They are found from the place of this library, so they hold
/// in the build tree and wherever it is installed.
VIRTUALTV_EXPORT std::vector<std::pair<std::string, std::string>> environment();

/// Why libasound cannot be led to the cards from here, "" when it can.
VIRTUALTV_EXPORT std::string environmentProblem();

/// Sets these variables in this process; to be called before libasound is used.
VIRTUALTV_EXPORT void enter();

/// The file that keeps the cards' values: KEP_VIRTUALTV_STATE if that is set, otherwise one file
/// for each user of the machine. With a card table the values are in a file beside it, one for each
/// table.
VIRTUALTV_EXPORT std::string stateFilePath();

/// The card table that "hw:0" is made from: what KEP_VIRTUALTV_CARD says, "" when it is not set.
VIRTUALTV_EXPORT std::string cardFilePath();

/// Sets KEP_VIRTUALTV_CARD in this process; to be called before the cards are used.
VIRTUALTV_EXPORT void chooseCardFile(const std::string& path);

} // namespace virtualtv
