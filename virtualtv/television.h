// SPDX-License-Identifier: Apache-2.0
// What the virtual television answers when it is asked: input lines, gain, amplifier. Usable from
// any thread.
#pragma once

#include <string>
#include <vector>

#include "virtualtvexport.h"

namespace virtualtv
{

struct AmplifierState {
    std::string type = "virtual";
    std::vector<std::string> states = {"on"};
};

/// Level of an input line; 0 until it is set. The file of that name in the folder that
/// KEP_VIRTUALTV_LINES names decides, if there is one.
VIRTUALTV_EXPORT void setLineLevel(const std::string& line, int level);
VIRTUALTV_EXPORT int lineLevel(const std::string& line);

/// What the gain middleware answers; "0" at first.
VIRTUALTV_EXPORT void setGainValue(std::string value);
VIRTUALTV_EXPORT std::string gainValue();

VIRTUALTV_EXPORT void setAmplifierState(AmplifierState state);
VIRTUALTV_EXPORT AmplifierState amplifierState();

/// What a read of the amplifier's registers answers; empty at first.
VIRTUALTV_EXPORT void setI2cData(std::vector<std::string> data);
VIRTUALTV_EXPORT std::vector<std::string> i2cData();

} // namespace virtualtv
