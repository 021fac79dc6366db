// SPDX-License-Identifier: Apache-2.0
// What the cards offer, as libasound tells it.
#pragma once

#include <string>
#include <vector>

struct CardElement {
    std::string card; // as opened
    std::string name;
    std::string type; // "integer", "boolean", ...
    unsigned int count = 0;
    long long minimum = 0; // of an integer
    long long maximum = 0;
};

/// The cards that the library opens in its shipped configurations.
const std::vector<std::string>& cardNames();

/// The elements of these cards, read once: a fault that is planted later does not hide them.
/// Empty when no card can be opened.
const std::vector<CardElement>& cardElements();
