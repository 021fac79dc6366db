// SPDX-License-Identifier: Apache-2.0
// The catalogue's lists that are not made where their table stands.
#include "catalogue.h"

#include "controlelements.h"
#include "keptvamplifier.h"
#include "keptvaudio.h"
#include "keptvdelay.h"
#include "keptvgain.h"
#include "keptvsoundengine.h"
#include "payloadkeys.h"

namespace
{

constexpr kepNamedNumber kOffOn[] = {{0, "off"}, {1, "on"}};
constexpr kepNamedNumber kUnmutedMuted[] = {{0, "unmuted"}, {1, "muted"}};
constexpr kepNamedNumber kCodecs[] = {
    {SNDOUT_EARC_PCM, "PCM"},         {SNDOUT_EARC_DD, "DD"},
    {SNDOUT_EARC_AAC, "AAC"},         {SNDOUT_EARC_DD_FROM_DTS, "DD from DTS"},
    {SNDOUT_EARC_DDPLUS, "DD+"},      {SNDOUT_EARC_TRUEHD, "TrueHD"},
    {SNDOUT_EARC_MAT2PCM, "MAT2PCM"}, {SNDOUT_EARC_DTSHD, "DTSHD"},
};

constexpr kepKey kBackendKeys[] = {key::kSoundOutputDigital, key::kBroadcastSystem};
constexpr kepQuery kQueries[] = {key::kGainValue, key::kReadRegister, key::kAmplifierState};
constexpr kepKey kPipelineAttributeKeys[] = {key::kAttributePurpose, key::kStreamType};
constexpr kepKey kQualityAttributeKeys[] = {key::kPipelineInfo, key::kCategoryInfo,
                                            key::kRequestType, key::kActiveState};
constexpr kepKey kPipelineInfoKeys[] = {
    key::kPipelineId, key::kReset,           key::kPipelinePurpose,    key::kResource,
    key::kSourceType, key::kSourceAttribute, key::kPipelineStreamType, key::kPipelineType};
constexpr kepKey kCategoryInfoKeys[] = {key::kImmersive, key::kCodec, key::kParams};

} // namespace

constinit const kepList<kepNamedNumber> kSwitch = listOf(kOffOn);
constinit const kepList<kepNamedNumber> kMuteSwitch = listOf(kUnmutedMuted);
constinit const kepList<kepNamedNumber> kEarcCodecs = listOf(kCodecs);

kepList<kepControlElement> kepCatalogue::controlElements()
{
    return listOf(kControlElements);
}

kepList<kepQualityKeys> kepCatalogue::soundQualityKeys()
{
    static const kepQualityKeys kReaders[] = {
        {"television", listOf(kBackendKeys)},
        {"soundengine", kepTVSoundEngine::qualityKeys()},
        {"amplifier", kepTVAmplifier::qualityKeys()},
        {"gain", kepTVGain::qualityKeys()},
        {"delay", kepTVDelay::qualityKeys()},
    };
    return listOf(kReaders);
}

// clang-format off
kepList<kepQuery> kepCatalogue::queries()             { return listOf(kQueries); }
kepList<kepKey> kepCatalogue::pipelineAttributeKeys() { return listOf(kPipelineAttributeKeys); }
kepList<kepKey> kepCatalogue::qualityAttributeKeys()  { return listOf(kQualityAttributeKeys); }
kepList<kepKey> kepCatalogue::pipelineInfoKeys()      { return listOf(kPipelineInfoKeys); }
kepList<kepKey> kepCatalogue::categoryInfoKeys()      { return listOf(kCategoryInfoKeys); }
kepList<kepRequestType> kepCatalogue::requestTypes()  { return listOf(key::kRequestTypes); }
// clang-format on
