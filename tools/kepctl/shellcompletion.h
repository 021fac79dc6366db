// SPDX-License-Identifier: Apache-2.0
// Completion of kepctl's command line, as files for the shells that people use.
#pragma once

#include <string>

/// A bash completion file.
std::string bashCompletion();
/// A zsh completion file.
std::string zshCompletion();
