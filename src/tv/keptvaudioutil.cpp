// SPDX-License-Identifier: Apache-2.0
// Identifiers: names to resources and outputs, resources and outputs to the driver's numbers. The
// table of resources stands here, that of outputs in soundoutputs.cpp.
#include <cstddef>

#include "catalogue.h"
#include "controlelements.h"
#include "keplog.h"
#include "keptvaudio.h"
#include "shortname.h"
#include "soundoutputs.h"

namespace
{

struct ResourceRow {
    KEP_AUDIO_RESOURCE_T resource = KEP_AUDIO_RESOURCE_INVALID;
    std::string_view source; // of a literal
    kepNames sinks;          // any of them
    unsigned int index = 0;  // block of the driver
    int port = 0;            // within the block
};

// The driver's blocks.
constexpr unsigned int kDecoders = 1;
constexpr unsigned int kMixers = 16;
constexpr kepNamedNumber kBlockNames[] = {{kDecoders, "decoder block"}, {kMixers, "mixer block"}};

constexpr const char* kMainOrSub[] = {"MAIN", "SUB"};
constexpr const char* kAlsa[] = {"ALSA"};

// A resource that has two names has two rows.
// clang-format off
constexpr ResourceRow kResources[] = {
    // resource                    source     sinks               index      port
    {KEP_AUDIO_RESOURCE_ADEC0,    "ADEC",    listOf(kMainOrSub),  kDecoders, 0},
    {KEP_AUDIO_RESOURCE_ADEC0,    "ADEC0",   listOf(kMainOrSub),  kDecoders, 0},
    {KEP_AUDIO_RESOURCE_ADEC1,    "ADEC1",   listOf(kMainOrSub),  kDecoders, 1},
    {KEP_AUDIO_RESOURCE_AMIXER0,  "AMIXER0", listOf(kMainOrSub),  kMixers,   0},
    {KEP_AUDIO_RESOURCE_AMIXER1,  "AMIXER1", listOf(kMainOrSub),  kMixers,   1},
    {KEP_AUDIO_RESOURCE_AMIXER2,  "AMIXER2", listOf(kMainOrSub),  kMixers,   2},
    {KEP_AUDIO_RESOURCE_AMIXER3,  "AMIXER3", listOf(kMainOrSub),  kMixers,   3},
    {KEP_AUDIO_RESOURCE_AMIXER4,  "AMIXER4", listOf(kMainOrSub),  kMixers,   4},
    {KEP_AUDIO_RESOURCE_AMIXER5,  "AMIXER5", listOf(kMainOrSub),  kMixers,   5},
    {KEP_AUDIO_RESOURCE_AMIXER6,  "AMIXER6", listOf(kMainOrSub),  kMixers,   6},
    {KEP_AUDIO_RESOURCE_AMIXER7,  "AMIXER7", listOf(kMainOrSub),  kMixers,   7},
    {KEP_AUDIO_RESOURCE_AMIXER0,  "AMIXER",  listOf(kAlsa),       kMixers,   0}, // the generic mixer
};
// clang-format on

constexpr auto kShownSources = projected(kResources, [](const ResourceRow& row) {
    return kepInputSource{row.source.data(), row.sinks, row.resource, row.index, row.port};
});

/// What the names of a request are compared with.
struct ResourceNames {
    ShortName source{""};
    ShortName sinks[2]{ShortName{""}, ShortName{""}}; // twice the same, if there is only one
};

constexpr auto kResourceNames = projected(kResources, [](const ResourceRow& row) {
    return ResourceNames{ShortName{row.source},
                         {ShortName{row.sinks[0]}, ShortName{row.sinks[row.sinks.size() - 1]}}};
});

const ResourceRow* findResource(KEP_AUDIO_RESOURCE_T resource)
{
    for (const ResourceRow& row : kResources)
        if (row.resource == resource)
            return &row;
    return nullptr;
}

} // namespace

KEP_AUDIO_RESOURCE_T kepTVAudio::getResourceId(const std::string& source, const std::string& sink)
{
    const ShortName sourceName{source};
    const ShortName sinkName{sink};
    for (std::size_t i = 0; i < kResourceNames.size(); ++i) {
        const ResourceNames& row = kResourceNames[i];
        if (sourceName == row.source && (sinkName == row.sinks[0] || sinkName == row.sinks[1]))
            return kResources[i].resource;
    }
    return KEP_AUDIO_RESOURCE_INVALID;
}

KEP_AUDIO_SNDOUT_T kepTVAudio::getSoundOutputResourceId(const std::string& name)
{
    return soundOutputOfName(name);
}

unsigned int kepTVAudio::audioResourceIdToIndex(KEP_AUDIO_RESOURCE_T resource)
{
    const ResourceRow* row = findResource(resource);
    return row != nullptr ? row->index : 0;
}

int kepTVAudio::audioResourceIdToPort(KEP_AUDIO_RESOURCE_T resource)
{
    const ResourceRow* row = findResource(resource);
    return row != nullptr ? row->port : -1;
}

unsigned int kepTVAudio::getSoundOutputCommonType(KEP_AUDIO_SNDOUT_T output)
{
    const SoundOutput* row = findSoundOutput(output);
    return row != nullptr ? row->driverType : 0;
}

bool kepTVAudio::isValidResource(KEP_AUDIO_RESOURCE_T resource)
{
    return findResource(resource) != nullptr;
}

bool kepTVAudio::isValidSoundout() const
{
    const SoundOutput* row = findSoundOutput(mCurrentSoundout);
    return row != nullptr && row->selectable;
}

KEP_AUDIO_SNDOUT_T kepTVAudio::getPopNoiseSoundOutput() const
{
    KEP_INFO("getPopNoiseSoundOutput soundOutput: %d", mPopNoiseSoundOutput);
    return mPopNoiseSoundOutput;
}

KEP_AUDIO_SNDOUT_T kepTVAudio::getCurrentSoundout() const
{
    return mCurrentSoundout;
}

std::string kepTVAudio::getSoundOutputKey() const
{
    const auto entry = mStoredSettings.find("soundOutput");
    return entry != mStoredSettings.end() ? entry->second : "";
}

constinit const kepList<kepNamedNumber> kBlocks = listOf(kBlockNames);

kepList<kepInputSource> kepCatalogue::inputSources()
{
    return listOf(kShownSources);
}
