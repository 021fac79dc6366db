// SPDX-License-Identifier: Apache-2.0
// What the checks find, told on standard output as it is found: as TAP for machines, as text for
// people.
#pragma once

#include <string>
#include <utility>
#include <vector>

class Report
{
public:
    explicit Report(bool tap);

    /// The subject of the checks that follow.
    void begin(const std::string& subject);
    /// A claim that was checked; `fault` is a sentence that says what is wrong, "" when it holds.
    void tell(const std::string& claim, const std::string& fault);
    /// A claim that could not be checked, and why not.
    void skip(const std::string& claim, const std::string& reason);
    /// The sum of it all, and why claims were skipped; whether none failed.
    bool finish();

private:
    void print(const std::string& text);
    void tellSkipped();

    /// Claims one after the other that were skipped for the same reason: one line for people.
    struct Skipped {
        std::string first;
        std::string reason;
        int others = 0;
    };

    const bool mTap;
    int mPassed = 0;
    int mFailed = 0;
    int mSkipped = 0;
    std::vector<std::pair<std::string, int>> mReasons; // for skipping, how often
    Skipped mPending;                                  // with an empty reason: none
};
