// SPDX-License-Identifier: Apache-2.0
// A backend of one's own, which counts what is asked of it. The configuration names it like any
// other: {"Q27R5": {"kepAudio": "COUNTING"}} in kep-config.json.
#include <glib.h>

#include "kepclient.h"
#include "kepfactory.h"

namespace
{

class CountingAudio : public kepAudio
{
public:
    unsigned int initAudio() override { return KEP_STATUS_OK; }
    unsigned int deinitAudio() override
    {
        g_print("requests: %d\n", mRequests);
        return KEP_STATUS_OK;
    }
    unsigned int connectInput(std::string, std::string, JValue) override { return count(); }
    unsigned int disconnectInput(std::string, std::string) override { return count(); }
    unsigned int getHeadphoneStatus(bool* connected) override
    {
        return *connected = false, count();
    }
    unsigned int removePipelineInfo(std::string) override { return count(); }
    unsigned int setSoundOutput(std::string) override { return count(); }
    unsigned int setMute(std::string, std::string, bool) override { return count(); }
    unsigned int setOutputVolume(std::string, std::uint8_t) override { return count(); }
    unsigned int setInputVolume(std::string, std::string, std::uint8_t) override { return count(); }
    unsigned int setOutputMute(std::string, bool) override { return count(); }
    unsigned int setMuteExtSPK(bool) override { return KEP_RESULT_FAILED; } // there is none
    unsigned int setQualityAttribute(JValue) override { return count(); }
    unsigned int setSettings(std::string, JValue) override { return count(); }
    JValue getSettings(const std::string&, JValue) override { return mRequests; }

    /// The factory never owns what a creator hands out: this one lives as long as the process.
    static kepAudio* create()
    {
        static CountingAudio audio;
        return &audio;
    }

private:
    unsigned int count()
    {
        ++mRequests;
        return KEP_RESULT_OK;
    }

    int mRequests = 0;
};

gboolean run(gpointer loop)
{
    if (kepClient::getInstance()->setSoundOutput("tv_speaker") != KEP_RESULT_OK ||
        kepClient::getInstance()->setMuteExtSPK(true) != KEP_RESULT_OK)
        g_printerr("backend: no output, or no external speaker\n");
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

} // namespace

int main()
{
    if (!kepFactory::getInstance()->Register("COUNTING", &CountingAudio::create) ||
        kepClient::getInstance()->initialize() != KEP_STATUS_OK)
        return 1;
    g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
    g_idle_add(run, loop);
    g_main_loop_run(loop);
    return kepClient::getInstance()->deinitialize() == KEP_STATUS_OK ? 0 : 1;
}
