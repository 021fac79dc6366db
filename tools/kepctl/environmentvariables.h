// SPDX-License-Identifier: Apache-2.0
// The environment variables that are read: one table, from which they are explained.
#pragma once

#include "commandset.h"

struct EnvironmentVariable {
    const char* name;
    unsigned commands; // CommandSet, those of kepctl that read it themselves; 0: the libraries do
    const char* meaning;
};

// clang-format off
inline constexpr EnvironmentVariable kEnvironmentVariables[] = {
    {"KEP_CONFIG_DIR",       kNoCommand,
     "the folder of the library's configuration files; kepctl chooses it by --backend or --config. Not read in privileged programs"},
    {"KEP_VIRTUALTV_STATE",  kRun | kShell | kEnv | kCard | kList,
     "the file that keeps the values of the virtual cards; one for each user when not set"},
    {"KEP_VIRTUALTV_CARD",   kRun | kShell | kEnv | kCard | kList,
     "the card table that the virtual hw:0 is made from, as --card"},
    {"KEP_VIRTUALTV_FAULTS", kRun | kShell,
     "a file of \"inject\" lines, as in a request script: faults of the virtual television that are in force from the start"},
    {"KEP_VIRTUALTV_LINES",  kRun | kShell,
     "a folder with a file for each input line of the virtual television, which holds its level"},
    {"KEP_VIRTUALTV_TRACE",  kNoCommand,
     "the file to which the virtual television appends what it is told, in programs that do not listen themselves"},
    {"NO_COLOR",             kRun | kShell,
     "no colours, unless --color says otherwise"},
    {"XDG_STATE_HOME",       kShell,
     "the folder of kepctl/history, ~/.local/state when not set"},
};
// clang-format on
