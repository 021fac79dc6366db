// SPDX-License-Identifier: Apache-2.0
// The events of a trace: one table, from which they are explained and chosen.
#pragma once

#include <span>

struct TraceEvent {
    const char* name;
    const char* keys; // further ones
    const char* meaning;
    const char* example;
};

// clang-format off
inline constexpr TraceEvent kTraceEvents[] = {
    {"request",    "the script line's own keys",
     "a line of the script, before it is done",
     R"({"event":"request","call":"setSoundOutput","args":["tv_speaker"]})"},
    {"log",        "level, id, text, pairs",
     "a log message of the library: level 3 error, 4 warning, 6 info, 7 debug",
     R"({"event":"log","level":6,"id":"LOAD_CONFIG","text":"kepconfig:loadConfig(24) ..."})"},
    {"control",    "card, element, values, status; or card, stage, status",
     "a write that reached a card, with 0 or a negative errno; or an open, load or info made to fail",
     R"({"event":"control","card":"hw:0","element":"Sndout Open","values":[1],"status":0})"},
    {"middleware", "library, operation, args, status, returned",
     "a call of the middleware, with its status; \"returned\" for queries",
     R"({"event":"middleware","library":"gain","operation":"setInputVolume","args":[8,20],"status":0})"},
    {"gpio",       "line, level, status",
     "an input line was read",
     R"({"event":"gpio","line":"GPIO_RD_HP_LINK","level":1,"status":0})"},
    {"subcpu",     "operation, args, status",
     "a call of the sub-microcontroller",
     R"({"event":"subcpu","operation":"subcpu_misc_Set_HPMuteOnOff","args":[true],"status":0})"},
    {"result",     "call, result, connected",
     "what the call gave: a code, a volume or a JSON answer",
     R"({"event":"result","call":"setSoundOutput","result":0})"},
};
// clang-format on
