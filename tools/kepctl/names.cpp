// SPDX-License-Identifier: Apache-2.0
// What there is by name.
#include "names.h"

#include <algorithm>
#include <iterator>

#include "cardelements.h"
#include "devicenames.h"
#include "kepfactory.h"

namespace names
{

Names backends()
{
    Names all;
    for (const auto& [name, creator] : kepFactory::getInstance()->getRegistry())
        all.push_back(name);
    return all;
}

Names elements(const std::string& card)
{
    Names all;
    for (const CardElement& element : cardElements())
        if ((card.empty() || card == element.card) &&
            std::find(all.begin(), all.end(), element.name) == all.end())
            all.push_back(element.name);
    return all;
}

Names middlewareOperations()
{
    Names all;
    for (const virtualtv::DeviceOperation& operation : virtualtv::kMiddlewareOperations)
        all.emplace_back(operation.name);
    return all;
}

Names inputLines()
{
    return {std::begin(virtualtv::kInputLines), std::end(virtualtv::kInputLines)};
}

Names subMicroOperations()
{
    Names all;
    for (const virtualtv::DeviceOperation& operation : virtualtv::kSubMicroOperations)
        all.emplace_back(operation.name);
    return all;
}

} // namespace names
