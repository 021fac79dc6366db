// SPDX-License-Identifier: Apache-2.0
// What the library of the television's sub-microcontroller must supply.
#pragma once

/// Mutes or unmutes the headphone amplifier; the external speaker hangs on the same line. Answers 0
/// for success. Any thread.
extern "C" int subcpu_misc_Set_HPMuteOnOff(bool mute);
