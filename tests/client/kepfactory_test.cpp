// SPDX-License-Identifier: Apache-2.0
#include "kepfactory.h"

#include <string>

#include <gmock/gmock.h>

#include "kepalsaaudio.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// A backend that does nothing: the registry is about names only.
class IdleBackend final : public kepAudio
{
public:
    unsigned int initAudio() override { return KEP_STATUS_OK; }
    unsigned int deinitAudio() override { return KEP_STATUS_OK; }
    unsigned int connectInput(std::string, std::string, JValue) override { return 0; }
    unsigned int disconnectInput(std::string, std::string) override { return 0; }
    unsigned int getHeadphoneStatus(bool*) override { return 0; }
    unsigned int removePipelineInfo(std::string) override { return 0; }
    unsigned int setSoundOutput(std::string) override { return 0; }
    unsigned int setMute(std::string, std::string, bool) override { return 0; }
    unsigned int setOutputVolume(std::string, std::uint8_t) override { return 0; }
    unsigned int setInputVolume(std::string, std::string, std::uint8_t) override { return 0; }
    unsigned int setOutputMute(std::string, bool) override { return 0; }
    unsigned int setMuteExtSPK(bool) override { return 0; }
    unsigned int setQualityAttribute(JValue) override { return 0; }
    unsigned int setSettings(std::string, JValue) override { return 0; }
    JValue getSettings(const std::string&, JValue) override { return true; }
};

int gFirstCalls = 0;
int gSecondCalls = 0;
int gDecliningCalls = 0;

kepAudio* createFirst()
{
    static IdleBackend instance;
    ++gFirstCalls;
    return &instance;
}

kepAudio* createSecond()
{
    static IdleBackend instance;
    ++gSecondCalls;
    return &instance;
}

kepAudio* decline()
{
    ++gDecliningCalls;
    return nullptr;
}

/// Takes the name "ALSA" before the backend of that name can: the priority puts it in front of all
/// other static initialisers.
struct EarlyBird {
    const bool registered = kepFactory::getInstance()->Register("ALSA", &createFirst);
};
[[gnu::init_priority(101)]] const EarlyBird gEarlyBird;

kepFactory& registry()
{
    return *kepFactory::getInstance();
}

class KepFactory : public TelevisionTest
{
protected:
    KepFactory()
    {
        connectLog();
        for (const auto& [name, creator] : registry().getRegistry())
            registry().UnRegister(name);
    }
};

} // namespace

TEST(KepFactoryStart, TheFirstRegistrationOfANameWinsAndTheBlockedBackendDeclines)
{
    ASSERT_TRUE(gEarlyBird.registered);
    EXPECT_FALSE(kepAlsaAudio::mIsObjRegistered);
    EXPECT_EQ(kepAlsaAudio::createObject(), nullptr);
    EXPECT_EQ(registry().getRegistry().at("ALSA"), &createFirst);
    EXPECT_EQ(registry().createKEPAudioObj("ALSA"), createFirst());
}

TEST_F(KepFactory, ThereIsOneRegistry)
{
    ASSERT_NE(kepFactory::getInstance(), nullptr);
    EXPECT_EQ(kepFactory::getInstance(), kepFactory::getInstance());
}

TEST_F(KepFactory, RegisterEntersTheCreatorUnderItsName)
{
    EXPECT_TRUE(registry().Register("TV", &createFirst));
    EXPECT_TRUE(registry().Register("ALSA", &createSecond));
    EXPECT_THAT(registry().getRegistry(),
                ElementsAre(Pair("ALSA", &createSecond), Pair("TV", &createFirst)));
}

TEST_F(KepFactory, ANameThatIsTakenKeepsItsFirstCreator)
{
    EXPECT_TRUE(registry().Register("TV", &createFirst));
    EXPECT_FALSE(registry().Register("TV", &createSecond));
    EXPECT_FALSE(registry().Register("TV", &createFirst));
    EXPECT_THAT(registry().getRegistry(), ElementsAre(Pair("TV", &createFirst)));
    EXPECT_EQ(registry().createKEPAudioObj("TV"), createFirst());
    EXPECT_EQ(gSecondCalls, 0);
}

TEST_F(KepFactory, UnRegisterOfAnUnknownNameChangesNothing)
{
    EXPECT_FALSE(registry().UnRegister("TV"));
    registry().Register("TV", &createFirst);
    for (const char* name : {"ALSA", "tv", "T", "TVV", " TV", ""})
        EXPECT_FALSE(registry().UnRegister(name)) << name;
    EXPECT_THAT(registry().getRegistry(), ElementsAre(Pair("TV", &createFirst)));
}

TEST_F(KepFactory, UnRegisterRemovesThatNameOnly)
{
    registry().Register("ALSA", &createFirst);
    registry().Register("TV", &createSecond);
    EXPECT_TRUE(registry().UnRegister("ALSA"));
    EXPECT_THAT(registry().getRegistry(), ElementsAre(Pair("TV", &createSecond)));
    EXPECT_EQ(registry().createKEPAudioObj("ALSA"), nullptr);
    EXPECT_FALSE(registry().UnRegister("ALSA"));
}

TEST_F(KepFactory, ARemovedNameIsFreeAgain)
{
    registry().Register("TV", &createFirst);
    registry().UnRegister("TV");
    EXPECT_TRUE(registry().Register("TV", &createSecond));
    EXPECT_EQ(registry().createKEPAudioObj("TV"), createSecond());
}

TEST_F(KepFactory, AnUnknownNameOrAnEmptyRegistryGivesNoBackend)
{
    EXPECT_EQ(registry().createKEPAudioObj("TV"), nullptr);
    EXPECT_EQ(registry().createKEPAudioObj(""), nullptr);
    registry().Register("TV", &createFirst);
    EXPECT_EQ(registry().createKEPAudioObj("RADIO"), nullptr);
    EXPECT_EQ(gFirstCalls, 0);
}

TEST_F(KepFactory, NamesAreExactAndCaseSensitive)
{
    registry().Register("ALSA", &createFirst);
    for (const char* name : {"alsa", "Alsa", "ALSa", "ALS", "ALSAX", "ALSA ", " ALSA", ""})
        EXPECT_EQ(registry().createKEPAudioObj(name), nullptr) << name;
    EXPECT_EQ(registry().createKEPAudioObj(std::string{"ALSA\0", 5}), nullptr);
    EXPECT_EQ(gFirstCalls, 0);
    EXPECT_TRUE(registry().Register("alsa", &createSecond));
    EXPECT_EQ(registry().createKEPAudioObj("alsa"), createSecond());
}

TEST_F(KepFactory, NamesAreOrderedByteByByte)
{
    for (const char* name : {"b", "\xc3\xa4", "B", "a", "A", "A1", ""})
        EXPECT_TRUE(registry().Register(name, &decline)) << name;
    EXPECT_THAT(registry().getRegistry(),
                ElementsAre(Pair("", &decline), Pair("A", &decline), Pair("A1", &decline),
                            Pair("B", &decline), Pair("a", &decline), Pair("b", &decline),
                            Pair("\xc3\xa4", &decline)));
}

TEST_F(KepFactory, TheSameNameGivesTheSameBackend)
{
    registry().Register("TV", &createFirst);
    kepAudio* backend = registry().createKEPAudioObj("TV");
    ASSERT_NE(backend, nullptr);
    EXPECT_EQ(registry().createKEPAudioObj("TV"), backend);
    EXPECT_EQ(gFirstCalls, 2);
}

TEST_F(KepFactory, OnlyTheCreatorOfThatNameIsCalled)
{
    registry().Register("A", &createFirst);
    registry().Register("B", &createSecond);
    registry().Register("C", &decline);
    ASSERT_NE(registry().createKEPAudioObj("B"), nullptr);
    EXPECT_EQ(gFirstCalls, 0);
    EXPECT_EQ(gSecondCalls, 1);
    EXPECT_EQ(gDecliningCalls, 0);
}

TEST_F(KepFactory, ACreatorThatDeclinesGivesNull)
{
    registry().Register("TV", &decline);
    EXPECT_EQ(registry().createKEPAudioObj("TV"), nullptr);
    EXPECT_EQ(gDecliningCalls, 1);
    EXPECT_THAT(registry().getRegistry(), ElementsAre(Pair("TV", &decline)));
}

TEST_F(KepFactory, TheRegistryIsHandedOutAsACopy)
{
    registry().Register("TV", &createFirst);
    kepFactory::Registry copy = registry().getRegistry();
    copy["ALSA"] = &createSecond;
    copy.erase("TV");
    EXPECT_THAT(registry().getRegistry(), ElementsAre(Pair("TV", &createFirst)));
}

TEST_F(KepFactory, TheRegistryLogsNothing)
{
    registry().Register("TV", &createFirst);
    registry().Register("TV", &createSecond);
    registry().createKEPAudioObj("TV");
    registry().createKEPAudioObj("RADIO");
    registry().UnRegister("TV");
    registry().UnRegister("TV");
    EXPECT_THAT(logLines(), IsEmpty());
}
