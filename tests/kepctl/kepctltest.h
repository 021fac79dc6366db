// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests that use kepctl as it is used: the built program with scripts, options,
// pipes and a terminal.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include <gtest/gtest.h>

#include "televisiontest.h"

inline constexpr const char* kProgram = KEPCTL_PROGRAM;

enum ExitStatus { kPlayed = 0, kCallFailed = 1, kUnusable = 2 };

struct Execution {
    int status = -1; // as of a shell
    std::string output;
    std::string errors;
};

Texts linesOf(const std::string& text);
/// The lines of the trace that tell such an event.
Texts eventsOf(const Execution& outcome, const std::string& kind);

/// What a shell makes of a status of waitpid.
int shellStatus(int status);
/// Becomes that program.
[[noreturn]] void execute(const Texts& command);

class Kepctl : public TelevisionTest
{
protected:
    Kepctl();

    /// A file in the directory of this test.
    [[nodiscard]] std::string file(const std::string& name, const std::string& content) const;
    [[nodiscard]] std::string script(const std::string& content) const;

    /// Runs a program to its end.
    [[nodiscard]] Execution execution(const Texts& command, const std::string& input = "") const;
    [[nodiscard]] Execution kepctl(const Texts& arguments, const std::string& input = "") const;
    [[nodiscard]] Execution shell(const std::string& command) const;
    /// Plays a script with the mixer backend, its trace as JSON lines.
    [[nodiscard]] Execution play(const std::string& content, const Texts& options = {}) const;
    /// The same as text.
    [[nodiscard]] Execution playAsText(const std::string& content, const Texts& options = {}) const;
    /// What kepctl shows on a terminal of that many columns (0: of unknown size).
    [[nodiscard]] std::string shownOnTerminal(const std::string& content, const Texts& options = {},
                                              unsigned short columns = 0) const;

    /// The one value of an element, read with libasound in this process; -1 when that fails.
    [[nodiscard]] long valueOf(const char* cardName, const char* element) const;

private:
    std::vector<std::pair<std::string, std::string>> mOwnEnvironment;
};

/// A program at a terminal of 80 columns, typed at by the test.
class Terminal
{
public:
    /// Starts it and waits for its prompt.
    Terminal(const Texts& command, const std::string& prompt);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Types that, and waits until `wanted` is shown; what was shown.
    std::string type(const std::string& keys, const std::string& wanted);
    /// What is shown until then, or within 20 s: then the test has failed.
    std::string awaitText(const std::string& wanted);
    /// Its exit status, once it has ended.
    int end();

private:
    int mTerminal = -1;
    pid_t mProcess = -1;
};

// Lines that most scripts here are made of.
inline const std::string kInitialize = R"({"call": "initialize"})"
                                       "\n";
inline const std::string kVolume40 = R"({"call": "setOutputVolume", "args": ["speaker", 40]})"
                                     "\n";
inline const std::string kHeadphone = R"({"call": "getHeadphoneStatus"})"
                                      "\n";
inline constexpr const char* kHeadphoneRequest =
    R"({"event":"request","call":"getHeadphoneStatus"})";
inline constexpr const char* kVolumeWritten =
    R"({"event":"control","card":"default","element":"Master Playback Volume","values":[40],"status":0})";
