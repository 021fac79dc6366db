// SPDX-License-Identifier: Apache-2.0
// Follow the headphone: what was heard from the speaker goes on in the headphone while one is
// plugged in.
#include <glib-unix.h>

#include "jdomparser.h"
#include "kepclient.h"

namespace
{

constexpr guint kPollMs = 200; // the line has no event; a finger is slower than this

struct Follower {
    kepClient* audio;
    const char* output = nullptr; // null until one was selected
    bool lineFailed = false;      // told once, not at every poll
};

gboolean poll(gpointer data)
{
    Follower& follower = *static_cast<Follower*>(data);
    bool plugged = false;
    const bool failed = follower.audio->getHeadphoneStatus(&plugged) != KEP_RESULT_OK;
    if (failed && !follower.lineFailed)
        g_printerr("headphone: the line cannot be read; trying on\n");
    follower.lineFailed = failed;
    const char* output = plugged ? "headphone" : "tv_speaker";
    if (failed || output == follower.output)
        return G_SOURCE_CONTINUE;
    // Refused: the output stays what it was, and the next poll asks again.
    if (follower.audio->setSoundOutput(output) != KEP_RESULT_OK)
        return G_SOURCE_CONTINUE;
    follower.output = output;
    g_print("%s\n", output);
    return G_SOURCE_CONTINUE;
}

/// What the library wants to know of the set before its start-up work begins. Five seconds after
/// that the headphone, muted against the noise of power-on, is heard.
bool configure(kepClient& audio)
{
    constexpr const char* kSettings[][2] = {
        {"hardwareConfig", R"({"tv.hw.countryType": "DE"})"},
        {"modelConfig", R"({"tv.zib.tvBroadcastSystem": "DVB"})"},
        {"contiConfig", R"({"tv.conti.region": "EU"})"},
    };
    for (const auto& [category, payload] : kSettings)
        if (audio.setSettings(category, JDomParser{JSchema::acceptAll()}.parse(payload)) !=
            KEP_RESULT_OK)
            return false;
    return true;
}

gboolean quit(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

} // namespace

int main()
{
    Follower follower{kepClient::getInstance()};
    if (follower.audio->initialize() != KEP_STATUS_OK || !configure(*follower.audio)) {
        g_printerr("headphone: no audio; see the log\n");
        return 1;
    }
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGTERM, quit, loop);
    poll(&follower);
    g_timeout_add(kPollMs, poll, &follower);
    g_main_loop_run(loop);
    return follower.audio->deinitialize() == KEP_STATUS_OK ? 0 : 1;
}
