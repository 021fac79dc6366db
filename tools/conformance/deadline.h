// SPDX-License-Identifier: Apache-2.0
// How long an answer takes, and what becomes of one that never comes.
#pragma once

#include <chrono>
#include <string>

/// While one lives, an answer is waited for. When it does not come in kPatience times the limit,
/// the program says who keeps it, and ends as failed: nothing else would end a call that hangs.
class Deadline
{
public:
    static constexpr unsigned int kPatience = 20;

    /// `who` is told; one at a time.
    Deadline(const std::string& who, unsigned int limitMs);
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// A sentence when the answer has taken longer than the limit so far, "" when not.
    [[nodiscard]] std::string fault() const;

private:
    const std::string mWho;
    const unsigned int mLimitMs;
    const std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
};
