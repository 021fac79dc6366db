// SPDX-License-Identifier: Apache-2.0
// Marks what the virtual television's shared library shows to the card plugin, the stand-ins and
// kepctl.
#pragma once

#define VIRTUALTV_EXPORT __attribute__((visibility("default")))
