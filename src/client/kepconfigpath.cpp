// SPDX-License-Identifier: Apache-2.0
// Where the library's configuration files are.
#include "kepconfigpath.h"

#include <cstdlib>

#include "kepcatalogue.h"

std::string kepConfigPath(const char* fileName)
{
    const char* replacement = secure_getenv("KEP_CONFIG_DIR");
    const bool replaced = replacement != nullptr && *replacement != '\0';
    std::string path = replaced ? replacement : kepCatalogue::build().configurationFolder;
    return path.append("/").append(fileName);
}
