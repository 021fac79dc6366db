// SPDX-License-Identifier: Apache-2.0
// Volume and mute. Standard input stands for the remote control, a letter a key: + louder, -
// softer, m mute and unmute.
#include <algorithm>
#include <cstdint>
#include <glib-unix.h>
#include <unistd.h>

#include "kepclient.h"

namespace
{

constexpr const char* kOutput = "tv_speaker";
constexpr int kStep = 5;
constexpr int kLoudest = 100; // of 255; the set's own choice

struct Remote {
    kepClient* audio;
    GMainLoop* loop;
    int volume;
    bool muted = false;
};

/// What the television refused is not kept: the next key starts from what is heard.
void setVolume(Remote& remote, int wanted)
{
    const int volume = std::clamp(wanted, 0, kLoudest);
    if (remote.audio->setOutputVolume(kOutput, static_cast<std::uint8_t>(volume)) == KEP_RESULT_OK)
        remote.volume = volume;
}

void setMute(Remote& remote, bool muted)
{
    if (remote.audio->setOutputMute(kOutput, muted) == KEP_RESULT_OK)
        remote.muted = muted;
}

void press(Remote& remote, char key)
{
    if (key == '+' || key == '-') {
        setVolume(remote, remote.volume + (key == '+' ? kStep : -kStep));
        if (remote.muted) // who turns the volume wants to hear it
            setMute(remote, false);
    } else if (key == 'm')
        setMute(remote, !remote.muted);
    else
        return;
    g_print("volume %d%s\n", remote.volume, remote.muted ? ", muted" : "");
}

gboolean onKeys(gint input, GIOCondition, gpointer data)
{
    Remote& remote = *static_cast<Remote*>(data);
    char key = 0;
    if (read(input, &key, 1) == 1) {
        press(remote, key);
        return G_SOURCE_CONTINUE;
    }
    g_main_loop_quit(remote.loop);
    return G_SOURCE_REMOVE;
}

} // namespace

int main()
{
    kepClient* audio = kepClient::getInstance();
    if (audio->initialize() != KEP_STATUS_OK || audio->setSoundOutput(kOutput) != KEP_RESULT_OK) {
        g_printerr("volume: no audio; see the log\n");
        return 1;
    }
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    Remote remote{audio, loop, audio->getDefaultVolume()};
    setVolume(remote, remote.volume); // nobody applies the default but the service
    g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), onKeys, &remote);
    g_main_loop_run(remote.loop);
    return audio->deinitialize() == KEP_STATUS_OK ? 0 : 1;
}
