// SPDX-License-Identifier: Apache-2.0
// Digital outputs: gathers what the formats of optical, ARC and eARC follow from, and writes what
// digitalformats.h answers; which number that is, is decided there.
#include <string>
#include <string_view>

#include "controlwrites.h"
#include "digitalformats.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "keptvparser.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"

namespace
{

/// The number of that name; 0 for an unknown one.
int numberOf(std::string_view name, kepList<kepNamedNumber> rows)
{
    for (const kepNamedNumber& row : rows)
        if (row.name == name)
            return row.number;
    return 0;
}

// Keys as the maps are asked for them; made once, since they do not fit into a string's small
// buffer, and asked for until the very end.
const std::string& countryKey()
{
    static const auto& name = *new std::string{key::kCountry.name};
    return name;
}
const std::string& digitalModeKey()
{
    static const auto& name = *new std::string{key::kSoundOutputDigital.name};
    return name;
}

/// What the receiver announced; each question leaves a line.
DigitalFormats::CanDecode receiverOf(const kepTVAudio& audio)
{
    return [&audio](const char* codec) { return audio.isEarcCapabilityAvailable(codec); };
}

} // namespace

// --- The current digital mode

bool kepTVAudio::setSoundOutputDigital(std::string mode)
{
    KEP_INFO("Request to set digital mode as %s", mode.c_str());
    const bool done = writeElement(kSndoutSpdifOutputType,
                                   {getSoundOutputOpticMode(mode), getSoundOutputArcMode(mode)});
    if (!done)
        KEP_ERROR(
            "CONTROL_ELEMENT_SET_ERROR",
            "setSoundOutputDigital : Did not able to set the element: %s with digitalMode as %s",
            kSndoutSpdifOutputType.name, mode.c_str()); // sic
    return setEarcSoundOutputDigital(mode) && done;
}

std::string kepTVAudio::getSoundOutputDigitalMode() const
{
    if (mCurrentSoundout != KEP_AUDIO_SPDIF && mCurrentSoundout != KEP_AUDIO_ARC) {
        KEP_INFO("Setting digital mode as %s, since its not optical or arc", "pcm");
        return "pcm";
    }
    std::string mode =
        kepTvParser::find(mPtrParserInstance->mQualityParamsMap, digitalModeKey()).value_or("");
    KEP_INFO("Setting digital mode as %s", mode.c_str());
    return mode;
}

std::optional<std::string> kepTVAudio::qualityParam(const char* key) const
{
    return kepTvParser::find(mPtrParserInstance->mQualityParamsMap, key);
}

std::optional<std::string> kepTVAudio::avParam(const char* key) const
{
    return kepTvParser::find(mPtrParserInstance->mAvParamsMap, key);
}

bool kepTVAudio::reapplyDigitalMode()
{
    return setSoundOutputDigital(getSoundOutputDigitalMode());
}

// --- Mode numbers of optical and ARC

int kepTVAudio::getSoundOutputOpticMode(std::string mode) const
{
    KEP_INFO("Get SoundOutputMode for Optic digitalMode %s ", mode.c_str()); // sic
    const int number = digitalFormats().optic(mode);
    KEP_DEBUG("Optic digital mode %d", number);
    return number;
}

int kepTVAudio::getSoundOutputArcMode(std::string mode) const
{
    KEP_INFO("Get SoundOutputMode for ARC digitalMode %s ", mode.c_str()); // sic
    const int number = digitalFormats().arc(mode);
    KEP_DEBUG("Arc digital mode %d", number);
    return number;
}

int kepTVAudio::getPassThroughOpticMode() const
{
    return digitalFormats().optic("passThrough");
}

int kepTVAudio::getAutoOpticMode() const
{
    return digitalFormats().optic("auto");
}

int kepTVAudio::getPassThroughArcMode() const
{
    return digitalFormats().arc("passThrough");
}

int kepTVAudio::getAutoArcMode() const
{
    return digitalFormats().arc("auto");
}

bool kepTVAudio::isCountryCodeJP() const
{
    return digitalFormats().isJapan();
}

DigitalFormats kepTVAudio::digitalFormats() const
{
    return {.bnoModel = mSupportBnoModel,
            .mixed = mMixerFlag,
            .forcedDDPlus = mForcedDDPlus,
            .country =
                kepTvParser::find(mPtrParserInstance->mQualityParamsMap, countryKey()).value_or(""),
            .arcProfile = mArcProfile,
            .codec = getInputCodecType(),
            .source = avParam("sourceType").value_or("")};
}

// --- eARC

bool kepTVAudio::setEarcSoundOutputDigital(std::string mode)
{
    if (mode == "pcm")
        return setEArcOutputType(SNDOUT_EARC_PCM, SNDOUT_EARC_MIX_ON);
    if (mode == "passThrough")
        return setEArcOutputTypeForPassThrough();
    return mode == "auto" && checkReEncodePriority();
}

bool kepTVAudio::setEArcOutputType(sndout_earc_output_codec_type codec,
                                   sndout_earc_output_mix_option mix)
{
    KEP_INFO("set codec type: %d for earc output type and mixer value is %d", codec, mix);
    return writeOrLog(KEP_HERE, kSndoutEarcOutputType,
                      {2, static_cast<std::int32_t>(codec), 0, 0, static_cast<std::int32_t>(mix)});
}

bool kepTVAudio::setEArcOutputTypeForPassThrough()
{
    const DigitalFormats formats = digitalFormats();
    KEP_DEBUG("input codec value is %s", formats.codec.c_str());
    const std::optional<EarcFormat> format = formats.passedThrough(receiverOf(*this));
    return format ? setEArcOutputType(format->codec, format->mix) : checkReEncodePriority();
}

bool kepTVAudio::checkReEncodePriority()
{
    const DigitalFormats formats = digitalFormats();
    KEP_INFO("input codec value is %s", formats.codec.c_str());
    if (formats.isDts())
        return setEArcOutputTypeForDTS();
    return formats.isJapan() ? setDolbyForJP() : setDolbyForNonJP();
}

bool kepTVAudio::setDolbyForJP()
{
    const DigitalFormats formats = digitalFormats();
    KEP_DEBUG("set dolby digital for country as JP & Input Source is %s", formats.source.c_str());
    const std::optional<EarcFormat> aac = formats.aacInJapan(receiverOf(*this));
    return aac ? setEArcOutputType(aac->codec, aac->mix) : setDolbyForNonJP();
}

bool kepTVAudio::setDolbyForNonJP()
{
    const EarcFormat format =
        isInputCodecPCM() ? DigitalFormats::kPcm : DigitalFormats::reEncoded(receiverOf(*this));
    return setEArcOutputType(format.codec, format.mix);
}

bool kepTVAudio::setEArcOutputTypeForDTS()
{
    KEP_DEBUG("set dolby digital for DTS Input Source");
    const EarcFormat format = DigitalFormats::reEncodedDts(receiverOf(*this));
    return setEArcOutputType(format.codec, format.mix);
}

std::string kepTVAudio::getInputCodecType() const
{
    return avParam("codec").value_or("");
}

bool kepTVAudio::isInputCodecPCM() const
{
    const DigitalFormats formats = digitalFormats();
    KEP_INFO("input codec value is %s", formats.codec.c_str());
    return formats.isPcm();
}

bool kepTVAudio::isEarcCapabilityAvailable(std::string codec) const
{
    bool available = false;
    for (const JValue& capability : mEarcCapability.elements())
        available = available || capability.asString() == codec;
    KEP_INFO("Is earc capability available: %d for %s", available, codec.c_str());
    return available;
}

bool kepTVAudio::updateEarcCapability(JValue capability)
{
    mEarcCapability = capability.deepCopy(); // what the caller does to it later is its own business
    return setEarcSoundOutputDigital(getSoundOutputDigitalMode());
}

void kepTVAudio::updateCodecImmersiveFormat(const AudioVideoInfo& pipeline)
{
    KEP_INFO("Called updateCodecImmersiveFormat to update codec and immersive format");
    const auto immersive = pipeline.find("immersive");
    if (immersive != pipeline.end())
        mPtrTVSoundEngine->setImmersiveFormat(immersive->second);
    if (pipeline.count("codec") != 0 && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
}

// --- ARC and eARC switches

bool kepTVAudio::setArcOnOff(int arc, int earc)
{
    KEP_INFO("Setting SoundOut on off for ARC status: %d & eARC status: %d", arc, earc);
    if (!writeElement(kSndoutArc, {arc})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "In setSoundOutArc : Did not able to set the element: %s with status %d", // sic
                  kSndoutArc.name, arc);
        return false;
    }
    if (!writeElement(kSndoutEarc, {earc})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "In setSoundOuteArc : Did not able to set the element: %s with status %d", // sic
                  kSndoutEarc.name, earc);
        return false;
    }
    return true;
}

// --- Encoder and decoder

void kepTVAudio::setAtmosEncode(bool on)
{
    KEP_INFO("Setting Atmos Encode value is %d", on);
    if (!writeElement(kSndoutAtmosEncode, {on ? 1 : 0}))
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "In setAtmosEncode : Did not able to set the element with atmos value %d", // sic
                  on);
}

void kepTVAudio::setAtmosEncodeForARCProfile(std::string profile, std::string activation)
{
    KEP_INFO("setAtmosEncodeForARCProfile:: arcProfileValue is %s and arcActivationStatus is %s",
             profile.c_str(), activation.c_str());
    if (activation == "ARC")
        setAtmosEncode(profile == "ATMOS");
}

void kepTVAudio::setAtmosEncodeForEARCProfile(bool atmos, std::string activation)
{
    KEP_INFO("setAtmosEncodeForEARCProfile:: eArcAtmosValue is %d and arcActivationStatus is %s",
             atmos, activation.c_str());
    if (activation == "eARC")
        setAtmosEncode(atmos);
}

bool kepTVAudio::setOTTAdecMode(bool ott, bool atmosLock)
{
    KEP_INFO("Setting OTT mode isOTTEnable %d isATMOSLockingEnable %d", ott, atmosLock);
    return writeOrLog(KEP_HERE, kAdecDolbyOttMode, {ott ? 1 : 0, atmosLock ? 1 : 0});
}

// --- Category code and copy status

void kepTVAudio::setBroadcastSystem()
{
    constexpr const char* kKey = key::kBroadcastSystem.name;
    // The start-up worker comes here while the caller's thread may be changing the map.
    const std::optional<std::string> system =
        mPtrParserInstance->findShared(mPtrParserInstance->mQualityParamsMap, kKey);
    if (!system) {
        KEP_ERROR("INVALID_PARAMETER", "%s is not available. Failed to set Broadcast System", kKey);
        return;
    }
    KEP_INFO("setBroadcastSystem broadcastSystemValue %s", system->c_str());
    const int code = numberOf(*system, listOf(key::kCategoryCodes));
    writeOrLog(KEP_HERE, kSndoutSpdifCategoryCode, {code, code});
}

int kepTVAudio::getSoundOutOpticCopyValue(std::string copyright) const
{
    KEP_DEBUG("getSoundOutOpticCopyValue for copyright: %s", copyright.c_str());
    const int value = numberOf(copyright, listOf(key::kCopyrights));
    KEP_DEBUG("getSoundOutOpticCopyValue - optic value is %d", value);
    return value;
}

int kepTVAudio::getSoundOutArcCopyValue(std::string copyright) const
{
    KEP_DEBUG("Copyright value received : %s", copyright.c_str());
    const int value = numberOf(copyright, listOf(key::kCopyrights));
    KEP_DEBUG("getSoundOutArcCopyValue - arc value is %d", value);
    return value;
}

bool kepTVAudio::isValidCopyright(std::string copyright) const
{
    KEP_DEBUG("Copyright value received is %s", copyright.c_str());
    return numberOf(copyright, listOf(key::kCopyrights)) != 0;
}

bool kepTVAudio::setSpdifSecurity(std::string copyright)
{
    KEP_INFO("setSpdifSecurity for scms api with copyright value as %s", copyright.c_str());
    if (!writeElement(kSndoutSpdifCopy,
                      {getSoundOutOpticCopyValue(copyright), getSoundOutArcCopyValue(copyright)})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "Did not able to set the element: %s with copyright value as %s", // sic
                  kSndoutSpdifCopy.name, copyright.c_str());
        return false;
    }
    return true;
}
