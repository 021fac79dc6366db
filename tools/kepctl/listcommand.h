// SPDX-License-Identifier: Apache-2.0
// kepctl list: what there is by name, asked of the library, the cards and the virtual television.
#pragma once

#include "closest.h"
#include "options.h"

int list(const Options& options);

/// What can be listed.
Names listNames();
