// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of output selection, with tables of which outputs are closed and opened
// between which two outputs, and of what is told and logged for each of them.
#pragma once

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

// --- Names

struct NameRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
};

inline constexpr NameRow kOutputs[] = {
    {"tv_speaker", KEP_AUDIO_SPK},
    {"external_speaker", KEP_AUDIO_SPDIF},
    {"headphone", KEP_AUDIO_HP},
    {"tv_speaker_external", KEP_AUDIO_SPK_SPDIF},
    {"external_arc", KEP_AUDIO_ARC},
    {"tv_speaker_headphone", KEP_AUDIO_SPK_HP},
    {"qnSoundSync", KEP_AUDIO_QN_SOUND_SYNC},
    {"bt_soundbar", KEP_AUDIO_BT_SOUNDBAR},
    {"wisa_speaker", KEP_AUDIO_WISA},
    {"tv_speaker_optical_arc", KEP_AUDIO_SPK_OPTICAL_ARC},
    {"tv_speaker_bluetooth", KEP_AUDIO_SPK_BLUETOOTH},
};
inline constexpr NameRow kOtherNames[] = {
    {"external_optical", KEP_AUDIO_SPDIF},
    {"lineout", KEP_AUDIO_HP},
    {"tv_external_speaker", KEP_AUDIO_SPK_SPDIF},
    {"urcu_oss", KEP_AUDIO_ARC},
};
inline constexpr NameRow kRefusedNames[] = {
    {"alsa", KEP_AUDIO_ALSA},
    {"speaker", KEP_AUDIO_NO_OUTPUT},
    {"TV_SPEAKER", KEP_AUDIO_NO_OUTPUT},
    {"", KEP_AUDIO_NO_OUTPUT},
};

inline std::vector<NameRow> allNames()
{
    std::vector<NameRow> rows;
    for (const NameRow& row : kOutputs)
        rows.push_back(row);
    for (const NameRow& row : kOtherNames)
        rows.push_back(row);
    for (const NameRow& row : kRefusedNames)
        rows.push_back(row);
    return rows;
}

inline const char* nameOf(KEP_AUDIO_SNDOUT_T output)
{
    for (const NameRow& row : kOutputs)
        if (row.output == output)
            return row.name;
    return "none";
}

inline std::vector<KEP_AUDIO_SNDOUT_T> oldOutputs()
{
    std::vector<KEP_AUDIO_SNDOUT_T> outputs = {KEP_AUDIO_NO_OUTPUT};
    for (const NameRow& row : kOutputs)
        outputs.push_back(row.output);
    return outputs;
}

// --- Single outputs: what the driver is told, step by step. A step that fails is the last one.

struct Sequence {
    KEP_AUDIO_SNDOUT_T output;
    const char* operation;
    const char* suffix; // of the text that is logged when a write fails
    Texts steps;        // writes, and the keys of kOtherSteps
};

// clang-format off
inline const std::vector<Sequence> kOpenings = {
    {KEP_AUDIO_SPK, "connectTvSpeakerOutput", " for tv speaker",
     {"Sndout Open 1", "resources to 1", "Mute Output 1 0"}},
    {KEP_AUDIO_SPDIF, "connectSpdifOrQNSndSyncOutput", " for external speaker/QN SOUND SYNC",
     {"Sndout Open 2", "Mute Output 2 1", "resources to 2", "Sndout Optic LightOnOff 1", "Mute Output 2 0"}},
    {KEP_AUDIO_HP, "connectHPOutput", " for Headphone",
     {"Sndout Open 16", "resources to 16", "Mute Output 16 0", "headphone unmuted"}},
    {KEP_AUDIO_ARC, "connectExternalArcOutput", "",
     {"Sndout Open 32", "resources to 32", "Mute Output 32 0"}},
    {KEP_AUDIO_QN_SOUND_SYNC, "connectSpdifOrQNSndSyncOutput", " for external speaker/QN SOUND SYNC",
     {"Sndout Open 4", "Mute Output 4 1", "resources to 4", "Sndout Optic LightOnOff 1",
      "Sndout Optic QN 1 0 0 1", "Mute Output 4 0"}},
    {KEP_AUDIO_BT_SOUNDBAR, "connectBTSndBarOrWisaOutput", "",
     {"Sndout Open 8", "resources to 8"}},
    {KEP_AUDIO_WISA, "connectBTSndBarOrWisaOutput", "",
     {"Sndout Open 64", "resources to 64"}},
    {KEP_AUDIO_BLUETOOTH, "connectSpeakerBluetoothOutput", "",
     {"Sndout Open 128", "resources to 128"}},
};

inline const std::vector<Sequence> kClosings = {
    {KEP_AUDIO_SPK, "disconnectTvSpeakerOutput", " for tv speaker",
     {"resources from 1", "Sndout Close 1", "Mute Output 1 1"}},
    {KEP_AUDIO_SPDIF, "disconnectSpdifOrQNSndSyncOutput", " for external speaker/QN sound sync",
     {"resources from 2", "Mute Output 2 1", "Sndout Optic LightOnOff 0", "Sndout Close 2"}},
    {KEP_AUDIO_HP, "disconnectHPOutput", " for Headphone",
     {"resources from 16", "Sndout Close 16", "Mute Output 16 1", "headphone muted"}},
    {KEP_AUDIO_ARC, "disconnectExternalArcOutput", "",
     {"resources from 32", "Sndout Close 32", "Mute Output 32 1"}},
    {KEP_AUDIO_QN_SOUND_SYNC, "disconnectSpdifOrQNSndSyncOutput", " for external speaker/QN sound sync",
     {"resources from 4", "Mute Output 4 1", "Sndout Optic LightOnOff 0", "Sndout Close 4"}},
    {KEP_AUDIO_BT_SOUNDBAR, "disconnectBTSndBarOrWisaOutput", "",
     {"resources from 8", "Sndout Close 8"}},
    {KEP_AUDIO_WISA, "disconnectBTSndBarOrWisaOutput", "",
     {"resources from 64", "Sndout Close 64"}},
    {KEP_AUDIO_BLUETOOTH, "disconnectSpeakerBluetoothOutput", "",
     {"resources from 128", "Sndout Close 128"}},
};

// The headphone that is the first output since power-on is muted before it is opened; the timer
// that then runs holds its unmute back.
inline const Sequence kFirstHeadphone = {
    KEP_AUDIO_HP,
    "connectHPOutput",
    " for Headphone",
    {"headphone guarded", "Sndout Open 16", "resources to 16", "Mute Output 16 0", "unmute skipped"}};
inline const Sequence kHeldBackHeadphone = {
    KEP_AUDIO_HP,
    "connectHPOutput",
    " for Headphone",
    {"Sndout Open 16", "resources to 16", "Mute Output 16 0", "unmute held back"}};

// --- Transitions: outputs that are closed (-) and opened (+) in order, each of them whatever became
// of the others. "first" is the headphone since power-on.

struct Transition {
    KEP_AUDIO_SNDOUT_T from;
    const char* calls;
};

struct Target {
    KEP_AUDIO_SNDOUT_T to;
    const char* fromOther; // from any other output, which is closed as a whole
    std::vector<Transition> from;
};

inline const std::vector<Target> kTargets = {
    {KEP_AUDIO_SPK, "-old +1",
     {{KEP_AUDIO_SPK_SPDIF,       "-2"},
      {KEP_AUDIO_SPK_HP,          "-32"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-2 -1024"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-131072"}}},
    {KEP_AUDIO_SPDIF, "-old +2",
     {{KEP_AUDIO_SPK_SPDIF,       "-1"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +2"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -1024"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +2"}}},
    {KEP_AUDIO_HP, "-old +32",
     {{KEP_AUDIO_NO_OUTPUT,       "-0 first"},
      {KEP_AUDIO_SPK_SPDIF,       "-1 -2 +32"},
      {KEP_AUDIO_SPK_HP,          "-1"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +32"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +32"}}},
    {KEP_AUDIO_ARC, "-old +1024",
     {{KEP_AUDIO_SPK_SPDIF,       "-2 -1 +1024"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +1024"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +1024"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +1024"}}},
    {KEP_AUDIO_QN_SOUND_SYNC, "-old +4096",
     {{KEP_AUDIO_SPK_SPDIF,       "-2 -1 +4096"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +4096"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +4096"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +4096"}}},
    {KEP_AUDIO_BT_SOUNDBAR, "-old +8192",
     {{KEP_AUDIO_SPK_SPDIF,       "-2 -1 +8192"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +8192"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +8192"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +8192"}}},
    {KEP_AUDIO_WISA, "-old +16384",
     {{KEP_AUDIO_SPK_SPDIF,       "-2 -1 +16384"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +16384"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +16384"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +16384"}}},
    {KEP_AUDIO_SPK_SPDIF, "-old +1 +2",
     {{KEP_AUDIO_SPK,             "+2"},
      {KEP_AUDIO_SPDIF,           "+1"},
      {KEP_AUDIO_SPK_HP,          "-32 +2"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1024"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-131072 +2"}}},
    {KEP_AUDIO_SPK_HP, "-old +1 +32",
     {{KEP_AUDIO_NO_OUTPUT,       "-0 +1 first"},
      {KEP_AUDIO_SPK,             "+32"},
      {KEP_AUDIO_HP,              "unmuted +1"},
      {KEP_AUDIO_SPK_SPDIF,       "-2 +32"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-2 -1024 +32"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-131072 +32"}}},
    {KEP_AUDIO_SPK_OPTICAL_ARC, "-old +1 +2 +1024",
     {{KEP_AUDIO_SPK,             "+2 +1024"},
      {KEP_AUDIO_SPDIF,           "+1 +1024"},
      {KEP_AUDIO_ARC,             "+1 +2"},
      {KEP_AUDIO_SPK_SPDIF,       "+1024"},
      {KEP_AUDIO_SPK_HP,          "-32 +2 +1024"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-131072 +2 +1024"}}},
    {KEP_AUDIO_SPK_BLUETOOTH, "-old +1 +131072",
     {{KEP_AUDIO_SPK,             "+131072"},
      {KEP_AUDIO_SPK_SPDIF,       "-2 +131072"},
      {KEP_AUDIO_SPK_HP,          "-32 +131072"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-2 -1024 +131072"}}},
    {KEP_AUDIO_ALSA, "-old +256",
     {{KEP_AUDIO_SPK_SPDIF,       "-1 -2 +256"},
      {KEP_AUDIO_SPK_HP,          "-1 -32 +256"},
      {KEP_AUDIO_SPK_OPTICAL_ARC, "-1 -2 -1024 +256"},
      {KEP_AUDIO_SPK_BLUETOOTH,   "-1 -131072 +256"}}},
};
// clang-format on

inline Texts callsBetween(KEP_AUDIO_SNDOUT_T from, KEP_AUDIO_SNDOUT_T to)
{
    std::string calls;
    for (const Target& target : kTargets) {
        if (target.to != to)
            continue;
        calls = target.fromOther;
        for (const Transition& row : target.from)
            if (row.from == from)
                calls = row.calls;
    }
    Texts all;
    std::istringstream words{calls};
    for (std::string word; words >> word;)
        all.push_back(word == "-old" ? "-" + std::to_string(from) : word);
    return all;
}

// --- The lines of each step

inline LogLine said(const std::string& function, const std::string& text)
{
    return info("keptvaudio:" + function, text);
}

inline LogLine notSet(const std::string& function, const std::string& text)
{
    return error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:" + function,
                 "Did not able to set the element: " + text);
}

/// What is logged before a step, what the television is told, and what is logged when the driver
/// refuses it.
struct Step {
    Lines before;
    std::string told = {};
    LogLine whenRefused = {};
    bool matters = true; // otherwise the sequence goes on without it

    [[nodiscard]] bool isWrite() const { return !told.empty() && told.rfind("subcpu", 0) != 0; }
};

using Steps = std::vector<Step>;

inline Lines muteAskedFor(const std::string& flag)
{
    return {said("setMuteHeadphone", "Called setMuteHeadphone muteStatus " + flag),
            said("setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus " + flag)};
}

inline Lines muteExecuted(const std::string& flag)
{
    return {said("executeMuteHeadphone", "Called execute muteHeadphone muteStatus " + flag),
            said("isValidHeadphoneMute", "isValidHeadphoneMute check " + flag + " 0 0")};
}

inline const LogLine kMuteNotSet = notSet("setMuteControlElement", "Mute Output on 32");
inline const LogLine kOpensHeadphone =
    said("connectHPOutput", "connectHPOutput:: Connect soundoutput 32");

inline const std::map<std::string, Steps> kOtherSteps = {
    {"headphone muted",
     {{muteAskedFor("1") + muteExecuted("1"), "subcpu_misc_Set_HPMuteOnOff true"},
      {{}, "Mute Output 16 1", kMuteNotSet}}},
    {"headphone unmuted",
     {{muteAskedFor("0") + muteExecuted("0"), "subcpu_misc_Set_HPMuteOnOff false"},
      {{}, "Mute Output 16 0", kMuteNotSet}}},
    {"headphone guarded",
     {{Lines{said("connectHPOutput", "AC On headphone is selected, so muting to avoid noise")} +
           muteAskedFor("1") + muteExecuted("1"),
       "subcpu_misc_Set_HPMuteOnOff true"},
      {{}, "Mute Output 16 1", kMuteNotSet, /*matters=*/false}}},
    {"unmute held back",
     {{muteAskedFor("0") +
       Lines{said("setMuteHeadphone",
                  "Headphone timer has not been make yet, so skip headphone unmute")}}}},
    {"unmute skipped",
     {{{said("connectHPOutput",
             "During AC ON, headphone selected timer running, so skipping unmute")}}}},
};

/// The writes of a step that re-routes the connected resources.
inline Steps routing(const std::string& step, const Texts& connected)
{
    const bool connects = step.rfind("resources to ", 0) == 0;
    const std::string type = step.substr(step.rfind(' ') + 1);
    const std::string element = connects ? "Sndout Connect" : "Sndout Disconnect";
    Steps steps;
    for (const std::string& address : connected)
        steps.push_back({{},
                         element + " " + type + " " + address,
                         notSet("connectDisconnectResources", element)});
    if (!steps.empty())
        steps.front().before = {said("connectDisconnectResources",
                                     std::string{"Connect or disconnect status "} +
                                         (connects ? "1" : "0") + " speakerType " + type)};
    return steps;
}

inline Steps stepsOf(const Sequence& row, const Texts& connected)
{
    Steps all;
    for (const std::string& text : row.steps) {
        Steps steps;
        if (text.rfind("resources ", 0) == 0) {
            steps = routing(text, connected);
        } else if (const auto other = kOtherSteps.find(text); other != kOtherSteps.end()) {
            steps = other->second;
        } else {
            const std::string element = text.substr(0, text.find_first_of("0123456789") - 1);
            const char* suffix = element == "Sndout Optic QN" ? " for QN SOUND SYNC" : row.suffix;
            steps = {{{}, text, notSet(row.operation, element + suffix)}};
        }
        all.insert(all.end(), steps.begin(), steps.end());
    }
    if (row.operation == std::string{"connectHPOutput"})
        all.front().before = Lines{kOpensHeadphone} + all.front().before;
    return all;
}

// --- What a request has to leave behind

struct Situation {
    KEP_AUDIO_SNDOUT_T from = KEP_AUDIO_NO_OUTPUT;
    Texts connected = {};     // addresses of the connected resources
    int refusedWrite = -1;    // the driver refuses the write of that number
    bool unmuteWaits = false; // the headphone has to stay muted after power-on
};

/// A call of a transition, with its lines.
struct Call {
    Lines before;
    Steps steps;
    bool possible = true;
};

inline Call callOf(const std::string& word, const Situation& situation)
{
    const char* unmuted = situation.unmuteWaits ? "unmute held back" : "headphone unmuted";
    if (word == "unmuted")
        return {{}, kOtherSteps.at(unmuted)};
    if (word == "first")
        return {{said("connectOutput", "Connect outputType 32")},
                stepsOf(kFirstHeadphone, situation.connected)};
    const bool opens = word.front() == '+';
    const std::string output = word.substr(1);
    Call call{{opens ? said("connectOutput", "Connect outputType " + output)
                     : said("disconnectOutput", "disconnect outputType " + output)},
              {},
              output != std::to_string(KEP_AUDIO_ALSA)};
    if (word == "+32" && situation.unmuteWaits)
        call.steps = stepsOf(kHeldBackHeadphone, situation.connected);
    else
        for (const Sequence& row : opens ? kOpenings : kClosings)
            if (std::to_string(row.output) == output)
                call.steps = stepsOf(row, situation.connected);
    return call;
}

inline std::vector<Call> transition(KEP_AUDIO_SNDOUT_T to, const Situation& situation)
{
    std::vector<Call> calls;
    for (const std::string& word : callsBetween(situation.from, to))
        calls.push_back(callOf(word, situation));
    return calls;
}

/// The lines of calls, of which the driver refuses a write.
struct Expected {
    Expected(const std::vector<Call>& calls, int refusedWrite)
    {
        for (const Call& call : calls) {
            logged = logged + call.before;
            done = call.possible && done;
            for (const Step& step : call.steps)
                if (!add(step, refusedWrite))
                    break;
        }
    }

    Texts told;
    Lines logged;
    int writes = 0;
    bool done = true;

private:
    /// False when the call ends with the step.
    bool add(const Step& step, int refusedWrite)
    {
        logged = logged + step.before;
        if (step.told.empty())
            return true;
        const bool refused = step.isWrite() && writes++ == refusedWrite;
        told.push_back(step.told + (refused ? " -> -5" : ""));
        if (refused)
            logged = logged + Lines{refusedByDriver(), step.whenRefused};
        done = done && (!refused || !step.matters);
        return !refused || !step.matters;
    }
};

/// What follows a transition that was made; the user's digital mode is "pcm", too.
inline const Texts kToldAfter = {"Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1",
                                 "delay.setDelayUpdate", "gain.setGainAsInput"};

inline Lines loggedAfter(const std::string& name, KEP_AUDIO_SNDOUT_T to)
{
    const bool users = to == KEP_AUDIO_SPDIF || to == KEP_AUDIO_ARC;
    return {
        said("getSoundOutputDigitalMode", std::string{"Setting digital mode as pcm"} +
                                              (users ? "" : ", since its not optical or arc")),
        said("setSoundOutputDigital", "Request to set digital mode as pcm"),
        said("getSoundOutputOpticMode", "Get SoundOutputMode for Optic digitalMode pcm "),
        debug("keptvaudio:getSoundOutputOpticMode", "Optic digital mode 1"),
        said("getSoundOutputArcMode", "Get SoundOutputMode for ARC digitalMode pcm "),
        debug("keptvaudio:getSoundOutputArcMode", "Arc digital mode 1"),
        said("setEArcOutputType", "set codec type: 1 for earc output type and mixer value is 1"),
        info("keptvdelay:updateDelayValues", "calling setDelayUpdate"),
        info("keptvgain:setInputGain", "calling setGainAsInput"),
        said("setSoundOutput", "successfully set soundoutput " + name),
    };
}

/// A whole selection.
struct Selection {
    Texts told = {};
    Lines logged;
    unsigned int result = kDone;
    int writes = 0; // of the transition
};

inline Selection selectionOf(const NameRow& row, const Situation& situation)
{
    const std::string name = row.name;
    Selection selection{.logged = {said("setSoundOutput", "Request to set soundOutput " + name)}};
    const auto fails = [&](const char* id, const std::string& text) {
        selection.logged.push_back(error(id, "keptvaudio:setSoundOutput", text));
        selection.result = kFailed;
        return selection;
    };
    if (row.output == KEP_AUDIO_NO_OUTPUT)
        return fails("SOUNDOUTPUT_NOT_SUPPORTED", "Not supported soundoutput");
    if (row.output == situation.from) {
        selection.logged.push_back(
            debug("keptvaudio:setSoundOutput",
                  "Request for setting the existing setSoundOut " + name + "- Ignore!!!"));
        return selection;
    }
    if (row.output == KEP_AUDIO_SPK_OPTICAL_ARC)
        selection.logged.push_back(
            said("handleSetSoundOutput", "Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC"));
    const Expected moved{transition(row.output, situation), situation.refusedWrite};
    selection.told = moved.told;
    selection.logged = selection.logged + moved.logged;
    selection.writes = moved.writes;
    if (!moved.done)
        return fails("SOUNDOUTPUT_SET_ERROR", "Failed to set sound out " + name);
    selection.told.insert(selection.told.end(), kToldAfter.begin(), kToldAfter.end());
    selection.logged = selection.logged + loggedAfter(name, row.output);
    return selection;
}

// --- Fixtures

inline const Texts kInputsOfTheStart = {"16 5", "16 6", "16 7"};

class OutputTest : public TvBackendTest
{
protected:
    OutputTest()
    {
        kepTvParser::getInstance()->mQualityParamsMap["soundOutputDigital"] = "pcm";
        mBackend.mHeadphoneTimerMuteDone = true;
    }

    /// Selects, with nothing of it left in journal and log.
    void select(const std::string& output)
    {
        EXPECT_EQ(mBackend.setSoundOutput(output), kDone) << output;
        forget();
    }

    /// Makes the situation; the resources that it names have to be connected already.
    void enter(const Situation& situation)
    {
        mBackend.mCurrentSoundout = situation.from;
        mBackend.mHeadphoneTimerMuteDone = !situation.unmuteWaits;
        mBackend.mStoredSettings["soundOutput"] = "before";
        clearInjections();
        if (situation.refusedWrite >= 0)
            refuseWrite(static_cast<unsigned int>(situation.refusedWrite));
        forget();
    }

    /// Requests the output and compares all that can be seen of it; the number of its writes.
    int expectSelection(const Situation& situation, const NameRow& row)
    {
        enter(situation);
        const Selection expected = selectionOf(row, situation);
        const std::string what = std::string{nameOf(situation.from)} + " to " + row.name + ", " +
                                 std::to_string(situation.connected.size()) +
                                 " resources, refused write " +
                                 std::to_string(situation.refusedWrite);
        EXPECT_EQ(mBackend.setSoundOutput(row.name), expected.result) << what;
        EXPECT_EQ(told(), expected.told) << what;
        EXPECT_EQ(logLines(), expected.logged) << what;
        EXPECT_EQ(mBackend.getCurrentSoundout(),
                  expected.result == kDone ? row.output : situation.from)
            << what;
        EXPECT_EQ(mBackend.getSoundOutputKey(),
                  row.output != KEP_AUDIO_NO_OUTPUT ? row.name : "before")
            << what;
        clearInjections();
        return expected.writes;
    }

    void expectAllSelections(Situation situation)
    {
        for (const KEP_AUDIO_SNDOUT_T from : oldOutputs()) {
            situation.from = from;
            for (const NameRow& row : allNames())
                expectSelection(situation, row);
        }
    }

    /// The same for every selection with each of its writes refused in turn.
    void expectAllRefusals(Situation situation)
    {
        for (const KEP_AUDIO_SNDOUT_T from : oldOutputs()) {
            for (const NameRow& row : allNames()) {
                situation.from = from;
                situation.refusedWrite = -1;
                const int writes = expectSelection(situation, row);
                for (int refused = 0; refused < writes; ++refused) {
                    situation.refusedWrite = refused;
                    expectSelection(situation, row);
                }
            }
        }
    }

    void connectOnly(const std::string& source)
    {
        mBackend.deinitAudio();
        select("tv_speaker");
        EXPECT_EQ(mBackend.connectInput(source, "MAIN", JValue::object()), kDone);
        forget();
    }
};

class OutputSelection : public OutputTest
{
};
class SoundOutputFailure : public OutputTest
{
};
class HeadphoneSelection : public OutputTest
{
};
class SingleOutput : public OutputTest
{
};
