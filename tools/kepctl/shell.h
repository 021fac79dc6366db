// SPDX-License-Identifier: Apache-2.0
// kepctl shell: requests typed by hand, or by a program through a pipe.
#pragma once

#include "options.h"

int runShell(const Options& options);
