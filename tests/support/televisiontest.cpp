// SPDX-License-Identifier: Apache-2.0
// The fixture of all tests that act on the virtual television.
#include "televisiontest.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "environment.h"
#include "faults.h"
#include "journal.h"
#include "keplog.h"

namespace
{

LogLine toLogLine(const LogMessage& message)
{
    // The prefix is "file:function(line) ".
    const std::string whole = message.text;
    const std::size_t open = whole.find('(');
    const std::size_t end = whole.find(") ", open);
    return {message.level, message.id, whole.substr(0, open),
            end == std::string::npos ? whole : whole.substr(end + 2)};
}

std::string joined(const JValue& values)
{
    std::string all;
    for (const JValue& value : values.elements())
        all += (all.empty() ? "" : ", ") + value.stringify();
    return all;
}

struct Stage {
    const char* name;
    virtualtv::FaultPoint point;
};
constexpr Stage kStages[] = {
    {"open", virtualtv::FaultPoint::CardOpen},
    {"load", virtualtv::FaultPoint::CardLoad},
    {"info", virtualtv::FaultPoint::CardInfo},
    {"write", virtualtv::FaultPoint::CardWrite},
};

} // namespace

std::ostream& operator<<(std::ostream& stream, const LogLine& line)
{
    return stream << line.level << " " << line.id << " " << line.origin << " \"" << line.text
                  << "\"";
}

std::ostream& operator<<(std::ostream& stream, const ControlEvent& event)
{
    stream << event.card << " " << event.what << " {";
    for (const int value : event.values)
        stream << " " << value;
    return stream << " } " << event.status;
}

TelevisionTest::TelevisionTest()
{
    std::string pattern = std::filesystem::temp_directory_path() / "kep-test-XXXXXX";
    mDirectory = mkdtemp(pattern.data());
    setenv("KEP_CONFIG_DIR", mDirectory.c_str(), 1);
    setenv("KEP_VIRTUALTV_STATE", (mDirectory / "cards.state").c_str(), 1);
    virtualtv::enter();
    admit(kLogDebug);
    LogSetSink([this](const LogMessage& message) { mLogLines.push_back(toLogLine(message)); });
    virtualtv::listen([this](const JValue& event) { mEvents.push_back(event); });
}

TelevisionTest::~TelevisionTest()
{
    LogSetSink([](const LogMessage&) {}); // what is said while the process ends is nobody's concern
    virtualtv::listen({});
    std::filesystem::remove_all(mDirectory);
}

void TelevisionTest::writeConfig(const std::string& fileName, const std::string& content) const
{
    std::ofstream{mDirectory / fileName} << content;
}

void TelevisionTest::configureBackend(const std::string& backend) const
{
    writeConfig("kep-config.json",
                R"({"Q27R5": {"kepAudio": ")" + backend + R"(", "kepDefaultVolume": 15}})");
}

void TelevisionTest::admit(int level)
{
    LogSetLevel(LogGetContext("kep"), level);
}

void TelevisionTest::connectLog()
{
    kepLogContext = LogGetContext("kep");
}

void TelevisionTest::injectCard(const std::string& stage, int status, const std::string& element)
{
    for (const Stage& row : kStages)
        if (stage == row.name)
            virtualtv::inject({row.point, element, "", status, {}});
}

void TelevisionTest::injectMiddleware(const std::string& operation, int status)
{
    virtualtv::inject({virtualtv::FaultPoint::Middleware, operation, "", status, {}});
}

void TelevisionTest::clearInjections()
{
    virtualtv::clearInjections();
}

Lines TelevisionTest::logLines(int level) const
{
    Lines lines;
    std::copy_if(mLogLines.begin(), mLogLines.end(), std::back_inserter(lines),
                 [level](const LogLine& line) { return line.level == level; });
    return lines;
}

std::vector<ControlEvent> TelevisionTest::controlEvents() const
{
    std::vector<ControlEvent> found;
    for (const JValue& event : mEvents) {
        if (event["event"].asString() != "control")
            continue;
        ControlEvent control{event["card"].asString(), "", {}, event["status"].asNumber<int>()};
        control.what = event[event.hasKey("stage") ? "stage" : "element"].asString();
        for (const JValue& value : event["values"].elements())
            control.values.push_back(value.asNumber<int>());
        found.push_back(control);
    }
    return found;
}

Texts TelevisionTest::middlewareCalls() const
{
    Texts calls;
    for (const JValue& event : mEvents) {
        if (event["event"].asString() != "middleware")
            continue;
        const int status = event["status"].asNumber<int>();
        calls.push_back(event["library"].asString() + "." + event["operation"].asString() + "(" +
                        joined(event["args"]) + ")" +
                        (status != 0 ? " -> " + std::to_string(status) : ""));
    }
    return calls;
}

void TelevisionTest::forget()
{
    mLogLines.clear();
    mEvents.clear();
}
