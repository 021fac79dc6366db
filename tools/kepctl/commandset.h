// SPDX-License-Identifier: Apache-2.0
// The commands of kepctl as a set, for what belongs to several of them.
#pragma once

enum CommandSet : unsigned {
    kNoCommand = 1U << 0, // kepctl itself, without a command
    kRun = 1U << 1,
    kShell = 1U << 2,
    kEnv = 1U << 3,
    kCard = 1U << 4,
    kList = 1U << 5,
    kHelp = 1U << 6,
    kEveryCommand = ~0U,
};
