// SPDX-License-Identifier: Apache-2.0
// kepctl help: all of it made from the tables of commands, options, script lines and trace events.
#pragma once

#include <span>
#include <string>

#include "closest.h"
#include "options.h"
#include "scriptgrammar.h"

/// The usage lines of all commands.
std::string usage();

/// What there is help on.
Names helpTopics();

// --- What help says of scripts and traces, apart from their tables

const char* scriptIntroduction();
const char* injectionRule();
const char* traceIntroduction();

/// A form of object whose keys are explained, and what it is called.
struct FormTitle {
    ObjectForm form;
    const char* title;
};
std::span<const FormTitle> formTitles();

int help(const Options& options);
int printVersion();
