// SPDX-License-Identifier: Apache-2.0
// kepctl run.
#pragma once

#include "options.h"

int runScripts(const Options& options);
