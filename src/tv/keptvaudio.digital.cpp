// SPDX-License-Identifier: Apache-2.0
// Digital outputs: which format goes out on optical, ARC and eARC, by the user's mode, the country,
// the codec of the current pipeline and what the receiver can decode.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "keplog.h"
#include "keptvaudio.h"
#include "payloadkeys.h"

/// The driver's numbers for one digital mode of one output.
struct DigitalModes {
    int forced; // while Dolby Digital Plus is forced; 0: that changes nothing
    int japanMixed;
    int japan;
    int mixed;
    int plain;
};

namespace
{

// From the driver's list; nothing derives them.
// clang-format off
constexpr DigitalModes kOpticPassThrough    = {.forced =  0, .japanMixed = 3, .japan =  8, .mixed = 2, .plain =  7};
constexpr DigitalModes kOpticAuto           = {.forced =  6, .japanMixed = 5, .japan =  3, .mixed = 4, .plain =  2};
constexpr DigitalModes kArcPassThrough      = {.forced =  0, .japanMixed = 3, .japan = 13, .mixed = 2, .plain = 12};
constexpr DigitalModes kArcPassThroughDolby = {.forced =  0, .japanMixed = 5, .japan = 15, .mixed = 4, .plain = 14};
constexpr DigitalModes kArcAuto             = {.forced = 10, .japanMixed = 7, .japan =  3, .mixed = 6, .plain =  2};
constexpr DigitalModes kArcAutoDolby        = {.forced = 11, .japanMixed = 9, .japan =  5, .mixed = 8, .plain =  4};
// clang-format on
constexpr int kPcmMode = 1;
constexpr int kUnknownMode = 0;

struct CodecRow {
    std::string_view inputs[3]; // codecs of a pipeline
    const char* capability;     // what the receiver must be able to decode
    sndout_earc_output_codec_type type;
};

// In the order in which they are tried.
// clang-format off
constexpr CodecRow kPassThroughCodecs[] = {
    {{"truehd", "truehd_atmos"},         "TrueHD",  SNDOUT_EARC_TRUEHD},
    {{"dts_hd_ma"},                      "DTSHD",   SNDOUT_EARC_DTSHD},
    {{"mat", "mat_atmos"},               "MAT2PCM", SNDOUT_EARC_MAT2PCM},
    {{"eac3", "eac3_atmos"},             "DD+",     SNDOUT_EARC_DDPLUS},
    {{"ac3"},                            "DD",      SNDOUT_EARC_DD},
    {{"dts", "dts_cd", "dts_express"},   "DD",      SNDOUT_EARC_DD_FROM_DTS},
    {{"aac"},                            "AAC",     SNDOUT_EARC_AAC},
    {{"pcm"},                            "PCM",     SNDOUT_EARC_PCM},
};

struct ReEncodeRow {
    const char* capability;
    sndout_earc_output_codec_type type;
};
constexpr ReEncodeRow kReEncodePriority[] = {
    {"MAT2PCM", SNDOUT_EARC_MAT2PCM},
    {"DD+",     SNDOUT_EARC_DDPLUS},
    {"DD",      SNDOUT_EARC_DD},
};

constexpr std::string_view kDtsCodecs[] = {"dts", "dts_hd_ma", "dts_express", "dts_cd"};

// Every other codec, an unknown one included, counts as PCM.
constexpr std::string_view kCompressedCodecs[] = {
    "truehd", "truehd_atmos", "mat",  "mat_atmos",  "eac3", "eac3_atmos",  "ac3",   "mpeg_h", "aac",
    "heaac",  "ac4",          "dts",  "ac4_atmos",  "opus", "dts_express", "dts_cd", "dts_hd_ma",
};
// clang-format on

template <std::size_t Size>
bool isOneOf(std::string_view name, const std::string_view (&names)[Size])
{
    return !name.empty() && std::find(std::begin(names), std::end(names), name) != std::end(names);
}

/// The number of that name; 0 for an unknown one.
int numberOf(std::string_view name, kepList<kepNamedNumber> rows)
{
    for (const kepNamedNumber& row : rows)
        if (row.name == name)
            return row.number;
    return 0;
}

} // namespace

// --- The current digital mode

bool kepTVAudio::setSoundOutputDigital(std::string mode)
{
    KEP_INFO("INFO_LOG", "Request to set digital mode as %s", mode.c_str());
    const bool done =
        write(kSndoutSpdifOutputType, {getSoundOutputOpticMode(mode), getSoundOutputArcMode(mode)});
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
        KEP_INFO("INFO_LOG", "Setting digital mode as %s, since its not optical or arc", "pcm");
        return "pcm";
    }
    std::string mode = qualityParam(key::kSoundOutputDigital.name).value_or("");
    KEP_INFO("INFO_LOG", "Setting digital mode as %s", mode.c_str());
    return mode;
}

bool kepTVAudio::reapplyDigitalMode()
{
    return setSoundOutputDigital(getSoundOutputDigitalMode());
}

// --- Mode numbers of optical and ARC

int kepTVAudio::getSoundOutputOpticMode(std::string mode) const
{
    KEP_INFO("INFO_LOG", "Get SoundOutputMode for Optic digitalMode %s ", mode.c_str()); // sic
    const int number = mode == "passThrough" ? getPassThroughOpticMode()
                       : mode == "auto"      ? getAutoOpticMode()
                       : mode == "pcm"       ? kPcmMode
                                             : kUnknownMode;
    KEP_DEBUG("Optic digital mode %d", number);
    return number;
}

int kepTVAudio::getSoundOutputArcMode(std::string mode) const
{
    KEP_INFO("INFO_LOG", "Get SoundOutputMode for ARC digitalMode %s ", mode.c_str()); // sic
    const int number = mode == "passThrough" ? getPassThroughArcMode()
                       : mode == "auto"      ? getAutoArcMode()
                       : mode == "pcm"       ? kPcmMode
                                             : kUnknownMode;
    KEP_DEBUG("Arc digital mode %d", number);
    return number;
}

int kepTVAudio::modeNumber(const DigitalModes& modes, bool japan) const
{
    if (mForcedDDPlus && modes.forced != 0)
        return modes.forced;
    if (japan)
        return mMixerFlag ? modes.japanMixed : modes.japan;
    return mMixerFlag ? modes.mixed : modes.plain;
}

bool kepTVAudio::hasDolbyProfile() const
{
    return mArcProfile == "EAC3" || mArcProfile == "ATMOS";
}

bool kepTVAudio::isJapaneseArc() const
{
    return isCountryCodeJP() && !mSupportBnoModel; // sic: the model does not matter to optical
}

int kepTVAudio::getPassThroughOpticMode() const
{
    return modeNumber(kOpticPassThrough, isCountryCodeJP());
}

int kepTVAudio::getAutoOpticMode() const
{
    return modeNumber(kOpticAuto, isCountryCodeJP());
}

int kepTVAudio::getPassThroughArcMode() const
{
    return modeNumber(hasDolbyProfile() ? kArcPassThroughDolby : kArcPassThrough, isJapaneseArc());
}

int kepTVAudio::getAutoArcMode() const
{
    return modeNumber(hasDolbyProfile() ? kArcAutoDolby : kArcAuto, isJapaneseArc());
}

bool kepTVAudio::isCountryCodeJP() const
{
    return qualityParam(key::kCountry.name) == "JP";
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
    KEP_INFO("INFO_LOG", "set codec type: %d for earc output type and mixer value is %d", codec,
             mix);
    return writeOrLog(kSndoutEarcOutputType,
                      {2, static_cast<std::int32_t>(codec), 0, 0, static_cast<std::int32_t>(mix)});
}

bool kepTVAudio::setEArcOutputTypeForPassThrough()
{
    const std::string codec = getInputCodecType();
    KEP_DEBUG("input codec value is %s", codec.c_str());
    for (const CodecRow& row : kPassThroughCodecs)
        if (isOneOf(codec, row.inputs) && isEarcCapabilityAvailable(row.capability))
            return setEArcOutputType(row.type,
                                     mMixerFlag ? SNDOUT_EARC_MIX_ON : SNDOUT_EARC_MIX_OFF);
    return checkReEncodePriority();
}

bool kepTVAudio::checkReEncodePriority()
{
    const std::string codec = getInputCodecType();
    KEP_INFO("INFO_LOG", "input codec value is %s", codec.c_str());
    if (isOneOf(codec, kDtsCodecs))
        return setEArcOutputTypeForDTS();
    return isCountryCodeJP() ? setDolbyForJP() : setDolbyForNonJP();
}

sndout_earc_output_codec_type kepTVAudio::preferredDolbyType() const
{
    if (isInputCodecPCM())
        return SNDOUT_EARC_PCM;
    for (const ReEncodeRow& row : kReEncodePriority)
        if (isEarcCapabilityAvailable(row.capability))
            return row.type;
    return SNDOUT_EARC_PCM;
}

bool kepTVAudio::setDolbyForJP()
{
    const std::string source = avParam("sourceType").value_or("");
    KEP_DEBUG("set dolby digital for country as JP & Input Source is %s", source.c_str());
    const bool aac = (source == "HDMI" || source == "TV") && isEarcCapabilityAvailable("AAC");
    return setEArcOutputType(aac ? SNDOUT_EARC_AAC : preferredDolbyType(), SNDOUT_EARC_MIX_ON);
}

bool kepTVAudio::setDolbyForNonJP()
{
    return setEArcOutputType(preferredDolbyType(), SNDOUT_EARC_MIX_ON);
}

bool kepTVAudio::setEArcOutputTypeForDTS()
{
    KEP_DEBUG("set dolby digital for DTS Input Source");
    const bool dts = isEarcCapabilityAvailable("DTS");
    return setEArcOutputType(dts ? SNDOUT_EARC_DD_FROM_DTS : SNDOUT_EARC_PCM, SNDOUT_EARC_MIX_ON);
}

std::string kepTVAudio::getInputCodecType() const
{
    return avParam("codec").value_or("");
}

bool kepTVAudio::isInputCodecPCM() const
{
    const std::string codec = getInputCodecType();
    KEP_INFO("INFO_LOG", "input codec value is %s", codec.c_str());
    return !isOneOf(codec, kCompressedCodecs);
}

bool kepTVAudio::isEarcCapabilityAvailable(std::string codec) const
{
    bool available = false;
    for (const JValue& capability : mEarcCapability.elements())
        available = available || capability.asString() == codec;
    KEP_INFO("INFO_LOG", "Is earc capability available: %d for %s", available, codec.c_str());
    return available;
}

bool kepTVAudio::updateEarcCapability(JValue capability)
{
    mEarcCapability = capability.deepCopy(); // what the caller does to it later is its own business
    return setEarcSoundOutputDigital(getSoundOutputDigitalMode());
}

void kepTVAudio::updateCodecImmersiveFormat(const AudioVideoInfo& pipeline)
{
    KEP_INFO("INFO_LOG", "Called updateCodecImmersiveFormat to update codec and immersive format");
    const auto immersive = pipeline.find("immersive");
    if (immersive != pipeline.end())
        mPtrTVSoundEngine->setImmersiveFormat(immersive->second);
    if (pipeline.count("codec") != 0 && mCurrentSoundout == KEP_AUDIO_ARC)
        setEarcSoundOutputDigital(getSoundOutputDigitalMode());
}

// --- ARC and eARC switches

bool kepTVAudio::setArcOnOff(int arc, int earc)
{
    KEP_INFO("INFO_LOG", "Setting SoundOut on off for ARC status: %d & eARC status: %d", arc, earc);
    if (!write(kSndoutArc, {arc})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "In setSoundOutArc : Did not able to set the element: %s with status %d", // sic
                  kSndoutArc.name, arc);
        return false;
    }
    if (!write(kSndoutEarc, {earc})) {
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
    KEP_INFO("INFO_LOG", "Setting Atmos Encode value is %d", on);
    if (!write(kSndoutAtmosEncode, {on ? 1 : 0}))
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "In setAtmosEncode : Did not able to set the element with atmos value %d", // sic
                  on);
}

void kepTVAudio::setAtmosEncodeForARCProfile(std::string profile, std::string activation)
{
    KEP_INFO("INFO_LOG",
             "setAtmosEncodeForARCProfile:: arcProfileValue is %s and arcActivationStatus is %s",
             profile.c_str(), activation.c_str());
    if (activation == "ARC")
        setAtmosEncode(profile == "ATMOS");
}

void kepTVAudio::setAtmosEncodeForEARCProfile(bool atmos, std::string activation)
{
    KEP_INFO("INFO_LOG",
             "setAtmosEncodeForEARCProfile:: eArcAtmosValue is %d and arcActivationStatus is %s",
             atmos, activation.c_str());
    if (activation == "eARC")
        setAtmosEncode(atmos);
}

bool kepTVAudio::setOTTAdecMode(bool ott, bool atmosLock)
{
    KEP_INFO("INFO_LOG", "Setting OTT mode isOTTEnable %d isATMOSLockingEnable %d", ott, atmosLock);
    return writeOrLog(kAdecDolbyOttMode, {ott ? 1 : 0, atmosLock ? 1 : 0});
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
    KEP_INFO("INFO_LOG", "setBroadcastSystem broadcastSystemValue %s", system->c_str());
    const int code = numberOf(*system, listOf(key::kCategoryCodes));
    writeOrLog(kSndoutSpdifCategoryCode, {code, code});
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
    KEP_INFO("INFO_LOG", "setSpdifSecurity for scms api with copyright value as %s",
             copyright.c_str());
    if (!write(kSndoutSpdifCopy,
               {getSoundOutOpticCopyValue(copyright), getSoundOutArcCopyValue(copyright)})) {
        KEP_ERROR("CONTROL_ELEMENT_SET_ERROR",
                  "Did not able to set the element: %s with copyright value as %s", // sic
                  kSndoutSpdifCopy.name, copyright.c_str());
        return false;
    }
    return true;
}
