// SPDX-License-Identifier: Apache-2.0
// The names that requests may carry, from the tables by which the television backend works.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kepaudiotypes.h"
#include "kepexport.h"

/// Elements that the library owns; they stay where they are until the process ends.
template <typename Element>
struct kepList {
    const Element* data = nullptr;
    std::size_t count = 0;

    constexpr const Element* begin() const { return data; }
    constexpr const Element* end() const { return data + count; }
    constexpr std::size_t size() const { return count; }
    constexpr bool empty() const { return count == 0; }
    constexpr const Element& operator[](std::size_t index) const { return data[index]; }
};

/// Names, exact and case-sensitive.
using kepNames = kepList<const char*>;

// --- Sound outputs and inputs

/// A sound output. Its volume and its mute are what setOutputVolume and setOutputMute work on;
/// where it has none of its own, they do nothing and succeed (a mute is remembered all the same).
struct kepSoundOutput {
    KEP_AUDIO_SNDOUT_T output = KEP_AUDIO_NO_OUTPUT;
    kepNames names;                    // all that are accepted; none: it is a member of others only
    const char* description = nullptr; // a few words
    bool selectable = false;           // by setSoundOutput
    bool hasVolume = false;
    bool hasMute = false;
    std::uint32_t driverType = 0;        // its number in driver writes; 0: it has none of its own
    kepList<KEP_AUDIO_SNDOUT_T> members; // in the order in which they open; a single one: itself
};

/// A source and the sinks behind which it is reached; other pairs are invalid.
struct kepInputSource {
    const char* source = nullptr;
    kepNames sinks;
    KEP_AUDIO_RESOURCE_T resource = KEP_AUDIO_RESOURCE_INVALID;
    std::uint32_t driverIndex = 0; // the driver's number of its block,
    std::int32_t driverPort = 0;   // and of its port there
};

// --- Payloads

/// What a value in a payload is read as.
enum KEP_VALUE_T : std::uint32_t {
    KEP_VALUE_STRING,
    KEP_VALUE_BOOL,
    KEP_VALUE_NUMBER, // a whole one
    KEP_VALUE_ARRAY,
    KEP_VALUE_OBJECT,
    KEP_VALUE_ANY, // that it is there is all that counts
};

/// A key that is read from a payload.
struct kepKey {
    const char* name = nullptr;
    KEP_VALUE_T type = KEP_VALUE_ANY;
    bool needed = false;    // without it the request fails, or does nothing
    kepNames values;        // the texts that are told apart; in an array those of its elements
    bool onlyThose = false; // any other text makes the request fail
    const char* meaning = nullptr; // one line, with unit and range where it has them
};

/// A category of setSettings.
struct kepSettingsCategory {
    const char* name = nullptr;
    kepList<kepKey> keys;
    bool takesQualityKeys =
        false;              // any key is kept as a parameter; those of soundQualityKeys act at once
    bool stored = false;    // a payload that was applied is listed by getSettings
    bool supported = false; // false: the name is known, and always refused
    const char* meaning = nullptr;
};

/// Keys of categories with `takesQualityKeys`, and who acts on them: "television" is the backend
/// itself, the others are its middleware. A key that several act on stands with each of them.
struct kepQualityKeys {
    const char* reader = nullptr;
    kepList<kepKey> keys;
};

/// A category of getSettings that is no stored one.
struct kepQuery {
    const char* name = nullptr;
    kepList<kepKey> keys; // of the request
    const char* answer =
        nullptr; // its form; on failure, or when nothing was asked, see getSettings
};

/// A value of "requestType" in setQualityAttribute.
struct kepRequestType {
    const char* name = nullptr; // may be empty
    const char* meaning = nullptr;
};

// --- Driver

/// A number and what it stands for.
struct kepNamedNumber {
    std::int32_t number = 0;
    const char* name = nullptr;
};

/// One of the integers that a control element takes.
struct kepControlInteger {
    const char* name = nullptr;
    const kepList<kepNamedNumber>* numbers = nullptr; // null: the number speaks for itself,
    std::int32_t minimum = 0;                         // and is from this
    std::int32_t maximum = 0;                         // to that
};

/// A control element of the television's audio driver (interface mixer).
struct kepControlElement {
    const char* name = nullptr;
    kepList<kepControlInteger> integers;
};

// --- Build

/// What a build of the library has settled for its television.
struct kepBuild {
    const char* socKey = nullptr;              // the section of kep-config.json that is read
    const char* configurationFolder = nullptr; // unless KEP_CONFIG_DIR names another
    const char* card = nullptr;                // whose control elements are written; ALSA's name
};

/// All of it, read only. Needs no backend and logs nothing; any thread may ask at any time.
///
/// The lists are made of the tables that the library itself walks. They stand in the order in which
/// names are looked up; a name stands once in its list.
class KEP_EXPORT kepCatalogue
{
public:
    static kepList<kepSoundOutput> soundOutputs();
    static kepList<kepInputSource> inputSources();

    static kepList<kepSettingsCategory> settingsCategories();
    static kepList<kepQualityKeys> soundQualityKeys();
    static kepList<kepQuery> queries();

    /// The keys of connectInput's third argument.
    static kepList<kepKey> pipelineAttributeKeys();
    /// The keys of setQualityAttribute's argument, and those of its members "pipelineInfo" and
    /// "categoryInfo", which may hold more: texts of a known pipeline, and everything that it
    /// carries, are kept under whatever name they have.
    static kepList<kepKey> qualityAttributeKeys();
    static kepList<kepKey> pipelineInfoKeys();
    static kepList<kepKey> categoryInfoKeys();
    static kepList<kepRequestType> requestTypes();

    static kepList<kepControlElement> controlElements();

    static kepBuild build();
};
