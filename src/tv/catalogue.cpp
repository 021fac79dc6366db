// SPDX-License-Identifier: Apache-2.0
// The catalogue's lists that belong to no one room: the driver's elements and their numbers.
#include "catalogue.h"

#include "controlelements.h"
#include "keptvaudio.h"

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
    return {};
}

kepList<kepQuery> kepCatalogue::queries()
{
    return {};
}

kepList<kepKey> kepCatalogue::pipelineAttributeKeys()
{
    return {};
}

kepList<kepKey> kepCatalogue::qualityAttributeKeys()
{
    return {};
}

kepList<kepKey> kepCatalogue::pipelineInfoKeys()
{
    return {};
}

kepList<kepKey> kepCatalogue::categoryInfoKeys()
{
    return {};
}

kepList<kepRequestType> kepCatalogue::requestTypes()
{
    return {};
}
