// SPDX-License-Identifier: Apache-2.0
// Log lines as tests expect them.
#pragma once

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "platformlog.h"

/// A log message without its line number.
struct LogLine {
    int level;
    std::string id;
    std::string origin; // "file:function"
    std::string text;   // after the prefix

    bool operator==(const LogLine&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const LogLine& line);

using Lines = std::vector<LogLine>;

inline Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

inline LogLine info(const std::string& origin, const std::string& text)
{
    return {kLogInfo, "INFO_LOG", origin, text};
}

inline LogLine debug(const std::string& origin, const std::string& text)
{
    return {kLogDebug, "", origin, text};
}

inline LogLine error(const std::string& id, const std::string& origin, const std::string& text)
{
    return {kLogError, id, origin, text};
}

/// Log lines of one source file.
struct FileLog {
    const char* file;
    const char* errorId;

    [[nodiscard]] LogLine info(const std::string& function, const std::string& text) const
    {
        return ::info(origin(function), text);
    }
    [[nodiscard]] LogLine debug(const std::string& function, const std::string& text) const
    {
        return ::debug(origin(function), text);
    }
    [[nodiscard]] LogLine error(const std::string& function, const std::string& text) const
    {
        return ::error(errorId, origin(function), text);
    }
    /// An error under another id.
    [[nodiscard]] LogLine refusal(const std::string& id, const std::string& function,
                                  const std::string& text) const
    {
        return ::error(id, origin(function), text);
    }

private:
    [[nodiscard]] std::string origin(const std::string& function) const
    {
        return std::string{file} + ":" + function;
    }
};
