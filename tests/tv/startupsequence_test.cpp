// SPDX-License-Identifier: Apache-2.0
// Start-up: the conditions, the launch, and the sequence of the worker's steps.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

#include <glib.h>
#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "startuptest.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

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
