// SPDX-License-Identifier: Apache-2.0
// Requests, made as an audio policy service makes them: what has to be refused, and a short evening
// in front of the television.
#include <cstdlib>
#include <optional>

#include "checks.h"
#include "configuration.h"
#include "deadline.h"
#include "jdomparser.h"
#include "kepclient.h"
#include "kepfactory.h"
#include "loglines.h"
#include "platformlog.h"

namespace
{

kepClient& client()
{
    return *kepClient::getInstance();
}

JValue json(const char* text)
{
    return JDomParser{JSchema::acceptAll()}.parse(text);
}

// --- The evening

unsigned int headphone()
{
    bool connected = false;
    return client().getHeadphoneStatus(&connected);
}

/// A query has no code: 0 when it was answered.
unsigned int gainValue()
{
    const JValue answer = client().getSettings(
        "gainValue", json(R"({"gainType": "input", "soundOutput": "tv_speaker"})"));
    return answer.isObject() ? KEP_RESULT_OK : KEP_RESULT_FAILED;
}

struct Request {
    const char* text;
    unsigned int wanted;
    unsigned int (*make)();
};

// The headphone is not selected: it would stay muted until a main loop has run for five seconds.
// clang-format off
constexpr Request kEvening[] = {
    {"initialize starts the backend",                        KEP_STATUS_OK,               [] { return client().initialize(); }},
    {"setSoundOutput opens the speaker",                     KEP_RESULT_OK,               [] { return client().setSoundOutput("tv_speaker"); }},
    {"setSoundOutput refuses an unknown output",             KEP_RESULT_FAILED,           [] { return client().setSoundOutput("nowhere"); }},
    {"setOutputVolume sets a low volume",                    KEP_RESULT_OK,               [] { return client().setOutputVolume("tv_speaker", 5); }},
    {"connectInput connects a film",                         KEP_RESULT_OK,               [] { return client().connectInput("ADEC0", "MAIN", json(R"({"streamType": "movie"})")); }},
    {"connectInput refuses an unknown source",               KEP_RESULT_INVALID_RESOURCE, [] { return client().connectInput("nothing", "MAIN", json("{}")); }},
    {"setInputVolume sets the film's volume",                KEP_RESULT_OK,               [] { return client().setInputVolume("ADEC0", "MAIN", 5); }},
    {"setMute mutes the film",                               KEP_RESULT_OK,               [] { return client().setMute("ADEC0", "MAIN", true); }},
    {"setMute unmutes the film",                             KEP_RESULT_OK,               [] { return client().setMute("ADEC0", "MAIN", false); }},
    {"setMute refuses an unknown source",                    KEP_RESULT_INVALID_RESOURCE, [] { return client().setMute("nothing", "MAIN", true); }},
    {"setOutputMute mutes the speaker",                      KEP_RESULT_OK,               [] { return client().setOutputMute("tv_speaker", true); }},
    {"setOutputMute unmutes the speaker",                    KEP_RESULT_OK,               [] { return client().setOutputMute("tv_speaker", false); }},
    {"setOutputMute refuses an unknown output",              KEP_RESULT_UNKNOWN_OUTPUT,   [] { return client().setOutputMute("nowhere", true); }},
    {"setMuteExtSPK unmutes the external speaker",           KEP_RESULT_OK,               [] { return client().setMuteExtSPK(false); }},
    {"getHeadphoneStatus asks for the headphone",            KEP_RESULT_OK,               &headphone},
    {"setSettings switches the equaliser on",                KEP_RESULT_OK,               [] { return client().setSettings("audioEQ", json(R"({"status": "on"})")); }},
    {"setSettings refuses an unknown category",              KEP_RESULT_FAILED,           [] { return client().setSettings("nothing", json("{}")); }},
    {"setQualityAttribute refuses what is no report",        KEP_RESULT_FAILED,           [] { return client().setQualityAttribute(json("[]")); }},
    {"getSettings tells the gain",                           KEP_RESULT_OK,               &gainValue},
    {"disconnectInput ends the film",                        KEP_RESULT_OK,               [] { return client().disconnectInput("ADEC0", "MAIN"); }},
    {"deinitialize stops the backend",                       KEP_STATUS_OK,               [] { return client().deinitialize(); }},
};

// Without a configuration nothing is started, and every request is refused: nothing can be heard.
constexpr Request kWithoutConfiguration[] = {
    {"initialize refuses to start without a configuration", KEP_STATUS_FAILED, [] { return client().initialize(); }},
    {"connectInput refuses without a backend",              KEP_RESULT_FAILED, [] { return client().connectInput("ADEC0", "MAIN", json("{}")); }},
    {"disconnectInput refuses without a backend",           KEP_RESULT_FAILED, [] { return client().disconnectInput("ADEC0", "MAIN"); }},
    {"getHeadphoneStatus refuses without a backend",        KEP_RESULT_FAILED, &headphone},
    {"removePipelineInfo refuses without a backend",        KEP_RESULT_FAILED, [] { return client().removePipelineInfo("film"); }},
    {"setSoundOutput refuses without a backend",            KEP_RESULT_FAILED, [] { return client().setSoundOutput("tv_speaker"); }},
    {"setMute refuses without a backend",                   KEP_RESULT_FAILED, [] { return client().setMute("ADEC0", "MAIN", true); }},
    {"setOutputVolume refuses without a backend",           KEP_RESULT_FAILED, [] { return client().setOutputVolume("tv_speaker", 5); }},
    {"setInputVolume refuses without a backend",            KEP_RESULT_FAILED, [] { return client().setInputVolume("ADEC0", "MAIN", 5); }},
    {"setOutputMute refuses without a backend",             KEP_RESULT_FAILED, [] { return client().setOutputMute("tv_speaker", true); }},
    {"setMuteExtSPK refuses without a backend",             KEP_RESULT_FAILED, [] { return client().setMuteExtSPK(true); }},
    {"setQualityAttribute refuses without a backend",       KEP_RESULT_FAILED, [] { return client().setQualityAttribute(json("{}")); }},
    {"setSettings refuses without a backend",               KEP_RESULT_FAILED, [] { return client().setSettings("audioEQ", json(R"({"status": "on"})")); }},
    {"getSettings refuses without a backend",               KEP_RESULT_FAILED, &gainValue},
    {"deinitialize refuses without a backend",              KEP_STATUS_FAILED, [] { return client().deinitialize(); }},
};
// clang-format on

/// What the library says about a failure, to be added to a sentence.
std::string errorsOf(const LogLines& lines)
{
    std::string text;
    for (const LogLine& line : lines.taken())
        if (line.level <= kLogWarning)
            text += "; logged: " + line.text;
    return text;
}

/// What is wrong with the code or the time of a request, whose lines are caught.
std::string requestFault(const Request& request, const Conditions& conditions,
                         const LogLines& lines)
{
    const Deadline deadline{request.text, conditions.limitMs};
    const unsigned int code = request.make();
    return code == request.wanted ? deadline.fault()
                                  : "the code is " + std::to_string(code) + ", not " +
                                        std::to_string(request.wanted) + errorsOf(lines);
}

// --- Without a configuration: a request that starts nothing, and is logged

/// While one lives, the library finds no configuration.
class WithoutConfiguration
{
public:
    WithoutConfiguration()
    {
        if (const char* folder = getenv(kVariable); folder != nullptr)
            mFolder = folder;
        setenv(kVariable, "/dev/null", /*overwrite=*/1); // a file: nothing is inside
    }
    ~WithoutConfiguration()
    {
        if (mFolder)
            setenv(kVariable, mFolder->c_str(), /*overwrite=*/1);
        else
            unsetenv(kVariable);
    }
    WithoutConfiguration(const WithoutConfiguration&) = delete;
    WithoutConfiguration& operator=(const WithoutConfiguration&) = delete;

private:
    static constexpr const char* kVariable = "KEP_CONFIG_DIR";
    std::optional<std::string> mFolder;
};

constexpr const char* kLibraryContext = "kep";
constexpr const char* kUnreadable = "CONFIG_FILE_READ_FAILED";

bool arrived(const LogLines& lines)
{
    for (const LogLine& line : lines.taken())
        if (line.context == kLibraryContext && line.id == kUnreadable && line.level == kLogError)
            return true;
    return false;
}

void checkRefusals(Report& report, const Conditions& conditions)
{
    const WithoutConfiguration nowhere;
    bool logged = false;
    for (const Request& request : kWithoutConfiguration) {
        const LogLines lines;
        report.tell(request.text, requestFault(request, conditions, lines));
        logged = logged || arrived(lines);
    }
    report.tell("the library's own lines arrive in the log",
                logged ? "" : std::string{"the error "} + kUnreadable + " does not arrive");
}

constexpr const char* kTelevision = "TV";

/// Why the evening is left out, "" when it is not.
std::string reasonToStayIn(const Conditions& conditions)
{
    if (!conditions.audible)
        return kCouldBeHeard;
    const std::string backend = configuredBackend();
    if (backend == kTelevision)
        return "";
    return backend.empty() ? "no backend is configured"
                           : "it is the television's; the backend configured is " + backend;
}

} // namespace

void checkRequests(Report& report, const Conditions& conditions)
{
    report.begin("Requests");
    checkRefusals(report, conditions);
    const std::string reason = reasonToStayIn(conditions);
    for (const Request& request : kEvening) {
        if (!reason.empty()) {
            report.skip(request.text, reason);
            continue;
        }
        const LogLines lines;
        report.tell(request.text, requestFault(request, conditions, lines));
    }
}
