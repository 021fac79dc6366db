// SPDX-License-Identifier: Apache-2.0
// What standard output is.
#include "terminal.h"

#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

std::size_t terminalWidth()
{
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool wantsColour(const std::string& when)
{
    const char* noColour = getenv("NO_COLOR");
    const bool refused = noColour != nullptr && *noColour != '\0';
    return when == "always" || (when == "auto" && isatty(STDOUT_FILENO) != 0 && !refused);
}
