// SPDX-License-Identifier: Apache-2.0
// What the checks find, told on standard output.
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace
{

constexpr int kUnusable = 2;

/// A report that cannot be written whole is none.
void write(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return;
    std::perror("kep-conformance: standard output");
    std::_Exit(kUnusable); // whatever goes on would be heard by nobody
}

/// A text as TAP takes it: # would begin a directive, a line end the next line.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        if (letter == '#' || letter == '\\')
            result += '\\';
        result += letter == '\n' ? ' ' : letter;
    }
    return result;
}

} // namespace

Report::Report(bool tap) : mTap(tap)
{
    if (mTap)
        write("TAP version 13\n");
}

void Report::begin(const std::string& subject)
{
    print(mTap ? "# " + escaped(subject) + "\n" : subject + "\n");
}

void Report::tell(const std::string& claim, const std::string& fault)
{
    const bool holds = fault.empty();
    ++(holds ? mPassed : mFailed);
    const std::string number = std::to_string(mPassed + mFailed + mSkipped);
    if (mTap)
        print((holds ? "ok " : "not ok ") + number + " - " + escaped(claim) +
              (holds ? "" : "\n# " + escaped(fault)) + "\n");
    else
        print((holds ? "  ok    " : "  FAIL  ") + claim + (holds ? "" : ":\n        " + fault) +
              "\n");
}

void Report::skip(const std::string& claim, const std::string& reason)
{
    ++mSkipped;
    const auto known = std::find_if(mReasons.begin(), mReasons.end(),
                                    [&](const auto& each) { return each.first == reason; });
    if (known != mReasons.end())
        ++known->second;
    else
        mReasons.emplace_back(reason, 1);
    if (mTap) {
        const std::string number = std::to_string(mPassed + mFailed + mSkipped);
        return print("ok " + number + " - " + escaped(claim) + " # SKIP " + escaped(reason) + "\n");
    }
    if (reason == mPending.reason) {
        ++mPending.others;
        return;
    }
    tellSkipped();
    mPending = {claim, reason};
}

void Report::print(const std::string& text)
{
    tellSkipped();
    write(text);
}

void Report::tellSkipped()
{
    if (mPending.reason.empty())
        return;
    const std::string others =
        mPending.others == 0 ? "" : " (and " + std::to_string(mPending.others) + " more)";
    write("  skip  " + mPending.first + others + ": " + mPending.reason + "\n");
    mPending = {};
}

bool Report::finish()
{
    const std::string begin = mTap ? "# " : "";
    std::string sum = begin + std::to_string(mPassed) + " passed, " + std::to_string(mFailed) +
                      " failed, " + std::to_string(mSkipped) + " skipped\n";
    for (const auto& [reason, times] : mReasons)
        sum +=
            begin + std::to_string(times) + " skipped: " + (mTap ? escaped(reason) : reason) + "\n";
    if (mTap)
        print("1.." + std::to_string(mPassed + mFailed + mSkipped) + "\n" + sum);
    else
        print("\n" + sum);
    return mFailed == 0;
}
