// SPDX-License-Identifier: Apache-2.0
// Standard output, with a look at whether it arrives.
#include "output.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/syscall.h>
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

// --- Lines that wait. They are in stdio's buffer, which is ours, so that a signal finds them.

char gBuffer[std::size_t{64} * 1024];
std::atomic<int> gHolders{0};

std::atomic<pid_t> gOwner{0}; // whose lines wait; a child that was forked has a copy of them

/// stdio may be in the middle of something; what it has put into the buffer so far is there.
void writeWaitingLines()
{
    if (gOwner != getpid())
        return;
    gOwner = 0;
    const char* from = gBuffer;
    for (std::size_t left = __fpending(stdout); left > 0;) {
        const ssize_t written = write(STDOUT_FILENO, from, left);
        if (written <= 0)
            break;
        from += written;
        left -= static_cast<std::size_t>(written);
    }
}

void endBySignal(int signal)
{
    writeWaitingLines();
    raise(signal); // SA_RESETHAND: now it does what it always did
}

/// Whether lines may wait. A signal that somebody handles is left to them.
bool letOutputWait()
{
    if (isatty(STDOUT_FILENO) != 0 || setvbuf(stdout, gBuffer, _IOFBF, sizeof gBuffer) != 0)
        return false;
    for (const int signal :
         {SIGABRT, SIGBUS, SIGFPE, SIGHUP, SIGILL, SIGINT, SIGQUIT, SIGSEGV, SIGTERM, SIGXCPU}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = &endBySignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        sigaction(signal, &action, nullptr);
    }
    gOwner = getpid();
    return true;
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
    if (fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        (gHolders == 0 && fflush(stdout) != 0))
        giveUp(errno);
}

Held::Held()
{
    static const bool waits = letOutputWait();
    if (waits)
        ++gHolders;
}

Held::~Held()
{
    if (gHolders != 0 && --gHolders == 0 && fflush(stdout) != 0)
        giveUp(errno);
}

void endAtOnce(int status)
{
    writeWaitingLines();
    syscall(SYS_exit_group, status);
    __builtin_unreachable();
}

} // namespace output
