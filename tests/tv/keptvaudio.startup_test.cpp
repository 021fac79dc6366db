// SPDX-License-Identifier: Apache-2.0
// The initial gains: what is written, what is still written after a failure, and the note that is
// kept of it.

#include <cerrno>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "tvbackendtest.h"

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr int kGain = 8388608;

ControlEvent inputGain(int index, int port, int status = 0)
{
    return {"hw:0", "Gain Input", {index, port, kGain}, status};
}

ControlEvent outputGain(int status = 0)
{
    return {"hw:0", "Gain Output", {1, kGain}, status};
}

LogLine startupLine(int level, const std::string& id, const std::string& text)
{
    return {level, id, "keptvaudio:initGainAudio", text};
}

const LogLine kBegun = startupLine(kLogInfo, "INFO_LOG", "init Gain Audio");
const LogLine kNotYetDone = startupLine(kLogInfo, "INFO_LOG", "mIsInitGainAudioUpdate value is 0");
const LogLine kAllDone = startupLine(kLogInfo, "INFO_LOG", "mIsInitGainAudioUpdate value is 1");
const LogLine kWriteError{kLogError, "CONTROL_ELEMENT_WRITE_ERROR", "keptvaudio:setControlElement",
                          "Control element write error: Input/output error"};
const LogLine kInputNotSet = startupLine(kLogError, "CONTROL_ELEMENT_SET_ERROR",
                                         "Did not able to set the element Gain Input");
const LogLine kOutputNotSet = startupLine(kLogError, "CONTROL_ELEMENT_SET_ERROR",
                                          "Did not able to set the element: Gain Output");

class InitGainAudio : public TelevisionTest
{
protected:
    InitGainAudio()
    {
        connectLog();
        connect(
            {KEP_AUDIO_RESOURCE_AMIXER5, KEP_AUDIO_RESOURCE_AMIXER6, KEP_AUDIO_RESOURCE_AMIXER7});
    }

    /// The state, as if exactly these had been connected.
    void connect(std::vector<KEP_AUDIO_RESOURCE_T> resources)
    {
        mBackend.mConnectedResources = std::move(resources);
    }

    /// Lets `passed` writes of the element through, then makes `failed` of them fail.
    static void injectWrites(const std::string& element, unsigned int passed, unsigned int failed)
    {
        virtualtv::inject({virtualtv::FaultPoint::CardWrite, element, "hw:0", 0, passed});
        virtualtv::inject({virtualtv::FaultPoint::CardWrite, element, "hw:0", -EIO, failed});
    }

    [[nodiscard]] bool noted() const { return mBackend.mIsInitGainAudioUpdate; }

    static void expectHandles(int opened)
    {
        EXPECT_EQ(virtualtv::cardHandles().opened, opened);
        EXPECT_EQ(virtualtv::cardHandles().closed, opened);
    }

    OpenBackend mBackend;
};

} // namespace

TEST_F(InitGainAudio, WritesEveryConnectedResourceThenTheSpeaker)
{
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(),
                ElementsAre(inputGain(16, 5), inputGain(16, 6), inputGain(16, 7), outputGain()));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kAllDone));
    EXPECT_TRUE(noted());
    expectHandles(4);
}

TEST_F(InitGainAudio, FollowsTheOrderOfConnection)
{
    connect({KEP_AUDIO_RESOURCE_AMIXER7, KEP_AUDIO_RESOURCE_ADEC1, KEP_AUDIO_RESOURCE_AMIXER0,
             KEP_AUDIO_RESOURCE_ADEC0, KEP_AUDIO_RESOURCE_AMIXER7});
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(inputGain(16, 7), inputGain(1, 1), inputGain(16, 0),
                                             inputGain(1, 0), inputGain(16, 7), outputGain()));
    EXPECT_TRUE(noted());
}

TEST_F(InitGainAudio, WritesAResourceThatTheDriverDoesNotKnowAllTheSame)
{
    connect({KEP_AUDIO_RESOURCE_INVALID});
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(inputGain(0, -1), outputGain()));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kAllDone));
}

TEST_F(InitGainAudio, WithoutResourcesWritesTheSpeakerOnly)
{
    connect({});
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(outputGain()));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kAllDone));
    EXPECT_TRUE(noted());
}

TEST_F(InitGainAudio, LeavesTheConnectedResourcesAlone)
{
    mBackend.initGainAudio();
    EXPECT_THAT(mBackend.mConnectedResources,
                ElementsAre(KEP_AUDIO_RESOURCE_AMIXER5, KEP_AUDIO_RESOURCE_AMIXER6,
                            KEP_AUDIO_RESOURCE_AMIXER7));
}

TEST_F(InitGainAudio, ThatIsNotAdmittedStillWrites)
{
    admit(kLogError);
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(),
                ElementsAre(inputGain(16, 5), inputGain(16, 6), inputGain(16, 7), outputGain()));
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_TRUE(noted());
}

// --- Failures

TEST_F(InitGainAudio, GoesOnAfterAResourceThatFails)
{
    for (unsigned int failing = 0; failing < 3; ++failing) {
        injectWrites("Gain Input", failing, 1);
        mBackend.initGainAudio();
        std::vector<ControlEvent> writes{inputGain(16, 5), inputGain(16, 6), inputGain(16, 7),
                                         outputGain()};
        writes[failing].status = -EIO;
        EXPECT_THAT(controlEvents(), ElementsAreArray(writes)) << failing;
        EXPECT_THAT(logLines(), ElementsAre(kBegun, kWriteError, kInputNotSet, kNotYetDone))
            << failing;
        EXPECT_FALSE(noted()) << failing;
        clearInjections();
        forget();
    }
    expectHandles(12);
}

TEST_F(InitGainAudio, ReportsEveryResourceThatFails)
{
    injectWrites("Gain Input", 1, 2);
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(inputGain(16, 5), inputGain(16, 6, -EIO),
                                             inputGain(16, 7, -EIO), outputGain()));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kWriteError, kInputNotSet, kWriteError,
                                        kInputNotSet, kNotYetDone));
    EXPECT_FALSE(noted());
}

TEST_F(InitGainAudio, EndsWithoutItsLastLineWhenTheSpeakerFails)
{
    injectCard("write", -EIO, "Gain Output");
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(inputGain(16, 5), inputGain(16, 6), inputGain(16, 7),
                                             outputGain(-EIO)));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kWriteError, kOutputNotSet));
    EXPECT_FALSE(noted());
    expectHandles(4);
}

TEST_F(InitGainAudio, TriesEverythingWhenEverythingFails)
{
    injectCard("write", -EIO);
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(), ElementsAre(inputGain(16, 5, -EIO), inputGain(16, 6, -EIO),
                                             inputGain(16, 7, -EIO), outputGain(-EIO)));
    EXPECT_THAT(logLines(),
                ElementsAre(kBegun, kWriteError, kInputNotSet, kWriteError, kInputNotSet,
                            kWriteError, kInputNotSet, kWriteError, kOutputNotSet));
    EXPECT_FALSE(noted());
    expectHandles(4);
}

TEST_F(InitGainAudio, TriesEverythingWhenTheCardCannotBeOpened)
{
    injectCard("open", -ENODEV);
    mBackend.initGainAudio();
    const LogLine notOpened{kLogError, "CONTROL_HANDLE_OPEN_ERROR", "keptvaudio:setControlElement",
                            "Control hw:0 open error: No such device"};
    EXPECT_THAT(logLines(), ElementsAre(kBegun, notOpened, kInputNotSet, notOpened, kInputNotSet,
                                        notOpened, kInputNotSet, notOpened, kOutputNotSet));
    EXPECT_FALSE(noted());
    expectHandles(0);
}

// --- The note

TEST_F(InitGainAudio, IsNotedByTheFirstRunInWhichAllGoesThrough)
{
    injectWrites("Gain Input", 0, 1);
    mBackend.initGainAudio();
    EXPECT_FALSE(noted());
    injectWrites("Gain Output", 0, 1);
    mBackend.initGainAudio();
    EXPECT_FALSE(noted());
    mBackend.initGainAudio();
    EXPECT_TRUE(noted());
}

TEST_F(InitGainAudio, StaysNotedWhenALaterRunFails)
{
    mBackend.initGainAudio();
    forget();
    injectWrites("Gain Input", 0, 1);
    mBackend.initGainAudio();
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kWriteError, kInputNotSet, kAllDone));
    EXPECT_TRUE(noted());
    forget();
    injectWrites("Gain Output", 0, 1);
    mBackend.initGainAudio();
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kWriteError, kOutputNotSet));
    EXPECT_TRUE(noted());
}

TEST_F(InitGainAudio, ThatIsNotedWritesAgainWhenAsked)
{
    mBackend.initGainAudio();
    forget();
    mBackend.initGainAudio();
    EXPECT_THAT(controlEvents(),
                ElementsAre(inputGain(16, 5), inputGain(16, 6), inputGain(16, 7), outputGain()));
    EXPECT_THAT(logLines(), ElementsAre(kBegun, kAllDone));
}
