// SPDX-License-Identifier: Apache-2.0
// Stands for the maker's log library. A real one is closed, and on the set.
#include "veltoralog.h"

#include <cstdio>

void vlog_line(vlog_severity severity, const char* tag, const char* line)
{
    std::fprintf(stderr, "vlog %c/%s: %s\n", "TN!F"[severity], tag, line);
}
