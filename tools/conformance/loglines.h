// SPDX-License-Identifier: Apache-2.0
// The lines of the log, caught before they reach the system's.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct LogLine {
    std::string context;
    int level;
    std::string id;
    std::string text;
    std::vector<std::pair<std::string, std::string>> pairs;
};

/// While one lives, lines go to it instead of the system's log. One at a time.
class LogLines
{
public:
    LogLines();
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// Those so far.
    [[nodiscard]] std::vector<LogLine> taken() const;

private:
    struct Store;
    const std::shared_ptr<Store> mStore; // shared with a thread that may still log
};
