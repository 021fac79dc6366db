// SPDX-License-Identifier: Apache-2.0
// What the backend knows of its sound outputs: one table, a row an output. A new output is an
// enumerator of KEP_AUDIO_SNDOUT_T and a row: the rooms walk the table, and name an output
// themselves only where a rule is about that output alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

#include "kepaudiotypes.h"
#include "kepcatalogue.h"

/// A step of opening or closing a single output.
enum class OutputStep : std::uint8_t {
    None, // ends a sequence
    Open,
    Close,
    Connect, // re-routes all connected resources
    Disconnect,
    Mute,
    Unmute,
    UnmuteUnlessMuted, // the user's mute outlives the change
    LightOn,
    LightOff,
    SoundSync,        // the sound bar's volume and mute as they are stored
    GuardHeadphone,   // mutes the headphone's amplifier, if this is the first output since power-on
    UnguardHeadphone, // unmutes it, unless this is the first output: that waits for a timer
    MuteHeadphone,
    UnmuteHeadphone,
};

struct OutputSequence {
    const char* operation; // in whose name it logs
    const char* suffix;    // of the lines of failed writes, after a blank
    OutputStep steps[6];
};

/// How a single output is switched.
struct OutputSwitch {
    OutputSequence open;
    OutputSequence close;
    OutputStep joined; // when it was alone, stays open, and others join it
};

/// What carries a volume or a mute.
enum class Mechanism : std::uint8_t {
    None,        // a volume does nothing and succeeds, a mute is that of an unknown output
    Unsupported, // does nothing, says so, and succeeds
    Speaker,     // sound engine and amplifier
    Headphone,
    SoundSync,
};

/// What a mute by power state reaches.
enum class PowerStateMute : std::uint8_t {
    None,      // nothing: it fails
    Speaker,   // the speaker with its amplifier, then the other members
    Optical,   // the output, but ARC while "external_arc" was asked for last
    Headphone, // the headphone with its amplifier, then the speaker if it is a member
    Output,    // the output
};

struct SoundOutput {
    KEP_AUDIO_SNDOUT_T output;
    const char* names[2]; // either is accepted
    const char* description;
    bool selectable;
    unsigned int driverType;       // the driver's bit; 0: no output of its own there
    const OutputSwitch* single;    // null: it cannot be opened or closed by itself
    KEP_AUDIO_SNDOUT_T members[3]; // of a combination, in the order in which they are opened
    bool closedLastFirst;          // the members, on the way to an output that is opened afresh
    bool openedAfresh;             // on the way to it everything is closed, itself included
    Mechanism volume;
    Mechanism mute;
    PowerStateMute powerStateMute;
};

/// All of them, in the order in which names are looked up.
std::span<const SoundOutput> soundOutputs();
/// Null when there is no such output.
const SoundOutput* findSoundOutput(KEP_AUDIO_SNDOUT_T output);
/// KEP_AUDIO_NO_OUTPUT when none has that name.
KEP_AUDIO_SNDOUT_T soundOutputOfName(std::string_view name);

/// The single outputs that an output is made of, in the order in which they are opened; an output
/// that is no combination has itself as its only member.
class OutputMembers
{
public:
    explicit OutputMembers(KEP_AUDIO_SNDOUT_T output);

    const KEP_AUDIO_SNDOUT_T* begin() const { return mMembers; }
    const KEP_AUDIO_SNDOUT_T* end() const { return mMembers + mCount; }
    bool contains(KEP_AUDIO_SNDOUT_T output) const;
    void reverse();

private:
    KEP_AUDIO_SNDOUT_T mMembers[std::size(SoundOutput{}.members)];
    std::size_t mCount = 1;
};

/// Whether opening the output switches the optical light on.
bool hasOpticalLight(KEP_AUDIO_SNDOUT_T output);

/// The driver's output types, each with the description of its output.
extern const kepList<kepNamedNumber> kOutputTypes;
