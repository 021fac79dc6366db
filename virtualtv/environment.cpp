// SPDX-License-Identifier: Apache-2.0
// How a process comes to see the virtual television.
#include "environment.h"

#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

#include <glib.h>

namespace virtualtv
{
namespace
{

/// The folder "kep" beside this library, which holds the plugin and its ALSA configuration.
std::filesystem::path dataDirectory()
{
    Dl_info here = {};
    dladdr(reinterpret_cast<const void*>(&environment), &here);
    std::error_code error;
    return std::filesystem::canonical(here.dli_fname, error).parent_path() / "kep";
}

} // namespace

std::vector<std::pair<std::string, std::string>> environment()
{
    const std::filesystem::path data = dataDirectory();
    return {
        {"ALSA_CONFIG_PATH", data / "virtualtv.conf"},
        {"ALSA_PLUGIN_DIR", data},
        {"KEP_VIRTUALTV_STATE", stateFilePath()},
    };
}

void enter()
{
    for (const auto& [name, value] : environment())
        setenv(name.c_str(), value.c_str(), /*overwrite=*/1);
}

std::string stateFilePath()
{
    const char* chosen = secure_getenv("KEP_VIRTUALTV_STATE");
    if (chosen != nullptr && *chosen != '\0')
        return chosen;
    const std::filesystem::path directory = g_get_user_runtime_dir();
    if (g_mkdir_with_parents(directory.c_str(), 0700) == 0 && access(directory.c_str(), W_OK) == 0)
        return directory / "kep-virtualtv.state";
    return std::filesystem::path{g_get_tmp_dir()} /
           ("kep-virtualtv-" + std::to_string(getuid()) + ".state");
}

} // namespace virtualtv
