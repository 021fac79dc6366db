// SPDX-License-Identifier: Apache-2.0
// The table of sound outputs, and what can be derived from it. A column that a row leaves out is
// empty, false or None.
#include "soundoutputs.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "catalogue.h"

namespace
{

using enum OutputStep;

// clang-format off
constexpr OutputSwitch kSpeaker = {
    .open  = {"connectTvSpeakerOutput",           " for tv speaker",                      {Open, Connect, UnmuteUnlessMuted}},
    .close = {"disconnectTvSpeakerOutput",        " for tv speaker",                      {Disconnect, Close, Mute}},
    .joined = None,
};
constexpr OutputSwitch kOptical = {
    .open  = {"connectSpdifOrQNSndSyncOutput",    " for external speaker/QN SOUND SYNC",  {Open, Mute, Connect, LightOn, Unmute}},
    .close = {"disconnectSpdifOrQNSndSyncOutput", " for external speaker/QN sound sync",  {Disconnect, Mute, LightOff, Close}}, // sic
    .joined = None,
};
constexpr OutputSwitch kSoundSync = {
    .open  = {"connectSpdifOrQNSndSyncOutput",    " for external speaker/QN SOUND SYNC",  {Open, Mute, Connect, LightOn, SoundSync, Unmute}},
    .close = {"disconnectSpdifOrQNSndSyncOutput", " for external speaker/QN sound sync",  {Disconnect, Mute, LightOff, Close}}, // sic
    .joined = None,
};
constexpr OutputSwitch kHeadphone = {
    .open  = {"connectHPOutput",                  " for Headphone",                       {GuardHeadphone, Open, Connect, Unmute, UnguardHeadphone}},
    .close = {"disconnectHPOutput",               " for Headphone",                       {Disconnect, Close, Mute, MuteHeadphone}},
    .joined = UnmuteHeadphone, // a mute of the headphone alone must not outlive the change
};
constexpr OutputSwitch kArc = {
    .open  = {"connectExternalArcOutput",         "",                                     {Open, Connect, Unmute}},
    .close = {"disconnectExternalArcOutput",      "",                                     {Disconnect, Close, Mute}},
    .joined = None,
};
constexpr OutputSwitch kSoundBarOrWisa = {
    .open  = {"connectBTSndBarOrWisaOutput",      "",                                     {Open, Connect}},
    .close = {"disconnectBTSndBarOrWisaOutput",   "",                                     {Disconnect, Close}},
    .joined = None,
};
constexpr OutputSwitch kBluetooth = {
    .open  = {"connectSpeakerBluetoothOutput",    "",                                     {Open, Connect}},
    .close = {"disconnectSpeakerBluetoothOutput", "",                                     {Disconnect, Close}},
    .joined = None,
};

using By = Mechanism;
using On = PowerStateMute;

constexpr SoundOutput kSoundOutputs[] = {
    // output                    names                                         description                               select.  type  single            members                                             last first  afresh  volume            mute              power state
    {KEP_AUDIO_SPK,             {"tv_speaker"},                                "speaker",                                true,      1,  &kSpeaker,        {},                                                 false,      false,  By::Speaker,      By::Speaker,      On::Speaker},
    {KEP_AUDIO_SPDIF,           {"external_speaker", "external_optical"},      "optical",                                true,      2,  &kOptical,        {},                                                 false,      false,  By::None,         By::Unsupported,  On::Optical}, // sic: a volume succeeds, does nothing and logs nothing; callers rely on it
    {KEP_AUDIO_SPK_SPDIF,       {"tv_speaker_external", "tv_external_speaker"}, "television speaker and optical",        true,      0,  nullptr,          {KEP_AUDIO_SPK, KEP_AUDIO_SPDIF},                   true,       false,  By::Speaker,      By::Speaker,      On::Speaker},
    {KEP_AUDIO_SPK_HP,          {"tv_speaker_headphone"},                      "television speaker and headphone",       true,      0,  nullptr,          {KEP_AUDIO_SPK, KEP_AUDIO_HP},                      false,      false,  By::Speaker,      By::Speaker,      On::Headphone},
    {KEP_AUDIO_SPK_OPTICAL_ARC, {"tv_speaker_optical_arc"},                    "television speaker, optical and ARC",    true,      0,  nullptr,          {KEP_AUDIO_SPK, KEP_AUDIO_SPDIF, KEP_AUDIO_ARC},    false,      false,  By::Speaker,      By::Speaker,      On::Speaker},
    {KEP_AUDIO_SPK_BLUETOOTH,   {"tv_speaker_bluetooth"},                      "television speaker and Bluetooth",       true,      0,  nullptr,          {KEP_AUDIO_SPK, KEP_AUDIO_BLUETOOTH},               false,      false,  By::Speaker,      By::Speaker,      On::Speaker},
    {KEP_AUDIO_HP,              {"headphone", "lineout"},                      "headphone or line out",                  true,     16,  &kHeadphone,      {},                                                 false,      false,  By::Headphone,    By::Headphone,    On::Headphone},
    {KEP_AUDIO_ARC,             {"external_arc", "urcu_oss"},                  "HDMI ARC or eARC",                       true,     32,  &kArc,            {},                                                 false,      true,   By::Unsupported,  By::Unsupported,  On::Output},
    {KEP_AUDIO_QN_SOUND_SYNC,   {"qnSoundSync"},                               "optical sound bar with volume control",  true,      4,  &kSoundSync,      {},                                                 false,      true,   By::SoundSync,    By::SoundSync,    On::Output},
    {KEP_AUDIO_BT_SOUNDBAR,     {"bt_soundbar"},                               "Bluetooth sound bar",                    true,      8,  &kSoundBarOrWisa, {},                                                 false,      true,   By::Unsupported,  By::Unsupported,  On::Output},
    {KEP_AUDIO_WISA,            {"wisa_speaker"},                              "wireless speakers",                      true,     64,  &kSoundBarOrWisa, {},                                                 false,      true,   By::Unsupported,  By::Unsupported,  On::Output},
    {KEP_AUDIO_ALSA,            {"alsa"},                                      "known by name, not of a television",     false,     0,  nullptr,          {},                                                 false,      false,  By::None,         By::None,         On::None},
    {KEP_AUDIO_BLUETOOTH,       {},                                            "Bluetooth, beside the speaker",          false,   128,  &kBluetooth,      {},                                                 false,      false,  By::None,         By::None,         On::None},
};
// clang-format on

/// The elements up to the first that is empty.
template <typename Element, std::size_t Capacity>
constexpr kepList<Element> used(const Element (&elements)[Capacity])
{
    std::size_t count = 0;
    while (count < Capacity && elements[count] != Element{})
        ++count;
    return {elements, count};
}

struct OutputName {
    std::string_view name; // with its length: most names are told apart by it
    KEP_AUDIO_SNDOUT_T output = KEP_AUDIO_NO_OUTPUT;
};

constexpr std::size_t kNameCount = [] {
    std::size_t count = 0;
    for (const SoundOutput& row : kSoundOutputs)
        count += used(row.names).size();
    return count;
}();

constexpr auto kNames = [] {
    std::array<OutputName, kNameCount> names{};
    auto* next = names.data();
    for (const SoundOutput& row : kSoundOutputs)
        for (const char* name : used(row.names))
            *next++ = {name, row.output};
    return names;
}();

bool lights(const OutputSwitch& single)
{
    const auto& steps = single.open.steps;
    return std::find(std::begin(steps), std::end(steps), LightOn) != std::end(steps);
}

// --- What the catalogue shows of the table

constexpr kepList<KEP_AUDIO_SNDOUT_T> membersOf(const SoundOutput& row)
{
    const auto members = used(row.members);
    return members.empty() ? kepList<KEP_AUDIO_SNDOUT_T>{&row.output, 1} : members;
}

constexpr bool carries(Mechanism mechanism)
{
    return mechanism != Mechanism::None && mechanism != Mechanism::Unsupported;
}

constexpr auto kShown = projected(kSoundOutputs, [](const SoundOutput& row) {
    return kepSoundOutput{row.output,          used(row.names),   row.description, row.selectable,
                          carries(row.volume), carries(row.mute), row.driverType,  membersOf(row)};
});

constexpr std::size_t kTypeCount =
    std::count_if(std::begin(kSoundOutputs), std::end(kSoundOutputs),
                  [](const SoundOutput& row) { return row.driverType != 0; });

constexpr auto kTypes = [] {
    std::array<kepNamedNumber, kTypeCount> types{};
    auto* next = types.data();
    for (const SoundOutput& row : kSoundOutputs)
        if (row.driverType != 0)
            *next++ = {static_cast<std::int32_t>(row.driverType), row.description};
    return types;
}();

} // namespace

std::span<const SoundOutput> soundOutputs()
{
    return kSoundOutputs;
}

const SoundOutput* findSoundOutput(KEP_AUDIO_SNDOUT_T output)
{
    for (const SoundOutput& row : kSoundOutputs)
        if (row.output == output)
            return &row;
    return nullptr;
}

KEP_AUDIO_SNDOUT_T soundOutputOfName(std::string_view name)
{
    for (const OutputName& row : kNames)
        if (name == row.name)
            return row.output;
    return KEP_AUDIO_NO_OUTPUT;
}

OutputMembers::OutputMembers(KEP_AUDIO_SNDOUT_T output) : mMembers{output}
{
    const SoundOutput* row = findSoundOutput(output);
    if (row == nullptr)
        return;
    const auto members = membersOf(*row);
    std::copy(members.begin(), members.end(), mMembers);
    mCount = members.size();
}

bool OutputMembers::contains(KEP_AUDIO_SNDOUT_T output) const
{
    return std::find(begin(), end(), output) != end();
}

void OutputMembers::reverse()
{
    std::reverse(mMembers, mMembers + mCount);
}

bool hasOpticalLight(KEP_AUDIO_SNDOUT_T output)
{
    const OutputMembers members{output};
    return std::any_of(members.begin(), members.end(), [](KEP_AUDIO_SNDOUT_T member) {
        const SoundOutput* row = findSoundOutput(member);
        return row != nullptr && row->single != nullptr && lights(*row->single);
    });
}

constinit const kepList<kepNamedNumber> kOutputTypes = listOf(kTypes);

kepList<kepSoundOutput> kepCatalogue::soundOutputs()
{
    return listOf(kShown);
}
