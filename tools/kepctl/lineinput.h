// SPDX-License-Identifier: Apache-2.0
// Lines that somebody types, or a pipe brings. The GLib main loop runs while one waits for them.
#pragma once

#include <optional>
#include <string>

/// Where a shell takes its lines from.
class LineInput
{
public:
    virtual ~LineInput() = default;
    /// The next line, without its line feed; empty at the end of the input.
    virtual std::optional<std::string> next() = 0;
    /// To be called before anything is shown while somebody may be typing. From any thread.
    virtual void makeRoom() {}
};

/// Lines as they come, for pipes and files.
class PlainInput : public LineInput
{
public:
    std::optional<std::string> next() override;

private:
    std::string mRead; // what was read beyond the line
    bool mEnded = false;
};

/// Runs the main loop until standard input has something to read, or is at its end.
void awaitInput();
