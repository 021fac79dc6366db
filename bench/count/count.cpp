// SPDX-License-Identifier: Apache-2.0
// Runs the cases. Under callgrind each one's cost is dumped under its name; without it, the
// allocations of each are printed: its own, libasound's, the virtual card's, and the bytes that
// stay. Without arguments: all but the cold ones; else those whose names start like one of the
// arguments.
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string>
#include <vector>

#include <alloca.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <valgrind/callgrind.h>

#include "allocations.h"
#include "cases.h"
#include "environment.h"
#include "platformlog.h"

namespace
{

bool gToJournal = false;

} // namespace

// With --journal, standard error looks to GLib as if it were connected to the journal, and what is
// sent there arrives.
extern "C" [[gnu::visibility("default")]] int getpeername(int, sockaddr* address, socklen_t* length)
{
    if (!gToJournal)
        return -1;
    auto* name = reinterpret_cast<sockaddr_un*>(address);
    name->sun_family = AF_UNIX;
    std::strcpy(name->sun_path, "/run/systemd/journal/stdout");
    *length = sizeof *name;
    return 0;
}

extern "C" [[gnu::visibility("default")]] ssize_t sendmsg(int, const msghdr* message, int)
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < message->msg_iovlen; ++i)
        length += message->msg_iov[i].iov_len;
    return static_cast<ssize_t>(length);
}

namespace
{

/// KEP_COUNT_TIMES=1 is for cases that take long.
int timesOf(const count::Case& each)
{
    const char* times = std::getenv("KEP_COUNT_TIMES");
    return times != nullptr ? std::atoi(times) : each.times;
}

/// Runs the case with that much of the stack left unused.
[[gnu::noinline]] void runBelow(std::size_t unused, const count::Case& each, int times)
{
    auto* room = static_cast<volatile char*>(alloca(unused + 1));
    *room = 0;
    for (int i = 0; i < times; ++i)
        each.run();
}

// Where a string on the stack crosses into another page, functions for strings take other ways. So
// each case is counted at several depths; the cheapest tells.
constexpr std::size_t kDepths[] = {0, 1000, 2000, 3000};

void measure(const count::Case& each)
{
    const int times = timesOf(each);
    const int rounds = times < std::ssize(kDepths) ? 1 : static_cast<int>(std::ssize(kDepths));
    const int inEach = times / rounds;
    const int runs = rounds * inEach;
    if (each.prepare)
        each.prepare();
    if (!each.cold)
        each.run(); // what happens once has happened
    const std::string title = each.name + " " + std::to_string(inEach);
    beginCountingAllocations();
    CALLGRIND_START_INSTRUMENTATION;
    for (int i = 0; i < rounds; ++i) {
        CALLGRIND_ZERO_STATS;
        runBelow(kDepths[i], each, inEach);
        CALLGRIND_DUMP_STATS_AT(title.c_str());
    }
    CALLGRIND_STOP_INSTRUMENTATION;
    const Allocations made = endCountingAllocations();
    printf("%s\t%.1f\t%.1f\t%.1f\t%.1f\n", each.name.c_str(), static_cast<double>(made.own) / runs,
           static_cast<double>(made.libasound) / runs, static_cast<double>(made.card) / runs,
           static_cast<double>(made.bytesKept) / runs);
    fflush(stdout);
    LogSetSink({});
    LogSetLevel(LogGetContext("kep"), kLogError);
}

} // namespace

int main(int argc, char** argv)
{
    virtualtv::enter();
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (null >= 0)
        dup2(null, STDERR_FILENO);
    std::vector<std::string> chosen{argv + 1, argv + argc};
    if (!chosen.empty() && chosen.front() == "--journal") {
        gToJournal = true;
        chosen.erase(chosen.begin());
    }
    std::vector<count::Case> cases;
    for (const auto& add : {&count::addDriverCases, &count::addJsonCases, &count::addLogCases,
                            &count::addRequestCases, &count::addSettingsCases,
                            &count::addQualityCases, &count::addStartCases})
        add(cases);
    for (const count::Case& each : cases) {
        bool wanted = chosen.empty() && !each.cold;
        for (const std::string& start : chosen)
            wanted = wanted || (each.cold ? each.name == start : each.name.starts_with(start));
        if (wanted)
            measure(each);
    }
    std::_Exit(0); // the end is not counted
}
