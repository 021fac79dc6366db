// SPDX-License-Identifier: Apache-2.0
// JSON texts of any size.
#pragma once

#include <string>

namespace count
{

/// {"key 0":0,"key 1":1,...}
std::string objectText(int keys);
/// Parses with bare json-c and frees the result.
void parseByHand(const std::string& text);

} // namespace count
