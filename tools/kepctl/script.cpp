// SPDX-License-Identifier: Apache-2.0
// Script files: read and checked whole.
#include "script.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

#include "badline.h"
#include "output.h"

namespace
{

constexpr std::size_t kMostKept = 10'000; // checked lines: each takes about 1 kB
constexpr int kMistakesTold = 20; // after a wrong start, such as indented JSON, every line is bad

bool tellUnreadable(const std::string& path, int reason)
{
    std::cerr << "kepctl: " << path << ": " << strerror(reason) << "\n";
    return false;
}

} // namespace

bool readScript(const std::string& path, Script& script)
{
    script.name = path;
    errno = 0;
    std::ifstream file{path};
    if (!file)
        return tellUnreadable(path, errno);
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return tellUnreadable(path, EISDIR);
    for (std::string line; std::getline(file, line);)
        script.lines.push_back(line);
    return !file.bad() || tellUnreadable(path, errno != 0 ? errno : EIO);
}

bool readInput(Script& script)
{
    script.name = kInputName;
    errno = 0;
    if (output::inputIsClosed())
        return tellUnreadable(kInputName, EBADF);
    for (std::string line; std::getline(std::cin, line);)
        script.lines.push_back(line);
    return (!std::cin.bad() && std::ferror(stdin) == 0) ||
           tellUnreadable(kInputName, errno != 0 ? errno : EIO);
}

bool checkScript(Script& script)
{
    int mistakes = 0;
    script.checked.resize(std::min(script.lines.size(), kMostKept));
    for (std::size_t i = 0; i < script.lines.size(); ++i) {
        if (isSkipped(script.lines[i]))
            continue;
        try {
            ScriptLine line = parseScriptLine(script.lines[i], originOf(script, i));
            if (i < script.checked.size())
                script.checked[i] = std::move(line);
        } catch (const BadLine& mistake) {
            if (++mistakes <= kMistakesTold)
                tellMistake(mistake, script.name, i + 1, script.lines[i]);
        }
    }
    if (mistakes > kMistakesTold)
        std::cerr << "kepctl: " << script.name << ": " << mistakes - kMistakesTold
                  << " more bad lines\n";
    return mistakes == 0;
}

std::string originOf(const Script& script, std::size_t index)
{
    return script.name + ":" + std::to_string(index + 1);
}

bool isSkipped(const std::string& line)
{
    return line.starts_with('#') || line.find_first_not_of(" \t\r") == std::string::npos;
}

void tellMistake(const BadLine& mistake, const std::string& name, std::size_t number,
                 const std::string& line)
{
    std::cerr << "kepctl: " << describe(mistake, line, name + ":" + std::to_string(number));
}
