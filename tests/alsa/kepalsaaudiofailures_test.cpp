// SPDX-License-Identifier: Apache-2.0
// Values that libasound rejects. Its parser takes any text for the elements of the virtual cards,
// so the linker puts the function below in front of it.
#include "kepalsaaudio.h"

#include <cerrno>
#include <stdexcept>
#include <string>

#include <alsa/asoundlib.h>

#include <gmock/gmock.h>

#include "journal.h"
#include "platformlog.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

int gParseStatus = 0;
bool gParseThrows = false; // stands for what runs out of memory on the way

} // namespace

extern "C" {
int __real_snd_ctl_ascii_value_parse(snd_ctl_t* handle, snd_ctl_elem_value_t* value,
                                     snd_ctl_elem_info_t* info, const char* text);

int __wrap_snd_ctl_ascii_value_parse(snd_ctl_t* handle, snd_ctl_elem_value_t* value,
                                     snd_ctl_elem_info_t* info, const char* text)
{
    if (gParseThrows)
        throw std::invalid_argument{"no value"};
    return gParseStatus < 0 ? gParseStatus
                            : __real_snd_ctl_ascii_value_parse(handle, value, info, text);
}
}

namespace
{

kepAudio& backend()
{
    return *kepAlsaAudio::createObject();
}

LogLine debugOf(const std::string& function, const std::string& text)
{
    return {kLogDebug, "", "kepalsaaudio:" + function, text};
}

const LogLine kNotParsed = debugOf("setControl", "Control default parse error: Invalid argument\n");

class KepAlsaAudioFailures : public TelevisionTest
{
protected:
    KepAlsaAudioFailures()
    {
        connectLog();
        backend();
        forget();
        gParseStatus = -EINVAL;
    }

    /// Expects the card opened this often, and closed as often.
    static void expectHandles(int opened)
    {
        EXPECT_EQ(virtualtv::cardHandles().opened, opened);
        EXPECT_EQ(virtualtv::cardHandles().closed, opened);
    }
};

} // namespace

TEST_F(KepAlsaAudioFailures, AValueThatCannotBeParsedIsNotWrittenAndTheCardIsClosed)
{
    EXPECT_FALSE(kepAlsaAudio::setControl("default", "name=Softmaster", "loud"));
    EXPECT_THAT(logLines(),
                ElementsAre(debugOf("setControl", "snd_ctl_open on card default, control "
                                                  "name=Softmaster value=loud\n"),
                            kNotParsed));
    EXPECT_THAT(controlEvents(), IsEmpty());
    expectHandles(1);
}

TEST_F(KepAlsaAudioFailures, AStreamVolumeThatCannotBeParsedFails)
{
    EXPECT_EQ(backend().disconnectInput("AMIXER", "ALSA"), KEP_RESULT_FAILED);
    EXPECT_THAT(
        logLines(),
        ElementsAre(debugOf("resetMixerVolume", "reset volume  resource=20 mute=1"),
                    debugOf("setControl",
                            "snd_ctl_open on card default, control name=Softmaster0 value=0%\n"),
                    kNotParsed,
                    LogLine{kLogError, "SET_VOLUME_ERROR", "kepalsaaudio:resetMixerVolume",
                            "Failed to set control name=Softmaster0 to 0% for card:default"}));
    expectHandles(1);
}

TEST_F(KepAlsaAudioFailures, AMasterVolumeThatCannotBeParsedFails)
{
    EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED);
    EXPECT_THAT(logLines(),
                ElementsAre(debugOf("setVolume", "In setVolume, setting volume to 35%"),
                            debugOf("setControl", "snd_ctl_open on card default, control "
                                                  "name='Master Playback Volume' value=35%\n"),
                            kNotParsed,
                            LogLine{kLogError, "SET_VOLUME_ERROR", "kepalsaaudio:setOutputVolume",
                                    "Failed setting volume to 35"}));
    expectHandles(1);
}

TEST_F(KepAlsaAudioFailures, TheWriteAfterAParseErrorStartsAfresh)
{
    EXPECT_EQ(backend().setOutputMute("", false), KEP_RESULT_FAILED);
    gParseStatus = 0;
    EXPECT_EQ(backend().setOutputMute("", false), KEP_RESULT_OK);
    EXPECT_THAT(controlEvents(),
                ElementsAre(ControlEvent{"default", "Master Playback Switch", {1}, 0}));
    expectHandles(2);
}

TEST_F(KepAlsaAudioFailures, NothingThrownLeavesARequestOfTheBackend)
{
    admit(kLogError);
    gParseThrows = true;
    EXPECT_EQ(backend().connectInput("AMIXER", "ALSA", JValue{}), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().disconnectInput("AMIXER", "ALSA"), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setMute("AMIXER", "ALSA", true), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setOutputVolume("", 35), KEP_RESULT_FAILED);
    EXPECT_EQ(backend().setOutputMute("", true), KEP_RESULT_FAILED);
    std::vector<LogLine> expected;
    for (const char* slot :
         {"connectInput", "disconnectInput", "setMute", "setOutputVolume", "setOutputMute"})
        expected.push_back({kLogError, "ERROR_LOG", std::string{"kepalsaaudio:"} + slot,
                            std::string{"Exception in "} + slot + ": no value"});
    EXPECT_EQ(logLines(), expected);
    expectHandles(5);
}
