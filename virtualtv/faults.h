// SPDX-License-Identifier: Apache-2.0
// Faults and late answers that a script or a test plants in the virtual television. Usable from any
// thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "virtualtvexport.h"

namespace virtualtv
{

/// Where an access can be made to fail.
enum class FaultPoint { CardOpen, CardLoad, CardInfo, CardWrite, Middleware, Gpio, SubMicro };

struct Injection {
    FaultPoint point;
    std::string name;              // element, operation ("gain.setInputVolume") or line; "*" is any
    std::string card;              // as opened; "" is any
    int status;                    // what the access answers; 0 lets it through
    std::optional<unsigned> times; // how many accesses it holds for; empty: until cleared
    unsigned delayMs = 0;          // how much later the access answers
    std::string origin = "";       // who planted it, for messages
};

VIRTUALTV_EXPORT void inject(Injection injection);
VIRTUALTV_EXPORT void clearInjections();
/// Those that no access has met so far, cleared ones included, oldest first.
VIRTUALTV_EXPORT std::vector<Injection> unmetInjections();
/// Those that are not used up, oldest first; "times" is how often they still hold.
VIRTUALTV_EXPORT std::vector<Injection> injectionsInForce();

/// While one lives, nothing that its thread does meets an injection, or uses one up.
class VIRTUALTV_EXPORT WithoutInjections
{
public:
    WithoutInjections();
    ~WithoutInjections();
    WithoutInjections(const WithoutInjections&) = delete;
    WithoutInjections& operator=(const WithoutInjections&) = delete;
};

/// The status that this access has to answer: that of the oldest matching injection still in force,
/// which this access uses up once; 0 when there is none. Returns when the answer is due; other
/// threads' accesses do not wait with it.
VIRTUALTV_EXPORT int injectedStatus(FaultPoint point, std::string_view name,
                                    std::string_view card = {});

} // namespace virtualtv
