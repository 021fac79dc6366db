// SPDX-License-Identifier: Apache-2.0
// Marks what the library shows to its callers; everything else in it stays hidden.
#pragma once

#define KEP_EXPORT __attribute__((visibility("default")))
