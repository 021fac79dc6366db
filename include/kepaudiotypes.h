// SPDX-License-Identifier: Apache-2.0
// Identifiers of audio input resources and sound outputs. The values are the library's own: the
// driver is told other numbers.
#pragma once

#include <cstdint>

/// Audio input resources. The gaps are deliberate: 10 to 19 are reserved by the driver.
enum KEP_AUDIO_RESOURCE_T : std::uint32_t {
    KEP_AUDIO_RESOURCE_ADEC0 = 8,
    KEP_AUDIO_RESOURCE_ADEC1 = 9,
    KEP_AUDIO_RESOURCE_AMIXER0 = 20,
    KEP_AUDIO_RESOURCE_AMIXER1 = 21,
    KEP_AUDIO_RESOURCE_AMIXER2 = 22,
    KEP_AUDIO_RESOURCE_AMIXER3 = 23,
    KEP_AUDIO_RESOURCE_AMIXER4 = 24,
    KEP_AUDIO_RESOURCE_AMIXER5 = 25,
    KEP_AUDIO_RESOURCE_AMIXER6 = 26,
    KEP_AUDIO_RESOURCE_AMIXER7 = 27,
    KEP_AUDIO_RESOURCE_INVALID = 255,
};

/// Sound outputs. A combination (SPK_...) has a bit of its own; it is not the OR of its members.
enum KEP_AUDIO_SNDOUT_T : std::uint32_t {
    KEP_AUDIO_NO_OUTPUT = 0,
    KEP_AUDIO_SPK = 1,              // television speaker
    KEP_AUDIO_SPDIF = 2,            // optical
    KEP_AUDIO_HP = 32,              // headphone, line out
    KEP_AUDIO_ALSA = 256,           // known by name, not selectable on a television
    KEP_AUDIO_SPK_SPDIF = 512,      // television speaker and optical
    KEP_AUDIO_ARC = 1024,           // HDMI ARC or eARC
    KEP_AUDIO_SPK_HP = 2048,        // television speaker and headphone
    KEP_AUDIO_QN_SOUND_SYNC = 4096, // optical sound bar with volume control
    KEP_AUDIO_BT_SOUNDBAR = 8192,   // Bluetooth sound bar
    KEP_AUDIO_WISA = 16384,         // wireless speakers
    KEP_AUDIO_SPK_OPTICAL_ARC = 32768,
    KEP_AUDIO_SPK_BLUETOOTH = 65536,
    KEP_AUDIO_BLUETOOTH = 131072, // only as a member of SPK_BLUETOOTH, never selected
};
