// SPDX-License-Identifier: Apache-2.0
// Benchmarks come in pairs: what the library does, and the same made by hand with the libraries
// below it.
#pragma once

/// Both run in one go; the ratio of their times is printed after them. It is the figure that
/// counts: times alone say more about the machine than about the code.
struct BenchmarkPair {
    const char* library; // names of registered benchmarks
    const char* byHand;
    double aim; // the ratio should not exceed this
};
