// SPDX-License-Identifier: Apache-2.0
// kepctl shell: script lines, in full or in the short form, as they are typed. Timers run while one
// types; a mistake is told and forgotten.
#include "shell.h"

#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include <unistd.h>

#include <glib-unix.h>

#include "badline.h"
#include "commands.h"
#include "completion.h"
#include "lineeditor.h"
#include "lineinput.h"
#include "mainloop.h"
#include "output.h"
#include "player.h"
#include "session.h"
#include "shellcommands.h"
#include "shortform.h"

namespace
{

constexpr const char* kPrompt = "kepctl> ";

bool isTyped()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

std::filesystem::path historyFile()
{
    return std::filesystem::path{g_get_user_state_dir()} / "kepctl" / "history";
}

std::shared_ptr<LineInput> makeInput()
{
    if (!isTyped())
        return std::make_shared<PlainInput>();
    // Ctrl-C ends a wait; elsewhere, but in a line, it does nothing.
    g_unix_signal_add(
        SIGINT,
        [](gpointer) -> gboolean {
            endMainLoop();
            return G_SOURCE_CONTINUE;
        },
        nullptr);
    return std::make_shared<LineEditor>(kPrompt, historyFile(), &completionOf);
}

/// A mistake, as it is told.
struct Misunderstood {
    std::string text;
};

/// Does what the line says; false leaves the shell. Throws BadLine for a mistake in the line as it
/// was typed, Misunderstood for one in the script line that was made of it.
bool obey(Player& player, const std::string& typed)
{
    const std::size_t ink = typed.find_first_not_of(" \t\r");
    if (ink == std::string::npos)
        return true;
    if (typed[ink] == ':')
        return runShellCommand(player, typed);
    const std::string line = scriptLineOf(typed);
    try {
        player.playLine(line);
    } catch (const BadLine& mistake) {
        throw Misunderstood{describe(mistake, line, "")};
    }
    return true;
}

/// Obeys all lines; whether each of them was any good.
bool converse(Player& player, LineInput& input)
{
    bool understood = true;
    while (const std::optional<std::string> typed = input.next()) {
        try {
            if (!obey(player, *typed))
                break;
        } catch (const BadLine& mistake) {
            std::cerr << describe(mistake, *typed, "");
            understood = false;
        } catch (const Misunderstood& mistake) {
            std::cerr << mistake.text;
            understood = false;
        }
    }
    return understood;
}

} // namespace

int runShell(const Options& options)
{
    if (!options.words.empty())
        return unusable("shell takes no script; kepctl run plays \"" + options.words.front() +
                        "\"");
    if (const std::string reason = enterTelevision(options); !reason.empty())
        return unusable(reason);
    const std::shared_ptr<LineInput> input = makeInput(); // shared: the trace outlives the shell
    Player player{startTrace(options, [input] { input->makeRoom(); }), options};
    if (isTyped() && options.format == "text")
        output::print("kepctl shell on the " + options.backend +
                      " backend. :help tells what can be typed, Ctrl-D leaves.\n");
    return converse(player, *input) || isTyped() ? kPlayed : kUnusable;
}
