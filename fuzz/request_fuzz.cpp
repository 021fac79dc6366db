// SPDX-License-Identifier: Apache-2.0
// Any sequence of script lines leaves the library standing: requests, faults and all, on the
// television backend. Lines that would wait are left out.
#include <cstdint>
#include <cstdlib>
#include <sstream>

#include <alsa/asoundlib.h>

#include "badline.h"
#include "environment.h"
#include "faults.h"
#include "jdomparser.h"
#include "jsonplaces.h"
#include "kepclient.h"
#include "platformlog.h"
#include "scriptline.h"

namespace
{

void ignoreAlsaMessage(const char*, int, const char*, int, const char*, ...) {}

/// What kepctl reads without the platform's parser is what that parser reads.
void requireUnderstood(const std::string& line)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue value = parser.parse(line);
    if (!value.isValid() || parseJsonLine(line).json() != value.stringify())
        std::abort();
}

void play(const std::string& line)
{
    try {
        const ScriptLine parsed = parseScriptLine(line);
        requireUnderstood(line);
        if (parsed.members.front().first != "wait")
            static_cast<void>(parsed.run());
    } catch (const BadLine&) {
        // what a line must not be is kepctl's business
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    virtualtv::enter();
    setenv("KEP_CONFIG_DIR", KEP_FUZZ_CONFIG, 1);
    snd_lib_error_set_handler(&ignoreAlsaMessage);
    LogSetSink([](const LogMessage&) {});
    LogSetLevel(LogGetContext("kep"), kLogDebug); // so that every text is formatted
    kepClient::getInstance()->initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream script{std::string{reinterpret_cast<const char*>(data), size}};
    for (std::string line; std::getline(script, line);)
        play(line);
    virtualtv::clearInjections();
    kepClient::getInstance()->deinitialize();
    return 0;
}
