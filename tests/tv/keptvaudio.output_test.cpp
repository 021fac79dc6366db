// SPDX-License-Identifier: Apache-2.0
// What a selection has to do is written down here a second time, as text: which outputs are closed
// and opened between which two outputs, and what the driver is told for each of them. Every
// selection is compared with that, down to the log; then again with each single write refused.
#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// --- Names

struct NameRow {
    const char* name;
    KEP_AUDIO_SNDOUT_T output;
};

constexpr NameRow kOutputs[] = {
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
constexpr NameRow kOtherNames[] = {
    {"external_optical", KEP_AUDIO_SPDIF},
    {"lineout", KEP_AUDIO_HP},
    {"tv_external_speaker", KEP_AUDIO_SPK_SPDIF},
    {"urcu_oss", KEP_AUDIO_ARC},
};
constexpr NameRow kRefusedNames[] = {
    {"alsa", KEP_AUDIO_ALSA},
    {"speaker", KEP_AUDIO_NO_OUTPUT},
    {"TV_SPEAKER", KEP_AUDIO_NO_OUTPUT},
    {"", KEP_AUDIO_NO_OUTPUT},
};

std::vector<NameRow> allNames()
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

const char* nameOf(KEP_AUDIO_SNDOUT_T output)
{
    for (const NameRow& row : kOutputs)
        if (row.output == output)
            return row.name;
    return "none";
}

std::vector<KEP_AUDIO_SNDOUT_T> oldOutputs()
{
    std::vector<KEP_AUDIO_SNDOUT_T> outputs = {KEP_AUDIO_NO_OUTPUT};
    for (const NameRow& row : kOutputs)
        outputs.push_back(row.output);
    return outputs;
}

// --- Single outputs: what the driver is told

struct Sequence {
    KEP_AUDIO_SNDOUT_T output;
    const char* operation;
    const char* suffix; // of the text that is logged when a write fails
    Texts steps;
};

// clang-format off
const std::vector<Sequence> kOpenings = {
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

const std::vector<Sequence> kClosings = {
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

// --- Transitions: outputs that are closed (-) and opened (+), in order

struct Transition {
    KEP_AUDIO_SNDOUT_T from;
    const char* calls;
};

struct Target {
    KEP_AUDIO_SNDOUT_T to;
    const char* fromOther; // from any other output, which is closed as a whole
    std::vector<Transition> from;
};

const std::vector<Target> kTargets = {
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
     {{KEP_AUDIO_SPK_SPDIF,       "-1 -2 +32"},
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
     {{KEP_AUDIO_SPK,             "+32"},
      {KEP_AUDIO_HP,              "unmute +1"},
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

Texts callsBetween(KEP_AUDIO_SNDOUT_T from, KEP_AUDIO_SNDOUT_T to)
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

// --- What a request has to leave behind

struct Situation {
    KEP_AUDIO_SNDOUT_T from = KEP_AUDIO_NO_OUTPUT;
    Texts connected = {};     // addresses of the connected resources
    int refusedWrite = -1;    // the driver refuses the write of that number
    bool lineRefuses = false; // the headphone's line takes no order
    bool unmuteWaits = false; // the headphone has to stay muted after power-on
};

class Prediction
{
public:
    explicit Prediction(Situation situation) : mSituation(std::move(situation)) {}

    Texts told;
    Lines logged;
    int writes = 0;

    unsigned int selection(const std::string& name, KEP_AUDIO_SNDOUT_T to);
    bool transition(KEP_AUDIO_SNDOUT_T to);
    bool call(const std::string& call);
    bool sequence(const Sequence& row);

private:
    void log(const std::string& function, const std::string& text)
    {
        logged.push_back(info("keptvaudio:" + function, text));
    }
    bool write(const std::string& text, const LogLine& whenRefused);
    bool write(const std::string& text, const std::string& origin, const std::string& suffix);
    bool route(const std::string& type, bool connect);
    bool muteHeadphone(bool mute);
    bool step(const std::string& text, const Sequence& row);
    void finish(const std::string& name, KEP_AUDIO_SNDOUT_T to);

    Situation mSituation;
};

unsigned int Prediction::selection(const std::string& name, KEP_AUDIO_SNDOUT_T to)
{
    log("setSoundOutput", "Request to set soundOutput " + name);
    if (to == KEP_AUDIO_NO_OUTPUT) {
        logged.push_back(error("SOUNDOUTPUT_NOT_SUPPORTED", "keptvaudio:setSoundOutput",
                               "Not supported soundoutput"));
        return kFailed;
    }
    if (to == mSituation.from) {
        logged.push_back(
            debug("keptvaudio:setSoundOutput",
                  "Request for setting the existing setSoundOut " + name + "- Ignore!!!"));
        return kDone;
    }
    if (to == KEP_AUDIO_SPK_OPTICAL_ARC)
        log("handleSetSoundOutput", "Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC");
    if (!transition(to)) {
        logged.push_back(error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                               "Failed to set sound out " + name));
        return kFailed;
    }
    finish(name, to);
    return kDone;
}

bool Prediction::transition(KEP_AUDIO_SNDOUT_T to)
{
    bool done = true;
    for (const std::string& word : callsBetween(mSituation.from, to))
        done = call(word) && done;
    return done;
}

bool Prediction::call(const std::string& call)
{
    if (call == "unmute")
        return muteHeadphone(false);
    const bool opens = call.front() == '+';
    const std::string output = call.substr(1);
    if (opens)
        log("connectOutput", "Connect outputType " + output);
    else
        log("disconnectOutput", "disconnect outputType " + output);
    for (const Sequence& row : opens ? kOpenings : kClosings)
        if (std::to_string(row.output) == output)
            return sequence(row);
    return output == "0";
}

bool Prediction::sequence(const Sequence& row)
{
    if (row.operation == std::string{"connectHPOutput"}) {
        log("connectHPOutput", "connectHPOutput:: Connect soundoutput 32");
        if (mSituation.from == KEP_AUDIO_NO_OUTPUT) {
            log("connectHPOutput", "AC On headphone is selected, so muting to avoid noise");
            muteHeadphone(true);
        }
    }
    return std::all_of(row.steps.begin(), row.steps.end(),
                       [&](const std::string& text) { return step(text, row); });
}

bool Prediction::step(const std::string& text, const Sequence& row)
{
    const std::string to = "resources to ";
    const std::string from = "resources from ";
    if (text.rfind(to, 0) == 0)
        return route(text.substr(to.size()), true);
    if (text.rfind(from, 0) == 0)
        return route(text.substr(from.size()), false);
    if (text == "headphone muted")
        return muteHeadphone(true);
    if (text == "headphone unmuted") {
        if (mSituation.from != KEP_AUDIO_NO_OUTPUT)
            return muteHeadphone(false);
        log("connectHPOutput",
            "During AC ON, headphone selected timer running, so skipping unmute");
        return true;
    }
    const bool soundSync = text.rfind("Sndout Optic QN", 0) == 0;
    return write(text, std::string{"keptvaudio:"} + row.operation,
                 soundSync ? " for QN SOUND SYNC" : row.suffix);
}

bool Prediction::write(const std::string& text, const LogLine& whenRefused)
{
    const bool refused = writes++ == mSituation.refusedWrite;
    told.push_back(text + (refused ? " -> -5" : ""));
    if (refused)
        logged.insert(logged.end(), {refusedByDriver(), whenRefused});
    return !refused;
}

bool Prediction::write(const std::string& text, const std::string& origin,
                       const std::string& suffix)
{
    const std::string element = text.substr(0, text.find_first_of("0123456789") - 1);
    return write(text, error("CONTROL_ELEMENT_SET_ERROR", origin,
                             "Did not able to set the element: " + element + suffix));
}

bool Prediction::route(const std::string& type, bool connect)
{
    if (mSituation.connected.empty())
        return true;
    const std::string origin = "keptvaudio:connectDisconnectResources";
    const std::string element = connect ? "Sndout Connect " : "Sndout Disconnect ";
    logged.push_back(info(origin, std::string{"Connect or disconnect status "} +
                                      (connect ? "1" : "0") + " speakerType " + type));
    return std::all_of(mSituation.connected.begin(), mSituation.connected.end(),
                       [&](const std::string& address) {
                           return write(element + type + " " + address, origin, "");
                       });
}

bool Prediction::muteHeadphone(bool mute)
{
    const std::string file = "keptvaudio:";
    const std::string flag = mute ? "1" : "0";
    const auto say = [&](const std::string& function, const std::string& text) {
        logged.push_back(info(file + function, text));
    };
    say("setMuteHeadphone", "Called setMuteHeadphone muteStatus " + flag);
    say("setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus " + flag);
    if (!mute && mSituation.unmuteWaits) {
        say("setMuteHeadphone", "Headphone timer has not been make yet, so skip headphone unmute");
        return true;
    }
    say("executeMuteHeadphone", "Called execute muteHeadphone muteStatus " + flag);
    say("isValidHeadphoneMute", "isValidHeadphoneMute check " + flag + " 0 0");
    told.push_back(std::string{"subcpu_misc_Set_HPMuteOnOff "} + (mute ? "true" : "false") +
                   (mSituation.lineRefuses ? " -> 1" : ""));
    if (mSituation.lineRefuses)
        logged.push_back(error("SUBCPU_ERROR", file + "executeMuteHeadphone",
                               "Failed to set headphone mute status " + flag));
    return write("Mute Output 16 " + flag,
                 error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:setMuteControlElement",
                       "Did not able to set the element: Mute Output on 32")) &&
           !mSituation.lineRefuses;
}

/// What follows a transition that was made; the user's digital mode is "pcm", too.
void Prediction::finish(const std::string& name, KEP_AUDIO_SNDOUT_T to)
{
    const std::string file = "keptvaudio:";
    const bool users = to == KEP_AUDIO_SPDIF || to == KEP_AUDIO_ARC;
    const Lines before = {
        info(file + "getSoundOutputDigitalMode",
             std::string{"Setting digital mode as pcm"} +
                 (users ? "" : ", since its not optical or arc")),
        info(file + "setSoundOutputDigital", "Request to set digital mode as pcm"),
        info(file + "getSoundOutputOpticMode", "Get SoundOutputMode for Optic digitalMode pcm "),
        debug(file + "getSoundOutputOpticMode", "Optic digital mode 1"),
        info(file + "getSoundOutputArcMode", "Get SoundOutputMode for ARC digitalMode pcm "),
        debug(file + "getSoundOutputArcMode", "Arc digital mode 1"),
    };
    logged.insert(logged.end(), before.begin(), before.end());
    bool done = write("Sndout Spdif OutputType 1 1",
                      error("CONTROL_ELEMENT_SET_ERROR", file + "setSoundOutputDigital",
                            "setSoundOutputDigital : Did not able to set the element: Sndout "
                            "Spdif OutputType with digitalMode as pcm"));
    logged.push_back(info(file + "setEArcOutputType",
                          "set codec type: 1 for earc output type and mixer value is 1"));
    done = write("Sndout EARC Outputtype 2 1 0 0 1", file + "setEArcOutputType", "") && done;
    if (!done)
        logged.push_back(error("SET_SOUNDOUTPUT_DIGITAL_ERROR", "keptvaudio:setSoundOutput",
                               "Failed to set SoundOutput Digital pcm during soundout change"));
    logged.push_back(info("keptvdelay:updateDelayValues", "calling setDelayUpdate"));
    told.emplace_back("delay.setDelayUpdate");
    logged.push_back(info("keptvgain:setInputGain", "calling setGainAsInput"));
    told.emplace_back("gain.setGainAsInput");
    log("setSoundOutput", "successfully set soundoutput " + name);
}

// --- Fixtures

const Texts kInputsOfTheStart = {"16 5", "16 6", "16 7"};

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
        if (situation.lineRefuses)
            virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
        forget();
    }

    /// Requests the output and compares all that can be seen of it; the number of its writes.
    int expectSelection(const Situation& situation, const NameRow& row)
    {
        enter(situation);
        Prediction prediction{situation};
        const unsigned int result = prediction.selection(row.name, row.output);
        const std::string what = std::string{nameOf(situation.from)} + " to " + row.name + ", " +
                                 std::to_string(situation.connected.size()) +
                                 " resources, refused write " +
                                 std::to_string(situation.refusedWrite);
        EXPECT_EQ(mBackend.setSoundOutput(row.name), result) << what;
        EXPECT_EQ(told(), prediction.told) << what;
        EXPECT_EQ(logLines(), prediction.logged) << what;
        EXPECT_EQ(mBackend.getCurrentSoundout(), result == kDone ? row.output : situation.from)
            << what;
        EXPECT_EQ(mBackend.getSoundOutputKey(),
                  row.output != KEP_AUDIO_NO_OUTPUT ? row.name : "before")
            << what;
        clearInjections();
        return prediction.writes;
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

class SoundOutput : public OutputTest
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

// --- All pairs

TEST_F(SoundOutput, GoesFromAnyOutputToAnyNameWithoutResources)
{
    mBackend.deinitAudio();
    expectAllSelections({});
}

TEST_F(SoundOutput, GoesFromAnyOutputToAnyNameWithOneResource)
{
    connectOnly("ADEC1");
    expectAllSelections({.connected = {"1 1"}});
}

TEST_F(SoundOutput, GoesFromAnyOutputToAnyNameWithThreeResources)
{
    expectAllSelections({.connected = kInputsOfTheStart});
}

TEST_F(SoundOutput, GoesFromAnyOutputToAnyNameWhileTheHeadphoneHasToStayMuted)
{
    expectAllSelections({.connected = kInputsOfTheStart, .unmuteWaits = true});
}

TEST_F(SoundOutput, RoutesEveryResourceHoweverManyOutputsItHasSeen)
{
    Situation situation{.connected = kInputsOfTheStart};
    situation.connected.emplace_back("1 0");
    select("tv_speaker");
    EXPECT_EQ(mBackend.connectInput("ADEC0", "MAIN", JValue::object()), kDone);
    for (const NameRow& from : kOutputs) {
        for (const NameRow& to : kOutputs) {
            select(from.name);
            situation.from = from.output;
            Prediction prediction{situation};
            prediction.selection(to.name, to.output);
            EXPECT_EQ(mBackend.setSoundOutput(to.name), kDone) << from.name << " " << to.name;
            EXPECT_EQ(told(), prediction.told) << from.name << " " << to.name;
            EXPECT_EQ(logLines(), prediction.logged) << from.name << " " << to.name;
            EXPECT_EQ(mBackend.getCurrentSoundout(), to.output);
            EXPECT_EQ(mBackend.getSoundOutputKey(), to.name);
        }
    }
}

// --- Selections

TEST_F(SoundOutput, IsNoneAtFirst)
{
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_NO_OUTPUT);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "");
}

TEST_F(SoundOutput, OfAnUnknownNameChangesNothing)
{
    select("bt_soundbar");
    EXPECT_EQ(mBackend.setSoundOutput("loudspeaker"), kFailed);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(logLines(),
              (Lines{info("keptvaudio:setSoundOutput", "Request to set soundOutput loudspeaker"),
                     error("SOUNDOUTPUT_NOT_SUPPORTED", "keptvaudio:setSoundOutput",
                           "Not supported soundoutput")}));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "bt_soundbar");
}

TEST_F(SoundOutput, OfAnUnknownNameStoresNothing)
{
    EXPECT_EQ(mBackend.setSoundOutput("loudspeaker"), kFailed);
    EXPECT_THAT(mBackend.mStoredSettings, IsEmpty());
}

TEST_F(SoundOutput, OfTheCurrentOneOnlyTakesOverItsName)
{
    select("headphone");
    EXPECT_EQ(mBackend.setSoundOutput("lineout"), kDone);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_THAT(
        logLines(),
        ElementsAre(info("keptvaudio:setSoundOutput", "Request to set soundOutput lineout"),
                    debug("keptvaudio:setSoundOutput",
                          "Request for setting the existing setSoundOut lineout- Ignore!!!")));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "lineout");
}

TEST_F(SoundOutput, WithTheHeadphoneLeavesTheSpeakerUntouched)
{
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Open 16", "Sndout Connect 16 16 5", "Sndout Connect 16 16 6",
                            "Sndout Connect 16 16 7", "Mute Output 16 0",
                            "subcpu_misc_Set_HPMuteOnOff false", "Mute Output 16 0",
                            "Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1",
                            "delay.setDelayUpdate", "gain.setGainAsInput"));
}

TEST_F(SoundOutput, OfArcAloneClosesArcAndOpensItAgain)
{
    mBackend.deinitAudio();
    select("tv_speaker_optical_arc");
    EXPECT_EQ(mBackend.setSoundOutput("external_arc"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("Sndout Close 1", "Mute Output 1 1", "Mute Output 2 1",
                            "Sndout Optic LightOnOff 0", "Sndout Close 2", "Sndout Close 32",
                            "Mute Output 32 1", "Sndout Open 32", "Mute Output 32 0",
                            "Sndout Spdif OutputType 1 1", "Sndout EARC Outputtype 2 1 0 0 1",
                            "delay.setDelayUpdate", "gain.setGainAsInput"));
}

TEST_F(SoundOutput, OfAnIdentifierThatNoOutputHasIsRefused)
{
    mBackend.deinitAudio();
    select("external_arc");
    forget();
    for (const unsigned int number : {3u, 64u, 256u, 262144u})
        EXPECT_FALSE(mBackend.handleSetSoundOutput(static_cast<KEP_AUDIO_SNDOUT_T>(number)))
            << number;
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_ARC);
    // What was open is closed all the same, as for every output that then fails to open.
    EXPECT_THAT(controlEvents(), Contains(ControlEvent{"hw:0", "Sndout Close", {32}, 0}).Times(4));
}

TEST_F(SoundOutput, IsLoggedFromRequestToSuccess)
{
    mBackend.deinitAudio();
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_optical_arc"), kDone);
    EXPECT_EQ(
        logLines(),
        (Lines{
            info("keptvaudio:setSoundOutput", "Request to set soundOutput tv_speaker_optical_arc"),
            info("keptvaudio:handleSetSoundOutput",
                 "Inside setSoundOutput of KEP_AUDIO_SPK_OPTICAL_ARC"),
            info("keptvaudio:connectOutput", "Connect outputType 2"),
            info("keptvaudio:connectOutput", "Connect outputType 1024"),
            info("keptvaudio:getSoundOutputDigitalMode",
                 "Setting digital mode as pcm, since its not optical or arc"),
            info("keptvaudio:setSoundOutputDigital", "Request to set digital mode as pcm"),
            info("keptvaudio:getSoundOutputOpticMode",
                 "Get SoundOutputMode for Optic digitalMode pcm "),
            debug("keptvaudio:getSoundOutputOpticMode", "Optic digital mode 1"),
            info("keptvaudio:getSoundOutputArcMode",
                 "Get SoundOutputMode for ARC digitalMode pcm "),
            debug("keptvaudio:getSoundOutputArcMode", "Arc digital mode 1"),
            info("keptvaudio:setEArcOutputType",
                 "set codec type: 1 for earc output type and mixer value is 1"),
            info("keptvdelay:updateDelayValues", "calling setDelayUpdate"),
            info("keptvgain:setInputGain", "calling setGainAsInput"),
            info("keptvaudio:setSoundOutput",
                 "successfully set soundoutput tv_speaker_optical_arc"),
        }));
}

TEST_F(SoundOutput, AppliesTheUsersDigitalModeOfTheNewOutput)
{
    mBackend.deinitAudio();
    kepTvParser::getInstance()->mQualityParamsMap["soundOutputDigital"] = "auto";
    select("tv_speaker");
    EXPECT_EQ(mBackend.setSoundOutput("external_optical"), kDone);
    EXPECT_THAT(told(), Contains("Sndout Spdif OutputType 2 2"));
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker"), kDone);
    EXPECT_THAT(told(), Contains("Sndout Spdif OutputType 1 1"));
}

// --- Volume and mute that outlive the change

TEST_F(SoundOutput, LeavesTheSpeakerMutedThatTheUserMuted)
{
    mBackend.deinitAudio();
    for (const char* output : {"tv_speaker", "tv_speaker_external", "tv_speaker_headphone",
                               "tv_speaker_optical_arc", "tv_speaker_bluetooth"}) {
        for (const bool muted : {true, false}) {
            select("wisa_speaker");
            mBackend.setOutputMute("tv_speaker", muted);
            forget();
            EXPECT_EQ(mBackend.setSoundOutput(output), kDone);
            EXPECT_THAT(told(), Contains("Sndout Open 1")) << output;
            EXPECT_THAT(told(), Contains("Mute Output 1 0").Times(muted ? 0 : 1)) << output;
        }
    }
}

TEST_F(SoundOutput, UnmutesEveryOtherOutputWhateverTheUserMuted)
{
    mBackend.deinitAudio();
    const std::pair<const char*, const char*> rows[] = {
        {"external_optical", "Mute Output 2 0"},
        {"qnSoundSync", "Mute Output 4 0"},
        {"external_arc", "Mute Output 32 0"},
        {"headphone", "Mute Output 16 0"},
    };
    for (const auto& [output, unmute] : rows) {
        select("wisa_speaker");
        mBackend.setOutputMute("tv_speaker", true);
        forget();
        EXPECT_EQ(mBackend.setSoundOutput(output), kDone);
        EXPECT_THAT(told(), Contains(unmute)) << output;
    }
}

TEST_F(SoundOutput, TellsTheSoundBarVolumeAndMute)
{
    mBackend.deinitAudio();
    for (const int volume : {0, 37, 255}) {
        for (const bool muted : {false, true}) {
            select("tv_speaker");
            mBackend.setOutputVolume("tv_speaker", static_cast<std::uint8_t>(volume));
            mBackend.setOutputMute("tv_speaker", muted);
            forget();
            EXPECT_EQ(mBackend.setSoundOutput("qnSoundSync"), kDone);
            EXPECT_THAT(told(), ElementsAre("Sndout Close 1", "Mute Output 1 1", "Sndout Open 4",
                                            "Mute Output 4 1", "Sndout Optic LightOnOff 1",
                                            "Sndout Optic QN 1 " + std::to_string(volume) +
                                                (muted ? " 1 1" : " 0 1"),
                                            "Mute Output 4 0", "Sndout Spdif OutputType 1 1",
                                            "Sndout EARC Outputtype 2 1 0 0 1",
                                            "delay.setDelayUpdate", "gain.setGainAsInput"));
        }
    }
}

// --- Failures

TEST_F(SoundOutputFailure, OfAnyWriteWithoutResources)
{
    mBackend.deinitAudio();
    expectAllRefusals({});
}

TEST_F(SoundOutputFailure, OfAnyWriteWithOneResource)
{
    connectOnly("AMIXER0");
    expectAllRefusals({.connected = {"16 0"}});
}

TEST_F(SoundOutputFailure, OfAnyWriteWithThreeResources)
{
    expectAllRefusals({.connected = kInputsOfTheStart});
}

TEST_F(SoundOutputFailure, OfAnyWriteWhileTheHeadphoneHasToStayMuted)
{
    mBackend.deinitAudio();
    expectAllRefusals({.unmuteWaits = true});
}

TEST_F(SoundOutputFailure, OfTheHeadphonesLine)
{
    expectAllSelections({.connected = kInputsOfTheStart, .lineRefuses = true});
}

TEST_F(SoundOutputFailure, OfTheWholeDriverStillTriesEveryOutput)
{
    mBackend.deinitAudio();
    select("tv_speaker_optical_arc");
    injectCard("write", kRefused);
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kFailed);
    EXPECT_THAT(told(), ElementsAre("Mute Output 2 1 -> -5", "Sndout Close 32 -> -5",
                                    "Sndout Open 16 -> -5"));
    EXPECT_EQ(
        logLines(kLogError),
        (Lines{
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:disconnectSpdifOrQNSndSyncOutput",
                  "Did not able to set the element: Mute Output for external speaker/QN sound "
                  "sync"),
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:disconnectExternalArcOutput",
                  "Did not able to set the element: Sndout Close"),
            refusedByDriver(),
            error("CONTROL_ELEMENT_SET_ERROR", "keptvaudio:connectHPOutput",
                  "Did not able to set the element: Sndout Open for Headphone"),
            error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                  "Failed to set sound out tv_speaker_headphone"),
        }));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK_OPTICAL_ARC);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "tv_speaker_headphone");
}

TEST_F(SoundOutputFailure, LeavesTheOldOutputForTheNextRequest)
{
    mBackend.deinitAudio();
    select("tv_speaker_external");
    refuseWrite(0);
    EXPECT_EQ(mBackend.setSoundOutput("wisa_speaker"), kFailed);
    clearInjections();
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    Prediction prediction{{.from = KEP_AUDIO_SPK_SPDIF}};
    prediction.selection("bt_soundbar", KEP_AUDIO_BT_SOUNDBAR);
    EXPECT_EQ(told(), prediction.told);
}

TEST_F(SoundOutputFailure, OfAlsaComesAfterTheOldOutputIsClosed)
{
    mBackend.deinitAudio();
    select("tv_speaker_bluetooth");
    EXPECT_EQ(mBackend.setSoundOutput("alsa"), kFailed);
    EXPECT_THAT(told(), ElementsAre("Sndout Close 1", "Mute Output 1 1", "Sndout Close 128"));
    EXPECT_EQ(logLines(),
              (Lines{info("keptvaudio:setSoundOutput", "Request to set soundOutput alsa"),
                     info("keptvaudio:disconnectOutput", "disconnect outputType 1"),
                     info("keptvaudio:disconnectOutput", "disconnect outputType 131072"),
                     info("keptvaudio:connectOutput", "Connect outputType 256"),
                     error("SOUNDOUTPUT_SET_ERROR", "keptvaudio:setSoundOutput",
                           "Failed to set sound out alsa")}));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK_BLUETOOTH);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "alsa");
}

TEST_F(SoundOutputFailure, OfTheDigitalModeChangesTheOutputAllTheSame)
{
    mBackend.deinitAudio();
    kepTvParser::getInstance()->mQualityParamsMap["soundOutputDigital"] = "loud";
    EXPECT_EQ(mBackend.setSoundOutput("external_arc"), kDone);
    EXPECT_THAT(
        logLines(kLogError),
        ElementsAre(error("SET_SOUNDOUTPUT_DIGITAL_ERROR", "keptvaudio:setSoundOutput",
                          "Failed to set SoundOutput Digital loud during soundout change")));
    EXPECT_EQ(logLines().back(),
              info("keptvaudio:setSoundOutput", "successfully set soundoutput external_arc"));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_ARC);
}

TEST_F(SoundOutputFailure, OfTheDelayChangesTheOutputAllTheSame)
{
    injectMiddleware("delay.setDelayUpdate", 4);
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    EXPECT_THAT(told(), Contains("gain.setGainAsInput"));
    EXPECT_THAT(logLines(kLogError),
                ElementsAre(error("DELAY_MWL_ERROR", "keptvdelay:updateDelayValues",
                                  "Failed to update delay values"),
                            error("DELAY_MIDDLEWARE_ERROR", "keptvaudio:setSoundOutput",
                                  "Failed to update delay value to middleware")));
    EXPECT_EQ(logLines().back(),
              info("keptvaudio:setSoundOutput", "successfully set soundoutput bt_soundbar"));
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
}

TEST_F(SoundOutputFailure, OfTheInputGainIsTheLastThingLogged)
{
    injectMiddleware("gain.setGainAsInput", 4);
    EXPECT_EQ(mBackend.setSoundOutput("bt_soundbar"), kDone);
    const LogLine last =
        error("GAIN_MIDDLEWARE_ERROR", "keptvaudio:setSoundOutput", "Failed to update Input Gain");
    EXPECT_THAT(logLines(kLogError), ElementsAre(error("GAIN_MWL_ERROR", "keptvgain:setInputGain",
                                                       "Failed to set input gain"),
                                                 last));
    EXPECT_EQ(logLines().back(), last);
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_BT_SOUNDBAR);
    EXPECT_EQ(mBackend.getSoundOutputKey(), "bt_soundbar");
}

// --- Headphone

TEST_F(HeadphoneSelection, IsTheFirstSincePowerOnAndMutesBeforeItOpens)
{
    mBackend.deinitAudio();
    mBackend.mHeadphoneTimerMuteDone = false;
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    EXPECT_THAT(told(),
                ElementsAre("subcpu_misc_Set_HPMuteOnOff true", "Mute Output 16 1",
                            "Sndout Open 16", "Mute Output 16 0", "Sndout Spdif OutputType 1 1",
                            "Sndout EARC Outputtype 2 1 0 0 1", "delay.setDelayUpdate",
                            "gain.setGainAsInput"));
    Lines first = logLines();
    first.resize(9);
    EXPECT_EQ(
        first,
        (Lines{
            info("keptvaudio:setSoundOutput", "Request to set soundOutput headphone"),
            info("keptvaudio:disconnectOutput", "disconnect outputType 0"),
            info("keptvaudio:connectOutput", "Connect outputType 32"),
            info("keptvaudio:connectHPOutput", "connectHPOutput:: Connect soundoutput 32"),
            info("keptvaudio:connectHPOutput",
                 "AC On headphone is selected, so muting to avoid noise"),
            info("keptvaudio:setMuteHeadphone", "Called setMuteHeadphone muteStatus 1"),
            info("keptvaudio:setMuteHeadphone", "Called setMuteHeadphone mHeadphoneMuteStatus 1"),
            info("keptvaudio:executeMuteHeadphone", "Called execute muteHeadphone muteStatus 1"),
            info("keptvaudio:isValidHeadphoneMute", "isValidHeadphoneMute check 1 0 0"),
        }));
    EXPECT_THAT(logLines(),
                Contains(info("keptvaudio:connectHPOutput",
                              "During AC ON, headphone selected timer running, so skipping "
                              "unmute")));
    EXPECT_TRUE(mBackend.getMuteHeadphone());
}

TEST_F(HeadphoneSelection, SurvivesARefusedGuardAgainstNoise)
{
    mBackend.deinitAudio();
    refuseWrite(0);
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    Texts first = told();
    first.resize(3);
    EXPECT_THAT(first, ElementsAre("subcpu_misc_Set_HPMuteOnOff true -> 1",
                                   "Mute Output 16 1 -> -5", "Sndout Open 16"));
    EXPECT_EQ(logLines(kLogError).size(), 3U); // line, write, element
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
}

TEST_F(HeadphoneSelection, FailsWhenItsClosingUnmuteFails)
{
    select("tv_speaker");
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kFailed);
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_SPK);
}

TEST_F(HeadphoneSelection, EndsInFailureWhenItsMuteFails)
{
    select("headphone");
    virtualtv::inject({virtualtv::FaultPoint::SubMicro, "*", "", 1, {}});
    EXPECT_EQ(mBackend.setSoundOutput("wisa_speaker"), kFailed);
    EXPECT_THAT(told(), Contains("Sndout Open 64")); // all the same
    EXPECT_EQ(mBackend.getCurrentSoundout(), KEP_AUDIO_HP);
}

TEST_F(HeadphoneSelection, WaitsForAPendingTimer)
{
    mBackend.deinitAudio();
    select("tv_speaker");
    mBackend.mHeadphoneUnmuteTimerID = 1;
    EXPECT_EQ(mBackend.setSoundOutput("headphone"), kDone);
    mBackend.mHeadphoneUnmuteTimerID = 0;
    EXPECT_THAT(told(), Not(Contains("subcpu_misc_Set_HPMuteOnOff false")));
    EXPECT_THAT(logLines(), Contains(info("keptvaudio:setMuteHeadphone",
                                          "To avoid noise Headphone timer is running, so skip "
                                          "headphone unmute")));
}

TEST_F(HeadphoneSelection, IsUnmutedWhenTheSpeakerJoins)
{
    mBackend.deinitAudio();
    select("headphone");
    mBackend.setOutputMute("headphone", true);
    mBackend.setOutputMute("external_arc", false); // the user's status, with the headphone left
    forget();
    EXPECT_EQ(mBackend.setSoundOutput("tv_speaker_headphone"), kDone);
    Texts first = told();
    first.resize(4);
    EXPECT_THAT(first, ElementsAre("subcpu_misc_Set_HPMuteOnOff false", "Mute Output 16 0",
                                   "Sndout Open 1", "Mute Output 1 0"));
    EXPECT_FALSE(mBackend.getMuteHeadphone());
}

TEST_F(HeadphoneSelection, IsMutedWhenItIsLeft)
{
    select("tv_speaker");
    select("tv_speaker_headphone");
    EXPECT_FALSE(mBackend.getMuteHeadphone());
    select("tv_speaker");
    EXPECT_TRUE(mBackend.getMuteHeadphone());
}

// --- Operations called one at a time

TEST_F(SingleOutput, IsOpenedAndClosedByItsIdentifier)
{
    const Situation situation{.from = KEP_AUDIO_WISA, .connected = kInputsOfTheStart};
    for (const KEP_AUDIO_SNDOUT_T output :
         {KEP_AUDIO_NO_OUTPUT, KEP_AUDIO_SPK, KEP_AUDIO_SPDIF, KEP_AUDIO_HP, KEP_AUDIO_ARC,
          KEP_AUDIO_QN_SOUND_SYNC, KEP_AUDIO_BT_SOUNDBAR, KEP_AUDIO_WISA, KEP_AUDIO_BLUETOOTH}) {
        enter(situation);
        Prediction prediction{situation};
        prediction.call("+" + std::to_string(output));
        prediction.call("-" + std::to_string(output));
        EXPECT_TRUE(mBackend.connectOutput(output)) << output;
        EXPECT_TRUE(mBackend.disconnectOutput(output)) << output;
        EXPECT_EQ(told(), prediction.told) << output;
        EXPECT_EQ(logLines(), prediction.logged) << output;
    }
}

TEST_F(SingleOutput, OfAnotherIdentifierFailsSilently)
{
    for (const unsigned int number :
         {3U, 4U, 8U, 16U, 64U, 128U, 256U, 512U, 2048U, 32768U, 65536U, 262144U}) {
        const auto output = static_cast<KEP_AUDIO_SNDOUT_T>(number);
        forget();
        EXPECT_FALSE(mBackend.connectOutput(output)) << number;
        EXPECT_FALSE(mBackend.disconnectOutput(output)) << number;
        EXPECT_THAT(told(), IsEmpty()) << number;
        EXPECT_EQ(logLines(), (Lines{info("keptvaudio:connectOutput",
                                          "Connect outputType " + std::to_string(number)),
                                     info("keptvaudio:disconnectOutput",
                                          "disconnect outputType " + std::to_string(number))}));
    }
}

TEST_F(SingleOutput, HasOperationsOfItsOwn)
{
    struct Row {
        KEP_AUDIO_SNDOUT_T output;
        bool (kepTVAudio::*connect)(KEP_AUDIO_SNDOUT_T);
        bool (kepTVAudio::*disconnect)(KEP_AUDIO_SNDOUT_T);
    };
    // clang-format off
    const Row rows[] = {
        {KEP_AUDIO_SPK,           &kepTVAudio::connectTvSpeakerOutput,        &kepTVAudio::disconnectTvSpeakerOutput},
        {KEP_AUDIO_HP,            &kepTVAudio::connectHPOutput,               &kepTVAudio::disconnectHPOutput},
        {KEP_AUDIO_ARC,           &kepTVAudio::connectExternalArcOutput,      &kepTVAudio::disconnectExternalArcOutput},
        {KEP_AUDIO_SPDIF,         &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
        {KEP_AUDIO_QN_SOUND_SYNC, &kepTVAudio::connectSpdifOrQNSndSyncOutput, &kepTVAudio::disconnectSpdifOrQNSndSyncOutput},
        {KEP_AUDIO_BLUETOOTH,     &kepTVAudio::connectSpeakerBluetoothOutput, &kepTVAudio::disconnectSpeakerBluetoothOutput},
        {KEP_AUDIO_BT_SOUNDBAR,   &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
        {KEP_AUDIO_WISA,          &kepTVAudio::connectBTSndBarOrWisaOutput,   &kepTVAudio::disconnectBTSndBarOrWisaOutput},
    };
    // clang-format on
    Situation situation{.from = KEP_AUDIO_SPK, .connected = kInputsOfTheStart};
    for (const Row& row : rows) {
        for (const bool opens : {true, false}) {
            const auto& table = opens ? kOpenings : kClosings;
            const auto sequence =
                std::find_if(table.begin(), table.end(),
                             [&](const Sequence& one) { return one.output == row.output; });
            for (int refused = -1, writes = 0; refused < writes; ++refused) {
                situation.refusedWrite = refused;
                enter(situation);
                Prediction prediction{situation};
                const bool done = prediction.sequence(*sequence);
                writes = refused < 0 ? prediction.writes : writes;
                kepTVAudio& backend = mBackend;
                EXPECT_EQ((backend.*(opens ? row.connect : row.disconnect))(row.output), done)
                    << sequence->operation << " " << refused;
                EXPECT_EQ(told(), prediction.told) << sequence->operation << " " << refused;
                EXPECT_EQ(logLines(), prediction.logged) << sequence->operation << " " << refused;
            }
        }
    }
}

TEST_F(SingleOutput, OfTheArcOperationsIsAlwaysArc)
{
    mBackend.deinitAudio();
    EXPECT_TRUE(mBackend.connectExternalArcOutput(KEP_AUDIO_SPK));
    EXPECT_TRUE(mBackend.disconnectExternalArcOutput(KEP_AUDIO_SPK));
    EXPECT_THAT(told(), ElementsAre("Sndout Open 32", "Mute Output 32 0", "Sndout Close 32",
                                    "Mute Output 32 1"));
}

TEST_F(OutputTest, EachTransitionHasAnOperationOfItsOwn)
{
    using Kep = kepTVAudio;
    struct Row {
        const char* name;
        KEP_AUDIO_SNDOUT_T to;
        bool (*run)(Kep& backend, KEP_AUDIO_SNDOUT_T to);
        std::vector<KEP_AUDIO_SNDOUT_T> from;
    };
    const std::vector<KEP_AUDIO_SNDOUT_T> any = oldOutputs();
    // clang-format off
    const Row rows[] = {
        {"setSpeakerSpdifSoundOutput", KEP_AUDIO_SPK_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerSpdifSoundOutput(); }, any},
        {"setHPSoundOutput", KEP_AUDIO_HP,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setHPSoundOutput(); }, any},
        {"setSpeakerHPSoundOutput", KEP_AUDIO_SPK_HP,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerHPSoundOutput(); }, any},
        {"setSpeakerBluetoothSoundOutput", KEP_AUDIO_SPK_BLUETOOTH,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerBluetoothSoundOutput(); }, any},
        {"setSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPK_OPTICAL_ARC,
         [](Kep& b, KEP_AUDIO_SNDOUT_T) { return b.setSpeakerOpticalArcSoundOutput(); }, any},
        {"setSingularSoundOutput", KEP_AUDIO_ARC,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setSingularSoundOutput(to); }, any},
        {"setSingularSoundOutput", KEP_AUDIO_WISA,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setSingularSoundOutput(to); }, any},
        {"setTvSpeakerSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSoundOutput(to); }, any},
        {"setTvSpeakerSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSoundOutput(to); }, any},
        {"setTvSpeakerSpdifSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSpdifSoundOutput(to); }, {KEP_AUDIO_SPK_SPDIF}},
        {"setTvSpeakerSpdifSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerSpdifSoundOutput(to); }, {KEP_AUDIO_SPK_SPDIF}},
        {"setTvSpeakerHPSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerHPSoundOutput(to); }, {KEP_AUDIO_SPK_HP}},
        {"setTvSpeakerHPSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerHPSoundOutput(to); }, {KEP_AUDIO_SPK_HP}},
        {"setTvSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerOpticalArcSoundOutput(to); }, {KEP_AUDIO_SPK_OPTICAL_ARC}},
        {"setTvSpeakerOpticalArcSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerOpticalArcSoundOutput(to); }, {KEP_AUDIO_SPK_OPTICAL_ARC}},
        {"setTvSpeakerBluetoothSoundOutput", KEP_AUDIO_SPK,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerBluetoothSoundOutput(to); }, {KEP_AUDIO_SPK_BLUETOOTH}},
        {"setTvSpeakerBluetoothSoundOutput", KEP_AUDIO_SPDIF,
         [](Kep& b, KEP_AUDIO_SNDOUT_T to) { return b.setTvSpeakerBluetoothSoundOutput(to); }, {KEP_AUDIO_SPK_BLUETOOTH}},
    };
    // clang-format on
    for (const Row& row : rows) {
        for (const KEP_AUDIO_SNDOUT_T from : row.from) {
            if (from == row.to)
                continue;
            const Situation situation{.from = from, .connected = kInputsOfTheStart};
            enter(situation);
            Prediction prediction{situation};
            prediction.transition(row.to);
            EXPECT_TRUE(row.run(mBackend, row.to)) << row.name << " from " << from;
            EXPECT_EQ(told(), prediction.told) << row.name << " from " << from;
            EXPECT_EQ(logLines(), prediction.logged) << row.name << " from " << from;
            EXPECT_EQ(mBackend.getCurrentSoundout(), from) << row.name; // the caller's to change
        }
    }
}

} // namespace
