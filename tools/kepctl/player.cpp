// SPDX-License-Identifier: Apache-2.0
// Plays request scripts.
#include "player.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>
#include <utility>

#include "badline.h"
#include "output.h"

void Player::play(Script& script)
{
    for (std::size_t i = 0; i < script.lines.size(); ++i) {
        if (i < script.checked.size() && !script.checked[i].members.empty())
            play(std::exchange(script.checked[i], {})); // it needs its memory no more
        else
            playLine(script.lines[i], originOf(script, i));
    }
}

bool Player::playInput()
{
    errno = 0;
    std::string line;
    for (std::size_t number = 1; !output::inputIsClosed() && std::getline(std::cin, line);
         ++number) {
        try {
            playLine(line, kInputName + std::string{":"} + std::to_string(number));
        } catch (const BadLine& mistake) {
            tellMistake(mistake, kInputName, number, line);
            return false;
        }
    }
    if (!output::inputIsClosed() && !std::cin.bad() && std::ferror(stdin) == 0)
        return true;
    const int reason = output::inputIsClosed() ? EBADF : errno;
    std::cerr << "kepctl: " << kInputName << ": " << strerror(reason != 0 ? reason : EIO) << "\n";
    return false;
}

void Player::playLine(const std::string& line, const std::string& origin)
{
    if (!isSkipped(line))
        play(parseScriptLine(line, origin));
    else if (line.starts_with('#'))
        mTrace.comment(line);
}

void Player::play(const ScriptLine& line)
{
    std::optional<output::Held> held;
    if (mHolds && line.operation != nullptr)
        held.emplace();
    Event request{"request"};
    for (const auto& [key, json] : line.members)
        request.put(key, Event::Json{json});
    mTrace.add(request);

    const std::optional<Outcome> outcome = line.run();
    if (!outcome)
        return;
    Event result{"result"};
    result.put("call", line.operation->name);
    result.put("result", outcome->result);
    if (outcome->connected)
        result.put("connected", *outcome->connected);
    mTrace.add(result);
    mHints.tell(*line.operation, line.arguments, *outcome, mTrace.happened());
    mAnyFailure = mAnyFailure || failed(*line.operation, outcome->result);
}
