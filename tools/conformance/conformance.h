// SPDX-License-Identifier: Apache-2.0
// The conformance checks as the module that the program loads.
#pragma once

/// The first subject, and its claim: the program tells that it fails, when the module cannot be
/// loaded, the module that it holds.
inline constexpr const char* kLibrariesSubject = "Libraries";
inline constexpr const char* kLibrariesClaim = "all operations are in the television's libraries";

/// Reads the command line, checks, reports; the program's exit status.
extern "C" __attribute__((visibility("default"))) int kepConformance(int argc, char** argv);
