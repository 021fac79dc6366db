// SPDX-License-Identifier: Apache-2.0
// What there is by name: asked of the library, of the cards and of the virtual television.
#pragma once

#include <string>

#include "closest.h"

namespace names
{

Names backends();
/// Elements of that card, "" for those of all cards; each once.
Names elements(const std::string& card = "");
/// "gain.setInputVolume" and so on.
Names middlewareOperations();
Names inputLines();
Names subMicroOperations();

} // namespace names
