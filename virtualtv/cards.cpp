// SPDX-License-Identifier: Apache-2.0
// The virtual cards: built from the tables here, or from a card table.
#include "cards.h"

#include <climits>

#include "cardfile.h"
#include "drivertable.h"
#include "environment.h"

namespace virtualtv
{
namespace
{

Card driverCard()
{
    Card card{"Virtual television", {}};
    for (const auto& [name, count] : kDriverElements)
        card.elements.push_back(
            {.name = name, .count = count, .minimum = INT_MIN, .maximum = INT_MAX, .step = 1});
    return card;
}

Card mixerCard()
{
    Card card{"Virtual mixer", {}};
    for (const auto& [name, maximum] : kMixerElements)
        card.elements.push_back({.name = name,
                                 .type = maximum == 1 ? ElementType::Boolean : ElementType::Integer,
                                 .maximum = maximum,
                                 .step = 1});
    return card;
}

Cards makeCards()
{
    Cards made{{}, mixerCard(), ""};
    const std::string file = cardFilePath();
    if (file.empty())
        made.television = driverCard();
    else
        made.problem = readCardFile(file, made.television);
    return made;
}

} // namespace

const Cards& cards()
{
    static const Cards* const all = new Cards{makeCards()}; // leaked: read until the process ends
    return *all;
}

} // namespace virtualtv
