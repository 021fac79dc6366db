// SPDX-License-Identifier: Apache-2.0
// Stands for the GPIO library and that of the sub-microcontroller.
#include "devicenames.h"
#include "event.h"
#include "faults.h"
#include "hwiogpio.h"
#include "journal.h"
#include "subcpu.h"
#include "television.h"

using virtualtv::FaultPoint;

int HWIO_GPIO_ReadInputPort(const char* line, std::uint8_t* level)
{
    const int status = virtualtv::injectedStatus(FaultPoint::Gpio, line);
    const int current = virtualtv::lineLevel(line);
    *level = static_cast<std::uint8_t>(current);
    if (virtualtv::listening()) {
        virtualtv::Event event{"gpio"};
        event.put("line", line);
        event.put("level", current);
        event.put("status", status);
        virtualtv::report(event);
    }
    return status;
}

int subcpu_misc_Set_HPMuteOnOff(bool mute)
{
    constexpr const char* kOperation = virtualtv::kSubMicroOperations[0].name;
    const int status = virtualtv::injectedStatus(FaultPoint::SubMicro, kOperation);
    if (virtualtv::listening()) {
        JValue arguments = JValue::array();
        arguments.append(mute);
        virtualtv::Event event{"subcpu"};
        event.put("operation", kOperation);
        event.put("args", arguments);
        event.put("status", status);
        virtualtv::report(event);
    }
    return status;
}
