// SPDX-License-Identifier: Apache-2.0
// Plays request scripts: checks a line, reports it, does it, reports its outcome.
#pragma once

#include <string>

#include "hints.h"
#include "options.h"
#include "script.h"
#include "trace.h"

class Player
{
public:
    Player(Trace& trace, const Options& options)
        : mTrace(trace), mHints(options), mHolds(options.format == "jsonl")
    {
    }

    /// Plays a script that has been checked, and forgets what was kept of the check.
    void play(Script& script);
    /// Plays standard input line by line. False when it could not be read or held a bad line: that
    /// is told on standard error, and nothing after it is run.
    bool playInput();
    /// Plays one line; throws BadLine, with nothing done, when it is no good. `origin` says where
    /// it stands, "file:4".
    void playLine(const std::string& line, const std::string& origin = "");
    /// What there is to say when all has been played.
    void finish() const { mHints.tellUnmetInjections(); }
    /// Whether a call has given a failure code so far.
    [[nodiscard]] bool anyFailure() const { return mAnyFailure; }

private:
    void play(const ScriptLine& line);

    Trace& mTrace;
    Hints mHints;
    const bool mHolds; // the events of a call until it ends; text shares a terminal with hints
    bool mAnyFailure = false;
};
