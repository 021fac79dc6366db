// SPDX-License-Identifier: Apache-2.0
// The adapter of the delay middleware.
#pragma once

#include "jvalue.h"
#include "kepcatalogue.h"
#include "mwldelay.h"

/// Keeps audio in step with video. False when a middleware call failed, which is then logged with
/// "DELAY_MWL_ERROR". `initDelay` comes before all others. Delays are in the middleware's units.
/// Any thread for what the start-up worker calls (`initDelayAttributes`), the caller's for the
/// rest.
class kepTVDelay
{
public:
    static kepTVDelay* getInstance();
    /// The keys of a quality payload that this adapter reads.
    static kepList<kepKey> qualityKeys();

    // --- Start-up

    /// Takes hold of the middleware; always true.
    bool initDelay();
    /// Registers the quality parameters, then initialises the middleware, whatever came of the
    /// first.
    bool initDelayAttributes();

    // --- Pipelines and outputs

    /// Has all delays computed anew.
    bool updateDelayValues();
    /// Registers the current pipeline, then has all delays computed anew.
    bool registerAudioVideoInfo();

    // --- Settings

    /// Sets the factory's correction.
    bool setAudioVideoSync(int value);
    /// Sets "offsetValue" for "operationType"; false without a log line when one of them is
    /// missing.
    bool setOffsetDelay(JValue settings);
    /// Takes the delays over into the user's list; "supportATMOS", "soundMode" and
    /// "virtualSurround" have all delays computed anew.
    void updateUserDelayValues(JValue settings);
    /// The same with the two switches, and hands the list to the middleware when the settings touch
    /// it.
    void setDelaySettings(JValue settings);

private:
    kepTVDelay() = default;

    mwl_delay::MWLDelay* mPtrDelayInstance = nullptr; // set once, read by the worker, too
    MWL_DELAY_USER_PARAM_LIST_T mUserDelays{};        // accumulates the user's settings
};
