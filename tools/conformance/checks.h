// SPDX-License-Identifier: Apache-2.0
// The checks, a file each subject. None but those of an audible run may change what is heard.
#pragma once

#include <string>

#include "report.h"

/// How the checks are to be made.
struct Conditions {
    bool audible = false;       // write, call and request what could be heard
    unsigned int limitMs = 500; // within which every answer has to come
    std::string reg;            // of the amplifier, SLAVE:PORT:REGISTER; empty: none may be touched
};

/// Why something is left out of a silent run.
inline constexpr const char* kCouldBeHeard = "it could be heard; --audible tries it";

void checkConfiguration(Report& report, const Conditions& conditions);
void checkCard(Report& report, const Conditions& conditions);
void checkMiddleware(Report& report, const Conditions& conditions);
void checkLines(Report& report, const Conditions& conditions);
void checkLog(Report& report, const Conditions& conditions);
void checkRequests(Report& report, const Conditions& conditions);
