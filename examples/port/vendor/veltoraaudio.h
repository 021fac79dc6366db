// SPDX-License-Identifier: Apache-2.0
// The audio library of a maker who does not exist, as such libraries are: one C interface of units
// and properties, with statuses and scales of its own.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum vlt_status { VLT_DONE = 1, VLT_REFUSED = 0, VLT_NO_SUCH_PROPERTY = -1 };

/// A part of the set's audio: "dsp", "amp", "lipsync" or "levels". One each, never closed.
struct vlt_unit;
struct vlt_unit* vlt_open(const char* name);

enum vlt_status vlt_set_number(struct vlt_unit* unit, const char* property, long value);
enum vlt_status vlt_set_text(struct vlt_unit* unit, const char* property, const char* value);
enum vlt_status vlt_set_numbers(struct vlt_unit* unit, const char* property, const long* values,
                                int count);
enum vlt_status vlt_do(struct vlt_unit* unit, const char* command);
/// Fills in at most `space` bytes, the closing NUL included.
enum vlt_status vlt_get_text(struct vlt_unit* unit, const char* property, char* text, int space);

/// Levels of input lines by number; negative for a line that cannot be read. 7: the headphone's
/// socket.
int vlt_line(int number);
/// The headphone's amplifier: 1 on, 0 off.
enum vlt_status vlt_headphone_power(int on);

#ifdef __cplusplus
}
#endif
