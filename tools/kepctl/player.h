// SPDX-License-Identifier: Apache-2.0
// Plays request scripts: reads a line, checks it, reports it, does it, reports its outcome.
#pragma once

#include <istream>
#include <string>

#include "trace.h"

class Player
{
public:
    explicit Player(Trace& trace) : mTrace(trace) {}

    /// Plays the script of that path, "-" for standard input. False when it could not be read or
    /// held a bad line: that is told on standard error, and nothing after it is run.
    bool play(const std::string& path);
    /// Whether a call has given a failure code so far.
    [[nodiscard]] bool anyFailure() const { return mAnyFailure; }

private:
    bool play(std::istream& script, const std::string& name);
    void playLine(const std::string& line);

    Trace& mTrace;
    bool mAnyFailure = false;
};
