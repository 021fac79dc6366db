// SPDX-License-Identifier: Apache-2.0
// Standard output, with a look at whether it arrives.
#include "output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "commands.h"

namespace output
{
namespace
{

bool gInputIsClosed = false;

bool isClosed(int descriptor)
{
    return fcntl(descriptor, F_GETFD) < 0 && errno == EBADF;
}

/// Fills the number of a closed stream, so that no other file gets it.
bool fill(int descriptor)
{
    if (!isClosed(descriptor))
        return false;
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0 && null != descriptor) {
        dup2(null, descriptor);
        close(null);
    }
    return true;
}

[[noreturn]] void giveUp(int reason)
{
    fprintf(stderr, "kepctl: standard output: %s\n", strerror(reason));
    _exit(kUnusable); // at once: whatever goes on would be heard by nobody
}

} // namespace

void prepare()
{
    signal(SIGPIPE, SIG_DFL); // who stops reading has seen enough: the program ends without a word
    gInputIsClosed = fill(STDIN_FILENO);
    const bool outputIsClosed = fill(STDOUT_FILENO);
    fill(STDERR_FILENO);
    if (outputIsClosed)
        giveUp(EBADF);
}

bool inputIsClosed()
{
    return gInputIsClosed;
}

void print(std::string_view text)
{
    // What has happened is told at once, even if the process is killed.
    if (fwrite(text.data(), 1, text.size(), stdout) != text.size() || fflush(stdout) != 0)
        giveUp(errno);
}

} // namespace output
