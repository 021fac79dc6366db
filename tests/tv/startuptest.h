// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of the start-up worker's life. The linker puts the functions of
// startuptest.cpp in front of those that the backend calls.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>

#include <glib.h>
#include <gtest/gtest.h>

#include "journal.h"
#include "threaderror.h"
#include "tvbackendtest.h"

/// A loaded machine with a sanitizer needs its time.
inline constexpr std::chrono::seconds kDeadline{60};

// --- What the wrapped functions are told, and what they do

struct Timer {
    unsigned int intervalMs;
    GSourceFunc callback;
    void* data;
    unsigned int id;

    bool operator==(const Timer&) const = default;
};

inline std::atomic<bool> gRealPause{false};      // otherwise the worker's pause ends at once
inline std::atomic<std::int64_t> gPauseMs{0};    // the last pause that was asked for
inline std::atomic<bool> gTimersFireSoon{false}; // otherwise after as long as was asked for
inline std::atomic<int> gWorksLaunched{0};
inline std::atomic<int> gWorksEnded{0};
inline std::mutex gTimersGuard;
inline std::vector<Timer> gTimers;

inline std::vector<Timer> startedTimers()
{
    const std::lock_guard lock{gTimersGuard};
    return gTimers;
}

// --- What happens, in the order in which it happens, on whatever thread

/// A message or an event as one line; of the thread that caused it.
struct Entry {
    std::thread::id thread;
    std::string text;
    std::vector<std::pair<std::string, std::string>> pairs; // of a message
    std::string clock;                                      // of a line of the performance log
};

/// Whether the text is of the form 12.345.
inline bool isClock(std::string_view text)
{
    const auto allDigits = [](std::string_view part) {
        return !part.empty() && part.find_first_not_of("0123456789") == part.npos;
    };
    const std::size_t point = text.find('.');
    return point != text.npos && allDigits(text.substr(0, point)) && point + 4 == text.size() &&
           allDigits(text.substr(point + 1));
}

/// "level id file:function text". What is different each time is left out: the line number, the
/// clock, and the number of the thread, which becomes <self> if it is that of the thread that logs.
inline Entry toEntry(const LogMessage& message)
{
    Entry entry{std::this_thread::get_id(), "", {}, ""};
    for (std::size_t i = 0; i < message.pairCount; ++i)
        entry.pairs.emplace_back(message.pairs[i].key, message.pairs[i].value);
    std::string text = message.text;
    constexpr std::string_view kClock = R"({"CLOCK":)";
    if (text.starts_with(kClock)) {
        const std::size_t end = text.find(',');
        entry.clock = text.substr(kClock.size(), end - kClock.size());
        text.replace(kClock.size(), entry.clock.size(), isClock(entry.clock) ? "<clock>" : "?");
    } else if (const std::size_t open = text.find('('), end = text.find(") ", open);
               end != std::string::npos) {
        text.erase(open, end + 1 - open);
    }
    char self[32];
    snprintf(self, sizeof self, "0x%x", static_cast<unsigned int>(pthread_self()));
    const std::size_t id = text.find(self);
    if (id != std::string::npos && id + std::string{self}.size() == text.size())
        text.replace(id, std::string::npos, "<self>");
    entry.text = std::to_string(message.level) + " " + message.id + " " + text;
    return entry;
}

inline Entry toEntry(const JValue& event)
{
    return {std::this_thread::get_id(), toldText(event), {}, ""};
}

/// Takes entries from any thread, and lets one wait for them.
class Recorder
{
public:
    void add(Entry entry)
    {
        const std::lock_guard lock{mGuard};
        mEntries.push_back(std::move(entry));
        mChanged.notify_all();
    }

    [[nodiscard]] std::vector<Entry> entries() const
    {
        const std::lock_guard lock{mGuard};
        return mEntries;
    }

    void forget()
    {
        const std::lock_guard lock{mGuard};
        mEntries.clear();
    }

    /// Waits until the text has been recorded that often; false when it has not in time.
    bool await(const std::string& text, std::ptrdiff_t times)
    {
        std::unique_lock lock{mGuard};
        return mChanged.wait_until(lock, std::chrono::system_clock::now() + kDeadline, [&] {
            return std::count_if(mEntries.begin(), mEntries.end(),
                                 [&](const Entry& entry) { return entry.text == text; }) >= times;
        });
    }

private:
    mutable std::mutex mGuard;
    std::condition_variable mChanged;
    std::vector<Entry> mEntries;
};

// --- The lines of a launch and of the worker's life

inline const std::string kCreated =
    "6 INFO_LOG keptvaudiosettings:setSoundSettings startXmlParsing thread is getting created";
inline const std::string kInMainThread =
    "6 INFO_LOG keptvaudiosettings:setSoundSettings Inside main Thread :: ID  = <self>";
inline const std::string kCompleted = "6 INFO_LOG keptvaudio:startXmlParsing XML parsing is "
                                      "completed and respective Thread :: ID  = <self>";
inline const std::string kMuted = "6 INFO_LOG keptvaudio:startXmlParsing Snapshot Bootup, muting "
                                  "headphone to avoid noise during AC on";
inline const std::string kTimerStarted = "6 INFO_LOG keptvaudio:startXmlParsing Bootup, muting "
                                         "headphone to avoid noise. Timer is started for 5 sec";
inline const std::string kRetry = "6 INFO_LOG keptvaudio:startXmlParsing Gain is setting to driver "
                                  "again as it failed before,mIsInitGainAudioUpdate value is 0";
inline const std::string kBroadcast = "6 INFO_LOG keptvaudio:setBroadcastSystem setBroadcastSystem "
                                      "broadcastSystemValue DVB";
inline const std::string kWriteError = "3 CONTROL_ELEMENT_WRITE_ERROR keptvaudio:setControlElement "
                                       "Control element write error: Input/output error";
inline const std::string kParams = R"( {"tv.zib.tvBroadcastSystem":"DVB"})";

inline std::string performance(const std::string& group, const std::string& status)
{
    return R"(6 PERFORMANCE_LOG {"CLOCK":<clock>,"PerfType":"audio-output-service","PerfGroup":")" +
           group + R"(","status":")" + status + R"("} )";
}

inline std::string headphone(const std::string& text)
{
    return "6 INFO_LOG keptvaudio:" + text;
}

/// The worker's life when nothing fails and the initial gains had been written.
inline const std::vector<std::string> kWholeLife = {
    performance("init_delay", "start"),
    "6 INFO_LOG keptvdelay:initDelayAttributes Parsing delay values from xml",
    "delay.registerQualityParams" + kParams,
    "delay.setDelayInitialize",
    performance("init_delay", "end"),
    performance("parse_gain", "start"),
    "6 INFO_LOG keptvgain:parseGainXML Calling registerQualityParams & parseGainParams for "
    "snapshot-boot",
    "gain.registerQualityParams" + kParams,
    "gain.parseGainParams",
    performance("parse_gain", "end"),
    performance("parse_amplifier", "start"),
    "6 INFO_LOG keptvamplifier:parseAmplifierXML Calling registerQualityParams & parseAmpParams for "
    "snapshot-boot",
    "amplifier.registerQualityParams" + kParams,
    "amplifier.parseAmpParams",
    performance("parse_amplifier", "end"),
    headphone("setMuteHeadphone Called setMuteHeadphone muteStatus 1"),
    headphone("setMuteHeadphone Called setMuteHeadphone mHeadphoneMuteStatus 1"),
    headphone("executeMuteHeadphone Called execute muteHeadphone muteStatus 1"),
    headphone("isValidHeadphoneMute isValidHeadphoneMute check 1 0 0"),
    "subcpu_misc_Set_HPMuteOnOff true",
    "Mute Output 16 1",
    kMuted,
    kTimerStarted,
    kBroadcast,
    "Sndout Spdif CategoryCode 12 12",
    performance("init_soundEngine", "start"),
    "soundengine.registerQualityParams" + kParams,
    "soundengine.initialize",
    performance("init_soundEngine", "end"),
    performance("resetGainAttributes", "start"),
    "6 INFO_LOG keptvgain:resetGainAttributes Calling setVolumeInit of Gain middleware library",
    "gain.setVolumeInit",
    performance("resetGainAttributes", "end"),
    performance("resetAmplifierAttributes", "start"),
    "6 INFO_LOG keptvamplifier:resetAmplifierAttributes Calling setAmpReset of amplifier middleware "
    "library",
    "amplifier.setAmpReset",
    performance("resetAmplifierAttributes", "end"),
    kCompleted,
};

inline const std::vector<std::string> kGains = {
    "6 INFO_LOG keptvaudio:initGainAudio init Gain Audio",
    "Gain Input 16 5 8388608",
    "Gain Input 16 6 8388608",
    "Gain Input 16 7 8388608",
    "Gain Output 1 8388608",
    "6 INFO_LOG keptvaudio:initGainAudio mIsInitGainAudioUpdate value is 1",
};

/// The lines with `more` put in behind the line `place`.
inline std::vector<std::string> insertedBehind(std::vector<std::string> lines,
                                               const std::string& place,
                                               const std::vector<std::string>& more)
{
    const auto found = std::find(lines.begin(), lines.end(), place);
    EXPECT_NE(found, lines.end()) << place;
    if (found != lines.end())
        lines.insert(found + 1, more.begin(), more.end());
    return lines;
}

inline std::vector<std::string> without(std::vector<std::string> lines,
                                        const std::vector<std::string>& removed)
{
    for (const std::string& line : removed)
        lines.erase(std::remove(lines.begin(), lines.end(), line), lines.end());
    return lines;
}

/// Lives until the process ends, as a worker may.
inline OpenBackend& backend()
{
    static OpenBackend instance;
    return instance;
}

class StartupTest : public TelevisionTest
{
protected:
    StartupTest()
    {
        g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);
        connectLog();
        admit(kLogInfo);
        LogSetSink(
            [recorder = mRecorder](const LogMessage& message) { recorder->add(toEntry(message)); });
        virtualtv::listen(
            [recorder = mRecorder](const JValue& event) { recorder->add(toEntry(event)); });
    }

    ~StartupTest() override { clearInjections(); }

    void start()
    {
        backend().initAudio();
        mRecorder->forget();
    }

    unsigned int settings(const std::string& category, const std::string& payload = "{}")
    {
        return backend().setSettings(category, json(payload));
    }

    /// Completes the conditions, with only the broadcast system named.
    void launch()
    {
        EXPECT_EQ(settings("contiConfig"), kDone);
        EXPECT_EQ(settings("hardwareConfig"), kDone);
        EXPECT_EQ(settings("modelConfig", R"({"tv.zib.tvBroadcastSystem":"DVB"})"), kDone);
    }

    /// One whole life of a worker; what it did.
    std::vector<std::string> live()
    {
        mRecorder->forget();
        launch();
        EXPECT_TRUE(mRecorder->await(kCompleted, 1));
        return workerDid();
    }

    [[nodiscard]] std::ptrdiff_t launches() const { return count(kCreated); }

    [[nodiscard]] std::ptrdiff_t count(const std::string& text) const
    {
        const std::vector<Entry> all = mRecorder->entries();
        return std::count_if(all.begin(), all.end(),
                             [&](const Entry& entry) { return entry.text == text; });
    }

    [[nodiscard]] std::vector<std::string> workerDid() const
    {
        return did([](const Entry& entry) { return entry.thread != std::this_thread::get_id(); });
    }
    [[nodiscard]] std::vector<std::string> callerDid() const
    {
        return did([](const Entry& entry) { return entry.thread == std::this_thread::get_id(); });
    }

    /// Takes a pending timer away, as if none had ever been started.
    static void cancelTimer()
    {
        if (const unsigned int id = OpenBackend::mHeadphoneUnmuteTimerID.exchange(0); id != 0)
            g_source_remove(id);
    }

    std::shared_ptr<Recorder> mRecorder = std::make_shared<Recorder>();

private:
    [[nodiscard]] std::vector<std::string>
    did(const std::function<bool(const Entry&)>& counts) const
    {
        std::vector<std::string> lines;
        for (const Entry& entry : mRecorder->entries())
            if (counts(entry))
                lines.push_back(entry.text);
        return lines;
    }
};

using StartupConditions = StartupTest;
using StartupLaunch = StartupTest;
using StartupSequence = StartupTest;
using StartupGains = StartupTest;
using ColdStartTimer = StartupTest;
using StartupStorm = StartupTest;
