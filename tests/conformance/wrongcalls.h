// SPDX-License-Identifier: Apache-2.0
// Calls that a test can make wrong: found in the test's program before they are found in their
// library.
#pragma once

extern bool gForgetWrites;    // the card takes a write, and keeps what it had
extern bool gNoLevelFilledIn; // the input line is read without a level
extern bool gDropLog;         // no line arrives
extern bool gDropPairs;       // lines arrive without their keys
extern bool gLeaveNoLineOut;  // lines that are not admitted arrive, too
extern bool gLogTwice;        // every line arrives twice
extern bool gOtherLogId;      // lines arrive with another id
extern bool gOtherLogText;    // lines arrive with another text
extern bool gNoDelay;         // the middleware of the delay has no instance
extern bool gThrow;           // an operation throws
extern int gReadsUntilSlow;   // how many reads of elements come before the one that is slow
