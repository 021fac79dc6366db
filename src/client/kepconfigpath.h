// SPDX-License-Identifier: Apache-2.0
// Where the library's configuration files are.
#pragma once

#include <string>

/// The path of a configuration file: in the build's folder, or in the directory that the
/// environment variable KEP_CONFIG_DIR names (ignored in privileged programs).
std::string kepConfigPath(const char* fileName);
