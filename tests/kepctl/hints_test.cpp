// SPDX-License-Identifier: Apache-2.0
// What kepctl says where the library's lines leave a reader alone.
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{

struct HintRow {
    const char* call;
    const char* hint; // "" for none
};
// clang-format off
constexpr HintRow kHints[] = {
    // right requests need none
    {R"("setSoundOutput", "args": ["tv_speaker"])",                        ""},
    {R"("connectInput", "args": ["ADEC0", "MAIN", {}])",                   ""},
    {R"("setOutputVolume", "args": ["tv_speaker", 20])",                   ""},
    {R"("setSettings", "args": ["audioEQ", {"status": "on"}])",            ""},
    {R"("getSettings", "args": ["getAmplifierState", {}])",                ""},
    // names
    {R"("setSoundOutput", "args": ["tv_speeker"])",                        R"(there is no sound output "tv_speeker"; did you mean "tv_speaker"?)"},
    {R"("setSoundOutput", "args": ["livingroom"])",                        R"(there is no sound output "livingroom"; "kepctl list outputs" shows them all)"},
    {R"("setSoundOutput", "args": ["alsa"])",                              R"(the output "alsa" cannot be selected)"},
    {R"("setOutputMute", "args": ["headphnoe", true])",                    R"(did you mean "headphone"?)"},
    {R"("setOutputVolume", "args": ["bt_soundbar", 20])",                  R"(the output "bt_soundbar" has no volume of its own)"},
    {R"("connectInput", "args": ["ADCE0", "MAIN", {}])",                   R"(there is no source "ADCE0"; did you mean "ADEC0"?)"},
    {R"("connectInput", "args": ["ADEC0", "MIAN", {}])",                   R"(the source "ADEC0" is reached through MAIN or SUB, not through "MIAN"; did you mean "MAIN"?)"},
    {R"("disconnectInput", "args": ["ADEC0", "ALSA"])",                    R"(is reached through MAIN or SUB, not through "ALSA")"},
    {R"("setInputVolume", "args": ["AMIXRE1", "MAIN", 5])",                R"(there is no source "AMIXRE1"; did you mean "AMIXER1"?)"},
    {R"("setSettings", "args": ["soundEngin", {"status": "on"}])",         R"(there is no category "soundEngin"; did you mean "soundEngine"?)"},
    {R"("getSettings", "args": ["getAmpliferState", {}])",                 R"(did you mean "getAmplifierState"?)"},
    // payloads
    {R"("setSettings", "args": ["audioEQ", {"stauts": "on"}])",            R"(the category "audioEQ" has no key "stauts"; did you mean "status"?)"},
    {R"("setSettings", "args": ["audioEQ", {}])",                          R"(the category "audioEQ" needs the key "status")"},
    {R"("setSettings", "args": ["audioEQ", {"status": "onn"}])",           R"("status" knows no "onn"; did you mean "on"?)"},
    {R"("setSettings", "args": ["sound", {"soundOutputDigtal": "pcm"}])",  R"(has no key "soundOutputDigtal"; did you mean "soundOutputDigital"?)"},
    {R"("setSettings", "args": ["audioEQ", "on"])",                        R"(the category "audioEQ" takes an object)"},
    {R"("setQualityAttribute", "args": [{"requestTyp": "x"}])",            R"(a quality attribute has no key "requestTyp"; did you mean "requestType"?)"},
};
// clang-format on

/// The hints among what went to standard error.
Texts hintsOf(const Execution& outcome)
{
    Texts hints;
    for (const std::string& line : linesOf(outcome.errors))
        if (line.starts_with("    hint: "))
            hints.push_back(line.substr(10));
    return hints;
}

} // namespace

TEST_F(Kepctl, AMisnamedRequestGetsTheClosestName)
{
    for (const HintRow& row : kHints) {
        const std::string content = kInitialize + R"({"call": )" + row.call + "}\n";
        const Execution outcome = kepctl({"run", script(content)});
        if (*row.hint == '\0') {
            EXPECT_EQ(outcome.errors, "") << row.call;
        } else {
            EXPECT_THAT(outcome.errors, AllOf(StartsWith("    hint: "), HasSubstr(row.hint)))
                << row.call;
        }
    }
}

TEST_F(Kepctl, HintsBelongToTextAlone)
{
    const std::string path = script(kVolume40 + R"({"inject": {"control": "*", "status": -5}})");
    EXPECT_EQ(kepctl({"run", "--format", "jsonl", path}).errors, "");
    EXPECT_EQ(kepctl({"run", "--quiet", path}).errors, "");
    EXPECT_NE(kepctl({"run", path}).errors, "");
    EXPECT_EQ(kepctl({"run", path}).output, kepctl({"run", "--quiet", path}).output);
}

TEST_F(Kepctl, WithoutABackendARequestSaysSo)
{
    EXPECT_THAT(hintsOf(playAsText(kVolume40 + R"({"call": "getDefaultVolume"})")),
                ElementsAre(HasSubstr("nothing is initialised yet")));
    const Texts hints =
        hintsOf(kepctl({"run", "--config", "/nowhere", script(kInitialize + kVolume40)}));
    EXPECT_THAT(hints, ElementsAre(HasSubstr("no backend runs: initialize has failed before")));
}

TEST_F(Kepctl, AFaultyConfigurationIsNamedWithItsFileAndKey)
{
    struct Row {
        const char* content;
        const char* hint;
    };
    const Row rows[] = {
        {R"({"Q27R6": {"kepAudio": "TV"}})", R"(lacks the section "Q27R5" (it has "Q27R6"))"},
        {R"({"Q27R5": {"kepAudoi": "TV"}})", R"(the key "kepAudio" (it has "kepAudoi"))"},
        {R"({"Q27R5": {"kepAudio": 1}})",
         R"("kepAudio" must be the name of a backend: ALSA or TV)"},
        {R"({"Q27R5": {"kepAudio": "TVV"}})",
         R"(names the backend "TVV"; registered are ALSA or TV; did you mean "TV"?)"},
    };
    for (const Row& row : rows) {
        writeConfig("kep-config.json", row.content);
        const Execution outcome = kepctl({"run", "--config", directory(), script(kInitialize)});
        EXPECT_THAT(hintsOf(outcome),
                    ElementsAre(AllOf(HasSubstr(row.hint),
                                      HasSubstr((directory() / "kep-config.json").string()))))
            << row.content;
    }
}

TEST_F(Kepctl, AFaultyCapabilityFileIsNamedWithItsKey)
{
    writeConfig("kep-config.json", R"({"Q27R5": {"kepAudio": "ALSA"}})");
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": "default",
        "mutControlName": "'Master Playback Switch'", "volumeControlName": "x"}})");
    const Execution outcome = kepctl({"run", "--config", directory(), script(kInitialize)});
    EXPECT_THAT(hintsOf(outcome),
                ElementsAre(HasSubstr(R"(the key "muteControlName" (it has "mutControlName"))")));
}

TEST_F(Kepctl, ACardOrElementThatThereIsNotIsNamed)
{
    writeConfig("kep-config.json", R"({"Q27R5": {"kepAudio": "ALSA"}})");
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": "nosuch",
        "muteControlName": "'Master Playback Switch'",
        "volumeControlName": "'Master Playback Volume'"}})");
    const std::string path = script(kInitialize + kVolume40);
    EXPECT_THAT(hintsOf(kepctl({"run", "--config", directory(), path})),
                ElementsAre(HasSubstr(R"(there is no card "nosuch")")));
    writeConfig("device-cap.json", R"({"audioMasterDefault": {"card": "default",
        "muteControlName": "'Master Playback Switch'",
        "volumeControlName": "'Master Playback Volum'"}})");
    EXPECT_THAT(hintsOf(kepctl({"run", "--config", directory(), path})),
                ElementsAre(AllOf(HasSubstr(R"(has no element "Master Playback Volum")"),
                                  HasSubstr(R"(did you mean "Master Playback Volume"?)"))));
}

TEST_F(Kepctl, AStateFileThatCannotBeWrittenIsNamedOnceWithItsVariable)
{
    setenv("KEP_VIRTUALTV_STATE", "/proc/nosuch/state", 1);
    EXPECT_THAT(hintsOf(playAsText(kInitialize + kVolume40 + kVolume40)),
                ElementsAre(AllOf(HasSubstr("/proc/nosuch/state cannot be written"),
                                  HasSubstr("KEP_VIRTUALTV_STATE"))));
}

TEST_F(Kepctl, AnInjectedFailureExplainsItself)
{
    const Execution outcome = playAsText(kInitialize +
                                         R"({"inject": {"stage": "open", "status": -5}})"
                                         "\n" +
                                         kVolume40);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(Kepctl, AnInjectionThatNeverMetItsAccessIsToldAtTheEnd)
{
    const std::string path =
        script(kInitialize +
               R"({"inject": {"control": "Gain Input", "status": -5}})"
               "\n"
               R"({"inject": {"control": "Master Playback Volume", "status": -5}})"
               "\n"
               R"({"inject": {"gpio": "GPIO_RD_HP_LINK", "status": 3}})"
               "\n" +
               kVolume40 + R"({"clear": true})");
    const Execution outcome = kepctl({"run", "--backend", "ALSA", path});
    EXPECT_EQ(outcome.status, kPlayed);
    EXPECT_THAT(
        linesOf(outcome.errors),
        ElementsAre("kepctl: " + path + ":2: the injection at \"Gain Input\" never met its access",
                    "kepctl: " + path +
                        ":4: the injection at \"GPIO_RD_HP_LINK\" never met its access"));
}

TEST_F(Kepctl, LibasoundsOwnMessagesAreShownOnceEachUnlessQuiet)
{
    setenv("ALSA_CONFIG_PATH", file("asound.conf", "ctl.default { type nosuch }\n").c_str(), 1);
    const std::string path = script(kInitialize + kVolume40 + kVolume40);
    const Execution outcome = kepctl({"run", "--backend", "ALSA", "--hardware", path});
    Texts messages;
    for (const std::string& line : linesOf(outcome.errors))
        if (line.starts_with("    libasound: "))
            messages.push_back(line);
    EXPECT_THAT(messages, Not(IsEmpty()));
    EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(), messages.size());
    EXPECT_EQ(kepctl({"run", "--backend", "ALSA", "--hardware", "--quiet", path}).errors, "");
}

TEST_F(Kepctl, AMixerThatHasNothingToDoSaysSo)
{
    EXPECT_THAT(hintsOf(playAsText(kInitialize + R"({"call": "setSoundOutput", "args": ["x"]})")),
                ElementsAre("the backend ALSA does nothing for setSoundOutput"));
}
