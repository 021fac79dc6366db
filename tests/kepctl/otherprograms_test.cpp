// SPDX-License-Identifier: Apache-2.0
// kepctl as it is used: beside other programs that use the virtual cards.
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kepctltest.h"

using testing::Each;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

TEST_F(Kepctl, WhatItWroteIsReadFromTheCardAfterwards)
{
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 0);
    EXPECT_EQ(play(kInitialize + kVolume40).status, kPlayed);
    EXPECT_EQ(valueOf("default", "Master Playback Volume"), 40);
}

TEST_F(Kepctl, ItsEnvironmentPointsToFilesThatExist)
{
    setenv("KEP_VIRTUALTV_STATE", (directory() / "it's $HOME state").c_str(), 1);
    const Execution outcome = shell(R"sh(
        set -eu
        state=$KEP_VIRTUALTV_STATE
        environment=$("$KEPCTL" env)
        unset KEP_VIRTUALTV_STATE
        eval "$environment"
        test -f "$ALSA_CONFIG_PATH"
        test -f "$ALSA_PLUGIN_DIR/libasound_module_ctl_kepvirtual.so"
        test "$KEP_VIRTUALTV_STATE" = "$state"
        sh -c 'test -f "$ALSA_CONFIG_PATH" && test -d "$ALSA_PLUGIN_DIR"')sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(linesOf(kepctl({"env"}).output), Each(StartsWith("export ")));
}

TEST_F(Kepctl, ItsEnvironmentNamesAStateFileWhenNoneIsChosen)
{
    const Execution outcome = shell(R"sh(
        set -eu
        export XDG_RUNTIME_DIR="$(dirname "$KEP_VIRTUALTV_STATE")"
        unset KEP_VIRTUALTV_STATE
        eval "$("$KEPCTL" env)"
        test "$(dirname "$KEP_VIRTUALTV_STATE")" = "$XDG_RUNTIME_DIR")sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
}

// A program that is built without the sanitizer cannot load a plugin that is built with it.
#ifdef KEPCTL_TEST_AMIXER

TEST_F(Kepctl, WhatAmixerWritesIsReadFromTheCard)
{
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D default cset "name='Softmaster'" 40%)sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(valueOf("default", "Softmaster"), 40);
}

TEST_F(Kepctl, WhatItWritesIsSeenByAmixer)
{
    EXPECT_EQ(play(kInitialize + kVolume40).status, kPlayed);
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D default cget "name='Master Playback Volume'")sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr(": values=40"));
}

TEST_F(Kepctl, AmixerSeesEveryElementOfTheTelevision)
{
    const Execution outcome = shell(R"sh(
        eval "$("$KEPCTL" env)"
        amixer -D hw:0 contents)sh");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    Texts elements;
    for (const std::string& line : linesOf(outcome.output))
        if (line.find("iface=MIXER") != std::string::npos)
            elements.push_back(line);
    EXPECT_EQ(elements.size(), 19U) << outcome.output;
    EXPECT_THAT(elements,
                IsSupersetOf({HasSubstr("'Sndout Connect'"), HasSubstr("'Gain Output'")}));
}

#endif
