// SPDX-License-Identifier: Apache-2.0
// Marks what the platform's shared library shows to others; everything else in it stays hidden.
#pragma once

#define KEP_PLATFORM_EXPORT __attribute__((visibility("default")))
