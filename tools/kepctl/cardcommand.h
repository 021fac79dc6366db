// SPDX-License-Identifier: Apache-2.0
// kepctl card.
#pragma once

#include "options.h"

int card(const Options& options);
