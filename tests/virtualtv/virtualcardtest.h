// SPDX-License-Identifier: Apache-2.0
// What the tests of the virtual cards share: one element through libasound, other processes, and
// the elements that the cards hold.
#pragma once

#include <climits>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include <alsa/asoundlib.h>

#include "openedcard.h"
#include "televisiontest.h"

using Values = std::vector<long>;

// --- One element through libasound; statuses are libasound's

struct Id {
    std::string name;
    snd_ctl_elem_iface_t interface = SND_CTL_ELEM_IFACE_MIXER;
    unsigned int index = 0;
    unsigned int number = 0; // 0: found by the others

    Id(const char* elementName) : name(elementName) {}
    Id(std::string elementName) : name(std::move(elementName)) {}
};

struct IdFreer {
    void operator()(snd_ctl_elem_id_t* id) const noexcept { snd_ctl_elem_id_free(id); }
};
using IdPtr = std::unique_ptr<snd_ctl_elem_id_t, IdFreer>;

IdPtr identifierOf(const Id& wanted);
Id byNumber(unsigned int number);

void setIntegers(snd_ctl_elem_value_t* value, const Values& integers);
/// As many integers as there is room for.
void getIntegers(const snd_ctl_elem_value_t* value, Values& integers);

int openStatus(const std::string& card);
int writeTo(snd_ctl_t* card, const Id& id, const Values& values);
/// Reads as many values as `values` holds.
int readFrom(snd_ctl_t* card, const Id& id, Values& values);
/// The values of an element that can be read.
Values valuesOf(snd_ctl_t* card, const Id& id, std::size_t count);
long valueOf(snd_ctl_t* card, const Id& id);

struct Information {
    int status = 0;
    std::string name;
    snd_ctl_elem_iface_t interface = SND_CTL_ELEM_IFACE_LAST;
    snd_ctl_elem_type_t type = SND_CTL_ELEM_TYPE_NONE;
    unsigned int count = 0;
    bool readable = false;
    bool writable = false;
    long minimum = 0;
    long maximum = 0;
};

Information information(snd_ctl_t* card, const Id& id);

/// Lists up to `space` identifiers from `offset` on.
int list(snd_ctl_t* card, unsigned int space, unsigned int offset, std::vector<Id>& found);
std::vector<Id> elementsOf(snd_ctl_t* card);

// --- Other processes

/// A process that has touched no card before, and does its work when it is told to.
class Neighbour
{
public:
    explicit Neighbour(const std::function<bool()>& work);
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;
    ~Neighbour();

    void start();
    [[nodiscard]] bool endsWithin(int milliseconds) const;
    /// Waits for its end; true when it did its work well.
    bool succeeds();
    /// Starts it and waits for its end.
    bool works();

private:
    pid_t mProcess = -1;
    int mGo = -1;
    int mLives = -1;
};

// --- What the cards hold

struct ElementRow {
    const char* name;
    snd_ctl_elem_type_t type;
    unsigned int count;
    long minimum; // of integers
    long maximum;

    bool operator==(const ElementRow& other) const
    {
        return std::string{name} == other.name && type == other.type && count == other.count &&
               minimum == other.minimum && maximum == other.maximum;
    }
};
std::ostream& operator<<(std::ostream& stream, const ElementRow& row);

inline constexpr snd_ctl_elem_type_t kBoolean = SND_CTL_ELEM_TYPE_BOOLEAN;
inline constexpr snd_ctl_elem_type_t kInteger = SND_CTL_ELEM_TYPE_INTEGER;

// clang-format off
inline constexpr ElementRow kDriver[] = {
    {"Sndout Connect",                  kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout Disconnect",               kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout Open",                     kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout Close",                    kInteger, 1, INT_MIN, INT_MAX},
    {"Mute Output",                     kInteger, 2, INT_MIN, INT_MAX},
    {"Mute Input",                      kInteger, 3, INT_MIN, INT_MAX},
    {"Sndout MainAudio Output",         kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Optic QN",                 kInteger, 4, INT_MIN, INT_MAX},
    {"Sndout Optic LightOnOff",         kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout ARC OnOff",                kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout EARC OnOff",               kInteger, 1, INT_MIN, INT_MAX},
    {"Sndout EARC Outputtype",          kInteger, 5, INT_MIN, INT_MAX},
    {"Sndout Spdif OutputType",         kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Spdif CategoryCode",       kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout Spdif CopyProtectionInfo", kInteger, 2, INT_MIN, INT_MAX},
    {"Sndout eAC3 ATMOS Encode OnOff",  kInteger, 1, INT_MIN, INT_MAX},
    {"Adec Dolby OTTMode",              kInteger, 2, INT_MIN, INT_MAX},
    {"Gain Input",                      kInteger, 3, INT_MIN, INT_MAX},
    {"Gain Output",                     kInteger, 2, INT_MIN, INT_MAX},
};
inline constexpr ElementRow kMixer[] = {
    {"Master Playback Switch", kBoolean, 1, 0, 0},
    {"Master Playback Volume", kInteger, 1, 0, 100},
    {"Softmaster",             kInteger, 1, 0, 100},
    {"Softmaster0",            kInteger, 1, 0, 100},
    {"Softmaster1",            kInteger, 1, 0, 100},
};
// clang-format on

class VirtualCard : public TelevisionTest
{
protected:
    [[nodiscard]] std::filesystem::path stateFile() const { return directory() / "cards.state"; }
    [[nodiscard]] std::string stateBytes() const
    {
        std::ostringstream bytes;
        bytes << std::ifstream{stateFile(), std::ios::binary}.rdbuf();
        return bytes.str();
    }
    void writeStateFile(const std::string& bytes) const
    {
        std::ofstream{stateFile(), std::ios::binary} << bytes;
    }
    /// A state file as another process leaves it, "Softmaster" at 40.
    void leaveStateFile() const
    {
        ASSERT_TRUE(Neighbour{[] {
                        return writeTo(opened("default").get(), "Softmaster", {40}) == 1;
                    }}.works());
    }
    [[nodiscard]] std::vector<std::string> eventTexts() const
    {
        std::vector<std::string> texts;
        for (const JValue& event : events())
            texts.push_back(event.stringify());
        return texts;
    }
};
