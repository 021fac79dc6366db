// SPDX-License-Identifier: Apache-2.0
// kepctl env.
#pragma once

#include "options.h"

int printEnvironment(const Options& options);
