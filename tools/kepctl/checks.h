// SPDX-License-Identifier: Apache-2.0
// Checks of JSON values that operations and script lines share.
#pragma once

#include <cstdint>

#include "jvalue.h"

/// A number without a fraction from `minimum` to `maximum`.
inline bool isWholeNumber(const JValue& value, std::int64_t minimum, std::int64_t maximum)
{
    std::int64_t number = 0;
    double exact = 0;
    return value.asNumber(number) && value.asNumber(exact) &&
           static_cast<double>(number) == exact && number >= minimum && number <= maximum;
}
