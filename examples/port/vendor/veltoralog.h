// SPDX-License-Identifier: Apache-2.0
// The log of the same maker: tags, severities of its own, one finished line at a time.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum vlog_severity { VLOG_TRACE = 0, VLOG_NOTE = 1, VLOG_TROUBLE = 2, VLOG_FATAL = 3 };

void vlog_line(enum vlog_severity severity, const char* tag, const char* line);

#ifdef __cplusplus
}
#endif
