// SPDX-License-Identifier: Apache-2.0
// Writes of the television's control elements: the compiler counts the integers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "controlelements.h"
#include "kepaudiotypes.h"
#include "keplog.h"
#include "keptvaudio.h"

// What writes are made of, as the 32-bit integers that the elements hold.

inline std::int32_t typeOf(KEP_AUDIO_SNDOUT_T output)
{
    return static_cast<std::int32_t>(kepTVAudio::getSoundOutputCommonType(output));
}

inline std::int32_t indexOf(KEP_AUDIO_RESOURCE_T resource)
{
    return static_cast<std::int32_t>(kepTVAudio::audioResourceIdToIndex(resource));
}

inline std::int32_t portOf(KEP_AUDIO_RESOURCE_T resource)
{
    return kepTVAudio::audioResourceIdToPort(resource);
}

/// What kepTVAudio::setControlElement does, for a name that needs no string of its own.
bool setControlElement(const char* name, const std::int32_t* values, int count);

/// Writes an element with exactly its number of integers.
template <std::size_t Count>
bool writeElement(const ControlElement<Count>& element, const std::int32_t (&values)[Count])
{
    return setControlElement(element.name, values, static_cast<int>(Count));
}

/// Logs that an element could not be written; `suffix` says where, after a blank.
void logWriteFailure(kepLogOrigin origin, const char* element, const char* suffix);

/// Writes an element, with the failure logged.
template <std::size_t Count>
bool writeOrLog(kepLogOrigin origin, const ControlElement<Count>& element,
                const std::int32_t (&values)[Count], const char* suffix = "")
{
    if (writeElement(element, values))
        return true;
    logWriteFailure(origin, element.name, suffix);
    return false;
}
