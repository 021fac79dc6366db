// SPDX-License-Identifier: Apache-2.0
// kepctl: plays request scripts against the library and shows what the television would do.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <alsa/asoundlib.h>
#include <glib.h>

#include "environment.h"
#include "loglevels.h"
#include "player.h"
#include "presentation.h"
#include "trace.h"

namespace
{

enum ExitStatus { kPlayed = 0, kCallFailed = 1, kUnusable = 2 };

constexpr const char* kUsage =
    "Usage:\n"
    "  kepctl run [options] SCRIPT...  play request scripts (\"-\" reads "
    "standard input)\n"
    "  kepctl env                      print the shell exports with which "
    "amixer sees the virtual cards\n"
    "\n"
    "kepctl run --help lists the options.\n";

constexpr const char* kBackends[] = {"TV", "ALSA"};
constexpr const char* kFormats[] = {"text", "jsonl"};
constexpr const char* kColours[] = {"never", "always", "auto"};

struct RunOptions {
    std::string backend = "TV";
    std::string configDirectory; // empty: the shipped one of the backend
    Presentation presentation;
    int logLevel = kLogInfo;
    bool strict = false;
    bool hardware = false;
    std::vector<std::string> scripts;
};

int unusable(const std::string& reason)
{
    std::cerr << "kepctl: " << reason << "\n";
    return kUnusable;
}

template <std::size_t Size>
bool isOneOf(const std::string& value, const char* const (&choices)[Size])
{
    return std::find(std::begin(choices), std::end(choices), value) != std::end(choices);
}

/// Where kepctl's data lie: in share/kep beside the folder of the program.
std::filesystem::path dataDirectory()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "share" /
           "kep";
}

using GText = std::unique_ptr<gchar, decltype(&g_free)>;

/// Reads the options into `options`; the reason when they are unusable, "" when they are not.
std::string parseRunOptions(int argc, char** argv, RunOptions& options)
{
    gchar* backend = nullptr;
    gchar* config = nullptr;
    gchar* format = nullptr;
    gchar* only = nullptr;
    gchar* colour = nullptr;
    gboolean time = FALSE;
    gboolean noClocks = FALSE;
    gint logLevel = options.logLevel;
    gboolean strict = FALSE;
    gboolean hardware = FALSE;
    gchar** scripts = nullptr;
    const GOptionEntry entries[] = {
        {"backend", 0, 0, G_OPTION_ARG_STRING, &backend,
         "Use the shipped configuration for that backend (default TV)", "TV|ALSA"},
        {"config", 0, 0, G_OPTION_ARG_FILENAME, &config,
         "Read kep-config.json and device-cap.json from DIR instead", "DIR"},
        {"format", 0, 0, G_OPTION_ARG_STRING, &format, "text for people (default), jsonl for tools",
         "text|jsonl"},
        {"log-level", 0, 0, G_OPTION_ARG_INT, &logLevel,
         "Level that the log admits: 3, 4, 6 (default) or 7", "N"},
        {"strict", 0, 0, G_OPTION_ARG_NONE, &strict,
         "Exit 1 when a call of the script gave a failure code", nullptr},
        {"time", 0, 0, G_OPTION_ARG_NONE, &time, "Show the milliseconds since the start", nullptr},
        {"no-clocks", 0, 0, G_OPTION_ARG_NONE, &noClocks,
         "Show clocks and thread ids as 0, so that two runs are equal", nullptr},
        {"only", 0, 0, G_OPTION_ARG_STRING, &only,
         "Show only these events: request, result, control, middleware, gpio, subcpu, log, log:N",
         "LIST"},
        {"color", 0, 0, G_OPTION_ARG_STRING, &colour,
         "auto (default) colours text on a terminal, unless NO_COLOR is set", "never|always|auto"},
        {"hardware", 0, 0, G_OPTION_ARG_NONE, &hardware,
         "Use the machine's own cards instead of the virtual ones", nullptr},
        {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &scripts, nullptr, "SCRIPT..."},
        {},
    };
    for (int i = 1; i < argc; ++i) // GLib would ignore the value
        for (const std::string flag : {"--strict", "--hardware", "--time", "--no-clocks"})
            if (flag + "=" == std::string{argv[i]}.substr(0, flag.size() + 1))
                return flag + " takes no value";
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context{
        g_option_context_new(nullptr), g_option_context_free};
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GError* error = nullptr;
    const bool parsed = g_option_context_parse(context.get(), &argc, &argv, &error) != FALSE;
    const GText backendOwner{backend, g_free};
    const GText configOwner{config, g_free};
    const GText formatOwner{format, g_free};
    const GText onlyOwner{only, g_free};
    const GText colourOwner{colour, g_free};
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> scriptsOwner{scripts, g_strfreev};
    if (!parsed) {
        const std::unique_ptr<GError, decltype(&g_error_free)> errorOwner{error, g_error_free};
        return error->message;
    }
    options.backend = backend != nullptr ? backend : options.backend;
    options.configDirectory = config != nullptr ? config : "";
    options.presentation.format = format != nullptr ? format : options.presentation.format;
    if (only != nullptr)
        options.presentation.only = only;
    options.presentation.colour = colour != nullptr ? colour : options.presentation.colour;
    options.presentation.time = time != FALSE;
    options.presentation.noClocks = noClocks != FALSE;
    options.logLevel = logLevel;
    options.strict = strict != FALSE;
    options.hardware = hardware != FALSE;
    for (gchar** script = scripts; script != nullptr && *script != nullptr; ++script)
        options.scripts.emplace_back(*script);

    if (!isOneOf(options.backend, kBackends))
        return "--backend must be TV or ALSA";
    if (!isOneOf(options.presentation.format, kFormats))
        return "--format must be text or jsonl";
    if (!isOneOf(options.presentation.colour, kColours))
        return "--color must be never, always or auto";
    if (const std::string fault = faultOf(options.presentation); !fault.empty())
        return fault;
    if (!isLogLevel(options.logLevel))
        return "--log-level must be 3, 4, 6 or 7";
    return options.scripts.empty() ? "no script given" : "";
}

void ignoreAlsaMessage(const char*, int, const char*, int, const char*, ...) {}

int run(int argc, char** argv)
{
    RunOptions options;
    const std::string reason = parseRunOptions(argc, argv, options);
    if (!reason.empty())
        return unusable(reason);

    const std::string config = !options.configDirectory.empty()
                                   ? options.configDirectory
                                   : (dataDirectory() / options.backend).string();
    setenv("KEP_CONFIG_DIR", config.c_str(), /*overwrite=*/1);
    if (!options.hardware)
        virtualtv::enter();
    snd_lib_error_set_handler(&ignoreAlsaMessage); // the library logs what matters of it
    admitLogLevel(options.logLevel);

    // Never destroyed: the backends still log when static objects are.
    auto* trace = new Trace{makeWriter(options.presentation)};
    Player player{*trace};
    for (const std::string& script : options.scripts)
        if (!player.play(script))
            return kUnusable;
    return options.strict && player.anyFailure() ? kCallFailed : kPlayed;
}

int printEnvironment()
{
    for (const auto& [name, value] : virtualtv::environment()) {
        const GText quoted{g_shell_quote(value.c_str()), g_free};
        std::cout << "export " << name << "=" << quoted.get() << "\n";
    }
    return kPlayed;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "run")
        return run(argc - 1, argv + 1);
    if (command == "env" && argc == 2)
        return printEnvironment();
    if (command == "--help" || command == "-h") {
        std::cout << kUsage;
        return kPlayed;
    }
    std::cerr << kUsage;
    return kUnusable;
}
