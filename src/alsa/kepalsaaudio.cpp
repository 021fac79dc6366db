// SPDX-License-Identifier: Apache-2.0
// The generic mixer backend: every request is one write of one control.
// The card is opened for each write and closed after it, so a failed write leaves nothing behind.
#include "kepalsaaudio.h"

#include <array>
#include <cerrno>
#include <memory>
#include <string_view>

#include <alsa/asoundlib.h>

#include "devicecapability.h"
#include "kepcaught.h"
#include "kepconfigpath.h"
#include "kepfactory.h"
#include "keplog.h"
#include "shortname.h"

namespace
{

constexpr const char* kBackendName = "ALSA";
constexpr const char* kCapabilityFileName = "device-cap.json";

struct ControlCloser {
    void operator()(snd_ctl_t* handle) const noexcept { snd_ctl_close(handle); }
};
using ControlPtr = std::unique_ptr<snd_ctl_t, ControlCloser>;

// libasound checks what it is given by assertions, which end the process. Its calls here, what each
// of them asserts, and what keeps text from a file away from it. None asserts a value: those that
// the parser takes are cut to the range, and to the number of integers, that the element has.
// clang-format off
//
//   call                        asserts                                  kept by
//   snd_ctl_ascii_elem_id_parse nothing; a number is at least 1          -
//   snd_ctl_open                handle and name not null                 both are ours
//                               name of an argument, "hw:NAME=", of      kMaxCardBytes; it also bounds the stack
//                               at most 255 bytes                        that "hw:{a{a{a..." and long names take
//   snd_ctl_elem_info_set_id    pointers not null                        both are ours
//   snd_ctl_elem_info           a name or a number                       namesElement
//   snd_ctl_ascii_value_parse   the element's type, an index below 128,  taken from the element itself; the card
//                               a name or a number (enumerations)        answered with the identifier it was asked for
//   snd_ctl_elem_write          a name or a number                       the same
//   snd_ctl_close               handle not null                          ControlPtr
//   snd_strerror                nothing                                  -
// clang-format on

constexpr std::size_t kMaxCardBytes = 255;

/// Opens the card of that name. A longer name than any card has is told like an unknown one.
int openCard(snd_ctl_t** handle, std::string_view card)
{
    if (card.size() > kMaxCardBytes)
        return -ENOENT;
    if (card.back() != '\\')
        return snd_ctl_open(handle, card.data(), 0);
    // libasound reads past the end of a name that ends in a backslash: it finds another end there.
    std::array<char, kMaxCardBytes + 2> name; // NOLINT(*-member-init): only two ends are needed
    name[card.copy(name.data(), kMaxCardBytes)] = '\0';
    name[card.size() + 1] = '\0';
    return snd_ctl_open(handle, name.data(), 0);
}

/// Whether the identifier has a name or a number: "name=" and "name=,index=1" parse as well.
bool namesElement(const snd_ctl_elem_id_t* id)
{
    return *snd_ctl_elem_id_get_name(id) != '\0' || snd_ctl_elem_id_get_numid(id) != 0;
}

/// The software volume of the resource; one for all those that have none of their own.
std::string_view streamControl(KEP_AUDIO_RESOURCE_T resource)
{
    switch (resource) {
    case KEP_AUDIO_RESOURCE_AMIXER0:
        return "name=Softmaster0";
    case KEP_AUDIO_RESOURCE_AMIXER1:
        return "name=Softmaster1";
    default:
        return "name=Softmaster";
    }
}

/// What kepAlsaAudio::setControl does, under its name: its lines name the function. The texts end
/// in NUL, as those of strings and literals do.
bool setControl(std::string_view card, std::string_view control, std::string_view value)
{
    if (card.empty() || control.empty() || value.empty()) {
        KEP_DEBUG("Wrong input parameter\n");
        return false;
    }
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    if (snd_ctl_ascii_elem_id_parse(id, control.data()) != 0) {
        KEP_DEBUG("Wrong control identifier: %s\n", control.data());
        return false;
    }
    KEP_DEBUG("snd_ctl_open on card %s, control %s value=%s\n", card.data(), control.data(),
              value.data());

    // The texts below say "Control", sic, and name the card.
    snd_ctl_t* opened = nullptr;
    int error = openCard(&opened, card);
    const ControlPtr handle{opened};
    if (error < 0) {
        KEP_DEBUG("Control %s open error: %s\n", card.data(), snd_strerror(error));
        return false;
    }
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    snd_ctl_elem_info_set_id(info, id);
    error = namesElement(id) ? snd_ctl_elem_info(handle.get(), info) : -ENOENT;
    if (error < 0) {
        KEP_DEBUG("Cannot find the given element from control %s, error %s\n", card.data(),
                  snd_strerror(error));
        return false;
    }
    snd_ctl_elem_value_t* written = nullptr;
    snd_ctl_elem_value_alloca(&written);
    error = snd_ctl_ascii_value_parse(handle.get(), written, info, value.data());
    if (error < 0) {
        KEP_DEBUG("Control %s parse error: %s\n", card.data(), snd_strerror(error));
        return false;
    }
    error = snd_ctl_elem_write(handle.get(), written);
    if (error < 0) {
        KEP_DEBUG("Control %s element write error: %s\n", card.data(), snd_strerror(error));
        return false;
    }
    return true;
}

} // namespace

kepAudio* kepAlsaAudio::createObject()
{
    if (!mIsObjRegistered)
        return nullptr;
    static kepAlsaAudio instance;
    return &instance;
}

std::string kepAlsaAudio::getConfigFilePath()
{
    std::string path = kepConfigPath(kCapabilityFileName);
    KEP_DEBUG("KEP Configuration file path: %s", path.c_str());
    return path;
}

kepAlsaAudio::kepAlsaAudio()
    : mCapability(std::make_unique<const DeviceCapability>(getConfigFilePath()))
{
}

kepAlsaAudio::~kepAlsaAudio()
{
    kepFactory::getInstance()->UnRegister(kBackendName);
    KEP_DEBUG("UnRegister kepAlsaAudio ...");
}

unsigned int kepAlsaAudio::initAudio()
{
    return initSpeaker();
}

unsigned int kepAlsaAudio::deinitAudio()
{
    return KEP_STATUS_OK;
}

unsigned int kepAlsaAudio::connectInput(std::string source, std::string sink, JValue)
try {
    const KEP_AUDIO_RESOURCE_T resource = getResourceId(source, sink);
    KEP_DEBUG("connectInput  %u", resource); // sic
    return resetMixerVolume(resource, /*mute=*/false);
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepAlsaAudio::disconnectInput(std::string source, std::string sink)
try {
    return resetMixerVolume(getResourceId(source, sink), /*mute=*/true);
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepAlsaAudio::getHeadphoneStatus(bool* connected)
{
    KEP_DEBUG("In %s ", __func__);
    if (connected != nullptr)
        *connected = false;
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::removePipelineInfo(std::string)
{
    KEP_DEBUG("In %s ", __func__);
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::setSoundOutput(std::string)
{
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::setMute(std::string source, std::string sink, bool mute)
try {
    return resetMixerVolume(getResourceId(source, sink), mute);
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepAlsaAudio::setOutputVolume(std::string, std::uint8_t volume)
try {
    if (!setVolume(volume)) {
        KEP_ERROR("SET_VOLUME_ERROR", "Failed setting volume to %d", volume);
        return KEP_RESULT_FAILED;
    }
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepAlsaAudio::setInputVolume(std::string, std::string, std::uint8_t)
{
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::setOutputMute(std::string, bool mute)
try {
    KEP_DEBUG("In %s, setting mute to %d", __func__, mute);
    const std::string& control = mCapability->muteControl;
    const char* value = mute ? "off" : "on"; // a playback switch: off silences
    if (!::setControl(mCapability->card, control, value)) {
        KEP_ERROR("SET_VOLUME_ERROR", "Failed to set mute %s for card:%s, control:%s", value,
                  mCapability->card.c_str(), control.c_str());
        return KEP_RESULT_FAILED;
    }
    return KEP_RESULT_OK;
} catch (...) {
    return kepCaught(KEP_HERE, KEP_RESULT_FAILED);
}

unsigned int kepAlsaAudio::setMuteExtSPK(bool)
{
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::setQualityAttribute(JValue)
{
    return KEP_RESULT_OK;
}

unsigned int kepAlsaAudio::setSettings(std::string, JValue)
{
    return KEP_RESULT_OK;
}

JValue kepAlsaAudio::getSettings(const std::string&, JValue)
{
    return true;
}

unsigned int kepAlsaAudio::initSpeaker()
{
    return KEP_STATUS_OK;
}

KEP_AUDIO_RESOURCE_T kepAlsaAudio::getResourceId(const std::string& source, const std::string& sink)
{
    return ShortName{source} == ShortName{"AMIXER"} && ShortName{sink} == ShortName{"ALSA"}
               ? KEP_AUDIO_RESOURCE_AMIXER0
               : KEP_AUDIO_RESOURCE_INVALID;
}

bool kepAlsaAudio::setControl(const std::string& card, const std::string& control,
                              const std::string& value)
{
    return ::setControl(card, control, value);
}

bool kepAlsaAudio::setVolume(std::uint8_t volume)
{
    std::string value = std::to_string(volume);
    value += '%';
    KEP_DEBUG("In %s, setting volume to %s", __func__, value.c_str());
    return ::setControl(mCapability->card, mCapability->volumeControl, value);
}

unsigned int kepAlsaAudio::resetMixerVolume(KEP_AUDIO_RESOURCE_T resource, bool mute)
{
    KEP_DEBUG("reset volume  resource=%u mute=%d", resource, mute); // sic
    const std::string_view control = streamControl(resource);
    const char* value = mute ? "0%" : "100%";
    if (!::setControl(mCapability->card, control, value)) {
        KEP_ERROR("SET_VOLUME_ERROR", "Failed to set control %s to %s for card:%s", control.data(),
                  value, mCapability->card.c_str());
        return KEP_RESULT_FAILED;
    }
    return KEP_RESULT_OK;
}

bool kepAlsaAudio::mIsObjRegistered =
    kepFactory::getInstance()->Register(kBackendName, &kepAlsaAudio::createObject);
