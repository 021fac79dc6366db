// SPDX-License-Identifier: Apache-2.0
// The television backend as an object: registration, life cycle, active state. The parameter store
// is always there; the linker puts a function of ours in front of it, so that it can be missing.

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "faults.h"
#include "journal.h"
#include "kepfactory.h"
#include "tvbackendtest.h"

namespace
{

bool gParserMissing = false;

} // namespace

extern "C" {
kepTvParser* __real__ZN11kepTvParser11getInstanceEv();

kepTvParser* __wrap__ZN11kepTvParser11getInstanceEv()
{
    return gParserMissing ? nullptr : __real__ZN11kepTvParser11getInstanceEv();
}
}

namespace
{

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::SizeIs;

const LogLine kUnregistered{kLogDebug, "", "keptvaudio:~kepTVAudio", "UnRegister kepTVAudio ..."};

LogLine settingLine(const std::string& active)
{
    return {kLogInfo, "INFO_LOG", "keptvaudio:setActiveState", "Setting ActiveStatus: " + active};
}

LogLine gettingLine(const std::string& active)
{
    return {kLogInfo, "INFO_LOG", "keptvaudio:getActiveState", "Getting ActiveStatus: " + active};
}

kepFactory& registry()
{
    return *kepFactory::getInstance();
}

/// Log texts and driver writes in the order in which the action makes them; it ends the recording.
std::vector<std::string> storyOf(const std::function<void()>& action)
{
    std::vector<std::string> story;
    LogSetSink([&](const LogMessage& message) {
        const std::string text = message.text;
        story.push_back(text.substr(text.find(") ") + 2));
    });
    virtualtv::listen([&](const JValue& event) {
        story.push_back(event["event"].asString() == "control"
                            ? event["element"].asString() + " " + event["values"].stringify()
                            : event.stringify());
    });
    action();
    LogSetSink([](const LogMessage&) {});
    virtualtv::listen({});
    return story;
}

class KepTVAudio : public TelevisionTest
{
protected:
    KepTVAudio() { connectLog(); }

    [[nodiscard]] std::vector<ControlEvent> writesOf(const std::string& element) const
    {
        std::vector<ControlEvent> writes = controlEvents();
        std::erase_if(writes, [&](const ControlEvent& event) { return event.what != element; });
        return writes;
    }

    [[nodiscard]] std::size_t countOf(const std::string& id) const
    {
        const auto withId = [&](const LogLine& line) { return line.id == id; };
        return static_cast<std::size_t>(
            std::count_if(logLines().begin(), logLines().end(), withId));
    }

    static void expectNoOpenHandle()
    {
        EXPECT_EQ(virtualtv::cardHandles().opened, virtualtv::cardHandles().closed);
    }

    OpenBackend mBackend;
};

using KepTVAudioObject = TelevisionTest;

} // namespace

// --- Registration

TEST_F(KepTVAudioObject, IsRegisteredBeforeAnythingIsCalled)
{
    EXPECT_TRUE(kepTVAudio::mIsObjRegistered);
    ASSERT_THAT(registry().getRegistry(), Contains(Key("TV")));
    EXPECT_EQ(registry().getRegistry().at("TV"), &kepTVAudio::createObject);
}

TEST_F(KepTVAudioObject, IsTheSameOnEveryCreation)
{
    connectLog();
    kepAudio* const created = kepTVAudio::createObject();
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(kepTVAudio::createObject(), created);
    EXPECT_EQ(kepTVAudio::getInstance(), created);
    EXPECT_EQ(kepTVAudio::getInstance(), kepTVAudio::getInstance());
    EXPECT_EQ(registry().createKEPAudioObj("TV"), created);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(KepTVAudioObject, IsNotCreatedWhenItCouldNotRegister)
{
    kepTVAudio::mIsObjRegistered = false;
    EXPECT_EQ(kepTVAudio::createObject(), nullptr);
    EXPECT_EQ(registry().createKEPAudioObj("TV"), nullptr);
    kepTVAudio::mIsObjRegistered = true;
    EXPECT_EQ(kepTVAudio::createObject(), kepTVAudio::getInstance());
}

TEST_F(KepTVAudioObject, UnregistersItselfAndNobodyElseWhenItIsDestroyed)
{
    connectLog();
    registry().Register("RADIO", &kepTVAudio::createObject);
    {
        const OpenBackend backend;
        EXPECT_THAT(registry().getRegistry(), Contains(Key("TV")));
        EXPECT_THAT(logLines(), IsEmpty());
    }
    EXPECT_THAT(logLines(), ElementsAre(kUnregistered));
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_THAT(registry().getRegistry(), Not(Contains(Key("TV"))));
    EXPECT_THAT(registry().getRegistry(), Contains(Key("RADIO")));
    EXPECT_EQ(registry().createKEPAudioObj("TV"), nullptr);
}

TEST_F(KepTVAudioObject, IsDestroyedAfterItsUseWithoutTouchingTheTelevision)
{
    connectLog();
    {
        OpenBackend backend;
        EXPECT_EQ(backend.initAudio(), 1U);
        forget();
    }
    EXPECT_THAT(logLines(), ElementsAre(kUnregistered));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(KepTVAudioObject, SaysThatItIsDestroyedAtDebugLevelOnly)
{
    connectLog();
    admit(kLogInfo);
    {
        const OpenBackend backend;
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- Fresh

TEST_F(KepTVAudio, IsActiveAtFirst)
{
    EXPECT_TRUE(mBackend.getActiveState());
    EXPECT_THAT(logLines(), ElementsAre(gettingLine("1")));
}

TEST_F(KepTVAudio, HoldsNothingAtFirst)
{
    EXPECT_TRUE(mBackend.mEarcCapability.isNull());
    const auto& [contiConfig, hardwareConfig, modelConfig] = mBackend.mStartupConditions;
    EXPECT_FALSE(contiConfig);
    EXPECT_FALSE(hardwareConfig);
    EXPECT_FALSE(modelConfig);
    EXPECT_FALSE(mBackend.mIsInitGainAudioUpdate);
    EXPECT_EQ(mBackend.mCurrentSoundout, KEP_AUDIO_NO_OUTPUT);
    EXPECT_THAT(mBackend.mConnectedResources, IsEmpty());
    EXPECT_THAT(mBackend.mSettingsList, IsEmpty());
    EXPECT_THAT(mBackend.mStoredSettings, IsEmpty());
    EXPECT_THAT(mBackend.AudioVideoInfoMapVector, IsEmpty());
    EXPECT_EQ(mBackend.mPtrParserInstance, nullptr);
    EXPECT_EQ(mBackend.mPtrTVAmplifier, nullptr);
    EXPECT_EQ(mBackend.mPtrTVDelay, nullptr);
    EXPECT_EQ(mBackend.mPtrTVGain, nullptr);
    EXPECT_EQ(mBackend.mPtrTVSoundEngine, nullptr);
    const unsigned int timer = OpenBackend::mHeadphoneUnmuteTimerID;
    EXPECT_EQ(timer, 0U);
    EXPECT_FALSE(OpenBackend::mHeadphoneTimerMuteDone);
}

// --- Active state

TEST_F(KepTVAudio, TheActiveStateIsKeptAndLogged)
{
    mBackend.setActiveState(false);
    EXPECT_FALSE(mBackend.getActiveState());
    EXPECT_FALSE(mBackend.getActiveState());
    mBackend.setActiveState(true);
    EXPECT_TRUE(mBackend.getActiveState());
    EXPECT_THAT(logLines(), ElementsAre(settingLine("0"), gettingLine("0"), gettingLine("0"),
                                        settingLine("1"), gettingLine("1")));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(KepTVAudio, TheActiveStateIsKeptWhenItIsNotLogged)
{
    admit(kLogWarning);
    mBackend.setActiveState(false);
    EXPECT_FALSE(mBackend.getActiveState());
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepTVAudio, TheActiveStateOutlivesStartAndStop)
{
    mBackend.setActiveState(false);
    mBackend.initAudio();
    EXPECT_FALSE(mBackend.getActiveState());
    mBackend.deinitAudio();
    EXPECT_FALSE(mBackend.getActiveState());
}

// --- Start

TEST_F(KepTVAudio, TheSpeakerNeedsNoStart)
{
    EXPECT_EQ(mBackend.initSpeaker(), 1U);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(virtualtv::cardHandles().opened, 0);
}

TEST_F(KepTVAudio, TheStartConnectsThreeMixerInputs)
{
    EXPECT_EQ(mBackend.initAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, ElementsAre(25U, 26U, 27U));
}

TEST_F(KepTVAudio, TheStartBindsStoreAndAdapters)
{
    mBackend.initAudio();
    EXPECT_EQ(mBackend.mPtrParserInstance, kepTvParser::getInstance());
    EXPECT_EQ(mBackend.mPtrTVAmplifier, kepTVAmplifier::getInstance());
    EXPECT_EQ(mBackend.mPtrTVDelay, kepTVDelay::getInstance());
    EXPECT_EQ(mBackend.mPtrTVGain, kepTVGain::getInstance());
    EXPECT_EQ(mBackend.mPtrTVSoundEngine, kepTVSoundEngine::getInstance());
    EXPECT_NE(mBackend.mPtrTVGain, nullptr);
}

TEST_F(KepTVAudio, TheStartWritesTheGainsThenInitialisesTheAdaptersInTheirOrder)
{
    EXPECT_THAT(storyOf([this] { mBackend.initAudio(); }),
                ElementsAre("init Gain Audio", "Gain Input [16,5,8388608]",
                            "Gain Input [16,6,8388608]", "Gain Input [16,7,8388608]",
                            "Gain Output [1,8388608]", "mIsInitGainAudioUpdate value is 1",
                            "mPtrAmplifierInstance is Initialised",
                            "mPtrDelayInstance is Initialised", "mPtrGainInstance is Initialised",
                            "mPtrSoundEngineInstance is Initialised"));
}

TEST_F(KepTVAudio, TheStartNeitherParsesNorCallsTheMiddleware)
{
    mBackend.initAudio();
    EXPECT_THAT(middlewareCalls(), IsEmpty());
    EXPECT_EQ(events().size(), controlEvents().size());
    EXPECT_THAT(logLines(kLogError), IsEmpty());
}

TEST_F(KepTVAudio, TheAmplifierBootsFromTheEndOfTheStart)
{
    EXPECT_FALSE(kepTVAmplifier::getInstance()->mIsBootup);
    std::vector<bool> duringTheStart;
    LogSetSink([&](const LogMessage&) {
        duringTheStart.push_back(kepTVAmplifier::getInstance()->mIsBootup);
    });
    mBackend.initAudio();
    LogSetSink([](const LogMessage&) {});
    EXPECT_THAT(duringTheStart, SizeIs(6));
    EXPECT_THAT(duringTheStart, Each(false));
    EXPECT_TRUE(kepTVAmplifier::getInstance()->mIsBootup);
}

TEST_F(KepTVAudio, TheAmplifierBootsAgainWithTheNextStart)
{
    mBackend.initAudio();
    kepTVAmplifier::getInstance()->mIsBootup = false;
    mBackend.initAudio();
    EXPECT_TRUE(kepTVAmplifier::getInstance()->mIsBootup);
}

TEST_F(KepTVAudio, TheStartSelectsNoOutput)
{
    mBackend.initAudio();
    EXPECT_EQ(mBackend.mCurrentSoundout, KEP_AUDIO_NO_OUTPUT);
    mBackend.mCurrentSoundout = KEP_AUDIO_ARC;
    mBackend.initAudio();
    EXPECT_EQ(mBackend.mCurrentSoundout, KEP_AUDIO_ARC);
}

TEST_F(KepTVAudio, ASecondStartConnectsTheMixerInputsOnceMore)
{
    mBackend.initAudio();
    forget();
    EXPECT_EQ(mBackend.initAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, ElementsAre(25U, 26U, 27U, 25U, 26U, 27U));
    EXPECT_THAT(controlEvents(), ElementsAre(ControlEvent{"hw:0", "Gain Input", {16, 5, 8388608}},
                                             ControlEvent{"hw:0", "Gain Input", {16, 6, 8388608}},
                                             ControlEvent{"hw:0", "Gain Input", {16, 7, 8388608}},
                                             ControlEvent{"hw:0", "Gain Input", {16, 5, 8388608}},
                                             ControlEvent{"hw:0", "Gain Input", {16, 6, 8388608}},
                                             ControlEvent{"hw:0", "Gain Input", {16, 7, 8388608}},
                                             ControlEvent{"hw:0", "Gain Output", {1, 8388608}}));
    EXPECT_EQ(mBackend.mPtrTVGain, kepTVGain::getInstance());
}

TEST_F(KepTVAudio, TheStartKeepsWhatIsConnectedBeforeIt)
{
    mBackend.mConnectedResources = {KEP_AUDIO_RESOURCE_ADEC0};
    mBackend.initAudio();
    EXPECT_THAT(mBackend.mConnectedResources, ElementsAre(8U, 25U, 26U, 27U));
    EXPECT_THAT(writesOf("Gain Input"), SizeIs(4));
}

TEST_F(KepTVAudio, TheStartSucceedsThroughTheInterfaceToo)
{
    kepAudio* const created = kepTVAudio::createObject();
    EXPECT_EQ(created->initAudio(), 1U);
    EXPECT_THAT(controlEvents(), SizeIs(4));
    EXPECT_EQ(created->deinitAudio(), 1U);
}

// --- Failures of the start

TEST_F(KepTVAudio, WithoutTheStoreTheStartFailsAtOnce)
{
    gParserMissing = true;
    EXPECT_EQ(mBackend.initAudio(), 0U);
    gParserMissing = false;
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_THAT(mBackend.mConnectedResources, IsEmpty());
    EXPECT_EQ(mBackend.mPtrParserInstance, nullptr);
    EXPECT_EQ(mBackend.mPtrTVAmplifier, nullptr);
    EXPECT_FALSE(kepTVAmplifier::getInstance()->mIsBootup);
    EXPECT_EQ(mBackend.initAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, SizeIs(3));
}

TEST_F(KepTVAudio, TheStartSucceedsWhateverBecomesOfTheGains)
{
    for (const char* stage : {"open", "load", "info", "write"}) {
        injectCard(stage, -EIO);
        EXPECT_EQ(mBackend.initAudio(), 1U) << stage;
        EXPECT_THAT(mBackend.mConnectedResources, ElementsAre(25U, 26U, 27U)) << stage;
        EXPECT_EQ(countOf("CONTROL_ELEMENT_SET_ERROR"), 4U) << stage;
        EXPECT_EQ(logLines().back().text, "mPtrSoundEngineInstance is Initialised") << stage;
        EXPECT_TRUE(kepTVAmplifier::getInstance()->mIsBootup) << stage;
        EXPECT_FALSE(mBackend.mIsInitGainAudioUpdate) << stage;
        expectNoOpenHandle();
        kepTVAmplifier::getInstance()->mIsBootup = false;
        mBackend.deinitAudio();
        clearInjections();
        forget();
    }
}

TEST_F(KepTVAudio, AGainThatFailsDoesNotKeepTheAdaptersFromTheirStart)
{
    injectCard("write", -EIO, "Gain Output");
    EXPECT_THAT(
        storyOf([this] { mBackend.initAudio(); }),
        ElementsAre("init Gain Audio", "Gain Input [16,5,8388608]", "Gain Input [16,6,8388608]",
                    "Gain Input [16,7,8388608]", "Gain Output [1,8388608]",
                    "Control element write error: Input/output error",
                    "Did not able to set the element: Gain Output",
                    "mPtrAmplifierInstance is Initialised", "mPtrDelayInstance is Initialised",
                    "mPtrGainInstance is Initialised", "mPtrSoundEngineInstance is Initialised"));
}

// --- Stop

TEST_F(KepTVAudio, TheStopForgetsTheConnectedResourcesAndKeepsTheirStorage)
{
    mBackend.initAudio();
    const std::size_t storage = mBackend.mConnectedResources.capacity();
    EXPECT_EQ(mBackend.deinitAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, IsEmpty());
    EXPECT_EQ(mBackend.mConnectedResources.capacity(), storage);
}

TEST_F(KepTVAudio, TheStopDoesNothingElse)
{
    mBackend.initAudio();
    mBackend.mCurrentSoundout = KEP_AUDIO_HP;
    mBackend.mStoredSettings["soundOutput"] = "headphone";
    mBackend.mSettingsList.emplace_back(JValue::object());
    mBackend.AudioVideoInfoMapVector.push_back({{"pipelineId", "p1"}});
    mBackend.mEarcCapability = JValue::array();
    forget();
    EXPECT_EQ(mBackend.deinitAudio(), 1U);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(mBackend.mCurrentSoundout, KEP_AUDIO_HP);
    EXPECT_THAT(mBackend.mStoredSettings, SizeIs(1));
    EXPECT_THAT(mBackend.mSettingsList, SizeIs(1));
    EXPECT_THAT(mBackend.AudioVideoInfoMapVector, SizeIs(1));
    EXPECT_TRUE(mBackend.mEarcCapability.isArray());
    EXPECT_TRUE(mBackend.mIsInitGainAudioUpdate);
    EXPECT_TRUE(kepTVAmplifier::getInstance()->mIsBootup);
    EXPECT_EQ(mBackend.mPtrParserInstance, kepTvParser::getInstance());
    EXPECT_EQ(mBackend.mPtrTVGain, kepTVGain::getInstance());
}

TEST_F(KepTVAudio, TheStopSucceedsWithoutAStartAndAfterAStop)
{
    EXPECT_EQ(mBackend.deinitAudio(), 1U);
    mBackend.initAudio();
    EXPECT_EQ(mBackend.deinitAudio(), 1U);
    EXPECT_EQ(mBackend.deinitAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, IsEmpty());
}

TEST_F(KepTVAudio, AStartAfterAStopBeginsAnew)
{
    mBackend.initAudio();
    mBackend.initAudio();
    mBackend.deinitAudio();
    forget();
    EXPECT_EQ(mBackend.initAudio(), 1U);
    EXPECT_THAT(mBackend.mConnectedResources, ElementsAre(25U, 26U, 27U));
    EXPECT_THAT(writesOf("Gain Input"), SizeIs(3));
    EXPECT_THAT(writesOf("Gain Output"), SizeIs(1));
}

// --- Endurance

TEST_F(KepTVAudio, NoHandleIsLostInAStormOfFailures)
{
    using virtualtv::FaultPoint;
    constexpr FaultPoint kPoints[] = {FaultPoint::CardOpen, FaultPoint::CardLoad,
                                      FaultPoint::CardInfo, FaultPoint::CardWrite};
    std::mt19937 random{20};
    const auto below = [&](unsigned int limit) {
        return static_cast<unsigned int>(random() % limit);
    };
    std::size_t failed = 0;
    std::size_t written = 0;
    bool noted = false;
    for (int round = 0; round < 200; ++round) {
        for (unsigned int planted = below(4); planted > 0; --planted)
            virtualtv::inject({kPoints[below(4)], "*", "hw:0", below(3) == 0 ? 0 : -EIO, below(4)});
        if (below(8) == 0)
            clearInjections();

        EXPECT_EQ(mBackend.initAudio(), 1U) << round;
        const std::size_t succeeded = 4 - countOf("CONTROL_ELEMENT_SET_ERROR");
        std::vector<ControlEvent> writes = controlEvents();
        std::erase_if(writes, [](const ControlEvent& event) { return event.status != 0; });
        EXPECT_EQ(writes.size(), succeeded) << round;
        noted = noted || succeeded == 4;
        EXPECT_EQ(mBackend.mIsInitGainAudioUpdate, noted) << round;
        EXPECT_EQ(mBackend.deinitAudio(), 1U) << round;
        EXPECT_THAT(mBackend.mConnectedResources, IsEmpty()) << round;
        expectNoOpenHandle();
        written += succeeded;
        failed += 4 - succeeded;
        forget();
    }
    EXPECT_GT(failed, 100U);
    EXPECT_GT(written, 100U);
    EXPECT_GT(virtualtv::cardHandles().opened, 200);

    clearInjections();
    EXPECT_EQ(mBackend.initAudio(), 1U);
    EXPECT_THAT(controlEvents(), SizeIs(4));
    EXPECT_THAT(logLines(kLogError), IsEmpty());
}
