// SPDX-License-Identifier: Apache-2.0
// Lines as they come.
#include "lineinput.h"

#include <cerrno>

#include <unistd.h>

#include <glib-unix.h>

void awaitInput()
{
    bool ready = false;
    g_unix_fd_add(
        STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL),
        [](gint, GIOCondition, gpointer data) -> gboolean {
            *static_cast<bool*>(data) = true;
            return G_SOURCE_REMOVE;
        },
        &ready);
    while (!ready)
        g_main_context_iteration(nullptr, TRUE);
}

std::optional<std::string> PlainInput::next()
{
    std::size_t end = mRead.find('\n');
    while (end == std::string::npos && !mEnded) {
        awaitInput();
        char part[4096];
        const ssize_t got = read(STDIN_FILENO, part, sizeof part);
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        mEnded = got <= 0;
        mRead.append(part, static_cast<std::size_t>(got > 0 ? got : 0));
        end = mRead.find('\n');
    }
    if (mRead.empty())
        return std::nullopt;
    std::string line = mRead.substr(0, end);
    mRead.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}
