// SPDX-License-Identifier: Apache-2.0
// kepctl run: plays scripts, all files checked before the first line of any is played.
#include "runcommand.h"

#include <map>

#include "commands.h"
#include "player.h"
#include "session.h"

namespace
{

using Scripts = std::map<std::string, Script>; // by path

/// Reads and checks all files, and with --check standard input, which is otherwise checked as it
/// comes. Whether all can be played.
bool readAll(const Options& options, Scripts& scripts)
{
    bool usable = true;
    for (const std::string& path : options.words) {
        if ((path == "-" && !options.check) || scripts.count(path) != 0)
            continue;
        Script& script = scripts[path];
        const bool read = path == "-" ? readInput(script) : readScript(path, script);
        usable = read && checkScript(script) && usable;
    }
    return usable;
}

} // namespace

int runScripts(const Options& options)
{
    if (options.words.empty())
        return unusable("no script given; \"-\" reads standard input");
    if (const std::string fault = faultOf(presentationOf(options)); !fault.empty())
        return unusable(fault);
    if (const std::string problem = enterTelevision(options); !problem.empty())
        return unusable(problem);
    Scripts scripts;
    if (!readAll(options, scripts))
        return kUnusable;
    if (options.check)
        return kPlayed;
    Player player{startTrace(options), options};
    for (const std::string& path : options.words) {
        if (path != "-")
            player.play(scripts[path]);
        else if (!player.playInput())
            return kUnusable;
    }
    player.finish();
    return options.strict && player.anyFailure() ? kCallFailed : kPlayed;
}
