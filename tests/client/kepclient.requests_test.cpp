// SPDX-License-Identifier: Apache-2.0
// The client: requests, what is thrown behind it, and what each level admits to the log.
#include <string>

#include <gmock/gmock.h>

#include "clienttest.h"

using testing::ElementsAre;
using testing::IsEmpty;

// --- Requests

TEST_F(KepClient, EveryRequestReachesTheBackendUnchanged)
{
    start();
    for (const Request& request : kRequests) {
        backend().calls.clear();
        EXPECT_EQ(request.send(), KEP_RESULT_OK) << request.received;
        EXPECT_THAT(backend().calls, ElementsAre(request.received));
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, EveryAnswerReachesTheCallerUnchanged)
{
    start();
    for (const unsigned int answer : {0U, 1U, 2U, 3U, 4U, 77U, UINT_MAX}) {
        backend().answer = answer;
        for (const Request& request : kRequests)
            EXPECT_EQ(request.send(), answer) << request.received;
    }
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(KepClient, TheHeadphoneStatusGoesStraightToTheCallersBool)
{
    start();
    bool connected = false;
    client().getHeadphoneStatus(&connected);
    EXPECT_EQ(backend().headphonePointer, &connected);
    EXPECT_TRUE(connected);
    client().getHeadphoneStatus(nullptr);
    EXPECT_EQ(backend().headphonePointer, nullptr);
}

TEST_F(KepClient, StringsKeepTheirNulCharactersAndTheirLength)
{
    start();
    const std::string name = std::string{"a\0b", 3} + std::string(100000, 'x');
    client().disconnectInput(name, name);
    EXPECT_THAT(backend().calls, ElementsAre("disconnectInput|" + name + "|" + name));
}

TEST_F(KepClient, GetSettingsPassesTheRequestAndTheReply)
{
    start();
    for (const char* reply : {"true", "false", "null", "7", R"("text")", R"({"a":[1,2]})"}) {
        backend().calls.clear();
        backend().reply = json(reply);
        const JValue answer = client().getSettings("audioEQ", json(R"({"query":1})"));
        EXPECT_EQ(answer.stringify(), reply);
        EXPECT_THAT(backend().calls, ElementsAre(R"(getSettings|audioEQ|{"query":1})"));
    }
    backend().reply = JValue::invalid();
    EXPECT_FALSE(client().getSettings("", JValue::invalid()).isValid());
    EXPECT_EQ(backend().calls.back(), "getSettings||invalid");
    EXPECT_THAT(logLines(), IsEmpty());
}

// --- What is thrown behind the client

TEST_F(KepClient, WhatARequestThrowsEndsItAsAFailure)
{
    start();
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        for (const Request& request : kRequests) {
            backend().calls.clear();
            EXPECT_EQ(request.send(), KEP_RESULT_FAILED)
                << request.received << ": " << thrower.what;
            EXPECT_THAT(backend().calls, ElementsAre(request.received));
        }
        backend().reply = 7;
        const JValue answer = client().getSettings("audioEQ", JValue::object());
        EXPECT_TRUE(answer.isBool()) << thrower.what;
        EXPECT_TRUE(answer.asBool()) << thrower.what;
    }
    EXPECT_THAT(logLines(), IsEmpty());

    backend().raise = nullptr;
    EXPECT_EQ(client().setSoundOutput("tv_speaker"), KEP_RESULT_OK);
}

TEST_F(KepClient, WhatTheStartThrowsEndsItAsAFailure)
{
    configureBackend("RECORDING");
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        forget();
        EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED) << thrower.what;
        EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume,
                                            defaultVolume(15), starting("RECORDING")))
            << thrower.what;
    }
}

TEST_F(KepClient, WhatTheCreatorThrowsEndsTheStartAsAFailure)
{
    configureBackend("THROWING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_EQ(client().getAudioObj(), nullptr);
    EXPECT_THAT(logLines(), ElementsAre(loading(), kWantsBackend, kWantsVolume, defaultVolume(15)));
}

TEST_F(KepClient, WhatTheStopThrowsEndsItAsAFailureWithoutALogLine)
{
    start();
    for (const Thrower& thrower : kThrowers) {
        backend().raise = thrower.raise;
        EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED) << thrower.what;
    }
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(client().getAudioObj(), &backend());
}

// --- The admitted level

TEST_F(KepClient, AtLevelInfoDebugLinesAreLeftOut)
{
    admit(kLogInfo);
    configureBackend("RECORDING");
    client().initialize();
    EXPECT_THAT(logLines(), ElementsAre(loading(), starting("RECORDING")));
}

TEST_F(KepClient, AtLevelErrorOnlyErrorsAreLogged)
{
    admit(kLogError);
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(unreadable("No such file or directory"), kNotLoaded));

    forget();
    configureBackend("");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), ElementsAre(kNoBackendName));

    forget();
    configureBackend("RADIO");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    configureBackend("RECORDING");
    EXPECT_EQ(client().initialize(), KEP_STATUS_OK);
    EXPECT_THAT(logLines(), IsEmpty());

    backend().deinitStatus = KEP_STATUS_FAILED;
    client().deinitialize();
    EXPECT_THAT(logLines(), ElementsAre(kNotStopped));
}

TEST_F(KepClient, BelowLevelErrorNothingIsLogged)
{
    start();
    admit(kLogError - 1);
    backend().deinitStatus = KEP_STATUS_FAILED;
    EXPECT_EQ(client().deinitialize(), KEP_STATUS_FAILED);
    configure("[]");
    EXPECT_EQ(client().initialize(), KEP_STATUS_FAILED);
    EXPECT_THAT(logLines(), IsEmpty());
}
