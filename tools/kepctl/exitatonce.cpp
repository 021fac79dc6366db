// SPDX-License-Identifier: Apache-2.0
// _exit for this program and all of its libraries. The television's libraries are not ours: one
// that ends the process in the middle of a call takes no line with it that has been reported.
#include <cstdlib>

#include <unistd.h>

#include "output.h"

extern "C" {

[[gnu::visibility("default")]] void _exit(int status)
{
    output::endAtOnce(status);
}

[[gnu::visibility("default")]] void _Exit(int status) noexcept
{
    output::endAtOnce(status);
}
}
