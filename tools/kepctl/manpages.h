// SPDX-License-Identifier: Apache-2.0
// The manual pages, made of the tables that the built-in help is made of.
#pragma once

#include <string>

#include "closest.h"

/// "kepctl.1", "kepctl-run.1", ...
Names manPageNames();

/// The source of that page (mdoc); "" when there is none of that name.
std::string manPage(const std::string& name);
