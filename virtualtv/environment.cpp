// SPDX-License-Identifier: Apache-2.0
// How a process comes to see the virtual television.
#include "environment.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "fingerprint.h"

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

std::string variable(const char* name)
{
    const char* value = secure_getenv(name);
    return value != nullptr ? value : "";
}

// --- A name that libasound understands. It cuts ALSA_CONFIG_PATH at blanks and colons, and some
// builds of it expand the rest like a shell. Where the configuration lies under a name of that
// kind, a link with a plain name leads to it.

constexpr const char* kLinkFolder = "kep-virtualtv";

bool isPlain(const std::string& path)
{
    constexpr const char* kPlain = "/._+-0123456789"
                                   "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return path.find_first_not_of(kPlain) == std::string::npos;
}

/// Makes the folder unless it is there; false unless it is nobody else's.
bool isOurFolder(const std::filesystem::path& folder)
{
    struct stat status = {};
    return (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) &&
           lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool isLink(const std::filesystem::path& link, const std::filesystem::path& target)
{
    std::error_code error; // another process may have been faster
    return symlink(target.c_str(), link.c_str()) == 0 ||
           std::filesystem::read_symlink(link, error) == target;
}

/// A path of the file without anything that libasound might misread; the file's own if there is no
/// place for a link.
std::string plainPath(const std::filesystem::path& file)
{
    if (isPlain(file))
        return file;
    const std::string user = std::to_string(geteuid());
    const std::string link = std::to_string(fingerprint(file.native())) + file.extension().native();
    for (const std::filesystem::path place :
         {g_get_user_runtime_dir(), g_get_tmp_dir(), "/tmp", "/dev/shm"}) {
        const std::filesystem::path folder = place / (std::string{kLinkFolder} + "-" + user);
        if (isPlain(folder) && isOurFolder(folder) && isLink(folder / link, file))
            return folder / link;
    }
    return file;
}

std::string configurationPath()
{
    return plainPath(dataDirectory() / "virtualtv.conf");
}

} // namespace

std::vector<std::pair<std::string, std::string>> environment()
{
    const std::filesystem::path data = dataDirectory();
    std::vector<std::pair<std::string, std::string>> variables{
        {"ALSA_CONFIG_PATH", configurationPath()},
        {"ALSA_PLUGIN_DIR", data},
        {"KEP_VIRTUALTV_STATE", stateFilePath()},
    };
    if (!cardFilePath().empty())
        variables.emplace_back("KEP_VIRTUALTV_CARD", cardFilePath());
    return variables;
}

std::string environmentProblem()
{
    const std::string path = configurationPath();
    if (path.find_first_of(" :") == std::string::npos)
        return "";
    return path + ": libasound does not read a path with blanks or colons, and there is no place "
                  "for a link to it (set XDG_RUNTIME_DIR to a folder of your own)";
}

void enter()
{
    for (const auto& [name, value] : environment())
        setenv(name.c_str(), value.c_str(), /*overwrite=*/1);
}

std::string stateFilePath()
{
    if (const std::string chosen = variable("KEP_VIRTUALTV_STATE"); !chosen.empty())
        return chosen;
    const std::filesystem::path directory = g_get_user_runtime_dir();
    if (g_mkdir_with_parents(directory.c_str(), 0700) == 0 && access(directory.c_str(), W_OK) == 0)
        return directory / "kep-virtualtv.state";
    return std::filesystem::path{g_get_tmp_dir()} /
           ("kep-virtualtv-" + std::to_string(getuid()) + ".state");
}

std::string cardFilePath()
{
    return variable("KEP_VIRTUALTV_CARD");
}

void chooseCardFile(const std::string& path)
{
    const std::string whole = std::filesystem::absolute(path); // for processes in other folders
    setenv("KEP_VIRTUALTV_CARD", whole.c_str(), /*overwrite=*/1);
}

} // namespace virtualtv
