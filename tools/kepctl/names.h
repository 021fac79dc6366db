// SPDX-License-Identifier: Apache-2.0
// What there is by name: asked of the library, of the cards and of the virtual television.
#pragma once

#include <string>

#include "closest.h"

namespace names
{

Names backends();

// --- Of the television backend

Names soundOutputs();
Names sources();
/// The sinks behind which that source is reached, "" for those of all sources.
Names sinks(const std::string& source = "");
/// The categories that setSettings knows.
Names settingsCategories();
/// Those that getSettings can be asked for: the queries and the stored categories.
Names queries();

// --- Of the cards and the virtual television

/// Elements of that card, "" for those of all cards; each once.
Names elements(const std::string& card = "");
/// "gain.setInputVolume" and so on.
Names middlewareOperations();
Names inputLines();
Names subMicroOperations();

} // namespace names
