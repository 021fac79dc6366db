// SPDX-License-Identifier: Apache-2.0
// Start-up: the initial gains, and the worker that has the middleware read its files.
// The worker's steps do not depend on each other's results; each is skipped once the process is
// ending.
#include <chrono>
#include <ctime>
#include <system_error>

#include <pthread.h>

#include "kepcaught.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "startupworker.h"
#include "threads.h"

namespace
{

constexpr std::chrono::milliseconds kSettleTime{1000}; // lets the launching request return first
constexpr const char* kPerformanceType = "audio-output-service";

unsigned int threadId()
{
    return static_cast<unsigned int>(pthread_self());
}

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

std::vector<KEP_AUDIO_RESOURCE_T> kepTVAudio::connectedResources() const
{
    const std::lock_guard guard{threads::connectedResourcesGuard};
    return mConnectedResources;
}

void kepTVAudio::initGainAudio()
{
    KEP_INFO("INFO_LOG", "init Gain Audio");
    bool done = true;
    for (const KEP_AUDIO_RESOURCE_T resource : connectedResources()) {
        if (!write(kGainInput, {indexOf(resource), portOf(resource), kInitialGain})) {
            KEP_ERROR("CONTROL_ELEMENT_SET_ERROR", "Did not able to set the element %s", // sic
                      kGainInput.name);
            done = false; // the other resources get theirs all the same
        }
    }
    if (!writeOrLog(kGainOutput, {typeOf(KEP_AUDIO_SPK), kInitialGain}))
        return;
    if (done)
        mIsInitGainAudioUpdate = true;
    KEP_INFO("INFO_LOG", "mIsInitGainAudioUpdate value is %d", mIsInitGainAudioUpdate.load());
}

void kepTVAudio::launchStartup(const kepLogOrigin& origin)
{
    if (!mStartupConditions.contiConfigReceived || !mStartupConditions.hardwareConfigApplied ||
        !mStartupConditions.modelConfigReceived)
        return;
    mStartupConditions = {};
    KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", "Inside main Thread :: ID  = 0x%x", threadId()); // sic
    KEP_LOG_AS(origin, kLogInfo, "INFO_LOG", "startXmlParsing thread is getting created");
    try {
        StartupWorker::instance().launch([this] { startXmlParsing(); });
    } catch (const std::system_error& error) {
        KEP_LOG_AS(origin, kLogError, "ERROR_LOG", "Caught system_error: %s, code: %s",
                   error.what(), error.code().message().c_str());
    }
}

void kepTVAudio::startXmlParsing()
{
    const bool completed =
        StartupWorker::instance().sleep(kSettleTime) &&
        timed("init_delay", [this] { mPtrTVDelay->initDelayAttributes(); }) &&
        timed("parse_gain", [this] { mPtrTVGain->parseGainXML(); }) &&
        timed("parse_amplifier", [this] { mPtrTVAmplifier->parseAmplifierXML(); }) &&
        inForeignLibraries("setMuteHeadphone",
                           [this, origin = KEP_HERE] { muteHeadphoneOnColdStart(origin); }) &&
        inForeignLibraries("initGainAudio",
                           [this, origin = KEP_HERE] { retryInitialGains(origin); }) &&
        inForeignLibraries("setBroadcastSystem", [this] { setBroadcastSystem(); }) &&
        timed("init_soundEngine", [this] { mPtrTVSoundEngine->initSoundEngineAttributes(); }) &&
        timed("resetGainAttributes", [this] { mPtrTVGain->resetGainAttributes(); }) &&
        timed("resetAmplifierAttributes", [this] { mPtrTVAmplifier->resetAmplifierAttributes(); });
    if (completed)
        KEP_INFO("INFO_LOG", "XML parsing is completed and respective Thread :: ID  = 0x%x", // sic
                 threadId());
}

void kepTVAudio::muteHeadphoneOnColdStart(const kepLogOrigin& origin)
{
    if (!setMuteHeadphone(/*mute=*/true))
        return;
    KEP_LOG_AS(origin, kLogInfo, "INFO_LOG",
               "Snapshot Bootup, muting headphone to avoid noise during AC on");
    if (startUnmuteTimer(&_headphoneUnmuteAcOnCallback))
        KEP_LOG_AS(origin, kLogInfo, "INFO_LOG",
                   "Bootup, muting headphone to avoid noise. Timer is started for 5 sec");
}

void kepTVAudio::retryInitialGains(const kepLogOrigin& origin)
{
    if (mIsInitGainAudioUpdate)
        return;
    KEP_LOG_AS(
        origin, kLogInfo, "INFO_LOG",
        "Gain is setting to driver again as it failed before,mIsInitGainAudioUpdate value is %d",
        mIsInitGainAudioUpdate.load()); // sic
    initGainAudio();
}
