// SPDX-License-Identifier: Apache-2.0
// Identifiers of audio input resources and sound outputs. Their values are the library's own: the
// driver is told other numbers. At the end, the numbers of eARC, which are the driver's.
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

/// Codec types of the driver's eARC output, by its own numbers.
enum sndout_earc_output_codec_type : std::uint32_t {
    SNDOUT_EARC_PCM = 1,
    SNDOUT_EARC_DD = 2,
    SNDOUT_EARC_AAC = 3,
    SNDOUT_EARC_DD_FROM_DTS = 4,
    SNDOUT_EARC_DDPLUS = 5,
    SNDOUT_EARC_TRUEHD = 6,
    SNDOUT_EARC_MAT2PCM = 7,
    SNDOUT_EARC_DTSHD = 8,
};

/// Whether other sounds are mixed into the eARC output.
enum sndout_earc_output_mix_option : std::uint32_t {
    SNDOUT_EARC_MIX_OFF = 0,
    SNDOUT_EARC_MIX_ON = 1,
};
