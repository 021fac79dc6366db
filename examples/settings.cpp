// SPDX-License-Identifier: Apache-2.0
// Settings and queries: what a set is sent when it is switched on, and what can be asked of it
// then. One more setting can be given: settings dolbyAtmos '{"atmosState": "on"}'
#include <glib.h>

#include "jdomparser.h"
#include "kepclient.h"

namespace
{

struct Setting {
    const char* category = nullptr;
    const char* payload = nullptr;
};

// The three configurations together begin the start-up work, which is why they come first.
constexpr Setting kAtPowerOn[] = {
    {"hardwareConfig", R"({"tv.hw.countryType": "DE"})"},
    {"modelConfig", R"({"tv.zib.tvBroadcastSystem": "DVB"})"},
    {"contiConfig", R"({"tv.conti.region": "EU"})"},
    {"setMixer", R"({"mix": true})"},
};

struct Service {
    kepClient* audio;
    GMainLoop* loop;
    Setting last; // no category: none
    bool good;
};

bool apply(kepClient& audio, const Setting& setting)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue payload = parser.parse(setting.payload);
    if (!payload.isValid()) {
        g_printerr("settings: %s: %s\n", setting.category, parser.errorText().c_str());
        return false;
    }
    const unsigned int result = audio.setSettings(setting.category, payload);
    if (result != KEP_RESULT_OK)
        g_printerr("settings: %s was refused with code %u\n", setting.category, result);
    return result == KEP_RESULT_OK;
}

/// A query that cannot be answered answers the JSON value true.
void ask(kepClient& audio, const char* category, const JValue& request)
{
    const JValue answer = audio.getSettings(category, request);
    g_print("%s: %s\n", category, answer.isBool() ? "unknown" : answer.stringify().c_str());
}

gboolean run(gpointer data)
{
    Service& service = *static_cast<Service*>(data);
    for (const Setting& setting : kAtPowerOn)
        service.good = apply(*service.audio, setting) && service.good; // one refusal stops no other
    if (service.last.category != nullptr)
        service.good = apply(*service.audio, service.last) && service.good;
    ask(*service.audio, "gainValue", JValue::object());
    ask(*service.audio, "getAmplifierState", JValue::object());
    ask(*service.audio, "setMixer", JValue::object()); // the stored payload; "" asks for all
    g_main_loop_quit(service.loop);
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int argc, char** argv)
{
    const Setting last = argc > 2 ? Setting{argv[1], argv[2]} : Setting{};
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    Service service{kepClient::getInstance(), loop, last, true};
    if (service.audio->initialize() != KEP_STATUS_OK)
        return 1;
    g_idle_add(run, &service); // a service would be called by its bus
    g_main_loop_run(service.loop);
    return service.audio->deinitialize() == KEP_STATUS_OK && service.good ? 0 : 1;
}
