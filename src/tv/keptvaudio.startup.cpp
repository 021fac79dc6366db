// SPDX-License-Identifier: Apache-2.0
// Start-up: the initial gains, and the worker that has the middleware read its files.
// The worker's steps do not depend on each other's results; each is skipped once the process is
// ending.
#include <chrono>
#include <ctime>

#include "controlwrites.h"
#include "kepcaught.h"
#include "keplog.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvsoundengine.h"
#include "startupworker.h"
#include "threads.h"

namespace
{

constexpr std::chrono::milliseconds kSettleTime{1000}; // lets the launching request return first
constexpr const char* kPerformanceType = "audio-output-service";

/// Writes one line of the performance log, with the clock read anew.
void logPerformance(const char* group, const char* status)
{
    if (!kepLogAdmits(kLogInfo))
        return;
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long milliseconds = now.tv_nsec / 1'000'000;
    char clock[32];
    snprintf(clock, sizeof clock, "%ld.%03ld", now.tv_sec, milliseconds);
    const auto quoted = [](const char* text) { return '"' + std::string{text} + '"'; };
    const std::string type = quoted(kPerformanceType);
    const std::string quotedGroup = quoted(group);
    const std::string quotedStatus = quoted(status);
    const LogPair pairs[] = {
        {"CLOCK", clock},
        {"PerfType", type.c_str()},
        {"PerfGroup", quotedGroup.c_str()},
        {"status", quotedStatus.c_str()},
    };
    kepLogEmitPairs(kLogInfo, "PERFORMANCE_LOG", pairs,
                    R"({"CLOCK":%ld.%03ld,"PerfType":"%s","PerfGroup":"%s","status":"%s"} )",
                    now.tv_sec, milliseconds, kPerformanceType, group, status);
}

/// Runs a step. What it throws is logged with its name, and keeps no other step from running.
template <typename Step>
void run(const char* name, Step step)
{
    StartupWorker::instance().begin(name);
    kepGuarded(KEP_HERE.as("startXmlParsing"), name, false, [&] {
        step();
        return true;
    });
}

/// The same unless the process is ending; false when it is.
template <typename Step>
bool unlessEnding(const char* name, Step step)
{
    if (StartupWorker::instance().stopping())
        return false;
    run(name, step);
    return true;
}

/// The same between two lines of the performance log.
template <typename Step>
bool timed(const char* group, Step step)
{
    if (StartupWorker::instance().stopping())
        return false;
    logPerformance(group, "start");
    run(group, step);
    logPerformance(group, "end");
    return true;
}

/// A step that works on the driver or on GLib instead of the middleware.
template <typename Step>
bool inForeignLibraries(const char* name, Step step)
{
    return unlessEnding(name, [&] {
        const threads::InForeignLibraries inside;
        step();
    });
}

} // namespace

void kepTVAudio::initGainAudio()
{
    KEP_INFO("init Gain Audio");
    bool done = true;
    for (const KEP_AUDIO_RESOURCE_T resource : connectedResources()) {
        if (!writeElement(kGainInput, {indexOf(resource), portOf(resource), kInitialGain})) {
            KEP_ERROR("CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element %s", // sic
                      kGainInput.name);
            done = false; // the other resources get theirs all the same
        }
    }
    if (!writeOrLog(KEP_HERE, kGainOutput, {typeOf(KEP_AUDIO_SPK), kInitialGain}))
        return;
    if (done)
        mIsInitGainAudioUpdate = true;
    KEP_INFO("mIsInitGainAudioUpdate value is %d", mIsInitGainAudioUpdate.load());
}

bool kepTVAudio::beginsStartup()
{
    if (!mStartupConditions.contiConfigReceived || !mStartupConditions.hardwareConfigApplied ||
        !mStartupConditions.modelConfigReceived)
        return false;
    mStartupConditions = {};
    return true;
}

void kepTVAudio::startXmlParsing()
{
    const bool completed =
        StartupWorker::instance().sleep(kSettleTime) &&
        timed("init_delay", [this] { mPtrTVDelay->initDelayAttributes(); }) &&
        timed("parse_gain", [this] { mPtrTVGain->parseGainXML(); }) &&
        timed("parse_amplifier", [this] { mPtrTVAmplifier->parseAmplifierXML(); }) &&
        inForeignLibraries("setMuteHeadphone", [this] { muteHeadphoneOnColdStart(); }) &&
        inForeignLibraries("initGainAudio", [this] { retryInitialGains(); }) &&
        inForeignLibraries("setBroadcastSystem", [this] { setBroadcastSystem(); }) &&
        timed("init_soundEngine", [this] { mPtrTVSoundEngine->initSoundEngineAttributes(); }) &&
        timed("resetGainAttributes", [this] { mPtrTVGain->resetGainAttributes(); }) &&
        timed("resetAmplifierAttributes", [this] { mPtrTVAmplifier->resetAmplifierAttributes(); });
    if (completed)
        KEP_INFO("XML parsing is completed and respective Thread :: ID  = 0x%x", // sic
                 threads::shortId());
}

void kepTVAudio::retryInitialGains()
{
    if (mIsInitGainAudioUpdate)
        return;
    KEP_INFO_AS(
        KEP_HERE.as("startXmlParsing"),
        "Gain is setting to driver again as it failed before,mIsInitGainAudioUpdate value is %d",
        mIsInitGainAudioUpdate.load()); // sic
    initGainAudio();
}
