// SPDX-License-Identifier: Apache-2.0
// Plays request scripts.
#include "player.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>

#include "badline.h"
#include "output.h"
#include "scriptline.h"

void Player::play(const Script& script)
{
    for (std::size_t i = 0; i < script.lines.size(); ++i)
        playLine(script.lines[i], script.name + ":" + std::to_string(i + 1));
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
    if (isSkipped(line)) {
        if (line.starts_with('#'))
            mTrace.comment(line);
        return;
    }
    const ScriptLine parsed = parseScriptLine(line, origin);
    std::optional<output::Held> held;
    if (mHolds && parsed.operation != nullptr)
        held.emplace();
    JValue request = JValue::object();
    request.put("event", "request");
    for (const auto& [key, value] : parsed.request.members())
        static_cast<void>(request.put(key, value)); // as deep as it was parsed
    mTrace.add(request);

    const std::optional<Outcome> outcome = parsed.run();
    if (!outcome)
        return;
    JValue result = JValue::object();
    result.put("event", "result");
    result.put("call", parsed.operation->name);
    static_cast<void>(result.put("result", outcome->result)); // what can be answered can be wrapped
    if (outcome->connected)
        result.put("connected", *outcome->connected);
    mTrace.add(result);
    mHints.tell(*parsed.operation, parsed.request["args"], *outcome, mTrace.happened());
    mAnyFailure = mAnyFailure || failed(*parsed.operation, outcome->result);
}
