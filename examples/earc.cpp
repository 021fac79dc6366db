// SPDX-License-Identifier: Apache-2.0
// An eARC receiver that comes and goes. Standard input stands for the HDMI service, a line an
// event: "eARC DD+ DD PCM" (a receiver, and what it decodes), "None" (it is gone).
#include <sstream>

#include <glib.h>
#include <unistd.h>

#include "kepclient.h"

namespace
{

bool done(const char* request, unsigned int result)
{
    if (result != KEP_RESULT_OK)
        g_printerr("earc: %s failed with code %u\n", request, result);
    return result == KEP_RESULT_OK;
}

/// The payload of "external_arc" that a line makes.
JValue receiverOf(const std::string& line)
{
    std::istringstream words{line};
    std::string word;
    words >> word;
    JValue receiver = JValue::object();
    receiver.put("arcActivation", word);
    JValue capability = JValue::array();
    while (words >> word)
        capability.append(word);
    const bool whole = capability.size() == 0 || receiver.put("earcCapability", capability);
    return whole ? receiver : JValue::invalid();
}

/// A receiver that comes is switched on before it is heard; one that goes is left before it is
/// switched off, which is done even when the speaker cannot be had.
bool follow(kepClient& audio, const std::string& line)
{
    const JValue receiver = receiverOf(line);
    if (receiver["arcActivation"].asString() != "None")
        return done("external_arc", audio.setSettings("external_arc", receiver)) &&
               done("setSoundOutput", audio.setSoundOutput("external_arc"));
    const bool heard = done("setSoundOutput", audio.setSoundOutput("tv_speaker"));
    return done("external_arc", audio.setSettings("external_arc", receiver)) && heard;
}

gboolean onLine(GIOChannel* input, GIOCondition, gpointer loop)
{
    g_autofree gchar* text = nullptr;
    gsize end = 0;
    if (g_io_channel_read_line(input, &text, nullptr, &end, nullptr) != G_IO_STATUS_NORMAL) {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
    }
    const std::string line{text, end};
    const bool followed = follow(*kepClient::getInstance(), line);
    g_print("%s: %s\n", line.c_str(), followed ? "done" : "failed");
    return G_SOURCE_CONTINUE;
}

} // namespace

int main()
{
    kepClient* audio = kepClient::getInstance();
    JValue digital = JValue::object();
    digital.put("soundOutputDigital", "auto"); // the best that the receiver decodes
    if (audio->initialize() != KEP_STATUS_OK ||
        !done("sound", audio->setSettings("sound", digital)) ||
        !done("setSoundOutput", audio->setSoundOutput("tv_speaker")))
        return 1;
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    g_autoptr(GIOChannel) input = g_io_channel_unix_new(STDIN_FILENO);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), onLine, loop);
    g_main_loop_run(loop);
    return audio->deinitialize() == KEP_STATUS_OK ? 0 : 1;
}
