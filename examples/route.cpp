// SPDX-License-Identifier: Apache-2.0
// Start and route: a film on the television's speaker until the service is told to end.
#include <glib-unix.h>

#include "kepclient.h"

namespace
{

constexpr const char* kOutput = "tv_speaker";
constexpr const char* kSource = "ADEC0"; // the first decoder
constexpr const char* kSink = "MAIN";

/// The reason of a failure is in the library's log; the code says of what kind it is.
bool done(const char* request, unsigned int result)
{
    if (result != KEP_RESULT_OK)
        g_printerr("route: %s failed with code %u\n", request, result);
    return result == KEP_RESULT_OK;
}

/// What the decoder plays: a film, which becomes the main audio.
JValue film()
{
    JValue attribute = JValue::object();
    attribute.put("streamType", "movie");
    return attribute;
}

bool play(kepClient& audio)
{
    return done("setSoundOutput", audio.setSoundOutput(kOutput)) &&
           done("setOutputVolume", audio.setOutputVolume(kOutput, audio.getDefaultVolume())) &&
           done("connectInput", audio.connectInput(kSource, kSink, film()));
}

gboolean quit(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

} // namespace

int main()
{
    kepClient* audio = kepClient::getInstance();
    if (audio->initialize() != KEP_STATUS_OK) {
        g_printerr("route: no audio; see the log\n");
        return 1;
    }
    // The library's timers need the default main loop; requests come from it, one at a time.
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGINT, quit, loop);
    g_unix_signal_add(SIGTERM, quit, loop);
    bool good = play(*audio);
    if (good) {
        g_print("playing %s on %s\n", kSource, kOutput);
        g_main_loop_run(loop);
        good = done("disconnectInput", audio->disconnectInput(kSource, kSink));
    }
    return audio->deinitialize() == KEP_STATUS_OK && good ? 0 : 1;
}
