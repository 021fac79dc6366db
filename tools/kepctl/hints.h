// SPDX-License-Identifier: Apache-2.0
// Hints for people, on standard error: why a request failed or did nothing, where no line says so.
#pragma once

#include <set>
#include <span>
#include <string>

#include "closest.h"
#include "operations.h"
#include "options.h"
#include "trace.h"

class Hints
{
public:
    explicit Hints(const Options& options)
        : mShown(options.format == "text" && !options.quiet), mHardware(options.hardware)
    {
    }

    /// Tells what there is to say about a call that has been made, after its result.
    void tell(const Operation& operation, std::span<const JValue> arguments, const Outcome& outcome,
              const Happened& happened);
    /// Tells of the injections that never met their access.
    void tellUnmetInjections() const;

private:
    using Rule = Names (Hints::*)(const Operation& operation, std::span<const JValue> arguments,
                                  const Outcome& outcome, const Happened& happened);
    static const Rule kRules[];

    Names notInitialised(const Operation& operation, std::span<const JValue> arguments,
                         const Outcome& outcome, const Happened& happened);
    Names badConfiguration(const Operation& operation, std::span<const JValue> arguments,
                           const Outcome& outcome, const Happened& happened);
    Names badNames(const Operation& operation, std::span<const JValue> arguments,
                   const Outcome& outcome, const Happened& happened);
    Names badCards(const Operation& operation, std::span<const JValue> arguments,
                   const Outcome& outcome, const Happened& happened);
    Names idleBackend(const Operation& operation, std::span<const JValue> arguments,
                      const Outcome& outcome, const Happened& happened);
    Names silentFailure(const Operation& operation, std::span<const JValue> arguments,
                        const Outcome& outcome, const Happened& happened);

    [[nodiscard]] Names cardFault() const;

    const bool mShown;
    const bool mHardware;
    std::string mBackend;        // that runs
    std::set<std::string> mTold; // what needs to be said once only
};
