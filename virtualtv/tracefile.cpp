// SPDX-License-Identifier: Apache-2.0
// The journal in a file, for programs that know nothing of it: KEP_VIRTUALTV_TRACE names the file,
// to which every event is appended, one JSON object a line. A program that listens itself, as
// kepctl does, takes the journal over.
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "event.h"
#include "journal.h"

namespace virtualtv
{
namespace
{

/// Starts with the process; the file stays open until its end. What cannot be written is lost: the
/// television goes on.
const bool gTracing = [] {
    const char* path = secure_getenv("KEP_VIRTUALTV_TRACE");
    if (path == nullptr || *path == '\0')
        return false;
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    listenDirectly([file](const Event& event) {
        std::string line;
        event.appendTo(line);
        line += '\n';
        // One write a line: lines of several threads or processes do not mix.
        static_cast<void>(!write(file, line.data(), line.size()));
    });
    return true;
}();

} // namespace
} // namespace virtualtv
