// SPDX-License-Identifier: Apache-2.0
// What the closed middleware libraries have in common.
#pragma once

#include <map>
#include <string>

/// Parameters as the middleware takes them. A library takes what it needs during the call, and does
/// not change the map: the next call may bring another one. A library that calls back into kep
/// during the call may find the map changed afterwards.
using MwlParams = std::map<std::string, std::string>;
