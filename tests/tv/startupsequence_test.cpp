// SPDX-License-Identifier: Apache-2.0
// The start-up worker at work: when it is launched, what it does in which order, and what a failed
// step changes. The linker puts the functions below in front of its pause, of GLib's timers and of
// the making of threads.
#include "keptvaudio.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "keplog.h"
#include "startupworker.h"
#include "tvbackendtest.h"

namespace
{

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::chrono::seconds kDeadline{60}; // a loaded machine with a sanitizer needs its time

// --- What the wrapped functions are told, and what they do

struct Timer {
    unsigned int intervalMs;
    GSourceFunc callback;
    void* data;
    unsigned int id;

    bool operator==(const Timer&) const = default;
};

std::atomic<bool> gRealPause{false};      // otherwise the worker's pause ends at once
std::atomic<std::int64_t> gPauseMs{0};    // the last pause that was asked for
std::atomic<bool> gTimersFireSoon{false}; // otherwise after as long as was asked for
std::atomic<int> gThreadError{0};         // of the next threads to be made
std::atomic<int> gWorksLaunched{0};
std::atomic<int> gWorksEnded{0};
std::mutex gTimersGuard;
std::vector<Timer> gTimers;

std::vector<Timer> startedTimers()
{
    const std::lock_guard lock{gTimersGuard};
    return gTimers;
}

} // namespace

extern "C" {
bool __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds duration);
void __real__ZN13StartupWorker6launchESt8functionIFvvEE(StartupWorker* worker,
                                                        std::function<void()> work);
guint __real_g_timeout_add(guint intervalMs, GSourceFunc callback, gpointer data);

bool __wrap__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
    StartupWorker* worker, milliseconds duration)
{
    gPauseMs = duration.count();
    return __real__ZN13StartupWorker5sleepENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE(
        worker, gRealPause ? duration : milliseconds{0});
}

void __wrap__ZN13StartupWorker6launchESt8functionIFvvEE(StartupWorker* worker,
                                                        std::function<void()> work)
{
    ++gWorksLaunched;
    __real__ZN13StartupWorker6launchESt8functionIFvvEE(worker, [work] {
        work();
        ++gWorksEnded;
    });
}

guint __wrap_g_timeout_add(guint intervalMs, GSourceFunc callback, gpointer data)
{
    const guint id = __real_g_timeout_add(gTimersFireSoon ? 1 : intervalMs, callback, data);
    const std::lock_guard lock{gTimersGuard};
    gTimers.push_back({intervalMs, callback, data, id});
    return id;
}

// Called by the C++ library, so the linker cannot wrap it; the program's own one is found first.
[[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                  const pthread_attr_t* attributes,
                                                  void* (*start)(void*), void* argument) noexcept
{
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto real = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return gThreadError != 0 ? gThreadError.load() : real(thread, attributes, start, argument);
}
}

namespace
{

// --- What happens, in the order in which it happens, on whatever thread

/// A message or an event as one line; of the thread that caused it.
struct Entry {
    std::thread::id thread;
    std::string text;
    std::vector<std::pair<std::string, std::string>> pairs; // of a message
    std::string clock;                                      // of a line of the performance log
};

/// Whether the text is of the form 12.345.
bool isClock(std::string_view text)
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
Entry toEntry(const LogMessage& message)
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

/// "Gain Output 1 8388608", "gain.setVolumeInit", with " -> status" when that is not 0.
Entry toEntry(const JValue& event)
{
    const std::string library = event["library"].asString();
    std::string text = library + (library.empty() ? "" : ".");
    for (const char* name : {"element", "stage", "operation", "line"})
        text += event[name].asString();
    for (const char* values : {"values", "args"})
        for (const JValue& value : event[values].elements())
            text += " " + value.stringify();
    if (const int status = event["status"].asNumber<int>(); status != 0)
        text += " -> " + std::to_string(status);
    return {std::this_thread::get_id(), text, {}, ""};
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

const std::string kCreated =
    "6 INFO_LOG keptvaudiosettings:setSoundSettings startXmlParsing thread is getting created";
const std::string kInMainThread =
    "6 INFO_LOG keptvaudiosettings:setSoundSettings Inside main Thread :: ID  = <self>";
const std::string kCompleted = "6 INFO_LOG keptvaudio:startXmlParsing XML parsing is "
                               "completed and respective Thread :: ID  = <self>";
const std::string kMuted = "6 INFO_LOG keptvaudio:startXmlParsing Snapshot Bootup, muting "
                           "headphone to avoid noise during AC on";
const std::string kTimerStarted = "6 INFO_LOG keptvaudio:startXmlParsing Bootup, muting "
                                  "headphone to avoid noise. Timer is started for 5 sec";
const std::string kRetry = "6 INFO_LOG keptvaudio:startXmlParsing Gain is setting to driver "
                           "again as it failed before,mIsInitGainAudioUpdate value is 0";
const std::string kBroadcast = "6 INFO_LOG keptvaudio:setBroadcastSystem setBroadcastSystem "
                               "broadcastSystemValue DVB";
const std::string kWriteError = "3 CONTROL_ELEMENT_WRITE_ERROR keptvaudio:setControlElement "
                                "Control element write error: Input/output error";
const std::string kParams = R"( {"tv.zib.tvBroadcastSystem":"DVB"})";

std::string performance(const std::string& group, const std::string& status)
{
    return R"(6 PERFORMANCE_LOG {"CLOCK":<clock>,"PerfType":"audio-output-service","PerfGroup":")" +
           group + R"(","status":")" + status + R"("} )";
}

std::string headphone(const std::string& text)
{
    return "6 INFO_LOG keptvaudio:" + text;
}

/// The worker's life when nothing fails and the initial gains had been written.
const std::vector<std::string> kWholeLife = {
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

const std::vector<std::string> kGains = {
    "6 INFO_LOG keptvaudio:initGainAudio init Gain Audio",
    "Gain Input 16 5 8388608",
    "Gain Input 16 6 8388608",
    "Gain Input 16 7 8388608",
    "Gain Output 1 8388608",
    "6 INFO_LOG keptvaudio:initGainAudio mIsInitGainAudioUpdate value is 1",
};

/// The lines with `more` put in behind the line `place`.
std::vector<std::string> insertedBehind(std::vector<std::string> lines, const std::string& place,
                                        const std::vector<std::string>& more)
{
    const auto found = std::find(lines.begin(), lines.end(), place);
    EXPECT_NE(found, lines.end()) << place;
    if (found != lines.end())
        lines.insert(found + 1, more.begin(), more.end());
    return lines;
}

std::vector<std::string> without(std::vector<std::string> lines,
                                 const std::vector<std::string>& removed)
{
    for (const std::string& line : removed)
        lines.erase(std::remove(lines.begin(), lines.end(), line), lines.end());
    return lines;
}

/// Lives until the process ends, as a worker may.
OpenBackend& backend()
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

} // namespace

// --- The conditions

TEST_F(StartupConditions, LaunchOnceInEveryOrderThatDoesNotEndWithTheHardware)
{
    start();
    std::vector<std::string> order = {"contiConfig", "hardwareConfig", "modelConfig"};
    std::ptrdiff_t expected = 0;
    do {
        for (int round = 0; round < 2; ++round) { // the second shows that all three were cleared
            settings(order[0]);
            settings(order[1]);
            EXPECT_EQ(launches(), expected) << order[0] << ", " << order[1];
            settings(order[2]);
            if (order[2] == "hardwareConfig") {
                EXPECT_EQ(launches(), expected) << "started by the hardware";
                settings("sound");
            }
            EXPECT_EQ(launches(), ++expected) << order[0] << ", " << order[1] << ", " << order[2];
            settings("sound");
            settings("smartSoundMode");
            EXPECT_EQ(launches(), expected) << "launched again by the same set";
        }
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(expected, 12);
    EXPECT_TRUE(mRecorder->await(kCompleted, expected));
    EXPECT_EQ(count(performance("init_delay", "start")), expected);
}

TEST_F(StartupConditions, CompletedByTheHardwareLaunchWithTheNextSoundSetting)
{
    start();
    std::ptrdiff_t expected = 0;
    for (const char* next : {"sound", "modelConfig", "contiConfig", "smartSoundMode"}) {
        settings("contiConfig");
        settings("modelConfig");
        settings("hardwareConfig");
        for (const char* other :
             {"option", "picture", "dimension", "other", "groupCodeConfig", "zibConfig"})
            settings(other);
        EXPECT_EQ(launches(), expected) << next;
        EXPECT_EQ(settings(next), kDone);
        EXPECT_EQ(launches(), ++expected) << next;
    }
    EXPECT_TRUE(mRecorder->await(kCompleted, expected));
}

TEST_F(StartupConditions, AreNotMetByTheSameCategoryAgain)
{
    start();
    for (const char* pair : {"contiConfig", "modelConfig", "hardwareConfig"})
        for (int i = 0; i < 3; ++i)
            settings(pair);
    EXPECT_EQ(launches(), 0); // ends with the hardware
    settings("sound");
    EXPECT_EQ(launches(), 1);
    for (const char* category : {"hardwareConfig", "hardwareConfig", "contiConfig", "contiConfig",
                                 "sound", "smartSoundMode"})
        settings(category);
    EXPECT_EQ(launches(), 1);
    EXPECT_TRUE(mRecorder->await(kCompleted, 1));
}

TEST_F(StartupConditions, LoseTheSecondOneToAHardwareConfigThatFails)
{
    start();
    for (const char* payload : {"[]", "\"tv\"", "5", "null"}) {
        mRecorder->forget();
        EXPECT_EQ(settings("hardwareConfig"), kDone);
        EXPECT_EQ(settings("hardwareConfig", payload), kFailed);
        settings("contiConfig");
        settings("modelConfig");
        settings("sound");
        EXPECT_EQ(launches(), 0) << payload;
        settings("hardwareConfig");
        settings("sound");
        EXPECT_EQ(launches(), 1) << payload;
        EXPECT_TRUE(mRecorder->await(kCompleted, 1));
    }
}

TEST_F(StartupConditions, AreMetByAHardwareConfigWhateverBecomesOfItsCountry)
{
    start();
    constexpr const char* kKorea = R"({"tv.hw.countryType":"KR"})";
    constexpr const char* kJapan = R"({"tv.hw.countryType":"JP"})";
    for (const char* payload : {"{}", kKorea, kKorea, kJapan, R"({"another":"one"})"}) {
        mRecorder->forget();
        settings("contiConfig");
        settings("modelConfig");
        EXPECT_EQ(settings("hardwareConfig", payload), kDone);
        settings("sound");
        EXPECT_EQ(launches(), 1) << payload;
        EXPECT_TRUE(mRecorder->await(kCompleted, 1));
    }
    mRecorder->forget();
    settings("contiConfig");
    settings("modelConfig");
    injectCard("write", -EIO, "Sndout Spdif OutputType");
    EXPECT_EQ(settings("hardwareConfig", kKorea), kDone);
    EXPECT_EQ(count("Sndout Spdif OutputType 1 1 -> -5") +
                  count("3 SET_SOUNDOUTPUT_DIGITAL_ERROR keptvaudiosettings:setHwConfig failed to "
                        "set SoundOutput Digital pcm"),
              2);
    settings("sound");
    EXPECT_EQ(launches(), 1) << "the driver refused the new mode";
    EXPECT_TRUE(mRecorder->await(kCompleted, 1));
}

TEST_F(StartupConditions, AreMetByPayloadsThatAreNoObjects)
{
    start();
    settings("hardwareConfig");
    settings("contiConfig", "[]");
    settings("modelConfig", "null");
    EXPECT_EQ(launches(), 1);
    EXPECT_TRUE(mRecorder->await(kCompleted, 1));
}

// --- The launch

TEST_F(StartupLaunch, StandsBetweenFlatteningAndApplyingThePayload)
{
    start();
    admit(kLogDebug);
    settings("hardwareConfig");
    settings("modelConfig");
    mRecorder->forget();
    for (const char* category : {"contiConfig", "smartSoundMode"}) {
        EXPECT_EQ(settings(category, R"({"tv.zib.tvBroadcastSystem":"ARIB","soundMode":"movie"})"),
                  kDone);
        EXPECT_TRUE(mRecorder->await(kCompleted, 1));
        std::vector<std::string> lines = callerDid();
        ASSERT_THAT(lines, SizeIs(testing::Ge(7U)));
        lines.erase(lines.begin(), lines.begin() + 2); // of the request, and of the category
        lines.resize(5);
        EXPECT_THAT(lines,
                    ElementsAre("7  keptvparser:storeParameters store Parameters key: "
                                "tv.zib.tvBroadcastSystem value: \"ARIB\"",
                                "7  keptvparser:storeParameters store Parameters key: soundMode "
                                "value: \"movie\"",
                                kInMainThread, kCreated, "soundengine.setSoundMode \"movie\""));
        // The worker is given what the launching payload brought.
        EXPECT_EQ(count(R"(delay.registerQualityParams {"soundMode":"movie",)"
                        R"("tv.zib.tvBroadcastSystem":"ARIB"})"),
                  1);
        mRecorder->forget();
        settings("contiConfig");
        settings("modelConfig");
        settings("hardwareConfig");
        mRecorder->forget();
    }
}

TEST_F(StartupLaunch, ThatGetsNoThreadIsLoggedAndTheSettingsAreAppliedAllTheSame)
{
    start();
    settings("hardwareConfig");
    settings("contiConfig");
    mRecorder->forget();
    gThreadError = EAGAIN;
    EXPECT_EQ(settings("modelConfig", R"({"soundMode":"movie"})"), kDone);
    gThreadError = 0;
    std::vector<std::string> lines = callerDid();
    ASSERT_THAT(lines, SizeIs(testing::Ge(6U)));
    lines.erase(lines.begin(), lines.begin() + 2);
    lines.resize(4);
    EXPECT_THAT(lines,
                ElementsAre(kInMainThread, kCreated,
                            "3 ERROR_LOG keptvaudiosettings:setSoundSettings Caught system_error: "
                            "Resource temporarily unavailable, code: Resource temporarily "
                            "unavailable",
                            "soundengine.setSoundMode \"movie\""));
    EXPECT_THAT(workerDid(), IsEmpty());

    settings("sound"); // the set is used up
    EXPECT_EQ(launches(), 1);
    cancelTimer();
    live();
    EXPECT_EQ(launches(), 1);
}

TEST_F(StartupLaunch, ThatIsNotAdmittedToTheLogDoesItsWorkSilently)
{
    start();
    admit(kLogError);
    launch();
    EXPECT_TRUE(mRecorder->await("amplifier.setAmpReset", 1));
    std::vector<std::string> told;
    for (const std::string& line : kWholeLife)
        if (line.front() != '6')
            told.push_back(line);
    EXPECT_EQ(workerDid(), told);
}

// --- The sequence

TEST_F(StartupSequence, GoesThroughAllStepsInOrder)
{
    start();
    EXPECT_THAT(live(), ElementsAreArray(kWholeLife));
    EXPECT_EQ(gPauseMs, 1000);
}

TEST_F(StartupSequence, HasTwelvePerformanceLinesWithFourPairsEach)
{
    start();
    live();
    std::vector<Entry> lines = mRecorder->entries();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const Entry& entry) { return entry.clock.empty(); }),
                lines.end());
    ASSERT_THAT(lines, SizeIs(12));
    constexpr const char* kGroups[] = {"init_delay",          "parse_gain",
                                       "parse_amplifier",     "init_soundEngine",
                                       "resetGainAttributes", "resetAmplifierAttributes"};
    std::string earlier = "0.000";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Entry& line = lines[i];
        const std::string group = kGroups[i / 2];
        const std::string status = i % 2 == 0 ? "start" : "end";
        EXPECT_EQ(line.text, performance(group, status));
        EXPECT_THAT(line.pairs, ElementsAre(testing::Pair("CLOCK", line.clock),
                                            testing::Pair("PerfType", "\"audio-output-service\""),
                                            testing::Pair("PerfGroup", '"' + group + '"'),
                                            testing::Pair("status", '"' + status + '"')));
        EXPECT_LE(std::stod(earlier), std::stod(line.clock));
        earlier = line.clock;
    }
}

TEST_F(StartupSequence, ReadsTheClockAnewForEveryLine)
{
    start();
    // Steps that take 20 ms each: what a line says must lie on its own side of the step.
    virtualtv::listen([recorder = mRecorder](const JValue& event) {
        Entry entry = toEntry(event);
        if (entry.text == "gain.parseGainParams" ||
            entry.text == "subcpu_misc_Set_HPMuteOnOff true")
            g_usleep(20'000);
        recorder->add(std::move(entry));
    });
    live();
    const auto clockOf = [this](const std::string& group, const std::string& status) {
        for (const Entry& entry : mRecorder->entries())
            if (entry.text == performance(group, status))
                return std::stod(entry.clock);
        return 0.0;
    };
    EXPECT_GE(clockOf("parse_gain", "end") - clockOf("parse_gain", "start"), 0.019);
    EXPECT_GE(clockOf("init_soundEngine", "start") - clockOf("parse_amplifier", "end"), 0.019);
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const double end = clockOf("resetAmplifierAttributes", "end");
    EXPECT_LE(end, static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9);
    EXPECT_GE(end, static_cast<double>(now.tv_sec) - kDeadline.count());
}

TEST_F(StartupSequence, BeginsASecondAfterTheLaunchWhateverSignalsArrive)
{
    start();
    gRealPause = true;
    struct sigaction ignoring = {};
    ignoring.sa_handler = [](int) {}; // without SA_RESTART: calls are interrupted
    sigaction(SIGUSR1, &ignoring, nullptr);
    timespec before = {};
    clock_gettime(CLOCK_MONOTONIC, &before);
    launch();
    EXPECT_THAT(workerDid(), IsEmpty()); // the settings call has returned first
    const pid_t self = static_cast<pid_t>(syscall(SYS_gettid));
    for (const auto& task : std::filesystem::directory_iterator{"/proc/self/task"})
        if (const int other = std::stoi(task.path().filename()); other != self)
            syscall(SYS_tgkill, getpid(), other, SIGUSR1);
    ASSERT_TRUE(mRecorder->await(kCompleted, 1));
    EXPECT_THAT(workerDid(), ElementsAreArray(kWholeLife));
    for (const Entry& entry : mRecorder->entries())
        if (entry.text == performance("init_delay", "start")) {
            const double launched =
                static_cast<double>(before.tv_sec) + static_cast<double>(before.tv_nsec) / 1e9;
            EXPECT_GE(std::stod(entry.clock) - launched, 0.999); // the line cuts off microseconds
        }
}

TEST_F(StartupSequence, GoesOnWithEveryLaterStepWhenOneFails)
{
    struct Row {
        virtualtv::FaultPoint point;
        std::string name;
        int status;
        std::string call; // in the whole life
        std::vector<std::string> errors;
        std::vector<std::string> missing = {};
    };
    using virtualtv::FaultPoint;
    const std::vector<std::string> bootup = {kMuted, kTimerStarted};
    const auto middleware = [](const std::string& operation, const std::string& error) {
        const bool registers = operation.find(".register") != std::string::npos;
        return Row{FaultPoint::Middleware,
                   operation,
                   7,
                   operation + (registers ? kParams : ""),
                   {"3 " + error}};
    };
    const std::vector<Row> rows = {
        middleware("delay.registerQualityParams",
                   "DELAY_MWL_ERROR keptvdelay:initDelayAttributes Failed to register quality "
                   "parameters"),
        middleware("delay.setDelayInitialize",
                   "DELAY_MWL_ERROR keptvdelay:initDelayAttributes Failed to initilize delay "
                   "middleware API"),
        middleware("gain.registerQualityParams",
                   "GAIN_MWL_ERROR keptvgain:parseGainXML Failed to register quality parameters in "
                   "parseGainXML"),
        middleware("gain.parseGainParams",
                   "GAIN_MWL_ERROR keptvgain:parseGainXML Failed to call parseGainParams"),
        middleware(
            "amplifier.registerQualityParams",
            "AMPLIFIER_MWL_ERROR keptvamplifier:parseAmplifierXML Failed to register quality "
            "parameters in parseAmplifierXML"),
        middleware("amplifier.parseAmpParams", "AMPLIFIER_MWL_ERROR keptvamplifier:"
                                               "parseAmplifierXML Failed to call parseAmpParams"),
        {FaultPoint::SubMicro,
         "subcpu_misc_Set_HPMuteOnOff",
         7,
         "subcpu_misc_Set_HPMuteOnOff true",
         {"3 SUBCPU_ERROR keptvaudio:executeMuteHeadphone Failed to set headphone mute "
          "status 1"},
         bootup},
        {FaultPoint::CardWrite,
         "Mute Output",
         -EIO,
         "Mute Output 16 1",
         {kWriteError, "3 CONTROL_ELEMENT_SET_ERROR keptvaudio:setMuteControlElement Did not "
                       "able to set the element: Mute Output on 32"},
         bootup},
        {FaultPoint::CardWrite,
         "Sndout Spdif CategoryCode",
         -EIO,
         "Sndout Spdif CategoryCode 12 12",
         {kWriteError, "3 CONTROL_ELEMENT_SET_ERROR keptvaudio:setBroadcastSystem Did not "
                       "able to set the element: Sndout Spdif CategoryCode"}},
        middleware("soundengine.registerQualityParams",
                   "SOUND_ENGINE_MWL_ERROR keptvsoundengine:initSoundEngineAttributes Failed to "
                   "register quality Parameters for sound engine instance"),
        middleware("soundengine.initialize",
                   "SOUND_ENGINE_MWL_ERROR keptvsoundengine:initSoundEngineAttributes Failed to "
                   "initialize for sound engine instance"),
        middleware("gain.setVolumeInit",
                   "GAIN_MWL_ERROR keptvgain:resetGainAttributes Failed to call setVolumeInit"),
        middleware("amplifier.setAmpReset", "AMPLIFIER_MWL_ERROR keptvamplifier:"
                                            "resetAmplifierAttributes Failed to call setAmpReset"),
    };
    start();
    for (const Row& row : rows) {
        const std::size_t timersBefore = startedTimers().size();
        virtualtv::inject({row.point, row.name, "", row.status, {}});
        std::vector<std::string> expected =
            without(insertedBehind(kWholeLife, row.call, row.errors), row.missing);
        std::replace(expected.begin(), expected.end(), row.call,
                     row.call + " -> " + std::to_string(row.status));
        EXPECT_EQ(live(), expected) << row.name;
        EXPECT_EQ(startedTimers().size() - timersBefore, row.missing.empty() ? 1U : 0U) << row.name;
        EXPECT_EQ(OpenBackend::mHeadphoneUnmuteTimerID != 0, row.missing.empty()) << row.name;
        clearInjections();
        cancelTimer();
    }
}

TEST_F(StartupSequence, GoesToItsEndWhenEverythingFails)
{
    start();
    for (const auto point : {virtualtv::FaultPoint::Middleware, virtualtv::FaultPoint::SubMicro})
        virtualtv::inject({point, "*", "", 7, {}});
    injectCard("open", -ENODEV);
    live();
    const std::vector<std::string> told = {
        "delay.registerQualityParams" + kParams,
        "delay.setDelayInitialize",
        "gain.registerQualityParams" + kParams,
        "gain.parseGainParams",
        "amplifier.registerQualityParams" + kParams,
        "amplifier.parseAmpParams",
        "subcpu_misc_Set_HPMuteOnOff true",
        "soundengine.registerQualityParams" + kParams,
        "soundengine.initialize",
        "gain.setVolumeInit",
        "amplifier.setAmpReset",
    };
    for (const std::string& call : told)
        EXPECT_EQ(count(call + " -> 7"), 1) << call;
    EXPECT_EQ(count("3 CONTROL_HANDLE_OPEN_ERROR keptvaudio:setControlElement Control hw:0 "
                    "open error: No such device"),
              2);
    EXPECT_THAT(startedTimers(), IsEmpty());
}

TEST_F(StartupSequence, ReportsABroadcastSystemThatNobodyNamed)
{
    start();
    settings("contiConfig");
    settings("hardwareConfig");
    mRecorder->forget();
    settings("modelConfig");
    ASSERT_TRUE(mRecorder->await(kCompleted, 1));
    std::vector<std::string> expected = kWholeLife;
    for (std::string& line : expected) {
        if (line.size() > kParams.size() && line.ends_with(kParams))
            line = line.substr(0, line.size() - kParams.size()) + " {}";
        if (line == kBroadcast)
            line = "3 INVALID_PARAMETER keptvaudio:setBroadcastSystem "
                   "tv.zib.tvBroadcastSystem is not available. Failed to set Broadcast System";
    }
    EXPECT_EQ(workerDid(), without(expected, {"Sndout Spdif CategoryCode 12 12"}));
}

// --- The gains that could not be written before

TEST_F(StartupGains, AreWrittenAgainWhenTheFirstOnesFailed)
{
    for (const char* element : {"Gain Input", "Gain Output"}) {
        backend().deinitAudio();
        backend().mIsInitGainAudioUpdate = false;
        virtualtv::inject({virtualtv::FaultPoint::CardWrite, element, "", -EIO, 1});
        start();
        clearInjections();
        std::vector<std::string> more = {kRetry};
        more.insert(more.end(), kGains.begin(), kGains.end());
        EXPECT_EQ(live(), insertedBehind(kWholeLife, kTimerStarted, more)) << element;
        cancelTimer();
        EXPECT_EQ(live(), kWholeLife) << element << ", which has been written now";
        cancelTimer();
    }
}

TEST_F(StartupGains, AreTriedByEachLifeUntilTheyAreWritten)
{
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Input", "", -EIO, 1});
    start();
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Input", "", -EIO, 1});
    std::vector<std::string> more = {kRetry};
    more.insert(more.end(), kGains.begin(), kGains.end());
    more[2] += " -> -5";
    more.insert(more.begin() + 3, {kWriteError, "3 CONTROL_ELEMENT_SET_ERROR "
                                                "keptvaudio:initGainAudio Did not able to "
                                                "set the element Gain Input"});
    more.back().back() = '0';
    EXPECT_EQ(live(), insertedBehind(kWholeLife, kTimerStarted, more));
    cancelTimer();
    live();
    EXPECT_EQ(count(kRetry), 1);
    EXPECT_TRUE(backend().mIsInitGainAudioUpdate);
}

TEST_F(StartupGains, AreThoseOfAllThatIsConnectedByThen)
{
    virtualtv::inject({virtualtv::FaultPoint::CardWrite, "Gain Output", "", -EIO, 1});
    start();
    EXPECT_EQ(backend().setSoundOutput("tv_speaker"), kDone);
    EXPECT_EQ(backend().connectInput("ADEC1", "MAIN", JValue::object()), kDone);
    std::vector<std::string> gains;
    for (const std::string& line : live())
        if (line.starts_with("Gain "))
            gains.push_back(line);
    EXPECT_THAT(gains, ElementsAre("Gain Input 16 5 8388608", "Gain Input 16 6 8388608",
                                   "Gain Input 16 7 8388608", "Gain Input 1 1 8388608",
                                   "Gain Output 1 8388608"));
}

// --- The timer of the cold start

TEST_F(ColdStartTimer, IsOneOfFiveSecondsForThisBackend)
{
    start();
    live();
    const std::vector<Timer> timers = startedTimers();
    ASSERT_THAT(timers, SizeIs(1));
    EXPECT_EQ(timers[0].intervalMs, 5000U);
    EXPECT_EQ(timers[0].callback, &kepTVAudio::_headphoneUnmuteAcOnCallback);
    EXPECT_EQ(timers[0].data, static_cast<kepTVAudio*>(&backend()));
    EXPECT_EQ(OpenBackend::mHeadphoneUnmuteTimerID, timers[0].id);
    EXPECT_FALSE(OpenBackend::mHeadphoneTimerMuteDone);
    EXPECT_EQ(backend().setSettings("headphoneDetectionMute", json(R"({"mute":false})")), kDone);
    EXPECT_EQ(
        count(headphone("setHeadphoneDetectionMute To avoid noise Headphone timer is running, "
                        "so skip headphone unmute")),
        1);
}

TEST_F(ColdStartTimer, IsNotStartedWhileOneIsPending)
{
    start();
    live();
    EXPECT_EQ(live(), without(kWholeLife, {kTimerStarted}));
    EXPECT_THAT(startedTimers(), SizeIs(1));
    cancelTimer();

    // Whoever has started it.
    OpenBackend::mHeadphoneUnmuteTimerID = 4711;
    EXPECT_EQ(live(), without(kWholeLife, {kTimerStarted}));
    EXPECT_EQ(OpenBackend::mHeadphoneUnmuteTimerID, 4711U);
    EXPECT_THAT(startedTimers(), SizeIs(1));
    OpenBackend::mHeadphoneUnmuteTimerID = 0;
}

TEST_F(ColdStartTimer, UnmutesTheHeadphoneThatIsCurrentWhenItFires)
{
    const std::vector<std::string> fired = {
        headphone("_headphoneUnmuteAcOnCallback In _headphoneUnmuteAcOnCallback"),
        headphone("_headphoneUnmuteAcOnCallback Headphone Unmute Timer will be removed during AC "
                  "On"),
    };
    const std::vector<std::string> unmuted = {
        headphone("setMuteHeadphone Called setMuteHeadphone muteStatus 0"),
        headphone("setMuteHeadphone Called setMuteHeadphone mHeadphoneMuteStatus 0"),
        headphone("executeMuteHeadphone Called execute muteHeadphone muteStatus 0"),
        headphone("isValidHeadphoneMute isValidHeadphoneMute check 0 0 0"),
        "subcpu_misc_Set_HPMuteOnOff false",
        "Mute Output 16 0",
    };
    gTimersFireSoon = true;
    start();
    for (const KEP_AUDIO_SNDOUT_T output :
         {KEP_AUDIO_SPK, KEP_AUDIO_HP, KEP_AUDIO_SPK_HP, KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_ARC}) {
        const bool unmutes = output == KEP_AUDIO_HP || output == KEP_AUDIO_SPK_HP;
        OpenBackend::mHeadphoneTimerMuteDone = false;
        backend().mCurrentSoundout = output;
        live();
        mRecorder->forget();
        const auto end = std::chrono::steady_clock::now() + kDeadline;
        while (OpenBackend::mHeadphoneUnmuteTimerID != 0 && std::chrono::steady_clock::now() < end)
            g_main_context_iteration(nullptr, /*may_block=*/FALSE);
        std::vector<std::string> expected = fired;
        if (unmutes)
            expected.insert(expected.end(), unmuted.begin(), unmuted.end());
        EXPECT_EQ(callerDid(), expected) << output;
        EXPECT_TRUE(OpenBackend::mHeadphoneTimerMuteDone);
        EXPECT_EQ(backend().getMuteHeadphone(), !unmutes);
        for (const Timer& timer : startedTimers())
            EXPECT_EQ(g_main_context_find_source_by_id(nullptr, timer.id), nullptr);
    }
}

// --- Beside the caller

namespace
{

/// All kinds of requests, thousands in all, while one worker after the other goes through its life.
void storm(int lives)
{
    struct Request {
        const char* category;
        const char* payload;
    };
    constexpr Request kRequests[] = {
        {"sound", R"({"soundMode":"movie","autoVolume":"on","audioBalance":3})"},
        {"sound", R"({"soundOutputDigital":"auto"})"},
        {"smartSoundMode", R"({"smartSoundMode":"on","avSync":"on","avSyncSpeaker":5})"},
        {"hardwareConfig", R"({"tv.hw.countryType":"JP"})"},
        {"hardwareConfig", R"({"tv.hw.countryType":"KR","tv.model.ampChipType":"x"})"},
        {"hardwareConfig", "[]"},
        {"soundOutputMode", R"({"soundOutput":"tv_speaker","mode":"auto"})"},
        {"forceOutput", R"({"forceOutputDDPLUS":"true"})"},
        {"setMixer", R"({"mix":true})"},
        {"scms", R"({"copyright":"once"})"},
        {"powerState", R"({"powerState":"opticLightOn"})"},
        {"audioEQ", R"({"status":"on"})"},
        {"soundEngine", R"({"status":"on"})"},
        {"dolbyAtmos", R"({"dolbyAtmos":"on"})"},
        {"amplifier", R"({"tv.model.ampChipType":"a","ampChipType":"b"})"},
        {"amplifierState", R"({"ampType":"woofer","status":"on"})"},
        {"prepareResume", R"({"prepareResume":true,"status":true})"},
        {"audioVideoSync", R"({"audioVideoSync":4,"value":4})"},
        {"offsetDelay", R"({"offsetValue":4,"operationType":"x"})"},
        {"option", R"({"tv.zib.tvBroadcastSystem":"ATSC","supportATMOS":"on"})"},
        {"picture", R"({"a":"b"})"},
        {"other", R"({"supportBnoModel":true})"},
        {"powerStateMute", R"({"soundOutput":"headphone","mute":true})"},
        {"powerStateMute", R"({"soundOutput":"headphone","mute":false})"},
        {"headphoneDetectionMute", R"({"mute":true})"},
        {"headphoneDetectionMute", R"({"mute":false})"},
    };
    constexpr const char* kOutputs[] = {"tv_speaker", "headphone", "external_arc",
                                        "tv_speaker_headphone"};
    const auto settings = [](const char* category, const char* payload) {
        backend().setSettings(category, json(payload));
    };
    for (int life = 0; life < lives; ++life) {
        if (life % 2 == 0)
            backend().mIsInitGainAudioUpdate = false; // the retry walks the connected resources
        settings("contiConfig", R"({"tv.zib.tvBroadcastSystem":"DVB"})");
        settings("hardwareConfig", "{}");
        settings("modelConfig", "{}");
        const std::string output = kOutputs[life % 4];
        for (int i = 0; i < 50; ++i) {
            const Request& request = kRequests[(life * 7 + i) % std::size(kRequests)];
            settings(request.category, request.payload);
            switch (i % 10) {
            case 0:
                backend().setSoundOutput(output);
                break;
            case 1:
                backend().connectInput(i % 4 == 1 ? "ADEC0" : "AMIXER2", "MAIN",
                                       json(R"({"pipelineId":"p1","streamType":"movie"})"));
                break;
            case 2:
                backend().setOutputVolume(output, static_cast<std::uint8_t>(i));
                backend().setInputVolume("ADEC0", "MAIN", static_cast<std::uint8_t>(i));
                break;
            case 3:
                backend().setMute("ADEC0", "MAIN", i % 4 == 3);
                backend().setOutputMute(output, i % 4 == 3);
                backend().setMuteExtSPK(i % 4 == 3);
                break;
            case 4:
                backend().setQualityAttribute(
                    json(R"({"requestType":"setAudioInputInfo","pipelineInfo":{"pipelineId":"p1",)"
                         R"("source":"ADEC0","sink":"MAIN"},"categoryInfo":{"codec":"ac3"}})"));
                break;
            case 5:
                backend().getSettings("sound", JValue::object());
                backend().getSettings("amplifierState", JValue::object());
                break;
            case 6:
                backend().disconnectInput(i % 4 == 1 ? "ADEC0" : "AMIXER2", "MAIN");
                backend().removePipelineInfo("p1");
                break;
            case 7:
                backend().deinitAudio();
                backend().initAudio();
                break;
            case 8:
                backend().setActiveState(i % 4 == 0);
                backend().getActiveState();
                break;
            default:
                g_main_context_iteration(nullptr, /*may_block=*/FALSE);
            }
        }
    }
}

/// Waits until all works that were launched have ended.
bool awaitAllWorks()
{
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (gWorksEnded != gWorksLaunched && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    return gWorksEnded == gWorksLaunched;
}

} // namespace

TEST_F(StartupStorm, OfAllKindsOfRequestsDoesNotDisturbTheWorker)
{
    constexpr int kLives = 10;
    gTimersFireSoon = true; // the callbacks of the timers take part
    start();
    storm(kLives);
    EXPECT_TRUE(awaitAllWorks());
    EXPECT_GE(launches(), kLives);
    EXPECT_EQ(launches(), gWorksLaunched);
    EXPECT_EQ(count(kCompleted), launches());
    const virtualtv::HandleCount handles = virtualtv::cardHandles();
    EXPECT_EQ(handles.opened, handles.closed);
}

TEST_F(StartupStorm, GoesUnrecordedSoThatNoRecordKeepsTheThreadsInStep)
{
    constexpr int kLives = 150;
    gTimersFireSoon = true;
    start();
    admit(0);
    virtualtv::listen({});
    storm(kLives);
    EXPECT_TRUE(awaitAllWorks());
    EXPECT_GE(gWorksLaunched, kLives);
    const virtualtv::HandleCount handles = virtualtv::cardHandles();
    EXPECT_EQ(handles.opened, handles.closed);
}
