// SPDX-License-Identifier: Apache-2.0
// The conformance checks as the module that the program loads.
#pragma once

/// Reads the command line, checks, reports; the program's exit status.
extern "C" __attribute__((visibility("default"))) int kepConformance(int argc, char** argv);
