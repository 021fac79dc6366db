// SPDX-License-Identifier: Apache-2.0
// What the virtual television answers when it is asked.
#include "television.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <optional>

namespace virtualtv
{
namespace
{

/// The one television. Never destroyed: it is asked until the process ends.
struct Television {
    std::mutex guard;
    std::map<std::string, int> lineLevels;
    std::string gain = "0";
    AmplifierState amplifier;
    std::vector<std::string> i2cData;
};

Television& theTelevision()
{
    static Television* const television = new Television;
    return *television;
}

/// Runs `access` on the one television while no other thread does.
template <typename Access>
auto withTelevision(Access access)
{
    const std::lock_guard lock{theTelevision().guard};
    return access(theTelevision());
}

/// What stands in the line's file, if KEP_VIRTUALTV_LINES names a folder that has one: the level is
/// set from outside then.
std::optional<int> levelFromOutside(const std::string& line)
{
    const char* folder = secure_getenv("KEP_VIRTUALTV_LINES");
    if (folder == nullptr || *folder == '\0' || line.find('/') != std::string::npos)
        return std::nullopt;
    int level = 0;
    if (std::ifstream file{std::string{folder} + "/" + line}; file >> level)
        return level;
    return std::nullopt;
}

} // namespace

void setLineLevel(const std::string& line, int level)
{
    withTelevision([&](Television& tv) { tv.lineLevels[line] = level; });
}

int lineLevel(const std::string& line)
{
    if (const std::optional<int> level = levelFromOutside(line))
        return *level;
    return withTelevision([&](Television& tv) {
        const auto found = tv.lineLevels.find(line);
        return found != tv.lineLevels.end() ? found->second : 0;
    });
}

void setGainValue(std::string value)
{
    withTelevision([&](Television& tv) { tv.gain = std::move(value); });
}

std::string gainValue()
{
    return withTelevision([](Television& tv) { return tv.gain; });
}

void setAmplifierState(AmplifierState state)
{
    withTelevision([&](Television& tv) { tv.amplifier = std::move(state); });
}

AmplifierState amplifierState()
{
    return withTelevision([](Television& tv) { return tv.amplifier; });
}

void setI2cData(std::vector<std::string> data)
{
    withTelevision([&](Television& tv) { tv.i2cData = std::move(data); });
}

std::vector<std::string> i2cData()
{
    return withTelevision([](Television& tv) { return tv.i2cData; });
}

} // namespace virtualtv
