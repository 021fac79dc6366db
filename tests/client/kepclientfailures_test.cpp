// SPDX-License-Identifier: Apache-2.0
// The start of the client when what never fails in practice fails: the linker puts the functions
// below in front of the log context and of both singletons.
#include "kepclient.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "kepalsaaudio.h"
#include "kepconfig.h"
#include "kepfactory.h"
#include "keplog.h"
#include "televisiontest.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

enum class Outcome { Real, Null, Throws };

Outcome gContext = Outcome::Real;
Outcome gConfig = Outcome::Real;
Outcome gFactory = Outcome::Real;
std::vector<std::string> gContextNames;
int gConfigRequests = 0;
int gFactoryRequests = 0;

} // namespace

extern "C" {
LogContext* __real_LogGetContext(const char* name) noexcept;
kepConfig* __real__ZN9kepConfig11getInstanceEv();
kepFactory* __real__ZN10kepFactory11getInstanceEv();

LogContext* __wrap_LogGetContext(const char* name) noexcept
{
    gContextNames.emplace_back(name);
    return gContext == Outcome::Real ? __real_LogGetContext(name) : nullptr;
}

kepConfig* __wrap__ZN9kepConfig11getInstanceEv()
{
    ++gConfigRequests;
    if (gConfig == Outcome::Throws)
        throw std::runtime_error{"no configuration"};
    return gConfig == Outcome::Real ? __real__ZN9kepConfig11getInstanceEv() : nullptr;
}

kepFactory* __wrap__ZN10kepFactory11getInstanceEv()
{
    ++gFactoryRequests;
    if (gFactory == Outcome::Throws)
        throw std::runtime_error{"no registry"};
    return gFactory == Outcome::Real ? __real__ZN10kepFactory11getInstanceEv() : nullptr;
}
}

namespace
{

kepClient& client()
{
    return *kepClient::getInstance();
}

const LogLine kNoConfig{kLogError, "INVALID_KEP_TYPE", "kepclient:initialize",
                        "Falied to get kepConfig instance"};
const LogLine kNoFactory{kLogError, "INVALID_KEP_FACTOY", "kepclient:initialize",
                         "Falied to get kepFactory instance"};
const LogLine kDefaultVolume{kLogDebug, "", "kepclient:initialize", "Default volume 15"};

class KepClientFailures : public TelevisionTest
{
protected:
    KepClientFailures()
    {
        configureBackend("ALSA");
        gContextNames.clear();
        gConfigRequests = 0;
        gFactoryRequests = 0;
    }

    /// The status of initialize; what it writes to standard error is in `errorOutput`.
    unsigned int initialize()
    {
        const std::string path = directory() / "stderr";
        const int kept = dup(STDERR_FILENO);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(file, STDERR_FILENO);
        const unsigned int status = client().initialize();
        dup2(kept, STDERR_FILENO);
        close(file);
        close(kept);
        std::ifstream written{path};
        mErrorOutput.assign(std::istreambuf_iterator<char>{written}, {});
        return status;
    }
    [[nodiscard]] const std::string& errorOutput() const { return mErrorOutput; }

private:
    std::string mErrorOutput;
};

} // namespace

TEST_F(KepClientFailures, WithoutALogContextTheReasonGoesToStandardError)
{
    gContext = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(errorOutput(), "[kep]Failed to setup up log context kep\n");
    EXPECT_THAT(gContextNames, ElementsAre("kep"));
    EXPECT_EQ(kepLogContext.load(), nullptr);
}

TEST_F(KepClientFailures, WithoutALogContextNothingElseHappens)
{
    gContext = Outcome::Null;
    std::filesystem::remove(directory() / "kep-config.json"); // would be an error line
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(gConfigRequests, 0);
    EXPECT_EQ(gFactoryRequests, 0);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(client().getDefaultVolume(), 0);
}

TEST_F(KepClientFailures, ALogContextThatWasObtainedLeavesStandardErrorAlone)
{
    initialize();
    EXPECT_EQ(errorOutput(), "");
    EXPECT_THAT(gContextNames, ElementsAre("kep"));
}

TEST_F(KepClientFailures, AStartAfterALostContextLogsAgain)
{
    gContext = Outcome::Null;
    initialize();
    gContext = Outcome::Real;
    gConfig = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoConfig));
    EXPECT_NE(kepLogContext.load(), nullptr);
}

TEST_F(KepClientFailures, WithoutAConfigurationTheStartFails)
{
    gConfig = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoConfig));
    EXPECT_EQ(gFactoryRequests, 0);
    EXPECT_EQ(errorOutput(), "");
}

TEST_F(KepClientFailures, WithoutARegistryTheStartFailsButTheVolumeIsKnown)
{
    gFactory = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    ASSERT_GE(logLines().size(), 2U);
    EXPECT_EQ(logLines().end()[-2], kDefaultVolume);
    EXPECT_EQ(logLines().back(), kNoFactory);
    EXPECT_THAT(logLines(kLogError), ElementsAre(kNoFactory));
    EXPECT_EQ(client().getDefaultVolume(), 15);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(errorOutput(), "");
}

TEST_F(KepClientFailures, AnEmptyBackendNameNeverAsksForTheRegistry)
{
    configureBackend("");
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(gFactoryRequests, 0);
}

TEST_F(KepClientFailures, AtLevelErrorTheErrorsAreStillLogged)
{
    admit(kLogError);
    gConfig = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoConfig));

    forget();
    gConfig = Outcome::Real;
    gFactory = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoFactory));
}

TEST_F(KepClientFailures, BelowLevelErrorNothingIsLogged)
{
    admit(kLogError - 1);
    gConfig = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    gConfig = Outcome::Real;
    gFactory = Outcome::Null;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClientFailures, NothingThrownLeavesTheStart)
{
    gConfig = Outcome::Throws;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    gConfig = Outcome::Real;
    gFactory = Outcome::Throws;
    EXPECT_EQ(initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(kLogError), IsEmpty());
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_EQ(errorOutput(), "");
}

// A copy that dies would take the entry of a backend, or the configuration, with it.
template <typename Singleton>
constexpr bool kIsTheOnlyOne =
    !std::is_default_constructible_v<Singleton> && !std::is_copy_constructible_v<Singleton> &&
    !std::is_move_constructible_v<Singleton> && !std::is_copy_assignable_v<Singleton>;
static_assert(kIsTheOnlyOne<kepClient>);
static_assert(kIsTheOnlyOne<kepConfig>);
static_assert(kIsTheOnlyOne<kepFactory>);
static_assert(kIsTheOnlyOne<kepAlsaAudio>);
