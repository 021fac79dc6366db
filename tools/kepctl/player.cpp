// SPDX-License-Identifier: Apache-2.0
// Plays request scripts.
#include "player.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "badline.h"
#include "scriptline.h"

bool Player::play(const std::string& path)
{
    if (path == "-")
        return play(std::cin, "standard input");
    std::error_code error;
    std::ifstream script{path};
    const int reason = std::filesystem::is_directory(path, error) ? EISDIR : errno;
    if (!script || reason == EISDIR) {
        std::cerr << "kepctl: " << path << ": " << strerror(reason) << "\n";
        return false;
    }
    return play(script, path);
}

bool Player::play(std::istream& script, const std::string& name)
{
    std::string line;
    for (int number = 1; std::getline(script, line); ++number) {
        try {
            playLine(line);
        } catch (const BadLine& fault) {
            std::cerr << "kepctl: " << name << ":" << number << ": " << fault.what() << "\n";
            return false;
        }
    }
    return true;
}

void Player::playLine(const std::string& line)
{
    if (line.find_first_not_of(" \t\r") == std::string::npos)
        return;
    if (line.front() == '#') {
        mTrace.comment(line);
        return;
    }
    const ScriptLine parsed = parseScriptLine(line);
    JValue request = JValue::object();
    request.put("event", "request");
    for (const auto& [key, value] : parsed.request.members())
        request.put(key, value);
    mTrace.add(request);

    const std::optional<Outcome> outcome = parsed.run();
    if (!outcome)
        return;
    JValue result = JValue::object();
    result.put("event", "result");
    result.put("call", parsed.operation->name);
    result.put("result", outcome->result);
    if (outcome->connected)
        result.put("connected", *outcome->connected);
    mTrace.add(result);
    mAnyFailure = mAnyFailure || failed(*parsed.operation, outcome->result);
}
