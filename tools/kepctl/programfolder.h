// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

/// The folder of the program that runs, symbolic links followed; empty if it is gone.
[[nodiscard]] std::filesystem::path programFolder();
