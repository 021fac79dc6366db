// SPDX-License-Identifier: Apache-2.0
// What the television's delay library must supply. All operations may be called from any thread and
// answer a status, 0 for success.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "mwlparams.h"

/// The user's audio/video sync settings. The layout is shared with the closed library:
/// little-endian, 20 bytes.
struct MWL_DELAY_USER_PARAM_LIST_T {
    std::uint8_t avSync;            // 1 on, 0 off
    std::uint8_t avSyncBypassInput; // 1 on, 0 off
    std::uint8_t padding[2];
    std::int32_t avSyncSpeaker;
    std::int32_t avSyncSpdif;
    std::int32_t avSyncWisa;
    std::int32_t avSyncBtSurround;
};
static_assert(sizeof(MWL_DELAY_USER_PARAM_LIST_T) == 20);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSync) == 0);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSyncBypassInput) == 1);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSyncSpeaker) == 4);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSyncSpdif) == 8);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSyncWisa) == 12);
static_assert(offsetof(MWL_DELAY_USER_PARAM_LIST_T, avSyncBtSurround) == 16);

namespace mwl_delay
{

/// The delays between sound and picture.
class MWLDelay
{
public:
    /// The one instance of the process, valid until the process ends; never null.
    static MWLDelay* getInstance();

    /// Takes the flattened quality parameters.
    int registerQualityParams(MwlParams* parameters);
    /// Takes the attributes of the current pipeline.
    int registerAvParams(MwlParams* parameters);
    /// Initialises the delay processing.
    int setDelayInitialize();
    /// Sets the factory's audio/video sync correction.
    int setFactoryDelay(int correction);
    /// Computes and applies all delays anew for the current parameters.
    int setDelayUpdate();
    /// Sets an offset for one kind of operation.
    int setOffSetDelay(int value, const std::string& operationType);
    /// Applies the user's settings; the list is read during the call only.
    int setUserDelay(MWL_DELAY_USER_PARAM_LIST_T* settings);
};

} // namespace mwl_delay
