// SPDX-License-Identifier: Apache-2.0
// Standard output. What cannot be written ends the program with a message and status 2: nobody
// should take half an output for the whole.
#pragma once

#include <string_view>

namespace output
{

/// Looks at the standard streams before anything else opens a file, which would get the number of a
/// closed one. Does not return when standard output is closed.
void prepare();
/// Whether the program was started without a standard input.
bool inputIsClosed();

/// Writes whole lines, at once. From any thread. Does not return when that fails.
void print(std::string_view text);

/// As long as one lives, what is printed may wait, so that many lines become one write. It is
/// written when the last one ends, when there is much of it, and when the program ends, be it by a
/// signal (but SIGKILL) or at once (_exit). On a terminal nothing waits.
class Held
{
public:
    Held();
    ~Held();
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
};

/// Ends the program as _exit does, but for the lines that wait: they are written first.
[[noreturn]] void endAtOnce(int status);

} // namespace output
