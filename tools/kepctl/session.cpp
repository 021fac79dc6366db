// SPDX-License-Identifier: Apache-2.0
// The library, the virtual television and the trace, set up as the options say.
#include "session.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <utility>

#include "alsamessages.h"
#include "cards.h"
#include "environment.h"
#include "loglevels.h"
#include "programfolder.h"

namespace
{

/// Where kepctl's data lie: in share/kep beside the folder of the program.
std::filesystem::path dataDirectory()
{
    return programFolder().parent_path() / "share" / "kep";
}

/// A port has libraries of its own, which tell the journal nothing.
void tellOfPort(const Options& options)
{
    constexpr std::string_view kPort = KEP_PORT; // "" on the virtual television
    if (!kPort.empty() && options.format == "text" && !options.quiet)
        std::cerr << "kepctl: middleware, GPIO and sub-microcontroller are those of " << kPort
                  << ": their calls are not shown, and no injection reaches them\n";
}

} // namespace

Presentation presentationOf(const Options& options)
{
    return {.format = options.format,
            .colour = options.color,
            .only = options.only,
            .explain = options.explain,
            .time = options.time,
            .noClocks = options.noClocks};
}

std::string chooseCard(const Options& options)
{
    if (!options.card.empty() && options.hardware)
        return "--card makes a virtual card, which --hardware leaves out";
    if (!options.card.empty())
        virtualtv::chooseCardFile(options.card);
    if (options.hardware)
        return "";
    const std::string& problem = virtualtv::cards().problem;
    return problem.empty() ? virtualtv::environmentProblem() : problem;
}

std::string enterTelevision(const Options& options)
{
    if (std::string problem = chooseCard(options); !problem.empty())
        return problem;
    const std::string config =
        !options.config.empty() ? options.config : (dataDirectory() / options.backend).string();
    setenv("KEP_CONFIG_DIR", config.c_str(), /*overwrite=*/1);
    if (!options.hardware)
        virtualtv::enter();
    handleAlsaMessages(options.format == "text" && !options.quiet);
    admitLogLevel(std::stoi(options.logLevel));
    tellOfPort(options);
    return "";
}

Trace& startTrace(const Options& options, std::function<void()> announce)
{
    static Trace* const trace = // never destroyed: the backends still log when static objects are
        new Trace{makeWriter(presentationOf(options), std::move(announce))};
    return *trace;
}
