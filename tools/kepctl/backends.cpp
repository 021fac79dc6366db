// SPDX-License-Identifier: Apache-2.0
// The backends that there are, asked of the library.
#include "names.h"

#include "kepfactory.h"

Names names::backends()
{
    Names all;
    for (const auto& [name, creator] : kepFactory::getInstance()->getRegistry())
        all.push_back(name);
    return all;
}
