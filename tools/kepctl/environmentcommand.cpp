// SPDX-License-Identifier: Apache-2.0
// kepctl env: how a shell comes to see the virtual cards.
#include "environmentcommand.h"

#include <memory>

#include <glib.h>

#include "commands.h"
#include "environment.h"
#include "output.h"
#include "session.h"

int printEnvironment(const Options& options)
{
    if (!options.words.empty())
        return unusable("env takes no arguments, not \"" + options.words.front() + "\"");
    if (const std::string problem = chooseCard(options); !problem.empty())
        return unusable(problem);
    for (const auto& [name, value] : virtualtv::environment()) {
        const std::unique_ptr<gchar, decltype(&g_free)> quoted{g_shell_quote(value.c_str()),
                                                               g_free};
        output::print("export " + name + "=" + quoted.get() + "\n");
    }
    return kPlayed;
}
