// SPDX-License-Identifier: Apache-2.0
// What the closed middleware libraries have in common.
#pragma once

#include <map>
#include <string>

/// Parameters as the middleware takes them. A library reads the map during the call that it is
/// passed to, and neither changes nor keeps it.
using MwlParams = std::map<std::string, std::string>;
