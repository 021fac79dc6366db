// SPDX-License-Identifier: Apache-2.0
// A card opened through libasound, closed at the end of its block.
#pragma once

#include <memory>
#include <string>

#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

struct ControlCloser {
    void operator()(snd_ctl_t* handle) const noexcept { snd_ctl_close(handle); }
};
using ControlPtr = std::unique_ptr<snd_ctl_t, ControlCloser>;

/// A card that can be opened.
inline ControlPtr opened(const std::string& card, int mode = 0)
{
    snd_ctl_t* handle = nullptr;
    EXPECT_EQ(snd_ctl_open(&handle, card.c_str(), mode), 0) << card;
    return ControlPtr{handle};
}
